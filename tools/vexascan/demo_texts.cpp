#include "demo_texts.h"

#include <array>
#include <string_view>

namespace vexascan {
namespace {

constexpr std::array<std::string_view, 24> kSentences{
    "See you at the station at half past six, I'll bring the tickets.",
    "Running late, the tram is stuck again 🚋😩",
    "Kannst du bitte noch Brötchen und Käse mitbringen? Größere Tüte!",
    "Übermorgen ist Prüfung, drück mir die Daumen 🍀",
    "On se retrouve à l'hôtel près de la forêt, ça te va ?",
    "¿Mañana a las nueve en la cafetería? ¡Qué alegría! 🎉",
    "Встречаемся завтра у метро, возьми с собой документы.",
    "Спокойной ночи, обнимаю 🤗",
    "Зустрінемося біля вокзалу о шостій, їду потягом.",
    "سأصل إلى المطار في الساعة السابعة مساءً إن شاء الله",
    "شكراً جزيلاً على الهدية الجميلة 🌹",
    "פגישה מחר בשמונה בבוקר ליד הספרייה",
    "明天下午三点在老地方见，别忘了带雨伞。",
    "生日快乐！🎂祝你身体健康，万事如意",
    "電車が遅れているので、十分ほど待ってください。",
    "写真ありがとう！とてもきれいだね📷✨",
    "내일 저녁에 같이 밥 먹을래? 🍜",
    "कल सुबह दस बजे बाज़ार में मिलते हैं।",
    "जन्मदिन की हार्दिक शुभकामनाएँ 🥳🎈",
    "Τα λέμε αύριο το πρωί στην πλατεία, μην αργήσεις!",
    "พรุ่งนี้เจอกันที่สถานีตอนเช้านะ",
    "மாலை ஆறு மணிக்கு வீட்டில் சந்திப்போம்.",
    "Hẹn gặp bạn ở quán cà phê gần cầu nhé ☕",
    "Família 👨‍👩‍👧‍👦 toda reunida no domingo, não falte 🇧🇷"};

std::string_view Sentence(int number) {
  return kSentences.at(static_cast<std::size_t>(number) % kSentences.size());
}

}  // namespace

std::string ShortText(int number, int variant) {
  std::string text(Sentence(variant));
  if (variant % 3 == 0) {
    text.append(" ").append(Sentence(variant / 3 + number));
  }
  return text + " #" + std::to_string(number);
}

std::string LongText(int number, std::size_t bytes) {
  std::string text = "Letter " + std::to_string(number) + ":";
  for (int i = number; text.size() < bytes; ++i) {
    text.append(" (").append(std::to_string(i)).append(") ").append(Sentence(i * 5 + number));
  }
  return text;
}

std::string Excerpt(const std::string& text, std::size_t columns) {
  std::size_t end = 0;
  for (std::size_t characters = 0; end < text.size(); ++end) {
    const bool starts_character = (static_cast<unsigned char>(text[end]) & 0xC0U) != 0x80U;
    if (starts_character && ++characters > columns) {
      return text.substr(0, end) + "...";
    }
  }
  return text;
}

}  // namespace vexascan
