#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "recovery/facts.h"
#include "recovery/value.h"

namespace recovery {

// One state that a row ever had.
struct Version {
  Row row;  // shorter than the live layout when it was written before columns were added
  int64_t row_id = 0;
  bool live = true;
  bool former = false;     // an update put another state in its place
  bool standing = false;   // not live, unlike every live row, and its bytes stand whole
  bool overflows = false;  // of a standing one
  bool in_main = false;    // it stands in the database alone; else only with the log's help
};

// What is known of one table of a made database.
struct TableTruth {
  std::string name;
  size_t layout_index = 0;
  Layout layout;  // the live one
  std::vector<Version> versions;
  size_t live_standing = 0;  // live rows whose bytes were found: all of them, if we encode well
};

struct DatabaseTruth {
  std::string path;  // of the database; a log may stand beside it
  int system_version = 0;
  std::vector<TableTruth> tables;
};

// Marks the versions that still stand in the database's file and log.
void MarkStanding(DatabaseTruth& truth, const std::string& encoding);

}  // namespace recovery
