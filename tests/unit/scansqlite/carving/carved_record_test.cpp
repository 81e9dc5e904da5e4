#include "scansqlite/carving/carved_record.h"

#include <gtest/gtest.h>

#include "unit/scansqlite/hand_made.h"

namespace {

SerialTypeCells CellsOfWidth(uint32_t serial_bytes, uint32_t data_bytes) {
  SerialTypeCell cell;
  cell.header_bytes = serial_bytes;
  cell.payload_length = data_bytes;
  return {cell};
}

struct MeasureCase {
  uint32_t serial_bytes;
  uint32_t header_size;
};

TEST(MeasureRecord, TheHeaderCountsItsOwnVarint) {
  for (const MeasureCase& c :
       {MeasureCase{0, 1}, MeasureCase{3, 4}, MeasureCase{126, 127}, MeasureCase{127, 129},
        MeasureCase{128, 130}, MeasureCase{16381, 16383}, MeasureCase{16382, 16385},
        MeasureCase{2097148, 2097151}, MeasureCase{2097149, 2097153}}) {
    SCOPED_TRACE(c.serial_bytes);
    const CarvedRecord record = MeasureRecord(CellsOfWidth(c.serial_bytes, 50));
    EXPECT_EQ(record.serial_bytes, c.serial_bytes);
    EXPECT_EQ(record.header_size, c.header_size);
    EXPECT_EQ(record.data_bytes, 50U);
    EXPECT_EQ(record.payload_size, c.header_size + 50);
    EXPECT_EQ(record.local_size, 0U);
    EXPECT_FALSE(record.has_row_id);
    EXPECT_EQ(record.row_id, 0);
  }
}

TEST(MeasureRecord, SumsAllCells) {
  const CarvedRecord record = MeasureRecord(hand_made::Cells({0, 1, 6, 8, 213, 12}));
  EXPECT_EQ(record.serial_bytes, 7U);
  EXPECT_EQ(record.data_bytes, 109U);
  EXPECT_EQ(record.header_size, 8U);
}

TEST(MeasureRecord, SumsWrapAt32Bits) {
  SerialTypeCells cells = CellsOfWidth(1, 0xFFFFFFFF);
  cells.push_back(cells.front());
  EXPECT_EQ(MeasureRecord(cells).data_bytes, 0xFFFFFFFEU);
}

struct LocalCase {
  const char* name;
  DbHeaderInfo header;
  uint32_t payload_size;
  bool result;
  uint32_t local_size;
};

TEST(MeasureLocalPayload, FollowsTheOverflowRule) {
  const DbHeaderInfo page4096 = hand_made::Header(4096, 10);  // max 4061, min 489, unit 4092
  LocalCase cases[] = {
      {"one byte too long", page4096, 4062, true, 489},
      {"remainder fits", page4096, 489 + 4092 + 100, true, 589},
      {"remainder is the largest that fits", page4096, 489 + 4092 + 3572, true, 4061},
      {"remainder does not fit", page4096, 489 + 4092 + 3573, true, 489},
      {"remainder 0", page4096, 489 + 3 * 4092, true, 489},
      {"reserved bytes count", hand_made::Header(4096, 10, 96), 10000, true, 477 + 1531},
      {"no room to reckon with", hand_made::Header(4, 10), 10000, false, 0},
      {"all but four bytes reserved", hand_made::Header(36, 10, 32), 10000, false, 0},
      {"payload below the minimum wraps", page4096, 200, true, 489},
  };
  for (LocalCase& c : cases) {
    SCOPED_TRACE(c.name);
    CarvedRecord record;
    record.payload_size = c.payload_size;
    EXPECT_EQ(MeasureLocalPayload(c.header, record), c.result);
    EXPECT_EQ(record.local_size, c.local_size);
  }
}

}  // namespace
