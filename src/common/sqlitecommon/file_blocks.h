#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

// A few small blocks of a file, for single bytes here and there. Not safe for use by several
// threads: every look can load a block.
class FileBlocks {
 public:
  static constexpr uint64_t kBlockSize = 65536;

  // The byte at `offset` of a file of `file_size` bytes, which is more. `load` takes an offset, a
  // length and where the bytes go.
  template <typename Load>
  uint8_t ReadByte(uint64_t offset, uint64_t file_size, const Load& load) {
    const uint64_t number = offset / kBlockSize;
    Block& block = blocks_[number % kBlockCount];
    if (block.number != number) {
      if (!block.bytes) block.bytes = std::make_unique_for_overwrite<uint8_t[]>(kBlockSize);
      const uint64_t begin = number * kBlockSize;
      load(begin, std::min(kBlockSize, file_size - begin), block.bytes.get());
      block.number = number;
    }
    return block.bytes[offset % kBlockSize];
  }

 private:
  static constexpr uint64_t kBlockCount = 16;
  static constexpr uint64_t kNoBlock = ~uint64_t{0};

  struct Block {
    uint64_t number = kNoBlock;
    std::unique_ptr<uint8_t[]> bytes;
  };

  std::array<Block, kBlockCount> blocks_;
};
