#include "sqliteconfig/type_names.h"

#include <array>

namespace {

template <size_t Count>
std::string NameAt(const std::array<const char*, Count>& names, int32_t number) {
  if (number < 0 || static_cast<size_t>(number) >= Count) return {};
  return names[static_cast<size_t>(number)];
}

}  // namespace

std::string SystemTypeName(int32_t system_type) {
  static constexpr std::array kNames = {"android", "ios"};
  return NameAt(kNames, system_type);
}

std::string DataTypeName(int32_t data_type) {
  static constexpr std::array kNames = {"contact",  "sms",    "callhistory",  "note",
                                        "whatsapp", "safari", "safariHis",    "calendar",
                                        "reminder", "wechat", "wechatMoment", "kakaotalk"};
  return NameAt(kNames, data_type);
}
