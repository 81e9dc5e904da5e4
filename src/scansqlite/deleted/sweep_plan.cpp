#include "scansqlite/deleted/sweep_plan.h"

#include <algorithm>

bool SweepPlan::Add(const RecordPlan& record, size_t member) {
  if (record.required > record.width) return true;
  const int added = sieves.Add(record.sets, record.first, record.required);
  if (added < 0) return false;
  const auto sieve = static_cast<size_t>(added);
  auto at = std::find_if(groups.begin(), groups.end(), [&](const SweptGroup& group) {
    return group.sieve == sieve && BeginAlike(*group.widest, record);
  });
  if (at == groups.end()) {
    groups.emplace_back().sieve = sieve;
    at = groups.end() - 1;
  }
  at->members.push_back(member);
  if (at->widest == nullptr || at->widest->width < record.width) {
    at->widest = &record;
    at->header = std::make_unique<HeaderCells>(record);
  }
  return true;
}
