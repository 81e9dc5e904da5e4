#include "storager/row_feed.h"

#include <memory>
#include <utility>

namespace {

// No result table is called so: their names are not quoted.
constexpr char kModuleName[] = "vexa rows";

std::string NumberedColumns(size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += (i == 0 ? "c" : ",c") + std::to_string(i);
  return text;
}

void GiveValue(sqlite3_context* context, const BoundValue& value) {
  switch (value.kind) {
    case kFieldInteger:
      sqlite3_result_int64(context, value.integer);
      break;
    case kFieldReal:
      sqlite3_result_double(context, value.real);
      break;
    case kFieldText:
      sqlite3_result_text(context, reinterpret_cast<const char*>(value.bytes),
                          static_cast<int>(value.size), SQLITE_STATIC);
      break;
    case kFieldBlob:
      // A value of no bytes has nothing to point to, and a bound one becomes NULL.
      if (value.size == 0) break;
      sqlite3_result_blob(context, value.bytes, static_cast<int>(value.size), SQLITE_STATIC);
      break;
    default:
      break;  // NULL
  }
}

struct FeedTable {
  sqlite3_vtab base;
  RowFeed* feed;
};

struct FeedCursor {
  sqlite3_vtab_cursor base;
  RowFeed* feed;
};

RowFeed& FeedOf(sqlite3_vtab_cursor* cursor) {
  return *reinterpret_cast<FeedCursor*>(cursor)->feed;
}

}  // namespace

// The operations that SQLite calls. It owns the table and cursor records between their creation
// and their end.
struct RowFeedModule {
  static int Connect(sqlite3* connection, void* feed, int, const char* const*, sqlite3_vtab** out,
                     char**) {
    auto* own = static_cast<RowFeed*>(feed);
    const int code = sqlite3_declare_vtab(connection, own->declaration_.c_str());
    if (code != SQLITE_OK) return code;
    auto table = std::make_unique<FeedTable>();
    table->base = {};
    table->feed = own;
    *out = &table.release()->base;
    return SQLITE_OK;
  }

  static int Disconnect(sqlite3_vtab* table) {
    const std::unique_ptr<FeedTable> owned(reinterpret_cast<FeedTable*>(table));
    return SQLITE_OK;
  }

  static int BestIndex(sqlite3_vtab*, sqlite3_index_info*) { return SQLITE_OK; }

  static int Open(sqlite3_vtab* table, sqlite3_vtab_cursor** out) {
    auto cursor = std::make_unique<FeedCursor>();
    cursor->base = {};
    cursor->feed = reinterpret_cast<FeedTable*>(table)->feed;
    *out = &cursor.release()->base;
    return SQLITE_OK;
  }

  static int Close(sqlite3_vtab_cursor* cursor) {
    const std::unique_ptr<FeedCursor> owned(reinterpret_cast<FeedCursor*>(cursor));
    return SQLITE_OK;
  }

  static int Filter(sqlite3_vtab_cursor* cursor, int, const char*, int, sqlite3_value**) {
    return Next(cursor);
  }

  // Nothing may be thrown through SQLite: the rows end there.
  static int Next(sqlite3_vtab_cursor* cursor) {
    RowFeed& feed = FeedOf(cursor);
    try {
      feed.row_ = feed.rows_ == nullptr ? nullptr : feed.rows_->Next();
    } catch (...) {
      feed.row_ = nullptr;
      feed.thrown_ = std::current_exception();
    }
    return SQLITE_OK;
  }

  static int AtEnd(sqlite3_vtab_cursor* cursor) { return FeedOf(cursor).row_ == nullptr ? 1 : 0; }

  static int Column(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int index) {
    GiveValue(context, FeedOf(cursor).row_[index]);
    return SQLITE_OK;
  }

  static int RowId(sqlite3_vtab_cursor*, sqlite3_int64* out) {
    *out = 0;
    return SQLITE_OK;
  }

  static sqlite3_module Make() {
    sqlite3_module module = {};
    module.xConnect = Connect;
    module.xDisconnect = Disconnect;
    module.xBestIndex = BestIndex;
    module.xOpen = Open;
    module.xClose = Close;
    module.xFilter = Filter;
    module.xNext = Next;
    module.xEof = AtEnd;
    module.xColumn = Column;
    module.xRowid = RowId;
    return module;
  }
};

RowFeed::RowFeed(sqlite3* connection, const std::string& table, const std::string& columns,
                 size_t count)
    : connection_(connection), declaration_("create table x(" + NumberedColumns(count) + ")") {
  static const sqlite3_module kModule = RowFeedModule::Make();
  if (sqlite3_create_module(connection, kModuleName, &kModule, this) != SQLITE_OK) return;
  insert_.Prepare(connection, "insert or ignore into " + table + "(" + columns + ") select " +
                                  NumberedColumns(count) + " from \"" + kModuleName + "\"");
}

RowFeed::~RowFeed() {
  insert_.Finalize();
  sqlite3_create_module(connection_, kModuleName, nullptr, nullptr);
}

int RowFeed::Insert(RowSource& rows) {
  rows_ = &rows;
  const int result = insert_.Step();
  insert_.Reset();
  rows_ = nullptr;
  row_ = nullptr;
  if (thrown_ != nullptr) std::rethrow_exception(std::exchange(thrown_, nullptr));
  return result;
}
