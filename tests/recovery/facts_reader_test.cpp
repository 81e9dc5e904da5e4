#include "recovery/facts_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/scan_fixture.h"
#include "support/temp_folder.h"

namespace recovery {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kSound =
    "system: android\n"
    "data_type: note\n"
    "databases:\n"
    "  - file: note.db\n"
    "    wal: true\n"
    "    tables:\n"
    "      - name: note\n"
    "        conversation: folder\n"
    "        update: {title: words 1 3}\n"
    "        layouts:\n"
    "          - {version: 4, label: old, sql: 'CREATE TABLE note(_id INTEGER PRIMARY KEY,"
    " folder INTEGER, title TEXT)'}\n"
    "          - {version: 6, label: new, sql: 'CREATE TABLE note(_id INTEGER PRIMARY KEY,"
    " folder INTEGER, title TEXT, part REAL DEFAULT 2.5)'}\n"
    "        values: {folder: group 5, title: 'message ? 0.2', others: real 0 1}\n";

class FactsReaderTest : public ::testing::Test {
 protected:
  Facts Read(const std::string& text) {
    WriteBytes(path_, text);
    return ReadFacts(path_);
  }

  // The sound file with a text replaced.
  std::string Fault(const std::string& old_text, const std::string& new_text) {
    std::string text = kSound;
    const size_t at = text.find(old_text);
    EXPECT_NE(at, std::string::npos) << old_text;
    text.replace(at, old_text.size(), new_text);
    try {
      Read(text);
    } catch (const FactsError& fault) {
      return fault.what();
    }
    return "nothing was refused";
  }

  TempFolder folder_;
  std::string path_ = folder_.File("note.yaml");
};

TEST_F(FactsReaderTest, ReadsAllParts) {
  const Facts facts = Read(kSound);
  EXPECT_EQ(facts.Name(), "android/note");
  ASSERT_EQ(facts.databases.size(), 1U);
  const DatabaseFacts& database = facts.databases[0];
  EXPECT_TRUE(database.wal);
  EXPECT_EQ(database.secure_delete, "off");
  EXPECT_EQ(database.Generations(), 2U);
  const TableFacts& table = database.tables.at(0);
  EXPECT_EQ(DatabaseFacts::LayoutOf(table, 0), 1U);
  EXPECT_EQ(DatabaseFacts::LayoutOf(table, 7), 0U);
  EXPECT_EQ(table.layouts[1].version, 6);
  EXPECT_EQ(table.layouts[1].alias, 0U);
  EXPECT_EQ(table.layouts[1].columns.at(3).default_value, Value{2.5});
  EXPECT_EQ(table.RecipeOf("title").null_share, 0.2);
  EXPECT_EQ(table.RecipeOf("part").kind, "real");
}

TEST_F(FactsReaderTest, NamesTheLineOfAFault) {
  EXPECT_THAT(Fault("    wal: true", "    whale: true"), StartsWith(path_ + ":5: "));
  EXPECT_THAT(Fault("    wal: true", "    whale: true"), EndsWith("unknown key 'whale'"));
  EXPECT_THAT(Fault("    wal: true", "    wal: perhaps"), HasSubstr(":5: wal has a value"));
  EXPECT_THAT(Fault("    wal: true", "    encoding: ASCII"), HasSubstr(":5: 'ASCII' is no value"));
  EXPECT_THAT(Fault("group 5", "gruppe 5"), HasSubstr(":13: unknown recipe kind 'gruppe'"));
  EXPECT_THAT(Fault("group 5", "group many"), HasSubstr(":13: 'many' is no number"));
  EXPECT_THAT(Fault("group 5", "group 5 6"), HasSubstr(":13: recipe 'group' takes 1 arguments"));
  EXPECT_THAT(Fault("? 0.2", "? 2"), HasSubstr(":13: behind '?' stands one probability"));
  EXPECT_THAT(Fault(", others: real 0 1", ""), HasSubstr("no recipe for the column 'part'"));
  EXPECT_THAT(Fault("folder: group", "folders: group"), HasSubstr("has a column 'folders'"));
  EXPECT_THAT(Fault("group 5", "near _if 1 2"), HasSubstr("recipe: no layout has a column '_if'"));
  EXPECT_THAT(Fault("conversation: folder", "conversation: fold"),
              HasSubstr(":8: conversation: no layout has a column 'fold'"));
  EXPECT_THAT(Fault("update: {title", "update: {tittle"), HasSubstr(":9: update: no layout"));
  EXPECT_THAT(Fault("CREATE TABLE note(", "CREATE TABEL note("), HasSubstr(":11: "));
  EXPECT_THAT(Fault("CREATE TABLE note(", "CREATE TABLE notes("),
              HasSubstr("the statement makes no table 'note'"));
  EXPECT_THAT(Fault("system: android", "system: symbian"), HasSubstr(":1: 'symbian' is no system"));
  EXPECT_THAT(Fault("data_type: note\n", ""), HasSubstr("the key 'data_type' is missing"));
  EXPECT_THAT(Fault("system: android", "system: [android"), HasSubstr(path_ + ":"));
}

TEST_F(FactsReaderTest, SaysWhenThereIsNoFile) {
  EXPECT_THROW(ReadFacts(folder_.File("none.yaml")), FactsError);
  EXPECT_TRUE(FactsFiles(folder_.File("none")).empty());
}

}  // namespace
}  // namespace recovery
