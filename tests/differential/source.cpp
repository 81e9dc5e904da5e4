#include "differential/source.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "support/scan_fixture.h"
#include "support/sqlite_maker.h"
#include "support/temp_folder.h"

namespace differential {

namespace {

// Space at the end of each page is set aside before the first page is written.
void ReserveBytes(const std::string& path, int page_size, int reserved) {
  sqlite3* handle = nullptr;
  int wanted = reserved;
  const std::string sql = "PRAGMA page_size=" + std::to_string(page_size) + "; VACUUM";
  const bool done =
      sqlite3_open(path.c_str(), &handle) == SQLITE_OK &&
      sqlite3_exec(handle, "PRAGMA synchronous=OFF", nullptr, nullptr, nullptr) == SQLITE_OK &&
      sqlite3_file_control(handle, nullptr, SQLITE_FCNTL_RESERVE_BYTES, &wanted) == SQLITE_OK &&
      sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  sqlite3_close(handle);
  if (!done) throw std::runtime_error("no bytes reserved");
}

void InsertRows(Dice& dice, SqliteMaker& db, const std::string& table,
                const std::vector<AppColumn>& columns, size_t rows, bool utf8) {
  db.Run("BEGIN");
  for (size_t i = 0; i < rows; ++i) {
    std::string sql = "INSERT INTO " + table + " VALUES(";
    for (const AppColumn& column : columns) {
      if (&column != &columns.front()) sql += ",";
      const Value value = RandomValue(dice, column.kind);
      const bool is_text = value.serial_type >= 13 && value.serial_type % 2 == 1;
      const bool by_literal = !utf8 && is_text && column.kind != Kind::kDirty;
      sql += by_literal ? SqlText(value.bytes) : ToSql(value);
    }
    db.Run(sql + ")");
  }
  db.Run("COMMIT");
}

void DeleteSome(Dice& dice, SqliteMaker& db, const std::string& table) {
  const std::string part =
      dice.Pick({"rowid % 3 = 0", "rowid % 2 = 1", "rowid > 20", "rowid < 30"});
  db.Run("DELETE FROM " + table + " WHERE " + part);
}

void FillDatabase(Dice& dice, SqliteMaker& db, const Application& application,
                  const SourceShape& shape) {
  const bool utf8 = shape.encoding == "UTF-8";
  for (const AppTable& table : application.tables) {
    for (const auto& columns : table.older) {
      db.Run(CreateText(table.name, columns));
      InsertRows(dice, db, table.name, columns, shape.older_rows, utf8);
      db.Run("DROP TABLE " + table.name);
    }
  }
  for (const AppTable& table : application.tables) {
    db.Run(CreateText(table.name, table.columns));
    if (dice.Chance(20)) {
      db.Run("CREATE INDEX i_" + table.name + " ON " + table.name + "(" +
             table.columns.back().name + ")");
    }
  }
  for (const size_t part : {shape.rows / 2, shape.rows - shape.rows / 2}) {
    for (const AppTable& table : application.tables) {
      InsertRows(dice, db, table.name, table.columns, part, utf8);
      DeleteSome(dice, db, table.name);
    }
    // The next transactions go to the start of the log, and frames of this generation stay behind.
    if (shape.with_log) db.Rows("PRAGMA wal_checkpoint(RESTART)");
  }
  if (!shape.with_log) return;
  db.Run("CREATE TABLE last_change(a)");  // puts the first page into the log
  for (const AppTable& table : application.tables) {
    InsertRows(dice, db, table.name, table.columns, shape.rows / 4, utf8);
  }
}

// Whether the page of a database around `at`, or the one behind, tells how tables are made. Without
// a schema there is mostly nothing to find.
bool IsSchemaPage(const std::string& bytes, size_t at) {
  if (bytes.compare(0, 6, "SQLite") != 0) return false;
  const size_t page_size = PageSizeOf(bytes);
  const std::string pages = bytes.substr(at / page_size * page_size, 2 * page_size);
  return pages.find("CREATE ") != std::string::npos || pages.find(" TEXT, ") != std::string::npos ||
         pages.find(" INTEGER, ") != std::string::npos;
}

}  // namespace

Source MakeSource(Dice& dice, const Application& application, const SourceShape& shape) {
  const TempFolder folder;
  const std::string path = folder.File("source.db");
  if (shape.reserved != 0) ReserveBytes(path, shape.page_size, shape.reserved);
  {
    SqliteMaker db(path);
    db.Run("PRAGMA page_size=" + std::to_string(shape.page_size) + "; PRAGMA encoding='" +
           shape.encoding + "'");
    if (shape.with_log) db.StartLog();
    FillDatabase(dice, db, application, shape);
  }
  Source source{ReadBytes(path), {}};
  if (std::filesystem::exists(path + "-wal")) source.log = ReadBytes(path + "-wal");
  return source;
}

std::string RandomPiece(Dice& dice, size_t length, const std::string& like) {
  std::string piece;
  const size_t style = dice.Below(7);
  while (piece.size() < length) {
    switch (style) {
      case 0:
        piece += dice.Byte();
        break;
      case 1:
        piece += static_cast<char>(dice.Below(15));
        break;
      case 2:
        piece += RandomText(dice, 8);
        break;
      case 3:
        piece += std::string(1 + dice.Below(90), '\0') + static_cast<char>(dice.Below(60));
        break;
      case 4:
        piece += dice.Pick({"\x80", "\x81", "\x82", "\xFF", "\x05", "\x01", "\x17", "\x0C"});
        break;
      case 5:
        piece += std::string(dice.Below(3), '\0') + static_cast<char>(dice.Below(128));
        break;
      default:
        piece += like.substr(dice.Below(like.size()), 1 + dice.Below(300));
        break;
    }
  }
  piece.resize(length);
  return piece;
}

void AppendRandomPages(Dice& dice, Source& source, size_t count) {
  const size_t page_size = PageSizeOf(source.db);
  for (size_t i = 0; i < count; ++i) {
    std::string page = RandomPiece(dice, page_size, source.db);
    page[0] = dice.Pick({'\x0D', '\x0D', '\x05', '\0', '\x0A'});
    source.db += page;
  }
}

void PlantRecords(Dice& dice, const Application& application, std::string& bytes, size_t count,
                  size_t from) {
  for (size_t i = 0; i < count; ++i) {
    const AppTable& table = dice.Pick(application.tables);
    const std::vector<AppColumn>& columns =
        table.older.empty() || dice.Chance(50) ? table.columns : dice.Pick(table.older);
    const bool padded = dice.Chance(40);
    std::string types;
    std::string body;
    for (const AppColumn& column : columns) {
      const Value value = RandomValue(dice, column.kind, dice.Pick({0, 15, 60}));
      types += Varint(value.serial_type, padded && dice.Chance(20) ? 1 + dice.Below(8) : 0);
      body += value.bytes;
    }
    const std::string header = Varint(types.size() + 1) + types;
    std::string cell = header + body;
    if (dice.Chance(60)) {
      cell = Varint(cell.size()) + Varint(dice.Word() >> (1 + dice.Below(63))) + cell;
    }
    if (cell.size() > 400 && dice.Chance(70)) {
      cell.resize(200 + dice.Below(200));
      std::string next(4, '\0');
      PutBigEndian(next, 0, dice.Below(1 + 2 * (bytes.size() / 512)), 4);
      cell += next;
    }
    if (bytes.size() <= from) return;
    const size_t at = from + dice.Below(bytes.size() - from);
    if (IsSchemaPage(bytes, at)) continue;
    bytes.replace(at, std::min(cell.size(), bytes.size() - at), cell, 0,
                  std::min(cell.size(), bytes.size() - at));
  }
}

void Damage(Dice& dice, std::string& bytes, size_t times, size_t from) {
  if (bytes.size() <= from) return;
  const size_t room = bytes.size() - from;
  for (size_t i = 0; i < times; ++i) {
    const size_t at = from + dice.Below(room);
    if (from > 100 && IsSchemaPage(bytes, at)) continue;
    if (dice.Chance(60)) {
      bytes[at] =
          dice.Chance(50) ? dice.Byte() : static_cast<char>(bytes[at] ^ (1 << dice.Below(8)));
      continue;
    }
    const size_t length = std::min(1 + dice.Below(200), bytes.size() - at);
    const std::string piece = RandomPiece(dice, length, bytes.substr(from));
    bytes.replace(at, length, piece);
  }
}

size_t PageSizeOf(const std::string& db) {
  const uint32_t stored = BigEndianAt(db, 16, 2);
  return stored == 1 ? 65536 : stored;
}

void PutBigEndian(std::string& bytes, size_t at, uint64_t value, size_t width) {
  for (size_t i = 0; i < width; ++i) {
    bytes.at(at + i) = static_cast<char>(value >> (8 * (width - 1 - i)));
  }
}

}  // namespace differential
