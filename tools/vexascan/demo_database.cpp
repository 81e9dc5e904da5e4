// The story of the sample:
//   1. everything up to the last checkpoint is written and folded into the main file;
//   2. single messages are deleted, then a whole conversation, and the log is folded in and
//      emptied: what is left of them stands in free blocks and free pages of the main file;
//   3. messages come and go in the log, which is not folded in any more.
// What the log leaves unwritten is the main file's gain: new pages are taken from the free list,
// but their new content stands in the log alone.
#include "demo_database.h"

#include <algorithm>
#include <string>

#include "evidence_files.h"
#include "exit_code.h"

namespace vexascan {
namespace fs = std::filesystem;
namespace {

constexpr const char* kSchema = R"(
CREATE TABLE android_metadata (locale TEXT);
CREATE TABLE canonical_addresses (_id INTEGER PRIMARY KEY AUTOINCREMENT,address TEXT);
CREATE TABLE threads (_id INTEGER PRIMARY KEY AUTOINCREMENT,date INTEGER DEFAULT 0,message_count INTEGER DEFAULT 0,recipient_ids TEXT,snippet TEXT,snippet_cs INTEGER DEFAULT 0,read INTEGER DEFAULT 1,archived INTEGER DEFAULT 0,type INTEGER DEFAULT 0,error INTEGER DEFAULT 0,has_attachment INTEGER DEFAULT 0);
CREATE TABLE sms (_id INTEGER PRIMARY KEY,thread_id INTEGER,address TEXT,person INTEGER,date INTEGER,date_sent INTEGER DEFAULT 0,protocol INTEGER,read INTEGER DEFAULT 0,status INTEGER DEFAULT -1,type INTEGER,reply_path_present INTEGER,subject TEXT,body TEXT,service_center TEXT,locked INTEGER DEFAULT 0,sub_id INTEGER DEFAULT -1,error_code INTEGER DEFAULT 0,creator TEXT,seen INTEGER DEFAULT 0);
CREATE INDEX typeThreadIdIndex ON sms (type, thread_id);
INSERT INTO android_metadata VALUES ('en_US');
PRAGMA user_version = 67;
)";

constexpr std::size_t kBatch = 12;  // messages in one transaction of the log

class Phone {
 public:
  explicit Phone(const fs::path& path) : path_(path), database_(path) {
    database_.Execute("PRAGMA page_size = 4096; PRAGMA auto_vacuum = NONE;");
    Demand("PRAGMA journal_mode = WAL", "wal");
    Demand("PRAGMA wal_autocheckpoint = 0", "0");
    // Some builds of SQLite overwrite what they delete unless told otherwise.
    database_.SingleText("PRAGMA secure_delete = OFF");
    Demand("PRAGMA secure_delete", "0");
    database_.Execute(kSchema);
  }

  void Insert(const std::vector<const Message*>& messages) {
    std::string places = "?1";
    for (std::size_t i = 0; i < kMessageColumns.size(); ++i) {
      places += ",?" + std::to_string(i + 2);
    }
    Statement insert = database_.Prepare("INSERT INTO sms VALUES (" + places + ")");
    database_.Execute("BEGIN");
    for (const Message* message : messages) {
      insert.Bind(1, message->id);
      for (std::size_t i = 0; i < message->values.size(); ++i) {
        insert.Bind(static_cast<int>(i) + 2, message->values[i]);
      }
      insert.Step();
      insert.Reset();
    }
    database_.Execute("COMMIT");
  }

  void Delete(const std::vector<const Message*>& messages) {
    Statement remove = database_.Prepare("DELETE FROM sms WHERE _id = ?1");
    database_.Execute("BEGIN");
    for (const Message* message : messages) {
      remove.Bind(1, message->id);
      remove.Step();
      remove.Reset();
    }
    database_.Execute("COMMIT");
  }

  // The list of conversations as the messages have it now.
  void WriteConversations() {
    database_.Execute(R"(
INSERT INTO canonical_addresses (_id, address) SELECT DISTINCT thread_id, address FROM sms ORDER BY 1;
INSERT INTO threads (_id, date, message_count, recipient_ids, snippet)
  SELECT thread_id, max(date), count(*), thread_id, substr(body, 1, 40) FROM sms
  GROUP BY thread_id ORDER BY 1;)");
  }

  void Checkpoint() {
    Statement checkpoint = database_.Prepare("PRAGMA wal_checkpoint(TRUNCATE)");
    if (!checkpoint.Step() || checkpoint.Integer(0) != 0) {
      throw ScanFailure("The log of the sample could not be folded in.");
    }
  }

  // Closing would fold the log in, so the copies are taken while the database is open.
  void CopyTo(const fs::path& folder) const {
    CopyBytes(path_, folder / kSampleName);
    CopyBytes(WithSuffix(path_, "-wal"), WithSuffix(folder / kSampleName, "-wal"));
  }

 private:
  void Demand(const std::string& pragma, const std::string& answer) {
    const std::string given = database_.SingleText(pragma);
    if (given != answer) {
      throw ScanFailure("SQLite answered \"" + given + "\" to \"" + pragma +
                        "\", so the sample cannot be made.");
    }
  }

  fs::path path_;
  Database database_;
};

template <typename Predicate>
std::vector<const Message*> Select(const std::vector<Message>& messages, Predicate wanted) {
  std::vector<const Message*> selected;
  for (const Message& message : messages) {
    if (wanted(message)) {
      selected.push_back(&message);
    }
  }
  return selected;
}

std::vector<const Message*> WithFate(const std::vector<Message>& messages, Fate fate) {
  return Select(messages, [fate](const Message& m) { return m.fate == fate; });
}

}  // namespace

void WriteSample(const std::vector<Message>& messages, const fs::path& workshop,
                 const fs::path& folder) {
  Phone phone(workshop / kSampleName);
  phone.Insert(Select(messages, [](const Message& m) { return !m.written_to_log; }));
  phone.WriteConversations();
  phone.Checkpoint();

  phone.Delete(WithFate(messages, Fate::kFreeblock));
  phone.Delete(WithFate(messages, Fate::kFreedPages));
  phone.Checkpoint();

  const auto late = Select(messages, [](const Message& m) { return m.written_to_log; });
  for (std::size_t first = 0; first < late.size(); first += kBatch) {
    const std::size_t last = std::min(first + kBatch, late.size());
    phone.Insert({late.begin() + static_cast<std::ptrdiff_t>(first),
                  late.begin() + static_cast<std::ptrdiff_t>(last)});
  }
  phone.Delete(WithFate(messages, Fate::kLogOnly));
  phone.CopyTo(folder);
}

}  // namespace vexascan
