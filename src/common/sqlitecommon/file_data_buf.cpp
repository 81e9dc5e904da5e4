#include "common/sqlitecommon/file_data_buf.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "common/common/file_loader.h"
#include "common/common/log.h"
#include "common/common/source_path.h"
#include "common/sqlitecommon/big_endian.h"

namespace {

// Line numbers that stand in the texts of these messages; they do not follow the code.
constexpr int kLineReadByte = 641;
constexpr int kLineReadRange = 679;

}  // namespace

FileDataBuf::FileDataBuf(const std::string& path) : path_(path) {
  LogEx(kLogModule, kLogInfo, "file data buf src path : %s", path_.c_str());
  errno = 0;
  stream_.open(path_, std::ios::in | std::ios::out | std::ios::binary);
  if (!stream_) {
    LogEx(kLogModule, kLogError, "Fail to load file %d, %s", errno, std::strerror(errno));
    status_ = -1;
    return;
  }
  stream_.seekg(0, std::ios::end);
  const std::streamoff end = stream_.tellg();
  file_size_ = end > 0 ? static_cast<uint64_t>(end) : 0;
  if (file_size_ == 0) {
    LogEx(kLogModule, kLogError, "file size 0, %d, %s", errno, std::strerror(errno));
    status_ = -1;
    return;
  }
  window_end_ = std::min(file_size_, kMaxWindowSize);
}

void FileDataBuf::LoadWindow() {
  if (!window_) {
    window_ = std::make_unique_for_overwrite<uint8_t[]>(std::min(file_size_, kMaxWindowSize));
  }
  loaded_size_ = window_end_ - window_begin_;
  Load(window_begin_, loaded_size_, window_.get());
}

uint32_t FileDataBuf::ReadBigEndian32(uint64_t offset) {
  const uint8_t b0 = ReadByte(offset);
  const uint8_t b1 = ReadByte(offset + 1);
  const uint8_t b2 = ReadByte(offset + 2);
  const uint8_t b3 = ReadByte(offset + 3);
  return BigEndian32(b0, b1, b2, b3);
}

uint8_t FileDataBuf::PeekByte(uint64_t offset) {
  const bool needs_block =
      offset < file_size_ && offset - window_begin_ >= window_end_ - window_begin_;
  return needs_block ? ReadByteThroughBlocks(offset) : ReadByte(offset);
}

uint32_t FileDataBuf::PeekBigEndian32(uint64_t offset) {
  const uint8_t b0 = PeekByte(offset);
  const uint8_t b1 = PeekByte(offset + 1);
  const uint8_t b2 = PeekByte(offset + 2);
  const uint8_t b3 = PeekByte(offset + 3);
  return BigEndian32(b0, b1, b2, b3);
}

void FileDataBuf::Load(uint64_t offset, uint64_t length, uint8_t* out) {
  ReadAt(stream_, offset, length, out);
}

std::string FileDataBuf::DescribeAccessPastEnd(int line) const {
  char message[256];
  std::snprintf(message, sizeof message, "At file : %s, line : %d, access out of file size.",
                kSourceSqliteCommon, line);
  return message;
}

uint8_t FileDataBuf::ReadByteOutsideWindow(uint64_t offset) {
  if (offset >= file_size_) {
    LogEx(kLogModule, kLogError, "%s", DescribeAccessPastEnd(kLineReadByte).c_str());
    return 0;
  }
  if (offset < window_begin_) return ReadByteThroughBlocks(offset);
  if (offset >= window_end_) {
    window_begin_ = offset;
    window_end_ = offset + std::min(file_size_ - offset, kMaxWindowSize);
  }
  LoadWindow();
  return window_[offset - window_begin_];
}

uint8_t FileDataBuf::ReadByteThroughBlocks(uint64_t offset) {
  return blocks_.ReadByte(offset, file_size_, [this](uint64_t from, uint64_t length, uint8_t* out) {
    Load(from, length, out);
  });
}

void FileDataBuf::CheckRange(uint64_t offset, uint64_t length) const {
  if (offset <= file_size_ && length <= file_size_ - offset) return;
  const std::string message = DescribeAccessPastEnd(kLineReadRange);
  LogEx(kLogModule, kLogError, "%s", message.c_str());
  throw std::out_of_range(message);
}

void FileDataBuf::ReadRangeTo(uint64_t offset, uint64_t length, uint8_t* out) {
  CheckRange(offset, length);
  if (length == 0) return;
  const uint64_t in_window = offset - window_begin_;
  if (in_window < loaded_size_ && length < loaded_size_ - in_window) {
    std::memcpy(out, window_.get() + in_window, length);
    return;
  }
  Load(offset, length, out);
}

FileSlice FileDataBuf::ReadRange(uint64_t offset, uint64_t length) {
  CheckRange(offset, length);
  auto bytes = std::make_unique<uint8_t[]>(length);
  ReadRangeTo(offset, length, bytes.get());
  FileSlice slice;
  slice.begin = bytes.release();
  slice.end = slice.begin + length;
  slice.deleter = [](uint8_t* begin) { std::unique_ptr<uint8_t[]>{begin}; };
  return slice;
}
