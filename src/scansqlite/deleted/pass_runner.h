#pragma once

// HOT CODE. One pass of one layout over a source, page by page: sieve, test, save. While a pass
// sweeps, the sieve also looks for the layouts whose turn comes later, since one more layout costs
// a sweep much less than a sweep of its own. What it finds for them is kept as positions, and their
// passes then only visit those. The order in which rows are saved stays table, layout, position.

#include <algorithm>
#include <vector>

#include "common/common/log.h"
#include "common/common/source_path.h"
#include "scansqlite/carving/position_test.h"
#include "scansqlite/deleted/deleted_pass.h"
#include "scansqlite/deleted/row_batch.h"
#include "scansqlite/deleted/scan_gate.h"
#include "scansqlite/deleted/sweep_plan.h"
#include "scansqlite/sieve/header_sieve.h"

// `Source` is MainFileSource or LogSource.
template <typename Source>
class PassRunner {
 public:
  // `stop_name` is the function that a line about a stop names. `level` is the sieve's.
  PassRunner(Source& source, const char* stop_name, SieveLevel level = BestSieveLevel())
      : source_(source), stop_name_(stop_name), level_(level) {}

  // Runs `pass` over the pages that `cursor` visits.
  template <typename Cursor>
  void RunAlone(Cursor cursor, DeletedPass& pass, RowBatch& rows) {
    Sweep(cursor, {&pass}, rows);
  }

  // Runs passes[index] over every page. The passes behind it that have no list of survivors yet get
  // one on the way.
  template <typename Cursor>
  void RunShared(Cursor cursor, const std::vector<DeletedPass*>& passes, size_t index,
                 RowBatch& rows) {
    DeletedPass& pass = *passes[index];
    if (!source_.HasUsualPages()) return RunAlone(cursor, pass, rows);
    if (pass.survivors.state() == SurvivorList::State::kWhole) {
      Revisit(pass, rows);
      pass.survivors.Release(budget_);
      return;
    }
    std::vector<DeletedPass*> swept = {&pass};
    for (size_t i = index + 1; i < passes.size(); ++i) {
      const SurvivorList::State state = passes[i]->survivors.state();
      if (state == SurvivorList::State::kNone) swept.push_back(passes[i]);
    }
    Sweep(cursor, swept, rows);
  }

 private:
  template <typename Cursor>
  void Sweep(Cursor& cursor, const std::vector<DeletedPass*>& passes, RowBatch& rows) {
    MakePlans(passes);
    rows.SavePages([&] { return SweepPage(cursor, rows); });
    // A list that a stop cut short is not whole.
    if (cursor.InSource()) return;
    for (DeletedPass* pass : passes_) pass->survivors.Finish();
  }

  // Sweeps the next page; false when there is none or the scan is to stop.
  template <typename Cursor>
  bool SweepPage(Cursor& cursor, RowBatch& rows) {
    Segment segment;
    do {
      if (!cursor.InSource() || !SeesNoStop()) return false;
    } while (!cursor.Enter(segment));
    SweepSegment(segment, rows);
    Finish(segment, rows);
    return true;
  }

  // A pass for which one of the plans has no room gets no list and sweeps the source by itself
  // later.
  void MakePlans(const std::vector<DeletedPass*>& passes) {
    passes_ = passes;
    plan_ = {};
    careful_plan_ = {};
    for (size_t member = 0; member < passes.size(); ++member) {
      DeletedPass& pass = *passes[member];
      const bool has_room =
          plan_.Add(pass.plan, member) && careful_plan_.Add(pass.careful_plan, member);
      if (has_room && member != 0) pass.survivors.Begin();
    }
  }

  void SweepSegment(const Segment& segment, RowBatch& rows) {
    if (segment.begin >= segment.end) return;
    const SegmentCare care = source_.CareFor(segment);
    if (care == SegmentCare::kGeneral) return TestEveryPosition(segment, *passes_.front(), rows);
    const bool is_careful = care == SegmentCare::kCareful;
    SweepPlan& plan = is_careful ? careful_plan_ : plan_;
    if (plan.groups.empty()) return;
    const ByteView view = source_.View(segment.begin, segment.end);
    Sieve(plan.sieves, level_, view.At(segment.begin), segment.end - segment.begin, survivors_);
    KeepEndOfSource(segment);
    for (SweptGroup& group : plan.groups) {
      survivors_.ForEach(group.sieve, [&](size_t place) {
        TestSurvivor(view, segment.begin + place, group, is_careful, rows);
      });
    }
  }

