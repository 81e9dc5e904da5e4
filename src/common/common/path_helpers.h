#pragma once

#include <string>
#include <string_view>

// Separator of every path that the library joins or takes apart on this platform. A backslash is
// an ordinary character of a file name here.
inline constexpr char kPathSeparator = '/';

// Joins folder and name with one separator, whatever the folder ends in.
std::string JoinPath(std::string_view folder, std::string_view name);

// The text behind the last separator; the whole path when there is none.
std::string FileNameOfPath(const std::string& path);

// True when something stands at the path (UTF-8); a path that cannot be examined does not exist.
bool PathExists(const std::string& path);

// Removes the file at the path, if there is one and it is no directory, and logs the message of
// the attempt's error code at level 3, on success too. Always true.
bool RemoveFileIfExists(const std::string& path);
