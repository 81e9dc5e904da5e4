#include "recovery/phone_table.h"

#include <strings.h>

#include <algorithm>

namespace recovery {
namespace {

bool SameName(const std::string& left, const std::string& right) {
  return strcasecmp(left.c_str(), right.c_str()) == 0;
}

std::string RowIdName(const Layout& layout) {
  if (layout.alias) return Quoted(layout.columns[*layout.alias].name);
  for (const char* name : {"rowid", "_rowid_", "oid"}) {
    if (std::none_of(layout.columns.begin(), layout.columns.end(),
                     [&](const Column& column) { return SameName(column.name, name); })) {
      return name;
    }
  }
  return "rowid";
}

std::string Names(const Layout& layout) {
  std::string names;
  for (const Column& column : layout.columns) {
    names += (names.empty() ? "" : ", ") + Quoted(column.name);
  }
  return names;
}

std::string Marks(size_t count) {
  std::string marks;
  for (size_t i = 0; i < count; ++i) marks += i == 0 ? "?" : ", ?";
  return marks;
}

bool IsUniqueFault(int code) {
  return code == SQLITE_CONSTRAINT_UNIQUE || code == SQLITE_CONSTRAINT_PRIMARYKEY ||
         code == SQLITE_CONSTRAINT_ROWID;
}

}  // namespace

Phone::Table::Table(Database& database, const TableFacts& table_facts, size_t live_index,
                    size_t first_index, size_t planned_rows, uint64_t seed)
    : db(database),
      facts(table_facts),
      live_layout(live_index),
      first(first_index),
      layout(table_facts.layouts[first_index]),
      planned(planned_rows),
      maker(table_facts, MixSeed(seed, table_facts.name), MixSeed(seed, "family"), planned_rows),
      row_id(RowIdName(layout)) {
  db.Run(layout.sql);
  Prepare();
}

void Phone::Table::Prepare() {
  const std::string into = "INTO " + Quoted(facts.name) + "(" + Names(layout) + ") VALUES(" +
                           Marks(layout.columns.size()) + ")";
  insert_.emplace(db.Prepare("INSERT " + into));
  insert_or_ignore_.emplace(db.Prepare("INSERT OR IGNORE " + into));
  if (layout.without_rowid) return;
  select_.emplace(db.Prepare("SELECT " + Names(layout) + " FROM " + Quoted(facts.name) + " WHERE " +
                             row_id + " = ?"));
  delete_.emplace(db.Prepare("DELETE FROM " + Quoted(facts.name) + " WHERE " + row_id + " = ?"));
}

bool Phone::Table::TryInsert(Statement& statement, const Row& row) {
  for (size_t i = 0; i < row.size(); ++i) statement.Bind(static_cast<int>(i) + 1, row[i]);
  try {
    statement.Step();
  } catch (...) {
    statement.Reset();
    throw;
  }
  statement.Reset();
  return db.Changes() > 0;
}

void Phone::Table::Insert() {
  if (full) return;
  constexpr int kTries = 30;
  bool done = false;
  Row row;
  for (int i = 0; i < kTries && !done; ++i) {
    row = maker.Next(layout);
    done = TryInsert(*insert_or_ignore_, row);
  }
  if (!done) {
    try {
      TryInsert(*insert_, row);
    } catch (const DatabaseError& fault) {
      if (!IsUniqueFault(fault.code())) throw;
      full = true;
      return;
    }
  }
  if (layout.without_rowid) return;
  const int64_t id = db.LastRowId();
  live.push_back(versions.size());
  versions.push_back({.row = Read(id), .row_id = id});
}

// The row as SQLite stores it, which may differ from what was handed in.
Row Phone::Table::Read(int64_t id) {
  select_->Bind(1, id);
  Row row;
  if (select_->Step()) {
    for (int i = 0; i < select_->columns(); ++i) row.push_back(select_->Column(i));
  }
  select_->Reset();
  return row;
}

void Phone::Table::Delete(std::vector<size_t> places) {
  if (layout.without_rowid || places.empty()) return;
  std::sort(places.begin(), places.end(), std::greater<>());
  places.erase(std::unique(places.begin(), places.end()), places.end());
  for (const size_t place : places) {
    if (place >= live.size()) continue;
    Version& version = versions[live[place]];
    delete_->Bind(1, version.row_id);
    delete_->Step();
    delete_->Reset();
    version.live = false;
    live.erase(live.begin() + static_cast<std::ptrdiff_t>(place));
  }
}

void Phone::Table::Update(size_t place) {
  if (layout.without_rowid) return;
  Version& old = versions[live[place]];
  const auto changes = maker.Update(layout, old.row);
  std::string text;
  for (const auto& [column, value] : changes) {
    if (layout.alias == column) continue;
    text += (text.empty() ? "" : ", ") + Quoted(layout.columns[column].name) + " = ?";
  }
  if (text.empty()) return;
  Statement statement = db.Prepare("UPDATE OR IGNORE " + Quoted(facts.name) + " SET " + text +
                                   " WHERE " + row_id + " = ?");
  int parameter = 0;
  for (const auto& [column, value] : changes) {
    if (layout.alias != column) statement.Bind(++parameter, value);
  }
  const int64_t id = old.row_id;
  statement.Bind(++parameter, id);
  statement.Step();
  if (db.Changes() == 0) return;
  old.live = false;
  old.former = true;
  live[place] = versions.size();
  versions.push_back({.row = Read(id), .row_id = id});
}

void Phone::Table::Upgrade() {
  if (first == live_layout) return;
  const Layout& wanted = facts.layouts[live_layout];
  for (size_t i = layout.columns.size(); i < wanted.columns.size(); ++i) {
    const Column& column = wanted.columns[i];
    std::string text = Quoted(column.name) + " " + column.declared_type;
    if (!column.default_sql.empty()) {
      text += (column.not_null ? " NOT NULL DEFAULT " : " DEFAULT ") + column.default_sql;
    }
    db.Run("ALTER TABLE " + Quoted(facts.name) + " ADD COLUMN " + text);
  }
  layout = wanted;
  Prepare();
}

void Phone::Table::RenewRowIds() {
  if (layout.without_rowid || layout.alias) return;
  std::vector<size_t> order = live;
  std::sort(order.begin(), order.end(), [this](size_t left, size_t right) {
    return versions[left].row_id < versions[right].row_id;
  });
  const auto rows = db.Rows("SELECT " + row_id + " FROM " + Quoted(facts.name) + " ORDER BY 1");
  for (size_t i = 0; i < order.size() && i < rows.size(); ++i) {
    versions[order[i]].row_id = std::get<int64_t>(rows[i][0]);
  }
}

TableTruth Phone::Table::Take() {
  TableTruth truth{facts.name, live_layout, facts.layouts[live_layout], versions, 0};
  if (layout.without_rowid) {
    for (Row& row : db.Rows("SELECT " + Names(layout) + " FROM " + Quoted(facts.name))) {
      truth.versions.push_back({.row = std::move(row)});
    }
  }
  return truth;
}

std::optional<size_t> Phone::Table::ColumnOf(const std::string& name) const {
  for (size_t i = 0; i < layout.columns.size(); ++i) {
    if (!name.empty() && layout.columns[i].name == name) return i;
  }
  return std::nullopt;
}

Value Phone::Table::ValueAt(size_t place, size_t column) const {
  const Version& version = versions[live[place]];
  if (layout.alias == column) return version.row_id;
  return column < version.row.size() ? version.row[column] : Value{};
}

}  // namespace recovery
