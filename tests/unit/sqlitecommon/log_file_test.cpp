#include "common/sqlitecommon/log_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "support/dice.h"
#include "support/log_capture.h"
#include "support/temp_folder.h"

namespace {

using Bytes = std::vector<uint8_t>;

class LogFileTest : public testing::Test {
 protected:
  std::string Write(const Bytes& bytes) {
    const std::string path = folder_.File("log");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path;
  }

  static Bytes Random(size_t size) {
    Dice dice(size);
    Bytes bytes(size);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(dice.Below(256));
    return bytes;
  }

  TempFolder folder_;
  LogCapture log_;
};

TEST_F(LogFileTest, BytesAreThoseOfTheFileWhateverTheJumps) {
  const Bytes bytes = Random(3 * 1024 * 1024 + 77);
  LogFile file;
  ASSERT_TRUE(file.Open(Write(bytes)));
  ASSERT_EQ(file.size(), bytes.size());
  const LogFileBytes frames(file, 32);
  ASSERT_EQ(SourceSize(frames), bytes.size() - 32);
  Dice dice(5);
  uint64_t at = 0;
  for (int step = 0; step < 20000; ++step) {
    ASSERT_EQ(frames.ReadByte(at), bytes[at + 32]) << at;
    at = dice.Chance(80) ? (at + 1) % frames.size() : dice.Below(frames.size());
  }
}

TEST_F(LogFileTest, BehindTheEndIsNothing) {
  const Bytes bytes = Random(1000);
  LogFile file;
  ASSERT_TRUE(file.Open(Write(bytes)));
  const LogFileBytes frames(file, 32);
  EXPECT_EQ(frames.ReadByte(967), bytes[999]);
  for (const uint64_t offset : {uint64_t{968}, uint64_t{1000}, ~uint64_t{0}}) {
    EXPECT_EQ(frames.ReadByte(offset), 0);
  }
  Bytes out(20, 7);
  frames.CopyTo(960, 20, out.data());
  EXPECT_EQ(Bytes(out.begin(), out.begin() + 8), Bytes(bytes.end() - 8, bytes.end()));
  EXPECT_EQ(Bytes(out.begin() + 8, out.end()), Bytes(12, 7));
  frames.CopyTo(968, 20, out.data());
  frames.CopyTo(~uint64_t{0} - 5, 20, out.data());
  EXPECT_EQ(out[0], bytes[992]);
}

TEST_F(LogFileTest, AFileThatShrankReadsAsZero) {
  const Bytes bytes = Random(5000);
  const std::string path = Write(bytes);
  LogFile file;
  ASSERT_TRUE(file.Open(path));
  std::filesystem::resize_file(path, 10);
  Bytes out(20, 7);
  file.ReadTo(0, 20, out.data());
  EXPECT_EQ(Bytes(out.begin(), out.begin() + 10), Bytes(bytes.begin(), bytes.begin() + 10));
  EXPECT_EQ(Bytes(out.begin() + 10, out.end()), Bytes(10));
}

TEST_F(LogFileTest, WhatCannotBeReadIsRefused) {
  LogFile file;
  EXPECT_FALSE(file.Open(Write({})));
  EXPECT_THAT(log_.Lines(), testing::IsEmpty());
  EXPECT_FALSE(file.Open(folder_.File("missing")));
  EXPECT_EQ(log_.Lines().size(), 1U);
}

}  // namespace
