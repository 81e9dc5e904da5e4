#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "scansqlite/carving/header_cells.h"
#include "scansqlite/sieve/header_sieve.h"

// Layouts that share a sieve and begin alike: their headers are read once.
struct SweptGroup {
  size_t sieve = 0;
  const RecordPlan* widest = nullptr;
  std::unique_ptr<HeaderCells> header;
  std::vector<size_t> members;  // as the caller numbers his layouts
};

// What one sweep over the source looks for.
struct SweepPlan {
  SievePlan sieves;
  std::vector<SweptGroup> groups;

  // Adds a layout, which is borrowed. False when the sieves have no room for it. One that accepts
  // nothing takes none.
  bool Add(const RecordPlan& record, size_t member);
};
