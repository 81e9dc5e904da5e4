#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include "scansqlite/carving/byte_view.h"
#include "scansqlite/sieve/header_sieve.h"

// The piece of a source that is in memory while a sweep goes over it. It is small enough to stay in
// the processor's cache: what was just read is looked at from there.
class FileWindow {
 public:
  // The bytes of [begin, end) with what records that begin there need around them, and readable for
  // the sieve behind `end`. Valid until the next call. `read` takes an offset, a length and where
  // the bytes go.
  template <typename Read>
  ByteView View(uint64_t begin, uint64_t end, uint64_t source_size, const Read& read) {
    const uint64_t from = begin - std::min(begin, kBefore);
    const uint64_t to = std::min(end + kBehind, source_size);
    if (from < begin_ || to > end_) Load(from, end, source_size, read);
    return {bytes_.get(), begin_, end_, source_size};
  }

 private:
  static constexpr uint64_t kWindowBytes = 262144;

  // In front of a page, for cell heads that reach into it.
  static constexpr uint64_t kBefore = 64;

  // Behind a page, for headers that run over its end.
  static constexpr uint64_t kBehind = 2048;

  template <typename Read>
  void Load(uint64_t from, uint64_t end, uint64_t source_size, const Read& read) {
    const uint64_t wanted = std::max(kWindowBytes, end - from + kBehind);
    const uint64_t taken = std::min(wanted, source_size - from);
    if (capacity_ < wanted + kSieveOverhang) {
      capacity_ = wanted + kSieveOverhang;
      bytes_ = std::make_unique_for_overwrite<uint8_t[]>(capacity_);
    }
    read(from, taken, bytes_.get());
    std::memset(bytes_.get() + taken, 0, kSieveOverhang);
    begin_ = from;
    end_ = from + taken;
  }

  std::unique_ptr<uint8_t[]> bytes_;
  uint64_t capacity_ = 0;
  uint64_t begin_ = 0;
  uint64_t end_ = 0;
};
