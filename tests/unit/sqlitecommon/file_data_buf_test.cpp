// The window over a file: checked reads, moving, and equality with the plain bytes.
#include "common/sqlitecommon/file_data_buf.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/log_capture.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using Bytes = std::vector<uint8_t>;

constexpr uint64_t kWindow = 4194304;
const LogLine kByteLine = {
    3, "At file : src/common/sqlitecommon, line : 641, access out of file size."};
const LogLine kRangeLine = {
    3, "At file : src/common/sqlitecommon, line : 679, access out of file size."};

Bytes TakeSlice(FileSlice slice) {
  Bytes bytes(slice.begin, slice.end);
  slice.deleter(slice.begin);
  return bytes;
}

class FileDataBufTest : public testing::Test {
 protected:
  std::string Write(const Bytes& bytes) const {
    const std::string path = folder_.File("file.db");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path;
  }

  TempFolder folder_;
  LogCapture log_;
};

Bytes Pattern(size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 31 + i / 256 + i / 65536);
  return bytes;
}

// Mostly zero, with patches of noise, as a database with emptied pages.
Bytes SparseNoise(size_t size, std::mt19937& random) {
  Bytes bytes(size);
  for (size_t at = 0; at + 5000 < size; at += 1 + random() % 40000) {
    for (size_t i = at; i < at + 5000; ++i) bytes[i] = static_cast<uint8_t>(random());
  }
  bytes.back() = 0xA5;
  return bytes;
}

TEST_F(FileDataBufTest, PathIsLogged) {
  const std::string path = Write({1});
  const FileDataBuf file(path);
  EXPECT_EQ(file.status(), 0);
  EXPECT_THAT(log_.Lines(), ElementsAre(LogLine{1, "file data buf src path : " + path}));
}

TEST_F(FileDataBufTest, FileOfOneByte) {
  FileDataBuf file(Write({0x42}));
  EXPECT_EQ(file.file_size(), 1U);
  EXPECT_EQ(file.window_begin(), 0U);
  EXPECT_EQ(file.window_end(), 1U);
  log_.Clear();
  EXPECT_EQ(file.ReadByte(0), 0x42);
  EXPECT_THAT(log_.Lines(), IsEmpty());
  EXPECT_EQ(file.ReadByte(1), 0);
  EXPECT_THAT(log_.Lines(), ElementsAre(kByteLine));
}

TEST_F(FileDataBufTest, EveryByteReadPastTheEndIsZeroAndLogged) {
  FileDataBuf file(Write({1, 2, 3}));
  log_.Clear();
  for (const uint64_t offset :
       {3ULL, 4ULL, 0x7FFFFFFFULL, 0xFFFFFFFFULL, 0x7FFFFFFFFFFFFFFFULL, 0xFFFFFFFFFFFFFFFFULL}) {
    EXPECT_EQ(file.ReadByte(offset), 0);
    EXPECT_THAT(log_.Lines(), ElementsAre(kByteLine)) << offset;
    log_.Clear();
  }
}

TEST_F(FileDataBufTest, NumberAcrossTheEndHasZeroLowBytesAndALineForEach) {
  const struct {
    uint64_t offset;
    uint32_t value;
    size_t lines;
  } kCases[] = {{0, 0x01020304, 0}, {1, 0x02030405, 0}, {2, 0x03040500, 1},
                {3, 0x04050000, 2}, {4, 0x05000000, 3}, {5, 0, 4}};
  FileDataBuf file(Write({1, 2, 3, 4, 5}));
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.offset);
    log_.Clear();
    EXPECT_EQ(file.ReadBigEndian32(row.offset), row.value);
    EXPECT_EQ(log_.Lines(), std::vector<LogLine>(row.lines, kByteLine));
  }
}

TEST_F(FileDataBufTest, MissingFileIsAFailedBuffer) {
  const std::string path = folder_.File("missing");
  FileDataBuf file(path);
  EXPECT_EQ(file.status(), -1);
  EXPECT_EQ(file.file_size(), 0U);
  EXPECT_THAT(log_.Lines(),
              ElementsAre(LogLine{1, "file data buf src path : " + path},
                          LogLine{3, "Fail to load file 2, No such file or directory"}));
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(file.ReadByte(0), 0);
  EXPECT_THROW(file.ReadRange(0, 1), std::out_of_range);
}

TEST_F(FileDataBufTest, FolderIsAFailedBuffer) {
  const FileDataBuf file(folder_.path().string());
  EXPECT_EQ(file.status(), -1);
  EXPECT_THAT(log_.Messages(), ElementsAre(testing::StartsWith("file data buf src path : "),
                                           "Fail to load file 21, Is a directory"));
}

