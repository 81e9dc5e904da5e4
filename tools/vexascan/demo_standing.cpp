// A record in SQLite's file format:
//
//   header size (varint) | one serial type (varint) for each column | the values, end to end
//
// An INTEGER PRIMARY KEY has serial type 0 (NULL) and no bytes, as its value is the row id of the
// cell. A payload of more than page size - 35 bytes keeps only a part in its page; behind that part
// stands the number of the first overflow page. Each of those begins with the number of the next
// one, and 0 ends the chain.
#include "demo_standing.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string_view>

#include "evidence_files.h"
#include "exit_code.h"

namespace vexascan {
namespace {

constexpr std::size_t kPageSizeOffset = 16;  // two bytes, big-endian; 1 stands for 65536
constexpr std::size_t kPageNumberBytes = 4;

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file) {
    throw ScanFailure("The sample " + path.string() + " could not be read back.");
  }
  return bytes;
}

std::uint32_t BigEndian(std::string_view bytes) {
  std::uint32_t value = 0;
  for (const char byte : bytes) {
    value = (value << 8U) | static_cast<unsigned char>(byte);
  }
  return value;
}

std::size_t VarintLength(std::uint64_t value) {
  std::size_t length = 1;
  for (; value > 0x7FU; value >>= 7U) {
    ++length;
  }
  return length;
}

struct Column {
  std::uint64_t serial_type = 0;
  std::string bytes;
};

Column EncodeInteger(std::int64_t value) {
  if (value == 0 || value == 1) {
    return {.serial_type = value == 0 ? 8U : 9U, .bytes = {}};
  }
  constexpr std::array<std::pair<int, std::uint64_t>, 6> kWidths{
      {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {6, 5}, {8, 6}}};
  for (const auto& [width, serial_type] : kWidths) {
    const int bits = width * 8 - 1;
    if (width < 8 && (value < -(std::int64_t{1} << bits) || value >= (std::int64_t{1} << bits))) {
      continue;
    }
    Column column{.serial_type = serial_type, .bytes = {}};
    for (int shift = (width - 1) * 8; shift >= 0; shift -= 8) {
      column.bytes += static_cast<char>(static_cast<std::uint64_t>(value) >> shift);
    }
    return column;
  }
  return {};
}

// The sample holds NULL, integers and texts only.
Column Encode(const Value& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    return EncodeInteger(*integer);
  }
  if (const auto* text = std::get_if<std::string>(&value)) {
    return {.serial_type = 13 + 2 * static_cast<std::uint64_t>(text->size()), .bytes = *text};
  }
  return {};
}

struct Record {
  std::size_t header_size = 0;
  std::string values;
};

Record RecordOf(const Message& message) {
  Record record;
  std::size_t serial_bytes = 1;  // that of the row id column
  for (const Value& value : message.values) {
    const Column column = Encode(value);
    serial_bytes += VarintLength(column.serial_type);
    record.values += column.bytes;
  }
  record.header_size = serial_bytes + 1;
  while (VarintLength(record.header_size) + serial_bytes > record.header_size) {
    ++record.header_size;
  }
  return record;
}

// How many bytes of a payload stay in a table leaf, by the rule of the file format.
std::size_t LocalPayload(std::size_t payload, std::size_t page_size) {
  const std::size_t most = page_size - 35;
  if (payload <= most) {
    return payload;
  }
  const std::size_t least = (page_size - 12) * 32 / 255 - 23;
  const std::size_t wanted = least + (payload - least) % (page_size - kPageNumberBytes);
  return wanted <= most ? wanted : least;
}

}  // namespace

StandingBytes::StandingBytes(const std::filesystem::path& database)
    : database_(ReadFile(database)),
      log_(ReadFile(WithSuffix(database, "-wal"))),
      page_size_(BigEndian(std::string_view(database_).substr(kPageSizeOffset, 2))) {
  page_size_ = page_size_ == 1 ? 65536 : page_size_;
}

bool StandingBytes::Holds(const Message& message) const {
  const Record record = RecordOf(message);
  const std::size_t payload = record.header_size + record.values.size();
  const std::size_t local = LocalPayload(payload, page_size_);
  return local == payload ? FindWhole(record.values)
                          : FindChained(record.values, local - record.header_size);
}

bool StandingBytes::FindWhole(const std::string& values) const {
  return database_.find(values) != std::string::npos || log_.find(values) != std::string::npos;
}

bool StandingBytes::FindChained(const std::string& values, std::size_t local) const {
  const std::string_view all(values);
  for (const std::string_view bytes : {std::string_view(database_), std::string_view(log_)}) {
    for (std::size_t at = bytes.find(all.substr(0, local)); at != std::string_view::npos;
         at = bytes.find(all.substr(0, local), at + 1)) {
      const std::string_view number = bytes.substr(at + local, kPageNumberBytes);
      if (number.size() == kPageNumberBytes && ChainHolds(all.substr(local), BigEndian(number))) {
        return true;
      }
    }
  }
  return false;
}

bool StandingBytes::ChainHolds(std::string_view rest, std::uint32_t page) const {
  const std::string_view bytes(database_);
  while (!rest.empty()) {
    const std::size_t start = (std::size_t{page} - 1) * page_size_;
    if (page == 0 || start + page_size_ > bytes.size()) {
      return false;
    }
    const std::string_view content = bytes.substr(start, page_size_);
    const std::size_t taken = std::min(rest.size(), page_size_ - kPageNumberBytes);
    if (content.substr(kPageNumberBytes, taken) != rest.substr(0, taken)) {
      return false;
    }
    rest.remove_prefix(taken);
    page = BigEndian(content.substr(0, kPageNumberBytes));
  }
  return true;
}

}  // namespace vexascan
