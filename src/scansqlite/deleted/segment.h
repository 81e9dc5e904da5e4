#pragma once

#include <cstdint>

// Positions of one page that are tested one after the other: [begin, end).
struct Segment {
  uint64_t begin = 0;
  uint64_t end = 0;
  // False when the end of the source cuts the page: its rows are carved and never saved.
  bool is_whole = false;
};

// How a segment is to be tested.
enum class SegmentCare {
  kFast,     // sieve and test as usual
  kCareful,  // refuse by the serial types alone, and leave the rest to the general test
  kGeneral,  // the general test at every position
};
