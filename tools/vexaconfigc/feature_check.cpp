#include "feature_check.h"

#include <map>

#include "byte_set_check.h"
#include "layout_check.h"
#include "scansqlite/carving/serial_type.h"

namespace vexaconfigc {

namespace {

bool IsBytesKind(int kind) { return kind == kKindText || kind == kKindBlob; }

int32_t StorageClassOf(int kind) {
  switch (kind) {
    case kKindReal:
      return kClassReal;
    case kKindText:
      return kClassText;
    case kKindBlob:
      return kClassBlob;
    default:
      return kClassInteger;
  }
}

// The declared type of a column shuts kinds of values out before a feature is asked. Only or_kind
// can let one in.
bool AnyValuePasses(const SqlColumnInfo& column, const Feature& feature) {
  const auto passes = [&](int kind) {
    return kind != kKindNone &&
           IsSerialAllowed(column.type_code, StorageClassOf(kind), feature.or_kind);
  };
  return passes(feature.kind) || passes(feature.or_kind);
}

class FeatureCheck {
 public:
  FeatureCheck(const Table& table, const std::string& file, Diagnostics& diagnostics)
      : table_(table), file_(file), diagnostics_(diagnostics) {}

  void Run() {
    for (const Feature& feature : table_.features) {
      if (feature.column.empty()) continue;  // reported already
      CheckColumn(feature);
      CheckKinds(feature);
      CheckLimits(feature);
      CheckByteSets(feature);
    }
    if (table_.scan.deleted && table_.features.empty()) {
      Error(table_.line, "table '" + table_.name + "' is scanned for deleted records without any " +
                             "feature, so that noise would be taken for records");
    }
  }

 private:
  void CheckColumn(const Feature& feature) {
    const std::string name = "feature on '" + feature.column + "'";
    if (const auto [first, is_new] = lines_.emplace(feature.column, feature.line); !is_new) {
      Error(feature.line, "a second " + name + " has no effect; the first is on line " +
                              std::to_string(first->second));
    }
    if (!AnyLayoutHolds(table_, feature.column)) {
      Error(feature.line, "no layout holds the column of the " + name);
    }
    if (table_.scan.deleted && IsAlias(table_, feature.column)) {
      Error(feature.line, "the " + name + " sees the number 0 in every record, since the row id " +
                              "stands for it");
    }
  }

  void CheckKinds(const Feature& feature) {
    // A blob named twice admits blobs, unchanged, in a column of another declared type.
    if (feature.kind == feature.or_kind && feature.kind != kKindBlob) {
      Error(feature.line, "or_kind repeats kind");
    }
    if (feature.kind == kKindNone) return;
    for (const Layout& layout : table_.layouts) {
      const int position = PositionOf(layout, feature.column);
      if (position < 0 || AnyValuePasses(layout.columns[static_cast<size_t>(position)], feature)) {
        continue;
      }
      Error(feature.line, "the declared type of the column lets no value of this kind through " +
                              ("(layout on line " + std::to_string(layout.line) + ")"));
      return;
    }
  }

  void CheckLimits(const Feature& feature) {
    if (feature.min > feature.max) Error(feature.line, "min lies above max");
    if (feature.min < 0 && (IsBytesKind(feature.kind) || IsBytesKind(feature.or_kind))) {
      Error(feature.line, "a length has no negative min");
    }
  }

  void CheckByteSets(const Feature& feature) {
    if (!feature.bytes.empty()) {
      if (!IsBytesKind(feature.kind) && !IsBytesKind(feature.or_kind)) {
        Error(feature.bytes_line, "bytes act on text and blob only");
      }
      CheckByteSet(feature.bytes, feature.bytes_line);
    }
    if (!feature.not_bytes.empty()) {
      if (feature.bytes.empty()) {
        Error(feature.not_bytes_line, "not_bytes has no effect without bytes");
      }
      CheckByteSet(feature.not_bytes, feature.not_bytes_line);
    }
  }

  void CheckByteSet(const std::string& text, int line) {
    if (const std::string fault = ByteSetFault(text); !fault.empty()) Error(line, fault);
  }

  void Error(int line, const std::string& words) { diagnostics_.Error(file_, line, words); }

  const Table& table_;
  const std::string& file_;
  Diagnostics& diagnostics_;
  std::map<std::string, int> lines_;  // of the columns seen so far
};

}  // namespace

void CheckFeatures(const Table& table, const std::string& file, Diagnostics& diagnostics) {
  FeatureCheck(table, file, diagnostics).Run();
}

}  // namespace vexaconfigc
