#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "recovery/facts.h"
#include "recovery/value.h"

namespace recovery {

enum class TextEncoding { kUtf8, kUtf16le, kUtf16be };

// What a column's declared type makes of a whole-number real: stored as an integer or not.
bool HasRealAffinity(const std::string& declared_type);

// A record as SQLite writes it into a cell of a file of schema format 4.
struct RecordBytes {
  std::string payload;  // header and body
  size_t skipped = 0;   // the header's length and, where the first column is the row id, its type

  // What has to stand for a reader that needs no head: the serial types and the body.
  std::string Tail() const { return payload.substr(skipped); }
};

// `row` may be shorter than the layout: it was written before columns were added.
RecordBytes EncodeRecord(const Layout& layout, const Row& row, TextEncoding encoding);

// How many bytes of a payload stay in a table leaf whose page has no reserved bytes.
size_t LocalPayload(size_t payload, size_t page_size);

// The value of a varint's bytes.
std::string Varint(uint64_t value);

}  // namespace recovery
