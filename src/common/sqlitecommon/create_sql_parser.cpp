#include "common/sqlitecommon/create_sql_parser.h"

#include <strings.h>

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

#include "common/common/log.h"
#include "common/common/text_helpers.h"
#include "common/sqlitecommon/type_words.h"

namespace {

bool Holds(const std::string& text, std::string_view word) {
  return text.find(word) != std::string::npos;
}

// Keywords are known in their two plain spellings only.
bool HoldsEither(const std::string& text, std::string_view upper, std::string_view lower) {
  return Holds(text, upper) || Holds(text, lower);
}

// Opening less closing brackets of a text.
int64_t BracketBalance(const std::string& text) {
  return std::count(text.begin(), text.end(), '(') - std::count(text.begin(), text.end(), ')');
}

// UNIQUE followed by a bracket, with nothing but white space between them, names columns: it is a
// constraint of the table and not of a column.
bool IsUniqueConstraint(const std::string& clause) {
  constexpr std::string_view kWord = "UNIQUE";
  size_t word = clause.find(kWord);
  const size_t lower = clause.find("unique");
  if (lower != std::string::npos) word = lower;
  if (word == std::string::npos) return false;
  const size_t bracket = clause.find('(', word);
  if (bracket == std::string::npos) return false;
  const size_t next = clause.find_first_not_of(" \t\n\v\f\r", word + kWord.size());
  return next == bracket;
}

bool IsNamedConstraint(const std::string& clause) {
  return Holds(clause, "(") && HoldsEither(clause, "CONSTRAINT", "constraint");
}

bool IsPrimaryKeyConstraint(const std::string& clause) {
  return Holds(clause, "(") && (HoldsEither(clause, "PRIMARY KEY(", "primary key(") ||
                                HoldsEither(clause, "PRIMARY KEY (", "primary key ("));
}

bool IsForeignKeyClause(const std::string& clause) {
  return HoldsEither(clause, "FOREIGN", "foreign") && HoldsEither(clause, "KEY", "key");
}

bool HoldsPrimaryKeyWords(const std::string& clause) {
  return HoldsEither(clause, "PRIMARY", "primary") && HoldsEither(clause, "KEY", "key");
}

// Gathers clauses out of the pieces between commas. A comma inside brackets had cut a clause
// apart; the pieces are joined again without it.
class ClauseReader {
 public:
  explicit ClauseReader(bool is_virtual) : is_virtual_(is_virtual) {}

  // False when the statement cannot be read.
  bool Take(const std::string& piece, bool is_last) {
    if (swallows_the_rest_) return true;
    clause_ += piece;
    balance_ += BracketBalance(piece);
    if (balance_ != 0) return true;
    if (is_virtual_ && columns_.empty() && HasTokenize(clause_)) {
      Finish({"docid", kTypeCodeInteger, true});
      return true;
    }
    if (TakeConstraint()) return true;
    return TakeColumn(is_last);
  }

  std::vector<SqlColumnInfo> TakeColumns() { return std::move(columns_); }

 private:
  void Finish(SqlColumnInfo column) {
    columns_.push_back(std::move(column));
    clause_.clear();
  }

  void TakeTableConstraint(SqlColumnInfo placeholder) {
    if (is_virtual_) {
      Finish(std::move(placeholder));
    } else {
      swallows_the_rest_ = true;
    }
  }

  // A constraint of an ordinary table stays in the accumulator, so that it swallows every clause
  // behind it; SQL puts constraints last. Only UNIQUE is looked at anew, since a later clause can
  // hold the word in small letters.
  bool TakeConstraint() {
    if (IsUniqueConstraint(clause_)) return true;
    if (IsNamedConstraint(clause_)) {
      TakeTableConstraint({"constraint", kTypeCodeConstraint, false});
      return true;
    }
    if (IsPrimaryKeyConstraint(clause_)) {
      TakeTableConstraint({"primary", kTypeCodePrimary, false});
      return true;
    }
    if (IsForeignKeyClause(clause_)) {
      clause_.clear();
      return true;
    }
    return false;
  }

  bool TakeColumn(bool is_last) {
    SqlColumnInfo column;
    const ColumnClause kind = ParseColumnDefinition(clause_, column, is_last);
    column.is_primary_key = HoldsPrimaryKeyWords(clause_);
    switch (kind) {
      case ColumnClause::kColumn:
        columns_.push_back(std::move(column));
        break;
      case ColumnClause::kNameWithoutType:
        if (is_virtual_ && !HasTokenize(clause_)) {
          column.type_code = kTypeCodeText;
          columns_.push_back(std::move(column));
        }
        break;
      case ColumnClause::kUnknownType:
        columns_.clear();
        return false;
      case ColumnClause::kConstraint:
        LogEx(kLogModule, kLogWarning, "This field sql is not normal, field_string{%s}",
              clause_.c_str());
        break;
    }
    clause_.clear();
    return true;
  }

  bool is_virtual_;
  bool swallows_the_rest_ = false;
  int64_t balance_ = 0;  // of the brackets in `clause_`
  std::string clause_;
  std::vector<SqlColumnInfo> columns_;
};

}  // namespace

bool IsColumnWord(const std::string& word) {
  return strcasecmp(word.c_str(), "FOREIGN") != 0 && strcasecmp(word.c_str(), "PRIMARY") != 0;
}

bool HasTokenize(const std::string& text) { return Holds(text, "tokenize"); }

int32_t TypeCodeOfName(const std::string& word) {
  for (const auto& table : {std::cref(kUpperTypeWords), std::cref(kLowerTypeWords)}) {
    const auto& words = table.get();
    const auto at = std::find(words.begin(), words.end(), word);
    if (at == words.end()) continue;
    const auto row = static_cast<int32_t>(at - words.begin());
    return row == kTypeRowInterger || row == kTypeRowInt ? kTypeCodeInteger : row;
  }
  return -1;
}

ColumnClause ParseColumnDefinition(std::string clause, SqlColumnInfo& out, bool is_last) {
  for (const char* dropped : {"'", "\"", "\n", "`"}) clause = ReplaceText(clause, dropped, "");
  std::vector<std::string> words;
  SplitText(clause, ' ', words);
  if (!words.empty()) {
    if (!IsColumnWord(words[0])) return ColumnClause::kConstraint;
    out.name = words[0];
  }
  if (words.size() < 2) {
    if (!is_last) return ColumnClause::kNameWithoutType;
    out.type_code = kTypeCodeInteger;
    return ColumnClause::kColumn;
  }
  out.type_code = TypeCodeOfName(words[1]);
  return out.type_code == -1 ? ColumnClause::kUnknownType : ColumnClause::kColumn;
}

std::vector<SqlColumnInfo> ParseCreateSql([[maybe_unused]] const std::string& table_name,
                                          const std::string& sql) {
  const size_t open = sql.find('(');
  const size_t close = sql.rfind(')');
  if (open == std::string::npos || close == std::string::npos || close < open) return {};
  ClauseReader reader(HoldsEither(sql, "VIRTUAL TABLE", "virtual table"));
  std::vector<std::string> pieces;
  SplitText(sql.substr(open + 1, close - open - 1), ',', pieces);
  for (size_t i = 0; i < pieces.size(); ++i) {
    if (!reader.Take(pieces[i], i + 1 == pieces.size())) break;
  }
  return reader.TakeColumns();
}
