// oxdae_scene_bench: a large scene graph with animations. Times oxDAEFile
// Load against the floor of any pugixml-based loader, the local matrix of
// every node, and the sampling of every animation channel.
//
//   oxdae_scene_bench [--file PATH | --nodes N --channels N --keys N --seed N]
//                     [--samples N] [--runs N]
//
// Without --file a scene of 100,000 nodes and 1,000 channels of 1,000 keys
// is generated into a temporary file. Each step runs --runs times (default
// 5); the table gives the best and the median run.
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include <oxDAEReadWrite/oxDAEReadWrite.h>

#include "oxdae_bench_module.h"
#include "oxdae_bench_report.h"
#include "oxdae_floor.h"
#include "oxdae_scene_generator.h"

namespace {

using namespace OxDAEReader;
using oxdae_bench::Format;
using oxdae_bench::Grouped;
using oxdae_bench::ParseNumber;
using oxdae_bench::PrintTarget;
using oxdae_bench::Stopwatch;
using oxdae_bench::Timing;

constexpr const char* kProgram = "oxdae_scene_bench";

constexpr const char* kUsage =
    "usage: oxdae_scene_bench [--file PATH | --nodes N --channels N --keys N --seed N]\n"
    "                         [--samples N] [--runs N]\n"
    "  --file PATH     benchmark this document instead of a generated one\n"
    "  --nodes N       nodes of the generated scene (default 100000)\n"
    "  --channels N    animation channels of the generated scene (default 1000)\n"
    "  --keys N        keys of each channel (default 1000)\n"
    "  --seed N        seed of the generated scene (default 1)\n"
    "  --samples N     times each channel is sampled at per run (default 10000)\n"
    "  --runs N        runs of each step; best and median are shown (default 5)\n";

constexpr double kLoadTarget = 1.1;      // load time / floor time
constexpr double kSampleTarget = 10e6;   // scalar samples per second
constexpr double kSampledMargin = 0.05;  // sampled before the first and after the last key
constexpr double kMegabyte = 1e6;
constexpr oxdae_bench::TargetColumns kTargetColumns = {96, 50, 20};

// --- Arguments -------------------------------------------------------------------

struct Options {
  std::string file;
  oxdae_bench::SceneOptions scene;
  uint32_t samples = 10'000;
  int runs = 5;
};

bool ParseArgument(std::string_view arg, std::string_view value, Options& o) {
  if (arg == "--file") {
    o.file = std::string(value);
    return true;
  }
  if (arg == "--nodes") return ParseNumber(value, o.scene.nodes);
  if (arg == "--channels") return ParseNumber(value, o.scene.channels);
  if (arg == "--keys") return ParseNumber(value, o.scene.keys);
  if (arg == "--seed") return ParseNumber(value, o.scene.seed);
  if (arg == "--samples") return ParseNumber(value, o.samples) && o.samples > 0;
  if (arg == "--runs") return ParseNumber(value, o.runs) && o.runs > 0;
  return false;
}

bool ParseArguments(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; i += 2) {
    if (i + 1 >= argc || !ParseArgument(argv[i], argv[i + 1], options)) return false;
  }
  return true;
}

// --- The loaded scene ------------------------------------------------------------

// A sampler with a controller, and the span of its key times.
struct Channel {
  const oxDAESampler* sampler = nullptr;
  unsigned int valueSize = 0;
  float firstTime = 0.0f;
  float lastTime = 0.0f;
};

struct Content {
  std::vector<const oxDAENode*> nodes;
  std::vector<Channel> channels;
  uint64_t channelElements = 0;
  uint64_t boundChannels = 0;  // with both a sampler and a target
  uint64_t scalarsPerSample = 0;
};

// The sampler's channel, or false when it has no controller or no key.
bool ChannelOf(const oxDAESampler& sampler, Channel& channel) {
  const OxMath::oxKeyframeController* controller = sampler.controller.Get();
  if (!controller || controller->GetKeysCount() == 0) return false;
  const unsigned int valueSize = controller->GetValueSize();
  const unsigned int last = controller->GetKeysCount() - 1;
  const float* keys = controller->GetKeyBase();
  channel = {&sampler, valueSize, keys[valueSize],
             keys[size_t{last} * controller->GetKeySize() + valueSize]};
  return true;
}

