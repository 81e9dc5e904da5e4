// "vexascan list": what a configuration covers, as text and as JSON.
#include <json/json.h>

#include <sstream>

#include "tool/vexascan_runner.h"

namespace vexascan_test {
namespace {

// A configuration of three applications: one whole, one that says nothing for people, and one
// without any table.
class VexascanList : public VexascanTest {
 protected:
  void SetUp() override {
    VexascanTest::SetUp();
    fs::remove(Config());
    Sqlite config(Config());
    config.Run(
        "CREATE TABLE scan_table_info(system_type TEXT, data_type TEXT, table_name TEXT,"
        " is_small_table INTEGER, is_virtual_table INTEGER, scan_type INTEGER,"
        " flexible_cnt INTEGER, need_guess_row_id INTEGER, need_order_by_rowid INTEGER);"
        "CREATE TABLE scan_type_info(system_type TEXT, data_type TEXT, is_scan_database INTEGER);"
        "CREATE TABLE create_table_sql(system_type TEXT, data_type TEXT, system_version INTEGER,"
        " table_name TEXT, sql TEXT);"
        "CREATE TABLE result_field_info(system_type TEXT, data_type TEXT, table_name TEXT,"
        " field_name TEXT, field_type_text TEXT, field_type INTEGER, is_unique_field INTEGER,"
        " is_row_id_field INTEGER);");
    config.Run(
        "INSERT INTO scan_table_info VALUES ('ios','sms','message',0,0,0,0,1,1),"
        " ('ios','sms','chat',0,0,1,0,0,1), ('android','note','notes',0,0,0,0,0,1);"
        "INSERT INTO scan_type_info VALUES ('ios','sms',1), ('android','note',0);"
        "INSERT INTO create_table_sql VALUES ('ios','sms',4,'message','CREATE TABLE message (a)'),"
        " ('ios','sms',5,'message','CREATE TABLE message (a, b)');"
        "INSERT INTO result_field_info VALUES ('ios','sms','message','guid','TEXT',2,1,0),"
        " ('ios','sms','message','text','TEXT',2,0,0);");
  }

  void AddDetails() const {
    Sqlite config(Config());
    config.Run(
        "CREATE TABLE covered_table(system_type TEXT, data_type TEXT, application TEXT,"
        " database_file TEXT, table_name TEXT, limits TEXT);"
        "CREATE TABLE not_covered(system_type TEXT, data_type TEXT, application TEXT,"
        " database_file TEXT, what TEXT, why TEXT);"
        "INSERT INTO covered_table VALUES ('ios','sms','Messages','sms.db','message','few'),"
        " ('ios','sms','Messages','other.db','chat',''), ('android','note','','n.db','notes','');"
        "INSERT INTO not_covered VALUES ('ios','sms','Messages','sms.db','drafts','memory only'),"
        " ('ios','wechat','WeChat','MM.sqlite','all tables','encrypted');");
  }

  ToolRun List(std::vector<std::string> more = {}) const {
    std::vector<std::string> words{"list", "--config", Config().parent_path()};
    words.insert(words.end(), more.begin(), more.end());
    return RunTool(words);
  }

