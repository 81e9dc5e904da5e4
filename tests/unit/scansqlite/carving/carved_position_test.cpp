#include <gtest/gtest.h>

#include "scansqlite/carving/main_file_carver.h"
#include "scansqlite/carving/position_test.h"
#include "scansqlite/carving/wal_carver.h"
#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;
using hand_made::Column;
using hand_made::Feature;
using hand_made::Int16Value;
using hand_made::LeafCell;
using hand_made::ResultField;
using hand_made::TextValue;

constexpr uint16_t kPageSize = 512;

// The table of most tests: id INTEGER PRIMARY KEY, body TEXT, n INTEGER.
class CarvedPosition : public testing::Test {
 protected:
  void SetUp() override {
    header_ = hand_made::Header(kPageSize, 4);
    candidate_.columns = {Column("id", 0, true), Column("body", 3), Column("n", 0)};
    result_fields_ = hand_made::ResultFields(
        {ResultField("id", 0, 0, 1), ResultField("body", 2, 1), ResultField("n", 0, 2)});
  }

  CarveLayout Layout(int64_t flexible_cnt = 0) {
    CarveLayout layout;
    layout.header = &header_;
    layout.features = &features_;
    layout.result_fields = &result_fields_;
    layout.first_column_is_key = FirstColumnIsKey(candidate_);
    layout.flexible_cnt = flexible_cnt;
    layout.columns = MakeColumnRules(candidate_, features_);
    return layout;
  }

  // Tests the position in the main file, and in a log whose frames hold the same bytes.
  bool Test(const Bytes& bytes, uint64_t position, int64_t flexible_cnt = 0) {
    const CarveLayout layout = Layout(flexible_cnt);
    SerialTypeCells cells;
    row_ = RowValue();
    hint_ = RowIdHint();
    hand_made::FileOf file(bytes);
    MainFileCarver carver(header_, file.buf());
    const bool hit = TestPosition(layout, carver, position, cells, row_, hint_);
    const WalPageMap no_frames;
    WalCarver<MemoryBytes> wal_carver(
        {&header_, {bytes.data(), bytes.size()}, &no_frames, &file.buf(), 0});
    RowValue wal_row;
    RowIdHint wal_hint;
    EXPECT_EQ(TestPosition(layout, wal_carver, position, cells, wal_row, wal_hint), hit);
    if (hit) {
      EXPECT_EQ(wal_row.text_values, row_.text_values);
      EXPECT_EQ(wal_row.integer_values, row_.integer_values);
      EXPECT_EQ(wal_hint.has_row_id, hint_.has_row_id);
      EXPECT_EQ(wal_hint.row_id, hint_.row_id);
    }
    return hit;
  }

  // A file of four pages with the bytes at an offset.
  static Bytes FileWith(size_t at, const Bytes& what) {
    Bytes bytes(size_t{kPageSize} * 4, 0);
    hand_made::Put(bytes, at, what);
    return bytes;
  }

  DbHeaderInfo header_;
  SchemaCandidate candidate_;
  FeatureMaps features_;
  ResultFieldMap result_fields_;
  RowValue row_;
  RowIdHint hint_;
};

// The serial types of the second column stand behind payload size, row id, header size and the
// alias column's NULL.
constexpr size_t kHead = 4;

const Bytes kCell = LeafCell(77, {hand_made::NullValue(), TextValue("hello"), Int16Value(1234)});

TEST_F(CarvedPosition, ACellIsCarvedWithItsRowId) {
  ASSERT_TRUE(Test(FileWith(600, kCell), 600 + kHead));
  EXPECT_EQ(row_.text_values.at("body"), "hello");
  EXPECT_EQ(row_.integer_values.at("n"), 1234);
  EXPECT_EQ(row_.integer_values.at("id"), 77);
  EXPECT_TRUE(hint_.has_row_id);
  EXPECT_EQ(hint_.row_id, 77);
}

TEST_F(CarvedPosition, ACellWhoseHeadAFreeblockOverwroteHasNoRowId) {
  Bytes cell = kCell;
  hand_made::Put(cell, 0, {0, 0, 0, 15});
  ASSERT_TRUE(Test(FileWith(600, cell), 600 + kHead));
  EXPECT_EQ(row_.text_values.at("body"), "hello");
  EXPECT_EQ(row_.integer_values.at("id"), 0);
  EXPECT_FALSE(hint_.has_row_id);
  EXPECT_EQ(hint_.row_id, 0);
}

TEST_F(CarvedPosition, AHeadMayLieInThePageBefore) {
  ASSERT_TRUE(Test(FileWith(kPageSize - 2, kCell), kPageSize - 2 + kHead));
  EXPECT_EQ(hint_.row_id, 77);
}

TEST_F(CarvedPosition, AnOverlongRowIdIsAcceptedWithAnotherValue) {
  const Bytes cell = LeafCell((uint64_t{1} << 35) + 7,
                              {hand_made::NullValue(), TextValue("hello"), Int16Value(1234)});
  ASSERT_TRUE(Test(FileWith(600, cell), 600 + kHead + 5));
  EXPECT_TRUE(hint_.has_row_id);
  EXPECT_EQ(hint_.row_id, 15);
}

