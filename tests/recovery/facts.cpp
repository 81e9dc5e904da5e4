#include "recovery/facts.h"

#include <algorithm>

namespace recovery {

const Recipe& TableFacts::RecipeOf(const std::string& column) const {
  const auto found = values.find(column);
  return found != values.end() ? found->second : others.value();
}

size_t DatabaseFacts::Generations() const {
  size_t most = 0;
  for (const TableFacts& table : tables) most = std::max(most, table.layouts.size());
  return most;
}

size_t DatabaseFacts::LayoutOf(const TableFacts& table, size_t generation) {
  const size_t count = table.layouts.size();
  return generation + 1 >= count ? 0 : count - 1 - generation;
}

}  // namespace recovery
