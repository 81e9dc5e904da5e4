/* Compiles when the public header stands alone in C, and holds the types of the five functions. */
#include <vexasqlitesdk.h>

struct Functions {
  int (*init)(const char*, const char*);
  int (*scan)(const char*, int, void*);
  void (*stop)(void);
  void (*pause)(void);
  int (*uninit)(void);
};

extern const struct Functions kFunctions;
const struct Functions kFunctions = {InitSqliteSDK, Scan, Stop, Pause, UninitSqliteSDK};
