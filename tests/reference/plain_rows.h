#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/sqlitecommon/sqlite_statement.h"
#include "scansqlite/carving/carve_layout.h"
#include "scansqlite/carving/carved_record.h"
#include "storager/row_value.h"

namespace plain_walk {

// A position at which a record of a layout stands, among the rows that the walk saves.
struct Hit {
  std::string table;
  size_t layout = 0;  // index of the candidate
  uint64_t position = 0;
  RowIdHint hint;
};

// One pass of one layout of a table over the pages. Borrows what it points to.
struct TablePass {
  CarveLayout layout;
  const TableFields* fields = nullptr;
  std::string row_id_column;  // empty when the result has none
  bool guess_row_ids = false;
  SqliteStatement* insert = nullptr;  // null when rows are not wanted
  std::vector<Hit>* hits = nullptr;   // null when positions are not wanted
  std::string table;
  size_t number = 0;  // of the layout
};

// Works out the row ids of records whose cell head was not found from their neighbours of the same
// page, and puts them into the rows under `row_id_column`.
void GuessRowIds(const std::vector<RowIdHint>& hints, const std::string& row_id_column,
                 std::vector<RowValue>& rows);

// The rows of the current page, waiting to be saved.
class PageRows {
 public:
  explicit PageRows(const TablePass& pass) : pass_(pass) {}

  void Add(RowValue row, RowIdHint hint, uint64_t position) {
    rows_.push_back(std::move(row));
    hints_.push_back(hint);
    positions_.push_back(position);
  }

  // Guesses row ids if the table asks for that, saves the rows and forgets them.
  void Flush();

 private:
  void TakeHits() const;

  const TablePass& pass_;
  std::vector<RowValue> rows_;
  std::vector<RowIdHint> hints_;
  std::vector<uint64_t> positions_;
};

// False when the scan is to stop. A pause that is seen here is final.
bool MayGoOn();

}  // namespace plain_walk
