#include "recovery/row_maker.h"

#include <charconv>
#include <set>
#include <stdexcept>

#include "recovery/blob_maker.h"
#include "recovery/recipe.h"
#include "recovery/text_maker.h"

namespace recovery {
namespace {

constexpr int64_t kFirstMs = 1325376000000;  // 2012-01-01
constexpr int64_t kLastMs = 1719792000000;   // 2024-07-01
constexpr int64_t kAppleEpochMs = 978307200000;

size_t Size(const Recipe& recipe, size_t index) {
  return static_cast<size_t>(RecipeInteger(recipe.args.at(index)));
}

// A number when the word reads as one, else the word.
Value WordValue(const std::string& word) {
  int64_t number = 0;
  const char* end = word.data() + word.size();
  if (const auto [at, error] = std::from_chars(word.data(), end, number);
      error == std::errc() && at == end) {
    return number;
  }
  double real = 0;
  if (const auto [at, error] = std::from_chars(word.data(), end, real);
      error == std::errc() && at == end) {
    return real;
  }
  return word;
}

// "V:W": the value and its weight, 1 when none is given.
std::pair<std::string, double> Weighted(const std::string& arg) {
  const size_t colon = arg.rfind(':');
  if (colon == std::string::npos || colon == 0) return {arg, 1.0};
  try {
    return {arg.substr(0, colon), RecipeReal(arg.substr(colon + 1))};
  } catch (const std::invalid_argument&) {
    return {arg, 1.0};
  }
}

Value PickValue(const Recipe& recipe, Random& random) {
  double sum = 0;
  for (const std::string& arg : recipe.args) sum += Weighted(arg).second;
  double left = random.Unit() * sum;
  for (const std::string& arg : recipe.args) {
    const auto [word, weight] = Weighted(arg);
    left -= weight;
    if (left < 0) return WordValue(word);
  }
  return WordValue(Weighted(recipe.args.back()).first);
}

std::string Joined(const Recipe& recipe) {
  std::string text;
  for (const std::string& word : recipe.args) text += (text.empty() ? "" : " ") + word;
  return text;
}

using TextMaker = std::string (*)(Random&);
const std::map<std::string, TextMaker> kTextMakers = {
    {"phone", MakePhone}, {"email", MakeEmail},     {"person", MakePerson},
    {"guid", MakeGuid},   {"url", MakeUrl},         {"path", MakePath},
    {"mime", MakeMime},   {"message", MakeMessage}, {"jid", MakeJid}};

using SizedTextMaker = std::string (*)(Random&, size_t, size_t);
const std::map<std::string, SizedTextMaker> kSizedTextMakers = {
    {"digits", MakeDigits}, {"ascii", MakeAscii}, {"words", MakeWords}, {"json", MakeJson}};

using BlobMaker = Blob (*)(Random&, size_t, size_t);
const std::map<std::string, BlobMaker> kBlobMakers = {
    {"plist", MakePlist},        {"protobuf", MakeProtobuf}, {"counts", MakeCounts},
    {"json_blob", MakeJsonBlob}, {"jpeg", MakeJpeg},         {"blob", MakeBlob}};

// The time of a row in the unit of a kind.
Value TimeValue(const std::string& kind, int64_t ms, Random& random) {
  const int64_t apple_ms = ms - kAppleEpochMs;
  if (kind == "time_ms") return ms;
  if (kind == "time_s") return ms / 1000;
  if (kind == "time_us") return ms * 1000 + random.Between(0, 999);
  if (kind == "apple_s_int") return apple_ms / 1000;
  if (kind == "apple_ns") return apple_ms * 1000000 + random.Between(0, 999) * 1000;
  return static_cast<double>(apple_ms) / 1000.0 + random.Unit() / 1000.0;
}

bool IsTime(const std::string& kind) {
  return kind.starts_with("time_") || kind.starts_with("apple_");
}

}  // namespace

// One row at work: the values made so far and the columns whose making has begun.
struct RowMaker::Making {
  std::map<std::string, Value> values;
  std::set<std::string> begun;
  std::optional<int64_t> ms;
};

RowMaker::RowMaker(const TableFacts& table, uint64_t seed, uint64_t family, size_t planned)
    : table_(table), random_(seed), family_(family), planned_(planned == 0 ? 1 : planned) {}

Row RowMaker::Next(const Layout& layout) {
  ++made_;
  Making making;
  Row row;
  for (size_t i = 0; i < layout.columns.size(); ++i) {
    row.push_back(layout.alias == i ? Value{} : OfColumn(layout.columns[i].name, making));
  }
  return row;
}

std::map<size_t, Value> RowMaker::Update(const Layout& layout, const Row& row) {
  Making making;
  for (size_t i = 0; i < layout.columns.size(); ++i) {
    making.values[layout.columns[i].name] = i < row.size() ? row[i] : Value{};
  }
  std::map<size_t, Value> changes;
  for (size_t i = 0; i < layout.columns.size(); ++i) {
    const auto found = table_.update.find(layout.columns[i].name);
    if (found != table_.update.end()) changes[i] = Make(found->second, making);
  }
  return changes;
}

Value RowMaker::OfColumn(const std::string& name, Making& making) {
  const auto found = making.values.find(name);
  if (found != making.values.end()) return found->second;
  // An alias column that another one looks at: its number is the row's.
  if (!table_.values.contains(name) && !table_.others) return static_cast<int64_t>(made_);
  if (!making.begun.insert(name).second) {
    throw std::runtime_error("the recipe of " + table_.name + '.' + name + " leads to itself");
  }
  Value value = Make(table_.RecipeOf(name), making);
  making.values[name] = value;
  return value;
}

Value RowMaker::Make(const Recipe& recipe, Making& making) {
  if (recipe.null_share > 0 && random_.Chance(recipe.null_share)) return {};
  if (recipe.kind == "same") return OfColumn(recipe.args[0], making);
  if (recipe.kind == "near") return Near(recipe, making);
  if (IsTime(recipe.kind)) return TimeValue(recipe.kind, TimeMs(making), random_);
  if (recipe.kind == "serial") return static_cast<int64_t>(made_);
  if (recipe.kind == "group_of") return GroupValue(recipe);
  if (std::optional<Value> value = Simple(recipe)) return *value;
  return Number(recipe);
}

std::optional<Value> RowMaker::Simple(const Recipe& recipe) {
  const std::string& kind = recipe.kind;
  if (const auto text = kTextMakers.find(kind); text != kTextMakers.end()) {
    return text->second(random_);
  }
  if (const auto text = kSizedTextMakers.find(kind); text != kSizedTextMakers.end()) {
    return text->second(random_, Size(recipe, 0), Size(recipe, 1));
  }
  if (const auto blob = kBlobMakers.find(kind); blob != kBlobMakers.end()) {
    return blob->second(random_, Size(recipe, 0), Size(recipe, 1));
  }
  if (kind == "hex") return MakeHex(random_, Size(recipe, 0));
  if (kind == "null") return Value{};
  if (kind == "const") return WordValue(recipe.args[0]);
  if (kind == "text_const") return Joined(recipe);
  if (kind == "pick") return PickValue(recipe, random_);
  return std::nullopt;
}

Value RowMaker::Number(const Recipe& recipe) {
  if (recipe.kind == "flag") return int64_t{random_.Chance(RecipeReal(recipe.args[0])) ? 1 : 0};
  if (recipe.kind == "real") {
    const double first = RecipeReal(recipe.args[0]);
    return first + random_.Unit() * (RecipeReal(recipe.args[1]) - first);
  }
  const int64_t first = RecipeInteger(recipe.args[0]);
  if (recipe.kind == "ref") return random_.Between(1, first);
  if (recipe.kind == "group") {
    return static_cast<int64_t>(random_.Skewed(static_cast<size_t>(first), 2)) + 1;
  }
  const int64_t last = RecipeInteger(recipe.args[1]);
  if (recipe.kind == "int") return random_.Between(first, last);
  const auto span = static_cast<size_t>(last - first) + 1;
  return first + static_cast<int64_t>(random_.Skewed(span, 3));  // small
}

// The values of a group stand fixed by its recipe: each is made afresh from a seed of its own.
Value RowMaker::GroupValue(const Recipe& recipe) {
  const Recipe made{recipe.args.front(), {recipe.args.begin() + 1, recipe.args.end() - 1}, 0};
  const size_t which = random_.Skewed(Size(recipe, recipe.args.size() - 1), 2);
  const Random outer = random_;
  random_ = Random(MixSeed(family_ + which, Joined(recipe)));
  Making nothing;
  Value value = Make(made, nothing);
  random_ = outer;
  return value;
}

Value RowMaker::Near(const Recipe& recipe, Making& making) {
  const Value other = OfColumn(recipe.args[0], making);
  if (const auto* number = std::get_if<int64_t>(&other)) {
    return *number + random_.Between(RecipeInteger(recipe.args[1]), RecipeInteger(recipe.args[2]));
  }
  if (const auto* real = std::get_if<double>(&other)) {
    const double first = RecipeReal(recipe.args[1]);
    return *real + first + random_.Unit() * (RecipeReal(recipe.args[2]) - first);
  }
  return other;
}

// All times of a row lie within a minute, and rows follow one another.
int64_t RowMaker::TimeMs(Making& making) {
  if (!making.ms) {
    const double share = static_cast<double>(made_) / static_cast<double>(planned_);
    const double step = static_cast<double>(kLastMs - kFirstMs) / static_cast<double>(planned_);
    const double at = static_cast<double>(kLastMs - kFirstMs) * (share > 1 ? 1 : share);
    making.ms = kFirstMs + static_cast<int64_t>(at - random_.Unit() * step * 0.9);
  }
  return *making.ms + random_.Between(0, 60000);
}

}  // namespace recovery
