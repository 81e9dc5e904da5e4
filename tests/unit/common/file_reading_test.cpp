#include "common/common/file_reading.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <string>

#include "support/temp_folder.h"

namespace {

class FileReadingTest : public testing::Test {
 protected:
  std::string MakeFile(size_t size) {
    const std::string path = folder_.File("file");
    std::ofstream(path, std::ios::binary) << std::string(size, 'x');
    return path;
  }

  TempFolder folder_;
};

TEST_F(FileReadingTest, AWholeFileCanBeRead) {
  for (const size_t size : {0U, 1U, 4096U, 65537U, 3000000U}) {
    EXPECT_TRUE(CanReadUnseen(MakeFile(size), size)) << size;
  }
}

// A reading has to say what is wrong, and finds the errno of its own failure.
TEST_F(FileReadingTest, AnythingElseIsLeftToAReading) {
  const struct {
    std::string path;
    uint64_t size;
  } cases[] = {{MakeFile(100), 101}, {folder_.File("missing"), 1}, {folder_.path().string(), 1}};
  for (const auto& one : cases) {
    errno = 0;
    EXPECT_FALSE(CanReadUnseen(one.path, one.size)) << one.path;
    EXPECT_EQ(errno, 0) << one.path;
  }
}

}  // namespace
