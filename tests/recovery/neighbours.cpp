#include "recovery/neighbours.h"

#include <string>

#include "recovery/blob_maker.h"
#include "recovery/text_maker.h"

namespace recovery {
namespace {

// The pages of a small database of another application.
std::string ForeignPages(Random& random) {
  Database db(":memory:");
  db.Run(
      "CREATE TABLE tile(id INTEGER PRIMARY KEY, zoom REAL, name TEXT, server TEXT, size INTEGER)");
  db.Run("BEGIN");
  Statement insert = db.Prepare("INSERT INTO tile VALUES(NULL, ?, ?, ?, ?)");
  for (int i = 0; i < 150; ++i) {
    insert.Bind(1, random.Unit());
    insert.Bind(2, MakeWords(random, 1, 3));
    insert.Bind(3, MakeUrl(random));
    insert.Bind(4, random.Between(100, 90000));
    insert.Step();
    insert.Reset();
  }
  db.Run("COMMIT");
  return db.Serialized();
}

}  // namespace

void Neighbours::Create() {
  db_.Run(
      "CREATE TABLE zz_download(id INTEGER PRIMARY KEY, source TEXT, target TEXT, part REAL,"
      " bytes_done INTEGER, note TEXT);"
      "CREATE TABLE zz_cache(id INTEGER PRIMARY KEY, content BLOB)");
}

void Neighbours::Write(size_t rows) {
  Statement insert = db_.Prepare("INSERT INTO zz_download VALUES(NULL, ?, ?, ?, ?, ?)");
  for (size_t i = 0; i < rows; ++i) {
    insert.Bind(1, MakeUrl(random_));
    insert.Bind(2, MakePath(random_));
    insert.Bind(3, random_.Unit());
    insert.Bind(4, random_.Between(0, 5000000));
    insert.Bind(5, random_.Chance(0.3) ? Value{MakeWords(random_, 1, 9)} : Value{});
    insert.Step();
    insert.Reset();
  }
  const std::string pages = ForeignPages(random_);
  Statement cache = db_.Prepare("INSERT INTO zz_cache VALUES(NULL, ?)");
  cache.Bind(1, Blob{pages.substr(0, 4096 * static_cast<size_t>(random_.Between(1, 3)))});
  cache.Step();
  db_.Run("DELETE FROM zz_download WHERE id % 5 = " + std::to_string(random_.Below(5)) +
          " AND id < (SELECT max(id) - 20 FROM zz_download);"
          "DELETE FROM zz_cache WHERE id % 4 = 0");
}

void Neighbours::FillEnd() {
  if (db_.Number("PRAGMA freelist_count") > 0) return;  // would be filled instead of the end
  db_.Run("CREATE TABLE IF NOT EXISTS zz_end(id INTEGER PRIMARY KEY, content BLOB)");
  const int64_t pages = db_.Number("PRAGMA page_count");
  Statement insert = db_.Prepare("INSERT INTO zz_end VALUES(NULL, ?)");
  while (db_.Number("PRAGMA page_count") < pages + 2) {
    insert.Bind(1, MakeBlob(random_, 900, 1000));
    insert.Step();
    insert.Reset();
  }
}

}  // namespace recovery
