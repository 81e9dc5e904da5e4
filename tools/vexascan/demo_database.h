// Writes the sample database the way a phone does, with a log that is still open when the copy of
// it is taken.
#pragma once

#include <filesystem>
#include <vector>

#include "demo_messages.h"

namespace vexascan {

constexpr const char* kSampleName = "mmssms.db";

// Builds the database in `workshop` and puts copies of it and of its log into `folder`, as an
// examiner gets them from a running phone. Throws ScanFailure when SQLite would erase what it
// deletes, or DatabaseError.
void WriteSample(const std::vector<Message>& messages, const std::filesystem::path& workshop,
                 const std::filesystem::path& folder);

}  // namespace vexascan
