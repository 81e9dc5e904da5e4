// Compiles when the public header stands alone in C++, and holds the types of the five functions.
#include <vexasqlitesdk.h>

namespace {
struct Functions {
  int (*init)(const char*, const char*);
  int (*scan)(const char*, int, void*);
  void (*stop)();
  void (*pause)();
  int (*uninit)();
};
}  // namespace

extern const void* const kFunctionsInUse;
static const Functions kFunctions = {InitSqliteSDK, Scan, Stop, Pause, UninitSqliteSDK};
const void* const kFunctionsInUse = &kFunctions;
