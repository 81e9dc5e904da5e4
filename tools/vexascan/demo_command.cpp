#include "demo_command.h"

#include <algorithm>
#include <fstream>
#include <ostream>
#include <string>
#include <string_view>

#include "demo_database.h"
#include "demo_messages.h"
#include "demo_report.h"
#include "exit_code.h"
#include "private_folder.h"
#include "request_checks.h"
#include "scan_command.h"

namespace vexascan {
namespace fs = std::filesystem;
namespace {

constexpr const char* kResultName = "result.db";
constexpr const char* kMarkName = "vexascan-demo.txt";
constexpr std::string_view kMarkText =
    "This folder belongs to \"vexascan demo\", which makes its files anew each time:\n"
    "  mmssms.db, mmssms.db-wal  the sample\n"
    "  result.db                 what its scan found\n"
    "  vexa_sqlite_sdk.log       the log of the scan\n";

// A folder without the mark may hold somebody's real mmssms.db, so it must be empty.
void PrepareFolder(const fs::path& folder) {
  if (fs::exists(folder) && !fs::is_directory(folder)) {
    throw UsageError("The demo folder " + folder.string() + " exists and is not a folder.");
  }
  const bool ours = fs::is_regular_file(folder / kMarkName);
  if (fs::exists(folder) && !ours && !fs::is_empty(folder)) {
    throw UsageError("The demo folder " + folder.string() +
                     " holds files that no demo has made. Choose another with --out.");
  }
  fs::create_directories(folder);
  std::ofstream(folder / kMarkName) << kMarkText;
  for (const char* name : {kSampleName, kResultName, kLogName}) {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
      fs::remove(folder / (std::string(name) + suffix));
    }
  }
}

ScanRequest RequestFor(const DemoRequest& demo, const fs::path& folder) {
  constexpr int kAndroid = 0;
  constexpr int kMessages = 1;
  ScanRequest request;
  request.system_type = kAndroid;
  request.data_type = kMessages;
  request.source = folder / kSampleName;
  request.result = folder / kResultName;
  request.config_folder = demo.config_folder;
  request.temp_folder = demo.temp_folder;
  return request;
}

}  // namespace

int RunDemo(const DemoRequest& demo, std::ostream& out) {
  const fs::path folder = fs::absolute(demo.folder).lexically_normal();
  const fs::path temp_folder =
      demo.temp_folder.empty() ? fs::temp_directory_path() : demo.temp_folder;
  if (demo.config_folder.empty()) {
    ShippedConfigFolder();  // better to miss it before the folder of an earlier demo is emptied
  }
  PrepareFolder(folder);
  const std::vector<Message> messages = MakeMessages();
  {
    const PrivateFolder workshop(temp_folder);
    WriteSample(messages, workshop.path(), folder);
  }
  const auto deleted = std::count_if(messages.begin(), messages.end(),
                                     [](const Message& m) { return m.fate != Fate::kLive; });
  out << "Sample: " << (folder / kSampleName).string() << "\n  " << messages.size()
      << " messages were written, " << deleted << " of them deleted\n\n";

  const ScanRequest request = RequestFor(demo, folder);
  const int code = RunScan(request, out);
  if (code != kExitSuccess) {
    return code;
  }
  const DemoReport report = Reckon(messages, request.source, request.result);
  PrintReport(report, out);
  out << "\nSample: " << request.source.string() << "\nResult: " << request.result.string()
      << "\nLog:    " << (folder / kLogName).string() << "\n";
  if (!report.GoodEnough()) {
    out << "Fewer than 90 of 100 messages whose bytes stand came back.\n";
    return kExitScanFailed;
  }
  return kExitSuccess;
}

}  // namespace vexascan
