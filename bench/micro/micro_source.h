#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scansqlite/carving/byte_view.h"
#include "scansqlite/sieve/header_sieve.h"
#include "support/temp_folder.h"
#include "walk/fast_walk.h"

namespace bench {

inline constexpr size_t kMicroPage = 4096;
inline constexpr size_t kPageHeader = 8;

// A few megabytes of a case in memory, with the layouts of one of its configurations.
class MicroSource {
 public:
  MicroSource(const std::string& name, const std::string& variant);

  // The source's bytes, or others to sieve by the same layouts.
  const std::vector<uint8_t>& bytes() const { return bytes_; }
  void SetBytes(std::vector<uint8_t> bytes);
  size_t size() const { return bytes_.size() - kSieveOverhang; }

  const SievePlan& plan() const { return plan_; }
  ByteView View() const { return {bytes_.data(), 0, size(), size()}; }
  DeletedPass& live_pass() { return *walk_.tables().front().passes.front(); }
  const TablePasses& table() { return walk_.tables().front(); }

  // Positions behind the first page that the sieve lets through for the live layout.
  std::vector<uint64_t> Survivors();

  // Those at which a record stands that needs nothing but its page.
  std::vector<uint64_t> Records();

 private:
  TempFolder scratch_;
  FastWalk walk_;
  SievePlan plan_;
  std::vector<uint8_t> bytes_;
};

// The case with its usual configuration, or with the one named; made once.
MicroSource& Source(const std::string& name, const std::string& variant);

}  // namespace bench
