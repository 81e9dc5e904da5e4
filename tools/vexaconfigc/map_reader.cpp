#include "map_reader.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <set>

namespace vexaconfigc {

namespace {

std::string JoinWords(std::initializer_list<const char*> words) {
  std::string joined;
  for (const char* word : words) {
    if (!joined.empty()) joined += ", ";
    joined += word;
  }
  return joined;
}

}  // namespace

int LineOf(const YAML::Node& node) { return node.Mark().line + 1; }

MapReader::MapReader(const YAML::Node& node, std::string what,
                     std::initializer_list<const char*> keys, const std::string& file,
                     Diagnostics& diagnostics)
    : node_(node),
      what_(std::move(what)),
      file_(file),
      diagnostics_(diagnostics),
      line_(LineOf(node)) {
  if (!node_.IsMap()) {
    Error(line_, what_ + " must be a map of keys and values");
    node_ = YAML::Node(YAML::NodeType::Map);
    return;
  }
  std::set<std::string> seen;
  for (const auto& entry : node_) {
    const std::string key = entry.first.IsScalar() ? entry.first.Scalar() : std::string("?");
    const bool known =
        std::any_of(keys.begin(), keys.end(), [&key](const char* name) { return key == name; });
    if (!known) {
      Error(LineOf(entry.first),
            "unknown key '" + key + "' in " + what_ + "; known are " + JoinWords(keys));
    } else if (!seen.insert(key).second) {
      Error(LineOf(entry.first), "key '" + key + "' stands twice in " + what_);
    }
  }
}

bool MapReader::Has(const char* key) const { return Find(key).IsDefined(); }

int MapReader::LineOfKey(const char* key) const {
  const YAML::Node value = Find(key);
  return value.IsDefined() ? LineOf(value) : line_;
}

std::string MapReader::Text(const char* key) {
  const YAML::Node value = Require(key);
  std::string text = Scalar(value, key).value_or("");
  if (value.IsDefined() && value.IsScalar() && text.empty()) {
    Error(LineOf(value), "key '" + std::string(key) + "' of " + what_ + " is empty");
  }
  return text;
}

std::string MapReader::OptionalText(const char* key) { return Has(key) ? Text(key) : ""; }

bool MapReader::Flag(const char* key) {
  const YAML::Node value = Require(key);
  const std::optional<std::string> text = Scalar(value, key);
  if (!text || *text == "false") return false;
  if (*text == "true") return true;
  Error(LineOf(value), "key '" + std::string(key) + "' of " + what_ +
                           " must be true or false, not '" + *text + "'");
  return false;
}

bool MapReader::OptionalFlag(const char* key) { return Has(key) && Flag(key); }

int64_t MapReader::Number(const char* key) {
  const YAML::Node value = Require(key);
  const std::optional<std::string> text = Scalar(value, key);
  if (!text) return 0;
  int64_t number = 0;
  const char* end = text->data() + text->size();
  const auto [stop, fault] = std::from_chars(text->data(), end, number);
  if (fault == std::errc() && stop == end) return number;
  Error(LineOf(value), "key '" + std::string(key) + "' of " + what_ +
                           " must be a whole number of 64 bits, not '" + *text + "'");
  return 0;
}

int32_t MapReader::SmallNumber(const char* key) {
  const int64_t number = Number(key);
  if (number >= 0 && number <= std::numeric_limits<int32_t>::max()) {
    return static_cast<int32_t>(number);
  }
  Error(LineOfKey(key), "key '" + std::string(key) + "' of " + what_ +
                            " must lie between 0 and 2147483647, not " + std::to_string(number));
  return 0;
}

int MapReader::Word(const char* key, std::initializer_list<const char*> words) {
  const YAML::Node value = Require(key);
  const std::optional<std::string> text = Scalar(value, key);
  if (!text) return -1;
  const auto* found =
      std::find_if(words.begin(), words.end(), [&](const char* word) { return *text == word; });
  if (found != words.end()) return static_cast<int>(found - words.begin());
  Error(LineOf(value), "key '" + std::string(key) + "' of " + what_ + " must be one of " +
                           JoinWords(words) + ", not '" + *text + "'");
  return -1;
}

std::vector<YAML::Node> MapReader::List(const char* key) {
  const YAML::Node value = Require(key);
  if (!value.IsDefined()) return {};
  if (!value.IsSequence()) {
    Error(LineOf(value), "key '" + std::string(key) + "' of " + what_ + " must be a list");
    return {};
  }
  return {value.begin(), value.end()};
}

std::vector<YAML::Node> MapReader::OptionalList(const char* key) {
  return Has(key) ? List(key) : std::vector<YAML::Node>();
}

YAML::Node MapReader::Map(const char* key) { return Require(key); }

YAML::Node MapReader::Find(const char* key) const {
  const YAML::Node& map = node_;  // the const operator[] adds nothing to the map
  return map[key];
}

YAML::Node MapReader::Require(const char* key) {
  const YAML::Node value = Find(key);
  if (!value.IsDefined()) Error(line_, "missing key '" + std::string(key) + "' in " + what_);
  return value;
}

std::optional<std::string> MapReader::Scalar(const YAML::Node& value, const char* key) {
  if (!value.IsDefined()) return std::nullopt;
  if (value.IsScalar()) return value.Scalar();
  Error(LineOf(value), "key '" + std::string(key) + "' of " + what_ + " must be a single value");
  return std::nullopt;
}

void MapReader::Error(int line, const std::string& words) {
  diagnostics_.Error(file_, line, words);
}

}  // namespace vexaconfigc
