#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace recovery {

// A span of a file's bytes.
struct Span {
  size_t begin = 0;
  size_t end = 0;
};

// The bytes of a database and of the log beside it, as pages.
class Evidence {
 public:
  explicit Evidence(const std::string& database_path);
  Evidence(std::string main_bytes, std::string log_bytes);

  // 0 is the database, 1 the log.
  std::string_view File(size_t file) const { return file == 0 ? main_ : log_; }
  size_t page_size() const { return page_size_; }

  // Every state of a page that stands somewhere, the database's own first.
  std::vector<std::string_view> States(uint32_t page) const;

  // The state that SQLite reads: that of the last frame of the log's newest generation up to its
  // last commit, else the database's own. Empty for a page beyond the end.
  std::string_view Current(uint32_t page) const;

  // Where a state stands.
  std::pair<size_t, size_t> PlaceOf(std::string_view state) const;

 private:
  void ReadLog();

  std::string main_;
  std::string log_;
  size_t page_size_ = 0;
  std::unordered_map<uint32_t, std::vector<size_t>> frames_;  // offsets of pages in the log
  std::unordered_map<uint32_t, size_t> current_;
};

std::string FileBytes(const std::string& path);
uint32_t BigEndianNumber(std::string_view bytes);

}  // namespace recovery
