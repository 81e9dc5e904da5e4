// Presence and removal of files.
#include "common/common/path_helpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "support/log_capture.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class PathHelpersTest : public testing::Test {
 protected:
  std::string MakeFile(const std::string& name) const {
    std::ofstream(folder_.File(name)) << "text";
    return folder_.File(name);
  }

  TempFolder folder_;
  LogCapture log_;
};

TEST_F(PathHelpersTest, FilesAndFoldersExist) {
  EXPECT_TRUE(PathExists(MakeFile("a.db")));
  EXPECT_TRUE(PathExists(MakeFile("写真 \xF0\x9F\x98\x80.db")));
  EXPECT_TRUE(PathExists(folder_.path().string()));
  EXPECT_FALSE(PathExists(folder_.File("missing")));
  EXPECT_FALSE(PathExists(folder_.File("a.db") + "/below"));
  EXPECT_FALSE(PathExists(""));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(PathHelpersTest, RemovalOfAFileIsLoggedWithTheTextOfSuccess) {
  const std::string path = MakeFile("a.db");
  EXPECT_TRUE(RemoveFileIfExists(path));
  EXPECT_FALSE(fs::exists(path));
  EXPECT_THAT(log_.Lines(), ElementsAre(LogLine{3, std::error_code().message()}));
}

TEST_F(PathHelpersTest, RemovalOfAMissingFileIsSilent) {
  EXPECT_TRUE(RemoveFileIfExists(folder_.File("missing")));
  EXPECT_TRUE(RemoveFileIfExists(""));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(PathHelpersTest, FolderIsLeftAloneInSilence) {
  const std::string path = folder_.File("folder");
  fs::create_directory(path);
  EXPECT_TRUE(RemoveFileIfExists(path));
  EXPECT_TRUE(fs::is_directory(path));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(PathHelpersTest, LinkIsRemovedAndNotItsTarget) {
  const std::string target = MakeFile("target");
  fs::create_symlink(target, folder_.File("link"));
  EXPECT_TRUE(RemoveFileIfExists(folder_.File("link")));
  EXPECT_FALSE(fs::is_symlink(folder_.File("link")));
  EXPECT_TRUE(fs::exists(target));
  EXPECT_EQ(log_.Lines().size(), 1U);
}

// No account may remove this one, so the attempt fails as it would on a protected medium.
TEST_F(PathHelpersTest, FailedRemovalIsLoggedAndStillTrue) {
  const std::string path = "/proc/self/status";
  if (!fs::exists(path)) GTEST_SKIP() << "no process file system";
  EXPECT_TRUE(RemoveFileIfExists(path));
  EXPECT_TRUE(fs::exists(path));
  const std::vector<LogLine> lines = log_.Lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, 3);
  EXPECT_NE(lines[0].message, std::error_code().message());
}

}  // namespace
