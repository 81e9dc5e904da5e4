#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scansqlite/scan_sqlite.h"

// Opens the inside of a ScanSqlite to the tests and to the plain walk, so that one step runs
// without the others.
class ScanSqliteProbe {
 public:
  explicit ScanSqliteProbe(const ScanContext& context)
      : context_(context), scan_(&context_, nullptr, nullptr) {}

  ScanContext& context() { return context_; }
  DbHeaderInfo& header() { return scan_.db_header_; }
  TableInfos& table_infos() { return scan_.table_infos_; }
  TableFeatures& table_features() { return scan_.table_features_; }
  NeedQueryTables& need_query_tables() { return scan_.need_query_tables_; }
  ResultFieldMaps& result_field_maps() { return scan_.result_field_maps_; }
  WalPageMap& wal_page_map() { return scan_.wal_page_map_; }
  std::string& working_db_path() { return scan_.working_db_path_; }
  std::string& working_wal_path() { return scan_.working_wal_path_; }
  Storager& storager() { return *scan_.storager_; }
  bool is_scan_database() const { return scan_.is_scan_database_; }

  int Init() { return scan_.Init(); }
  void OpenConfig(const std::string& path) { scan_.config_ = SqliteConfig::Create(path); }
  void OpenResult(const std::string& path) { scan_.storager_ = Storager::Create(path); }
  void CloseResult() { scan_.storager_.reset(); }
  void CreateResultTables() { scan_.storager_->CreateResultTables(scan_.need_query_tables_); }

  void BuildTableFeatures() { scan_.BuildTableFeatures(); }
  bool CopyDbToTemp() { return scan_.CopyDbToTemp(); }
  bool GetWALFilePageMap(const std::string& path) { return scan_.GetWALFilePageMap(path); }
  bool InitColumnInfo(const std::vector<ScanTableInfo>& tables, std::vector<TableSchemaInfo>& out) {
    return scan_.InitColumnInfo(tables, out);
  }
  bool FillPageList(FileDataBuf& file, const TableSchemaInfo& table, PageList& page_list) {
    return scan_.FillPageList(file, table, page_list);
  }
  int ScanExist() { return scan_.ScanExist(); }
  LateIndexLimits& late_index_limits() { return scan_.late_index_limits_; }
  SavedKeys& saved_keys() { return scan_.saved_keys_; }
  std::vector<TablePasses> MakeTablePasses() const { return scan_.MakeTablePasses(); }
  template <typename RunPass>
  void SaveCarvedRows(TablePasses& table, const RunPass& run_pass) {
    scan_.SaveCarvedRows(table, run_pass);
  }

  int32_t DeletedScanSqliteFile() { return scan_.DeletedScanSqliteFile(); }
  int32_t DeleteScanSqliteWalFile() { return scan_.DeleteScanSqliteWalFile(); }

  using PageMapMethod = bool (ScanSqlite::*)(std::string);
  static PageMapMethod page_map_method() { return &ScanSqlite::GetWALFilePageMap; }

 private:
  ScanContext context_;
  ScanSqlite scan_;
};
