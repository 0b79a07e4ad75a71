// oxdae_generate: writes a deterministic COLLADA 1.4.1 document of a given
// size for the benchmarks.
//
//   oxdae_generate [--megabytes N] [--seed N] OUT.dae
//
// N megabytes are N * 10^6 bytes (fractions allowed; default 50). The same
// seed and size always give the same bytes.
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>

#include "oxdae_document_generator.h"

namespace {

constexpr const char* kUsage =
    "usage: oxdae_generate [--megabytes N] [--seed N] OUT.dae\n"
    "  --megabytes N  document size in units of 10^6 bytes (default 50)\n"
    "  --seed N       seed of the generator (default 1)\n";

int Usage() {
  std::fputs(kUsage, stderr);
  return 2;
}

template <class T>
bool ParseNumber(std::string_view text, T& value) {
  const char* end = text.data() + text.size();
  const auto r = std::from_chars(text.data(), end, value);
  return r.ec == std::errc() && r.ptr == end;
}

struct Arguments {
  oxdae_bench::DocumentOptions options;
  std::string output;
};

bool ParseArguments(int argc, char** argv, Arguments& args) {
  double megabytes = 50.0;
  for (int i = 1; i < argc; ++i) {
    const std::string_view arg = argv[i];
    const bool hasValue = i + 1 < argc;
    if (arg == "--megabytes" && hasValue) {
      if (!ParseNumber(argv[++i], megabytes) || megabytes <= 0.0) return false;
    } else if (arg == "--seed" && hasValue) {
      if (!ParseNumber(argv[++i], args.options.seed)) return false;
    } else if (args.output.empty() && !arg.starts_with("-")) {
      args.output = std::string(arg);
    } else {
      return false;
    }
  }
  args.options.bytes = static_cast<uint64_t>(megabytes * 1e6);
  return !args.output.empty();
}

}  // namespace

int main(int argc, char** argv) {
  Arguments args;
  if (!ParseArguments(argc, argv, args)) return Usage();
  const uint64_t written = oxdae_bench::WriteDocumentFile(args.options, args.output);
  if (written == 0) {
    std::fprintf(stderr, "oxdae_generate: cannot write '%s'\n", args.output.c_str());
    return 1;
  }
  std::printf("wrote %llu bytes to %s\n", static_cast<unsigned long long>(written),
              args.output.c_str());
  return 0;
}
