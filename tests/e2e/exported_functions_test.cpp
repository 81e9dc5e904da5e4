// What the five functions answer and log before a scan begins.
#include <vexasqlitesdk.h>

#include <filesystem>
#include <utility>

#include "support/scan_fixture.h"

namespace {

class ExportedFunctions : public ScanFixture {
 protected:
  int ScanText(const std::string& json) {
    ForgetLog();
    return Scan(json.data(), static_cast<int>(json.size()), this);
  }

  // The parameters with one key's value replaced by JSON text, or removed for an empty text.
  std::string JsonWith(const std::string& key, const std::string& value) const {
    const std::vector<std::pair<std::string, std::string>> pairs = {
        {"system_type", "0"},
        {"data_type", "1"},
        {"temp_folder", '"' + temp() + '"'},
        {"source_db_path", '"' + source() + '"'},
        {"dest_db_path", '"' + result() + '"'},
        {"scan_range_type", "3"},
        {"system_version", "0"}};
    std::string json;
    for (const auto& [name, text] : pairs) {
      const std::string& chosen = name == key ? value : text;
      if (chosen.empty()) continue;
      json += (json.empty() ? "{\"" : ",\"") + name + "\":" + chosen;
    }
    return json + "}";
  }
};

const std::vector<std::string> kIncomplete = {
    "info Enter Scan",
    "error [src/vexasqlitesdk], at line # fail to parse param json or param incomplete, return "
    "1000.",
    "info End Scan"};

const std::vector<std::string> kOutOfRange = {
    "info Enter Scan", "error [src/vexasqlitesdk], at line # scan param content invalid",
    "info End Scan"};

TEST_F(ExportedFunctions, InitRefusesNullArgumentsWithoutALine) {
  ForgetLog();
  EXPECT_EQ(InitSqliteSDK(nullptr, work().c_str()), 1);
  EXPECT_EQ(InitSqliteSDK(logs().c_str(), nullptr), 1);
  EXPECT_EQ(InitSqliteSDK(nullptr, nullptr), 1);
  EXPECT_TRUE(LogLines().empty());
}

TEST_F(ExportedFunctions, InitStatesTheVersion) {
  ForgetLog();
  EXPECT_EQ(InitSqliteSDK(logs().c_str(), work().c_str()), 0);
  EXPECT_TRUE(LinesMatch({"info VexaSqliteSDK version: 2, 1, 0, 33-D-5ebfc21f"}, LogLines()));
}

TEST_F(ExportedFunctions, ALogThatCannotBeOpenedStopsNothing) {
  MakeMessageConfig(config());
  SqliteMaker(source()).Run(MessageTable());
  WriteBytes(folder_.File("file"), "x");
  EXPECT_EQ(InitSqliteSDK(folder_.File("file").c_str(), work().c_str()), 0);
  EXPECT_EQ(RunScan(kAll), 0);
}

TEST_F(ExportedFunctions, StopPauseAndUninitLogTheirPair) {
  ForgetLog();
  Pause();
  Stop();
  EXPECT_EQ(UninitSqliteSDK(), 0);
  EXPECT_TRUE(LinesMatch({"info Enter Pause", "info End Pause", "info Enter Stop", "info End Stop",
                          "info Enter UninitSqliteSDK", "info End UninitSqliteSDK"},
                         LogLines()));
}

TEST_F(ExportedFunctions, NullAndEmptyArgumentsAreInvalid) {
  const std::string json = Json(kNothing);
  const int length = static_cast<int>(json.size());
  const std::vector<std::string> lines = {
      "info Enter Scan", "error [src/vexasqlitesdk] invalid param.", "info End Scan"};
  ForgetLog();
  EXPECT_EQ(Scan(nullptr, length, this), 1000);
  EXPECT_TRUE(LinesMatch(lines, LogLines()));
  for (const int bad_length : {0, -1, -2147483647}) {
    ForgetLog();
    EXPECT_EQ(Scan(json.data(), bad_length, this), 1000) << bad_length;
    EXPECT_TRUE(LinesMatch(lines, LogLines()));
  }
  ForgetLog();
  EXPECT_EQ(Scan(json.data(), length, nullptr), 1000);
  EXPECT_TRUE(LinesMatch(lines, LogLines()));
}

TEST_F(ExportedFunctions, TextThatIsNoJsonGivesFive) {
  const std::string whole = Json(kNothing);
  for (const std::string& json : {std::string("no json"), std::string("{"), whole.substr(0, 40)}) {
    EXPECT_EQ(ScanText(json), 5) << json;
    EXPECT_TRUE(LinesMatch({"info Enter Scan", "error ParseJsonString(#): Json parse failed.",
                            "error [src/vexasqlitesdk], at line # fail to parse param json or "
                            "param incomplete, return 5.",
                            "info End Scan"},
                           LogLines()));
  }
}

TEST_F(ExportedFunctions, ALengthShorterThanTheTextCutsIt) {
  const std::string json = Json(kNothing);
  EXPECT_EQ(Scan(json.data(), static_cast<int>(json.size()) - 1, this), 5);
}

TEST_F(ExportedFunctions, AMissingRequiredKeyGivesIncomplete) {
  for (const char* key : {"system_type", "data_type", "temp_folder", "source_db_path",
                          "dest_db_path", "scan_range_type"}) {
    for (const char* value : {"", "null", "[]", "{}"}) {
      EXPECT_EQ(ScanText(JsonWith(key, value)), 1000) << key << ' ' << value;
      EXPECT_TRUE(LinesMatch(kIncomplete, LogLines())) << key << ' ' << value;
    }
  }
}

TEST_F(ExportedFunctions, AValueOfTheWrongTypeGivesIncomplete) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"system_type", "\"0\""},         {"data_type", "[1]"},
      {"scan_range_type", "{\"a\":1}"}, {"temp_folder", "[\"a\"]"},
      {"source_db_path", "{\"a\":1}"},  {"dest_db_path", "[1]"},
      {"system_version", "\"13\""},     {"system_type", "4294967296"},
      {"scan_range_type", "1e30"}};
  for (const auto& [key, value] : cases) {
    EXPECT_EQ(ScanText(JsonWith(key, value)), 1000) << key << ' ' << value;
    EXPECT_TRUE(LinesMatch(kIncomplete, LogLines())) << key << ' ' << value;
  }
  for (const char* json : {"[]", "[1]", "7", "\"text\"", "null", "true"}) {
    EXPECT_EQ(ScanText(json), 1000) << json;
    EXPECT_TRUE(LinesMatch(kIncomplete, LogLines())) << json;
  }
}

