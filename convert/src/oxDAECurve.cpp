#include "oxDAEConvert/oxDAECurve.h"

#include <algorithm>
#include <array>
#include <utility>

#include <oxDAEReadWrite/oxDAEElements_Main_Geometry.h>
#include <oxDAEReadWrite/oxDAEElements_Main_Source.h>
#include <oxKernel/oxLog.h>

#include "oxRecords.h"

namespace OxDAEConvert {

using OxDAEReader::oxDAEAccessor;
using OxDAEReader::oxDAEInputElement;
using OxDAEReader::oxDAESampler;

namespace {

constexpr std::array<std::pair<std::string_view, oxInterpolation>, 6> kInterpolationNames = {{
    {"STEP", oxInterpolation::STEP},
    {"LINEAR", oxInterpolation::LINEAR},
    {"BEZIER", oxInterpolation::BEZIER},
    {"HERMITE", oxInterpolation::HERMITE},
    {"CARDINAL", oxInterpolation::CARDINAL},
    {"BSPLINE", oxInterpolation::BSPLINE},
}};

// Bisection steps for the Bezier parameter: each halves the interval, so
// 60 steps leave it below the precision of a double.
constexpr int kSolveSteps = 60;

std::string SamplerName(const oxDAESampler& sampler) {
  return sampler.id.empty() ? std::string("(no id)") : std::string(sampler.id);
}

double Bezier(double p0, double c0, double c1, double p1, double s) {
  const double r = 1.0 - s;
  return r * r * r * p0 + 3.0 * s * r * r * c0 + 3.0 * s * s * r * c1 + s * s * s * p1;
}

}  // namespace

// The records of one input's accessor.
struct oxDAECurve::Records {
  const oxDAEAccessor* accessor = nullptr;
  unsigned int stride = 1;

  explicit Records(const oxDAEInputElement* input)
      : accessor(input ? input->GetCommonAccessor() : nullptr), stride(RecordStride(accessor)) {}
  bool HasFloats() const { return HasRecords(accessor); }
  size_t Count() const { return RecordCount(accessor); }
  double Float(size_t record, unsigned int j) const { return RecordFloat(accessor, record, j); }
};

// Tangent records of one side (IN_TANGENT or OUT_TANGENT): their width
// decides whether they are values (the output's width) or (time, value)
// pairs (twice it).
struct oxDAECurve::Tangents {
  Records records;
  bool twoDimensional = false;
  bool usable = false;

