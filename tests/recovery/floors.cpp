#include "recovery/floors.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <set>
#include <stdexcept>

namespace recovery {
namespace {

constexpr const char* kLayoutMark = " | ";

class Reader {
 public:
  explicit Reader(const std::string& path) : path_(path) {}

  std::map<std::string, Floor> Read() {
    const YAML::Node root = YAML::LoadFile(path_);
    for (const auto& application : root) {
      for (const auto& table : application.second) {
        const auto name = application.first.as<std::string>() + '/' + table.first.as<std::string>();
        ReadEntry(name, table.second, true, "");
      }
    }
    return std::move(floors_);
  }

 private:
  [[noreturn]] void Fail(const YAML::Node& node, const std::string& what) const {
    throw std::runtime_error(path_ + ":" + std::to_string(node.Mark().line + 1) + ": " + what);
  }

  // The layouts of a table share its reason where they have none of their own.
  void ReadEntry(const std::string& name, const YAML::Node& node, bool may_hold_layouts,
                 const std::string& shared_why) {
    if (!node.IsMap()) Fail(node, "a map is expected here");
    Floor floor;
    floor.why = shared_why;
    size_t figures = 0;
    for (const auto& entry : node) {
      const auto key = entry.first.as<std::string>();
      if (key == "layouts" && may_hold_layouts) continue;
      if (key != "why") ++figures;
      Set(key, entry.second, floor);
    }
    if (may_hold_layouts && node["layouts"]) {
      for (const auto& layout : node["layouts"]) {
        ReadEntry(name + kLayoutMark + layout.first.as<std::string>(), layout.second, false,
                  floor.why);
      }
    }
    if (figures == 0) return;
    if (floor.why.empty()) Fail(node, "a floor needs a 'why'");
    floors_[name] = floor;
  }

  void Set(const std::string& key, const YAML::Node& node, Floor& floor) const {
    if (key == "live") {
      floor.live = node.as<double>();
    } else if (key == "recall") {
      floor.recall = node.as<double>();
    } else if (key == "precision") {
      floor.precision = node.as<double>();
    } else if (key == "clean_extra") {
      floor.clean_extra = node.as<size_t>();
    } else if (key == "covered") {
      floor.covered = node.as<bool>();
    } else if (key == "why") {
      floor.why = node.as<std::string>();
    } else {
      Fail(node, "unknown key '" + key + "'");
    }
  }

  std::string path_;
  std::map<std::string, Floor> floors_;
};

std::string LayoutName(const TableReport& table) {
  return table.Name() + kLayoutMark + table.label;
}

bool Reaches(size_t lost, size_t of, double floor) {
  const double allowed = std::ceil((1.0 - floor) * static_cast<double>(of) - 1e-9);
  return static_cast<double>(lost) <= allowed;
}

std::string Ratio(size_t part, size_t whole) {
  return std::to_string(part) + " of " + std::to_string(whole);
}

void Judge(const TableReport& table, const Floor& floor, std::vector<std::string>& faults) {
  const auto fault = [&](const std::string& what, double wanted) {
    faults.push_back(table.Name() + " (" + std::to_string(table.columns) + " columns, " +
                     table.label + "): " + what + ", the floor is " + std::to_string(wanted));
  };
  Counts all = table.clean;
  all.Add(table.mixed);
  const Counts& mixed = table.mixed;
  if (all.LiveShare() < floor.live) {
    fault("live rows found " + Ratio(all.live_found, all.live), floor.live);
  }
  if (!Reaches(mixed.standing - mixed.recovered, mixed.standing, floor.recall)) {
    fault("recall " + Ratio(mixed.recovered, mixed.standing), floor.recall);
  }
  const size_t judged = mixed.carved - mixed.repeats;
  if (!Reaches(mixed.false_rows, judged, floor.precision)) {
    fault("false rows " + Ratio(mixed.false_rows, judged), floor.precision);
  }
  if (table.clean.carved > floor.clean_extra) {
    fault("rows beyond the live ones of a clean database " + std::to_string(table.clean.carved),
          static_cast<double>(floor.clean_extra));
  }
}

// Two digits, and never above the figure itself.
std::string RoundedDown(double figure) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%.2f", std::floor(figure * 100 + 1e-9) / 100);
  return text.data();
}

// The floors that a layout would need to hold.
YAML::Node NeededFloors(const TableReport& table) {
  YAML::Node node(YAML::NodeType::Map);
  if (!table.covered) {
    node["covered"] = false;
    return node;
  }
  const Floor common;
  Counts all = table.clean;
  all.Add(table.mixed);
  const Counts& mixed = table.mixed;
  if (all.LiveShare() < common.live) node["live"] = RoundedDown(all.LiveShare());
  if (!Reaches(mixed.standing - mixed.recovered, mixed.standing, common.recall)) {
    node["recall"] = RoundedDown(mixed.Recall());
  }
  if (!Reaches(mixed.false_rows, mixed.carved - mixed.repeats, common.precision)) {
    node["precision"] = RoundedDown(mixed.Precision());
  }
  if (table.clean.carved > common.clean_extra) node["clean_extra"] = table.clean.carved;
  return node;
}

}  // namespace

std::string SuggestedFloors(const std::vector<TableReport>& tables) {
  YAML::Node root(YAML::NodeType::Map);
  for (const TableReport& table : tables) {
    const YAML::Node needed = NeededFloors(table);
    if (needed.size() == 0) continue;
    YAML::Node entry = root[table.system + '/' + table.data_type][table.table];
    if (!table.covered) {
      entry["covered"] = false;
    } else {
      entry["layouts"][table.label] = needed;
    }
    entry["why"] = "";
  }
  YAML::Emitter out;
  out << root;
  return root.size() == 0 ? "" : std::string(out.c_str()) + '\n';
}

Floors Floors::Read(const std::string& path) {
  Floors floors;
  try {
    floors.floors_ = Reader(path).Read();
  } catch (const YAML::Exception& fault) {
    throw std::runtime_error(path + ":" + std::to_string(fault.mark.line + 1) + ": " + fault.msg);
  }
  return floors;
}

const Floor& Floors::Of(const TableReport& table) const {
  static const Floor kCommon;
  for (const std::string& name : {LayoutName(table), table.Name()}) {
    if (const auto found = floors_.find(name); found != floors_.end()) return found->second;
  }
  return kCommon;
}

std::vector<std::string> Floors::Faults(const std::string& application,
                                        const std::vector<TableReport>& tables) const {
  std::vector<std::string> faults;
  std::set<std::string> names;
  for (const TableReport& table : tables) {
    names.insert({table.Name(), LayoutName(table)});
    const Floor& floor = Of(table);
    if (floor.covered != table.covered) {
      faults.push_back(table.Name() + (table.covered ? " is configured, though its floor denies it"
                                                     : " is not configured"));
    } else if (table.covered) {
      Judge(table, floor, faults);
    }
  }
  for (const auto& [name, floor] : floors_) {
    if (name.starts_with(application + '/') && !names.contains(name)) {
      faults.push_back("a floor is given for " + name + ", which does not exist");
    }
  }
  faults.erase(std::unique(faults.begin(), faults.end()), faults.end());
  return faults;
}

std::vector<std::string> Floors::Applications() const {
  std::set<std::string> applications;
  for (const auto& [name, floor] : floors_) {
    applications.insert(name.substr(0, name.find('/', name.find('/') + 1)));
  }
  return {applications.begin(), applications.end()};
}

}  // namespace recovery
