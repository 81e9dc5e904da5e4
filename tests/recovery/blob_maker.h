#pragma once

#include <cstddef>

#include "recovery/random.h"
#include "recovery/value.h"

namespace recovery {

// Blobs of a length between both.
Blob MakeBlob(Random& random, size_t least, size_t most);
Blob MakePlist(Random& random, size_t least, size_t most);
Blob MakeProtobuf(Random& random, size_t least, size_t most);
// Counts of 32 bits each, the lowest byte first, nearly always small.
Blob MakeCounts(Random& random, size_t least, size_t most);
Blob MakeJsonBlob(Random& random, size_t least, size_t most);
Blob MakeJpeg(Random& random, size_t least, size_t most);

}  // namespace recovery
