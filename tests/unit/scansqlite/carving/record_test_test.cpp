#include "scansqlite/carving/record_test.h"

#include <gtest/gtest.h>

#include <bit>
#include <exception>
#include <map>

#include "scansqlite/carving/main_file_carver.h"
#include "scansqlite/carving/position_test.h"
#include "storager/row_sink.h"
#include "support/scan_fixture.h"
#include "unit/scansqlite/random_layout.h"

namespace {

using random_layout::Bytes;
using random_layout::Layout;

std::string Printed(const BoundValue& value) {
  switch (value.kind) {
    case kFieldInteger:
      return "integer " + std::to_string(value.integer);
    case kFieldReal:
      return "real " + std::to_string(std::bit_cast<uint64_t>(value.real));
    case kFieldText:
    case kFieldBlob:
      return (value.kind == kFieldText ? "text " : "blob ") +
             std::string(reinterpret_cast<const char*>(value.bytes), value.size);
    default:
      return "NULL";
  }
}

std::vector<std::string> Printed(const std::vector<BoundValue>& values) {
  std::vector<std::string> texts;
  texts.reserve(values.size());
  for (const BoundValue& value : values) texts.push_back(Printed(value));
  return texts;
}

// What the general test says of a position.
struct General {
  bool is_hit = false;
  bool threw = false;
  std::vector<std::string> row;
  RowIdHint hint;
};

// A file and the two tests on it.
class Tests {
 public:
  Tests(const CarveLayout& layout, const TableFields& fields, const Bytes& bytes)
      : layout_(layout), fields_(fields), bytes_(bytes), file_(bytes) {}

  General TestGeneral(uint64_t position) {
    MainFileCarver carver(*layout_.header, file_.buf());
    SerialTypeCells cells;
    RowValue row;
    General general;
    try {
      general.is_hit = TestPosition(layout_, carver, position, cells, row, general.hint);
    } catch (const std::exception&) {
      general.threw = true;
    }
    std::vector<BoundValue> values;
    if (general.is_hit) BindRowValue(fields_, row, values);
    general.row = Printed(values);
    return general;
  }

  // Compares the verdict on every position from `first` on, seen in pieces of `window` bytes.
  void ExpectSame(SetDepth depth, bool is_fast, uint64_t first, size_t window,
                  const std::string& name) {
    RecordPlan plan = MakeRecordPlan(layout_, fields_, depth);
    if (!is_fast) plan.is_fast = false;
    RecordTest test(plan);
    for (uint64_t position = first; position < bytes_.size(); ++position) {
      const uint64_t begin = position / window * window;
      const uint64_t end = std::min<uint64_t>(begin + window + window / 2, bytes_.size());
      const uint64_t from = begin - std::min<uint64_t>(begin, 64);
      const ByteView view{bytes_.data() + from, from, end, bytes_.size()};
      const General general = TestGeneral(position);
      const Verdict verdict = test.Test(view, position);
      ++verdicts_[verdict];
      if (verdict == Verdict::kOpen) continue;
      ASSERT_FALSE(general.threw) << name << " at " << position;
      ASSERT_EQ(verdict == Verdict::kHit, general.is_hit) << name << " at " << position;
      if (verdict == Verdict::kHit) ExpectRow(test, view, position, general, name);
    }
  }

  size_t Count(Verdict verdict) { return verdicts_[verdict]; }
  size_t rows() const { return rows_; }

 private:
  void ExpectRow(RecordTest& test, const ByteView& view, uint64_t position, const General& general,
                 const std::string& name) {
    std::vector<BoundValue> values = {BoundValue::Integer(42)};  // of the row before
    const RowIdHint hint = test.FindRowId(view, position);
    if (!test.BuildRow(hint, values)) {
      EXPECT_EQ(values.size(), 1U) << "nothing is left of a row that was given up";
      return;
    }
    ++rows_;
    values.erase(values.begin());
    ASSERT_EQ(Printed(values), general.row) << name << " at " << position;
    ASSERT_EQ(hint.has_row_id, general.hint.has_row_id) << name << " at " << position;
    ASSERT_EQ(hint.row_id, general.hint.row_id) << name << " at " << position;
  }

