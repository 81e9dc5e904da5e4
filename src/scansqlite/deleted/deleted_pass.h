#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scansqlite/carving/carve_layout.h"
#include "scansqlite/carving/record_test.h"
#include "scansqlite/deleted/survivor_list.h"

// One layout of one table on its way over a source.
struct DeletedPass {
  CarveLayout layout;
  // The usual plan, and one for places where a record that will be refused can still show: its
  // chain leaves a file that is shorter than its header says, or a log line is due.
  RecordPlan plan;
  RecordPlan careful_plan;
  std::unique_ptr<RecordTest> test;
  std::unique_ptr<RecordTest> careful_test;
  SurvivorList survivors;
};

// The pass of one candidate. Borrows all it is given.
std::unique_ptr<DeletedPass> MakeDeletedPass(const DbHeaderInfo& header,
                                             const SchemaCandidate& candidate,
                                             const FeatureMaps& features,
                                             const ResultFieldMap& result_fields,
                                             const TableFields& fields, int64_t flexible_cnt);

// What a scan carves out of one table.
struct TablePasses {
  const TableSchemaInfo* table = nullptr;
  const TableFields* fields = nullptr;
  std::string row_id_column;
  bool guess_row_ids = false;
  uint32_t number = 0;  // of the table among all tables of the scan
  std::vector<std::unique_ptr<DeletedPass>> passes;
};

// The field name of the last result field that takes the row id, or the empty text.
std::string RowIdColumnOf(const ResultFieldMap& result_fields);
