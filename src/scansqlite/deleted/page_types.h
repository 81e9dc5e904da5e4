#pragma once

#include <cstdint>

// First byte of a b-tree page. https://www.sqlite.org/fileformat2.html#b_tree_pages
inline constexpr uint8_t kTableInteriorPage = 5;
inline constexpr uint8_t kTableLeafPage = 13;

// Bytes of a page that the walk of the main file passes over: the header of a leaf page.
inline constexpr uint64_t kLeafHeaderBytes = 8;

// Whether the pages of a first byte are swept. 0 is no page type at all: free and overflow pages
// usually begin with it.
inline bool IsSweptPage(uint8_t first_byte) {
  return first_byte == 0 || first_byte == kTableInteriorPage || first_byte == kTableLeafPage;
}
