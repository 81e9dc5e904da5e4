#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "recovery/facts.h"
#include "recovery/truth.h"

namespace recovery {

// The lives that a database may have led. `clean` knows no deletion; all others together are the
// mixed set.
inline constexpr std::string_view kClean = "clean";
inline constexpr std::array<std::string_view, 6> kScenarios = {
    kClean, "mixed", "upgrade", "vacuum", "auto_vacuum", "secure_delete"};

struct ScenarioSettings {
  std::string scenario;
  std::string folder;  // the database is made and left here, under the application's file name
  size_t generation = 0;
  size_t rows = 300;
  uint64_t seed = 1;
};

// Makes a database. Nothing when the scenario means nothing for it: an upgrade where no layout
// grew out of an older one.
std::optional<DatabaseTruth> MakeDatabase(const Facts& facts, const DatabaseFacts& database,
                                          const ScenarioSettings& settings);

}  // namespace recovery
