#include "oxDAEGltfAnimation.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <oxKernel/oxLog.h>

#include "oxDAEGltfCommon.h"

namespace OxDAEConvert {

using namespace OxDAEReader;
using OxKernel::oxConcat;
using Transform = oxDAEHierarchyElement::TransformElement;
using Channels = std::vector<const oxTransformChannel*>;

namespace {

// Frames sampled per animated node at most: a longer range keeps its keys.
constexpr double kMostFrames = 100000;
// Degrees a rotation taken over linearly may turn between two keys: glTF
// interpolates quaternions the short way, which is the document's way only
// below half a turn.
constexpr double kMostLinearTurn = 90.0;

// How a curve runs between its keys, as far as glTF can take it over.
enum class Shape { kConstant, kStep, kLinear, kCubic, kOther };

// True when the BEZIER or HERMITE segment after `key` has its control
// points at a third and two thirds of its time: its value is then a cubic
// in time, which CUBICSPLINE draws exactly.
bool EvenlyTimed(const oxDAECurve& curve, size_t key) {
  const double t0 = curve.GetTime(key);
  const double t1 = curve.GetTime(key + 1);
  const double span = t1 - t0;
  for (unsigned int c = 0; c < curve.GetStride(); ++c) {
    if (std::abs(curve.GetOutControl(key, c).time - (t0 + span / 3)) > 1e-4 * span ||
        std::abs(curve.GetInControl(key + 1, c).time - (t1 - span / 3)) > 1e-4 * span)
      return false;
  }
  return true;
}

Shape ShapeOf(const oxDAECurve& curve) {
  if (curve.GetKeyCount() <= 1) return Shape::kConstant;
  bool step = false, cubic = false;
  for (size_t k = 0; k + 1 < curve.GetKeyCount(); ++k) {
    if (!(curve.GetTime(k + 1) > curve.GetTime(k))) return Shape::kOther;
    switch (curve.GetInterpolation(k)) {
      case oxInterpolation::STEP:
        step = true;
        break;
      case oxInterpolation::LINEAR:
        break;
      case oxInterpolation::BEZIER:
      case oxInterpolation::HERMITE:
        if (!EvenlyTimed(curve, k)) return Shape::kOther;
        cubic = true;
        break;
      default:
        return Shape::kOther;
    }
  }
  if (step) return Shape::kStep;  // mixed with another kind: see SharedShape
  return cubic ? Shape::kCubic : Shape::kLinear;
}

// The shape all the curves can be written in: STEP or LINEAR when every
// curve is that (or constant), CUBICSPLINE when they are LINEAR or cubic
// with one cubic at least; kOther otherwise.
Shape SharedShape(const Channels& channels) {
  bool step = false, linear = false, cubic = false;
  for (const oxTransformChannel* channel : channels) {
    const oxDAECurve& curve = channel->curve;
    for (size_t k = 0; k + 1 < curve.GetKeyCount(); ++k) {
      const oxInterpolation i = curve.GetInterpolation(k);
      step = step || i == oxInterpolation::STEP;
      linear = linear || i == oxInterpolation::LINEAR;
    }
    const Shape shape = ShapeOf(curve);
    if (shape == Shape::kOther) return Shape::kOther;
    cubic = cubic || shape == Shape::kCubic;
  }
  if (step) return linear || cubic ? Shape::kOther : Shape::kStep;
  return cubic ? Shape::kCubic : Shape::kLinear;
}

// The channels of `animation` that drive transforms of `part`.
Channels ChannelsOf(const oxNodeAnimation& animation, oxTrsPart part) {
  Channels channels;
  for (const oxTransformChannel& channel : animation.channels) {
    if (PartOf(*channel.transform) == part) channels.push_back(&channel);
  }
  return channels;
}

// True when the channels drive one transform, and for a rotation only its
// angle (or its whole value with the axis the same at every key).
bool DriveOneTransform(const Channels& channels, oxTrsPart part) {
  for (const oxTransformChannel* channel : channels) {
    if (channel->transform != channels.front()->transform) return false;
    if (part != oxTrsPart::kRotation || channel->member == 3) continue;
    const oxDAECurve& curve = channel->curve;
    if (channel->member >= 0 || curve.GetStride() < 4) return false;
    for (size_t k = 1; k < curve.GetKeyCount(); ++k) {
      if (!std::equal(curve.GetValue(k), curve.GetValue(k) + 3, curve.GetValue(0))) return false;
    }
  }
  return true;
}

// STEP or LINEAR when every channel drives a whole <matrix> with curves of
// that one kind: a matrix whose sixteen numbers run linearly between two
// poses is no translation, rotation and scale between them, so glTF cannot
// follow it exactly anywhere but at the keys; the poses at the keys,
// interpolated as glTF interpolates them, are what such keys mean. kOther
// for any other animation.
Shape MatrixKeysShape(const oxNodeAnimation& animation) {
  Channels channels;
  for (const oxTransformChannel& channel : animation.channels) {
    if (!oxDAEHierarchyElement::MatrixElement::DynamicCast(channel.transform) ||
        channel.member >= 0)
      return Shape::kOther;
    channels.push_back(&channel);
  }
  const Shape shape = SharedShape(channels);
  return shape == Shape::kStep || shape == Shape::kLinear ? shape : Shape::kOther;
}

// Every key time of the channels, sorted, without repeats.
std::vector<float> KeyTimes(const Channels& channels) {
  oxAnimatedSpan span;
  for (const oxTransformChannel* channel : channels)
    span.Add(channel->curve);
  span.Finish();
  return span.keyTimes;
}

std::vector<float> KeyTimes(const oxNodeAnimation& animation) {
  Channels channels;
  for (const oxTransformChannel& channel : animation.channels)
    channels.push_back(&channel);
  return KeyTimes(channels);
}

bool SameKeyTimes(const Channels& channels) {
  const oxDAECurve& first = channels.front()->curve;
  for (const oxTransformChannel* channel : channels) {
    const oxDAECurve& curve = channel->curve;
    if (curve.GetKeyCount() != first.GetKeyCount()) return false;
    for (size_t k = 0; k < curve.GetKeyCount(); ++k) {
      if (curve.GetTime(k) != first.GetTime(k)) return false;
    }
  }
  return true;
}

// Adds, between neighbouring times, the times that keep the rotation's
// angle from turning kMostLinearTurn degrees or more from one to the next
// (the angle runs linearly, so the added keys lie on the curve). Empty when
// that would take more than kMostFrames keys.
std::vector<float> SplitLongTurns(const std::vector<float>& times, const Transform& rotate,
                                  const oxNodeAnimation& animation) {
  std::vector<float> split;
  for (size_t i = 0; i < times.size(); ++i) {
    if (i > 0) {
      const double turn = std::abs(TransformValuesAt(rotate, animation, times[i])[3] -
                                   TransformValuesAt(rotate, animation, times[i - 1])[3]);
      const double pieces = std::ceil(turn / kMostLinearTurn);
      if (!(pieces + static_cast<double>(split.size()) <= kMostFrames)) return {};
      for (double p = 1; p < pieces; ++p)
        split.push_back(static_cast<float>(times[i - 1] + (times[i] - times[i - 1]) * p / pieces));
    }
    split.push_back(times[i]);
  }
  split.erase(std::unique(split.begin(), split.end()), split.end());
  return split;
}

// The values of `part` of `trs` as glTF lists them. A rotation takes the
// sign that keeps it on the side of `previous`, so that interpolation takes
// the short way; `previous` becomes it.
void AppendPart(const oxTRS& trs, oxTrsPart part, std::array<double, 4>& previous,
                std::vector<float>& out) {
  if (part == oxTrsPart::kTranslation) {
    out.insert(out.end(), trs.translation.begin(), trs.translation.end());
    return;
  }
  if (part == oxTrsPart::kScale) {
    out.insert(out.end(), trs.scale.begin(), trs.scale.end());
    return;
  }
  std::array<double, 4> q = trs.rotation;
  const double dot =
      q[0] * previous[0] + q[1] * previous[1] + q[2] * previous[2] + q[3] * previous[3];
  if (dot < 0) {
    for (double& c : q)
      c = -c;
  }
  previous = q;
  out.insert(out.end(), q.begin(), q.end());
}

// The derivative over time of each member (x, y, z) of the one animated
// transform's value, arriving at each key (in) and leaving it (out); 0 at
// the ends and for members no curve drives.
struct Slopes {
  std::vector<std::array<double, 3>> in;
  std::vector<std::array<double, 3>> out;
};

Slopes SlopesOf(const Channels& channels) {
  const size_t keys = channels.front()->curve.GetKeyCount();
  Slopes slopes{std::vector<std::array<double, 3>>(keys, {0, 0, 0}),
                std::vector<std::array<double, 3>>(keys, {0, 0, 0})};
  for (const oxTransformChannel* channel : channels) {
    const oxDAECurve& curve = channel->curve;
    const unsigned int components = channel->member < 0 ? std::min(curve.GetStride(), 3u) : 1u;
    for (unsigned int c = 0; c < components; ++c) {
      const int member = channel->member < 0 ? static_cast<int>(c) : channel->member;
      if (member > 2) continue;
      const auto m = static_cast<size_t>(member);
      for (size_t k = 0; k + 1 < keys; ++k) {
        const double span = curve.GetTime(k + 1) - curve.GetTime(k);
        const double v0 = curve.GetValue(k)[c];
        const double v1 = curve.GetValue(k + 1)[c];
        const bool linear = curve.GetInterpolation(k) == oxInterpolation::LINEAR;
        slopes.out[k][m] =
            linear ? (v1 - v0) / span : 3 * (curve.GetOutControl(k, c).value - v0) / span;
        slopes.in[k + 1][m] =
            linear ? (v1 - v0) / span : 3 * (v1 - curve.GetInControl(k + 1, c).value) / span;
      }
    }
  }
  return slopes;
}

// What the animated transform's members are multiplied by in the part:
// the product of the node's other scales for a scale, 1 for a translation
// (whose members are added to the others').
std::array<double, 3> SlopeFactors(const oxDAENode& node, const Transform& animated,
                                   oxTrsPart part) {
  std::array<double, 3> factors = {1, 1, 1};
  if (part != oxTrsPart::kScale) return factors;
  for (const auto& transform : node.transforms) {
    if (transform.get() == &animated || PartOf(*transform) != oxTrsPart::kScale) continue;
    const std::vector<double> values = StaticValues(*transform);
    for (size_t j = 0; j < 3; ++j)
      factors[j] *= values[j];
  }
  return factors;
}

const char* PathName(oxTrsPart part) {
  if (part == oxTrsPart::kTranslation) return "translation";
  return part == oxTrsPart::kRotation ? "rotation" : "scale";
}

}  // namespace

std::optional<oxTRS> TrsAt(const oxDAENode& node, const oxNodeAnimation& animation, float time) {
  if (!HasTrsOrder(node)) return Decompose(LocalMatrixAt(node, animation, time));
  oxTRS trs;
  const OxMath::oxMatrix44 t = LocalMatrixAt(node, animation, time, oxTrsPart::kTranslation);
  const OxMath::oxMatrix44 s = LocalMatrixAt(node, animation, time, oxTrsPart::kScale);
  const std::optional<oxTRS> r =
      Decompose(LocalMatrixAt(node, animation, time, oxTrsPart::kRotation));
  trs.translation = {t.m[12], t.m[13], t.m[14]};
  trs.scale = {s.m[0], s.m[5], s.m[10]};
  if (r) trs.rotation = r->rotation;
  return trs;
}

bool oxGltfAnimationWriter::AddNode(const oxDAENode& node, const oxNodeAnimation& animation,
                                    const std::vector<size_t>& targets) {
  if (HasTrsOrder(node)) {
    for (const oxTrsPart part : {oxTrsPart::kTranslation, oxTrsPart::kRotation, oxTrsPart::kScale})
      AddPart(node, animation, part, targets);
    return true;
  }
  const Shape shape = MatrixKeysShape(animation);
  const std::vector<float> times =
      shape == Shape::kOther ? SampleTimes(NameOf(node), animation) : KeyTimes(animation);
  std::vector<float> values[3];
  std::array<double, 4> previous = {0, 0, 0, 1};
  bool exact = true;
  for (const float time : times) {
    const std::optional<oxTRS> trs = Decompose(LocalMatrixAt(node, animation, time));
    if (!trs) {
      OX_LOG(OxKernel::kLogWarning,
             oxConcat("node '", NameOf(node),
                      "': its animated matrix is not always a translation, rotation and scale; "
                      "its animation is left out"));
      return false;
    }
    exact = exact && trs->exact;
    for (const oxTrsPart part : {oxTrsPart::kTranslation, oxTrsPart::kRotation, oxTrsPart::kScale})
      AppendPart(*trs, part, previous, values[static_cast<int>(part)]);
  }
  if (!exact) {
    OX_LOG(OxKernel::kLogWarning,
           oxConcat("node '", NameOf(node),
                    "': its animated matrix shears, which glTF's translation, rotation and "
                    "scale cannot hold; the rotation of its columns is kept"));
  }
  const char* interpolation = shape == Shape::kStep ? "STEP" : "LINEAR";
  AddSampler(times, values[0], "VEC3", interpolation, "translation", targets);
  AddSampler(times, values[1], "VEC4", interpolation, "rotation", targets);
  AddSampler(times, values[2], "VEC3", interpolation, "scale", targets);
  return true;
}

void oxGltfAnimationWriter::AddPart(const oxDAENode& node, const oxNodeAnimation& animation,
                                    oxTrsPart part, const std::vector<size_t>& targets) {
  const Channels channels = ChannelsOf(animation, part);
  if (channels.empty()) return;
  const bool one = DriveOneTransform(channels, part);
  Shape shape = one ? SharedShape(channels) : Shape::kOther;
  if (shape == Shape::kCubic && (part == oxTrsPart::kRotation || !SameKeyTimes(channels)))
    shape = Shape::kOther;
  std::vector<float> times = shape == Shape::kOther ? std::vector<float>() : KeyTimes(channels);
  if (shape == Shape::kLinear && part == oxTrsPart::kRotation) {
    times = SplitLongTurns(times, *channels.front()->transform, animation);
    if (times.empty()) shape = Shape::kOther;
  }
  if (shape == Shape::kOther) {
    oxAnimatedSpan span;
    for (const oxTransformChannel* channel : channels)
      span.Add(channel->curve);
    span.Finish();
    times = SampleTimes(NameOf(node), span);
  }
  std::vector<float> values;
  std::array<double, 4> previous = {0, 0, 0, 1};
  for (const float time : times)
    AppendPart(*TrsAt(node, animation, time), part, previous, values);
  const char* type = part == oxTrsPart::kRotation ? "VEC4" : "VEC3";
  if (shape != Shape::kCubic) {
    AddSampler(times, values, type, shape == Shape::kStep ? "STEP" : "LINEAR", PathName(part),
               targets);
    return;
  }
  // Each key's in-tangent, value and out-tangent, as CUBICSPLINE lists them.
  const Slopes slopes = SlopesOf(channels);
  const std::array<double, 3> factors = SlopeFactors(node, *channels.front()->transform, part);
  std::vector<float> keyed;
  for (size_t k = 0; k < times.size(); ++k) {
    for (size_t j = 0; j < 3; ++j)
      keyed.push_back(static_cast<float>(slopes.in[k][j] * factors[j]));
    keyed.insert(keyed.end(), values.begin() + 3 * k, values.begin() + 3 * k + 3);
    for (size_t j = 0; j < 3; ++j)
      keyed.push_back(static_cast<float>(slopes.out[k][j] * factors[j]));
  }
  AddSampler(times, keyed, type, "CUBICSPLINE", PathName(part), targets);
}

void oxGltfAnimationWriter::AddWeights(const std::string& name, const oxMorphAnimation& animation,
                                       const std::vector<float>& weights,
                                       const std::vector<int>& slots,
                                       const std::vector<size_t>& targets) {
  const std::vector<float> times = SampleTimes(name, animation);
  std::vector<float> values;
  for (const float time : times) {
    std::vector<float> at = weights;
    for (const auto& [member, curve] : animation.channels) {
      std::vector<float> value(curve.GetStride());
      curve.Evaluate(time, value.data());
      for (size_t i = 0; i < slots.size(); ++i) {
        const int slot = slots[i];
        if (slot < 0) continue;
        if (member == static_cast<int>(i)) at[static_cast<size_t>(slot)] = value[0];
        if (member < 0 && i < value.size()) at[static_cast<size_t>(slot)] = value[i];
      }
    }
    values.insert(values.end(), at.begin(), at.end());
  }
  AddSampler(times, values, "SCALAR", "LINEAR", "weights", targets);
}

void oxGltfAnimationWriter::Finish() {
  if (m_channels.empty()) return;
  m_gltf.Add("animations", {{"name", "animation"},
                            {"samplers", std::move(m_samplers)},
                            {"channels", std::move(m_channels)}});
}

std::vector<float> oxGltfAnimationWriter::SampleTimes(const std::string& name,
                                                      const oxAnimatedSpan& span) const {
  std::vector<float> times = span.keyTimes;
  const auto from = std::lower_bound(m_keyTimes.begin(), m_keyTimes.end(), span.start);
  const auto to = std::upper_bound(m_keyTimes.begin(), m_keyTimes.end(), span.end);
  times.insert(times.end(), from, to);
  const double first = std::floor(static_cast<double>(span.start) * m_fps) + 1;
  const double last = std::ceil(static_cast<double>(span.end) * m_fps) - 1;
  if (last - first > kMostFrames) {
    OX_LOG(OxKernel::kLogWarning, oxConcat("'", name, "': its animation spans ", last - first,
                                           " frames; only its keys are sampled"));
  } else {
    for (double frame = first; frame <= last; ++frame)
      times.push_back(static_cast<float>(frame / m_fps));
  }
  std::sort(times.begin(), times.end());
  times.erase(std::unique(times.begin(), times.end()), times.end());
  return times;
}

void oxGltfAnimationWriter::AddSampler(const std::vector<float>& times,
                                       const std::vector<float>& values, const char* type,
                                       const char* interpolation, const char* path,
                                       const std::vector<size_t>& targets) {
  m_samplers.push_back({{"input", m_gltf.AddFloats(times, "SCALAR", 0, true)},
                        {"output", m_gltf.AddFloats(values, type, 0, false)},
                        {"interpolation", interpolation}});
  for (const size_t node : targets) {
    m_channels.push_back(
        {{"sampler", m_samplers.size() - 1}, {"target", {{"node", node}, {"path", path}}}});
  }
}

}  // namespace OxDAEConvert
