#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "recovery/database.h"
#include "recovery/evidence.h"
#include "recovery/facts_reader.h"
#include "recovery/scenario.h"
#include "support/scan_fixture.h"
#include "support/temp_folder.h"

namespace recovery {
namespace {

const char* const kFacts = R"(
system: android
data_type: sms
databases:
  - file: mmssms.db
    wal: true
    tables:
      - name: sms
        conversation: thread_id
        age: date
        update: {read: "1"}
        layouts:
          - version: 4
            sql: CREATE TABLE sms(_id INTEGER PRIMARY KEY, thread_id INTEGER, address TEXT,
              date INTEGER, read INTEGER, body TEXT)
          - version: 5
            sql: CREATE TABLE sms(_id INTEGER PRIMARY KEY, thread_id INTEGER, address TEXT,
              date INTEGER, read INTEGER, body TEXT, sub_id INTEGER DEFAULT -1, cost REAL)
        values: {thread_id: group 20, address: group_of phone 30, date: time_ms, read: flag 0.5,
          body: message, sub_id: pick 1:3 2, cost: 'real 0 9 ? 0.5'}
      - name: words
        share: 0.3
        layouts:
          - sql: CREATE TABLE words(word TEXT PRIMARY KEY, weight INTEGER) WITHOUT ROWID
        values: {word: ascii 8 20, weight: small 1 90}
)";

class PhoneTest : public ::testing::Test {
 protected:
  PhoneTest() {
    WriteBytes(folder_.File("facts.yaml"), kFacts);
    facts_ = ReadFacts(folder_.File("facts.yaml"));
  }

  std::optional<DatabaseTruth> Make(const std::string& scenario, size_t generation = 0,
                                    uint64_t seed = 3) {
    return MakeDatabase(facts_, facts_.databases[0],
                        {scenario, folder_.File(scenario), generation, 150, seed});
  }

  static size_t Count(const TableTruth& table, bool Version::*what) {
    return static_cast<size_t>(
        std::count_if(table.versions.begin(), table.versions.end(),
                      [what](const Version& version) { return version.*what; }));
  }

  TempFolder folder_;
  Facts facts_;
};

TEST_F(PhoneTest, BooksAgreeWithTheDatabase) {
  for (const std::string_view scenario : kScenarios) {
    const auto truth = Make(std::string(scenario));
    ASSERT_TRUE(truth) << scenario;
    Database db(truth->path);
    EXPECT_EQ(db.One("PRAGMA integrity_check"), Value{std::string("ok")}) << scenario;
    for (const TableTruth& table : truth->tables) {
      EXPECT_EQ(db.Number("SELECT count(*) FROM " + table.name),
                static_cast<int64_t>(Count(table, &Version::live)))
          << scenario;
    }
    const TableTruth& sms = truth->tables.at(0);
    std::set<int64_t> ids;
    for (const Version& version : sms.versions) {
      if (version.live) ids.insert(version.row_id);
    }
    for (const Row& row : db.Rows("SELECT _id FROM sms")) {
      EXPECT_TRUE(ids.contains(std::get<int64_t>(row[0]))) << scenario;
    }
    EXPECT_EQ(truth->system_version, 5);
  }
}

TEST_F(PhoneTest, DeletionsLeaveRowsStandingAsTheLifeWas) {
  EXPECT_EQ(Count(Make("clean")->tables[0], &Version::standing), 0U);
  const TableTruth mixed = Make("mixed")->tables[0];
  EXPECT_GT(Count(mixed, &Version::standing), 15U);
  EXPECT_GT(mixed.versions.size() - Count(mixed, &Version::live), 40U);
  EXPECT_GT(Count(Make("upgrade")->tables[0], &Version::standing), 15U);
  EXPECT_GT(Count(Make("vacuum")->tables[0], &Version::standing), 3U);
  facts_.databases[0].wal = false;
  EXPECT_EQ(Count(Make("secure_delete")->tables[0], &Version::standing), 0U);
}

TEST_F(PhoneTest, UpgradedRowsAreShorterThanNewOnes) {
  const TableTruth table = Make("upgrade")->tables[0];
  std::set<size_t> widths;
  for (const Version& version : table.versions) widths.insert(version.row.size());
  EXPECT_EQ(widths, (std::set<size_t>{6, 8}));
  EXPECT_FALSE(Make("upgrade", 1));  // the oldest layout grew out of none
  EXPECT_EQ(Make("clean", 1)->tables[0].layout.columns.size(), 6U);
}

TEST_F(PhoneTest, TheLogHoldsSeveralGenerations) {
  const auto truth = Make("mixed");
  const std::string log = FileBytes(truth->path + "-wal");
  std::set<std::string> salts;
  for (size_t at = 32; at + 24 + 4096 <= log.size(); at += 24 + 4096) {
    salts.insert(log.substr(at + 8, 8));
  }
  EXPECT_GE(salts.size(), 2U);
}

TEST_F(PhoneTest, EqualSeedsGiveEqualDatabases) {
  const TableTruth first = Make("vacuum")->tables[0];
  const TableTruth second = Make("vacuum")->tables[0];
  const TableTruth other = Make("vacuum", 0, 4)->tables[0];
  ASSERT_EQ(first.versions.size(), second.versions.size());
  for (size_t i = 0; i < first.versions.size(); ++i) {
    EXPECT_EQ(first.versions[i].row, second.versions[i].row);
    EXPECT_EQ(first.versions[i].standing, second.versions[i].standing);
  }
  EXPECT_NE(first.versions[0].row, other.versions[0].row);
}

}  // namespace
}  // namespace recovery