TEST_F(ExportedFunctions, NumbersOutOfRangeAreInvalid) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"system_type", "3"},        {"data_type", "13"}, {"scan_range_type", "4"},
      {"system_type", "-1"},       {"data_type", "-1"}, {"scan_range_type", "-1"},
      {"data_type", "-2147483648"}};
  for (const auto& [key, value] : cases) {
    EXPECT_EQ(ScanText(JsonWith(key, value)), 1000) << key << ' ' << value;
    EXPECT_TRUE(LinesMatch(kOutOfRange, LogLines())) << key << ' ' << value;
  }
}

TEST_F(ExportedFunctions, NumbersAreTakenFromBooleansAndReals) {
  MakeMessageConfig(config());
  SqliteMaker(source()).Run(MessageTable());
  for (const auto& [key, value] :
       std::vector<std::pair<std::string, std::string>>{{"system_type", "true"},
                                                        {"data_type", "2.9"},
                                                        {"scan_range_type", "3.5"},
                                                        {"system_version", "null"},
                                                        {"unknown_key", "[1]"}}) {
    EXPECT_EQ(ScanText(JsonWith(key, value)), 0) << key << ' ' << value;
  }
  // 1.9 is the application 1, which is the one that is configured.
  EXPECT_EQ(ScanText(JsonWith("data_type", "1.9")), 0);
  EXPECT_EQ(ResultRows("SELECT name FROM sqlite_master WHERE type='table'"),
            (TextRows{{"message"}}));
}

TEST_F(ExportedFunctions, ScanOutsideOfInitDoesNotCrash) {
  MakeMessageConfig(config());
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    AddMessages(db, 1, 3);
  }
  EXPECT_EQ(UninitSqliteSDK(), 0);
  EXPECT_EQ(UninitSqliteSDK(), 0);
  Stop();
  Pause();
  ForgetLog();
  EXPECT_EQ(Found(kAll), MessageBodies(1, 3));
  EXPECT_TRUE(LogLines().empty());
}

TEST_F(ExportedFunctions, ASecondInitChangesBothFolders) {
  std::filesystem::create_directory(folder_.path() / "work2");
  std::filesystem::create_directory(folder_.path() / "logs2");
  MakeMessageConfig(folder_.File("work2/VexaConfiger.db"));
  SqliteMaker(source()).Run(MessageTable());
  EXPECT_EQ(InitSqliteSDK(folder_.File("logs2").c_str(), folder_.File("work2").c_str()), 0);
  EXPECT_EQ(RunScan(kNothing), 0);
  EXPECT_TRUE(LogLines().empty());
  EXPECT_EQ(ReadLogFile(folder_.File("logs2/vexa_sqlite_sdk.log")).size(), 3U);
}

}  // namespace