  const CarveLayout& layout_;
  const TableFields& fields_;
  const Bytes& bytes_;
  hand_made::FileOf file_;
  std::map<Verdict, size_t> verdicts_;
  size_t rows_ = 0;
};

TEST(RecordTestTest, RandomRecordsInASoundFile) {
  size_t rows = 0;
  size_t misses = 0;
  size_t open = 0;
  for (uint64_t seed = 1; seed <= 250; ++seed) {
    Dice dice(seed);
    const uint16_t page_size = dice.Pick<uint16_t>({512, 1024, 4096});
    const DbHeaderInfo header =
        hand_made::Header(page_size, 4096U / page_size + 1, dice.Pick<uint16_t>({0, 0, 32}));
    const Layout layout(dice, header);
    const Bytes bytes =
        random_layout::BytesWith(dice, layout.layout, 4096U + page_size + dice.Below(900), 80);
    Tests tests(layout.layout, layout.fields, bytes);
    tests.ExpectSame(SetDepth::kValues, true, page_size, dice.Pick({256, 1000, 100000}),
                     "seed " + std::to_string(seed));
    if (testing::Test::HasFatalFailure()) return;
    rows += tests.rows();
    misses += tests.Count(Verdict::kMiss);
    open += tests.Count(Verdict::kOpen);
  }
  EXPECT_GT(rows, 20000U);
  EXPECT_GT(misses, 200000U);
  EXPECT_LT(open, misses);
}

// Where records can leave the file, and in UTF-16, a position is refused by its serial types only.
TEST(RecordTestTest, CarefulPlansRefuseNothingThatShows) {
  size_t misses = 0;
  size_t thrown = 0;
  for (uint64_t seed = 1; seed <= 120; ++seed) {
    Dice dice(3000 + seed);
    DbHeaderInfo header = hand_made::Header(512, 60000);
    if (seed % 2 == 0) header.text_encoding = 2;
    const Layout layout(dice, header);
    const Bytes bytes = random_layout::BytesWith(dice, layout.layout, 4000, 60);
    Tests tests(layout.layout, layout.fields, bytes);
    tests.ExpectSame(SetDepth::kClasses, false, 100, 100000, "seed " + std::to_string(seed));
    if (testing::Test::HasFatalFailure()) return;
    misses += tests.Count(Verdict::kMiss);
    EXPECT_EQ(tests.Count(Verdict::kHit), 0U);
    for (uint64_t position = 100; position < 1000; ++position) {
      thrown += tests.TestGeneral(position).threw ? 1 : 0;
    }
  }
  EXPECT_GT(misses, 50000U);
  EXPECT_GT(thrown, 10U) << "the bytes were to hold what makes the general test throw";
}

TEST(RecordTestTest, RealMessages) {
  const TempFolder folder;
  {
    SqliteMaker db(folder.File("m.db"));
    db.Run("PRAGMA page_size=1024");
    db.Run(MessageTable());
    AddMessages(db, 1, 120);
    db.Run("DELETE FROM message WHERE rowid % 3 = 0");
  }
  const std::string text = ReadBytes(folder.File("m.db"));
  const Bytes bytes(text.begin(), text.end());
  SchemaCandidate candidate;
  SqliteMaker db(folder.File("m.db"));
  TableFields fields;
  ResultFieldMap result_fields;
  for (const std::vector<std::string>& column : db.Rows("PRAGMA table_info(message)")) {
    const bool is_key = column.at(5) == "1";
    const bool is_text = column.at(2).find("TEXT") != std::string::npos;
    const auto index = static_cast<int32_t>(fields.size());
    candidate.columns.push_back(hand_made::Column(column.at(1), is_text ? 3 : 0, is_key));
    fields.push_back({0, is_text ? 2 : 0, column.at(1), ""});
    result_fields.Insert(
        column.at(1), hand_made::ResultField(column.at(1), is_text ? 2 : 0, index, is_key ? 1 : 0));
  }
  const DbHeaderInfo header = hand_made::Header(1024, static_cast<uint32_t>(bytes.size() / 1024));
  const FeatureMaps features(1);
  CarveLayout layout;
  layout.header = &header;
  layout.features = &features;
  layout.result_fields = &result_fields;
  layout.first_column_is_key = FirstColumnIsKey(candidate);
  layout.columns = MakeColumnRules(candidate, features);
  Tests tests(layout, fields, bytes);
  tests.ExpectSame(SetDepth::kValues, true, 1024, 100000, "messages");
  EXPECT_GE(tests.rows(), 80U);
}

// Two feature maps check the first column, one of them as a text whatever the record holds. Reading
// a text cleans the bytes for all checks behind it: what was kept moves forward, and the last bytes
// stay what they were.
class OneColumnInTwoMaps : public testing::Test {
 protected:
  OneColumnInTwoMaps() : header_(hand_made::Header(512, 4)) {
    layout_.header = &header_;
    layout_.features = &features_;
    layout_.result_fields = &result_fields_;
    layout_.columns.assign(2, ColumnRule{false, {true, true, true, true, true}});
    result_fields_ = hand_made::ResultFields({hand_made::ResultField("b", 0, 1)});
  }

