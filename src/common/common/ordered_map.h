#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

// A map from text to value that is walked in the order in which keys were first added. Tables and
// result fields go by the order of the configuration's rows, so that two scans of one source give
// the same result file to the byte.
template <typename Value>
class OrderedMap {
 public:
  using Entry = std::pair<std::string, Value>;

  // The value under `key`, made with its default when absent.
  Value& operator[](const std::string& key) {
    const auto [at, added] = places_.try_emplace(key, entries_.size());
    if (added) entries_.emplace_back(key, Value{});
    return entries_[at->second].second;
  }

  // Adds the value unless the key is there already.
  void Insert(const std::string& key, Value value) {
    if (places_.try_emplace(key, entries_.size()).second) {
      entries_.emplace_back(key, std::move(value));
    }
  }

  // The value under `key`, or null.
  const Value* Find(const std::string& key) const {
    const auto at = places_.find(key);
    return at == places_.end() ? nullptr : &entries_[at->second].second;
  }
  Value* Find(const std::string& key) {
    const auto at = places_.find(key);
    return at == places_.end() ? nullptr : &entries_[at->second].second;
  }

  auto begin() { return entries_.begin(); }
  auto end() { return entries_.end(); }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }
  size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }

 private:
  std::vector<Entry> entries_;
  std::unordered_map<std::string, size_t> places_;
};
