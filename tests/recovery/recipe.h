#pragma once

#include <string>

#include "recovery/facts.h"

namespace recovery {

// Reads "KIND ARGS [? P]". Throws std::invalid_argument for an unknown kind, a wrong number of
// arguments or one that is no number where a number belongs.
Recipe ParseRecipe(const std::string& text);

// The column that the recipe takes its value from, or an empty text.
std::string ColumnOfRecipe(const Recipe& recipe);

// Numbers in recipes. Throw std::invalid_argument.
int64_t RecipeInteger(const std::string& text);
double RecipeReal(const std::string& text);

}  // namespace recovery
