#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recovery/database.h"
#include "recovery/facts.h"
#include "recovery/neighbours.h"
#include "recovery/random.h"
#include "recovery/row_maker.h"
#include "recovery/truth.h"

namespace recovery {

// How a database is made.
struct PhoneSettings {
  std::string path;
  size_t generation = 0;
  size_t rows = 300;  // of the busiest table
  uint64_t seed = 1;
  std::string secure_delete;  // empty: as in the facts
  std::string auto_vacuum;    // empty: as in the facts
  bool upgraded = false;      // begin with the oldest layouts that the live ones grew out of
};

// One application database at work on a phone: every call does through SQLite what the application
// does, and keeps book of it.
class Phone {
 public:
  Phone(const DatabaseFacts& facts, const PhoneSettings& settings);
  ~Phone();
  Phone(const Phone&) = delete;
  Phone& operator=(const Phone&) = delete;

  // Whether some table begins with an older layout.
  bool CanUpgrade() const;

  // Shares are of the planned rows (Insert) or of the live ones. All tables take part.
  void Insert(double share);
  void DeleteSingles(double share);
  void DeleteConversation();
  void DeleteOldest(double share);
  void Update(double share);

  void Upgrade();
  void Vacuum();
  void StartLog();
  void Checkpoint();

  // Copies database and log as they stand, and says what is true of the copy.
  DatabaseTruth Take(const std::string& path);

 private:
  struct Table;

  void Open(const PhoneSettings& settings);
  void AddTable(const TableFacts& facts, const PhoneSettings& settings);

  const DatabaseFacts& facts_;
  std::string path_;
  Random random_;
  int system_version_ = 0;
  std::optional<Database> db_;
  std::optional<Neighbours> neighbours_;
  std::vector<std::unique_ptr<Table>> tables_;
};

}  // namespace recovery