  Tangents(Records r, unsigned int stride)
      : records(r),
        twoDimensional(r.stride == 2 * stride),
        usable(r.HasFloats() && (r.stride == stride || r.stride == 2 * stride)) {}
  double Time(size_t key, unsigned int c) const { return records.Float(key, 2 * c); }
  double Value(size_t key, unsigned int c) const {
    return records.Float(key, twoDimensional ? 2 * c + 1 : c);
  }
};

std::optional<oxInterpolation> InterpolationFromName(std::string_view name) {
  for (const auto& [text, value] : kInterpolationNames) {
    if (text == name) return value;
  }
  return std::nullopt;
}

std::string_view InterpolationName(oxInterpolation interpolation) {
  for (const auto& [text, value] : kInterpolationNames) {
    if (value == interpolation) return text;
  }
  return {};
}

std::optional<oxDAECurve> oxDAECurve::FromSampler(const oxDAESampler& sampler) {
  const Records input(sampler.GetInput("INPUT"));
  const Records output(sampler.GetInput("OUTPUT"));
  if (!input.HasFloats() || !output.HasFloats()) {
    OX_LOG(OxKernel::kLogError, OxKernel::oxConcat("sampler '", SamplerName(sampler),
                                                   "' has no INPUT or OUTPUT floats to evaluate"));
    return std::nullopt;
  }
  oxDAECurve curve;
  curve.m_stride = output.stride;
  const size_t keys = input.Count();
  for (size_t k = 0; k < keys; ++k) {
    curve.m_times.push_back(static_cast<float>(input.Float(k, 0)));
    for (unsigned int c = 0; c < curve.m_stride; ++c)
      curve.m_values.push_back(static_cast<float>(output.Float(k, c)));
  }
  const oxDAEInputElement* names = sampler.GetInput("INTERPOLATION");
  const oxDAEAccessor* nameAccessor = names ? names->GetCommonAccessor() : nullptr;
  bool unknownReported = false;
  for (size_t k = 0; k < keys; ++k) {
    const std::string_view name =
        nameAccessor ? nameAccessor->GetStringValue(static_cast<unsigned int>(k)).View() : "";
    std::optional<oxInterpolation> interpolation = InterpolationFromName(name);
    if (!interpolation && !name.empty() && !unknownReported) {
      OX_LOG(OxKernel::kLogWarning,
             OxKernel::oxConcat("sampler '", SamplerName(sampler), "': key ", k,
                                " has the interpolation '", name,
                                "', which COLLADA does not define; it is read as LINEAR"));
      unknownReported = true;
    }
    curve.m_interpolations.push_back(interpolation.value_or(oxInterpolation::LINEAR));
  }
  const size_t linear = curve.BuildControls(Records(sampler.GetInput("IN_TANGENT")),
                                            Records(sampler.GetInput("OUT_TANGENT")));
  if (linear != SIZE_MAX) {
    OX_LOG(OxKernel::kLogWarning,
           OxKernel::oxConcat("sampler '", SamplerName(sampler), "': key ", linear, " is ",
                              InterpolationName(curve.m_requested),
                              " without IN_TANGENT and OUT_TANGENT records of the value's width "
                              "or twice it; it is read as LINEAR"));
  }
  return curve;
}

size_t oxDAECurve::BuildControls(const Records& inRecords, const Records& outRecords) {
  const Tangents in(inRecords, m_stride);
  const Tangents out(outRecords, m_stride);
  m_in.assign(m_values.size(), ControlPoint{});
  m_out.assign(m_values.size(), ControlPoint{});
  size_t firstLinear = SIZE_MAX;
  for (size_t k = 0; k + 1 < m_times.size(); ++k) {
    const oxInterpolation interpolation = m_interpolations[k];
    if (interpolation != oxInterpolation::BEZIER && interpolation != oxInterpolation::HERMITE)
      continue;
    if (!in.usable || !out.usable) {
      if (firstLinear == SIZE_MAX) {
        firstLinear = k;
        m_requested = interpolation;
      }
      m_interpolations[k] = oxInterpolation::LINEAR;
      continue;
    }
    const double t0 = m_times[k];
    const double t1 = m_times[k + 1];
    const double third = (t1 - t0) / 3.0;
    for (unsigned int c = 0; c < m_stride; ++c) {
      ControlPoint& after = m_out[k * m_stride + c];
      ControlPoint& before = m_in[(k + 1) * m_stride + c];
      if (interpolation == oxInterpolation::BEZIER && out.twoDimensional) {
        after = {out.Time(k, c), out.Value(k, c)};
      } else if (interpolation == oxInterpolation::BEZIER) {
        after = {t0 + third, Value(k, c) + out.Value(k, c)};
      }
      if (interpolation == oxInterpolation::BEZIER && in.twoDimensional) {
        before = {in.Time(k + 1, c), in.Value(k + 1, c)};
      } else if (interpolation == oxInterpolation::BEZIER) {
        before = {t1 - third, Value(k + 1, c) - in.Value(k + 1, c)};
      }
      if (interpolation == oxInterpolation::HERMITE) {
        // A Hermite tangent is the derivative over the segment's parameter;
        // the Bezier control point a third of it away draws the same cubic.
        after = {t0 + (out.twoDimensional ? out.Time(k, c) / 3.0 : third),
                 Value(k, c) + out.Value(k, c) / 3.0};
        before = {t1 - (in.twoDimensional ? in.Time(k + 1, c) / 3.0 : third),
                  Value(k + 1, c) - in.Value(k + 1, c) / 3.0};
      }
    }
  }
  return firstLinear;
}

oxDAECurve::ControlPoint oxDAECurve::GetInControl(size_t key, unsigned int component) const {
  return m_in[key * m_stride + component];
}

oxDAECurve::ControlPoint oxDAECurve::GetOutControl(size_t key, unsigned int component) const {
  return m_out[key * m_stride + component];
}

double oxDAECurve::Value(size_t key, unsigned int component) const {
  return m_values[key * m_stride + component];
}

double oxDAECurve::Neighbour(ptrdiff_t key, unsigned int component) const {
  const ptrdiff_t last = static_cast<ptrdiff_t>(m_times.size()) - 1;
  return Value(static_cast<size_t>(std::clamp<ptrdiff_t>(key, 0, last)), component);
}

void oxDAECurve::Evaluate(float time, float* out) const {
  if (m_times.empty()) {
    std::fill(out, out + m_stride, 0.0f);
    return;
  }
  // The last key at or before `time`: the segment that starts there holds it.
  const auto after = std::upper_bound(m_times.begin(), m_times.end(), time);
  if (after == m_times.begin() || after == m_times.end()) {
    const size_t end = after == m_times.begin() ? 0 : m_times.size() - 1;
    std::copy_n(GetValue(end), m_stride, out);
    return;
  }
  const size_t key = static_cast<size_t>(after - m_times.begin()) - 1;
  // A curve passes through its keys (a B-spline only near them): the key's
  // value, not the segment's formula rounded at its start.
  if (time == m_times[key] && m_interpolations[key] != oxInterpolation::BSPLINE) {
    std::copy_n(GetValue(key), m_stride, out);
    return;
  }
  for (unsigned int c = 0; c < m_stride; ++c)
    out[c] = static_cast<float>(Segment(key, c, time));
}

double oxDAECurve::Segment(size_t k, unsigned int c, double time) const {
  const double t0 = m_times[k];
  const double t1 = m_times[k + 1];
  const double s = (time - t0) / (t1 - t0);
  const double v0 = Value(k, c);
  const double v1 = Value(k + 1, c);
  switch (m_interpolations[k]) {
    case oxInterpolation::STEP:
      return v0;
    case oxInterpolation::LINEAR:
      return v0 + s * (v1 - v0);
    case oxInterpolation::BEZIER:
    case oxInterpolation::HERMITE: {
      const ControlPoint& c0 = m_out[k * m_stride + c];
      const ControlPoint& c1 = m_in[(k + 1) * m_stride + c];
      // The parameter where the curve's time is `time`: its time runs from
      // t0 at 0 to t1 at 1, so halving keeps the crossing inside.
      double low = 0.0;
      double high = 1.0;
      for (int step = 0; step < kSolveSteps; ++step) {
        const double middle = (low + high) / 2.0;
        (Bezier(t0, c0.time, c1.time, t1, middle) < time ? low : high) = middle;
      }
      return Bezier(v0, c0.value, c1.value, v1, (low + high) / 2.0);
    }
    case oxInterpolation::CARDINAL: {
      const ptrdiff_t i = static_cast<ptrdiff_t>(k);
      const double m0 = (v1 - Neighbour(i - 1, c)) / 2.0;
      const double m1 = (Neighbour(i + 2, c) - v0) / 2.0;
      return Bezier(v0, v0 + m0 / 3.0, v1 - m1 / 3.0, v1, s);
    }
    case oxInterpolation::BSPLINE: {
      const ptrdiff_t i = static_cast<ptrdiff_t>(k);
      const double r = 1.0 - s;
      return (r * r * r * Neighbour(i - 1, c) + (3 * s * s * s - 6 * s * s + 4) * v0 +
              (-3 * s * s * s + 3 * s * s + 3 * s + 1) * v1 + s * s * s * Neighbour(i + 2, c)) /
             6.0;
    }
  }
  return v0;
}

}  // namespace OxDAEConvert
