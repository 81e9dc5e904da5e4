#include "micro/micro_source.h"

#include <filesystem>
#include <map>
#include <memory>

#include "common/common/file_loader.h"
#include "data/sample_case.h"

namespace bench {

namespace {

constexpr uint64_t kMegabytes = 4;

ScanContext MakeContext(const std::string& name, const std::string& variant,
                        const TempFolder& scratch) {
  std::filesystem::create_directory(scratch.path() / "temp");
  return MakeCase("bench-data", name, kMegabytes).Context(variant, scratch.path().string());
}

}  // namespace

MicroSource::MicroSource(const std::string& name, const std::string& variant)
    : walk_(MakeContext(name, variant, scratch_)) {
  for (const TablePasses& table : walk_.tables()) {
    for (const auto& pass : table.passes) {
      plan_.Add(pass->plan.sets, pass->plan.first, pass->plan.required);
    }
  }
  std::ifstream source(walk_.probe().context().source_db_path, std::ios::binary);
  SetBytes({std::istreambuf_iterator<char>(source), {}});
}

void MicroSource::SetBytes(std::vector<uint8_t> bytes) {
  bytes_ = std::move(bytes);
  bytes_.resize(bytes_.size() / kMicroPage * kMicroPage + kSieveOverhang);
}

std::vector<uint64_t> MicroSource::Survivors() {
  SievePlan plan;
  const RecordPlan& record = live_pass().plan;
  plan.Add(record.sets, record.first, record.required);
  std::vector<uint64_t> positions;
  SieveResult survivors;
  for (size_t page = kMicroPage; page < size(); page += kMicroPage) {
    const size_t begin = page + kPageHeader;
    Sieve(plan, BestSieveLevel(), bytes_.data() + begin, kMicroPage - kPageHeader, survivors);
    survivors.ForEach(0, [&](size_t place) { positions.push_back(begin + place); });
  }
  return positions;
}

std::vector<uint64_t> MicroSource::Records() {
  std::vector<uint64_t> positions = Survivors();
  std::erase_if(positions, [this](uint64_t position) {
    return live_pass().test->Test(View(), position) != Verdict::kHit;
  });
  return positions;
}

MicroSource& Source(const std::string& name, const std::string& variant) {
  static std::map<std::string, std::unique_ptr<MicroSource>> sources;
  std::unique_ptr<MicroSource>& source = sources[name + variant];
  if (source == nullptr) source = std::make_unique<MicroSource>(name, variant);
  return *source;
}

}  // namespace bench
