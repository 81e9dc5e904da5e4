#include "recovery/blob_maker.h"

#include <string>
#include <string_view>

#include "recovery/text_maker.h"

namespace recovery {
namespace {

// Random bytes up to the length.
void FillUp(Random& random, size_t length, std::string& bytes) {
  while (bytes.size() < length) bytes += static_cast<char>(random.Bits() >> 40U);
}

}  // namespace

Blob MakeBlob(Random& random, size_t least, size_t most) {
  Blob blob;
  FillUp(random, random.Length(least, most), blob.bytes);
  return blob;
}

Blob MakePlist(Random& random, size_t least, size_t most) {
  const size_t length = random.Length(least, most);
  Blob blob{"bplist00"};
  while (blob.bytes.size() + 40 < length) {
    const std::string text = MakeAscii(random, 1, 14);
    blob.bytes += static_cast<char>(0x50U + text.size());
    blob.bytes += text;
  }
  FillUp(random, length, blob.bytes);
  return blob;
}

Blob MakeProtobuf(Random& random, size_t least, size_t most) {
  const size_t length = random.Length(least, most);
  Blob blob;
  for (unsigned field = 1; blob.bytes.size() + 24 < length; field = field % 15 + 1) {
    const bool is_text = random.Chance(0.5);
    blob.bytes += static_cast<char>(field << 3U | (is_text ? 2U : 0U));
    if (is_text) {
      const std::string text = MakeAscii(random, 1, 18);
      blob.bytes += static_cast<char>(text.size());
      blob.bytes += text;
    } else {
      blob.bytes += static_cast<char>(random.Below(128));
    }
  }
  FillUp(random, length, blob.bytes);
  return blob;
}

Blob MakeCounts(Random& random, size_t least, size_t most) {
  const size_t length = random.Length(least, most) / 4 * 4;
  Blob blob;
  while (blob.bytes.size() < length) {
    const uint64_t count = random.Chance(0.02) ? random.Below(300) : random.Below(24);
    for (unsigned shift = 0; shift < 32; shift += 8) {
      blob.bytes += static_cast<char>(count >> shift & 0xFFU);
    }
  }
  return blob;
}

Blob MakeJsonBlob(Random& random, size_t least, size_t most) {
  return Blob{MakeJson(random, least, most)};
}

Blob MakeJpeg(Random& random, size_t least, size_t most) {
  const size_t length = random.Length(least, most);
  Blob blob{std::string("\xFF\xD8\xFF\xE0\x00\x10JFIF\x00\x01", 12)};
  FillUp(random, length < 2 ? 0 : length - 2, blob.bytes);
  blob.bytes += "\xFF\xD9";
  return blob;
}

}  // namespace recovery
