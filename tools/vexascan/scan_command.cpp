// The order of things: check; copy; scan the live rows into a scratch result, as the measure for
// the table at the end; scan what was asked for; look the result over; put it in its place. The
// library never sees a path of the user's but the log folder.
#include "scan_command.h"

#include <filesystem>
#include <ostream>
#include <system_error>

#include "evidence_files.h"
#include "exit_code.h"
#include "log_reader.h"
#include "request_checks.h"
#include "result_codes.h"
#include "result_summary.h"
#include "sdk_session.h"
#include "signal_watcher.h"
#include "sqlite_db.h"
#include "staged_files.h"

namespace vexascan {
namespace fs = std::filesystem;
namespace {

constexpr std::size_t kErrorsShown = 3;

bool LooksForDeleted(Range range) { return range == Range::kAll || range == Range::kDeleted; }

// What is wrong with a run, in words; nothing for a whole one.
void ExplainRun(const RunOutcome& run, const LogReader& log, std::ostream& out) {
  if (run.exception) {
    out << "The scan broke off with an error that the library does not handle: " << *run.exception
        << "\n";
  } else if (run.code != 0) {
    out << "The scan failed with result code " << run.code << ": " << ExplainResultCode(run.code)
        << ".\n";
  }
  if (run.cut) {
    out << "The scan was cut by a signal before its end; what it found is incomplete.\n";
  }
  if (run.exception || run.code != 0) {
    for (const std::string& line : log.LastErrors(kErrorsShown)) {
      out << "  log: " << line << "\n";
    }
  }
}

// The library leaves the result in write-ahead mode, in which even a reader needs to write beside
// the file. The user gets a file that stands alone.
void MakeStandAlone(const fs::path& staged_result) {
  Database database(staged_result);
  const std::string verdict = database.SingleText("PRAGMA integrity_check");
  if (verdict != "ok") {
    throw ScanFailure("The result database is damaged (" + verdict + ") and was not kept.");
  }
  const std::string mode = database.SingleText("PRAGMA journal_mode = DELETE");
  if (mode != "delete") {
    throw ScanFailure("The result database could not be closed (journal mode " + mode + ").");
  }
}

// Side files of an older result would be replayed into the new one. The checks have seen that they
// are empty or of no value.
void Deliver(const fs::path& staged_result, const fs::path& result) {
  for (const fs::path& side : SideFiles(result)) {
    fs::remove(side);
  }
  PutInPlace(staged_result, result);
}

class Command {
 public:
  Command(const ScanRequest& request, std::ostream& out)
      : request_(request), out_(out), staged_(request), log_(request.log_folder / kLogName) {
    staged_.CheckApplicationIsKnown(request_);
  }

  int Run() {
    out_ << "Scanning " << request_.source.string() << " (Ctrl-C cuts the scan)" << std::endl;
    const fs::path live = staged_.ResultPath("live");
    const fs::path found = staged_.ResultPath("found");
    const RunOutcome run = RunBoth(live, found);
    ExplainRun(run, log_, out_);
    const bool partial = (run.exception || run.cut) && run.code == 0 && fs::exists(found);
    if (!run.Whole() && !partial) {
      out_ << "No result was written to " << request_.result.string() << ".\nThe log is "
           << log_.path().string() << "\n";
      return kExitScanFailed;
    }
    MakeStandAlone(found);
    const auto tables = Summarize(found, LooksForDeleted(request_.range) ? live : fs::path());
    Deliver(found, request_.result);
    if (run.Whole()) {
      out_ << "Result code 0: " << ExplainResultCode(0) << ".\n";
    }
    PrintSummary(tables, out_);
    out_ << (partial ? "Result (incomplete): " : "Result: ") << request_.result.string()
         << "\nLog: " << log_.path().string() << "\n";
    return run.Whole() ? kExitSuccess : kExitScanFailed;
  }

 private:
  // The outcome of the run that was asked for, or of the one before it when that was not whole.
  RunOutcome RunBoth(const fs::path& live, const fs::path& found) {
    SdkSession session(request_.log_folder, staged_.config_folder());
    if (LooksForDeleted(request_.range)) {
      RunOutcome run = RunOne(session, Range::kLive, "live", live);
      if (!run.Whole()) {
        return run;
      }
    }
    return RunOne(session, request_.range, "found", found);
  }

  RunOutcome RunOne(SdkSession& session, Range range, const std::string& name,
                    const fs::path& result) {
    const fs::path temp_folder = staged_.NewTempFolder(name);
    RunOutcome run =
        session.Run(ParameterText(request_, range, staged_.source(), result, temp_folder));
    std::error_code ignored;  // the private folder takes what is left with it
    fs::remove_all(temp_folder, ignored);
    return run;
  }

  const ScanRequest& request_;
  std::ostream& out_;
  StagedFiles staged_;
  LogReader log_;
};

}  // namespace

int RunScan(ScanRequest request, std::ostream& out) {
  CompleteAndCheck(request);
  const SignalBlock signals;  // outlives the working copies, so that they are always removed
  return Command(request, out).Run();
}

}  // namespace vexascan