Content FindContent(const oxDAEFile& document) {
  Content content;
  for (const auto& element : document.GetElements()) {
    if (const oxDAENode* node = oxDAENode::DynamicCast(element.get()))
      content.nodes.push_back(node);
    if (const oxDAEChannel* c = oxDAEChannel::DynamicCast(element.get())) {
      ++content.channelElements;
      content.boundChannels += c->sampler && c->target ? 1 : 0;
    }
    const oxDAESampler* sampler = oxDAESampler::DynamicCast(element.get());
    Channel channel;
    if (sampler && ChannelOf(*sampler, channel)) {
      content.channels.push_back(channel);
      content.scalarsPerSample += channel.valueSize;
    }
  }
  return content;
}

// --- Runs ------------------------------------------------------------------------

struct Results {
  uint64_t inputBytes = 0;
  Timing floor, load, localMatrices, samples;
  uint64_t sampleCalls = 0;  // per run
  uint64_t failedSamples = 0;
  double checksum = 0.0;  // keeps the results in use
};

void TimeLocalMatrices(const Content& content, int runs, Results& r) {
  for (int i = 0; i < runs; ++i) {
    double sum = 0.0;
    const Stopwatch watch;
    for (const oxDAENode* node : content.nodes) {
      const OxMath::oxMatrix44 m = node->ComputeLocalMatrix();
      sum += m.m[0] + m.m[12];
    }
    watch.Stop(r.localMatrices);
    r.checksum += sum;
  }
}

// One run: every channel at each of `samples` times in turn, as a player
// advancing frame by frame would, from a little before the first key to a
// little after the last.
void SampleChannels(const Content& content, uint32_t samples, Results& r) {
  float value[16] = {};
  double sum = 0.0;
  const double step = samples > 1 ? (1.0 + 2 * kSampledMargin) / (samples - 1) : 0.0;
  const Stopwatch watch;
  for (uint32_t s = 0; s < samples; ++s) {
    const double u = -kSampledMargin + step * s;
    for (const Channel& c : content.channels) {
      const float time = static_cast<float>(c.firstTime + (c.lastTime - c.firstTime) * u);
      r.failedSamples += c.sampler->GetFloatValue(time, c.valueSize, value) != 0 ? 1 : 0;
      sum += value[0];
    }
  }
  watch.Stop(r.samples);
  r.checksum += sum;
}

void TimeSamples(const Content& content, uint32_t samples, int runs, Results& r) {
  r.sampleCalls = uint64_t{samples} * content.channels.size();
  for (int i = 0; i < runs; ++i)
    SampleChannels(content, samples, r);
}

// --- Report ------------------------------------------------------------------------

void PrintScene(const oxdae_bench::SceneSummary& s) {
  std::printf("  scene     %s nodes to depth %u (%s with a matrix) + %u library nodes\n",
              Grouped(s.nodes).c_str(), s.depth, Grouped(s.matrixNodes).c_str(), s.libraryNodes);
  std::printf("            instances: %s geometry, %s light, %s camera, %s node\n",
              Grouped(s.geometryInstances).c_str(), Grouped(s.lightInstances).c_str(),
              Grouped(s.cameraInstances).c_str(), Grouped(s.nodeInstances).c_str());
  std::printf("            %s channels of %s keys: %s rot.ANGLE (1 float), %s trans (3 floats)\n",
              Grouped(s.angleChannels + s.translateChannels).c_str(), Grouped(s.keys).c_str(),
              Grouped(s.angleChannels).c_str(), Grouped(s.translateChannels).c_str());
}

void PrintContent(const Content& c, const oxdae_bench::LogCounter& log) {
  std::printf(
      "  document  %s nodes; %s samplers with keys (%s floats a sample); %s of %s "
      "channels bound\n",
      Grouped(c.nodes.size()).c_str(), Grouped(c.channels.size()).c_str(),
      Grouped(c.scalarsPerSample).c_str(), Grouped(c.boundChannels).c_str(),
      Grouped(c.channelElements).c_str());
  oxdae_bench::PrintLog(log);
}

void PrintHeader() {
  std::printf("\n  %-42s %8s %8s %8s  %s\n", "step", "best ms", "med ms", "cpu ms",
              "rate (best, median)");
  std::printf("  %s\n", std::string(96, '-').c_str());
}

// A row: the times and, per second of the best and of the median run,
// `amount` of `unit`, scaled by `scale` (1e6 for "MB/s").
void PrintRow(const std::string& name, const Timing& t, double amount, double scale,
              const char* unit) {
  std::printf("  %-42s %8.1f %8.1f %8.1f  %.1f, %.1f %s\n", name.c_str(), t.Best() * 1e3,
              t.Median() * 1e3, t.BestCpu() * 1e3, amount / t.Best() / scale,
              amount / t.Median() / scale, unit);
}

