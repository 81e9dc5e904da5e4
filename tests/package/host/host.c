/* The smallest host: every function is called once, and the results are those of the header. */
#include <stdio.h>
#include <string.h>
#include <vexasqlitesdk.h>

static int failures = 0;

static void Expect(const char* call, int result, int expected) {
  if (result == expected) return;
  fprintf(stderr, "%s gave %d instead of %d\n", call, result, expected);
  ++failures;
}

int main(int argc, char** argv) {
  const char* not_json = "{";
  const char* incomplete = "{\"system_type\": 0}";
  int context = 0;
  if (argc != 3) return 2;

  Expect("InitSqliteSDK without a folder", InitSqliteSDK(argv[1], NULL), 1);
  Expect("InitSqliteSDK", InitSqliteSDK(argv[1], argv[2]), 0);
  Expect("Scan of nothing", Scan(NULL, 0, &context), 1000);
  Expect("Scan of no JSON", Scan(not_json, (int)strlen(not_json), &context), 5);
  Expect("Scan of an incomplete text", Scan(incomplete, (int)strlen(incomplete), &context), 1000);
  Pause();
  Stop();
  Expect("UninitSqliteSDK", UninitSqliteSDK(), 0);
  return failures == 0 ? 0 : 1;
}
