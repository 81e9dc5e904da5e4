#include "scansqlite/deleted/guess_row_ids.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

namespace {

using Ids = std::vector<std::optional<int64_t>>;

std::vector<RowIdHint> HintsOf(const Ids& ids) {
  std::vector<RowIdHint> hints;
  for (const auto& id : ids) hints.push_back({id.has_value(), id.value_or(0)});
  return hints;
}

// The row ids afterwards; each record begins with -1 as its own.
std::vector<int64_t> Guess(const Ids& ids) {
  std::vector<int64_t> guessed(ids.size(), -1);
  ForEachGuessedRowId(HintsOf(ids), [&](size_t at, int64_t row_id) { guessed.at(at) = row_id; });
  return guessed;
}

constexpr std::nullopt_t kNone = std::nullopt;

struct GuessCase {
  const char* name;
  Ids ids;
  std::vector<int64_t> expected;  // -1: left as it was
};

TEST(GuessRowIds, CountsDownAsTheOffsetRises) {
  const GuessCase cases[] = {
      {"nothing to do", {5, 4}, {-1, -1}},
      {"no records", {}, {}},
      {"no anchor at all", {kNone, kNone}, {0, 0}},
      {"only one below", {9, kNone, kNone}, {-1, 8, 7}},
      {"only one above", {kNone, kNone, 9}, {11, 10, -1}},
      {"a tie goes to the one below", {20, kNone, 4}, {-1, 19, -1}},
      {"the nearer one decides", {50, kNone, kNone, kNone, 4}, {-1, 49, 48, 5, -1}},
      {"two gaps", {kNone, 8, kNone, 3, kNone}, {9, -1, 7, -1, 2}},
      {"a guess is no anchor", {30, kNone, kNone, kNone, kNone, 10}, {-1, 29, 28, 12, 11, -1}},
      {"below 0", {1, kNone, kNone, kNone}, {-1, 0, -1, -2}},
      {"wraps at the lowest", {INT64_MIN, kNone}, {-1, INT64_MAX}},
      {"wraps at the highest", {kNone, INT64_MAX}, {INT64_MIN, -1}},
  };
  for (const GuessCase& c : cases) {
    EXPECT_EQ(Guess(c.ids), c.expected) << c.name;
  }
}

// The same with a search in both directions for every entry.
std::vector<int64_t> PlainGuess(const Ids& ids) {
  std::vector<int64_t> guessed(ids.size(), -1);
  const auto count = static_cast<int64_t>(ids.size());
  for (int64_t i = 0; i < count; ++i) {
    if (ids[static_cast<size_t>(i)]) continue;
    int64_t next = i + 1;
    while (next < count && !ids[static_cast<size_t>(next)]) ++next;
    int64_t prev = i - 1;
    while (prev >= 0 && !ids[static_cast<size_t>(prev)]) --prev;
    const bool has_next = next < count;
    const bool has_prev = prev >= 0;
    int64_t& id = guessed[static_cast<size_t>(i)];
    if (has_prev && (!has_next || next - i >= i - prev)) {
      id = *ids[static_cast<size_t>(prev)] - (i - prev);
    } else {
      id = has_next ? *ids[static_cast<size_t>(next)] + (next - i) : 0;
    }
  }
  return guessed;
}

TEST(GuessRowIds, AgreesWithTheSearchForEveryEntry) {
  std::mt19937 random(99);
  for (int round = 0; round < 3000; ++round) {
    Ids ids(random() % 40);
    const auto share = static_cast<unsigned>(1 + random() % 10);
    for (auto& id : ids) {
      if (random() % 10 < share) id = static_cast<int64_t>(random() % 1000);
    }
    ASSERT_EQ(Guess(ids), PlainGuess(ids)) << "round " << round;
  }
}

}  // namespace
