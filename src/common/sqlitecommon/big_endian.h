#pragma once

#include <cstdint>

// Composes the big-endian integers of the database formats out of single bytes.
constexpr uint32_t BigEndian16(uint8_t high, uint8_t low) {
  return (uint32_t{high} << 8) | uint32_t{low};
}

constexpr uint32_t BigEndian32(uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3) {
  return (BigEndian16(b0, b1) << 16) | BigEndian16(b2, b3);
}
