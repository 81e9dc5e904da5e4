#pragma once

#include <cstdint>
#include <string>

// The text that stands for a phone's operating system in the configuration: "android" for 0,
// "ios" for 1, the empty text for any other number.
std::string SystemTypeName(int32_t system_type);

// The text that stands for an application or data store, 0 to 11; the empty text for any other.
std::string DataTypeName(int32_t data_type);
