// Growable arrays and hash tables of the host: the standard containers under
// the host's names, plus the bucket-count rule the host uses for new tables.
#pragma once

#include <unordered_map>
#include <vector>

namespace OxKernel {

template <class T>
using oxArray = std::vector<T>;

template <class Key, class Value, class Hash = std::hash<Key>, class Equal = std::equal_to<Key>>
using oxHash = std::unordered_map<Key, Value, Hash, Equal>;

struct oxHashTools {
  // The bucket count the host prefers for a table expected to hold `entries`
  // entries: the smallest power of two not below it (at least 1).
  static unsigned int ComputePreferredSize(unsigned int entries) {
    unsigned int size = 1;
    while (size < entries && size < (1u << 31))
      size <<= 1;
    return size;
  }
};

}  // namespace OxKernel
