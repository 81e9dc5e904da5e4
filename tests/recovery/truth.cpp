#include "recovery/truth.h"

#include <map>
#include <unordered_set>
#include <vector>

#include "recovery/evidence.h"
#include "recovery/record_bytes.h"
#include "recovery/standing_search.h"
#include "recovery/used_cells.h"

namespace recovery {
namespace {

TextEncoding EncodingOf(const std::string& name) {
  if (name == "UTF-16le") return TextEncoding::kUtf16le;
  return name == "UTF-16be" ? TextEncoding::kUtf16be : TextEncoding::kUtf8;
}

// Where in the list of wanted records a version stands.
struct Place {
  TableTruth* table = nullptr;
  Version* version = nullptr;
};

}  // namespace

void MarkStanding(DatabaseTruth& truth, const std::string& encoding_name) {
  const Evidence evidence(truth.path);
  const TextEncoding encoding = EncodingOf(encoding_name);
  std::vector<Wanted> wanted;
  std::vector<Place> places;
  for (TableTruth& table : truth.tables) {
    // Records of a table without row ids stand in another order in an index.
    if (table.layout.without_rowid) continue;
    for (Version& version : table.versions) {
      wanted.push_back({EncodeRecord(table.layout, version.row, encoding), version.live});
      places.push_back({&table, &version});
    }
  }
  const std::vector<Standing> standings = FindStanding(evidence, wanted, UsedCells(evidence));

  std::map<const TableTruth*, std::unordered_set<std::string>> live;
  for (size_t i = 0; i < wanted.size(); ++i) {
    if (!places[i].version->live) continue;
    places[i].table->live_standing += standings[i].found ? 1 : 0;
    live[places[i].table].insert(wanted[i].record.Tail());
  }
  for (size_t i = 0; i < wanted.size(); ++i) {
    Version& version = *places[i].version;
    if (version.live) continue;
    version.standing =
        standings[i].found && !live[places[i].table].contains(wanted[i].record.Tail());
    version.overflows = standings[i].overflows;
    version.in_main = standings[i].in_main;
  }
}

}  // namespace recovery
