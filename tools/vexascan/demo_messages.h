// The messages of the sample: what is written into it, and what becomes of each one. The same on
// every run, so that two demos can be compared.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sqlite_db.h"

namespace vexascan {

// The columns of an Android message table behind its row id, in their order.
constexpr std::array<std::string_view, 18> kMessageColumns{"thread_id",      "address",
                                                           "person",         "date",
                                                           "date_sent",      "protocol",
                                                           "read",           "status",
                                                           "type",           "reply_path_present",
                                                           "subject",        "body",
                                                           "service_center", "locked",
                                                           "sub_id",         "error_code",
                                                           "creator",        "seen"};
constexpr std::size_t kBodyColumn = 11;

enum class Fate {
  kLive,
  kFreeblock,   // deleted one by one inside pages that live on, then checkpointed
  kFreedPages,  // deleted with a whole conversation, whose pages went to the free list
  kLogOnly,     // written and deleted in a log that was never checkpointed
};

struct Message {
  std::int64_t id = 0;
  Fate fate = Fate::kLive;
  bool written_to_log = false;  // after the last checkpoint
  std::vector<Value> values;    // one for each of kMessageColumns
  const std::string& body() const { return std::get<std::string>(values.at(kBodyColumn)); }
};

// In ascending order of id.
std::vector<Message> MakeMessages();

}  // namespace vexascan
