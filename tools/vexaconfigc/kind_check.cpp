#include "kind_check.h"

#include <algorithm>

#include "layout_check.h"

namespace vexaconfigc {

namespace {

bool IsBytesKind(int kind) { return kind == kKindText || kind == kKindBlob; }

// What a declared type leads SQLite to store, as far as the library knows the type.
enum class Declared { kNumber, kReal, kText, kBlob, kAnything };

Declared DeclaredAs(const SqlColumnInfo& column) {
  switch (column.type_code) {
    case 0:   // INTEGER
    case 6:   // TIMESTAMP
    case 13:  // LONG
      return Declared::kNumber;
    case 1:  // FLOAT
    case 2:  // DOUBLE
    case 8:  // REAL
      return Declared::kReal;
    case 3:  // TEXT
    case 5:  // VARCHAR
    case 7:  // STRING
      return Declared::kText;
    case 4:  // BLOB
      return Declared::kBlob;
    default:
      return Declared::kAnything;
  }
}

class KindCheck {
 public:
  KindCheck(const Table& table, const std::string& file, Diagnostics& diagnostics)
      : table_(table), file_(file), diagnostics_(diagnostics) {}

  void Run() {
    for (const Feature& feature : table_.features) {
      CheckReal(feature);
      CheckText(feature);
      CheckNull(feature);
    }
    for (const ResultColumn& result : table_.results) {
      if (!result.row_id) CheckResult(result);
    }
  }

 private:
  // SQLite stores a whole number of a real column as an integer, to save room.
  void CheckReal(const Feature& feature) {
    if (feature.kind == kKindReal && feature.or_kind == kKindInteger) {
      Warn(feature.line,
           "kind real judges whole numbers first and reads those of 3 and 6 bytes as "
           "0.0, those of 4 bytes as a float: write kind integer, or_kind real");
    } else if ((feature.kind == kKindReal || feature.or_kind == kKindReal) &&
               feature.kind != kKindInteger) {
      Warn(feature.line,
           "kind real without integer refuses whole numbers, which are stored as "
           "integers: write kind integer, or_kind real");
    }
  }

  void CheckText(const Feature& feature) {
    if (feature.kind == kKindText && feature.bytes.empty()) {
      Warn(feature.line,
           "kind text without bytes cleans the value before it is read for the "
           "result, which can get a stale end: write kind blob, or_kind text");
    }
  }

  // As a blob a NULL is a value of length 0; the other kinds let it pass.
  void CheckNull(const Feature& feature) {
    const bool only_blob = (feature.kind == kKindBlob || feature.kind == kKindNone) &&
                           (feature.or_kind == kKindBlob || feature.or_kind == kKindNone);
    if (only_blob && !feature.not_null && feature.min > 0) {
      Warn(feature.line,
           "kind blob with a min above 0 refuses NULL: write not_null: true, or "
           "min: 0");
    }
  }

  void CheckResult(const ResultColumn& result) {
    const Feature* feature = FeatureOf(result.column);
    for (const Layout& layout : table_.layouts) {
      const int position = PositionOf(layout, result.column);
      if (position < 0) continue;
      const SqlColumnInfo& column = layout.columns[static_cast<size_t>(position)];
      if (const std::string fault = ResultFault(result, DeclaredAs(column), feature);
          !fault.empty()) {
        Warn(result.line, fault + " (layout on line " + std::to_string(layout.line) + ")");
        return;
      }
    }
  }

  // A carved value is read in the kind of its result column, whatever it is stored as.
  static std::string ResultFault(const ResultColumn& result, Declared declared,
                                 const Feature* feature) {
    const auto admits = [&](int kind) {
      return feature != nullptr && (feature->kind == kind || feature->or_kind == kind);
    };
    const bool numbers = declared == Declared::kNumber || declared == Declared::kReal;
    const bool reals =
        feature == nullptr ? declared == Declared::kReal : numbers && admits(kKindReal);
    const bool bytes = declared == Declared::kText || declared == Declared::kBlob;
    if (result.kind == kKindInteger && reals) {
      return "kind integer reads a fraction of this column as another number: kind real takes both";
    }
    if (IsBytesKind(result.kind) && numbers && !admits(kKindText) && !admits(kKindBlob)) {
      return "a column declared as a number is read as bytes: kind integer or real";
    }
    if (!IsBytesKind(result.kind) && bytes && !admits(kKindInteger) && !admits(kKindReal)) {
      return "a column declared as text or blob is read as a number: kind text or blob";
    }
    return "";
  }

  const Feature* FeatureOf(const std::string& column) const {
    const auto found =
        std::find_if(table_.features.begin(), table_.features.end(),
                     [&column](const Feature& feature) { return feature.column == column; });
    return found == table_.features.end() ? nullptr : &*found;
  }

  void Warn(int line, const std::string& words) { diagnostics_.Warning(file_, line, words); }

  const Table& table_;
  const std::string& file_;
  Diagnostics& diagnostics_;
};

}  // namespace

void CheckKinds(const Table& table, const std::string& file, Diagnostics& diagnostics) {
  if (table.scan.deleted) KindCheck(table, file, diagnostics).Run();
}

}  // namespace vexaconfigc
