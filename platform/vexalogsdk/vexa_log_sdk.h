// Logging interface: one log file for the process, one line for each message.
//
// A line reads
//
//   2024-03-09T17:04:31.482Z info VexaSqliteSDK Enter Scan
//   |  UTC, milliseconds    |    |             | message, unchanged
//                           level module
//
// so that the message is the rest of the line, whatever stands in it. Levels: 1 "info",
// 2 "warning", 3 and above "error", below 1 "debug".
//
// Each line is handed to the operating system before LogEx returns, so that nothing already logged
// is lost when the process dies; it is not forced to the disk, so that many lines stay cheap.
//
// All three functions may be called from any thread at any time and never throw. Logging is never a
// reason for the caller's work to fail: what can't be written is dropped.
//
// Covered by tests/unit/platform/vexa_log_sdk_test.cpp.
#ifndef VEXALOGSDK_VEXA_LOG_SDK_H_
#define VEXALOGSDK_VEXA_LOG_SDK_H_

// Opens `log_file_path` (UTF-8) for appending, with its missing parent folders, and sends every
// later line there. A file of an earlier call is let go of first, also when the new one can't be
// opened: lines of one case must not end in the log of another. `module` names lines that LogEx is
// given no module for. `work_folder` has no effect. Returns 0, or 1 when `log_file_path` is null or
// can't be opened; LogEx then does nothing.
int InitLogEx(const char* work_folder, const char* module, const char* log_file_path);

// Appends one line with the text that `format` and its arguments give as for printf, of any length.
// A text that ends in a line feed gets no second one. Does nothing before InitLogEx, after
// UninitLog, and for a null format.
void LogEx(const char* module, int level, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// Closes the log file. Lines that other threads are writing at that time are finished first or
// dropped whole. Returns 0, also when no file is open.
int UninitLog();

#endif  // VEXALOGSDK_VEXA_LOG_SDK_H_