  // Whether a record with this value is accepted. The fast test may leave that to the general one,
  // but must not say otherwise.
  bool IsAccepted(const hand_made::DiskValue& value) {
    Bytes bytes(2048, 0);
    hand_made::Put(bytes, 700, hand_made::LeafCell(5, {value, hand_made::Int16Value(7)}));
    Tests tests(layout_, fields_, bytes);
    const RecordPlan plan = MakeRecordPlan(layout_, fields_, SetDepth::kValues);
    RecordTest test(plan);
    const ByteView view{bytes.data(), 0, bytes.size(), bytes.size()};
    const bool is_hit = tests.TestGeneral(703).is_hit;
    const Verdict verdict = test.Test(view, 703);
    EXPECT_TRUE(verdict == Verdict::kOpen || (verdict == Verdict::kHit) == is_hit);
    return is_hit;
  }

  DbHeaderInfo header_;
  FeatureMaps features_;
  ResultFieldMap result_fields_;
  TableFields fields_ = {{0, 0, "b", "INTEGER"}};
  CarveLayout layout_;
};

TEST_F(OneColumnInTwoMaps, ABlobIsCheckedAsACleaningLeftIt) {
  const FieldFeature as_text = hand_made::Feature(0, kFieldText, kFieldBlob, 0, 100, 1);
  FieldFeature as_blob = hand_made::Feature(0, kFieldBlob, kFieldNone, 0, 100, 1);
  as_blob.item_range = ParseByteSet("a~z");
  const auto blob = [](const std::string& bytes) {
    return hand_made::DiskValue{hand_made::BlobType(bytes.size()), hand_made::Text(bytes)};
  };
  features_ = {{{0, as_text}}, {{0, as_blob}}};
  EXPECT_TRUE(IsAccepted(blob("letters")));
  EXPECT_FALSE(IsAccepted(blob("letters7")));
  EXPECT_TRUE(IsAccepted(blob("\x01letters"))) << "read as letterss by the second check";
  EXPECT_TRUE(IsAccepted(blob("let\x02ters")));
  EXPECT_FALSE(IsAccepted(blob("letters\x02")));
  std::swap(features_[0], features_[1]);
  EXPECT_TRUE(IsAccepted(blob("letters")));
  EXPECT_FALSE(IsAccepted(blob("\x01letters")));
}

TEST_F(OneColumnInTwoMaps, ANumberIsCheckedAsACleaningLeftIt) {
  const FieldFeature as_text = hand_made::Feature(0, kFieldText, kFieldInteger, 0, 100, 1);
  const FieldFeature as_number =
      hand_made::Feature(0, kFieldInteger, kFieldNone, 0x600000, 0x6FFFFF, 1);
  const hand_made::DiskValue number{3, {0x01, 'b', 'c'}};
  features_ = {{{0, as_text}}, {{0, as_number}}};
  EXPECT_TRUE(IsAccepted(number)) << "read as bcc by the second check";
  EXPECT_TRUE(IsAccepted({3, {'b', 'c', 'd'}}));
  std::swap(features_[0], features_[1]);
  EXPECT_FALSE(IsAccepted(number));
  EXPECT_TRUE(IsAccepted({3, {'b', 'c', 'd'}}));
}

}  // namespace
