#include <gtest/gtest.h>

#include "differential/both_scans.h"

namespace differential {
namespace {

Application Messages() { return {{MessagesTable()}, 1, {}}; }

std::string Case(const std::string& what, uint64_t number) {
  return what + " " + std::to_string(number);
}

TEST(WholeScan, MessagesInEveryPageSize) {
  BothScans scans;
  scans.Configure(Messages());
  for (int page_size = 512; page_size <= 65536; page_size *= 2) {
    Dice dice(static_cast<uint64_t>(page_size));
    SourceShape shape;
    shape.page_size = page_size;
    shape.rows = 150;
    Source source = MakeSource(dice, Messages(), shape);
    AppendRandomPages(dice, source, page_size > 8192 ? 1 : 6);
    PlantRecords(dice, Messages(), source.db, 30, 2 * PageSizeOf(source.db));
    scans.SetSource(source);
    scans.ExpectEqual(Range::kAll, Case("page size", static_cast<uint64_t>(page_size)));
    scans.ExpectEqual(Range::kDeleted, Case("page size", static_cast<uint64_t>(page_size)));
  }
  EXPECT_GT(scans.rows_seen(), 1000U);
}

TEST(WholeScan, RandomApplications) {
  BothScans scans;
  for (uint64_t seed = 1; seed <= SeedsOf(120); ++seed) {
    Dice dice(seed);
    const Application application = RandomApplication(dice, 1 + dice.Below(3));
    scans.Configure(application);
    SourceShape shape;
    shape.page_size = dice.Pick({512, 1024, 1024, 2048, 4096});
    shape.reserved = dice.Chance(20) ? 16 : 0;
    shape.rows = 20 + dice.Below(40);
    shape.with_log = dice.Chance(30);
    Source source = MakeSource(dice, application, shape);
    AppendRandomPages(dice, source, dice.Below(8));
    PlantRecords(dice, application, source.db, dice.Below(40), 2 * PageSizeOf(source.db));
    if (dice.Chance(50)) Damage(dice, source.db, dice.Below(60), dice.Chance(20) ? 100 : 2048);
    if (shape.with_log) PlantRecords(dice, application, source.log, 20, 32);
    scans.SetSource(source);
    scans.ExpectEqual(dice.Pick({Range::kAll, Range::kDeleted}), Case("seed", seed));
  }
  EXPECT_GT(scans.rows_seen(), 1000U);
}

}  // namespace
}  // namespace differential
