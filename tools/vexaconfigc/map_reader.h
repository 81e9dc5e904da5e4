#pragma once

#include <yaml-cpp/yaml.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics.h"

namespace vexaconfigc {

// The line of a node, from 1.
int LineOf(const YAML::Node& node);

// Reads one YAML map whose keys are known beforehand. Whatever is missing, unknown, given twice or
// of the wrong form becomes an error with its line; the reader then answers with an empty value and
// goes on, so that one run shows every fault of a file.
class MapReader {
 public:
  // `what` names the map in the errors, as in "a layout". `keys` are all keys it may have.
  MapReader(const YAML::Node& node, std::string what, std::initializer_list<const char*> keys,
            const std::string& file, Diagnostics& diagnostics);

  int line() const { return line_; }
  bool Has(const char* key) const;
  // The line of a key's value; the map's own line when the key is missing.
  int LineOfKey(const char* key) const;

  std::string Text(const char* key);
  std::string OptionalText(const char* key);
  bool Flag(const char* key);
  bool OptionalFlag(const char* key);
  int64_t Number(const char* key);
  // A number that fits into the 32 bits that the library reads.
  int32_t SmallNumber(const char* key);
  // One of the given words, as its index; -1 after an error.
  int Word(const char* key, std::initializer_list<const char*> words);
  // The members of a list.
  std::vector<YAML::Node> List(const char* key);
  std::vector<YAML::Node> OptionalList(const char* key);
  // The map below a key; undefined when missing.
  YAML::Node Map(const char* key);

 private:
  YAML::Node Find(const char* key) const;
  YAML::Node Require(const char* key);
  std::optional<std::string> Scalar(const YAML::Node& value, const char* key);
  void Error(int line, const std::string& words);

  YAML::Node node_;
  std::string what_;
  std::string file_;
  Diagnostics& diagnostics_;
  int line_;
};

}  // namespace vexaconfigc
