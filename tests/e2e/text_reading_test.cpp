// What becomes of a carved text that holds bytes which a result never shows.
#include <gtest/gtest.h>

#include "support/scan_fixture.h"

namespace {

constexpr int kTextOnly = 2;
constexpr int kBlob = 3;
constexpr int kNoOther = -1;

struct TextCase {
  const char* name;
  int field_type;
  int or_field_type;
  int64_t longest;
  const char* sent;
  const char* carved;
};

class TextReading : public ScanFixture {
 protected:
  void Configure(const TextCase& c) {
    ConfigMaker config(this->config());
    config.AddTable("note");
    config.AddField("note", {"_id", "INTEGER", 0, 0, 1});
    config.AddField("note", {"body", "TEXT", 2, 0, 0});
    config.AddField("note", {"date", "INTEGER", 0, 1, 0});
    config.AddFeature("note", {"body", 0, c.field_type, 0, c.longest, "", "", c.or_field_type});
    config.AddFeature("note", {"date", 1, 0, 1000000000000, 2000000000000, "", "", kNoOther});
    config.ScanDatabase(1);
  }
};

// A reading as text moves the bytes that it keeps over those that it drops, and leaves the length
// as it was: the next reading finds a stale tail. A text that is judged on its raw bytes is read
// once, into the result.
TEST_F(TextReading, OnlyATextJudgedOnItsBytesComesBackUndamaged) {
  const TextCase cases[] = {
      {"nothing to drop", kTextOnly, kNoOther, 100, "hello", "hello"},
      {"attachment mark, judged as text", kTextOnly, kNoOther, 100, "\uFFFChello", "hellollo"},
      {"attachment mark, judged on its bytes", kBlob, kTextOnly, 100, "\uFFFChello", "hello"},
      {"control character, judged as text", kTextOnly, kNoOther, 100,
       "c00\x01"
       "0",
       "c0000"},
      {"control character, judged on its bytes", kBlob, kTextOnly, 100,
       "c00\x01"
       "0",
       "c000"},
      {"refused by its length, so that text judges after all", kBlob, kTextOnly, 6, "\uFFFChello",
       "hellollo"},
  };
  for (const TextCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::filesystem::remove(config());
    std::filesystem::remove(source());
    Configure(c);
    {
      SqliteMaker db(source());
      db.Run("CREATE TABLE note (_id INTEGER PRIMARY KEY, body TEXT, date INTEGER)");
      db.Run("INSERT INTO note VALUES (1, " + SqlText(c.sent) + ", 1600000000000)");
    }
    ASSERT_EQ(RunScan(kDeleted), 0);
    EXPECT_EQ(ResultRows("SELECT body FROM note"), (TextRows{{c.carved}}));
  }
}

}  // namespace
