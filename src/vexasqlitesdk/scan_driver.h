#pragma once

#include <string>

// Version text that InitSqliteSDK logs.
inline constexpr const char* kVersionText = "2, 1, 0, 33-D-5ebfc21f";

// The folder that holds the configuration database, as InitSqliteSDK got it.
extern std::string g_work_folder;

// One whole scan of one source database, on the caller's thread, between the "Enter" and "End"
// lines of Scan. The arguments and the result are those of Scan.
int RunScan(const char* json, int json_length, void* caller_context);
