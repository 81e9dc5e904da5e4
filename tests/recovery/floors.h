#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "recovery/evaluate.h"

namespace recovery {

// What the figures of a table must reach.
struct Floor {
  double live = 1.0;
  double recall = 0.95;
  double precision = 0.99;
  size_t clean_extra = 0;  // rows beyond the live ones where nothing was ever deleted
  bool covered = true;     // false: the configuration leaves the table out
  std::string why;
};

// Floors that differ from the common one: by "system/data type/table", and for single layouts by
// the same and " | " and the layout's label.
class Floors {
 public:
  // Throws std::runtime_error with "file:line: " for an unknown key or an entry without a reason.
  static Floors Read(const std::string& path);

  // What the figures of an application fall short of, one text for each fault: each layout by
  // itself, and floors of this application's tables that do not exist. A share is not judged by a
  // single row: one missed and one false row are always allowed.
  std::vector<std::string> Faults(const std::string& application,
                                  const std::vector<TableReport>& tables) const;

  // The applications that floors are given for.
  std::vector<std::string> Applications() const;

 private:
  const Floor& Of(const TableReport& table) const;

  std::map<std::string, Floor> floors_;
};

// The entries that a file of floors would need for these figures to pass, without their reasons.
std::string SuggestedFloors(const std::vector<TableReport>& tables);

}  // namespace recovery
