#include "data/sample_table.h"

#include "sqliteconfig/config_records.h"

namespace bench {

namespace {

constexpr int64_t kFirstMessage = 694224000000;  // 1992
constexpr int64_t kLastMessage = 2199023255551;  // 2039

Check NumberCheck(int64_t min, int64_t max, bool is_not_null = false) {
  return {kFieldInteger, is_not_null, min, max, kFieldNone};
}

Check TextCheck(int64_t max, bool is_not_null = false) {
  return {kFieldBlob, is_not_null, is_not_null ? 1 : 0, max, kFieldText};
}

Column Alias(const std::string& name) { return {name, "INTEGER PRIMARY KEY", Fill::kAlias}; }

Column Number(const std::string& name, int64_t low, int64_t high, int null_percent = 0) {
  return {name, "INTEGER", Fill::kNumber, low, high, null_percent};
}

Column Flag(const std::string& name) {
  Column column = Number(name, 0, 1);
  column.check = NumberCheck(0, 1);
  return column;
}

Column Time(const std::string& name) {
  Column column{name, "INTEGER", Fill::kTime};
  column.check = NumberCheck(kFirstMessage, kLastMessage, true);
  column.is_unique = true;
  return column;
}

Column TimeNear(const std::string& name) {
  Column column{name, "INTEGER", Fill::kTimeNear};
  column.check = NumberCheck(0, kLastMessage);
  return column;
}

Column Group(const std::string& name, int64_t count) {
  Column column{name, "INTEGER", Fill::kGroup, 1, count};
  column.check = NumberCheck(0, 16777215, true);
  column.is_unique = true;
  return column;
}

Column Text(const std::string& name, Fill fill, int null_percent = 0) {
  return {name, "TEXT", fill, 0, 0, null_percent};
}

Column Checked(Column column, const Check& check) {
  column.check = check;
  return column;
}

Column Unique(Column column) {
  column.is_unique = true;
  return column;
}

}  // namespace

Table SmsTable() {
  Table table;
  table.name = "sms";
  table.first_width = 15;
  table.flexible_cnt = 3;
  table.columns = {
      Alias("_id"),
      Group("thread_id", 300),
      Checked(Text("address", Fill::kPhone, 5), TextCheck(1024)),
      Checked(Number("person", 1, 400, 95), NumberCheck(0, 2147483647)),
      Time("date"),
      TimeNear("date_sent"),
      Checked(Number("protocol", 0, 0, 40), NumberCheck(0, 255)),
      Flag("read"),
      Checked(Number("status", -1, -1), NumberCheck(-1, 67108863)),
      Unique(Checked(Number("type", 1, 2), NumberCheck(0, 20, true))),
      Checked(Number("reply_path_present", 0, 0, 40), NumberCheck(0, 1)),
      Text("subject", Fill::kName, 98),
      Text("body", Fill::kMessage),
      Checked(Text("service_center", Fill::kPhone, 60), TextCheck(64)),
      Flag("locked"),
      Number("sub_id", 0, 2),
      Number("error_code", 0, 0),
      Text("creator", Fill::kConst),
      Number("seen", 0, 1),
      Number("priority", -1, -1),
  };
  return table;
}

Table WideTable() {
  Table table;
  table.name = "message";
  table.flexible_cnt = 2;
  table.columns = {
      Alias("_id"),
      Group("chat_id", 200),
      Unique(Checked(Text("key_id", Fill::kPhone), TextCheck(64, true))),
      Flag("from_me"),
      Checked(Number("status", 0, 13), NumberCheck(0, 100, true)),
      Time("timestamp"),
      TimeNear("received_timestamp"),
      TimeNear("receipt_timestamp"),
      Checked(Number("message_type", 0, 20), NumberCheck(0, 255, true)),
      Text("text_data", Fill::kMessage, 10),
      Flag("starred"),
      Checked(Number("origin", 0, 8), NumberCheck(0, 100)),
      Number("lookup_tables", 0, 4),
      Number("sort_id", 1, 10000000),
      Number("message_add_on_flags", 0, 0, 50),
      Text("view_mode", Fill::kName, 90),
      Text("media_caption", Fill::kMessage, 90),
      Text("media_mime", Fill::kConst, 80),
      Number("media_size", 1000, 4000000, 80),
      Text("media_name", Fill::kName, 85),
      {"media_hash", "BLOB", Fill::kBlob, 32, 32, 85},
      {"latitude", "REAL", Fill::kReal, 0, 0, 97},
      {"longitude", "REAL", Fill::kReal, 0, 0, 97},
      {"thumbnail", "BLOB", Fill::kBlob, 60, 900, 92},
      Text("participant", Fill::kPhone, 60),
      Number("participant_hash", 0, 2000000000, 60),
      Number("edit_version", 0, 0, 30),
      Number("quoted_row_id", 1, 1000000, 90),
      Text("mentioned", Fill::kPhone, 95),
      Number("future_type", 0, 0, 95),
      Number("send_count", 0, 3),
      Number("recipient_count", 0, 50),
  };
  return table;
}

std::vector<Table> AppTables() {
  std::vector<Table> tables = {
      {"chat_message",
       {Alias("id"), Group("chat", 80), Time("sent"), Flag("mine"), Text("body", Fill::kMessage),
        Number("kind", 0, 9), Text("media", Fill::kName, 80)}},
      {"contact",
       {Alias("id"), Unique(Checked(Text("phone", Fill::kPhone), TextCheck(64, true))),
        Text("display_name", Fill::kName), Time("updated"), Text("note", Fill::kName, 70),
        Flag("favourite")}},
      {"call_entry",
       {Alias("id"), Unique(Checked(Text("number", Fill::kPhone), TextCheck(64))), Time("begin"),
        Checked(Number("seconds", 0, 4000), NumberCheck(0, 1000000, true)),
        Checked(Number("direction", 1, 5), NumberCheck(1, 9, true)), Flag("is_new")}},
      {"bookmark",
       {Text("title", Fill::kName), Unique(Text("address", Fill::kMessage)), Time("added"),
        Number("visits", 0, 300)}},
      {"visit",
       {Alias("id"),
        Group("place", 4000),
        Time("at"),
        Number("from_visit", 0, 90000),
        Number("transition", 0, 900000000),
        {"dwell", "REAL", Fill::kReal, 0, 0, 30}}},
      {"calendar_event",
       {Alias("id"), Group("calendar", 6), Text("title", Fill::kName),
        Text("description", Fill::kMessage, 50), Time("starts"), TimeNear("created"),
        Flag("all_day"), Text("zone", Fill::kConst), Text("place", Fill::kName, 60)}},
      {"reminder",
       {Alias("id"), Text("title", Fill::kName), Time("due"), TimeNear("done"),
        Checked(Number("priority", 0, 9), NumberCheck(0, 9, true))}},
      {"media_item",
       {Alias("id"),
        {"hash", "BLOB", Fill::kBlob, 20, 20},
        Text("path", Fill::kName),
        Number("width", 100, 6000),
        Number("height", 100, 6000),
        Time("taken"),
        {"latitude", "REAL", Fill::kReal, 0, 0, 40},
        {"longitude", "REAL", Fill::kReal, 0, 0, 40}}},
      {"note",
       {Alias("id"),
        Time("created"),
        TimeNear("changed"),
        Text("title", Fill::kName),
        Text("body", Fill::kMessage),
        {"ink", "BLOB", Fill::kBlob, 10, 200, 70}}},
      {"participant",
       {Group("chat", 80), Unique(Checked(Text("phone", Fill::kPhone), TextCheck(64, true))),
        Flag("admin"), Time("joined"), Number("role", 0, 3)}},
  };
  return tables;
}

std::string CreateText(const Table& table, size_t width) {
  std::string text = "CREATE TABLE " + table.name + " (";
  for (size_t i = 0; i < width; ++i) {
    if (i != 0) text += ", ";
    text += i < table.columns.size() ? table.columns[i].name + " " + table.columns[i].type
                                     : "added_" + std::to_string(i) + " INTEGER";
  }
  return text + ")";
}

}  // namespace bench
