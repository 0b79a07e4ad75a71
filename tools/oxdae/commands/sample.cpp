// oxdae sample FILE --time T [--animation ID] [--json]: the value every
// animation channel gives at time T, channels in document order (nested
// animations depth first). With --animation only the channels of that
// animation and of the animations nested in it.
//
// A channel's value is what its sampler gives at T for as many floats as
// the stride of the sampler's OUTPUT accessor; a stride of 0, or no
// accessor, counts as 1, as it does for the sampler itself. A channel
// that is not bound to an animatable value, or whose sampler cannot give a
// value, has none; the sampler logs why.
//
// With --exact the value is the curve the sampler's sources describe,
// evaluated key by key as its INTERPOLATION values say (STEP, LINEAR,
// BEZIER, HERMITE, CARDINAL, BSPLINE; see oxDAECurve.h), instead of the
// module's linear keyframe controller. Its width is the OUTPUT stride.
#include <algorithm>

#include <oxDAEConvert/oxDAECurve.h>

#include "oxdaeCommon.h"

namespace oxdae {

namespace {

using namespace OxDAEReader;

struct SampleOptions {
  std::string file;
  std::string animation;
  float time = 0.0f;
  bool json = false;
  bool exact = false;
};

struct ChannelSample {
  const oxDAEChannel* channel = nullptr;
  const oxDAEAnimation* animation = nullptr;  // the enclosing animation
  bool hasValue = false;
  std::vector<float> values;
};

bool IsWithin(const oxDAEAnimation* animation, const oxDAEAnimation* outer) {
  for (; animation; animation = animation->parentAnimation) {
    if (animation == outer) return true;
  }
  return false;
}

// Samples one bound channel. The stride comes from the document, so the
// buffer is no larger than what the sampler can write: a controller writes
// at most 16 floats, and a sampler without one writes `stride` floats only
// when they lie inside the OUTPUT array. A larger stride fails inside the
// sampler without writing.
void Sample(ChannelSample& sample, float time) {
  const oxDAESampler* sampler = sample.channel->sampler;
  const oxDAEInputElement* output = sampler->GetInput("OUTPUT");
  const oxDAEAccessor* accessor = output ? output->GetCommonAccessor() : nullptr;
  const unsigned int stride = std::max<unsigned int>(accessor ? accessor->stride : 0, 1);
  const size_t held = accessor && accessor->source ? accessor->source->GetValueCount() : 0;
  sample.values.assign(std::min<size_t>(stride, std::max<size_t>(16, held)), 0.0f);
  sample.hasValue = sampler->GetFloatValue(time, stride, sample.values.data()) == 0;
}

// Samples one bound channel on the exact curve of its sampler.
void SampleExactly(ChannelSample& sample, float time) {
  const std::optional<OxDAEConvert::oxDAECurve> curve =
      OxDAEConvert::oxDAECurve::FromSampler(*sample.channel->sampler);
  if (!curve) return;
  sample.values.assign(curve->GetStride(), 0.0f);
  curve->Evaluate(time, sample.values.data());
  sample.hasValue = true;
}

std::vector<ChannelSample> SampleChannels(const oxDAEFile& document, float time,
                                          const oxDAEAnimation* only, bool exact) {
  std::vector<ChannelSample> samples;
  for (const oxDAEChannel* channel : AllOf<oxDAEChannel>(document)) {
    ChannelSample sample;
    sample.channel = channel;
    sample.animation = oxDAEAnimation::DynamicCast(channel->parent);
    if (only && !IsWithin(sample.animation, only)) continue;
    if (channel->target && channel->sampler) (exact ? SampleExactly : Sample)(sample, time);
    samples.push_back(std::move(sample));
  }
  return samples;
}

Json SamplesJSON(const std::vector<ChannelSample>& samples, float time) {
  Json channels = Json::array();
  for (const ChannelSample& s : samples) {
    Json values = nullptr;
    if (s.hasValue) {
      values = Json::array();
      for (const float v : s.values)
        values.push_back(JsonNumber(v));
    }
    channels.push_back({{"animation", s.animation ? JsonText(s.animation->id) : Json()},
                        {"source", JsonText(s.channel->source)},
                        {"target", JsonText(s.channel->targetPath)},
                        {"bound", s.channel->target != nullptr},
                        {"values", std::move(values)}});
  }
  return {{"time", JsonNumber(time)}, {"channels", std::move(channels)}};
}

// One line per channel: "ANIMATION: TARGET = VALUES".
std::string SamplesText(const std::vector<ChannelSample>& samples) {
  if (samples.empty()) return "no channels\n";
  std::string text;
  for (const ChannelSample& s : samples) {
    const bool named = s.animation && !s.animation->id.empty();
    text += (named ? s.animation->id : oxString("(no id)")) + ": " + s.channel->targetPath;
    if (!s.channel->target) {
      text += " (unbound)\n";
      continue;
    }
    if (!s.hasValue) {
      text += " (no value)\n";
      continue;
    }
    text += " =";
    for (const float v : s.values) {
      text += ' ';
      text += NumberText(v);
    }
    text += "\n";
  }
  return text;
}

int RunSample(const SampleOptions& options) {
  LogCounter log;
  oxDAEFile document;
  if (!LoadDocument(document, options.file, log)) return kExitFailure;
  const oxDAEAnimation* only = nullptr;
  if (!options.animation.empty()) {
    only = FindRequested<oxDAEAnimation>(document, options.file, options.animation, "animation");
    if (!only) return kExitFailure;
  }
  const std::vector<ChannelSample> samples =
      SampleChannels(document, options.time, only, options.exact);
  Print(
      options.json, [&] { return SamplesJSON(samples, options.time); },
      [&samples] { return SamplesText(samples); });
  return kExitOK;
}

}  // namespace

Command AddSample(CLI::App& tool) {
  auto options = std::make_shared<SampleOptions>();
  CLI::App* command =
      tool.add_subcommand("sample", "Print every animation channel's value at a time.");
  AddFileAndJSON(*command, options->file, options->json, "samples", [&] {
    AddTimeOption(*command, options->time, true);
    command->add_option("--animation", options->animation,
                        "the id of the animation whose channels to sample (nested ones "
                        "included)");
    command->add_flag("--exact", options->exact,
                      "evaluate each curve as its INTERPOLATION values say (BEZIER, HERMITE, "
                      "CARDINAL, BSPLINE, STEP, LINEAR) instead of linearly");
  });
  return {command, [options] { return RunSample(*options); }};
}

}  // namespace oxdae