struct HeaderCase {
  const char* name;
  std::vector<uint8_t> types;
  bool hit;
};

TEST_F(CarvedPosition, ARecordMustHoldAValueOutsideAnAlias) {
  candidate_.columns = {Column("a", 0), Column("b", 8), Column("c", 0, true)};
  const HeaderCase cases[] = {
      {"all NULL", {0, 0, 0}, false},
      {"all reserved", {10, 11, 10}, false},
      {"NULL and reserved", {0, 10, 11}, false},
      {"only an alias has a value", {0, 0, 1}, false},
      {"an integer", {1, 0, 0}, true},
      {"a constant", {0, 8, 0}, true},
      {"an empty text", {0, 13, 0}, true},
      {"an integer beside reserved types", {11, 1, 10}, true},
  };
  for (const HeaderCase& c : cases) {
    EXPECT_EQ(Test(FileWith(600, c.types), 600), c.hit) << c.name;
  }
}

struct FlexibleCase {
  size_t columns;
  size_t cells;
  int64_t flexible_cnt;
  bool hit;
};

TEST_F(CarvedPosition, AWideTableAcceptsAHeaderThatBreaksOff) {
  const FlexibleCase cases[] = {{20, 17, 2, true},  {20, 16, 2, false}, {20, 19, 0, true},
                                {20, 18, 0, false}, {19, 16, 2, false}, {19, 18, 100, false},
                                {20, 20, 0, true},  {20, 1, 18, true},  {20, 20, -9, true},
                                {20, 19, -1, false}};
  for (const FlexibleCase& c : cases) {
    SCOPED_TRACE(c.cells);
    candidate_.columns.assign(c.columns, Column("x", 0));
    Bytes types(c.cells, 1);
    types.push_back(13);  // no column takes a text
    const Bytes record = hand_made::Join({types, Bytes(c.cells, 5)});
    result_fields_ = hand_made::ResultFields(
        {ResultField("first", 0, 0), ResultField("last", 0, static_cast<int32_t>(c.cells - 1)),
         ResultField("absent", 0, static_cast<int32_t>(c.columns + 1))});
    EXPECT_EQ(Test(FileWith(600, record), 600, c.flexible_cnt), c.hit);
    if (!c.hit || c.cells == c.columns) continue;
    EXPECT_EQ(row_.integer_values.at("first"), 13) << "the body begins behind the cells";
    EXPECT_EQ(row_.integer_values.at("absent"), 0);
  }
}

TEST_F(CarvedPosition, FeaturesOfEveryLayoutAreAsked) {
  const Bytes file = FileWith(600, kCell);
  features_ = {hand_made::FeaturesOf({Feature(1, 2, -1, 1, 5, 1)}), {}};
  EXPECT_TRUE(Test(file, 600 + kHead));
  features_[1] = hand_made::FeaturesOf({Feature(2, 0, -1, 0, 1000)});
  EXPECT_FALSE(Test(file, 600 + kHead)) << "another layout's range";
  features_[1] = hand_made::FeaturesOf({Feature(2, 3, -1, 0, 9999)});
  EXPECT_FALSE(Test(file, 600 + kHead)) << "another layout's class";
}

TEST_F(CarvedPosition, AnUnknownResultTypeDropsTheRecord) {
  result_fields_.Insert("odd", ResultField("odd", 6, 1));
  EXPECT_FALSE(Test(FileWith(600, kCell), 600 + kHead));
}

struct SizeCase {
  uint32_t length;
  uint32_t limit;
  bool fits;
};

TEST(ValuesFit, ValuesAreShorterThanTheSourceAndNotLongerThanTwentyMebibytes) {
  for (const SizeCase& c :
       {SizeCase{99, 100, true}, SizeCase{100, 100, false}, SizeCase{20971520, 0xFFFFFFFF, true},
        SizeCase{20971521, 0xFFFFFFFF, false}, SizeCase{0, 0, false}, SizeCase{0, 1, true}}) {
    SerialTypeCell cell;
    cell.payload_length = c.length;
    EXPECT_EQ(ValuesFit({SerialTypeCell{}, cell}, c.limit), c.fits) << c.length;
  }
}

// A record of two columns, id as alias and body, that overflows onto page 2 of four.
class OverflowingPosition : public CarvedPosition {
 protected:
  void SetUp() override {
    CarvedPosition::SetUp();
    candidate_.columns = {Column("id", 0, true), Column("body", 3)};
    result_fields_ =
        hand_made::ResultFields({ResultField("id", 0, 0, 1), ResultField("body", 2, 1)});
    for (size_t i = 0; text_.size() < 700; ++i) text_ += static_cast<char>('a' + i % 26);
  }

