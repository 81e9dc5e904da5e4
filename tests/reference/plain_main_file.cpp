#include "common/common/log.h"
#include "common/common/source_path.h"
#include "reference/carve_table.h"
#include "scansqlite/carving/main_file_carver.h"
#include "scansqlite/carving/position_test.h"
#include "scansqlite/deleted/page_types.h"

namespace {

// The order in which positions are visited: page after page of the file, or of a small table's
// list.
class MainFileWalk {
 public:
  MainFileWalk(FileDataBuf& file, const DbHeaderInfo& header, PageList& page_list,
               bool use_page_list)
      : file_(file),
        page_size_(header.page_size),
        highest_page_(static_cast<int32_t>(header.page_count - 1)),
        page_list_(page_list),
        use_page_list_(use_page_list),
        position_(use_page_list ? page_size_ : 100) {}

  uint64_t position() const { return position_; }
  bool InFile() const { return position_ < file_.file_size(); }
  bool AtPageBoundary() const { return position_ % page_size_ == 0; }
  void Advance() { ++position_; }

  // Enters the page that begins here; false when it was skipped.
  bool EnterPage() {
    if (!IsSweptPage(file_.ReadByte(position_))) {
      position_ += page_size_;
      return false;
    }
    position_ += kLeafHeaderBytes;
    return true;
  }

  // Goes on to the next page of the list, which is swept from its first byte; false at its end.
  // The physical page that led here is not swept.
  bool EnterListedPage() {
    if (!use_page_list_) return true;
    if (next_page_index_ >= page_list_.size()) return false;
    const int64_t page = page_list_[next_page_index_];
    position_ = static_cast<uint64_t>(page - 1) * page_size_;
    GetScanPage(file_, position_, highest_page_, page_list_);
    ++next_page_index_;
    return true;
  }

 private:
  FileDataBuf& file_;
  uint64_t page_size_;
  int32_t highest_page_;
  PageList& page_list_;
  bool use_page_list_;
  uint64_t position_;
  uint64_t next_page_index_ = 0;
};

}  // namespace

int32_t PlainScan::WalkMainFile(Hits* hits) {
  FileDataBuf file(probe_.context().source_db_path);
  if (file.status() != 0) {
    LogEx(kLogModule, kLogError, "create file data buf fail File : %s, Function : %s, Line : %d, ",
          kSourceScanSqlite, "ScanSqlite::DeletedScanSqliteFile", __LINE__);
    return kScanFileBufferFailed;
  }
  for (const auto& [name, table] : probe_.table_infos()) {
    if (table.scan_type == 1) continue;
    PageList page_list(probe_.header().page_count);
    if (table.is_small_table && !probe_.FillPageList(file, table, page_list)) continue;
    const bool use_page_list = table.is_small_table;
    CarveTable(table, hits,
               [&](const TablePass& pass) { WalkPages(file, pass, page_list, use_page_list); });
  }
  return kScanSucceeded;
}

void PlainScan::WalkPages(FileDataBuf& file, const TablePass& pass, PageList& page_list,
                          bool use_page_list) {
  MainFileWalk walk(file, probe_.header(), page_list, use_page_list);
  MainFileCarver carver(probe_.header(), file);
  plain_walk::PageRows rows(pass);
  SerialTypeCells cells;
  RowValue row;
  RowIdHint hint;
  while (walk.InFile()) {
    if (!plain_walk::MayGoOn()) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::SqliteFileScan");
      return;
    }
    if (walk.AtPageBoundary()) {
      if (!walk.EnterPage()) continue;
      rows.Flush();
      if (!walk.EnterListedPage()) break;
    }
    if (TestPosition(pass.layout, carver, walk.position(), cells, row, hint)) {
      rows.Add(std::move(row), hint, walk.position());
    }
    walk.Advance();
  }
  if (walk.AtPageBoundary()) rows.Flush();
}
