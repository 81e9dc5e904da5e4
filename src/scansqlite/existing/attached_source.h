#pragma once

#include <sqlite3.h>

#include <string>

// The working copy of the source as a second database of the result's connection, so that one
// statement can read from one and write to the other.
// https://www.sqlite.org/lang_attach.html
class AttachedSource {
 public:
  // `connection` outlives this. Fails without a word, as for a source of another text encoding.
  AttachedSource(sqlite3* connection, const std::string& path);
  // A transaction that is still open keeps the source until the connection closes.
  ~AttachedSource();
  AttachedSource(const AttachedSource&) = delete;
  AttachedSource& operator=(const AttachedSource&) = delete;

  bool is_attached() const { return is_attached_; }

  // The source's name in front of a table or view of it, with the dot.
  static const char* Prefix() { return "vexa_source."; }

 private:
  sqlite3* connection_;
  bool is_attached_;
};
