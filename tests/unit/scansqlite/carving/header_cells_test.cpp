#include "scansqlite/carving/header_cells.h"

#include <gtest/gtest.h>

#include <map>

#include "scansqlite/carving/record_test.h"
#include "unit/scansqlite/random_layout.h"

namespace {

using random_layout::Bytes;
using random_layout::Layout;

// The first columns of a layout.
CarveLayout Narrowed(const CarveLayout& layout, size_t width) {
  CarveLayout narrow = layout;
  narrow.columns.resize(width);
  return narrow;
}

// The verdict, and of a hit how many values its row has.
struct Outcome {
  Verdict verdict = Verdict::kMiss;
  std::vector<BoundValue> row;
  RowIdHint hint;
};

Outcome Take(RecordTest& test, Verdict verdict, const ByteView& view, uint64_t position) {
  Outcome outcome;
  outcome.verdict = verdict;
  if (verdict != Verdict::kHit) return outcome;
  outcome.hint = test.FindRowId(view, position);
  test.BuildRow(outcome.hint, outcome.row);
  return outcome;
}

void ExpectSame(const Outcome& a, const Outcome& b, const std::string& name) {
  ASSERT_EQ(a.verdict, b.verdict) << name;
  ASSERT_EQ(a.hint.has_row_id, b.hint.has_row_id) << name;
  ASSERT_EQ(a.hint.row_id, b.hint.row_id) << name;
  ASSERT_EQ(a.row.size(), b.row.size()) << name;
  for (size_t i = 0; i < a.row.size(); ++i) {
    ASSERT_EQ(a.row[i].kind, b.row[i].kind) << name;
    ASSERT_EQ(a.row[i].integer, b.row[i].integer) << name;
    ASSERT_EQ(a.row[i].size, b.row[i].size) << name;
  }
}

// What is in memory may end anywhere, in a header too.
TEST(HeaderCellsTest, ANarrowerLayoutSeesWhatItWouldReadByItself) {
  constexpr size_t kBytes = 700;
  std::map<Verdict, size_t> verdicts;
  for (uint64_t seed = 1; seed <= 120; ++seed) {
    Dice dice(7000 + seed);
    const Layout wide(dice, hand_made::Header(1024, 9));
    const size_t width = wide.layout.columns.size();
    const size_t narrow_width = 1 + dice.Below(width);
    const CarveLayout narrow = Narrowed(wide.layout, narrow_width);
    const RecordPlan wide_plan = MakeRecordPlan(wide.layout, wide.fields, SetDepth::kClasses);
    const RecordPlan plan = MakeRecordPlan(narrow, wide.fields, SetDepth::kClasses);
    ASSERT_TRUE(BeginAlike(wide_plan, plan));
    HeaderCells shared(wide_plan);
    RecordTest behind(plan);
    RecordTest alone(plan);
    const CarveLayout& layout = dice.Chance(50) ? wide.layout : narrow;
    const Bytes bytes = random_layout::BytesWith(dice, layout, kBytes, 15);
    const uint64_t end = dice.Chance(50) ? kBytes : 300 + dice.Below(400);
    const ByteView view{bytes.data(), 0, end, bytes.size()};
    for (uint64_t position = 0; position < end; ++position) {
      ASSERT_TRUE(shared.Read(view, position));
      const Verdict verdict = behind.TestBehind(shared, view, position);
      ++verdicts[verdict];
      const std::string name =
          "seed " + std::to_string(seed) + " position " + std::to_string(position);
      ExpectSame(Take(behind, verdict, view, position),
                 Take(alone, alone.Test(view, position), view, position), name);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
  EXPECT_GT(verdicts[Verdict::kHit], 1000U);
  EXPECT_GT(verdicts[Verdict::kMiss], 1000U);
  EXPECT_GT(verdicts[Verdict::kOpen], 1000U);
}

TEST(HeaderCellsTest, LayoutsBeginAlikeWhenTheirCommonColumnsDo) {
  const FeatureMaps no_features;
  const ResultFieldMap no_fields;
  const DbHeaderInfo header = hand_made::Header(1024, 9);
  const auto plan_of = [&](const std::vector<int32_t>& types, bool has_key) {
    SchemaCandidate candidate;
    for (const int32_t type : types) candidate.columns.push_back({"c", type, false});
    CarveLayout layout;
    layout.header = &header;
    layout.features = &no_features;
    layout.result_fields = &no_fields;
    layout.first_column_is_key = has_key;
    layout.columns = MakeColumnRules(candidate, no_features);
    return MakeRecordPlan(layout, {}, SetDepth::kClasses);
  };
  const RecordPlan plan = plan_of({0, 3, 4}, false);
  EXPECT_TRUE(BeginAlike(plan, plan));
  EXPECT_TRUE(BeginAlike(plan, plan_of({0, 3}, false)));
  EXPECT_TRUE(BeginAlike(plan_of({0, 3}, false), plan));
  EXPECT_TRUE(BeginAlike(plan, plan_of({0, 3, 4, 0, 0}, false)));
  EXPECT_FALSE(BeginAlike(plan, plan_of({0, 4, 4}, false)));
  EXPECT_FALSE(BeginAlike(plan, plan_of({0, 3, 4}, true)));
}

TEST(HeaderCellsTest, APositionWithoutRoomForACellHeadIsNotRead) {
  Dice dice(3);
  const Layout layout(dice, hand_made::Header(1024, 9));
  const RecordPlan plan = MakeRecordPlan(layout.layout, layout.fields, SetDepth::kClasses);
  HeaderCells cells(plan);
  const Bytes bytes(300, 1);
  const ByteView view{bytes.data(), 100, 400, 1000};
  EXPECT_FALSE(cells.Read(view, 99));
  EXPECT_FALSE(cells.Read(view, 139));
  EXPECT_TRUE(cells.Read(view, 140));
  EXPECT_FALSE(cells.Read(view, 401));
}

}  // namespace
