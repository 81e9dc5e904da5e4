#pragma once

#include <cstdint>
#include <vector>

#include "reference/plain_connection.h"
#include "reference/plain_rows.h"
#include "scansqlite/deleted/page_list.h"
#include "support/scan_sqlite_probe.h"

// The plain walk: the scan as one would write it first. Every byte position is tested after the
// other, once for each layout of each table, every row is made of maps, and every row goes through
// its own insert. It is slow, easy to read, and says what the fast walk of the library has to find:
// tests hold both equal, and benchmarks measure one against the other.
class PlainScan {
 public:
  explicit PlainScan(const ScanContext& context) : probe_(context) {}

  // The operations of ScanSqlite, with the same codes, log lines and rows.
  int Init();
  int Scan();
  int ScanExist();
  int ScanDeleted();

  // After Init: where the records stand that a deleted scan of the log or the main file saves, in
  // the order table, layout, position. Saves nothing.
  std::vector<plain_walk::Hit> LogHits();
  std::vector<plain_walk::Hit> MainFileHits();

  ScanSqliteProbe& probe() { return probe_; }

  // The connection through which the rows go, opened when it is first asked for, after Init.
  plain_walk::PlainConnection& result();

 private:
  using TablePass = plain_walk::TablePass;
  using Hits = std::vector<plain_walk::Hit>;

  int QueryAndSave(NeedQueryTables& tables);
  int SaveTable(SqliteStatement& query, const std::string& table_name, TableFields& fields);

  // Without `hits` the rows are saved, else the hits are taken.
  int32_t WalkLog(Hits* hits);
  int32_t WalkMainFile(Hits* hits);
  template <typename ScanCandidate>
  void CarveTable(const TableSchemaInfo& table, Hits* hits, ScanCandidate&& scan_candidate);
  void WalkPages(FileDataBuf& file, const TablePass& pass, PageList& page_list, bool use_page_list);
  void WalkFrames(const std::vector<uint8_t>& frames, FileDataBuf& file, const TablePass& pass);

  ScanSqliteProbe probe_;
  plain_walk::PlainConnection result_;
};
