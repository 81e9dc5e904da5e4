// The word that a host's thread stores into while a scan reads it.
#include "common/common/scan_control.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace {

class ScanControlTest : public testing::Test {
 protected:
  ScanControlTest() { g_scan_control.reset(); }
  ~ScanControlTest() override { g_scan_control.reset(); }
};

TEST_F(ScanControlTest, AbsentWordReadsAsRunningAndTakesNothing) {
  EXPECT_EQ(ReadScanControl(), 0);
  WriteScanControl(2);
  EXPECT_EQ(ReadScanControl(), 0);
}

TEST_F(ScanControlTest, WordHoldsWhatWasStored) {
  g_scan_control = std::make_unique<std::atomic<int32_t>>(0);
  for (const int32_t value : {1, 2, 0, -1, 7}) {
    WriteScanControl(value);
    EXPECT_EQ(ReadScanControl(), value);
  }
}

TEST_F(ScanControlTest, CodesAreThoseOfTheHostInterface) {
  EXPECT_EQ(kScanRuns, 0);
  EXPECT_EQ(kScanPaused, 1);
  EXPECT_EQ(kScanStopped, 2);
}

TEST_F(ScanControlTest, WordIsThirtyTwoBitsWithoutALock) {
  EXPECT_EQ(sizeof(*g_scan_control), 4U);
  EXPECT_TRUE(std::atomic<int32_t>::is_always_lock_free);
}

}  // namespace
