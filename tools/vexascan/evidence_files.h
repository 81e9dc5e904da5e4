// Files as places on a disk: which paths name one and the same file, and how a copy is taken
// without a trace on the original.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

namespace vexascan {

// `path` with `suffix` appended to its last name: "sms.db" and "-wal" give "sms.db-wal".
std::filesystem::path WithSuffix(const std::filesystem::path& path, std::string_view suffix);

// The names under which SQLite keeps state beside a database.
std::vector<std::filesystem::path> SideFiles(const std::filesystem::path& database);

// True when writing to one path would change, or create, what the other names: one path spelled in
// two ways, through links of either kind, whether the file exists yet or not.
bool SamePlace(const std::filesystem::path& a, const std::filesystem::path& b);

// Copies the bytes of `from` into a new file at `to`, readable and writable by the owner alone.
// `from` is opened for reading only, and its access time stays where the system allows that.
// Throws std::system_error.
void CopyBytes(const std::filesystem::path& from, const std::filesystem::path& to);

// Puts a copy of `from` at `to` in one step: whoever looks at `to` sees the old file or the whole
// new one. Throws std::system_error.
void PutInPlace(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace vexascan
