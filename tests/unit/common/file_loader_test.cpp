// Loading of a whole file and of a database header.
#include "common/common/file_loader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/log_capture.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<uint8_t>;

// A file that tells a size and gives fewer bytes, as a failing medium does.
std::string FileThatReadsShort() {
  for (const char* path : {"/sys/kernel/mm/transparent_hugepage/enabled",
                           "/sys/devices/system/cpu/online", "/sys/class/net/lo/mtu"}) {
    std::error_code error;
    if (fs::file_size(path, error) < 1000 || error) continue;
    std::ifstream file(path);
    std::string text;
    std::getline(file, text);
    if (!text.empty() && text.size() < 90) return path;
  }
  return {};
}

class FileLoaderTest : public testing::Test {
 protected:
  std::string MakeFile(size_t size) {
    content_.clear();
    for (size_t i = 0; i < size; ++i) content_.push_back(static_cast<uint8_t>(i * 7 + 1));
    const std::string path = folder_.File("file " + std::to_string(size));
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(content_.data()), static_cast<std::streamsize>(size));
    return path;
  }

  Bytes content_;
  TempFolder folder_;
  LogCapture log_;
};

TEST_F(FileLoaderTest, WholeFileIsReadAndMeasured) {
  for (const size_t size : {1U, 99U, 100U, 101U, 4096U, 262144U, 262145U, 700000U}) {
    SCOPED_TRACE(size);
    const std::string path = MakeFile(size);
    uint64_t read = 0;
    EXPECT_TRUE(ReadThrough(path, read));
    EXPECT_EQ(read, size);
  }
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(FileLoaderTest, EmptyFileIsFalseInSilence) {
  uint64_t size = 1;
  EXPECT_FALSE(ReadThrough(MakeFile(0), size));
  EXPECT_EQ(size, 0U);
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(FileLoaderTest, MissingFileIsLoggedByItsReasonAlone) {
  uint64_t size = 0;
  EXPECT_FALSE(ReadThrough(folder_.File("missing"), size));
  EXPECT_THAT(log_.Lines(), ElementsAre(LogLine{3, "Fail to load file No such file or directory"}));
}

TEST_F(FileLoaderTest, FolderCannotBeLoaded) {
  uint64_t size = 0;
  EXPECT_FALSE(ReadThrough(folder_.path().string(), size));
  EXPECT_THAT(log_.Lines(), ElementsAre(LogLine{3, "Fail to load file Is a directory"}));
}

TEST_F(FileLoaderTest, FailedReadOfTheWholeFileNamesItsPlaceAndThePath) {
  const std::string path = FileThatReadsShort();
  if (path.empty()) GTEST_SKIP() << "no file that reads short";
  uint64_t size = 0;
  EXPECT_FALSE(ReadThrough(path, size));
  EXPECT_THAT(log_.Lines(),
              ElementsAre(LogLine{
                  3, "[src/common/common], at 43 line, Fail to read file Success, " + path}));
}

TEST_F(FileLoaderTest, HeaderIsTheFirstHundredBytes) {
  for (const size_t size : {100U, 101U, 5000U}) {
    SCOPED_TRACE(size);
    const std::string path = MakeFile(size);
    Bytes out;
    EXPECT_TRUE(ReadDbHeaderBytes(path, out));
    EXPECT_EQ(out, Bytes(content_.begin(), content_.begin() + 100));
  }
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(FileLoaderTest, FileTooShortForAHeaderIsFalseInSilence) {
  for (const size_t size : {0U, 1U, 99U}) {
    SCOPED_TRACE(size);
    Bytes out;
    EXPECT_FALSE(ReadDbHeaderBytes(MakeFile(size), out));
    EXPECT_THAT(out, IsEmpty());
  }
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(FileLoaderTest, HeaderOfAMissingFileNamesItsPlaceAndThePath) {
  const std::string path = folder_.File("missing");
  Bytes out;
  EXPECT_FALSE(ReadDbHeaderBytes(path, out));
  EXPECT_THAT(
      log_.Lines(),
      ElementsAre(LogLine{3,
                          "[src/common/common], at 86 line, Fail to load file No such file or "
                          "directory, " +
                              path}));
}

TEST_F(FileLoaderTest, FailedReadOfTheHeaderNamesItsPlaceAndThePath) {
  const std::string path = FileThatReadsShort();
  if (path.empty()) GTEST_SKIP() << "no file that reads short";
  Bytes out;
  EXPECT_FALSE(ReadDbHeaderBytes(path, out));
  EXPECT_THAT(log_.Lines(),
              ElementsAre(LogLine{
                  3, "[src/common/common], at 102 line, Fail to read file Success, " + path}));
}

TEST_F(FileLoaderTest, SizeOfAFileIsMeasured) {
  uint64_t size = 7;
  EXPECT_TRUE(MeasureFile(MakeFile(4097), size));
  EXPECT_EQ(size, 4097U);
  EXPECT_TRUE(MeasureFile(MakeFile(0), size));
  EXPECT_EQ(size, 0U);
  EXPECT_FALSE(MeasureFile(folder_.File("missing"), size));
  EXPECT_FALSE(MeasureFile(folder_.path().string(), size));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(FileLoaderTest, NamesInOtherScriptsAreOpened) {
  const std::string path = folder_.File("写真 \xF0\x9F\x98\x80.db");
  fs::rename(MakeFile(120), path);
  uint64_t size = 0;
  EXPECT_TRUE(ReadThrough(path, size));
  Bytes out;
  EXPECT_TRUE(ReadDbHeaderBytes(path, out));
  EXPECT_EQ(out.size(), 100U);
}

}  // namespace
