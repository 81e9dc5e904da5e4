#include "demo_messages.h"

#include <random>
#include <utility>

#include "demo_texts.h"

namespace vexascan {
namespace {

constexpr std::uint32_t kSeed = 20240229;
constexpr std::int64_t kFirstDate = 1704103200000;  // 2024-01-01 10:00 UTC, in milliseconds

constexpr int kBefore = 200;        // messages of mixed conversations before the doomed one
constexpr int kConversation = 110;  // the conversation that is deleted whole
constexpr int kAfter = 130;
constexpr int kInLog = 60;

constexpr int kConversationThread = 12;
constexpr std::array<std::string_view, 12> kPeers{
    "+4915112345678", "+33612345678",  "+79161234567",  "+966501234567",
    "+8613812345678", "+919812345678", "+819012345678", "+821012345678",
    "+306912345678",  "Почта",         "DHL",           "+12025550143"};

// std::mt19937 gives the same numbers everywhere; the distributions of the library need not.
class Dice {
 public:
  int Roll(int sides) { return static_cast<int>(engine_() % static_cast<std::uint32_t>(sides)); }

 private:
  std::mt19937 engine_{kSeed};
};

class Writer {
 public:
  // Texts of long messages overflow their page.
  void Add(int thread, Fate fate, bool in_log, bool long_text) {
    const std::int64_t id = static_cast<std::int64_t>(messages_.size()) + 1;
    date_ += 60000 + 1000 * dice_.Roll(7200) + dice_.Roll(1000);
    const int serial = static_cast<int>(id);
    std::string body = long_text
                           ? LongText(serial, 4500 + static_cast<std::size_t>(dice_.Roll(9000)))
                           : ShortText(serial, dice_.Roll(1000));
    const bool received = dice_.Roll(3) != 0;
    messages_.push_back({.id = id,
                         .fate = fate,
                         .written_to_log = in_log,
                         .values = received ? Received(thread, body) : Sent(thread, body)});
  }

  std::vector<Message> Take() { return std::move(messages_); }

 private:
  static Value Address(int thread) {
    return std::string(kPeers.at(static_cast<std::size_t>(thread) - 1));
  }

  std::vector<Value> Received(int thread, const std::string& body) {
    const std::int64_t sent = date_ - 1000 - dice_.Roll(4000);
    return {std::int64_t{thread},
            Address(thread),
            Value(),
            date_,
            sent,
            std::int64_t{0},
            std::int64_t{dice_.Roll(8) != 0},
            std::int64_t{-1},
            std::int64_t{1},
            std::int64_t{0},
            Value(),
            body,
            std::string("+491710760000"),
            std::int64_t{0},
            std::int64_t{1},
            std::int64_t{0},
            std::string("com.google.android.apps.messaging"),
            std::int64_t{1}};
  }

  std::vector<Value> Sent(int thread, const std::string& body) {
    return {std::int64_t{thread},
            Address(thread),
            Value(),
            date_,
            std::int64_t{0},
            Value(),
            std::int64_t{1},
            std::int64_t{dice_.Roll(4) == 0 ? 0 : -1},
            std::int64_t{2},
            Value(),
            Value(),
            body,
            Value(),
            std::int64_t{0},
            std::int64_t{1},
            std::int64_t{0},
            std::string("com.google.android.apps.messaging"),
            std::int64_t{1}};
  }

  Dice dice_;
  std::int64_t date_ = kFirstDate;
  std::vector<Message> messages_;
};

void AddMixed(Writer& writer, int count) {
  for (int i = 0; i < count; ++i) {
    writer.Add(1 + (i * 7) % 11, i % 5 == 2 ? Fate::kFreeblock : Fate::kLive, false, i % 23 == 7);
  }
}

}  // namespace

std::vector<Message> MakeMessages() {
  Writer writer;
  AddMixed(writer, kBefore);
  for (int i = 0; i < kConversation; ++i) {
    writer.Add(kConversationThread, Fate::kFreedPages, false, i % 12 == 5);
  }
  AddMixed(writer, kAfter);
  // No long texts here: while a chain of overflow pages stands in the log alone, its pages are
  // looked for in the main file, which never had them.
  for (int i = 0; i < kInLog; ++i) {
    writer.Add(1 + i % 11, i % 4 == 3 ? Fate::kLive : Fate::kLogOnly, true, false);
  }
  return writer.Take();
}

}  // namespace vexascan