// A row whose rate is the time per item.
void PrintPerItem(const std::string& name, const Timing& t, double items, const char* unit) {
  std::printf("  %-42s %8.1f %8.1f %8.1f  %.1f, %.1f ns/%s\n", name.c_str(), t.Best() * 1e3,
              t.Median() * 1e3, t.BestCpu() * 1e3, t.Best() / items * 1e9, t.Median() / items * 1e9,
              unit);
}

// Floats one sampling run gives: each channel's value size per sampled time.
double FloatsPerRun(const Content& c, const Results& r) {
  if (c.channels.empty()) return 0.0;
  const double times = static_cast<double>(r.sampleCalls / c.channels.size());
  return times * static_cast<double>(c.scalarsPerSample);
}

void PrintTimings(const Content& c, const Results& r) {
  const double bytes = static_cast<double>(r.inputBytes);
  PrintHeader();
  PrintRow("(a) floor: read + pugixml + from_chars", r.floor, bytes, kMegabyte, "MB/s");
  PrintRow("(b) oxDAEFile::Load", r.load, bytes, kMegabyte, "MB/s");
  if (!c.nodes.empty()) {
    PrintPerItem("(c) ComputeLocalMatrix, " + Grouped(c.nodes.size()) + " nodes", r.localMatrices,
                 static_cast<double>(c.nodes.size()), "node");
  }
  if (r.sampleCalls > 0) {
    PrintRow("(d) GetFloatValue, " + Grouped(r.sampleCalls) + " calls", r.samples,
             FloatsPerRun(c, r), 1e6, "M floats/s");
    PrintPerItem("    the same per call", r.samples, static_cast<double>(r.sampleCalls), "call");
  }
  std::printf("  (checksum %.6g; %llu samples failed)\n", r.checksum,
              static_cast<unsigned long long>(r.failedSamples));
}

void PrintTargets(const Content& c, const Results& r) {
  oxdae_bench::PrintTargetsHeading(kTargetColumns);
  oxdae_bench::PrintLoadTarget(kTargetColumns, r.load, r.floor, kLoadTarget);
  if (r.sampleCalls == 0) return;
  const double floats = FloatsPerRun(c, r) / 1e6;
  const double rateBest = floats / r.samples.Best();
  const double rateMedian = floats / r.samples.Median();
  const double rateCpu = floats / r.samples.BestCpu();
  PrintTarget(kTargetColumns, "channel samples",
              Format("%.1f M floats/s best, %.1f median, %.1f cpu", rateBest, rateMedian, rateCpu),
              Format(">= %.0f M/s median", kSampleTarget / 1e6), rateMedian * 1e6 >= kSampleTarget);
}

// --- Driver ------------------------------------------------------------------------

bool PrepareInput(const Options& options, const oxdae_bench::TempFile& temp, std::string& input) {
  if (!options.file.empty()) {
    input = options.file;
    return true;
  }
  input = temp.Path();
  const oxdae_bench::Clock::time_point start = oxdae_bench::Clock::now();
  const oxdae_bench::SceneSummary summary = oxdae_bench::WriteSceneFile(options.scene, input);
  if (summary.bytes == 0) return false;
  oxdae_bench::PrintGenerated(summary.bytes, options.scene.seed, start);
  PrintScene(summary);
  return true;
}

int Run(const Options& options) {
  const oxdae_bench::ModuleUse module;
  const oxdae_bench::LogCounter log;
  const oxdae_bench::TempFile temp(kProgram, ".dae");
  std::string input;
  std::printf("%s\n", kProgram);
  if (!PrepareInput(options, temp, input)) {
    std::fprintf(stderr, "%s: cannot write %s\n", kProgram, input.c_str());
    return 1;
  }
  Results r;
  r.inputBytes = oxdae_bench::OpenInput(kProgram, input, options.runs);
  if (r.inputBytes == 0) return 1;
  if (!oxdae_bench::TimeLoadsAgainstFloor(kProgram, input, options.runs, r.floor, r.load)) return 1;
  oxDAEFile document;
  document.Load(OxKernel::oxURI(input));
  const Content content = FindContent(document);
  TimeLocalMatrices(content, options.runs, r);
  TimeSamples(content, options.samples, options.runs, r);
  PrintContent(content, log);
  PrintTimings(content, r);
  PrintTargets(content, r);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return oxdae_bench::Main<Options>(argc, argv, kUsage, ParseArguments, Run);
}
