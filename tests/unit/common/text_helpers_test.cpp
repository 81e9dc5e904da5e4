// Splitting and replacing of text, and the two joins and cuts of paths.
#include "common/common/text_helpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/common/path_helpers.h"

namespace {

using Items = std::vector<std::string>;

TEST(SplitTextTest, ItemsComeInOrderAndEmptyOnesAreDropped) {
  const struct {
    std::string text;
    char delimiter;
    Items items;
  } kCases[] = {
      {"", ',', {}},
      {"a", ',', {"a"}},
      {"a,b,c", ',', {"a", "b", "c"}},
      {",a", ',', {"a"}},
      {"a,", ',', {"a"}},
      {"a,,,b", ',', {"a", "b"}},
      {",", ',', {}},
      {",,,", ',', {}},
      {" a , b ", ',', {" a ", " b "}},
      {"a b\tc", ' ', {"a", "b\tc"}},
      {"a b", ',', {"a b"}},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.text);
    Items items;
    SplitText(row.text, row.delimiter, items);
    EXPECT_EQ(items, row.items);
  }
}

TEST(SplitTextTest, ItemsAreAppendedToWhatIsThere) {
  Items items = {"before"};
  SplitText("a,b", ',', items);
  EXPECT_THAT(items, testing::ElementsAre("before", "a", "b"));
}

TEST(ReplaceTextTest, EveryOccurrenceIsReplacedOnce) {
  const struct {
    std::string text;
    std::string old_text;
    std::string new_text;
    std::string result;
  } kCases[] = {
      {"", "a", "b", ""},         {"text", "", "b", "text"},
      {"text", "t", "t", "text"}, {"text", "z", "b", "text"},
      {"text", "t", "T", "TexT"}, {"text", "t", "", "ex"},
      {"aaaa", "aa", "b", "bb"},  {"aaa", "aa", "b", "ba"},
      {"aa", "a", "aa", "aaaa"},  // what was put in is not read again
      {"aab", "ab", "b", "ab"},   // nor does it join what stands before it
      {"text", "text", "", ""},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.text + " " + row.old_text + " " + row.new_text);
    EXPECT_EQ(ReplaceText(row.text, row.old_text, row.new_text), row.result);
  }
}

TEST(JoinPathTest, OneSeparatorStandsBetweenWhateverTheFolderEndsIn) {
  EXPECT_EQ(JoinPath("/folder", "a.db"), "/folder/a.db");
  EXPECT_EQ(JoinPath("/folder/", "a.db"), "/folder//a.db");
  EXPECT_EQ(JoinPath("", "a.db"), "/a.db");
  EXPECT_EQ(JoinPath("/folder", ""), "/folder/");
}

TEST(FileNameOfPathTest, TextBehindTheLastSeparator) {
  const struct {
    std::string path;
    std::string name;
  } kCases[] = {
      {"", ""},
      {"a.db", "a.db"},
      {"/a.db", "a.db"},
      {"/x/y/a.db", "a.db"},
      {"/x/y/", ""},
      {"x/写真.db", "写真.db"},
      {"C:\\x\\a.db", "C:\\x\\a.db"},
      {"/x/y\\a.db", "y\\a.db"},
  };
  for (const auto& row : kCases) EXPECT_EQ(FileNameOfPath(row.path), row.name) << row.path;
}

}  // namespace
