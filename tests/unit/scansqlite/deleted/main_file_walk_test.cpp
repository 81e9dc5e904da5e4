#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/scan_sqlite_probe.h"
#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;
using hand_made::Column;
using testing::Contains;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr size_t kPageSize = 512;

// Deleted scans over hand-made pages. SQLite is asked only for the root page of table t, in a
// working database of its own.
class MainFileWalk : public testing::Test {
 protected:
  MainFileWalk() : probe_(ScanContext{}) {
    probe_.context().source_db_path = folder_.File("source");
    TableSchemaInfo table;
    table.table_name = "t";
    table.candidates = {{true, {Column("id", 0, true), Column("body", 3)}}};
    probe_.table_infos()["t"] = table;
    FieldFeature body = hand_made::Feature(1, 2, -1, 5, 5, 1);
    body.item_range = ParseByteSet("a~z,'0'~'9'");
    probe_.table_features()["t"] = {hand_made::FeaturesOf({body})};
    TableFieldInfo field{0, 2, "body", "TEXT"};
    probe_.need_query_tables()["t"] = {field};
    probe_.result_field_maps()["t"] =
        hand_made::ResultFields({hand_made::ResultField("body", 2, 1)});
    probe_.OpenResult(folder_.File("result"));
    probe_.CreateResultTables();
  }

  TableSchemaInfo& table() { return probe_.table_infos()["t"]; }

  // A page of the type that holds the text in one cell at `at`.
  static Bytes Page(uint8_t type, const std::string& text, size_t at = 100) {
    Bytes page(kPageSize, 0);
    page[0] = type;
    hand_made::Put(page, at, hand_made::LeafCell(1, {{0, {}}, hand_made::TextValue(text)}));
    return page;
  }

  static Bytes FirstPage(const std::string& text, size_t at = 120) { return Page('S', text, at); }

  // The texts that the scan of these bytes saved.
  std::vector<std::string> Scan(const Bytes& bytes) {
    hand_made::WriteFile(folder_.File("source"), bytes);
    probe_.header() = hand_made::Header(kPageSize, static_cast<uint32_t>(bytes.size() / kPageSize));
    EXPECT_EQ(probe_.DeletedScanSqliteFile(), 0);
    SqliteConnection connection(folder_.File("result"));
    connection.Open("");
    SqliteStatement query;
    query.Prepare(connection.handle(), "select body from t");
    std::vector<std::string> texts;
    while (query.Step() == SQLITE_ROW) texts.push_back(query.ColumnText(0));
    return texts;
  }

  // Makes t a small table whose root is the second page of the working database.
  void MakeSmall(const std::string& create = "create table t (id integer primary key, body)") {
    table().is_small_table = true;
    probe_.working_db_path() = folder_.File("working");
    SqliteConnection connection(folder_.File("working"));
    connection.Open("");
    ASSERT_EQ(sqlite3_exec(connection.handle(), create.c_str(), nullptr, nullptr, nullptr), 0);
  }

  // An interior page with these children.
  static Bytes Interior(const std::vector<uint32_t>& children) {
    Bytes page(kPageSize, 0);
    page[0] = 5;
    page[4] = static_cast<uint8_t>(children.size());
    for (size_t i = 0; i < children.size(); ++i) {
      hand_made::Put(page, 12 + 2 * i, hand_made::U16(static_cast<uint32_t>(400 + 4 * i)));
      hand_made::Put(page, 400 + 4 * i, hand_made::U32(children[i]));
    }
    return page;
  }

  TempFolder folder_;
  ScanSqliteProbe probe_;
};

TEST_F(MainFileWalk, AOnePageFileIsSweptBehindTheHeaderWhateverItsType) {
  EXPECT_THAT(Scan(FirstPage("first")), UnorderedElementsAre("first"));
}

TEST_F(MainFileWalk, TheFirstHundredBytesAreNotSwept) {
  // The position of a record is that of its first serial type, here 99 and 100.
  EXPECT_THAT(Scan(FirstPage("first", 95)), IsEmpty());
}

TEST_F(MainFileWalk, PagesAreTakenByTheirFirstByte) {
  const Bytes file =
      hand_made::Join({FirstPage("page1"), Page(13, "leaf0"), Page(5, "inter"), Page(0, "free0"),
                       Page(10, "index"), Page(2, "innr0"), Page('x', "other"), Page(13, "last0")});
  EXPECT_THAT(Scan(file), UnorderedElementsAre("page1", "leaf0", "inter", "free0", "last0"));
}

