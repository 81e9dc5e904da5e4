#pragma once

#include <gtest/gtest.h>

#include <string>

// A sound source. The line numbers of the refusals below count in it; a case changes one place.
inline constexpr const char* kSource =
    "system: android\n"                                                                     // 1
    "data_type: sms\n"                                                                      // 2
    "database: mmssms.db\n"                                                                 // 3
    "scan_main_file: true\n"                                                                // 4
    "tables:\n"                                                                             // 5
    "  - name: msg\n"                                                                       // 6
    "    scan:\n"                                                                           // 7
    "      small_table: false\n"                                                            // 8
    "      deleted: true\n"                                                                 // 9
    "      flexible_cnt: 0\n"                                                               // 10
    "      guess_row_id: true\n"                                                            // 11
    "      order_by_rowid: true\n"                                                          // 12
    "    layouts:\n"                                                                        // 13
    "      - from_version: 4\n"                                                             // 14
    "        sql: CREATE TABLE msg (_id INTEGER PRIMARY KEY, a TEXT, n INTEGER)\n"          // 15
    "      - from_version: 5\n"                                                             // 16
    "        sql: CREATE TABLE msg (_id INTEGER PRIMARY KEY, a TEXT, n INTEGER, z TEXT)\n"  // 17
    "    results:\n"                                                                        // 18
    "      - {column: _id, type: INTEGER, kind: integer, row_id: true}\n"                   // 19
    "      - {column: a, type: TEXT, kind: text, unique: true}\n"                           // 20
    "    features:\n"                                                                       // 21
    "      - column: n\n"                                                                   // 22
    "        kind: integer\n"                                                               // 23
    "        min: -1\n"                                                                     // 24
    "        max: 7\n"                                                                      // 25
    "        why: an enumeration\n"                                                         // 26
    "      - column: a\n"                                                                   // 27
    "        kind: text\n"                                                                  // 28
    "        or_kind: blob\n"                                                               // 29
    "        not_null: true\n"                                                              // 30
    "        min: 1\n"                                                                      // 31
    "        max: 20\n"                                                                     // 32
    "        bytes: \"'a'~'f'\"\n"                                                          // 33
    "        not_bytes: \"'b'\"\n"                                                          // 34
    "        why: a word\n";                                                                // 35

// The source with its first `from` replaced.
inline std::string Changed(const std::string& from, const std::string& to) {
  std::string text = kSource;
  const size_t place = text.find(from);
  EXPECT_NE(place, std::string::npos) << "the source does not hold: " << from;
  if (place != std::string::npos) text.replace(place, from.size(), to);
  return text;
}

// The source with another byte set on line 33.
inline std::string ByteSet(const std::string& set) {
  return Changed("bytes: \"'a'~'f'\"", "bytes: \"" + set + "\"");
}

// A table whose name needs quotes in SQL.
inline std::string WordTableSource(const std::string& name) {
  std::string text = kSource;
  for (size_t place = 0; (place = text.find("TABLE msg", place)) != std::string::npos;) {
    text.replace(place, 9, "TABLE `" + name + "`");
  }
  return text.replace(text.find("name: msg"), 9, "name: " + name);
}

// Two layouts of which one begins like the other, with a flexible_cnt.
inline std::string WideSource(int narrow, int wide, int flexible_cnt) {
  const auto statement = [](int width) {
    std::string columns = "_id INTEGER PRIMARY KEY, a TEXT, n INTEGER";
    for (int i = 3; i < width; ++i) columns += ", c" + std::to_string(i) + " TEXT";
    return "CREATE TABLE msg (" + columns + ")";
  };
  std::string text = Changed("flexible_cnt: 0", "flexible_cnt: " + std::to_string(flexible_cnt));
  const std::string first = "CREATE TABLE msg (_id INTEGER PRIMARY KEY, a TEXT, n INTEGER)";
  const std::string second =
      "CREATE TABLE msg (_id INTEGER PRIMARY KEY, a TEXT, n INTEGER, z TEXT)";
  text.replace(text.find(second), second.size(), statement(wide));
  return text.replace(text.find(first), first.size(), statement(narrow));
}
