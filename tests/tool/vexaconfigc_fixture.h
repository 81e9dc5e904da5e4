#pragma once

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

// A folder of its own for sources and databases, removed with the object.
class ConfigFolder {
 public:
  ConfigFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vexaconfigc.XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    root_ = pattern;
  }
  ~ConfigFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  ConfigFolder(const ConfigFolder&) = delete;
  ConfigFolder& operator=(const ConfigFolder&) = delete;

  std::string Path(const std::string& name) const { return root_ + "/" + name; }

  // Writes a file below the folder and returns its path.
  std::string Write(const std::string& name, const std::string& text) const {
    const std::filesystem::path path = Path(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
  }

  // Names of what stands in the folder itself, sorted.
  std::vector<std::string> FileNames() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(root_)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::string root_;
};

struct ToolRun {
  int exit_code = -1;
  std::string output;  // both streams
};

// Runs the built vexaconfigc. The arguments hold no quotes.
inline ToolRun RunVexaconfigc(const std::vector<std::string>& arguments) {
  std::string command = "'" VEXA_BUILD_DIR "/vexaconfigc'";
  for (const std::string& argument : arguments) command += " '" + argument + "'";
  command += " 2>&1";
  ToolRun run;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot start " + command);
  std::array<char, 4096> buffer{};
  for (size_t got = 0; (got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    run.output.append(buffer.data(), got);
  }
  const int status = pclose(pipe);
  if (WIFEXITED(status)) run.exit_code = WEXITSTATUS(status);
  return run;
}

// The lines of a text that hold the words, with their line feeds.
inline std::string LinesWith(const std::string& text, const std::string& words) {
  std::istringstream stream(text);
  std::string found;
  for (std::string line; std::getline(stream, line);) {
    if (line.find(words) != std::string::npos) found += line + "\n";
  }
  return found;
}

inline std::string FileBytes(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  return bytes.str();
}

// Rows of a query, each as its values with a bar between them, with the type of each value that is
// no text in front: i for an integer, n for NULL.
inline std::vector<std::string> QueryRows(const std::string& database, const std::string& sql) {
  sqlite3* raw = nullptr;
  const int opened = sqlite3_open_v2(database.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection(raw, sqlite3_close);
  sqlite3_stmt* prepared = nullptr;
  if (opened != SQLITE_OK ||
      sqlite3_prepare_v2(raw, sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(raw));
  }
  const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared, sqlite3_finalize);
  std::vector<std::string> rows;
  while (sqlite3_step(prepared) == SQLITE_ROW) {
    std::string row;
    for (int i = 0; i < sqlite3_column_count(prepared); ++i) {
      if (i > 0) row += '|';
      const int type = sqlite3_column_type(prepared, i);
      if (type == SQLITE_INTEGER) row += 'i';
      if (type == SQLITE_NULL) row += 'n';
      if (type != SQLITE_NULL) {
        row += reinterpret_cast<const char*>(sqlite3_column_text(prepared, i));
      }
    }
    rows.push_back(row);
  }
  return rows;
}
