// The texts that stand for systems and applications in the configuration.
#include "sqliteconfig/type_names.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

TEST(TypeNamesTest, Systems) {
  EXPECT_EQ(SystemTypeName(0), "android");
  EXPECT_EQ(SystemTypeName(1), "ios");
  for (const int32_t other : {2, 3, -1, kLowest, kHighest}) EXPECT_EQ(SystemTypeName(other), "");
}

TEST(TypeNamesTest, Applications) {
  const char* const names[] = {"contact",  "sms",    "callhistory",  "note",
                               "whatsapp", "safari", "safariHis",    "calendar",
                               "reminder", "wechat", "wechatMoment", "kakaotalk"};
  for (int32_t number = 0; number < 12; ++number) EXPECT_EQ(DataTypeName(number), names[number]);
  for (const int32_t other : {12, 13, -1, kLowest, kHighest}) EXPECT_EQ(DataTypeName(other), "");
}

}  // namespace
