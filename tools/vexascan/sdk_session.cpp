#include "sdk_session.h"

#include <vexasqlitesdk.h>

#include <exception>

#include "exit_code.h"
#include "result_codes.h"

namespace vexascan {

SdkSession::Library::Library(const std::filesystem::path& log_folder,
                             const std::filesystem::path& config_folder) {
  const int code = InitSqliteSDK(log_folder.c_str(), config_folder.c_str());
  if (code != 0) {
    throw ScanFailure("The library did not start (result code " + std::to_string(code) +
                      "): " + ExplainResultCode(code) + ".");
  }
}

SdkSession::Library::~Library() { UninitSqliteSDK(); }

SdkSession::SdkSession(const std::filesystem::path& log_folder,
                       const std::filesystem::path& config_folder)
    : library_(log_folder, config_folder), watcher_([] { Stop(); }) {}

RunOutcome SdkSession::Run(const std::string& parameters) {
  RunOutcome outcome;
  try {
    outcome.code = Scan(parameters.data(), static_cast<int>(parameters.size()), this);
  } catch (const std::exception& error) {
    outcome.exception = error.what();
  } catch (...) {
    outcome.exception = "an exception without words";
  }
  outcome.cut = watcher_.SawSignal();
  return outcome;
}

}  // namespace vexascan
