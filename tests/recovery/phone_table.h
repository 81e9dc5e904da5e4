#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "recovery/database.h"
#include "recovery/facts.h"
#include "recovery/phone.h"
#include "recovery/row_maker.h"
#include "recovery/truth.h"

namespace recovery {

// One table of a phone's database, with every version that its rows ever had. Places are indexes
// into the list of live rows, which is in the order of insertion.
struct Phone::Table {
  Table(Database& database, const TableFacts& table_facts, size_t live_index, size_t first_index,
        size_t planned_rows, uint64_t seed);

  void Insert();
  void Delete(std::vector<size_t> places);
  void Update(size_t place);

  // Adds the columns that the live layout has beyond the first one.
  void Upgrade();

  // VACUUM may count rows of a table without a row id column afresh.
  void RenewRowIds();

  TableTruth Take();

  std::optional<size_t> ColumnOf(const std::string& name) const;
  Value ValueAt(size_t place, size_t column) const;

  Database& db;
  const TableFacts& facts;
  size_t live_layout;
  size_t first;
  Layout layout;  // as it is now
  size_t planned;
  double owed = 0;
  bool full = false;  // no further row is unlike all others where the table demands that
  RowMaker maker;
  std::string row_id;  // a name that means the row id
  std::vector<Version> versions;
  std::vector<size_t> live;

 private:
  void Prepare();
  bool TryInsert(Statement& statement, const Row& row);
  Row Read(int64_t id);

  std::optional<Statement> insert_;
  std::optional<Statement> insert_or_ignore_;
  std::optional<Statement> select_;
  std::optional<Statement> delete_;
};

}  // namespace recovery