  // Reads the header for all layouts of the group. The first pass of the sweep takes its record,
  // the others keep the position.
  void TestSurvivor(const ByteView& view, uint64_t position, SweptGroup& group, bool is_careful,
                    RowBatch& rows) {
    const bool is_readable = group.header->Read(view, position);
    for (const size_t member : group.members) {
      DeletedPass& pass = *passes_[member];
      const bool is_own = member == 0;
      if (!is_own && pass.survivors.state() != SurvivorList::State::kFilling) continue;
      RecordTest& test = is_careful ? *pass.careful_test : *pass.test;
      const Verdict verdict =
          is_readable ? test.TestBehind(*group.header, view, position) : Verdict::kOpen;
      if (verdict == Verdict::kMiss) continue;
      if (is_own) {
        TakeRecord(view, position, verdict, test, pass, rows);
      } else {
        pass.survivors.Add(position, budget_);
      }
    }
  }

  // The last varint of a header may be cut by the end of the source, where the sieve sees a longer
  // one: positions whose header can get there survive.
  void KeepEndOfSource(const Segment& segment) {
    if (segment.end + kLongestJoin <= source_.size()) return;
    const uint64_t reach = std::min(source_.size(), kLongestJoin);
    const uint64_t from = std::max(segment.begin, source_.size() - reach);
    for (uint64_t position = from; position < segment.end; ++position) {
      const uint64_t place = position - segment.begin;
      for (size_t sieve = 0; sieve < survivors_.sieves(); ++sieve) {
        survivors_.Add(sieve, place);
      }
    }
  }

  // Visits the positions that an earlier sweep left for the pass. Pages without any are passed by,
  // but each is a place where a stop is seen.
  void Revisit(DeletedPass& pass, RowBatch& rows) {
    SurvivorList::Reader reader(pass.survivors);
    uint64_t page = 0;
    rows.SavePages([&] {
      if (page >= source_.size() || !SeesNoStop()) return false;
      RevisitPage(page, reader, pass, rows);
      page += source_.page_bytes();
      return true;
    });
  }

  void RevisitPage(uint64_t page, SurvivorList::Reader& reader, DeletedPass& pass, RowBatch& rows) {
    const Segment segment = source_.SweptPart(page);
    const SegmentCare care = source_.CareFor(segment);
    if (care == SegmentCare::kGeneral) TestEveryPosition(segment, pass, rows);
    RecordTest& test = care == SegmentCare::kCareful ? *pass.careful_test : *pass.test;
    while (!reader.AtEnd() && reader.position() < page + source_.page_bytes()) {
      const ByteView view = source_.View(segment.begin, segment.end);
      const Verdict verdict = test.Test(view, reader.position());
      TakeRecord(view, reader.position(), verdict, test, pass, rows);
      reader.Next();
    }
    Finish(segment, rows);
  }

  void Finish(const Segment& segment, RowBatch& rows) {
    if (segment.is_whole) {
      rows.EndPage();
    } else {
      rows.Drop();
    }
  }

  void TestEveryPosition(const Segment& segment, DeletedPass& pass, RowBatch& rows) {
    for (uint64_t position = segment.begin; position < segment.end; ++position) {
      TestPositionGeneral(position, pass, rows);
    }
  }

  void TakeRecord(const ByteView& view, uint64_t position, Verdict verdict, RecordTest& test,
                  DeletedPass& pass, RowBatch& rows) {
    if (verdict == Verdict::kMiss) return;
    if (verdict == Verdict::kHit) {
      const RowIdHint hint = test.FindRowId(view, position);
      if (IsKnown(test, rows)) return rows.CommitKnown(hint);
      if (test.BuildRow(hint, rows.values())) return rows.Commit(hint);
    }
    TestPositionGeneral(position, pass, rows);
  }

  // Whether the record is a copy of a row that was saved: most are, and need no row of their own.
  static bool IsKnown(const RecordTest& test, RowBatch& rows) {
    return rows.CanKnow() && test.BuildFields(rows.key_fields(), rows.key_row()) && rows.IsKnown();
  }

  void TestPositionGeneral(uint64_t position, DeletedPass& pass, RowBatch& rows) {
    RowIdHint hint;
    if (TestPosition(pass.layout, source_.carver(), position, cells_, row_, hint)) {
      rows.Add(std::move(row_), hint);
    }
  }

  bool SeesNoStop() {
    if (MayGoOn()) return true;
    LogEx(kLogModule, kLogInfo, "%s Stop", stop_name_);
    return false;
  }

  Source& source_;
  const char* stop_name_;
  SieveLevel level_;
  SurvivorBudget budget_;
  std::vector<DeletedPass*> passes_;  // of the sweep; the rows of the first one are saved
  SweepPlan plan_;
  SweepPlan careful_plan_;
  SieveResult survivors_;
  SerialTypeCells cells_;
  RowValue row_;
};
