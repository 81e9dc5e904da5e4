#pragma once

#include <cstdint>
#include <string>

// What one scan is asked to do. Lives on the stack of Scan; all texts are UTF-8.
struct ScanContext {
  int32_t system_type = 0;
  int32_t data_type = 0;
  int32_t system_version = 0;
  std::string work_folder;  // holds the configuration database
  std::string wal_path;     // source_db_path with "-wal" appended
  std::string source_db_path;
  std::string dest_db_path;
  std::string temp_folder;
};
