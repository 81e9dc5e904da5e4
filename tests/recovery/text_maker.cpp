#include "recovery/text_maker.h"

#include <array>
#include <span>
#include <string_view>

namespace recovery {
namespace {

using Words = std::span<const std::string_view>;

constexpr std::array<std::string_view, 40> kLatin = {
    "the",    "station",  "tomorrow", "coffee", "see",     "you",      "später",  "straße",
    "Grüße",  "heute",    "déjà",     "garçon", "merci",   "mañana",   "niño",    "corazón",
    "não",    "irmão",    "obrigado", "güneş",  "akşam",   "İstanbul", "çay",     "żółty",
    "proszę", "dziękuję", "příští",   "týden",  "meeting", "report",   "invoice", "10:30",
    "ok",     "call",     "me",       "back",   "please",  "photo",    "ticket",  "42"};
constexpr std::array<std::string_view, 16> kCyrillic = {
    "привет",  "завтра", "встреча", "хорошо", "спасибо", "дом",   "поезд",   "работа",
    "вечером", "где",    "ты",      "мама",   "їжак",    "дякую", "сегодня", "ладно"};
constexpr std::array<std::string_view, 14> kArabic = {"مرحبا", "غدا",   "شكرا", "البيت", "السيارة",
                                                      "موعد",  "اليوم", "صباح", "الخير", "أين",
                                                      "أنت",   "العمل", "لقاء", "جميل"};
constexpr std::array<std::string_view, 16> kChinese = {
    "你好", "明天", "见面", "谢谢", "火车站", "工作", "今天晚上", "吃饭",
    "电话", "我们", "公司", "学校", "没问题", "朋友", "照片",     "回家"};
constexpr std::array<std::string_view, 12> kKorean = {"안녕하세요", "내일", "감사합니다", "회사",
                                                      "저녁",       "전화", "친구",       "사진",
                                                      "지금",       "어디", "집에",       "괜찮아"};
constexpr std::array<std::string_view, 12> kHindi = {"नमस्ते", "कल",  "धन्यवाद", "घर",  "आज",  "काम",
                                                     "दोस्त", "फोन", "कहाँ",    "शाम", "ठीक", "है"};
constexpr std::array<std::string_view, 10> kThai = {"สวัสดี",  "พรุ่งนี้", "ขอบคุณ", "บ้าน",  "วันนี้",
                                                    "ทำงาน", "เพื่อน", "โทรหา", "ที่ไหน", "กินข้าว"};
constexpr std::array<std::string_view, 14> kEmoji = {
    "😀",  "😂", "❤️", "👍🏽",       "🎉", "🙏", "👨‍👩‍👧",
    "🇩🇪", "🔥", "😢",      "🏳️‍🌈", "☕", "✅", "🥰"};
constexpr std::array<std::string_view, 24> kPeople = {
    "Anna Müller", "John Smith",   "José García", "Zoë O'Brien",   "Иван Петров", "Ольга",
    "محمد علي",    "فاطمة",        "王伟",        "李娜",          "김민준",      "이서연",
    "राहुल शर्मा",   "प्रिया",        "สมชาย",       "Mehmet Yılmaz", "Łukasz",      "Nguyễn Văn An",
    "Mom",         "Dr. Schröder", "Pizza 24h",   "Émile Zola",    "Åsa Öberg",   "陳大文"};
constexpr std::array<std::string_view, 8> kHosts = {
    "example.com",  "mail.example.org", "news.example.net",  "shop.example.de",
    "m.example.cn", "example.co.kr",    "video.example.com", "wiki.example.org"};
constexpr std::array<std::string_view, 12> kMimes = {
    "text/plain",       "image/jpeg",   "image/png",
    "video/mp4",        "audio/amr",    "audio/ogg; codecs=opus",
    "application/smil", "text/x-vCard", "application/pdf",
    "image/webp",       "image/gif",    "audio/aac"};
constexpr std::array<std::string_view, 5> kFolders = {
    "/storage/emulated/0/DCIM/Camera", "/data/user/0/files/media",
    "/var/mobile/Media/DCIM/100APPLE", "~/Library/SMS/Attachments", "Media/Documents"};
constexpr std::array<std::string_view, 6> kEndings = {".jpg", ".mp4",  ".opus",
                                                      ".pdf", ".HEIC", ".bin"};
constexpr std::array<std::string_view, 8> kKeys = {"id",   "type",  "name", "size",
                                                   "text", "state", "flag", "items"};

template <size_t kCount>
std::string_view Pick(Random& random, const std::array<std::string_view, kCount>& words) {
  return words[random.Index(kCount)];
}

Words PickScript(Random& random) {
  switch (random.Below(16)) {
    case 0:
    case 1:
      return kCyrillic;
    case 2:
      return kArabic;
    case 3:
    case 4:
      return kChinese;
    case 5:
      return kKorean;
    case 6:
      return kHindi;
    case 7:
      return kThai;
    default:
      return kLatin;
  }
}

std::string Join(Random& random, Words words, size_t count, double emoji) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    if (i > 0) text += random.Chance(0.02) ? '\n' : ' ';
    text += random.Chance(emoji) ? Pick(random, kEmoji) : words[random.Index(words.size())];
  }
  return text;
}

