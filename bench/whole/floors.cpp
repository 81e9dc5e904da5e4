#include "whole/floors.h"

#include <algorithm>
#include <cstdio>
#include <optional>

namespace bench {

namespace {

constexpr double kMebibyteKb = 1024;

std::optional<double> Figure(const Json::Value& cases, const std::string& name,
                             const std::string& measurement, const char* key) {
  if (!cases.isMember(name) || !cases[name].isMember(measurement)) return std::nullopt;
  const Json::Value& value = cases[name][measurement];
  if (!value.isMember(key)) return std::nullopt;
  return value[key].asDouble();
}

std::optional<double> Ratio(const std::optional<double>& a, const std::optional<double>& b) {
  if (!a || !b || *b == 0) return std::nullopt;
  return *a / *b;
}

class FloorTable {
 public:
  explicit FloorTable(const Json::Value& cases) : cases_(cases) {
    table_.name = "floors";
    table_.title = "Floors";
    table_.rows.push_back({"what", "floor", "reached", ""});
  }

  std::optional<double> Seconds(const char* name, const std::string& measurement) const {
    return Figure(cases_, name, measurement, "seconds");
  }
  std::optional<double> Get(const char* name, const std::string& measurement,
                            const char* key) const {
    return Figure(cases_, name, measurement, key);
  }

  void AtLeast(const char* what, double floor, const std::optional<double>& reached) {
    Add(what, "at least ", floor, reached, reached && *reached >= floor);
  }
  void AtMost(const char* what, double limit, const std::optional<double>& reached) {
    Add(what, "at most ", limit, reached, reached && *reached <= limit);
  }

  // A figure beside the floors.
  void Note(const char* what, const std::optional<double>& reached) {
    table_.rows.push_back({what, "-", reached ? Text(*reached) : "not measured", ""});
  }

  ReportTable Take() { return std::move(table_); }

 private:
  static std::string Text(double number) {
    char text[32];
    const int digits = number < 0.1 ? 3 : number < 10 ? 2 : 1;
    std::snprintf(text, sizeof text, "%.*f", digits, number);
    return text;
  }

  void Add(const char* what, const char* bound, double limit, const std::optional<double>& reached,
           bool is_ok) {
    table_.rows.push_back({what, bound + Text(limit), reached ? Text(*reached) : "not measured",
                           !reached ? ""
                           : is_ok  ? "ok"
                                    : "NOT REACHED"});
  }

  const Json::Value& cases_;
  ReportTable table_;
};

// What each further layout or table costs, as a part of the first one's walk.
std::optional<double> CostOfOneMore(const FloorTable& table, const char* name, int count,
                                    const char* kind) {
  const auto one = table.Seconds(name, std::string("of-1-") + kind);
  const auto all = table.Seconds(name, "of-" + std::to_string(count) + "-" + kind);
  if (!one || !all) return std::nullopt;
  return (*all / *one - 1) / (count - 1);
}

}  // namespace

ReportTable MakeFloors(const Json::Value& cases) {
  FloorTable table(cases);
  const auto read = table.Seconds("sms", "read");
  table.AtLeast("walk of two message layouts, survivors found, against a read, AVX2", 0.18,
                Ratio(read, table.Seconds("sms", "sieve-avx2")));
  table.AtLeast("the same, SSSE3", 0.12, Ratio(read, table.Seconds("sms", "sieve-ssse3")));
  table.Note("the same with the header of each survivor, AVX2",
             Ratio(read, table.Seconds("sms", "walk-avx2")));
  const struct {
    const char* name;
    const char* what;
    double floor;
  } walks[] = {{"sms", "walk and full test against the plain walk, messages", 35},
               {"wide", "the same, 32 columns", 18},
               {"noise", "the same, noise", 100}};
  for (const auto& walk : walks) {
    table.AtLeast(
        walk.what, walk.floor,
        Ratio(table.Seconds(walk.name, "plain-walk"), table.Seconds(walk.name, "full-avx2")));
  }
  table.AtMost("places that survive per place of a true record, messages", 1.05,
               Ratio(table.Get("sms", "walk-avx2", "sieved_places"),
                     table.Get("sms", "plain-walk", "record_places")));
  table.AtMost("the same, 32 columns", 1.05,
               Ratio(table.Get("wide", "walk-avx2", "sieved_places"),
                     table.Get("wide", "plain-walk", "record_places")));
  table.AtMost("instructions per byte, walk, messages", 10,
               table.Get("sms", "instructions", "sieve"));
  table.Note("instructions per byte, walk and headers, messages",
             table.Get("sms", "instructions", "walk"));
  table.AtMost("instructions per byte, walk and full test, messages", 40,
               table.Get("sms", "instructions", "full"));
  table.AtLeast("whole scan, all records, against the plain scan, messages", 10,
                Ratio(table.Seconds("sms", "plain-scan"), table.Seconds("sms", "scan")));
  table.AtLeast("copy of live rows against INSERT ... SELECT through ATTACH", 0.60,
                Ratio(table.Seconds("sms", "attach"), table.Seconds("sms", "copy")));
  const struct {
    const char* name;
    const char* what;
    int count;
  } more[] = {{"sms", "a second layout, of the first one's walk", 2},
              {"sms", "a third layout", 3},
              {"sms", "a tenth layout, mean of nine", 10},
              {"apps", "a second table, of the first one's walk", 2},
              {"apps", "a third table", 3},
              {"apps", "a tenth table, mean of nine", 10}};
  for (const auto& one : more) {
    table.AtMost(one.what, 0.25, CostOfOneMore(table, one.name, one.count, "sieve"));
  }
  table.Note("a tenth layout, headers too, mean of nine", CostOfOneMore(table, "sms", 10, "walk"));
  table.Note("a tenth table, headers too, mean of nine", CostOfOneMore(table, "apps", 10, "walk"));
  table.AtMost("peak memory of a scan of 1 GiB, MiB", 128,
               Ratio(std::max(table.Get("gib", "scan", "rss_kb"),
                              table.Get("gib", "scan-deleted", "rss_kb")),
                     kMebibyteKb));
  // The log is as large as the main file of the messages; its own is a third of that, and comes
  // from nearer caches.
  const auto of_log = [&table](const char* of_case, const std::string& kind) {
    return Ratio(table.Get("log", "log-" + kind, "mb_per_second"),
                 table.Get(of_case, kind, "mb_per_second"));
  };
  table.AtLeast("walk of the log against the walk of a main file of its size, MB/s", 0.80,
                of_log("sms", "sieve-avx2"));
  table.Note("the same with headers", of_log("sms", "walk-avx2"));
  table.Note("against its own main file, which is smaller", of_log("log", "sieve-avx2"));
  table.Note("the same with headers", of_log("log", "walk-avx2"));
  return table.Take();
}

}  // namespace bench
