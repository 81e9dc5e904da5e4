#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/scan_sqlite_probe.h"
#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Column;
using testing::IsEmpty;

class BuiltFeatures : public testing::Test {
 protected:
  BuiltFeatures() : probe_(ScanContext{}) {
    Run("create table field_features (system_type, data_type, table_name, field_name, is_not_null,"
        " field_type, min, max, item_range, item_not_exist_value, field_type_candidate)");
    probe_.OpenConfig(folder_.File("config"));
    probe_.context().data_type = 1;  // sms
  }

  void Run(const std::string& sql) {
    SqliteConnection connection(folder_.File("config"));
    connection.Open("");
    ASSERT_EQ(sqlite3_exec(connection.handle(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
  }

  // A row for table t of the application with the values of the last eight columns.
  void AddRow(const std::string& values) {
    Run("insert into field_features values (0, 'sms', 't', " + values + ")");
  }

  void AddTable(const std::string& name, std::vector<SchemaCandidate> candidates) {
    TableSchemaInfo table;
    table.table_name = name;
    table.candidates = std::move(candidates);
    probe_.table_infos()[name] = table;
  }

  void AddResultField(const std::string& table, const std::string& field, int32_t is_row_id = 0) {
    TableFieldInfo info;
    info.field_name = field;
    probe_.need_query_tables()[table].push_back(info);
    probe_.result_field_maps()[table].Insert(field, hand_made::ResultField(field, 0, 0, is_row_id));
  }

  const FeatureMaps& Build() {
    probe_.BuildTableFeatures();
    const FeatureMaps* maps = probe_.table_features().Find("t");
    return maps == nullptr ? none_ : *maps;
  }

  FeatureMaps none_;
  TempFolder folder_;
  ScanSqliteProbe probe_;
};

const SchemaCandidate kNew{true, {Column("id", 0, true), Column("added", 3), Column("body", 3)}};
const SchemaCandidate kOld{false, {Column("id", 0, true), Column("body", 3)}};

TEST_F(BuiltFeatures, EachLayoutHasAMapWithItsOwnColumns) {
  AddRow("'body', 1, 2, 3, 40, 'a~z', 'q', 0");
  AddRow("'added', 0, 0, -5, 5, '', '', -1");
  AddRow("'nowhere', 0, 0, 0, 0, '', '', -1");
  AddTable("t", {kNew, kOld});
  AddResultField("t", "body");
  const FeatureMaps& maps = Build();
  ASSERT_EQ(maps.size(), 2U);
  ASSERT_EQ(maps[0].size(), 2U);
  ASSERT_EQ(maps[1].size(), 1U);
  EXPECT_EQ(maps[0].at(1).field_name, "added");
  EXPECT_EQ(maps[0].at(1).value_ranges.at(0).min, -5);
  const FieldFeature& body = maps[1].at(1);
  EXPECT_EQ(body.column_index, 1);
  EXPECT_EQ(maps[0].at(2).column_index, 2);
  EXPECT_EQ(body.field_name, "body");
  EXPECT_EQ(body.is_not_null, 1);
  EXPECT_EQ(body.field_type, 2);
  EXPECT_EQ(body.field_type_candidate, 0);
  ASSERT_EQ(body.value_ranges.size(), 1U);
  EXPECT_EQ(body.value_ranges[0].min, 3);
  EXPECT_EQ(body.value_ranges[0].max, 40);
  EXPECT_EQ(body.item_range.size(), 26U);
  EXPECT_TRUE(body.item_not_exist_value.Contains('q'));
}

TEST_F(BuiltFeatures, TheLastLayoutThatHoldsAColumnDecidesWhereItIsRead) {
  AddTable("t", {kNew, kOld});
  AddResultField("t", "body");
  AddResultField("t", "added");
  Build();
  EXPECT_EQ(probe_.result_field_maps().Find("t")->Find("body")->column_index, 1);
  EXPECT_EQ(probe_.result_field_maps().Find("t")->Find("added")->column_index, 1);
}

TEST_F(BuiltFeatures, NullLimitsAreARangeFromZeroToZero) {
  AddRow("'body', 0, 2, NULL, NULL, NULL, NULL, -1");
  AddTable("t", {kOld});
  AddResultField("t", "body");
  const FeatureMaps& maps = Build();
  ASSERT_EQ(maps.size(), 1U);
  EXPECT_EQ(maps[0].at(1).value_ranges.at(0).min, 0);
  EXPECT_EQ(maps[0].at(1).value_ranges.at(0).max, 0);
}

TEST_F(BuiltFeatures, ATableWithoutResultColumnsHasNoEntry) {
  AddRow("'body', 0, 2, 0, 9, '', '', -1");
  AddTable("t", {kOld});
  EXPECT_THAT(Build(), IsEmpty());
  EXPECT_EQ(probe_.table_features().size(), 0U);
}

TEST_F(BuiltFeatures, ATableWithoutRowsHasEmptyMaps) {
  AddTable("t", {kNew, kOld});
  AddResultField("t", "body");
  const FeatureMaps& maps = Build();
  ASSERT_EQ(maps.size(), 2U);
  EXPECT_THAT(maps[0], IsEmpty());
  EXPECT_THAT(maps[1], IsEmpty());
}

TEST_F(BuiltFeatures, TheRowIdFieldIsCheckedLikeAnyOther) {
  AddRow("'id', 0, 0, 1, 9, '', '', -1");
  AddTable("t", {kOld});
  AddResultField("t", "id", 1);
  const FeatureMaps& maps = Build();
  ASSERT_EQ(maps.size(), 1U);
  EXPECT_EQ(maps[0].at(0).value_ranges.at(0).max, 9);
}

TEST_F(BuiltFeatures, NamesAreComparedWithTheirCase) {
  AddRow("'BODY', 0, 2, 0, 9, '', '', -1");
  AddTable("t", {kOld});
  AddResultField("t", "body");
  const FeatureMaps& maps = Build();
  ASSERT_EQ(maps.size(), 1U);
  EXPECT_THAT(maps[0], IsEmpty());
}

}  // namespace
