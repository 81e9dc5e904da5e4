#pragma once

#include <string>
#include <utility>
#include <vector>

#include "common/sqlitecommon/sqlite_statement.h"
#include "scansqlite/carving/carve_layout.h"
#include "scansqlite/carving/carved_record.h"
#include "storager/row_value.h"

// One pass of one layout of a table over the pages. Borrows what it points to.
struct TablePass {
  CarveLayout layout;
  const TableFields* fields = nullptr;
  std::string row_id_column;  // empty when the result has none
  bool guess_row_ids = false;
  SqliteStatement* insert = nullptr;
};

// The field name of the last result field that takes the row id, or the empty text.
std::string RowIdColumnOf(const ResultFieldMap& result_fields);

// The rows of the current page, waiting to be saved.
class PageRows {
 public:
  explicit PageRows(const TablePass& pass) : pass_(pass) {}

  void Add(RowValue row, RowIdHint hint) {
    rows_.push_back(std::move(row));
    hints_.push_back(hint);
  }

  // Guesses row ids if the table asks for that, saves the rows and forgets them.
  void Flush();

 private:
  const TablePass& pass_;
  std::vector<RowValue> rows_;
  std::vector<RowIdHint> hints_;
};

// False when the scan is to stop. A pause that is seen here is final: the loop stays at this
// position, and nothing but the end of the process releases it.
bool MayGoOn();
