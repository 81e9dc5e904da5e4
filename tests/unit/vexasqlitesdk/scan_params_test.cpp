// The JSON text of a scan's parameters.
#include "vexasqlitesdk/scan_params.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "support/log_capture.h"

namespace {

using testing::IsEmpty;
using testing::MatchesRegex;

using Members = std::map<std::string, std::string>;

const Members kComplete = {
    {"system_type", "1"},        {"data_type", "11"},          {"scan_range_type", "3"},
    {"temp_folder", "\"/tmp\""}, {"source_db_path", "\"/s\""}, {"dest_db_path", "\"/d\""},
};

// The complete text with one member changed, added, or (with the empty text) left out.
std::string With(const std::string& key, const std::string& value) {
  Members members = kComplete;
  members[key] = value;
  std::string text;
  for (const auto& [name, written] : members) {
    if (written.empty()) continue;
    text += (text.empty() ? "{\"" : ",\"") + name + "\":" + written;
  }
  return text + "}";
}

TEST(ScanParamsTest, AllKeysAreStored) {
  ScanParams params;
  EXPECT_EQ(ParseScanParams(With("system_version", "13"), params), 0);
  EXPECT_EQ(params.system_type, 1);
  EXPECT_EQ(params.data_type, 11);
  EXPECT_EQ(params.system_version, 13);
  EXPECT_EQ(params.scan_range_type, 3);
  EXPECT_EQ(params.temp_folder, "/tmp");
  EXPECT_EQ(params.source_db_path, "/s");
  EXPECT_EQ(params.dest_db_path, "/d");
}

TEST(ScanParamsTest, WithoutAVersionEveryKnownLayoutIsTried) {
  for (const char* written : {"", "null", "[]", "{}"}) {
    ScanParams params;
    EXPECT_EQ(ParseScanParams(With("system_version", written), params), 0) << written;
    EXPECT_EQ(params.system_version, 2147483647);
  }
}

TEST(ScanParamsTest, OtherKeysAreIgnored) {
  ScanParams params;
  EXPECT_EQ(ParseScanParams(With("another", "{\"a\": [1, 2]}"), params), 0);
  EXPECT_EQ(params.data_type, 11);
}

TEST(ScanParamsTest, EachRequiredKeyMayBeAbsentInFourWays) {
  const LogCapture log;
  for (const auto& [key, unused] : kComplete) {
    for (const char* written : {"", "null", "[]", "{}"}) {
      SCOPED_TRACE(key + " " + written);
      ScanParams params;
      params.system_type = 77;
      params.temp_folder = "before";
      EXPECT_EQ(ParseScanParams(With(key, written), params), 1000);
      EXPECT_EQ(params.system_type, 77);  // nothing required is stored
      EXPECT_EQ(params.temp_folder, "before");
    }
  }
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST(ScanParamsTest, VersionIsReadOnTheWayToAFailure) {
  ScanParams params;
  EXPECT_EQ(ParseScanParams("{\"system_version\": 9}", params), 1000);
  EXPECT_EQ(params.system_version, 9);
}

TEST(ScanParamsTest, NumbersAreReadWithLeniency) {
  const struct {
    const char* written;
    int32_t number;
  } kCases[] = {{"0", 0},
                {"true", 1},
                {"false", 0},
                {"2.9", 2},
                {"-2.9", -2},
                {"-1", -1},
                {"2147483647", 2147483647},
                {"-2147483648", -2147483647 - 1},
                {"1e3", 1000}};
  for (const auto& row : kCases) {
    for (const char* key : {"system_type", "data_type", "scan_range_type", "system_version"}) {
      SCOPED_TRACE(std::string(key) + " " + row.written);
      ScanParams params;
      EXPECT_EQ(ParseScanParams(With(key, row.written), params), 0);
      const Members::key_type name = key;
      const int32_t stored = name == "system_type"       ? params.system_type
                             : name == "data_type"       ? params.data_type
                             : name == "scan_range_type" ? params.scan_range_type
                                                         : params.system_version;
      EXPECT_EQ(stored, row.number);
    }
  }
}

TEST(ScanParamsTest, TextsAreReadWithLeniency) {
  const struct {
    const char* written;
    const char* text;
  } kCases[] = {{"\"\"", ""},     {"7", "7"},         {"-3", "-3"},
                {"true", "true"}, {"false", "false"}, {"\"\\u5199\"", "写"},
                {"\"写\"", "写"}, {"2.5", "2.5"}};
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.written);
    ScanParams params;
    EXPECT_EQ(ParseScanParams(With("temp_folder", row.written), params), 0);
    EXPECT_EQ(params.temp_folder, row.text);
    EXPECT_EQ(ParseScanParams(With("source_db_path", row.written), params), 0);
    EXPECT_EQ(params.source_db_path, row.text);
    EXPECT_EQ(ParseScanParams(With("dest_db_path", row.written), params), 0);
    EXPECT_EQ(params.dest_db_path, row.text);
  }
}

TEST(ScanParamsTest, ValuesThatCannotBeConvertedCountAsIncomplete) {
  const struct {
    const char* key;
    const char* written;
  } kCases[] = {
      {"system_type", "\"1\""},           {"system_type", "[1]"},
      {"data_type", "{\"a\": 1}"},        {"data_type", "2147483648"},
      {"scan_range_type", "-2147483649"}, {"scan_range_type", "1e10"},
      {"system_version", "\"13\""},       {"system_version", "2147483648"},
      {"temp_folder", "{\"a\": 1}"},      {"source_db_path", "[1]"},
      {"dest_db_path", "[[]]"},
  };
  const LogCapture log;
  for (const auto& row : kCases) {
    SCOPED_TRACE(std::string(row.key) + " " + row.written);
    ScanParams params;
    EXPECT_EQ(ParseScanParams(With(row.key, row.written), params), 1000);
  }
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST(ScanParamsTest, TopLevelThatIsNoObjectCountsAsIncomplete) {
  for (const char* text : {"null", "[]", "[1]", "1", "true", "\"text\"", "{}"}) {
    ScanParams params;
    EXPECT_EQ(ParseScanParams(text, params), 1000) << text;
  }
}

TEST(ScanParamsTest, TextThatIsNoJsonIsLogged) {
  for (const char* text : {"", " ", "{", "{\"a\":}", "text", "{'a': 1}"}) {
    SCOPED_TRACE(text);
    const LogCapture log;
    ScanParams params;
    EXPECT_EQ(ParseScanParams(text, params), 5);
    const std::vector<LogLine> lines = log.Lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, 3);
    EXPECT_THAT(lines[0].message,
                MatchesRegex("ParseJsonString\\([0-9]+\\): Json parse failed\\."));
  }
}

TEST(ScanParamsTest, ParsedTextIsHandedOut) {
  Json::Value root;
  EXPECT_EQ(ParseJsonString("{\"a\": [1, 2]} // remark", root), 0);
  EXPECT_EQ(root["a"].size(), 2U);
}

}  // namespace
