// Follows docs/config_guide.md: writes its files, runs its commands and compares what they print.
//
// A block of the guide that names a path behind its language is a file, a block of "sh" is run, and
// a block of "text" is what the commands before it print; "..." there stands for anything. Commands
// without such a block have to succeed.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "vexaconfigc_fixture.h"

namespace {

namespace fs = std::filesystem;

struct Block {
  std::string language;
  std::string path;  // of a file
  std::string body;
  int line = 0;
};

std::vector<Block> BlocksOf(const std::string& markdown) {
  std::vector<Block> blocks;
  std::istringstream stream(markdown);
  bool inside = false;
  int number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    if (line.rfind("```", 0) == 0) {
      inside = !inside;
      if (!inside) continue;
      Block block;
      std::istringstream words(line.substr(3));
      words >> block.language >> block.path;
      block.line = number;
      blocks.push_back(block);
    } else if (inside) {
      blocks.back().body += line + "\n";
    }
  }
  return blocks;
}

// True when the text is the pattern with something in the place of each "...".
bool Matches(const std::string& text, const std::string& pattern) {
  const std::string kAnything = "...";
  size_t gap = pattern.find(kAnything);
  if (gap == std::string::npos) return text == pattern;
  if (text.compare(0, gap, pattern, 0, gap) != 0) return false;
  size_t at = gap;
  for (size_t begin = gap + kAnything.size();; begin = gap + kAnything.size()) {
    gap = pattern.find(kAnything, begin);
    const std::string piece = pattern.substr(begin, gap == std::string::npos ? gap : gap - begin);
    if (gap == std::string::npos) {
      return text.size() >= at + piece.size() &&
             text.compare(text.size() - piece.size(), piece.size(), piece) == 0;
    }
    const size_t found = text.find(piece, at);
    if (found == std::string::npos) return false;
    at = found + piece.size();
  }
}

ToolRun RunShell(const std::string& folder, const std::string& commands) {
  const std::string script = folder + "/.step.sh";
  {
    std::ofstream file(script, std::ios::binary);
    file << "cd '" << folder << "' || exit 99\n" << commands;
  }
  ToolRun run;
  FILE* pipe = popen(("bash -e -o pipefail '" + script + "' 2>&1").c_str(), "r");
  if (pipe == nullptr) return run;
  std::array<char, 4096> buffer{};
  for (size_t got = 0; (got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    run.output.append(buffer.data(), got);
  }
  const int status = pclose(pipe);
  if (WIFEXITED(status)) run.exit_code = WEXITSTATUS(status);
  return run;
}

TEST(ConfigGuide, HappensAsItIsWritten) {
  const ConfigFolder folder;
  fs::create_directory(folder.Path("build"));
  fs::create_directory_symlink(VEXA_BUILD_DIR, folder.Path("build/release"));
  fs::create_directory_symlink(VEXA_SOURCE_DIR "/config", folder.Path("config"));
  ASSERT_EQ(
      RunShell(folder.Path("."), "command -v sqlite3 && test -x build/release/recovery").exit_code,
      0)
      << "the guide needs the program sqlite3 (package sqlite3), and recovery to be built";

  const std::vector<Block> blocks = BlocksOf(FileBytes(VEXA_SOURCE_DIR "/docs/config_guide.md"));
  int commands = 0;
  int compared = 0;
  for (size_t i = 0; i < blocks.size(); ++i) {
    const Block& block = blocks[i];
    SCOPED_TRACE("docs/config_guide.md:" + std::to_string(block.line));
    if (!block.path.empty()) {
      folder.Write(block.path, block.body);
    } else if (block.language == "sh") {
      ++commands;
      const ToolRun run = RunShell(folder.Path("."), block.body);
      const bool is_compared = i + 1 < blocks.size() && blocks[i + 1].language == "text";
      if (is_compared) {
        ++compared;
        ASSERT_TRUE(Matches(run.output, blocks[i + 1].body)) << "printed:\n"
                                                             << run.output << "\ninstead of:\n"
                                                             << blocks[i + 1].body;
      } else {
        ASSERT_EQ(run.exit_code, 0) << run.output;
      }
    }
  }
  EXPECT_GE(commands, 8);
  EXPECT_GE(compared, 7);
}

TEST(ConfigGuide, ComparesOutputsWithGaps) {
  EXPECT_TRUE(Matches("abc", "abc"));
  EXPECT_TRUE(Matches("abc", "a...c"));
  EXPECT_TRUE(Matches("abcdc", "a...b...c"));
  EXPECT_TRUE(Matches("ab", "ab..."));
  EXPECT_FALSE(Matches("abc", "ab"));
  EXPECT_FALSE(Matches("abc", "a...b"));
  EXPECT_FALSE(Matches("abc", "b...c"));
  EXPECT_FALSE(Matches("abc", "a...x...c"));
  EXPECT_FALSE(Matches("ab", "ab...b"));
}

}  // namespace
