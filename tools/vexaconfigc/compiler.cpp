#include "compiler.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "feature_check.h"
#include "kind_check.h"
#include "layout_check.h"
#include "position_check.h"
#include "result_check.h"
#include "source_parser.h"

namespace vexaconfigc {

namespace {

void CheckTables(Application& application, Diagnostics& diagnostics) {
  std::map<std::string, int> lines;
  for (Table& table : application.tables) {
    if (const auto [first, is_new] = lines.emplace(table.name, table.line); !is_new) {
      diagnostics.Error(application.file, table.line,
                        "table '" + table.name + "' stands twice, first on line " +
                            std::to_string(first->second));
    }
    ReadLayouts(table, application.file, diagnostics);
    CheckResults(table, application.file, diagnostics);
    CheckFeatures(table, application.file, diagnostics);
    CheckKinds(table, application.file, diagnostics);
    CheckPositions(table, application.file, diagnostics);
  }
}

}  // namespace

std::vector<std::string> CollectSources(const std::vector<std::string>& paths) {
  namespace fs = std::filesystem;
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    if (!fs::is_directory(path)) {
      files.push_back(path);
      continue;
    }
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
      if (entry.is_regular_file() && entry.path().extension() == ".yaml") {
        files.push_back(entry.path().string());
      }
    }
  }
  std::sort(files.begin(), files.end());
  files.erase(std::unique(files.begin(), files.end()), files.end());
  return files;
}

std::vector<Application> CompileSources(const std::vector<std::string>& files,
                                        Diagnostics& diagnostics) {
  std::vector<Application> applications;
  std::map<std::pair<std::string, std::string>, std::string> seen;
  for (const std::string& file : files) {
    std::optional<Application> application = ParseSource(file, diagnostics);
    if (!application) continue;
    const auto [first, is_new] =
        seen.emplace(std::pair(application->system, application->data_type), file);
    if (!is_new) {
      diagnostics.Error(file, application->line,
                        "a second file for " + application->system + "/" + application->data_type +
                            "; the first is " + first->second);
    }
    CheckTables(*application, diagnostics);
    applications.push_back(std::move(*application));
  }
  diagnostics.CheckAccepted();
  return applications;
}

}  // namespace vexaconfigc
