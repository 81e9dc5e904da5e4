#include <gtest/gtest.h>

#include "differential/both_scans.h"

namespace differential {
namespace {

std::vector<ScanOptions> AllOptions() {
  std::vector<ScanOptions> all;
  for (const SieveLevel level : SieveLevels()) {
    for (const bool share_sweeps : {false, true}) {
      for (const bool keep_keys : {false, true})
        all.push_back({level, share_sweeps, keep_keys, {}});
    }
  }
  for (const LateIndexLimits& limits : {IndexAlwaysLate(), IndexLate(3, 10), IndexNeverLate()}) {
    all.push_back({BestSieveLevel(), true, true, limits});
  }
  return all;
}

std::string Printed(const ScanOptions& options) {
  return "level " + std::to_string(static_cast<int>(options.level)) +
         (options.share_sweeps ? ", shared" : ", alone") + (options.keep_keys ? ", keys" : "") +
         ", index late until " + std::to_string(options.late_index.rows);
}

// Every way to put the scan together gives the rows of the plain one.
class Options : public testing::Test {
 protected:
  void ExpectSameRows(const Source& source, const Application& application,
                      const std::string& name) {
    scans_.Configure(application);
    scans_.SetSource(source);
    const Outcome plain = scans_.RunPlain(Range::kAll);
    rows_seen_ += plain.row_count;
    for (const ScanOptions& options : AllOptions()) {
      const Outcome library = scans_.RunWith(options, Range::kAll);
      EXPECT_EQ(library.ending, plain.ending) << name << ", " << Printed(options);
      EXPECT_TRUE(SameLines(library.rows, plain.rows)) << name << ", " << Printed(options);
    }
  }

  BothScans scans_;
  size_t rows_seen_ = 0;
};

TEST_F(Options, Messages) {
  for (const bool with_log : {false, true}) {
    Dice dice(with_log ? 1 : 2);
    const Application application{{MessagesTable(), MessagesTable("other", 22)}, 1, {}};
    SourceShape shape;
    shape.rows = 120;
    shape.with_log = with_log;
    Source source = MakeSource(dice, application, shape);
    AppendRandomPages(dice, source, 4);
    PlantRecords(dice, application, source.db, 60, 2 * PageSizeOf(source.db));
    ExpectSameRows(source, application, with_log ? "with a log" : "without");
  }
  EXPECT_GT(rows_seen_, 300U);
}

TEST_F(Options, RandomApplications) {
  for (uint64_t seed = 1; seed <= SeedsOf(15); ++seed) {
    Dice dice(40000 + seed);
    const Application application = RandomApplication(dice, 1 + dice.Below(4));
    SourceShape shape;
    shape.page_size = dice.Pick({512, 1024, 4096});
    shape.rows = 20 + dice.Below(30);
    shape.with_log = dice.Chance(40);
    Source source = MakeSource(dice, application, shape);
    AppendRandomPages(dice, source, dice.Below(6));
    PlantRecords(dice, application, source.db, 30, 2 * PageSizeOf(source.db));
    if (shape.with_log) PlantRecords(dice, application, source.log, 20, 32);
    ExpectSameRows(source, application, "seed " + std::to_string(seed));
  }
  EXPECT_GT(rows_seen_, 300U);
}

}  // namespace
}  // namespace differential
