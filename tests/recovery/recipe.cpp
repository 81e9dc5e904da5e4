#include "recovery/recipe.h"

#include <charconv>
#include <sstream>
#include <stdexcept>

namespace recovery {
namespace {

constexpr size_t kAnyNumber = 1000;

struct Kind {
  const char* name;
  size_t least;
  size_t most;
  size_t first_number;  // arguments from this one on are numbers
};

constexpr size_t kNoNumber = kAnyNumber;

constexpr Kind kKinds[] = {
    {"null", 0, 0, kNoNumber},
    {"const", 1, 1, kNoNumber},
    {"text_const", 1, kAnyNumber, kNoNumber},
    {"serial", 0, 0, kNoNumber},
    {"ref", 1, 1, 0},
    {"group", 1, 1, 0},
    {"int", 2, 2, 0},
    {"small", 2, 2, 0},
    {"pick", 1, kAnyNumber, kNoNumber},
    {"flag", 1, 1, 0},
    {"real", 2, 2, 0},
    {"time_ms", 0, 0, kNoNumber},
    {"time_s", 0, 0, kNoNumber},
    {"time_us", 0, 0, kNoNumber},
    {"apple_s", 0, 0, kNoNumber},
    {"apple_s_int", 0, 0, kNoNumber},
    {"apple_ns", 0, 0, kNoNumber},
    {"near", 3, 3, 1},
    {"same", 1, 1, kNoNumber},
    {"phone", 0, 0, kNoNumber},
    {"email", 0, 0, kNoNumber},
    {"person", 0, 0, kNoNumber},
    {"guid", 0, 0, kNoNumber},
    {"hex", 1, 1, 0},
    {"digits", 2, 2, 0},
    {"ascii", 2, 2, 0},
    {"url", 0, 0, kNoNumber},
    {"path", 0, 0, kNoNumber},
    {"mime", 0, 0, kNoNumber},
    {"words", 2, 2, 0},
    {"message", 0, 0, kNoNumber},
    {"json", 2, 2, 0},
    {"group_of", 2, 4, kNoNumber},
    {"jid", 0, 0, kNoNumber},
    {"plist", 2, 2, 0},
    {"protobuf", 2, 2, 0},
    {"counts", 2, 2, 0},
    {"json_blob", 2, 2, 0},
    {"jpeg", 2, 2, 0},
    {"blob", 2, 2, 0},
};

const Kind& KindOf(const std::string& name) {
  for (const Kind& kind : kKinds) {
    if (name == kind.name) return kind;
  }
  throw std::invalid_argument("unknown recipe kind '" + name + "'");
}

bool IsNumber(const std::string& text) {
  const bool has_digit = text.find_first_of("0123456789") != std::string::npos;
  return has_digit && text.find_first_not_of("+-.0123456789") == std::string::npos;
}

void Check(const Recipe& recipe) {
  const Kind& kind = KindOf(recipe.kind);
  if (recipe.args.size() < kind.least || recipe.args.size() > kind.most) {
    throw std::invalid_argument("recipe '" + recipe.kind + "' takes " + std::to_string(kind.least) +
                                (kind.most == kind.least   ? ""
                                 : kind.most == kAnyNumber ? " or more"
                                                           : " to " + std::to_string(kind.most)) +
                                " arguments, not " + std::to_string(recipe.args.size()));
  }
  for (size_t i = kind.first_number; i < recipe.args.size(); ++i) RecipeReal(recipe.args[i]);
}

// "group_of KIND [ARGS] N": the made kind is a recipe of its own.
void CheckGroup(const Recipe& recipe) {
  if (RecipeInteger(recipe.args.back()) < 1) {
    throw std::invalid_argument("a group needs at least one value");
  }
  Recipe made{recipe.args.front(), {recipe.args.begin() + 1, recipe.args.end() - 1}, 0};
  if (made.kind == "group_of" || !ColumnOfRecipe(made).empty()) {
    throw std::invalid_argument("a group of '" + made.kind + "' has no sense");
  }
  Check(made);
}

}  // namespace

int64_t RecipeInteger(const std::string& text) {
  int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || at != end) {
    throw std::invalid_argument("'" + text + "' is no whole number");
  }
  return number;
}

double RecipeReal(const std::string& text) {
  double number = 0;
  const char* end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || at != end) throw std::invalid_argument("'" + text + "' is no number");
  return number;
}

std::string ColumnOfRecipe(const Recipe& recipe) {
  return recipe.kind == "near" || recipe.kind == "same" ? recipe.args.at(0) : "";
}

Recipe ParseRecipe(const std::string& text) {
  Recipe recipe;
  std::istringstream words(text);
  words >> recipe.kind;
  if (IsNumber(recipe.kind)) recipe = {"const", {recipe.kind}, 0};  // a number stands for itself
  for (std::string word; words >> word;) {
    if (word != "?") {
      recipe.args.push_back(word);
      continue;
    }
    std::string share;
    std::string rest;
    words >> share;
    recipe.null_share = RecipeReal(share);
    if (recipe.null_share < 0 || recipe.null_share > 1 || words >> rest) {
      throw std::invalid_argument("behind '?' stands one probability and nothing else");
    }
  }
  Check(recipe);
  if (recipe.kind == "group_of") CheckGroup(recipe);
  return recipe;
}

}  // namespace recovery