std::string Characters(Random& random, std::string_view from, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += from[random.Index(from.size())];
  return text;
}

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::string_view kUpperHexDigits = "0123456789ABCDEF";
constexpr std::string_view kLetters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr std::string_view kSmallLetters = "abcdefghijklmnopqrstuvwxyz";

size_t Between(Random& random, size_t least, size_t most) {
  return static_cast<size_t>(
      random.Between(static_cast<int64_t>(least), static_cast<int64_t>(most)));
}

}  // namespace

std::string MakeWords(Random& random, size_t least, size_t most) {
  return Join(random, PickScript(random), Between(random, least, most), 0.01);
}

std::string MakeMessage(Random& random) {
  const Words words = PickScript(random);
  const double emoji = random.Chance(0.2) ? 0.15 : 0.0;
  const double kind = random.Unit();
  size_t count = Between(random, 1, 12);
  if (kind > 0.985) {
    count = Between(random, 300, 1500);
  } else if (kind > 0.95) {
    count = Between(random, 60, 300);
  } else if (kind > 0.75) {
    count = Between(random, 12, 60);
  }
  std::string text = Join(random, words, count, emoji);
  if (random.Chance(0.03)) text = "\uFFFC" + text;  // the place of an attachment
  if (random.Chance(0.03)) text += ' ' + MakeUrl(random);
  return text;
}

std::string MakePerson(Random& random) {
  std::string name(Pick(random, kPeople));
  if (random.Chance(0.5)) name += ' ' + Characters(random, kSmallLetters, Between(random, 2, 7));
  return name;
}

std::string MakePhone(Random& random) {
  switch (random.Below(6)) {
    case 0:
      return MakeDigits(random, 3, 6);  // a service number
    case 1:
      return "0" + MakeDigits(random, 9, 10);
    case 2:
      return "(0" + MakeDigits(random, 2, 3) + ") " + MakeDigits(random, 5, 7);
    default:
      return "+" + std::to_string(random.Between(1, 99)) + MakeDigits(random, 8, 11);
  }
}

std::string MakeEmail(Random& random) {
  return Characters(random, kSmallLetters, Between(random, 3, 9)) + '.' +
         Characters(random, kSmallLetters, Between(random, 2, 9)) + '@' +
         std::string(Pick(random, kHosts));
}

std::string MakeGuid(Random& random) {
  std::string text;
  for (const size_t part : {8U, 4U, 4U, 4U, 12U}) {
    if (!text.empty()) text += '-';
    text += Characters(random, kUpperHexDigits, part);
  }
  return text;
}

std::string MakeHex(Random& random, size_t digits) {
  return Characters(random, kHexDigits, digits);
}

std::string MakeDigits(Random& random, size_t least, size_t most) {
  std::string text = Characters(random, kDigits, Between(random, least, most));
  if (!text.empty() && text[0] == '0') text[0] = '7';
  return text;
}

std::string MakeAscii(Random& random, size_t least, size_t most) {
  return Characters(random, kLetters, Between(random, least, most));
}

std::string MakeUrl(Random& random) {
  std::string url = (random.Chance(0.85) ? "https://" : "http://");
  url += Pick(random, kHosts);
  const size_t parts = random.Index(4);
  for (size_t i = 0; i < parts; ++i) url += '/' + MakeAscii(random, 2, 12);
  if (random.Chance(0.3)) url += "?q=" + MakeAscii(random, 3, random.Chance(0.1) ? 400 : 40);
  return url;
}

std::string MakePath(Random& random) {
  return std::string(Pick(random, kFolders)) + '/' + MakeAscii(random, 6, 24) +
         std::string(Pick(random, kEndings));
}

std::string MakeMime(Random& random) { return std::string(Pick(random, kMimes)); }

std::string MakeJid(Random& random) {
  const std::string number = MakeDigits(random, 10, 13);
  return random.Chance(0.2) ? number + '-' + MakeDigits(random, 10, 10) + "@g.us"
                            : number + "@s.whatsapp.net";
}

std::string MakeJson(Random& random, size_t least, size_t most) {
  const size_t wanted = random.Length(least, most);
  std::string text = "{";
  while (text.size() + 40 < wanted) {
    if (text.size() > 1) text += ',';
    text += '"' + std::string(Pick(random, kKeys)) + "\":";
    text += random.Chance(0.4) ? std::to_string(random.Below(1000000))
                               : '"' + MakeAscii(random, 1, 20) + '"';
  }
  while (text.size() + 1 < wanted) text += ' ';
  return text + '}';
}

}  // namespace recovery
