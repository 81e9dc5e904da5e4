#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "recovery/facts.h"
#include "recovery/random.h"
#include "recovery/value.h"

namespace recovery {

// Makes rows of one table, in the order in which a phone would write them: times, serial numbers
// and row ids grow.
class RowMaker {
 public:
  // `family` names what tables share, such as the contacts of one phone: equal groups of equal
  // families have equal values. `planned` rows reach from the first year to the last.
  RowMaker(const TableFacts& table, uint64_t seed, uint64_t family, size_t planned);

  // The next row in a layout; the alias column is NULL.
  Row Next(const Layout& layout);

  // Values that the application writes into a row later, by column index. `row` is the row as it
  // stands.
  std::map<size_t, Value> Update(const Layout& layout, const Row& row);

 private:
  struct Making;

  Value Make(const Recipe& recipe, Making& making);
  Value OfColumn(const std::string& name, Making& making);
  Value Number(const Recipe& recipe);
  std::optional<Value> Simple(const Recipe& recipe);
  Value GroupValue(const Recipe& recipe);
  Value Near(const Recipe& recipe, Making& making);
  int64_t TimeMs(Making& making);

  const TableFacts& table_;
  Random random_;
  uint64_t family_;
  size_t planned_;
  size_t made_ = 0;
};

}  // namespace recovery
