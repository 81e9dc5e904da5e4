#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common/sqlitecommon/file_data_buf.h"
#include "common/sqlitecommon/sqlite_statement.h"
#include "scansqlite/deleted/deleted_pass.h"
#include "scansqlite/deleted/page_list.h"
#include "scansqlite/init/db_header.h"
#include "scansqlite/init/wal_page_map.h"
#include "scansqlite/scan_context.h"
#include "scansqlite/schema/table_schema.h"
#include "sqliteconfig/sqlite_config.h"
#include "storager/row_sink.h"
#include "storager/saved_keys.h"
#include "storager/storager.h"

class RowBatch;

// Codes of ScanSqlite::Init, which only the log shows: Scan turns each failure into 1003.
inline constexpr int kInitSourceNotReadable = 1001;
inline constexpr int kInitConfigOrHeader = 1002;
inline constexpr int kInitColumns = 1004;
inline constexpr int kInitResultTables = 1006;
inline constexpr int kInitNotADatabase = 1007;
inline constexpr int kInitWorkingCopy = 1008;

// Codes that a scan hands to the host.
inline constexpr int kScanSucceeded = 0;
inline constexpr int kScanWorkingCopyNotOpen = 1004;
inline constexpr int kScanFileBufferFailed = 1012;

// One scan of one database. Constructed, then Init, then at most one scan path, then destroyed,
// which closes the result database and rolls back a transaction that a stop or an exception left
// open. Used by one thread.
class ScanSqlite {
 public:
  // The pointers are borrowed: `context` for the object's life, `scan_control` and
  // `caller_context` are stored and not read.
  ScanSqlite(const ScanContext* context, std::atomic<int32_t>* scan_control, void* caller_context);
  virtual ~ScanSqlite();
  ScanSqlite(const ScanSqlite&) = delete;
  ScanSqlite& operator=(const ScanSqlite&) = delete;

  // Makes everything that the scans need, from the configuration to the empty result tables. 0, or
  // one of the codes above after one or two log lines. Nothing done before a failure is undone.
  int Init();

  // Existing then deleted records; the latter only when the former gave 0.
  int Scan();

  // Copies every row that SQLite can still read into the result.
  int ScanExist();

  // Carves the log, then the main file if the configuration wants that, and returns the result of
  // the last one that ran.
  int ScanDeleted();

  // The name of GetWALFilePageMap as the linker knows it, which a log line states.
  static const char* const kMangledGetWalFilePageMap;

 private:
  friend class ScanSqliteProbe;  // the tests look at what Init built

  static std::string BuildConfigPath(const std::string& work_folder);
  int OpenStores();
  int ReadSourceHeader();
  int PrepareWorkingCopies();
  int LoadTables();
  void FileTables(const std::vector<TableSchemaInfo>& table_records,
                  ColumnsByTable& columns_by_table);
  void FitToSource();
  int PrepareResult(const ColumnsByTable& columns_by_table);
  bool CopyDbToTemp();
  bool GetWALFilePageMap(std::string path);
  bool MergeConfiguredSchemas(const std::string& table_name, TableSchemaInfo& table);
  bool InitColumnInfo(const std::vector<ScanTableInfo>& tables, std::vector<TableSchemaInfo>& out);
  void BuildTableFeatures();

  int QueryAndSave(NeedQueryTables& tables);
  int GetNeedQueryTableInfo(SqliteStatement& query, const std::string& table_name,
                            NeedQueryTables& tables);
  // Copies all rows of a table inside a transaction, which may be rolled back and begun again if it
  // holds nothing else. False when a stop ended it.
  bool CopyRows(SqliteStatement& query, const TableSchemaInfo& table, TableFields& fields,
                RowSink& sink, bool may_roll_back);

  int32_t DeletedScanSqliteFile();
  int32_t DeleteScanSqliteWalFile();
  bool FillPageList(FileDataBuf& file, const TableSchemaInfo& table, PageList& page_list);
  std::vector<TablePasses> MakeTablePasses() const;
  // The keys of saved rows, or null for a table without its unique index, which keeps nothing out.
  SavedKeys* KeysOf(const std::string& table_name);
  // The table's place among all tables, from 1.
  uint32_t TableNumber(const std::string& table_name) const;
  // Carves one table inside one transaction, calling `run_pass` for each of its layouts.
  using RunPass = std::function<void(DeletedPass&, RowBatch&)>;
  void SaveCarvedRows(TablePasses& table, const RunPass& run_pass);

  bool is_scan_database_ = false;
  std::string config_path_;
  std::string dest_path_;
  std::string working_db_path_;
  std::string working_wal_path_;
  const ScanContext* context_;
  std::atomic<int32_t>* scan_control_;
  void* caller_context_;
  std::unique_ptr<SqliteConfig> config_;
  std::unique_ptr<Storager> storager_;
  DbHeaderInfo db_header_;
  TableInfos table_infos_;
  TableFeatures table_features_;
  NeedQueryTables need_query_tables_;
  ResultFieldMaps result_field_maps_;
  WalPageMap wal_page_map_;
  SavedKeys saved_keys_;
  LateIndexLimits late_index_limits_;
};