  Json::Value ListJson(std::vector<std::string> more = {}) const {
    more.emplace_back("--json");
    const ToolRun run = List(std::move(more));
    EXPECT_EQ(run.exit_code, 0) << run.output;
    Json::Value value;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    EXPECT_TRUE(
        reader->parse(run.output.data(), run.output.data() + run.output.size(), &value, &errors))
        << errors;
    return value;
  }
};

TEST_F(VexascanList, PrintsApplicationsInTheOrderOfTheLibrary) {
  AddDetails();
  const ToolRun run = List();
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.output,
            "android note - n.db\n"
            "    live and deleted rows: notes\n"
            "    deleted rows come out of the write-ahead log only\n"
            "ios sms - Messages - sms.db, other.db\n"
            "    live and deleted rows: message (sms.db)\n"
            "    live rows only: chat (other.db)\n"
            "    not covered: drafts\n"
            "ios wechat - WeChat - MM.sqlite\n"
            "    not covered: all tables\n");
}

TEST_F(VexascanList, PrintsWhatIsAskedForAlone) {
  AddDetails();
  EXPECT_EQ(List({"--system", "ios", "--data-type", "wechat"}).output,
            "ios wechat - WeChat - MM.sqlite\n    not covered: all tables\n");
  EXPECT_EQ(List({"--system", "android"}).output,
            "android note - n.db\n    live and deleted rows: notes\n"
            "    deleted rows come out of the write-ahead log only\n");
  EXPECT_EQ(List({"--app", "calendar"}).output, "Nothing of that kind is covered.\n");
}

TEST_F(VexascanList, ReadsAConfigurationThatSaysNothingForPeople) {
  EXPECT_EQ(List().output,
            "android note\n    live and deleted rows: notes\n"
            "    deleted rows come out of the write-ahead log only\n"
            "ios sms\n    live and deleted rows: message\n    live rows only: chat\n");
}

TEST_F(VexascanList, GivesTheSameAndMoreAsJson) {
  AddDetails();
  const Json::Value list = ListJson();
  ASSERT_EQ(list.size(), 3U);
  EXPECT_EQ(list[0]["log_only"].asBool(), true);
  const Json::Value& sms = list[1];
  EXPECT_EQ(sms["system"].asString(), "ios");
  EXPECT_EQ(sms["data_type"].asString(), "sms");
  EXPECT_EQ(sms["application"].asString(), "Messages");
  EXPECT_EQ(sms["log_only"].asBool(), false);
  ASSERT_EQ(sms["databases"].size(), 2U);
  EXPECT_EQ(sms["databases"][1].asString(), "other.db");
  ASSERT_EQ(sms["tables"].size(), 2U);
  const Json::Value& message = sms["tables"][0];
  EXPECT_EQ(message["name"].asString(), "message");
  EXPECT_EQ(message["database"].asString(), "sms.db");
  EXPECT_EQ(message["deleted"].asBool(), true);
  EXPECT_EQ(message["layouts"].asInt(), 2);
  ASSERT_EQ(message["key"].size(), 1U);
  EXPECT_EQ(message["key"][0].asString(), "guid");
  EXPECT_EQ(message["limits"].asString(), "few");
  EXPECT_EQ(sms["tables"][1]["deleted"].asBool(), false);
  EXPECT_FALSE(sms["tables"][1].isMember("limits"));
  ASSERT_EQ(sms["not_covered"].size(), 1U);
  EXPECT_EQ(sms["not_covered"][0]["what"].asString(), "drafts");
  EXPECT_EQ(sms["not_covered"][0]["why"].asString(), "memory only");
  EXPECT_EQ(list[2]["tables"].size(), 0U);
  EXPECT_EQ(ListJson({"--app", "calendar"}).size(), 0U);
}

TEST_F(VexascanList, LeavesTheConfigurationAsItWas) {
  AddDetails();
  const auto before = BytesIn(Config().parent_path());
  EXPECT_EQ(List().exit_code, 0);
  EXPECT_EQ(BytesIn(Config().parent_path()), before);
}

TEST_F(VexascanList, RefusesWhatIsNoConfiguration) {
  const ToolRun missing = RunTool({"list", "--config", (root() / "out").string()});
  EXPECT_EQ(missing.exit_code, 2);
  EXPECT_NE(missing.output.find("holds no VexaConfiger.db"), std::string::npos) << missing.output;
  WriteFile(Config(), "not a database, though long enough to be read as one");
  const ToolRun broken = List();
  EXPECT_EQ(broken.exit_code, 2);
  EXPECT_NE(broken.output.find("is not a configuration database"), std::string::npos);
  EXPECT_EQ(List({"--system", "symbian"}).exit_code, 2);
  EXPECT_EQ(List({"--data-type", "letters"}).exit_code, 2);
}

// Without --config the shipped configuration beside the program is listed: every table of it.
TEST(VexascanListShipped, NamesEveryTableOfTheShippedConfiguration) {
  const ToolRun run = RunTool({"list", "--json"});
  ASSERT_EQ(run.exit_code, 0) << run.output;
  Sqlite config(VEXA_CONFIG_DB);
  std::istringstream names(config.Ask("SELECT table_name FROM scan_table_info"));
  int count = 0;
  for (std::string name; std::getline(names, name); ++count) {
    EXPECT_NE(run.output.find("\"name\" : \"" + name + "\""), std::string::npos) << name;
  }
  EXPECT_GT(count, 10);
}

}  // namespace
}  // namespace vexascan_test
