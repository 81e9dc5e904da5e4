#include "recovery/compare.h"

#include <strings.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>
#include <set>
#include <unordered_map>

#include "common/sqlitecommon/raw_value.h"

namespace recovery {
namespace {

double Share(size_t part, size_t whole) {
  return whole == 0 ? 1.0 : static_cast<double>(part) / static_cast<double>(whole);
}

bool IsUtf8(const std::string& bytes) {
  for (size_t at = 0; at < bytes.size();) {
    const auto lead = static_cast<unsigned char>(bytes[at]);
    const size_t length = lead < 0x80 ? 1 : lead >> 5U == 6 ? 2 : lead >> 4U == 14 ? 3 : 4;
    if (lead >= 0x80 && (lead < 0xC2 || lead > 0xF4)) return false;
    if (at + length > bytes.size()) return false;
    for (size_t i = 1; i < length; ++i) {
      if ((static_cast<unsigned char>(bytes[at + i]) & 0xC0U) != 0x80U) return false;
    }
    at += length;
  }
  return true;
}

// What the library's cleaning of texts leaves.
std::string Cleaned(const std::string& text) {
  std::string kept;
  for (size_t at = 0; at < text.size();) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data()) + at;
    const auto left = static_cast<uint32_t>(text.size() - at);
    if (const uint32_t bad = Utf8BadSequenceLength(bytes, left); bad != 0) {
      at += bad;
      continue;
    }
    const size_t length = *bytes < 0x80 ? 1 : *bytes < 0xE0 ? 2 : *bytes < 0xF0 ? 3 : 4;
    kept.append(text, at, length);
    at += length;
  }
  return kept;
}

std::string NumberForm(int64_t number) { return number == 0 ? "" : std::to_string(number); }

std::string BytesForm(const std::string& bytes) {
  std::string form = IsUtf8(bytes) ? Cleaned(bytes) : bytes;
  int64_t number = 0;
  const auto [at, error] = std::from_chars(form.data(), form.data() + form.size(), number);
  const bool is_number =
      error == std::errc() && at == form.data() + form.size() && std::to_string(number) == form;
  // A column of a number's type holds such a text as the number that it reads as.
  return form.empty() || is_number ? form : "'" + form;
}

struct Former {
  std::string operator()(std::monostate) const { return ""; }
  std::string operator()(int64_t number) const { return NumberForm(number); }
  std::string operator()(double number) const {
    if (std::trunc(number) == number && std::abs(number) < 0x1.0p63) {
      return NumberForm(static_cast<int64_t>(number));
    }
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.17g", number);
    return text.data();
  }
  std::string operator()(const std::string& text) const { return BytesForm(text); }
  std::string operator()(const Blob& blob) const { return BytesForm(blob.bytes); }
};

void Append(std::string& key, const std::string& form) {
  key += std::to_string(form.size()) + ':' + form;
}

// A result column and the column of the application's table that it shows.
struct ColumnPair {
  size_t result = 0;
  std::optional<size_t> source;
};

std::vector<ColumnPair> Pairs(const TableTruth& truth, const ResultTable& result,
                              const std::string& row_id_column) {
  std::vector<ColumnPair> pairs;
  for (size_t i = 0; i < result.columns.size(); ++i) {
    const char* name = result.columns[i].c_str();
    if (strcasecmp(name, row_id_column.c_str()) == 0) continue;
    ColumnPair pair{i, std::nullopt};
    for (size_t j = 0; j < truth.layout.columns.size(); ++j) {
      if (strcasecmp(name, truth.layout.columns[j].name.c_str()) == 0) pair.source = j;
    }
    pairs.push_back(pair);
  }
  return pairs;
}

std::string KeyOf(const Row& row, const std::vector<ColumnPair>& pairs) {
  std::string key;
  for (const ColumnPair& pair : pairs) Append(key, ComparedForm(row[pair.result]));
  return key;
}

// Keys under which a version may stand in the result. SQLite reads the default of a column that the
// record lacks, the carver nothing.
std::set<std::string> KeysOf(const Version& version, const TableTruth& truth,
                             const std::vector<ColumnPair>& pairs) {
  std::string with_default;
  std::string without;
  for (const ColumnPair& pair : pairs) {
    Value value;
    Value otherwise;
    if (pair.source && truth.layout.alias == pair.source) {
      value = otherwise = version.row_id;
    } else if (pair.source && *pair.source < version.row.size()) {
      value = otherwise = version.row[*pair.source];
    } else if (pair.source) {
      value = truth.layout.columns[*pair.source].default_value;
    }
    Append(with_default, ComparedForm(value));
    Append(without, ComparedForm(otherwise));
  }
  return {with_default, without};
}