  // The cell at offset 20 of page 1, the rest of its payload on page 2, which points to `next`.
  Bytes MakeFile(size_t text_length, uint32_t first_page, uint32_t next) {
    const Bytes payload =
        hand_made::Record({hand_made::NullValue(), TextValue(text_.substr(0, text_length))});
    const uint32_t min = header_.table_min_local;
    const auto size = static_cast<uint32_t>(payload.size());
    const uint32_t wanted = min + (size - min) % (kPageSize - 4U);
    const uint32_t local = wanted <= header_.table_max_leaf ? wanted : min;
    Bytes bytes(size_t{kPageSize} * 4, 0);
    const Bytes head = hand_made::Join({hand_made::Varint(size), {9}});
    position_ = 20 + head.size() + 2;
    hand_made::Put(bytes, 20, head);
    const auto split = payload.begin() + local;
    hand_made::Put(bytes, 20 + head.size(), {payload.begin(), split});
    hand_made::Put(bytes, 20 + head.size() + local, hand_made::U32(first_page));
    hand_made::Put(bytes, kPageSize, hand_made::U32(next));
    hand_made::Put(bytes, kPageSize + 4, {split, payload.end()});
    return bytes;
  }

  std::string text_;
  uint64_t position_ = 0;
};

TEST_F(OverflowingPosition, IsPutTogetherFromItsPages) {
  // A header of 4 bytes; 479 and more of payload do not fit the page.
  for (const size_t length : {474U, 475U, 520U}) {
    SCOPED_TRACE(length);
    const Bytes bytes = MakeFile(length, 2, 0);
    ASSERT_TRUE(Test(bytes, position_));
    EXPECT_EQ(row_.text_values.at("body"), text_.substr(0, length));
    EXPECT_EQ(hint_.row_id, 9);
  }
}

TEST_F(OverflowingPosition, APayloadOfExactlyTheLeafMaximumHasNoOverflow) {
  const size_t length = header_.table_max_leaf - 4;
  const Bytes payload =
      hand_made::Record({hand_made::NullValue(), TextValue(text_.substr(0, length))});
  ASSERT_EQ(payload.size(), header_.table_max_leaf);
  const Bytes bytes =
      FileWith(20, hand_made::Join({hand_made::Varint(payload.size()), {9}, payload}));
  ASSERT_TRUE(Test(bytes, 20 + 5));
  EXPECT_EQ(row_.text_values.at("body"), text_.substr(0, length));
  EXPECT_EQ(hint_.row_id, 9);
}

TEST_F(OverflowingPosition, AChainThatEndsEarlyIsAMissInTheFileAndAShorterRecordInTheLog) {
  const Bytes bytes = MakeFile(500, 0, 0);
  const CarveLayout layout = Layout();
  SerialTypeCells cells;
  hand_made::FileOf file(bytes);
  MainFileCarver carver(header_, file.buf());
  EXPECT_FALSE(TestPosition(layout, carver, position_, cells, row_, hint_));
  const WalPageMap no_frames;
  WalCarver<MemoryBytes> wal_carver(
      {&header_, {bytes.data(), bytes.size()}, &no_frames, &file.buf(), 0});
  ASSERT_TRUE(TestPosition(layout, wal_carver, position_, cells, row_, hint_));
  const std::string kept = row_.text_values.at("body");
  EXPECT_GT(kept.size(), 0U);
  EXPECT_LT(kept.size(), 500U);
  EXPECT_EQ(kept, text_.substr(0, kept.size()));
}

TEST_F(OverflowingPosition, AGeometryWithoutRoomIsAMiss) {
  const Bytes bytes = MakeFile(500, 2, 0);
  header_.reserved_size = kPageSize - 4;
  EXPECT_FALSE(Test(bytes, position_));
}

// The log's own chains: the salt is the first byte of the record's frame's salt-1.
TEST_F(OverflowingPosition, TheLogFollowsFramesWithTheSaltOfTheRecordsFrame) {
  const Bytes pages = MakeFile(500, 2, 0);
  for (const uint32_t salt : {0x42000000U, 0x42000001U}) {
    Bytes frames;
    for (const uint32_t page : {3U, 1U, 2U}) {  // a frame in front, so that offsets differ
      Bytes frame(24 + kPageSize, 0);
      hand_made::Put(frame, 0, hand_made::U32(page));
      hand_made::Put(frame, 8, hand_made::U32(salt));
      const auto begin = pages.begin() + (page - 1) * kPageSize;
      hand_made::Put(frame, 24, {begin, begin + kPageSize});
      frames = hand_made::Join({frames, frame});
    }
    WalPageMap map;
    MapWalFrames(MemoryBytes{frames.data(), frames.size()}, 24 + kPageSize, map);
    hand_made::FileOf main(Bytes(size_t{kPageSize} * 4, 'z'));
    WalCarver<MemoryBytes> carver({&header_, {frames.data(), frames.size()}, &map, &main.buf(), 0});
    SerialTypeCells cells;
    const CarveLayout layout = Layout();
    ASSERT_TRUE(TestPosition(layout, carver, 24 + kPageSize + 24 + position_, cells, row_, hint_));
    const std::string& body = row_.text_values.at("body");
    EXPECT_EQ(body.size(), 500U);
    EXPECT_EQ(body == text_.substr(0, 500), salt == 0x42000000U);
    EXPECT_EQ(body.back() == 'z', salt != 0x42000000U);
  }
}

}  // namespace
