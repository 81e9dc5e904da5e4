#pragma once

#include <string>

namespace vexaconfigc {

// Tells in words what is wrong with the text of a byte set, or gives the empty text. Refused is
// everything that the library reads otherwise than it looks (0~9, 0x30~0x39, ab, an empty item), or
// would not stop reading (a range that ends at the byte 0xFF).
std::string ByteSetFault(const std::string& text);

}  // namespace vexaconfigc
