#include "whole/campaign.h"

#include <algorithm>
#include <initializer_list>
#include <iostream>
#include <set>

#include "data/sample_case.h"
#include "scansqlite/sieve/header_sieve.h"
#include "whole/child.h"

namespace bench {

namespace {

const std::vector<std::string>& Levels() {
  static const std::vector<std::string> levels = [] {
    std::vector<std::string> names = {"words"};
    if (BestSieveLevel() >= SieveLevel::kSsse3) names.emplace_back("ssse3");
    if (BestSieveLevel() >= SieveLevel::kAvx2) names.emplace_back("avx2");
    return names;
  }();
  return levels;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t middle = values.size() / 2;
  if (values.size() % 2 != 0) return values[middle];
  return (values[middle - 1] + values[middle]) / 2;
}

// In each round the slow measurements, which move little, are taken once and the others twice.
constexpr int kTurnsOfRound = 2;

// Of the runs of one measurement: the median time, the highest memory, and what else the first one
// tells.
Json::Value Summary(const std::vector<Json::Value>& runs) {
  Json::Value summary = runs.front();
  std::vector<double> seconds;
  std::vector<double> prepare;
  for (const Json::Value& run : runs) {
    seconds.push_back(run["seconds"].asDouble());
    prepare.push_back(run.get("prepare_seconds", 0).asDouble());
    summary["rss_kb"] = std::max(summary["rss_kb"].asInt64(), run["rss_kb"].asInt64());
  }
  summary["seconds"] = Median(seconds);
  if (summary.isMember("prepare_seconds")) summary["prepare_seconds"] = Median(prepare);
  summary["mb_per_second"] =
      summary["bytes"].asDouble() / 1e6 / std::max(summary["seconds"].asDouble(), 1e-9);
  return summary;
}

}  // namespace

bool Campaign::Wants(const std::string& name) const {
  return options_.cases.empty() ||
         std::find(options_.cases.begin(), options_.cases.end(), name) != options_.cases.end();
}

void Campaign::Add(const std::string& name, const RunRequest& request, bool is_slow) {
  measurements_.push_back({name, request, is_slow});
}

RunRequest Campaign::RequestFor(const std::string& folder, const std::string& kind,
                                const std::string& variant) const {
  RunRequest request;
  request.kind = kind;
  request.folder = folder;
  request.variant = variant;
  request.level = Levels().back();
  request.scratch = options_.data + "/scratch";
  return request;
}

void Campaign::AddWalks(const std::string& folder, const std::string& variant, bool of_log) {
  const std::string prefix = of_log ? "log-" : "";
  const auto request_for = [&](const std::string& kind) {
    RunRequest request = RequestFor(folder, kind, variant);
    request.of_log = of_log;
    return request;
  };
  Add(prefix + "read", request_for("read"));
  for (const std::string& level : Levels()) {
    for (const char* kind : {"sieve", "walk", "full"}) {
      RunRequest request = request_for(kind);
      request.level = level;
      Add(prefix + kind + "-" + level, request);
    }
  }
  Add(prefix + "plain-walk", request_for("plain-walk"), true);
}

void Campaign::AddScans(const std::string& folder, const std::string& variant) {
  for (const char* kind : {"scan", "scan-live", "scan-deleted", "copy", "attach"}) {
    Add(kind, RequestFor(folder, kind, variant));
  }
  Add("plain-scan", RequestFor(folder, "plain-scan", variant), true);
  Add("recover", RequestFor(folder, "recover", variant), true);
}

// The configurations of a case that know fewer or more layouts or tables.
void Campaign::AddScaling(const std::string& name, const std::string& folder) {
  const std::vector<std::string> variants = VariantsOf(name);
  if (variants.size() == 1) return;
  for (const std::string& variant : variants) {
    for (const char* kind : {"sieve", "walk", "full"}) {
      Add("of-" + variant + "-" + kind, RequestFor(folder, kind, variant));
    }
  }
}

Json::Value Campaign::Measure(int rounds) {
  std::set<std::string> failed;
  for (int turn = 0; turn < rounds * kTurnsOfRound; ++turn) {
    for (Measurement& measurement : measurements_) {
      const bool rests = measurement.is_slow && turn % kTurnsOfRound != 0;
      if (rests || failed.contains(measurement.name)) continue;
      std::optional<Json::Value> run = RunInChild(measurement.request);
      if (run) {
        measurement.runs.push_back(std::move(*run));
      } else {
        failed.insert(measurement.name);
      }
    }
  }
  Json::Value results(Json::objectValue);
  for (const Measurement& measurement : measurements_) {
    if (!measurement.runs.empty()) results[measurement.name] = Summary(measurement.runs);
  }
  measurements_.clear();
  return results;
}

void Campaign::CompareRows(const std::string& name, const Json::Value& results) {
  const Json::Value& fast = results["scan"];
  const Json::Value& plain = results["plain-scan"];
  const bool equal = fast.isObject() && plain.isObject() &&
                     fast["rows_hash"] == plain["rows_hash"] && fast["code"] == plain["code"];
  if (equal) return;
  rows_are_equal_ = false;
  std::cerr << "DIFFERENT ROWS: " << name << ": " << fast["rows"].asString() << " and "
            << plain["rows"].asString() << "\n";
}

Json::Value Campaign::CountCase(const std::string& folder, const std::string& variant) {
  Json::Value counts(Json::objectValue);
  for (const char* kind : {"sieve", "walk", "full"}) {
    const RunRequest request = RequestFor(folder, kind, variant);
    const std::optional<Json::Value> run = RunInChild(request);
    const std::optional<double> instructions = CountInstructions(request);
    if (run && instructions) counts[kind] = *instructions / (*run)["bytes"].asDouble();
  }
  return counts;
}

Json::Value Campaign::RunCase(const std::string& name) {
  std::cerr << name << " ...\n";
  // The plain walk takes ten times as long for ten tables.
  const uint64_t megabytes =
      name == "apps" ? std::max<uint64_t>(options_.megabytes / 4, 1) : options_.megabytes;
  const std::string folder = MakeCase(options_.data, name, megabytes).folder;
  const std::string variant = VariantsOf(name).front();
  AddWalks(folder, variant, false);
  if (name == "log") AddWalks(folder, variant, true);
  AddScans(folder, variant);
  AddScaling(name, folder);
  Json::Value results = Measure(options_.repeats);
  CompareRows(name, results);
  if (!options_.is_quick && name != "log" && name != "apps") {
    const uint64_t small = std::min<uint64_t>(options_.megabytes, 8);
    results["instructions"] = CountCase(MakeCase(options_.data, name, small).folder, variant);
  }
  return results;
}

Json::Value Campaign::RunSizes() {
  std::cerr << "sizes ...\n";
  std::vector<uint64_t> sizes;
  for (const uint64_t part : std::initializer_list<uint64_t>{16, 8, 4, 2, 1}) {
    if (options_.megabytes >= part) sizes.push_back(options_.megabytes / part);
  }
  for (const uint64_t size : sizes) {
    const std::string folder = MakeCase(options_.data, "sms", size).folder;
    const std::string variant = VariantsOf("sms").front();
    for (const char* kind : {"walk", "full", "scan"}) {
      Add(std::to_string(size) + "-" + kind, RequestFor(folder, kind, variant));
    }
  }
  return Measure(options_.repeats);
}

// Only the library: the plain walk would take minutes.
Json::Value Campaign::RunLarge(const std::string& name) {
  std::cerr << name << " ...\n";
  const std::string folder = MakeCase(options_.data, name, options_.megabytes).folder;
  const std::string variant = VariantsOf(name).front();
  for (const char* kind : {"walk", "full", "scan", "scan-live", "scan-deleted"}) {
    Add(kind, RequestFor(folder, kind, variant), true);
  }
  return Measure(1);
}

Json::Value Campaign::Run() {
  Json::Value results(Json::objectValue);
  for (const std::string& name : CaseNames()) {
    const bool is_large = name == "million" || name == "gib";
    if (!Wants(name) || (is_large && options_.is_quick)) continue;
    results[name] = is_large ? RunLarge(name) : RunCase(name);
  }
  if (Wants("sms")) results["sizes"] = RunSizes();
  return results;
}

}  // namespace bench
