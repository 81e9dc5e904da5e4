#include "scansqlite/carving/split_payload.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;
using hand_made::Cells;

// One value, as bytes and class.
using Value = std::pair<Bytes, int32_t>;

std::vector<Value> Describe(const std::vector<RawValue>& values) {
  std::vector<Value> described;
  for (const RawValue& value : values) {
    described.emplace_back(hand_made::BytesOf(value), value.storage_class);
    EXPECT_EQ(value.length == 0, value.bytes == nullptr);
  }
  return described;
}

struct SplitCase {
  const char* name;
  std::vector<uint64_t> types;
  uint32_t size;
  uint32_t limit;
  bool result;
  std::vector<Value> values;
};

TEST(SplitPayload, CutsTheBodyFromMemoryAndFromTheFileAlike) {
  const Bytes body{1, 2, 3, 4, 5, 6};
  const SplitCase cases[] = {
      {"all values", {1, 2, 15, 16}, 6, 6, true, {{{1}, 0}, {{2, 3}, 0}, {{4}, 3}, {{5, 6}, 4}}},
      {"constants take no bytes", {9, 1, 8}, 1, 1, true, {{{1}, -1}, {{1}, 0}, {{0}, -1}}},
      {"empty values", {0, 12, 13, 10}, 0, 0, true, {{{}, -2}, {{}, 4}, {{}, 3}, {{}, -1}}},
      {"a real", {1, 15}, 2, 9, true, {{{1}, 0}, {{2}, 3}}},
      {"stops at the limit", {1, 2, 1}, 4, 3, false, {{{1}, 0}, {{2, 3}, 0}}},
      {"stops at the size", {1, 2, 1}, 2, 9, false, {{{1}, 0}}},
      {"nothing fits", {2}, 1, 9, false, {}},
      {"no cells", {}, 0, 0, true, {}},
  };
  for (const SplitCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<RawValue> values;
    EXPECT_EQ(SplitPayload({body.data(), body.size()}, c.size, c.limit, Cells(c.types), values),
              c.result);
    EXPECT_EQ(Describe(values), c.values);
    hand_made::FileOf file(hand_made::Join({Bytes(10, 0xEE), body}));
    values.clear();
    EXPECT_EQ(SplitPayloadInPage(file.buf(), 10, c.size, c.limit, Cells(c.types), values),
              c.result);
    EXPECT_EQ(Describe(values), c.values);
  }
}

TEST(SplitPayload, BytesThatMemoryLacksAreZero) {
  const Bytes body{7, 8};
  std::vector<RawValue> values;
  EXPECT_TRUE(SplitPayload({body.data(), body.size()}, 9, 9, Cells({3, 4}), values));
  EXPECT_EQ(Describe(values), (std::vector<Value>{{{7, 8, 0}, 0}, {{0, 0, 0, 0}, 0}}));
}

TEST(SplitPayloadInPage, AValueThatLeavesTheFileThrows) {
  hand_made::FileOf file(Bytes(10, 1));
  std::vector<RawValue> values;
  EXPECT_THROW(SplitPayloadInPage(file.buf(), 8, 4, 4, Cells({4}), values), std::out_of_range);
}

struct ShortenedCase {
  const char* name;
  std::vector<uint64_t> types;
  uint32_t size;
  std::vector<Value> values;
};

TEST(SplitShortenedPayload, KeepsWhatTheBytesGive) {
  const Bytes body{1, 2, 3, 4};
  const ShortenedCase cases[] = {
      {"all there", {2, 2}, 4, {{{1, 2}, 0}, {{3, 4}, 0}}},
      {"last value shortened", {1, 19}, 3, {{{1}, 0}, {{2, 3}, 3}}},
      {"values behind the end are absent", {2, 19, 1}, 2, {{{1, 2}, 0}}},
      {"constants behind the end are absent", {4, 9}, 4, {{{1, 2, 3, 4}, 0}}},
      {"constants in front stay", {9, 4}, 4, {{{1}, -1}, {{1, 2, 3, 4}, 0}}},
      {"nothing at all", {9, 0, 1}, 0, {}},
      {"empty values in front stay", {0, 13, 2, 0}, 2, {{{}, -2}, {{}, 3}, {{1, 2}, 0}}},
  };
  for (const ShortenedCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<RawValue> values;
    SplitShortenedPayload({body.data(), body.size()}, c.size, Cells(c.types), values);
    EXPECT_EQ(Describe(values), c.values);
  }
}

}  // namespace
