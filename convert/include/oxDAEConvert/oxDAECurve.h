// oxDAECurve: the animation curve of a <sampler>, evaluated exactly as its
// INTERPOLATION values say, key by key.
//
// The module's own sampler interpolates every curve linearly through a
// keyframe controller; that stays as it is. This evaluator reads the same
// sources (INPUT, OUTPUT, INTERPOLATION, IN_TANGENT, OUT_TANGENT) through
// the public tree and follows the curve the document describes. Segment i
// runs from key i to key i+1 and takes key i's interpolation:
//
//  - STEP: key i's value until key i+1.
//  - LINEAR: value_i + s (value_i+1 - value_i), s = (t - t_i) / (t_i+1 - t_i).
//  - BEZIER: the cubic Bezier curve through (t_i, value_i), C0, C1,
//    (t_i+1, value_i+1), per component, with C0 key i's OUT_TANGENT and C1
//    key i+1's IN_TANGENT. Two-dimensional tangents are the (time, value)
//    control points themselves: the curve's parameter is found where its
//    time equals t. One-dimensional tangents are offsets of the control
//    values from their keys, C0 = value_i + OUT_TANGENT and C1 = value_i+1 -
//    IN_TANGENT, at a third and two thirds of the segment (the time is then
//    linear in the parameter): the exporters that write one-dimensional
//    tangents write a straight segment's as a third of its rise.
//  - HERMITE: value = h00(s) value_i + h10(s) T0 + h01(s) value_i+1 +
//    h11(s) T1 with the Hermite basis h00 = 2s^3 - 3s^2 + 1, h10 = s^3 -
//    2s^2 + s, h01 = -2s^3 + 3s^2, h11 = s^3 - s^2; T0 is key i's
//    OUT_TANGENT and T1 key i+1's IN_TANGENT. One-dimensional tangents are
//    the value's derivative over the segment's parameter; two-dimensional
//    ones are (time, value) derivatives, solved for t as for BEZIER.
//  - CARDINAL: HERMITE with the tangents of the neighbouring keys, T0 =
//    (value_i+1 - value_i-1) / 2 and T1 = (value_i+2 - value_i) / 2 (a
//    Catmull-Rom spline: COLLADA gives no tension, so the tension is 0).
//  - BSPLINE: the uniform cubic B-spline over value_i-1, value_i, value_i+1
//    and value_i+2: (1/6) [(1-s)^3, 3s^3 - 6s^2 + 4, -3s^3 + 3s^2 + 3s + 1,
//    s^3]. It approximates its keys rather than passing through them.
//
// Neighbours before the first key or after the last are the end keys
// themselves. Before the first key the curve holds the first value, after
// the last key the last value. Keys whose times do not rise make an empty
// segment: the later key's value holds from its time on.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <oxDAEReadWrite/oxDAEElements_Animation.h>

namespace OxDAEConvert {

enum class oxInterpolation : uint8_t { STEP, LINEAR, BEZIER, HERMITE, CARDINAL, BSPLINE };

// The interpolation a COLLADA name stands for ("BEZIER"), or nothing for a
// name COLLADA does not define.
std::optional<oxInterpolation> InterpolationFromName(std::string_view name);
// The COLLADA name of `interpolation`.
std::string_view InterpolationName(oxInterpolation interpolation);

class oxDAECurve {
 public:
  // The curve `sampler` describes; nothing, after an error naming the
  // sampler, when its INPUT or OUTPUT input is missing or has no float
  // array. The keys are the INPUT accessor's records (as many as it counts
  // and its array holds); each key's value is `GetStride()` floats of the
  // OUTPUT accessor's record (missing floats read 0). A key without an
  // INTERPOLATION value, or with a name COLLADA does not define, is LINEAR,
  // and so is a BEZIER or HERMITE key without usable tangents (tangent
  // records of the value's width or twice it), each reported once as a
  // warning.
  static std::optional<oxDAECurve> FromSampler(const OxDAEReader::oxDAESampler& sampler);

  size_t GetKeyCount() const { return m_times.size(); }
  // Floats per value: the OUTPUT accessor's stride (0 counts as 1).
  unsigned int GetStride() const { return m_stride; }
  float GetTime(size_t key) const { return m_times[key]; }
  const float* GetValue(size_t key) const { return &m_values[key * m_stride]; }
  oxInterpolation GetInterpolation(size_t key) const { return m_interpolations[key]; }
  // The first and last key's times; 0 for a curve without keys.
  float GetStartTime() const { return m_times.empty() ? 0.0f : m_times.front(); }
  float GetEndTime() const { return m_times.empty() ? 0.0f : m_times.back(); }

  // Key i's BEZIER control points around it as (time, value) per component:
  // the one before it (from its IN_TANGENT) and the one after it (from its
  // OUT_TANGENT). For a HERMITE key these are the equivalent Bezier control
  // points (tangent / 3 from the key). Meaningful only for BEZIER and
  // HERMITE keys.
  struct ControlPoint {
    double time = 0.0;
    double value = 0.0;
  };
  ControlPoint GetInControl(size_t key, unsigned int component) const;
  ControlPoint GetOutControl(size_t key, unsigned int component) const;

  // Writes the value at `time` into `out` (GetStride() floats). A curve
  // without keys writes zeros; at a key's time the key's value is written
  // as it is, unless a BSPLINE segment starts there.
  void Evaluate(float time, float* out) const;

 private:
  struct Records;
  struct Tangents;
  // Fills the control points around the keys of every BEZIER and HERMITE
  // segment from the tangent records; a segment without usable tangents
  // becomes LINEAR. Returns the first such key, or SIZE_MAX.
  size_t BuildControls(const Records& in, const Records& out);
  double Segment(size_t key, unsigned int component, double time) const;
  double Value(size_t key, unsigned int component) const;
  // Key i's value of `component` for a neighbour index that may lie before
  // the first key or after the last (clamped to the ends).
  double Neighbour(ptrdiff_t key, unsigned int component) const;

  unsigned int m_stride = 1;
  std::vector<float> m_times;
  std::vector<float> m_values;
  std::vector<oxInterpolation> m_interpolations;
  // Per key and component: the control points before and after the key.
  std::vector<ControlPoint> m_in;
  std::vector<ControlPoint> m_out;
  // The interpolation of the first key read as LINEAR for lack of tangents.
  oxInterpolation m_requested = oxInterpolation::LINEAR;
};

}  // namespace OxDAEConvert
