#include <utility>

#include "common/common/file_loader.h"
#include "common/common/log.h"
#include "common/common/path_helpers.h"
#include "common/common/source_path.h"
#include "scansqlite/scan_sqlite.h"

namespace {

// Line numbers that stand in the texts of these messages; they do not follow the code.
constexpr int kLineLoadDb = 165;
constexpr int kLineCheckDb = 170;
constexpr int kLineHeaderInfo = 176;
constexpr int kLineCopyDb = 182;
constexpr int kLineWalPageInfo = 188;

}  // namespace

std::string ScanSqlite::BuildConfigPath(const std::string& work_folder) {
  return JoinPath(work_folder, "VexaConfiger.db");
}

int ScanSqlite::Init() {
  if (context_ == nullptr) {
    LogEx(kLogModule, kLogError, "ScanSqlite init failed.");
    return kScanSucceeded;
  }
  RemoveFileIfExists(context_->dest_db_path);
  dest_path_ = context_->dest_db_path;
  config_path_ = BuildConfigPath(context_->work_folder);
  int code = OpenStores();
  if (code == kScanSucceeded) code = ReadSourceHeader();
  if (code == kScanSucceeded) code = PrepareWorkingCopies();
  if (code == kScanSucceeded) code = LoadTables();
  if (code == kScanSucceeded) FitToSource();
  return code;
}

// The sizes only decide what is held in memory.
void ScanSqlite::FitToSource() {
  constexpr uint64_t kUsualRowBytes = 256;
  uint64_t bytes = 0;
  uint64_t log_bytes = 0;
  MeasureFile(working_db_path_, bytes);
  if (!working_wal_path_.empty()) MeasureFile(working_wal_path_, log_bytes);
  bytes += log_bytes;
  storager_->FitCache(bytes);
  saved_keys_.Expect(static_cast<size_t>(bytes / kUsualRowBytes));
}

int ScanSqlite::OpenStores() {
  config_ = SqliteConfig::Create(config_path_);
  storager_ = Storager::Create(dest_path_);
  if (config_ == nullptr || storager_ == nullptr) {
    LogEx(kLogModule, kLogError,
          "[%s], at %d line, Fail to create sqlite config object, config file %s",
          kSourceScanSqlite, __LINE__, config_path_.c_str());
    return kInitConfigOrHeader;
  }
  return kScanSucceeded;
}

int ScanSqlite::ReadSourceHeader() {
  const char* source = context_->source_db_path.c_str();
  std::vector<uint8_t> header;
  if (!ReadDbHeaderBytes(context_->source_db_path, header)) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to load sqlite db, db file %s",
          kSourceScanSqlite, kLineLoadDb, source);
    return kInitSourceNotReadable;
  }
  if (!CheckDbHeader(header)) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to check sqlite db, db file %s",
          kSourceScanSqlite, kLineCheckDb, source);
    return kInitNotADatabase;
  }
  if (!GetDbHeaderInfo(context_->source_db_path, header, db_header_)) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to get sqlite db headr info, db file %s",
          kSourceScanSqlite, kLineHeaderInfo, source);
    return kInitConfigOrHeader;
  }
  return kScanSucceeded;
}

int ScanSqlite::PrepareWorkingCopies() {
  if (!CopyDbToTemp()) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to copy sqlite db, src db file %s",
          kSourceScanSqlite, kLineCopyDb, context_->source_db_path.c_str());
    return kInitWorkingCopy;
  }
  // A log that cannot be mapped costs the chains that run through it, not the scan.
  if (!GetWALFilePageMap(working_wal_path_)) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to wal page info, db file %s",
          kSourceScanSqlite, kLineWalPageInfo, working_wal_path_.c_str());
  }
  return kScanSucceeded;
}

int ScanSqlite::LoadTables() {
  const char* source = context_->source_db_path.c_str();
  std::vector<ScanTableInfo> tables;
  if (!config_->GetNeedScanTables(context_->system_type, context_->data_type, tables)) {
    LogEx(kLogModule, kLogError,
          "[%s], at %d line, Fail to init need scan table, table tyep %d, src db file %s",
          kSourceScanSqlite, __LINE__, context_->system_type, source);
    return kInitConfigOrHeader;
  }
  std::vector<TableSchemaInfo> table_records;
  if (!InitColumnInfo(tables, table_records)) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to init column info, src db file %s",
          kSourceScanSqlite, __LINE__, source);
    return kInitColumns;
  }
  ColumnsByTable columns_by_table;
  FileTables(table_records, columns_by_table);
  return PrepareResult(columns_by_table);
}

void ScanSqlite::FileTables(const std::vector<TableSchemaInfo>& table_records,
                            ColumnsByTable& columns_by_table) {
  for (const TableSchemaInfo& table : table_records) {
    std::unordered_map<std::string, SqlColumnInfo> columns;
    for (const SchemaCandidate& candidate : table.candidates) {
      if (!candidate.from_live_db) continue;
      for (const SqlColumnInfo& column : candidate.columns) {
        columns.insert_or_assign(column.name, column);
      }
      break;
    }
    columns_by_table.insert_or_assign(table.table_name, std::move(columns));
    table_infos_[table.table_name] = table;
  }
}

int ScanSqlite::PrepareResult(const ColumnsByTable& columns_by_table) {
  const int32_t system_type = context_->system_type;
  const char* source = context_->source_db_path.c_str();
  if (!config_->GetNeedQueryTables(system_type, context_->data_type, columns_by_table,
                                   need_query_tables_, result_field_maps_)) {
    LogEx(kLogModule, kLogError,
          "[%s], at %d line, Fail to get need query table, table type %d, src db file %s",
          kSourceScanSqlite, __LINE__, system_type, source);
    return kInitConfigOrHeader;
  }
  if (!config_->GetScanType(system_type, context_->data_type, is_scan_database_)) {
    LogEx(kLogModule, kLogError,
          "[%s], at %d line, Fail to get need scan type, table type %d, src db file %s",
          kSourceScanSqlite, __LINE__, system_type, source);
    return kInitConfigOrHeader;
  }
  if (!storager_->CreateResultTables(need_query_tables_)) {
    LogEx(kLogModule, kLogError,
          "[%s], at %d line, Fail to get create result table, table type %d, src db file %s",
          kSourceScanSqlite, __LINE__, system_type, source);
    return kInitResultTables;
  }
  BuildTableFeatures();
  return kScanSucceeded;
}
