// Walks every tree of the database. A page is a leaf or an interior page of a table or an index by
// its first byte; cell pointers of two bytes stand behind its header.
#include "recovery/used_cells.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string_view>

#include "recovery/record_bytes.h"

namespace recovery {
namespace {

constexpr uint8_t kIndexInterior = 2;
constexpr uint8_t kTableInterior = 5;
constexpr uint8_t kIndexLeaf = 10;
constexpr uint8_t kTableLeaf = 13;

struct Cursor {
  std::string_view page;
  size_t at = 0;

  uint64_t Varint() {
    uint64_t value = 0;
    for (int i = 0; i < 9 && at < page.size(); ++i) {
      const auto byte = static_cast<uint8_t>(page[at++]);
      if (i == 8) return value << 8U | byte;
      value = value << 7U | (byte & 0x7FU);
      if (byte < 0x80) return value;
    }
    return value;
  }
  uint32_t Number(size_t width) {
    const uint32_t value = BigEndianNumber(page.substr(std::min(at, page.size()), width));
    at += width;
    return value;
  }
};

// How many bytes of an index cell stay in its page.
size_t LocalIndexPayload(size_t payload, size_t page_size) {
  const size_t most = (page_size - 12) * 64 / 255 - 23;
  if (payload <= most) return payload;
  const size_t least = (page_size - 12) * 32 / 255 - 23;
  const size_t wanted = least + (payload - least) % (page_size - 4);
  return wanted <= most ? wanted : least;
}

class Walk {
 public:
  explicit Walk(const Evidence& evidence) : evidence_(evidence), used_(2) {}

  std::vector<std::vector<Span>> Run() {
    in_schema_ = true;
    Tree(1);
    in_schema_ = false;
    for (size_t i = 0; i < roots_.size(); ++i) Tree(roots_[i]);
    for (auto& spans : used_) {
      std::sort(spans.begin(), spans.end(),
                [](const Span& left, const Span& right) { return left.begin < right.begin; });
    }
    return std::move(used_);
  }

 private:
  void Add(std::string_view page, size_t begin, size_t end) {
    const auto [file, offset] = evidence_.PlaceOf(page);
    used_[file].push_back({offset + begin, offset + end});
  }

  void Tree(uint32_t number) {
    const std::string_view page = evidence_.Current(number);
    if (page.empty() || !seen_.insert(number).second) return;
    const size_t start = number == 1 ? 100 : 0;
    const auto type = static_cast<uint8_t>(page[start]);
    const bool interior = type == kIndexInterior || type == kTableInterior;
    if (!interior && type != kIndexLeaf && type != kTableLeaf) return;
    const size_t cells = BigEndianNumber(page.substr(start + 3, 2));
    Cursor pointers{page, start + (interior ? 12U : 8U)};
    for (size_t i = 0; i < cells; ++i) Cell(type, {page, pointers.Number(2)});
    if (interior) Tree(BigEndianNumber(page.substr(start + 8, 4)));
  }

  void Cell(uint8_t type, Cursor cursor) {
    const size_t begin = cursor.at;
    if (type == kIndexInterior || type == kTableInterior) Tree(cursor.Number(4));
    if (type == kTableInterior) {
      cursor.Varint();
      return Add(cursor.page, begin, cursor.at);
    }
    const uint64_t payload = cursor.Varint();
    if (type == kTableLeaf) cursor.Varint();
    const size_t page_size = evidence_.page_size();
    const size_t local = type == kTableLeaf ? LocalPayload(payload, page_size)
                                            : LocalIndexPayload(payload, page_size);
    if (in_schema_ && type == kTableLeaf) AddRoot(cursor);
    cursor.at += local;
    if (local < payload) Chain(cursor.Number(4), payload - local);
    Add(cursor.page, begin, std::min(cursor.at, cursor.page.size()));
  }

  void Chain(uint32_t number, uint64_t left) {
    const size_t room = evidence_.page_size() - 4;
    while (left > 0) {
      const std::string_view page = evidence_.Current(number);
      if (page.empty()) return;
      const uint64_t taken = std::min<uint64_t>(left, room);
      Add(page, 0, static_cast<size_t>(taken) + 4);
      left -= taken;
      number = BigEndianNumber(page.substr(0, 4));
    }
  }

  // The fourth column of the table of tables is the first page of a tree.
  void AddRoot(Cursor cursor);

  const Evidence& evidence_;
  std::vector<std::vector<Span>> used_;
  std::vector<uint32_t> roots_;
  std::set<uint32_t> seen_;
  bool in_schema_ = false;
};

size_t SizeOf(uint64_t serial_type) {
  constexpr size_t kSizes[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0};
  return serial_type < 12 ? kSizes[serial_type] : static_cast<size_t>((serial_type - 12) / 2);
}

void Walk::AddRoot(Cursor cursor) {
  const size_t begin = cursor.at;
  const size_t header = static_cast<size_t>(cursor.Varint());
  size_t body = begin + header;
  for (int column = 0; column < 3; ++column) body += SizeOf(cursor.Varint());
  const uint64_t serial_type = cursor.Varint();
  if (serial_type == 0 || serial_type > 4) return;
  roots_.push_back(Cursor{cursor.page, body}.Number(SizeOf(serial_type)));
}

}  // namespace

std::vector<std::vector<Span>> UsedCells(const Evidence& evidence) { return Walk(evidence).Run(); }

}  // namespace recovery
