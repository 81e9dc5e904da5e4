#include <gtest/gtest.h>

#include "scansqlite/scan_sqlite.h"
#include "support/log_capture.h"

namespace {

TEST(ScanSqliteInit, WithoutAContextIsLoggedAndDoesNothing) {
  LogCapture log;
  ScanSqlite scan(nullptr, nullptr, nullptr);
  EXPECT_EQ(scan.Init(), 0);
  ASSERT_EQ(log.Lines().size(), 1U);
  EXPECT_EQ(log.Lines()[0].level, 3);
  EXPECT_EQ(log.Lines()[0].message, "ScanSqlite init failed.");
}

}  // namespace
