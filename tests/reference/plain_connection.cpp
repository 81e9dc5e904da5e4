#include "reference/plain_connection.h"

namespace plain_walk {

int PlainConnection::Open(const std::string& path) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open(path.c_str(), &handle);
  handle_.reset(handle);
  return code;
}

void PlainConnection::Execute(const char* sql) {
  sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr);
}

}  // namespace plain_walk
