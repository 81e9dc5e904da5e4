#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/config_maker.h"
#include "support/log_capture.h"
#include "support/sqlite_maker.h"
#include "support/temp_folder.h"

// What a scan is asked to do, beside the paths.
struct ScanRequest {
  int system_type = 0;
  int data_type = 1;
  std::optional<int> system_version;
};

// Ranges of a scan.
inline constexpr int kAll = 0;
inline constexpr int kLive = 1;
inline constexpr int kDeleted = 2;
inline constexpr int kNothing = 3;

// The folders of a whole scan, with the library made ready and an application to scan: the table
// "message" of `MessageColumns`, whose rows are written by AddMessages and told apart by `body`.
class ScanFixture : public ::testing::Test {
 protected:
  ScanFixture();
  ~ScanFixture() override;

  std::string source() const { return folder_.File("source/sms.db"); }
  std::string source_log() const { return source() + "-wal"; }
  std::string result() const { return folder_.File("result/found.db"); }
  std::string temp() const { return folder_.File("temp"); }
  std::string work() const { return folder_.File("work"); }
  std::string config() const { return folder_.File("work/VexaConfiger.db"); }
  std::string logs() const { return folder_.File("logs"); }
  std::string working_db() const { return temp() + "/sms.db"; }
  std::string kept_log() const { return temp() + "/sms.dbtemp-wal"; }

  // The parameters of a scan with the fixture's paths.
  std::string Json(int range) const;

  // Runs one scan; the log is forgotten first.
  int RunScan(int range);

  // A scan that must succeed, and the values of one column of its result, sorted.
  std::vector<std::string> Found(int range, const std::string& column = "body",
                                 const std::string& table = "message");

  TextRows ResultRows(const std::string& sql) const;

  // "info Enter Scan" and so on, since the last scan began or ForgetLog was called.
  std::vector<std::string> LogLines() const;
  void ForgetLog();

  TempFolder folder_;
  ScanRequest request_;
  size_t forgotten_ = 0;
};

// Whether the log's lines are those expected, where a '#' stands for any number: the lines of
// calls move with the code.
::testing::AssertionResult LinesMatch(const std::vector<std::string>& expected,
                                      const std::vector<std::string>& actual);

// CREATE text of the table that AddMessages fills.
std::string MessageTable(const std::string& name = "message");

// Rows first to last, one transaction. Their body is MessageBody of their id.
void AddMessages(SqliteMaker& db, int first, int last, const std::string& table = "message");
std::string MessageBody(int id);
std::vector<std::string> MessageBodies(int first, int last);

// Configures a table of messages with tight checks, unique by its body.
void ConfigureMessages(ConfigMaker& config, const ConfigTable& flags = {},
                       const std::string& table = "message");

// The same configuration written to `path`, with the main file scanned if wanted.
void MakeMessageConfig(const std::string& path, const ConfigTable& flags = {},
                       int is_scan_database = 1);

// Whole files.
std::string ReadBytes(const std::string& path);
void WriteBytes(const std::string& path, const std::string& bytes);
uint32_t BigEndianAt(const std::string& bytes, size_t at, int width);

// Both lists in order, without duplicates.
std::vector<std::string> Sorted(std::vector<std::string> texts);
std::vector<std::string> operator+(std::vector<std::string> left,
                                   const std::vector<std::string>& right);
