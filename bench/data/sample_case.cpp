#include "data/sample_case.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>

#include "data/sample_config.h"
#include "data/sample_database.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

// Goes up with every change of the data, so that old files are made anew.
constexpr const char* kDataVersion = "2";

constexpr uint64_t kMegabyte = uint64_t{1} << 20;
constexpr uint64_t kFewBytes = 65536;
constexpr uint64_t kGibMegabytes = 1024;
constexpr int64_t kManyRows = int64_t{1} << 40;
constexpr int64_t kMillion = 1000000;
constexpr size_t kPageSize = 4096;
constexpr size_t kPageCountOffset = 28;

std::string SourceOf(const std::string& folder) { return folder + "/source/sample.db"; }

std::vector<Table> TablesOf(const std::string& name) {
  if (name == "wide") return {WideTable()};
  if (name == "apps") return AppTables();
  return {SmsTable()};
}

std::vector<size_t> OtherWidths(const std::string& name, const std::string& variant) {
  if (name == "wide" || name == "apps") return {};
  if (variant == "1") return {};
  if (variant == "3") return {15, 17};
  if (variant == "10") return {15, 16, 17, 18, 19, 21, 22, 23, 24};
  return {15};
}

// Leaf pages of random bytes behind the last page, as parts of a file that was something else.
void AppendNoise(const std::string& path, uint64_t pages) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(0, std::ios::end);
  const auto before = static_cast<uint64_t>(file.tellp()) / kPageSize;
  Dice dice(7);
  std::string page(kPageSize, '\0');
  for (uint64_t i = 0; i < pages; ++i) {
    for (char& byte : page) byte = static_cast<char>(dice.Word());
    page[0] = 13;
    file.write(page.data(), static_cast<std::streamsize>(page.size()));
  }
  std::string count;
  for (int shift = 24; shift >= 0; shift -= 8) {
    count += static_cast<char>((before + pages) >> static_cast<unsigned>(shift) & 0xFFU);
  }
  file.seekp(kPageCountOffset);
  file.write(count.data(), static_cast<std::streamsize>(count.size()));
}

// Each round writes all pages of the table into the log again.
void WriteGenerations(SampleDatabase& db) {
  db.StartLog();
  for (int round = 0; round < 3; ++round) db.Run("UPDATE sms SET read = 1 - read");
}

void MakeSource(const std::string& path, const std::string& name, uint64_t megabytes) {
  const bool is_million = name == "million";
  uint64_t bytes = megabytes * kMegabyte;
  if (name == "noise") bytes = kFewBytes;
  if (name == "log") bytes = std::max(bytes / 3, kMegabyte);
  if (is_million) bytes = 4 * kGibMegabytes * kMegabyte;
  {
    SampleDatabase db(path);
    db.Fill(TablesOf(name), bytes, is_million ? kMillion : kManyRows);
    if (name == "log") WriteGenerations(db);
  }
  if (name == "noise") AppendNoise(path, megabytes * kMegabyte / kPageSize);
}

void WriteConfigs(const std::string& folder, const std::string& name) {
  for (const std::string& variant : VariantsOf(name)) {
    std::vector<Table> tables = TablesOf(name);
    if (name == "apps") tables.resize(std::stoul(variant));
    const std::string work = folder + "/work-" + variant;
    fs::create_directories(work);
    WriteSampleConfig(work + "/VexaConfiger.db", tables, OtherWidths(name, variant));
  }
}

}  // namespace

ScanContext SampleCase::Context(const std::string& variant, const std::string& scratch) const {
  ScanContext context;
  context.data_type = 1;
  context.system_version = std::numeric_limits<int32_t>::max();
  context.work_folder = folder + "/work-" + variant;
  context.source_db_path = source();
  context.wal_path = log();
  context.dest_db_path = scratch + "/found.db";
  context.temp_folder = scratch + "/temp";
  return context;
}

const std::vector<std::string>& CaseNames() {
  static const std::vector<std::string> names = {"sms",  "wide",    "noise", "log",
                                                 "apps", "million", "gib"};
  return names;
}

std::vector<std::string> VariantsOf(const std::string& name) {
  if (name == "sms") return {"2", "1", "3", "10"};
  if (name == "apps") return {"10", "1", "2", "3"};
  return {"2"};
}

SampleCase MakeCase(const std::string& root, const std::string& name, uint64_t megabytes) {
  if (name == "gib") megabytes = kGibMegabytes;
  const std::string size = name == "million" ? "" : "-" + std::to_string(megabytes);
  const SampleCase sample{root + "/" + name + size};
  const std::string mark = sample.folder + "/version";
  std::string version;
  std::ifstream(mark) >> version;
  if (version == kDataVersion) return sample;
  fs::remove_all(sample.folder);
  fs::create_directories(sample.folder + "/source");
  MakeSource(SourceOf(sample.folder), name, megabytes);
  WriteConfigs(sample.folder, name);
  std::ofstream(mark) << kDataVersion;
  return sample;
}

}  // namespace bench
