// oxdae_floor: the floor of a pugixml-based load as a program of its own, so
// that whole processes can be compared (oxdae_process_bench runs it beside
// `oxdae info`). Reads PATH into ordinary memory, parses it in place,
// converts every number, frees everything and prints what it found.
//
//   oxdae_floor PATH
//
// Exit code 0 when the file was read and is well-formed XML, 1 otherwise.
#include <cstdio>

#include "oxdae_floor.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: oxdae_floor PATH\n", stderr);
    return 2;
  }
  const oxdae_bench::FloorResult result = oxdae_bench::LoadFloor(argv[1]);
  if (!result.ok) {
    std::fprintf(stderr, "oxdae_floor: cannot read or parse '%s'\n", argv[1]);
    return 1;
  }
  std::printf("%llu bytes, %llu text nodes, %llu floats, %llu ints, %llu other tokens\n",
              static_cast<unsigned long long>(result.bytes),
              static_cast<unsigned long long>(result.textNodes),
              static_cast<unsigned long long>(result.floats),
              static_cast<unsigned long long>(result.ints),
              static_cast<unsigned long long>(result.otherTokens));
  return 0;
}
