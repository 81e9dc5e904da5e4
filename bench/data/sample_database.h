#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "data/dice.h"
#include "data/sample_table.h"

namespace bench {

// A database of sample tables in the making. Failures throw std::runtime_error.
class SampleDatabase {
 public:
  explicit SampleDatabase(const std::string& path);

  // Makes the tables and fills them in turn until the file has about `bytes`, or each table has
  // `rows`. Then about 30 of 100 rows are deleted, old ones together and single ones here and
  // there, and a few are written.
  void Fill(const std::vector<Table>& tables, uint64_t bytes, int64_t rows);

  // Writes from here on into a log that stays beside the file.
  void StartLog();

  void Run(const std::string& sql);
  int64_t Number(const std::string& sql);

 private:
  struct Close {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };
  struct Filling {
    const Table* table;
    size_t width = 0;
    int64_t rows = 0;
  };

  void Insert(Filling& filling, int64_t count);
  void Widen(Filling& filling);
  void Thin(Filling& filling);

  std::unique_ptr<sqlite3, Close> handle_;
  Dice dice_{42};
};

}  // namespace bench