TEST_F(MainFileWalk, TheFirstEightBytesOfAPageAreNotPositions) {
  // The serial type stands four bytes behind the cell's first.
  EXPECT_THAT(
      Scan(hand_made::Join({FirstPage("page1"), Page(13, "below", 3), Page(13, "above", 4)})),
      UnorderedElementsAre("page1", "above"));
}

TEST_F(MainFileWalk, RowsOfAPartialLastPageAreNotSaved) {
  Bytes file = hand_made::Join({FirstPage("page1"), Page(13, "page2"), Page(13, "page3")});
  file.resize(file.size() - 10);
  EXPECT_THAT(Scan(file), UnorderedElementsAre("page1", "page2"));
}

TEST_F(MainFileWalk, ATableOfScanTypeOneIsPassedOver) {
  table().scan_type = 1;
  EXPECT_THAT(Scan(FirstPage("page1")), IsEmpty());
}

TEST_F(MainFileWalk, ASmallTableIsItsLeafRootAlone) {
  MakeSmall();
  EXPECT_THAT(Scan(hand_made::Join({FirstPage("page1"), Page(13, "page2"), Page(13, "page3")})),
              UnorderedElementsAre("page2"));
}

TEST_F(MainFileWalk, ASmallTablesListIsWalkedBreadthFirst) {
  MakeSmall();
  const Bytes file =
      hand_made::Join({FirstPage("page1"), Interior({3, 5}), Interior({4}), Page(13, "page4"),
                       Page(13, "page5"), Page(13, "page6"), Page(13, "page7")});
  EXPECT_THAT(Scan(file), UnorderedElementsAre("page5", "page4"));
}

TEST_F(MainFileWalk, AListedPageIsSweptFromItsFirstByteAndNotTested) {
  MakeSmall();
  Bytes listed = Page(10, "page3", 0);  // the cell's own first byte makes the type
  const Bytes file = hand_made::Join(
      {FirstPage("page1"), Interior({3}), listed, Page(13, "page4"), Page(13, "page5")});
  EXPECT_THAT(Scan(file), UnorderedElementsAre("page3"));
}

TEST_F(MainFileWalk, AListedPageOfZeroEndsTheWalk) {
  MakeSmall();
  const Bytes file = hand_made::Join({FirstPage("page1"), Interior({3, 0, 4}), Page(13, "page3"),
                                      Page(13, "page4"), Page(13, "page5")});
  EXPECT_THAT(Scan(file), UnorderedElementsAre("page3"));
}

TEST_F(MainFileWalk, AChildAbovePageCountMinusOneIsLeftOut) {
  MakeSmall();
  LogCapture log;
  const Bytes file = hand_made::Join({FirstPage("page1"), Interior({5, 3}), Page(13, "page3"),
                                      Page(13, "page4"), Page(13, "page5")});
  EXPECT_THAT(Scan(file), UnorderedElementsAre("page3"));
  EXPECT_THAT(log.Messages(),
              Contains("[GetScanPage] Get a wrong page number, the sqlite file may have been "
                       "corrupted"));
}

TEST_F(MainFileWalk, ARootThatIsNoTablePageGivesNothing) {
  for (const uint8_t type : Bytes{0, 2, 10, 99}) {
    SCOPED_TRACE(int{type});
    if (!table().is_small_table) MakeSmall();
    EXPECT_THAT(Scan(hand_made::Join({FirstPage("page1"), Page(type, "page2"), Page(13, "page3")})),
                IsEmpty());
  }
  EXPECT_THAT(Scan(hand_made::Join({FirstPage("page1"), Interior({}), Page(13, "page3")})),
              IsEmpty());
}

TEST_F(MainFileWalk, ASmallTableThatTheWorkingCopyLacksGivesNothing) {
  MakeSmall("create table other (a)");
  LogCapture log;
  EXPECT_THAT(Scan(hand_made::Join({FirstPage("page1"), Page(13, "page2")})), IsEmpty());
  EXPECT_THAT(log.Messages(),
              Contains("At file : src/common/sqlitecommon, line : 641, access out of file size."));
}

TEST_F(MainFileWalk, AnUnreadableSourceIsReported) {
  LogCapture log;
  EXPECT_EQ(probe_.DeletedScanSqliteFile(), 1012);
  EXPECT_THAT(log.Messages(), Contains(testing::StartsWith(
                                  "create file data buf fail File : src/scansqlite, "
                                  "Function : ScanSqlite::DeletedScanSqliteFile, Line : ")));
}

}  // namespace
