// The floor of a DOM-based COLLADA load: read the file into memory, parse it
// in place with pugixml using the options of the host's XML reader, and
// convert every number of every text node with std::from_chars into a
// preallocated buffer. Any loader that builds its values from a pugixml DOM
// does at least this much work.
#pragma once

#include <cstdint>
#include <string>

namespace oxdae_bench {

struct FloorResult {
  bool ok = false;  // the file was read and is well-formed XML
  uint64_t bytes = 0;
  double readSeconds = 0.0;
  double parseSeconds = 0.0;
  double convertSeconds = 0.0;
  double releaseSeconds = 0.0;  // freeing the text and the DOM
  double cpuSeconds = 0.0;      // processor time of the four phases
  uint64_t textNodes = 0;
  uint64_t floats = 0;       // numbers of texts read as floats
  uint64_t ints = 0;         // numbers of <p>, <vcount> and <int_array>
  uint64_t otherTokens = 0;  // tokens that are not numbers (names, words)

  double TotalSeconds() const {
    return readSeconds + parseSeconds + convertSeconds + releaseSeconds;
  }
};

FloorResult LoadFloor(const std::string& path);

// Processor time used by this process so far.
double ProcessCpuSeconds();

}  // namespace oxdae_bench
