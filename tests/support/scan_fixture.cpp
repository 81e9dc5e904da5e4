#include "support/scan_fixture.h"

#include <vexasqlitesdk.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

// A '#' in `expected` takes one or more digits.
bool LineMatches(const std::string& expected, const std::string& actual) {
  size_t at = 0;
  for (const char c : expected) {
    if (c != '#') {
      if (at >= actual.size() || actual[at++] != c) return false;
      continue;
    }
    const size_t begin = at;
    while (at < actual.size() && std::isdigit(static_cast<unsigned char>(actual[at])) != 0) ++at;
    if (at == begin) return false;
  }
  return at == actual.size();
}

std::string LevelName(int level) {
  constexpr std::array kNames = {"debug", "info", "warning", "error"};
  return kNames.at(static_cast<size_t>(level));
}

}  // namespace

ScanFixture::ScanFixture() {
  for (const char* name : {"source", "result", "temp", "work", "logs"}) {
    fs::create_directory(folder_.path() / name);
  }
  InitSqliteSDK(logs().c_str(), work().c_str());
}

ScanFixture::~ScanFixture() { UninitSqliteSDK(); }

std::string ScanFixture::Json(int range) const {
  std::string json = R"({"system_type":)" + std::to_string(request_.system_type) +
                     R"(,"data_type":)" + std::to_string(request_.data_type) +
                     R"(,"scan_range_type":)" + std::to_string(range) + R"(,"temp_folder":")" +
                     temp() + R"(","source_db_path":")" + source() + R"(","dest_db_path":")" +
                     result() + '"';
  if (request_.system_version) {
    json += R"(,"system_version":)" + std::to_string(*request_.system_version);
  }
  return json + '}';
}

int ScanFixture::RunScan(int range) {
  ForgetLog();
  const std::string json = Json(range);
  int context = 0;
  return Scan(json.data(), static_cast<int>(json.size()), &context);
}

std::vector<std::string> ScanFixture::Found(int range, const std::string& column,
                                            const std::string& table) {
  EXPECT_EQ(RunScan(range), 0);
  std::vector<std::string> values;
  for (const std::vector<std::string>& row : ResultRows("SELECT " + column + " FROM " + table)) {
    values.push_back(row.at(0));
  }
  return Sorted(values);
}

TextRows ScanFixture::ResultRows(const std::string& sql) const {
  return SqliteMaker(result()).Rows(sql);
}

std::vector<std::string> ScanFixture::LogLines() const {
  std::vector<std::string> texts;
  const std::vector<LogLine> lines = ReadLogFile(logs() + "/vexa_sqlite_sdk.log");
  for (size_t i = forgotten_; i < lines.size(); ++i) {
    texts.push_back(LevelName(lines[i].level) + " " + lines[i].message);
  }
  return texts;
}

void ScanFixture::ForgetLog() { forgotten_ = ReadLogFile(logs() + "/vexa_sqlite_sdk.log").size(); }

::testing::AssertionResult LinesMatch(const std::vector<std::string>& expected,
                                      const std::vector<std::string>& actual) {
  if (std::equal(expected.begin(), expected.end(), actual.begin(), actual.end(), LineMatches)) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "expected " << ::testing::PrintToString(expected)
                                       << "\nlogged   " << ::testing::PrintToString(actual);
}

std::string MessageTable(const std::string& name) {
  return "CREATE TABLE " + name +
         "(_id INTEGER PRIMARY KEY, address TEXT, body TEXT, date INTEGER)";
}

std::string MessageBody(int id) {
  return "Message number " + std::to_string(id) + ", see you at the station";
}

void AddMessages(SqliteMaker& db, int first, int last, const std::string& table) {
  db.Run("BEGIN");
  for (int id = first; id <= last; ++id) {
    db.Run("INSERT INTO " + table + " VALUES(" + std::to_string(id) + ",'+49151" +
           std::to_string(1000000 + id) + "'," + SqlText(MessageBody(id)) + "," +
           std::to_string(1600000000000 + id) + ")");
  }
  db.Run("COMMIT");
}

std::vector<std::string> MessageBodies(int first, int last) {
  std::vector<std::string> bodies;
  for (int id = first; id <= last; ++id) bodies.push_back(MessageBody(id));
  return Sorted(bodies);
}

void ConfigureMessages(ConfigMaker& config, const ConfigTable& flags, const std::string& table) {
  config.AddTable(table, flags);
  config.AddFeature(table, {"address", 1, 2, 5, 20, "'0'~'9','+'", "", -1});
  config.AddFeature(table, {"body", 1, 2, 1, 100000, "", "", -1});
  config.AddFeature(table, {"date", 1, 0, 1500000000000, 1700000000000, "", "", -1});
  config.AddField(table, {"_id", "INTEGER", 0, 0, 1});
  config.AddField(table, {"address", "TEXT", 2, 0, 0});
  config.AddField(table, {"body", "TEXT", 2, 1, 0});
  config.AddField(table, {"date", "INTEGER", 0, 0, 0});
}

void MakeMessageConfig(const std::string& path, const ConfigTable& flags, int is_scan_database) {
  ConfigMaker config(path);
  ConfigureMessages(config, flags);
  config.ScanDatabase(is_scan_database);
}

std::string ReadBytes(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

uint32_t BigEndianAt(const std::string& bytes, size_t at, int width) {
  uint32_t value = 0;
  for (int i = 0; i < width; ++i) {
    value = value << 8 | static_cast<uint8_t>(bytes.at(at + static_cast<size_t>(i)));
  }
  return value;
}

std::vector<std::string> Sorted(std::vector<std::string> texts) {
  std::sort(texts.begin(), texts.end());
  return texts;
}

std::vector<std::string> operator+(std::vector<std::string> left,
                                   const std::vector<std::string>& right) {
  left.insert(left.end(), right.begin(), right.end());
  return Sorted(left);
}
