#pragma once

#include <cstddef>
#include <string>

#include "recovery/random.h"

namespace recovery {

// Texts as people write them, in several scripts.
std::string MakeWords(Random& random, size_t least, size_t most);
std::string MakeMessage(Random& random);
std::string MakePerson(Random& random);

// Texts that programs write.
std::string MakePhone(Random& random);
std::string MakeEmail(Random& random);
std::string MakeGuid(Random& random);
std::string MakeHex(Random& random, size_t digits);
std::string MakeDigits(Random& random, size_t least, size_t most);
std::string MakeAscii(Random& random, size_t least, size_t most);
std::string MakeUrl(Random& random);
std::string MakePath(Random& random);
std::string MakeMime(Random& random);
std::string MakeJid(Random& random);
std::string MakeJson(Random& random, size_t least, size_t most);

}  // namespace recovery
