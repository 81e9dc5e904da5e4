// Exceptions that leave Scan, and what is left behind them.
#include <vexasqlitesdk.h>

#include <filesystem>
#include <stdexcept>

#include "support/scan_fixture.h"

namespace fs = std::filesystem;

namespace {

class Exceptions : public ScanFixture {
 protected:
  // The result database is closed and sound: no log of its own stands beside it.
  void ExpectClosedResult() const {
    EXPECT_TRUE(fs::exists(result()));
    EXPECT_FALSE(fs::exists(result() + "-wal"));
    EXPECT_FALSE(fs::exists(result() + "-journal"));
    EXPECT_EQ(ResultRows("PRAGMA integrity_check"), (TextRows{{"ok"}}));
  }
};

TEST_F(Exceptions, ATempFolderThatIsTheSourcesOwnCostsTheSourceAndThrows) {
  MakeMessageConfig(config());
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    AddMessages(db, 1, 3);
  }
  fs::copy_file(source(), folder_.File("kept.db"));
  std::string json = Json(kAll);
  const std::string temp_key = "\"temp_folder\":\"" + temp();
  json.replace(json.find(temp_key), temp_key.size(), "\"temp_folder\":\"" + folder_.File("source"));
  ForgetLog();
  try {
    Scan(json.data(), static_cast<int>(json.size()), this);
    FAIL() << "nothing was thrown";
  } catch (const fs::filesystem_error& error) {
    EXPECT_NE(std::string(error.what()).find("copy_file(p1, p2, options): invalid arguments"),
              std::string::npos)
        << error.what();
  }
  EXPECT_TRUE(LinesMatch({"info Enter Scan"}, LogLines()));
  EXPECT_FALSE(fs::exists(source()));
  ExpectClosedResult();
  fs::rename(folder_.File("kept.db"), source());
  EXPECT_EQ(Found(kAll), MessageBodies(1, 3));
}

TEST_F(Exceptions, AMissingTempFolderThrows) {
  MakeMessageConfig(config());
  SqliteMaker(source()).Run(MessageTable());
  fs::remove(temp());
  EXPECT_THROW(RunScan(kAll), fs::filesystem_error);
  ExpectClosedResult();
}

TEST_F(Exceptions, AWorkingCopyThatIsAFilledFolderCannotBeRemoved) {
  MakeMessageConfig(config());
  SqliteMaker(source()).Run(MessageTable());
  fs::create_directories(working_db() + "/inner");
  try {
    RunScan(kAll);
    FAIL() << "nothing was thrown";
  } catch (const fs::filesystem_error& error) {
    EXPECT_NE(std::string(error.what()).find("remove(p): invalid argument"), std::string::npos)
        << error.what();
  }
  ExpectClosedResult();
}

TEST_F(Exceptions, AnUnpairedSurrogateThrowsAndTheRowsOfItsTableAreRolledBack) {
  {
    ConfigMaker config_db(config());
    config_db.AddTable("message");
    config_db.AddField("message", {"body", "TEXT", 2, 1, 0});
    config_db.AddTable("later");
    config_db.AddField("later", {"body", "TEXT", 2, 1, 0});
    config_db.ScanDatabase(1);
  }
  {
    SqliteMaker db(source());
    db.Run("PRAGMA encoding='UTF-16le'");
    db.Run("CREATE TABLE message(n INTEGER, body TEXT); CREATE TABLE later(a, b, c, body TEXT)");
    // The higher offset, which comes first, is sound.
    db.Run("INSERT INTO message VALUES(300, CAST(x'41004200430044' || x'00' AS TEXT))");
    db.Run("INSERT INTO message VALUES(301, CAST(x'4100D841004200' || x'00' AS TEXT))");
    db.Run("DELETE FROM message WHERE n = 301");
    db.Run("INSERT INTO message VALUES(302, CAST(x'410000D84100' AS TEXT))");
  }
  EXPECT_THROW(RunScan(kDeleted), std::range_error);
  const std::vector<std::string> lines = LogLines();
  EXPECT_NE(lines.back(), "info End Scan");
  ExpectClosedResult();
  EXPECT_TRUE(ResultRows("SELECT * FROM message").empty());
  EXPECT_TRUE(ResultRows("SELECT * FROM later").empty());
}

}  // namespace
