// Runs the vexascan program as a user does, on small message databases in a folder of the test's
// own.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#ifndef VEXASCAN_PATH
#define VEXASCAN_PATH VEXA_BUILD_DIR "/vexascan"
#endif
#ifndef VEXA_CONFIG_DB
#define VEXA_CONFIG_DB VEXA_BUILD_DIR "/VexaConfiger.db"
#endif

namespace vexascan_test {

namespace fs = std::filesystem;

inline std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void WriteFile(const fs::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

struct ToolRun {
  int exit_code = -1;
  std::string output;  // both streams
};

enum class Interrupt { kNo, kBeforeStart };

// With Interrupt::kBeforeStart, Ctrl-C is already waiting when the program starts.
inline ToolRun RunTool(const std::vector<std::string>& arguments,
                       Interrupt interrupt = Interrupt::kNo) {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe(ends.data()), 0);
  std::vector<std::string> words = arguments;
  words.insert(words.begin(), VEXASCAN_PATH);
  std::vector<char*> argv;
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    if (interrupt == Interrupt::kBeforeStart) {
      sigset_t held_back;
      sigemptyset(&held_back);
      sigaddset(&held_back, SIGINT);
      sigprocmask(SIG_BLOCK, &held_back, nullptr);
      raise(SIGINT);
    }
    execv(VEXASCAN_PATH, argv.data());
    _exit(127);
  }
  close(ends[1]);
  ToolRun run;
  std::array<char, 4096> buffer{};
  for (ssize_t got = 0; (got = read(ends[0], buffer.data(), buffer.size())) > 0;) {
    run.output.append(buffer.data(), static_cast<std::size_t>(got));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  run.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

class Sqlite {
 public:
  explicit Sqlite(const fs::path& path) {
    sqlite3* raw = nullptr;
    EXPECT_EQ(sqlite3_open(path.c_str(), &raw), SQLITE_OK);
    handle_.reset(raw);
  }

  void Run(const std::string& sql) {
    EXPECT_EQ(sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sql << ": " << sqlite3_errmsg(handle_.get());
  }

  // All values of the first column, one a line.
  std::string Ask(const std::string& sql) {
    std::string answer;
    sqlite3_stmt* raw = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(handle_.get(), sql.c_str(), -1, &raw, nullptr), SQLITE_OK)
        << sql << ": " << sqlite3_errmsg(handle_.get());
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(raw, sqlite3_finalize);
    while (sqlite3_step(raw) == SQLITE_ROW) {
      const unsigned char* text = sqlite3_column_text(raw, 0);
      answer += answer.empty() ? "" : "\n";
      answer += text == nullptr ? "" : reinterpret_cast<const char*>(text);
    }
    return answer;
  }

 private:
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> handle_{nullptr, sqlite3_close};
};

// Folders: evidence (the source), out (results), temp (working copies), config (a copy of the
// shipped configuration).
class VexascanTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "vexascan-test-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    root_ = name;
    for (const char* folder : {"evidence", "out", "temp", "config"}) {
      fs::create_directory(root_ / folder);
    }
    fs::copy_file(VEXA_CONFIG_DB, Config());
  }

  void TearDown() override { fs::remove_all(root_); }

  const fs::path& root() const { return root_; }
  fs::path Source() const { return root_ / "evidence" / "mmssms.db"; }
  fs::path SourceLog() const { return root_ / "evidence" / "mmssms.db-wal"; }
  fs::path Result() const { return root_ / "out" / "result.db"; }
  fs::path Config() const { return root_ / "config" / "VexaConfiger.db"; }
  fs::path Temp() const { return root_ / "temp"; }

  // Ten messages in the main file, of which `deleted` are deleted there, and two in the log.
  void MakeSource(int deleted = 0) const {
    const fs::path workshop = root_ / "workshop";
    fs::create_directory(workshop);
    Sqlite phone(workshop / "mmssms.db");
    EXPECT_EQ(phone.Ask("PRAGMA journal_mode = WAL"), "wal");
    phone.Run("PRAGMA wal_autocheckpoint = 0; PRAGMA secure_delete = OFF");
    ASSERT_EQ(phone.Ask("PRAGMA secure_delete"), "0");
    phone.Run(
        "CREATE TABLE sms (_id INTEGER PRIMARY KEY,thread_id INTEGER,address TEXT,person INTEGER,"
        "date INTEGER,date_sent INTEGER DEFAULT 0,protocol INTEGER,read INTEGER DEFAULT 0,"
        "status INTEGER DEFAULT -1,type INTEGER,reply_path_present INTEGER,subject TEXT,body TEXT,"
        "service_center TEXT,locked INTEGER DEFAULT 0,sub_id INTEGER DEFAULT -1,"
        "error_code INTEGER DEFAULT 0,creator TEXT,seen INTEGER DEFAULT 0)");
    for (int i = 1; i <= 10; ++i) {
      InsertMessage(phone, i);
    }
    phone.Run("PRAGMA wal_checkpoint(TRUNCATE)");
    phone.Run("DELETE FROM sms WHERE _id % 2 = 0 AND _id <= " + std::to_string(2 * deleted));
    phone.Run("PRAGMA wal_checkpoint(TRUNCATE)");
    InsertMessage(phone, 11);
    InsertMessage(phone, 12);
    for (const char* name : {"mmssms.db", "mmssms.db-wal"}) {
      fs::copy_file(workshop / name, root_ / "evidence" / name);
    }
  }

  std::vector<std::string> ScanWords(std::vector<std::string> more = {}) const {
    std::vector<std::string> words{"scan",
                                   "--system",
                                   "android",
                                   "--app",
                                   "sms",
                                   "--source",
                                   Source(),
                                   "--out",
                                   Result(),
                                   "--config",
                                   Config().parent_path(),
                                   "--temp",
                                   Temp()};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }

  // Every file of the folder by name, with its bytes.
  static std::map<std::string, std::string> BytesIn(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
      files[entry.path().filename()] = entry.is_regular_file() ? ReadFile(entry.path()) : "";
    }
    return files;
  }

 private:
  static void InsertMessage(Sqlite& phone, int number) {
    const std::string digits = std::to_string(number);
    phone.Run("INSERT INTO sms VALUES (" + digits + ", 1, '+4915112345678', NULL, 17041032" +
              std::to_string(10000 + number) + ", 0, 0, 1, -1, 1, 0, NULL, 'Message number " +
              digits + " of this phone', '+491710760000', 0, 1, 0, 'com.android.mms', 1)");
  }

  fs::path root_;
};

}  // namespace vexascan_test
