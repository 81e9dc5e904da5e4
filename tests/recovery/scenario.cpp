#include "recovery/scenario.h"

#include <filesystem>
#include <map>

#include "recovery/phone.h"

namespace recovery {
namespace {

// Rows come, single ones go, some change.
void LiveOn(Phone& phone, int rounds) {
  for (int i = 0; i < rounds; ++i) {
    phone.Insert(0.07);
    phone.DeleteSingles(0.06);
    phone.Update(0.05);
  }
}

void Clean(Phone& phone, bool log) {
  phone.Insert(0.7);
  if (log) phone.StartLog();
  phone.Insert(0.3);
}

// With a log it holds three generations at the end: the newest, and what stands behind it of the
// two that were folded into the database.
void Mixed(Phone& phone, bool log) {
  phone.Insert(0.45);
  phone.DeleteSingles(0.03);
  if (log) phone.StartLog();
  LiveOn(phone, 3);
  phone.DeleteConversation();
  if (log) phone.Checkpoint();
  for (int i = 0; i < 2; ++i) {
    phone.Insert(0.07);
    phone.DeleteOldest(0.08);
    phone.DeleteSingles(0.03);
  }
  if (log) phone.Checkpoint();
  phone.Insert(0.05);
  phone.Update(0.03);
  phone.DeleteConversation();
  phone.DeleteSingles(0.04);
}

void Upgraded(Phone& phone, bool log) {
  phone.Insert(0.5);
  phone.DeleteSingles(0.1);
  phone.DeleteConversation();
  phone.Update(0.03);
  if (log) phone.StartLog();
  phone.Upgrade();
  LiveOn(phone, 3);
  if (log) phone.Checkpoint();
  phone.Insert(0.2);
  phone.DeleteOldest(0.05);
  phone.DeleteSingles(0.06);
}

void Vacuumed(Phone& phone) {
  Mixed(phone, false);
  phone.Vacuum();
  phone.DeleteSingles(0.1);
  phone.DeleteConversation();
  phone.Insert(0.03);
}

}  // namespace

std::optional<DatabaseTruth> MakeDatabase(const Facts& facts, const DatabaseFacts& database,
                                          const ScenarioSettings& settings) {
  namespace fs = std::filesystem;
  const std::string& scenario = settings.scenario;
  const fs::path making = fs::path(settings.folder) / "making";
  fs::remove_all(making);
  fs::create_directories(making);

  PhoneSettings phone_settings;
  phone_settings.path = (making / database.file).string();
  phone_settings.generation = settings.generation;
  phone_settings.rows = settings.rows;
  phone_settings.seed = MixSeed(settings.seed, facts.Name() + '/' + database.file + '/' + scenario +
                                                   '/' + std::to_string(settings.generation));
  phone_settings.upgraded = scenario == "upgrade";
  if (scenario == "auto_vacuum") phone_settings.auto_vacuum = "full";
  if (scenario == "secure_delete") phone_settings.secure_delete = "on";

  std::optional<DatabaseTruth> truth;
  {
    Phone phone(database, phone_settings);
    if (phone_settings.upgraded && !phone.CanUpgrade()) return std::nullopt;
    if (scenario == kClean) {
      Clean(phone, database.wal);
    } else if (scenario == "upgrade") {
      Upgraded(phone, database.wal);
    } else if (scenario == "vacuum") {
      Vacuumed(phone);
    } else {
      Mixed(phone, database.wal && scenario != "auto_vacuum");
    }
    truth = phone.Take((fs::path(settings.folder) / database.file).string());
  }
  fs::remove_all(making);
  return truth;
}

}  // namespace recovery
