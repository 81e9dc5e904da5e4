#pragma once

#include <cstdint>
#include <string>

#include "differential/application.h"

namespace differential {

// A database and its write-ahead log, byte for byte.
struct Source {
  std::string db;
  std::string log;
};

// How a source is made.
struct SourceShape {
  int page_size = 1024;
  int reserved = 0;
  std::string encoding = "UTF-8";
  bool with_log = false;
  size_t rows = 60;        // of each table
  size_t older_rows = 15;  // of each earlier layout, in tables that were dropped
};

// Writes the application's tables, deletes a part of the rows, and reads the files back.
Source MakeSource(Dice& dice, const Application& application, const SourceShape& shape);

// Bytes of a page, or of a piece of one, that nobody wrote on purpose.
std::string RandomPiece(Dice& dice, size_t length, const std::string& like);

// Appends `count` pages whose first byte says that they are swept, or not.
void AppendRandomPages(Dice& dice, Source& source, size_t count);

// Writes records of the application's layouts at random places, with long and over-long varints,
// with and without a cell head, with overflow pages that exist or do not. Nothing in front of
// `from` changes: without the first page there is no schema and mostly nothing to find.
void PlantRecords(Dice& dice, const Application& application, std::string& bytes, size_t count,
                  size_t from);

// Changes single bytes and copies pieces to other places.
void Damage(Dice& dice, std::string& bytes, size_t times, size_t from);

// The page size as the header states it.
size_t PageSizeOf(const std::string& db);

void PutBigEndian(std::string& bytes, size_t at, uint64_t value, size_t width);

}  // namespace differential
