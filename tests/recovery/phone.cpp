#include "recovery/phone.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "recovery/phone_table.h"

namespace recovery {
namespace {

constexpr size_t kLeastRows = 12;
constexpr size_t kBatch = 12;  // rows of the busiest table in one transaction

// The oldest layout whose columns the layout begins with.
size_t OldestPrefix(const TableFacts& table, size_t layout) {
  const auto& live = table.layouts[layout].columns;
  for (size_t i = 0; i < layout; ++i) {
    const auto& older = table.layouts[i].columns;
    if (older.size() < live.size() &&
        std::equal(older.begin(), older.end(), live.begin(),
                   [](const Column& a, const Column& b) { return a.name == b.name; }) &&
        table.layouts[i].alias == table.layouts[layout].alias) {
      return i;
    }
  }
  return layout;
}

std::string Word(int64_t number, std::initializer_list<const char*> words) {
  return number >= 0 && number < static_cast<int64_t>(words.size()) ? *(words.begin() + number)
                                                                    : std::to_string(number);
}

}  // namespace

Phone::Phone(const DatabaseFacts& facts, const PhoneSettings& settings)
    : facts_(facts), path_(settings.path), random_(MixSeed(settings.seed, "phone")) {
  Open(settings);
  neighbours_.emplace(*db_, MixSeed(settings.seed, "neighbours"));
  for (size_t i = 0; i < facts.tables.size(); ++i) {
    AddTable(facts.tables[i], settings);
    if (i == 0) neighbours_->Create();
  }
}

Phone::~Phone() = default;

// SQLite of some systems zeroes deleted bytes by default, so what was set is read back.
void Phone::Open(const PhoneSettings& settings) {
  db_.emplace(path_);
  const std::string secure =
      settings.secure_delete.empty() ? facts_.secure_delete : settings.secure_delete;
  const std::string vacuum =
      settings.auto_vacuum.empty() ? facts_.auto_vacuum : settings.auto_vacuum;
  db_->Run("PRAGMA page_size = 4096; PRAGMA encoding = '" + facts_.encoding +
           "'; PRAGMA auto_vacuum = " + vacuum + "; PRAGMA secure_delete = " + secure +
           "; PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY");
  if (Word(db_->Number("PRAGMA secure_delete"), {"off", "on", "fast"}) != secure ||
      Word(db_->Number("PRAGMA auto_vacuum"), {"none", "full", "incremental"}) != vacuum) {
    throw std::runtime_error(path_ + ": SQLite did not take secure_delete or auto_vacuum");
  }
}

void Phone::AddTable(const TableFacts& facts, const PhoneSettings& settings) {
  const size_t live = DatabaseFacts::LayoutOf(facts, settings.generation);
  const size_t first = settings.upgraded ? OldestPrefix(facts, live) : live;
  system_version_ = std::max(system_version_, facts.layouts[live].version);
  const auto wanted = static_cast<size_t>(static_cast<double>(settings.rows) * facts.share);
  tables_.push_back(std::make_unique<Table>(*db_, facts, live, first, std::max(wanted, kLeastRows),
                                            settings.seed));
}

bool Phone::CanUpgrade() const {
  return std::any_of(tables_.begin(), tables_.end(),
                     [](const auto& table) { return table->first != table->live_layout; });
}

// Tables take turns, so that their pages stand mixed in the file.
void Phone::Insert(double share) {
  size_t most = 1;
  for (const auto& table : tables_) most = std::max(most, table->planned);
  const auto steps = static_cast<size_t>(share * static_cast<double>(most)) / kBatch + 1;
  for (size_t step = 1; step <= steps; ++step) {
    db_->Run("BEGIN");
    for (const auto& table : tables_) {
      const double due = share * static_cast<double>(table->planned) / static_cast<double>(steps);
      for (table->owed += due; table->owed >= 1; table->owed -= 1) table->Insert();
    }
    if (step % 4 == 0) neighbours_->Write(8);
    db_->Run("COMMIT");
  }
  neighbours_->FillEnd();
}

// A few rows of each table go in one transaction.
void Phone::DeleteSingles(double share) {
  std::vector<size_t> counts;
  for (const auto& table : tables_) {
    counts.push_back(
        static_cast<size_t>(share * static_cast<double>(table->live.size()) + random_.Unit()));
  }
  const size_t most = *std::max_element(counts.begin(), counts.end());
  for (size_t done = 0; done < most; done += kBatch) {
    db_->Run("BEGIN");
    for (size_t i = 0; i < tables_.size(); ++i) {
      std::vector<size_t> places;
      for (size_t n = done; n < std::min(counts[i], done + kBatch); ++n) {
        places.push_back(random_.Index(tables_[i]->live.size()));
      }
      tables_[i]->Delete(places);
    }
    db_->Run("COMMIT");
  }
}

void Phone::DeleteConversation() {
  db_->Run("BEGIN");
  for (const auto& table : tables_) {
    const std::optional<size_t> column = table->ColumnOf(table->facts.conversation);
    if (!column || table->live.empty()) continue;
    const Value value = table->ValueAt(random_.Index(table->live.size()), *column);
    std::vector<size_t> places;
    for (size_t i = 0; i < table->live.size(); ++i) {
      if (table->ValueAt(i, *column) == value) places.push_back(i);
    }
    // A conversation that holds nearly everything would leave nothing to look at.
    if (places.size() * 2 > table->live.size()) places.resize(table->live.size() / 2);
    table->Delete(places);
  }
  db_->Run("COMMIT");
}

void Phone::DeleteOldest(double share) {
  db_->Run("BEGIN");
  for (const auto& table : tables_) {
    if (!table->ColumnOf(table->facts.age)) continue;
    // The list of live rows is in the order of their insertion.
    const auto count = static_cast<size_t>(share * static_cast<double>(table->live.size()));
    std::vector<size_t> places;
    for (size_t i = 0; i < count; ++i) places.push_back(i);
    table->Delete(places);
  }
  db_->Run("COMMIT");
}

void Phone::Update(double share) {
  db_->Run("BEGIN");
  for (const auto& table : tables_) {
    if (table->facts.update.empty() || table->live.empty()) continue;
    const auto count = static_cast<size_t>(share * static_cast<double>(table->live.size()));
    for (size_t i = 0; i < count; ++i) table->Update(random_.Index(table->live.size()));
  }
  db_->Run("COMMIT");
}

void Phone::Upgrade() {
  db_->Run("BEGIN");
  for (const auto& table : tables_) table->Upgrade();
  db_->Run("COMMIT");
}

void Phone::Vacuum() {
  db_->Run("VACUUM");
  for (const auto& table : tables_) table->RenewRowIds();
}

// The application's tables stand in the main file before the log begins, as its first pages do on
// a phone.
void Phone::StartLog() { db_->Run("PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 0"); }

void Phone::Checkpoint() { db_->Run("PRAGMA wal_checkpoint(RESTART)"); }

DatabaseTruth Phone::Take(const std::string& path) {
  namespace fs = std::filesystem;
  neighbours_->FillEnd();
  fs::copy_file(path_, path, fs::copy_options::overwrite_existing);
  if (fs::exists(path_ + "-wal")) {
    fs::copy_file(path_ + "-wal", path + "-wal", fs::copy_options::overwrite_existing);
  }
  DatabaseTruth truth{path, system_version_, {}};
  for (const auto& table : tables_) truth.tables.push_back(table->Take());
  MarkStanding(truth, facts_.encoding);
  for (const TableTruth& table : truth.tables) {
    const auto live =
        static_cast<size_t>(std::count_if(table.versions.begin(), table.versions.end(),
                                          [](const Version& version) { return version.live; }));
    if (!table.layout.without_rowid && table.live_standing != live) {
      throw std::runtime_error(path + ": " + table.name + ": only " +
                               std::to_string(table.live_standing) + " of " + std::to_string(live) +
                               " live rows were found in the bytes");
    }
  }
  return truth;
}

}  // namespace recovery