TEST_F(FileDataBufTest, FileThatCannotBeWrittenIsAFailedBuffer) {
  const std::string path = Write({1, 2, 3});
  ASSERT_EQ(chmod(path.c_str(), 0444), 0);
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  // Root writes whatever the mode says, so the open is made as another user.
  const uid_t user = geteuid();
  constexpr uid_t kNobody = 65534;
  if (user == 0 && seteuid(kNobody) != 0) GTEST_SKIP() << "cannot give up root";
  const FileDataBuf file(path);
  ASSERT_EQ(seteuid(user), 0);
  EXPECT_EQ(file.status(), -1);
  EXPECT_EQ(log_.Messages().back(), "Fail to load file 13, Permission denied");
}

TEST_F(FileDataBufTest, EmptyFileIsAFailedBuffer) {
  const FileDataBuf file(Write({}));
  EXPECT_EQ(file.status(), -1);
  const std::vector<LogLine> lines = log_.Lines();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[1].level, 3);
  EXPECT_THAT(lines[1].message, MatchesRegex("file size 0, [0-9]+, [A-Za-z ]+"));
}

TEST_F(FileDataBufTest, FileOfExactlyOneWindowIsHeldWhole) {
  const Bytes bytes = Pattern(kWindow);
  FileDataBuf file(Write(bytes));
  EXPECT_EQ(file.window_end(), kWindow);
  EXPECT_EQ(file.ReadByte(kWindow - 1), bytes[kWindow - 1]);
  EXPECT_EQ(file.window_begin(), 0U);
  log_.Clear();
  EXPECT_EQ(file.ReadByte(kWindow), 0);
  EXPECT_EQ(file.window_begin(), 0U);
  EXPECT_THAT(log_.Lines(), ElementsAre(kByteLine));
}

TEST_F(FileDataBufTest, ByteBehindOneWindowMovesItToThatByteAlone) {
  const Bytes bytes = Pattern(kWindow + 1);
  FileDataBuf file(Write(bytes));
  EXPECT_EQ(file.window_end(), kWindow);
  EXPECT_EQ(file.ReadByte(kWindow - 1), bytes[kWindow - 1]);
  EXPECT_EQ(file.window_begin(), 0U);
  EXPECT_EQ(file.ReadByte(kWindow), bytes[kWindow]);
  EXPECT_EQ(file.window_begin(), kWindow);
  EXPECT_EQ(file.window_end(), kWindow + 1);
  EXPECT_EQ(file.ReadByte(0), bytes[0]);
}

