#include "data/sample_values.h"

#include <array>

namespace bench {

namespace {

constexpr std::array kLatin = {"the",   "meeting", "is",       "at",   "seven",  "see",  "you",
                               "there", "bring",   "photos",   "ok",   "thanks", "when", "home",
                               "train", "late",    "tomorrow", "call", "me",     "back"};
constexpr std::array kOther = {"встреча", "завтра", "в",     "семь", "спасибо",
                               "会议",    "明天",   "七点",  "谢谢", "こんにちは",
                               "😀",       "🎉",      "größe", "naïve"};

constexpr int64_t kFirstTime = 1325376000000;  // 2012
constexpr int64_t kStep = 97000;
constexpr int64_t kTimeSpan = 850000000000;

int64_t TimeOf(int64_t row) { return kFirstTime + row * kStep % kTimeSpan; }

std::string Words(Dice& dice, size_t length) {
  const bool is_latin = dice.Chance(75);
  std::string text;
  while (text.size() < length) {
    if (!text.empty()) text += ' ';
    text += is_latin ? kLatin[dice.Below(kLatin.size())] : kOther[dice.Below(kOther.size())];
  }
  return text;
}

std::string Phone(Dice& dice) {
  std::string text = "+49";
  const int64_t digits = dice.Between(8, 11);
  for (int64_t i = 0; i < digits; ++i) text += static_cast<char>('0' + dice.Below(10));
  return text;
}

void BindText(sqlite3_stmt* statement, int index, const std::string& text) {
  sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

void BindBlob(Dice& dice, const Column& column, sqlite3_stmt* statement, int index) {
  std::string bytes(static_cast<size_t>(dice.Between(column.low, column.high)), '\0');
  for (char& byte : bytes) byte = static_cast<char>(dice.Word());
  sqlite3_bind_blob(statement, index, bytes.data(), static_cast<int>(bytes.size()),
                    SQLITE_TRANSIENT);
}

// The square favours small numbers.
int64_t SkewedNumber(Dice& dice, int64_t low, int64_t high) {
  const auto span = static_cast<uint64_t>(high - low) + 1;
  const uint64_t most = dice.Below(span) + 1;
  return low + static_cast<int64_t>(dice.Below(most));
}

}  // namespace

std::string MessageText(Dice& dice) {
  const uint64_t sort = dice.Below(1000);
  if (sort < 2) return Words(dice, 5000 + dice.Below(5000));
  if (sort < 60) return Words(dice, 200 + dice.Below(400));
  return Words(dice, 4 + dice.Below(90));
}

void BindSample(Dice& dice, const Column& column, int64_t row, sqlite3_stmt* statement, int index) {
  if (column.null_percent > 0 && dice.Chance(column.null_percent)) {
    sqlite3_bind_null(statement, index);
    return;
  }
  switch (column.fill) {
    case Fill::kAlias:
      sqlite3_bind_int64(statement, index, row);
      break;
    case Fill::kGroup:
      sqlite3_bind_int64(statement, index, SkewedNumber(dice, column.low, column.high));
      break;
    case Fill::kNumber:
      sqlite3_bind_int64(statement, index, dice.Between(column.low, column.high));
      break;
    case Fill::kTime:
      sqlite3_bind_int64(statement, index, TimeOf(row) + dice.Between(0, 90000));
      break;
    case Fill::kTimeNear:
      sqlite3_bind_int64(statement, index, dice.Chance(40) ? 0 : TimeOf(row));
      break;
    case Fill::kReal:
      sqlite3_bind_double(statement, index, static_cast<double>(dice.Between(-900000, 900000)) / 7);
      break;
    case Fill::kPhone:
      BindText(statement, index, Phone(dice));
      break;
    case Fill::kName:
      BindText(statement, index, Words(dice, 6 + dice.Below(20)));
      break;
    case Fill::kMessage:
      BindText(statement, index, MessageText(dice));
      break;
    case Fill::kConst:
      BindText(statement, index, "com.android.messaging");
      break;
    case Fill::kBlob:
      BindBlob(dice, column, statement, index);
      break;
    case Fill::kNull:
      sqlite3_bind_null(statement, index);
      break;
  }
}

}  // namespace bench