struct KeyState {
  size_t rows = 0;      // of the result that no live row has taken
  size_t versions = 0;  // not live
  bool in_result = false;
  bool ever = false;
};

std::string ShownRow(const std::vector<std::string>& names, const Row& row) {
  std::string text;
  for (size_t i = 0; i < row.size() && i < names.size(); ++i) {
    text += (i == 0 ? "" : ", ") + names[i] + '=' + Shown(row[i]);
  }
  return text;
}

std::string ShownVersion(const TableTruth& truth, const Version& version) {
  std::vector<std::string> names;
  for (const Column& column : truth.layout.columns) names.push_back(column.name);
  return std::string(version.overflows ? "[overflow] " : "") + (version.in_main ? "" : "[log] ") +
         "row " + std::to_string(version.row_id) + ": " + ShownRow(names, version.row);
}

class Comparison {
 public:
  Comparison(const TableTruth& truth, const ResultTable& result, const std::string& row_id_column,
             size_t most, Examples& examples)
      : truth_(truth),
        result_(result),
        pairs_(Pairs(truth, result, row_id_column)),
        most_(most),
        examples_(examples) {}

  Counts Run() {
    for (const Row& row : result_.rows) {
      KeyState& state = keys_[KeyOf(row, pairs_)];
      ++state.rows;
      state.in_result = true;
    }
    for (const Version& version : truth_.versions) {
      if (version.live) Live(version);
    }
    for (const Version& version : truth_.versions) {
      if (!version.live) Deleted(version);
    }
    for (const auto& [key, state] : keys_) Rest(state);
    if (examples_.false_rows.size() < most_) ShowFalse();
    return counts_;
  }

 private:
  void Live(const Version& version) {
    ++counts_.live;
    bool taken = false;
    for (const std::string& key : KeysOf(version, truth_, pairs_)) {
      KeyState& state = keys_[key];
      state.ever = true;
      if (taken || state.rows == 0) continue;
      --state.rows;
      taken = true;
    }
    counts_.live_found += taken ? 1 : 0;
  }

  void Deleted(const Version& version) {
    bool found = false;
    for (const std::string& key : KeysOf(version, truth_, pairs_)) {
      KeyState& state = keys_[key];
      state.ever = true;
      ++state.versions;
      found = found || state.in_result;
    }
    if (!version.standing) return;
    if (version.former) {
      ++counts_.former;
      counts_.former_found += found ? 1 : 0;
      return;
    }
    ++counts_.standing;
    if (found) {
      ++counts_.recovered;
      return;
    }
    counts_.missed_overflow += version.overflows ? 1 : 0;
    counts_.missed_log += version.in_main ? 0 : 1;
    if (examples_.missed.size() < most_) {
      examples_.missed.push_back(ShownVersion(truth_, version));
    }
  }

  void Rest(const KeyState& state) {
    counts_.carved += state.rows;
    if (!state.ever) {
      counts_.false_rows += state.rows;
    } else if (state.rows > state.versions) {
      counts_.repeats += state.rows - state.versions;
    }
  }

  void ShowFalse() {
    for (const Row& row : result_.rows) {
      if (examples_.false_rows.size() >= most_) return;
      if (!keys_[KeyOf(row, pairs_)].ever) {
        examples_.false_rows.push_back(ShownRow(result_.columns, row));
      }
    }
  }

  const TableTruth& truth_;
  const ResultTable& result_;
  std::vector<ColumnPair> pairs_;
  size_t most_;
  Examples& examples_;
  std::unordered_map<std::string, KeyState> keys_;
  Counts counts_;
};

}  // namespace

void Counts::Add(const Counts& other) {
  live += other.live;
  live_found += other.live_found;
  standing += other.standing;
  recovered += other.recovered;
  former += other.former;
  former_found += other.former_found;
  carved += other.carved;
  false_rows += other.false_rows;
  repeats += other.repeats;
  missed_overflow += other.missed_overflow;
  missed_log += other.missed_log;
}

double Counts::LiveShare() const { return Share(live_found, live); }

double Counts::Recall() const { return Share(recovered, standing); }

double Counts::Precision() const {
  const size_t judged = carved - repeats;
  return Share(judged - false_rows, judged);
}

std::string ComparedForm(const Value& value) { return std::visit(Former{}, value); }

Counts Compare(const TableTruth& truth, const ResultTable* result, const std::string& row_id_column,
               size_t most_examples, Examples& examples) {
  if (result != nullptr) {
    return Comparison(truth, *result, row_id_column, most_examples, examples).Run();
  }
  Counts counts;
  for (const Version& version : truth.versions) {
    counts.live += version.live ? 1 : 0;
    counts.standing += version.standing && !version.former ? 1 : 0;
    counts.former += version.standing && version.former ? 1 : 0;
  }
  return counts;
}

}  // namespace recovery