TEST_F(FileDataBufTest, RangeAtTheEndMayBeEmptyButNotLonger) {
  FileDataBuf file(Write({1, 2, 3}));
  log_.Clear();
  EXPECT_THAT(TakeSlice(file.ReadRange(3, 0)), IsEmpty());
  EXPECT_THAT(TakeSlice(file.ReadRange(0, 0)), IsEmpty());
  EXPECT_THAT(TakeSlice(file.ReadRange(0, 3)), ElementsAre(1, 2, 3));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(FileDataBufTest, RangePastTheEndThrowsWithTheLoggedMessage) {
  constexpr uint64_t kHuge = ~uint64_t{0};
  const struct {
    uint64_t offset;
    uint64_t length;
  } kCases[] = {{3, 1}, {4, 0}, {0, 4}, {2, 2}, {kHuge, 1}, {1, kHuge}, {kHuge, kHuge}};
  FileDataBuf file(Write({1, 2, 3}));
  uint8_t untouched = 7;
  for (const auto& row : kCases) {
    SCOPED_TRACE(std::to_string(row.offset) + " " + std::to_string(row.length));
    log_.Clear();
    try {
      TakeSlice(file.ReadRange(row.offset, row.length));
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::out_of_range& error) {
      EXPECT_EQ(error.what(), kRangeLine.message);
    }
    EXPECT_THAT(log_.Lines(), ElementsAre(kRangeLine));
    EXPECT_THROW(file.ReadRangeTo(row.offset, row.length, &untouched), std::out_of_range);
    EXPECT_THROW(file.CheckRange(row.offset, row.length), std::out_of_range);
  }
  EXPECT_EQ(untouched, 7);
}

TEST_F(FileDataBufTest, RangesInAroundAndBehindTheWindowLeaveItWhereItIs) {
  const Bytes bytes = Pattern(2 * kWindow + 1000);
  FileDataBuf file(Write(bytes));
  ASSERT_EQ(file.ReadByte(kWindow + 500), bytes[kWindow + 500]);
  const uint64_t begin = file.window_begin();
  const uint64_t end = file.window_end();
  ASSERT_EQ(begin, kWindow + 500);
  ASSERT_EQ(end, 2 * kWindow + 500);
  const struct {
    const char* name;
    uint64_t offset;
    uint64_t length;
  } kCases[] = {
      {"within", begin + 10, 100},
      {"up to one byte before the window's end", end - 50, 49},
      {"up to the window's end", end - 50, 50},
      {"over the window's end", end - 50, 100},
      {"behind the window", end, 100},
      {"before the window", 100, 100},
      {"into the window", begin - 50, 100},
      {"more than a window", 10, kWindow + 2000},
      {"all", 0, bytes.size()},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(row.offset);
    const Bytes expected(from, from + static_cast<std::ptrdiff_t>(row.length));
    EXPECT_TRUE(TakeSlice(file.ReadRange(row.offset, row.length)) == expected);
    Bytes copied(row.length);
    file.ReadRangeTo(row.offset, row.length, copied.data());
    EXPECT_TRUE(copied == expected);
    EXPECT_EQ(file.window_begin(), begin);
    EXPECT_EQ(file.window_end(), end);
    EXPECT_EQ(file.ReadByte(begin + 10), bytes[begin + 10]);
  }
}

TEST_F(FileDataBufTest, SliceIsACopyOfItsOwn) {
  FileDataBuf file(Write({1, 2, 3, 4}));
  FileSlice slice = file.ReadRange(0, 2);
  slice.begin[0] = 99;
  EXPECT_EQ(file.ReadByte(0), 1);
  slice.deleter(slice.begin);
}

TEST_F(FileDataBufTest, FileThatShrankWhileOpenReadsAsZeroInSlices) {
  const std::string path = Write(Pattern(100000));
  FileDataBuf file(path);
  EXPECT_EQ(file.ReadByte(0), Pattern(100000)[0]);
  fs::resize_file(path, 10);
  EXPECT_EQ(TakeSlice(file.ReadRange(90000, 10000)), Bytes(10000));
  EXPECT_EQ(file.ReadByte(50000), Pattern(100000)[50000]);  // held in the window
}

TEST_F(FileDataBufTest, WindowIsLoadedWhenItsFirstByteIsAskedFor) {
  const std::string path = Write(Pattern(100000));
  FileDataBuf file(path);
  EXPECT_EQ(file.window_end(), 100000U);
  fs::resize_file(path, 10);
  EXPECT_EQ(file.ReadByte(9), Pattern(100000)[9]);
  EXPECT_EQ(file.ReadByte(10), 0);
}

TEST_F(FileDataBufTest, ReadsAgreeWithThePlainBytesWhateverTheJumps) {
  std::mt19937 random(20240309);
  const Bytes bytes = SparseNoise(9 * 1024 * 1024 + 4321, random);
  FileDataBuf file(Write(bytes));
  ASSERT_EQ(file.file_size(), bytes.size());
  log_.Clear();
  size_t differing = 0;
  for (int burst = 0; burst < 400; ++burst) {
    uint64_t at = random() % bytes.size();
    const int steps = 1 + static_cast<int>(random() % 600);
    const int kind = static_cast<int>(random() % 4);
    for (int step = 0; step < steps; ++step) {
      differing += file.ReadByte(at) == bytes[at] ? 0 : 1;
      if (kind == 0) at = std::min<uint64_t>(at + 1, bytes.size() - 1);
      if (kind == 1) at = at == 0 ? 0 : at - 1;
      if (kind == 2) at = (at + random() % 200000) % bytes.size();
      if (kind == 3) at = at >= 65536 ? at - random() % 65536 : random() % bytes.size();
    }
  }
  EXPECT_EQ(differing, 0U);
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(FileDataBufTest, DownwardWalkThroughSeveralWindowsAgreesWithThePlainBytes) {
  const Bytes bytes = Pattern(2 * kWindow + 70000);
  FileDataBuf file(Write(bytes));
  size_t differing = 0;
  for (uint64_t at = bytes.size(); at-- > 0;) differing += file.ReadByte(at) == bytes[at] ? 0 : 1;
  EXPECT_EQ(differing, 0U);
}

TEST_F(FileDataBufTest, OffsetsBeyondFourGibibytesAreKeptWhole) {
  constexpr uint64_t kFar = (uint64_t{1} << 32) + 12345;
  const std::string path = Write({0x11});
  {
    std::fstream stream(path, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(static_cast<std::streamoff>(kFar));
    stream.put('\x77');
    stream.close();
    if (!stream) GTEST_SKIP() << "no room for a file with a large hole";
  }
  FileDataBuf file(path);
  EXPECT_EQ(file.file_size(), kFar + 1);
  EXPECT_EQ(file.ReadByte(12345), 0);
  EXPECT_EQ(file.ReadByte(kFar), 0x77);
  EXPECT_EQ(file.ReadByte(kFar - 1), 0);
  EXPECT_EQ(file.ReadByte(0), 0x11);
  EXPECT_THAT(TakeSlice(file.ReadRange(kFar - 1, 2)), ElementsAre(0, 0x77));
}

}  // namespace
