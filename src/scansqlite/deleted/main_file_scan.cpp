#include <optional>

#include "common/common/log.h"
#include "common/common/source_path.h"
#include "common/sqlitecommon/schema_query.h"
#include "scansqlite/deleted/main_file_cursor.h"
#include "scansqlite/deleted/page_types.h"
#include "scansqlite/deleted/pass_runner.h"
#include "scansqlite/scan_sqlite.h"

namespace {

// GetRootPage gives this when the database could not be asked.
constexpr int32_t kNoRootPage = -1;

}  // namespace

int32_t ScanSqlite::DeletedScanSqliteFile() {
  FileDataBuf file(context_->source_db_path);
  if (file.status() != 0) {
    LogEx(kLogModule, kLogError, "create file data buf fail File : %s, Function : %s, Line : %d, ",
          kSourceScanSqlite, "ScanSqlite::DeletedScanSqliteFile", __LINE__);
    return kScanFileBufferFailed;
  }
  MainFileSource source(db_header_, file);
  PassRunner<MainFileSource> runner(source, "ScanSqlite::SqliteFileScan");
  std::vector<TablePasses> tables = MakeTablePasses();
  std::vector<DeletedPass*> sharing;
  for (const TablePasses& table : tables) {
    if (table.table->is_small_table) continue;
    for (const auto& pass : table.passes) sharing.push_back(pass.get());
  }
  size_t next_sharing = 0;
  for (TablePasses& table : tables) {
    std::optional<PageList> page_list;
    if (table.table->is_small_table) {
      page_list.emplace(db_header_.page_count);
      if (!FillPageList(file, *table.table, *page_list)) continue;
    }
    SaveCarvedRows(table, [&](DeletedPass& pass, RowBatch& rows) {
      if (page_list) {
        runner.RunAlone(MainFileCursor(source, &*page_list), pass, rows);
      } else {
        runner.RunShared(MainFileCursor(source), sharing, next_sharing++, rows);
      }
    });
  }
  return kScanSucceeded;
}

// The root page of an interior tree is not on the list itself, only its children.
bool ScanSqlite::FillPageList(FileDataBuf& file, const TableSchemaInfo& table,
                              PageList& page_list) {
  SqliteConnection connection;
  connection.Open(working_db_path_);
  const int32_t root = GetRootPage(connection.handle(), table.table_name);
  if (root == kNoRootPage) return false;
  const auto offset = static_cast<uint64_t>(static_cast<int64_t>(
      static_cast<int32_t>(uint32_t{db_header_.page_size} * (static_cast<uint32_t>(root) - 1U))));
  if (file.ReadByte(offset) == kTableLeafPage) {
    page_list.Add(root);
  } else {
    GetScanPage(file, offset, static_cast<int32_t>(db_header_.page_count - 1), page_list);
  }
  return true;
}
