// The downward reading of varints, held against a plain twin over both sources.
#include "common/sqlitecommon/reverse_varint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/log_capture.h"
#include "support/temp_folder.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Varints = std::vector<std::pair<uint32_t, int64_t>>;

Varints Plain(const std::vector<ReverseVarint>& varints) {
  Varints plain;
  for (const ReverseVarint& varint : varints) plain.emplace_back(varint.length, varint.value);
  return plain;
}

Varints ReadMemory(const Bytes& bytes, int32_t start, int32_t limit) {
  const MemoryBytes source{bytes.data(), bytes.size()};
  std::vector<ReverseVarint> out;
  ReadVarintsBackward(source, start, limit, out);
  return Plain(out);
}

// Decimal arithmetic in place of shifts: group g weighs 128^g modulo 2^32, read as signed.
int64_t SignedGroup(uint64_t group, uint32_t shift) {
  uint64_t product = group;
  for (uint32_t i = 0; i < shift % 32; ++i) product = product * 2 % 4294967296ULL;
  return product >= 2147483648ULL ? static_cast<int64_t>(product) - 4294967296LL
                                  : static_cast<int64_t>(product);
}

Varints TwinRead(const Bytes& bytes, int64_t start, int32_t limit) {
  const auto at = [&bytes](int64_t place) -> uint64_t {
    const bool is_inside = place >= 0 && place < static_cast<int64_t>(bytes.size());
    return is_inside ? bytes[static_cast<size_t>(place)] : 0;
  };
  Varints out;
  int64_t place = start;
  int32_t used = 0;
  while (out.size() < 3 && used < limit) {
    uint32_t length = 0;
    int64_t value = 0;
    do {
      ++length;
      const uint64_t group = length == 9 ? at(place) : at(place) % 128;
      value += SignedGroup(group, 7 * (length - 1));
      --place;
      ++used;
    } while (at(place) >= 128 && length < 9 && used < limit);
    out.emplace_back(length, value);
  }
  return out;
}

TEST(ReverseVarintTest, ThreeVarintsAreReadDownward) {
  const struct {
    const char* name;
    Bytes bytes;
    int32_t start;
    int32_t limit;
    Varints varints;
  } kCases[] = {
      {"single bytes", {0x09, 0x03, 0x02, 0x01}, 3, 27, {{1, 1}, {1, 2}, {1, 3}}},
      {"two bytes", {0x00, 0x81, 0x01, 0x05}, 3, 27, {{1, 5}, {2, 129}, {1, 0}}},
      {"a high bit in the first byte read is dropped",
       {0, 0, 0, 0x85},
       3,
       4,
       {{1, 5}, {1, 0}, {1, 0}}},
      {"five bytes lose the bits above 32",
       {0x00, 0x00, 0xBF, 0xFF, 0xFF, 0xFF, 0x7F},
       6,
       5,
       {{5, 0x0FFFFFFFLL - 0x10000000LL}}},
      {"sixth and later groups wrap around",
       {0x00, 0x81, 0x80, 0x80, 0x80, 0x80, 0x00},
       6,
       6,
       {{6, 8}}},
      {"the ninth byte keeps its high bit",
       {0x00, 0xC1, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00},
       9,
       9,
       {{9, -1056964608}}},
      {"no tenth byte is joined",
       {0xFF, 0x81, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00},
       10,
       9,
       {{9, -2147483648LL}}},
      {"the limit ends a varint", {0x81, 0x81, 0x81, 0x01}, 3, 2, {{2, 129}}},
      {"the limit ends the walk", {0x01, 0x02, 0x03}, 2, 2, {{1, 3}, {1, 2}}},
      {"no byte allowed", {0x01, 0x02}, 1, 0, {}},
      {"negative limit", {0x01, 0x02}, 1, -1, {}},
      {"below the start of memory there are zeros",
       {0x81, 0x01},
       1,
       27,
       {{2, 129}, {1, 0}, {1, 0}}},
      {"start below memory", {0x01}, -1, 27, {{1, 0}, {1, 0}, {1, 0}}},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(ReadMemory(row.bytes, row.start, row.limit), row.varints);
    EXPECT_EQ(TwinRead(row.bytes, row.start, row.limit), row.varints);
  }
}

TEST(ReverseVarintTest, FullListIsLeftAsItIs) {
  const Bytes bytes = {1, 2, 3, 4};
  const MemoryBytes source{bytes.data(), bytes.size()};
  std::vector<ReverseVarint> out(3);
  EXPECT_EQ(ReadVarintsBackward(source, 3, 27, out), 0);
  EXPECT_EQ(Plain(out), (Varints{{0, 0}, {0, 0}, {0, 0}}));
}

TEST(ReverseVarintTest, ListIsFilledUpToThree) {
  const Bytes bytes = {1, 2, 3, 4};
  const MemoryBytes source{bytes.data(), bytes.size()};
  std::vector<ReverseVarint> out(1);
  EXPECT_EQ(ReadVarintsBackward(source, 3, 27, out), 2);
  EXPECT_EQ(Plain(out), (Varints{{0, 0}, {1, 4}, {1, 3}}));
}

TEST(ReverseVarintTest, MemoryAndFileAgreeWithThePlainTwin) {
  std::mt19937 random(11);
  Bytes bytes(4000);
  for (uint8_t& byte : bytes) {
    byte = static_cast<uint8_t>(random() % 256);
    if (random() % 3 != 0) byte |= 0x80U;  // long varints are the rare ones otherwise
  }
  const TempFolder folder;
  const std::string path = folder.File("bytes");
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  const LogCapture log;
  FileDataBuf file(path);
  ASSERT_EQ(file.status(), 0);
  for (int round = 0; round < 4000; ++round) {
    const auto start = static_cast<int32_t>(random() % bytes.size());
    const auto limit = static_cast<int32_t>(random() % 30);
    const Varints expected = TwinRead(bytes, start, limit);
    ASSERT_EQ(ReadMemory(bytes, start, limit), expected) << start << " " << limit;
    std::vector<ReverseVarint> out;
    ReadVarintsBackward(file, start, limit, out);
    ASSERT_EQ(Plain(out), expected) << start << " " << limit;
  }
}

}  // namespace
