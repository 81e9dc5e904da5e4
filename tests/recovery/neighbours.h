#pragma once

#include <cstddef>
#include <cstdint>

#include "recovery/database.h"
#include "recovery/random.h"

namespace recovery {

// What stands in the same file and is none of the application's tables under test: made-up tables,
// and blobs that hold whole pages of another SQLite database.
class Neighbours {
 public:
  Neighbours(Database& db, uint64_t seed) : db_(db), random_(seed) {}

  void Create();

  // Adds rows, and deletes some of those of before.
  void Write(size_t rows);

  // Fills pages behind the ones that the file has now. The table's pages end the file, so that no
  // chain of overflow pages of the others does.
  void FillEnd();

 private:
  Database& db_;
  Random random_;
};

}  // namespace recovery
