#pragma once

#include <cstdint>

// HOT CODE. Whether the bytes are UTF-8 of which Utf8BadSequenceLength refuses no sequence, so that
// reading them as text keeps every byte.
bool IsCleanText(const uint8_t* bytes, uint32_t length);
