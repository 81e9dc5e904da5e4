// The records that we encode are those that SQLite writes.
#include "recovery/record_bytes.h"

#include <gtest/gtest.h>

#include "recovery/database.h"
#include "recovery/evidence.h"
#include "recovery/layout_columns.h"
#include "support/temp_folder.h"

namespace recovery {
namespace {

const std::string kColumns =
    "(id INTEGER PRIMARY KEY, number INTEGER, real REAL, text TEXT,"
    " content BLOB, free)";

// Whether the file that SQLite makes of a row holds the payload that we make of it.
bool IsWritten(const Row& row, const std::string& encoding = "UTF-8",
               const std::string& columns = kColumns) {
  const TempFolder folder;
  Layout layout;
  layout.sql = "CREATE TABLE t" + columns;
  ReadColumns("t", layout);
  Row stored;
  {
    Database db(folder.File("t.db"));
    db.Run("PRAGMA encoding = '" + encoding + "'");
    db.Run(layout.sql);
    Statement insert = db.Prepare("INSERT INTO t VALUES(?, ?, ?, ?, ?, ?)");
    for (size_t i = 0; i < row.size(); ++i) insert.Bind(static_cast<int>(i) + 1, row[i]);
    insert.Step();
    insert.Reset();
    stored = db.Rows("SELECT * FROM t").at(0);
  }
  const RecordBytes record = EncodeRecord(
      layout, stored, encoding == "UTF-8" ? TextEncoding::kUtf8 : TextEncoding::kUtf16le);
  const std::string bytes = FileBytes(folder.File("t.db"));
  const size_t local = LocalPayload(record.payload.size(), 4096);
  return bytes.find(record.payload.substr(0, local)) != std::string::npos;
}

TEST(RecordBytes, IntegersTakeTheShortestForm) {
  for (const int64_t edge :
       {int64_t{0}, int64_t{1}, int64_t{2}, int64_t{0x7F}, int64_t{0x80}, int64_t{0x7FFF},
        int64_t{0x8000}, int64_t{0x7FFFFF}, int64_t{0x800000}, int64_t{0x7FFFFFFF},
        int64_t{0x80000000}, int64_t{0x7FFFFFFFFFFF}, int64_t{0x800000000000}, INT64_MAX}) {
    for (const int64_t number : {edge, -edge, -edge - 1}) {
      EXPECT_TRUE(IsWritten({{}, number, {}, "mark", {}, {}})) << number;
    }
  }
}

TEST(RecordBytes, WholeRealsAreIntegersWhereTheColumnIsReal) {
  for (const double number : {0.0, 1.0, -1.0, 2.5, 300.0, -8388608.0, 0x1.0p40, 0x1.0p46, 0x1.0p47,
                              0x1.0p50, 1e300, 726000000.25}) {
    EXPECT_TRUE(IsWritten({{}, {}, number, "mark", {}, {}})) << number;
    EXPECT_TRUE(IsWritten({{}, {}, {}, "mark", {}, number})) << number << " in a free column";
  }
}

TEST(RecordBytes, TextsAndBlobsOfAllLengths) {
  for (const size_t length : {0U, 1U, 57U, 58U, 8185U, 8186U, 20000U}) {
    EXPECT_TRUE(IsWritten({{}, 7, {}, std::string(length, 'a'), {}, {}})) << length;
    EXPECT_TRUE(IsWritten({{}, 7, {}, {}, Blob{std::string(length, '\xFF')}, {}})) << length;
  }
}

TEST(RecordBytes, ValuesAreStoredAsTheColumnWantsThem) {
  EXPECT_TRUE(IsWritten({{}, std::string("42"), std::string("7"), int64_t{5}, {}, int64_t{9}}));
}

TEST(RecordBytes, WideTextsFollowTheDatabase) {
  EXPECT_TRUE(IsWritten({{}, 3, {}, std::string("Grüße 你好 😀"), {}, {}}, "UTF-16le"));
}

TEST(RecordBytes, AHeaderOfMoreThan127BytesCountsItsOwnLength) {
  std::string columns = "(a INTEGER";
  for (int i = 1; i < 130; ++i) columns += ", c" + std::to_string(i) + " INTEGER";
  Layout layout;
  layout.sql = "CREATE TABLE t" + columns + ")";
  ReadColumns("t", layout);
  const TempFolder folder;
  {
    Database db(folder.File("t.db"));
    db.Run(layout.sql);
    db.Run("INSERT INTO t(a, c1, c129) VALUES(5, 600, 70000)");
  }
  Row row(130);
  row[0] = int64_t{5};
  row[1] = int64_t{600};
  row[129] = int64_t{70000};
  const RecordBytes record = EncodeRecord(layout, row, TextEncoding::kUtf8);
  EXPECT_EQ(record.skipped, 2U);
  EXPECT_NE(FileBytes(folder.File("t.db")).find(record.payload), std::string::npos);
}

TEST(RecordBytes, TheRowIdColumnIsNullAndSkipped) {
  Layout layout;
  layout.sql = "CREATE TABLE t(id INTEGER PRIMARY KEY, n INTEGER)";
  ReadColumns("t", layout);
  const RecordBytes record = EncodeRecord(layout, {int64_t{700}, int64_t{5}}, TextEncoding::kUtf8);
  EXPECT_EQ(record.payload, std::string("\x03\x00\x01\x05", 4));
  EXPECT_EQ(record.Tail(), "\x01\x05");
  EXPECT_FALSE(HasRealAffinity("FLOATING POINT"));  // holds "INT"
  EXPECT_TRUE(HasRealAffinity("double"));
}

TEST(RecordBytes, Varints) {
  EXPECT_EQ(Varint(0), std::string(1, '\0'));
  EXPECT_EQ(Varint(0x7F), "\x7F");
  EXPECT_EQ(Varint(0x80), std::string("\x81\x00", 2));
  EXPECT_EQ(Varint(UINT64_MAX), std::string(9, '\xFF'));
}

}  // namespace
}  // namespace recovery
