#include "recovery/evidence.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace recovery {
namespace {

constexpr size_t kLogHeader = 32;
constexpr size_t kFrameHeader = 24;

}  // namespace

std::string FileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

uint32_t BigEndianNumber(std::string_view bytes) {
  uint32_t value = 0;
  for (const char byte : bytes) value = value << 8U | static_cast<unsigned char>(byte);
  return value;
}

Evidence::Evidence(const std::string& database_path)
    : Evidence(FileBytes(database_path), FileBytes(database_path + "-wal")) {}

Evidence::Evidence(std::string main_bytes, std::string log_bytes)
    : main_(std::move(main_bytes)), log_(std::move(log_bytes)) {
  const uint32_t size = main_.size() < 18 ? 4096 : BigEndianNumber(File(0).substr(16, 2));
  page_size_ = size == 1 ? 65536 : size;
  ReadLog();
}

void Evidence::ReadLog() {
  if (log_.size() < kLogHeader) return;
  const std::string_view salts = File(1).substr(16, 8);
  std::unordered_map<uint32_t, size_t> pending;
  bool valid = true;
  for (size_t at = kLogHeader; at + kFrameHeader + page_size_ <= log_.size();
       at += kFrameHeader + page_size_) {
    const uint32_t page = BigEndianNumber(File(1).substr(at, 4));
    frames_[page].push_back(at + kFrameHeader);
    valid = valid && File(1).substr(at + 8, 8) == salts;
    if (!valid) continue;
    pending[page] = at + kFrameHeader;
    if (BigEndianNumber(File(1).substr(at + 4, 4)) == 0) continue;  // not the last of a commit
    for (const auto& [number, offset] : pending) current_[number] = offset;
    pending.clear();
  }
}

std::vector<std::string_view> Evidence::States(uint32_t page) const {
  std::vector<std::string_view> states;
  if (page == 0) return states;
  const size_t begin = (size_t{page} - 1) * page_size_;
  if (begin + page_size_ <= main_.size()) states.push_back(File(0).substr(begin, page_size_));
  if (const auto found = frames_.find(page); found != frames_.end()) {
    for (const size_t offset : found->second) states.push_back(File(1).substr(offset, page_size_));
  }
  return states;
}

std::string_view Evidence::Current(uint32_t page) const {
  if (const auto found = current_.find(page); found != current_.end()) {
    return File(1).substr(found->second, page_size_);
  }
  const size_t begin = (size_t{page} - 1) * page_size_;
  if (page == 0 || begin + page_size_ > main_.size()) return {};
  return File(0).substr(begin, page_size_);
}

std::pair<size_t, size_t> Evidence::PlaceOf(std::string_view state) const {
  const bool in_main = state.data() >= main_.data() && state.data() < main_.data() + main_.size();
  const std::string& file = in_main ? main_ : log_;
  return {in_main ? 0 : 1, static_cast<size_t>(state.data() - file.data())};
}

}  // namespace recovery
