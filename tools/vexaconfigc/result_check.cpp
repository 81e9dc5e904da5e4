#include "result_check.h"

#include <algorithm>
#include <map>

#include "layout_check.h"
#include "memory_database.h"

namespace vexaconfigc {

namespace {

class ResultCheck {
 public:
  ResultCheck(const Table& table, const std::string& file, Diagnostics& diagnostics)
      : table_(table), file_(file), diagnostics_(diagnostics) {}

  void Run() {
    for (const ResultColumn& result : table_.results) {
      if (result.column.empty()) {
        sound_ = false;  // reported already
      } else {
        CheckColumn(result);
      }
    }
    CheckKey();
    if (sound_) CheckResultTable();
  }

 private:
  void CheckColumn(const ResultColumn& result) {
    const std::string name = "result column '" + result.column + "'";
    if (const auto [first, is_new] = lines_.emplace(result.column, result.line); !is_new) {
      Error(result.line, name + " stands twice, first on line " + std::to_string(first->second));
    }
    if (!AnyLayoutHolds(table_, result.column)) Error(result.line, "no layout holds " + name);
    if (!result.row_id) {
      if (table_.scan.deleted && IsAlias(table_, result.column)) {
        Error(result.line, name + " is NULL in every record, since the row id stands for it: mark" +
                               " it row_id: true");
      }
      return;
    }
    if (row_id_ != nullptr) {
      Error(result.line, "more than one row id column: '" + row_id_->column + "' on line " +
                             std::to_string(row_id_->line) + " is one already");
    } else if (result.kind != kKindInteger) {
      Error(result.line, name + " takes the row id and must be of kind integer");
    }
    row_id_ = &result;
  }

  void CheckKey() {
    const bool has_unique = std::any_of(table_.results.begin(), table_.results.end(),
                                        [](const ResultColumn& result) { return result.unique; });
    if (!has_unique) {
      Error(table_.line, "table '" + table_.name + "' has no unique column, so that every live " +
                             "row would come back as a recovered one");
    }
    if (table_.scan.guess_row_id && row_id_ == nullptr) {
      Error(table_.scan.guess_row_id_line, "guess_row_id needs a result column with row_id: true");
    }
  }

  // The library makes the result table and its index with these statements and looks at no result:
  // a name that SQLite does not take unquoted would give no table, without a word.
  void CheckResultTable() {
    std::string columns;
    std::string key;
    for (const ResultColumn& result : table_.results) {
      columns += (columns.empty() ? "" : ",") + result.column + " " + result.type;
      if (result.unique) key += (key.empty() ? "" : ",") + result.column;
    }
    MemoryDatabase database;
    std::string fault = database.Run("create table " + table_.name + "(" + columns + ")");
    if (fault.empty()) {
      fault = database.Run("CREATE UNIQUE INDEX " + table_.name + "_unique_key_index on " +
                           table_.name + "(" + key + ")");
    }
    if (!fault.empty()) {
      Error(table_.line, "SQLite refuses the result table '" + table_.name + "': " + fault);
    }
  }

  void Error(int line, const std::string& words) {
    diagnostics_.Error(file_, line, words);
    sound_ = false;
  }

  const Table& table_;
  const std::string& file_;
  Diagnostics& diagnostics_;
  std::map<std::string, int> lines_;  // of the columns seen so far
  const ResultColumn* row_id_ = nullptr;
  bool sound_ = true;
};

}  // namespace

void CheckResults(const Table& table, const std::string& file, Diagnostics& diagnostics) {
  ResultCheck(table, file, diagnostics).Run();
}

}  // namespace vexaconfigc
