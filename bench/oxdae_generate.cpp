// oxdae_generate: writes a deterministic COLLADA 1.4.1 document for the
// benchmarks: meshes of a given size, or with --scene the animated scene
// graph of the scene benchmark.
//
//   oxdae_generate [--megabytes N] [--seed N] [--scaling] OUT.dae
//   oxdae_generate --scene [--nodes N] [--channels N] [--keys N] [--seed N] OUT.dae
//
// N megabytes are N * 10^6 bytes (fractions allowed; default 50). The same
// options always give the same bytes.
#include <cstdio>
#include <string>
#include <string_view>

#include "oxdae_bench_report.h"
#include "oxdae_document_generator.h"
#include "oxdae_scene_generator.h"

namespace {

using oxdae_bench::ParseNumber;

constexpr const char* kUsage =
    "usage: oxdae_generate [--megabytes N] [--seed N] [--scaling] OUT.dae\n"
    "       oxdae_generate --scene [--nodes N] [--channels N] [--keys N] [--seed N] OUT.dae\n"
    "  --megabytes N  document size in units of 10^6 bytes (default 50)\n"
    "  --seed N       seed of the generator (default 1)\n"
    "  --scaling      the scaling benchmark's mix: more meshes and skins of the\n"
    "                 same size, rather than larger ones, in a larger document\n"
    "  --scene        the scene benchmark's scene graph instead of meshes\n"
    "  --nodes N      nodes of the scene (default 100000)\n"
    "  --channels N   animation channels of the scene (default 1000)\n"
    "  --keys N       keys of each channel (default 1000)\n";

int Usage() {
  std::fputs(kUsage, stderr);
  return 2;
}

struct Arguments {
  uint64_t seed = 1;
  double megabytes = 50.0;
  oxdae_bench::SceneOptions scene;  // its seed is `seed`, set when it is written
  bool isScene = false;
  bool isScaling = false;
  std::string output;
};

// A flag with a value; false for another flag or a bad value.
bool ParseOption(std::string_view arg, std::string_view value, Arguments& args) {
  if (arg == "--megabytes") return ParseNumber(value, args.megabytes) && args.megabytes > 0.0;
  if (arg == "--seed") return ParseNumber(value, args.seed);
  if (arg == "--nodes") return ParseNumber(value, args.scene.nodes);
  if (arg == "--channels") return ParseNumber(value, args.scene.channels);
  if (arg == "--keys") return ParseNumber(value, args.scene.keys);
  return false;
}

bool ParseArguments(int argc, char** argv, Arguments& args) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view arg = argv[i];
    if (arg == "--scene") {
      args.isScene = true;
    } else if (arg == "--scaling") {
      args.isScaling = true;
    } else if (arg.starts_with("-")) {
      if (i + 1 >= argc || !ParseOption(arg, argv[++i], args)) return false;
    } else if (args.output.empty()) {
      args.output = std::string(arg);
    } else {
      return false;
    }
  }
  return !args.output.empty();
}

// The bytes written, 0 when writing failed.
uint64_t Write(const Arguments& args) {
  if (args.isScene) {
    oxdae_bench::SceneOptions scene = args.scene;
    scene.seed = args.seed;
    return oxdae_bench::WriteSceneFile(scene, args.output).bytes;
  }
  const auto bytes = static_cast<uint64_t>(args.megabytes * 1e6);
  const oxdae_bench::DocumentOptions options = args.isScaling
                                                   ? oxdae_bench::ScalingDocument(bytes, args.seed)
                                                   : oxdae_bench::DocumentOptions{bytes, args.seed};
  return oxdae_bench::WriteDocumentFile(options, args.output);
}

}  // namespace

int main(int argc, char** argv) {
  Arguments args;
  if (!ParseArguments(argc, argv, args)) return Usage();
  const uint64_t written = Write(args);
  if (written == 0) {
    std::fprintf(stderr, "oxdae_generate: cannot write '%s'\n", args.output.c_str());
    return 1;
  }
  std::printf("wrote %llu bytes to %s\n", static_cast<unsigned long long>(written),
              args.output.c_str());
  return 0;
}
