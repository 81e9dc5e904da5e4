#include "list_command.h"

#include <json/json.h>

#include <algorithm>
#include <ostream>
#include <vector>

#include "coverage.h"
#include "exit_code.h"
#include "request_checks.h"

namespace vexascan {
namespace {

std::string Join(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : ", ") + word;
  return line;
}

void PrintTables(const CoveredApplication& application, bool deleted, std::ostream& out) {
  const bool several = application.databases.size() > 1;
  std::vector<std::string> names;
  for (const std::string& database :
       several ? application.databases : std::vector<std::string>{std::string()}) {
    std::vector<std::string> group;
    for (const CoveredTable& table : application.tables) {
      if (table.deleted == deleted && (!several || table.database == database)) {
        group.push_back(table.name);
      }
    }
    if (!group.empty()) names.push_back(Join(group) + (several ? " (" + database + ")" : ""));
  }
  if (names.empty()) return;
  out << (deleted ? "    live and deleted rows: " : "    live rows only: ") << Join(names) << "\n";
}

void PrintApplication(const CoveredApplication& application, std::ostream& out) {
  out << application.system << " " << application.data_type;
  if (!application.name.empty()) out << " - " << application.name;
  if (!application.databases.empty()) out << " - " << Join(application.databases);
  out << "\n";
  PrintTables(application, true, out);
  PrintTables(application, false, out);
  if (application.log_only && !application.tables.empty()) {
    out << "    deleted rows come out of the write-ahead log only\n";
  }
  for (const Gap& gap : application.gaps) out << "    not covered: " << gap.what << "\n";
}

Json::Value WordsOf(const std::vector<std::string>& words) {
  Json::Value list(Json::arrayValue);
  for (const std::string& word : words) list.append(word);
  return list;
}

Json::Value ToJson(const CoveredTable& table) {
  Json::Value object;
  object["name"] = table.name;
  object["database"] = table.database;
  object["deleted"] = table.deleted;
  object["layouts"] = static_cast<Json::UInt64>(table.layouts);
  object["key"] = WordsOf(table.key);
  if (!table.limits.empty()) object["limits"] = table.limits;
  return object;
}

Json::Value ToJson(const CoveredApplication& application) {
  Json::Value object;
  object["system"] = application.system;
  object["data_type"] = application.data_type;
  object["application"] = application.name;
  object["databases"] = WordsOf(application.databases);
  object["log_only"] = application.log_only;
  object["tables"] = Json::Value(Json::arrayValue);
  for (const CoveredTable& table : application.tables) object["tables"].append(ToJson(table));
  object["not_covered"] = Json::Value(Json::arrayValue);
  for (const Gap& gap : application.gaps) {
    Json::Value entry;
    entry["what"] = gap.what;
    entry["why"] = gap.why;
    object["not_covered"].append(entry);
  }
  return object;
}

void PrintJson(const std::vector<CoveredApplication>& applications, std::ostream& out) {
  Json::Value list(Json::arrayValue);
  for (const CoveredApplication& application : applications) list.append(ToJson(application));
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "  ";
  builder["emitUTF8"] = true;
  out << Json::writeString(builder, list) << "\n";
}

}  // namespace

int RunList(const ListRequest& request, std::ostream& out) {
  const std::filesystem::path folder =
      request.config_folder.empty() ? ShippedConfigFolder() : request.config_folder;
  const std::filesystem::path config = folder / kConfigName;
  if (!std::filesystem::is_regular_file(config)) {
    throw UsageError("The configuration folder " + folder.string() + " holds no " + kConfigName +
                     ".");
  }
  std::vector<CoveredApplication> applications = ReadCoverage(config);
  const auto is_unasked = [&request](const CoveredApplication& application) {
    return (!request.system.empty() && application.system != request.system) ||
           (!request.data_type.empty() && application.data_type != request.data_type);
  };
  applications.erase(std::remove_if(applications.begin(), applications.end(), is_unasked),
                     applications.end());
  if (request.as_json) {
    PrintJson(applications, out);
  } else if (applications.empty()) {
    out << "Nothing of that kind is covered.\n";
  } else {
    for (const CoveredApplication& application : applications) {
      PrintApplication(application, out);
    }
  }
  return kExitSuccess;
}

}  // namespace vexascan
