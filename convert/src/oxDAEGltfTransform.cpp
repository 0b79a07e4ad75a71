#include "oxDAEGltfTransform.h"

#include <algorithm>
#include <cmath>

#include <oxDAEReadWrite/oxDAEElements_Animation.h>
#include <oxDAEReadWrite/oxDAEElements_Animation_Target.h>

namespace OxDAEConvert {

using namespace OxDAEReader;
using Transform = oxDAEHierarchyElement::TransformElement;
using Vec = std::array<double, 3>;

namespace {

Vec Cross(const Vec& a, const Vec& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double Length(const Vec& v) {
  return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

Vec Normal(Vec v) {
  const double length = Length(v);
  if (length > 0) {
    for (double& c : v)
      c /= length;
  }
  return v;
}

// A <lookat> as glTF places a camera or light. The module's matrix of a
// lookat has the rows side, up, direction and eye; the direction and up
// vector give the camera's axes back.
OxMath::oxMatrix44 LookAtMatrix(const OxMath::oxMatrix44& module) {
  const Vec back = Normal({-module.m[8], -module.m[9], -module.m[10]});
  const Vec side = Normal(Cross({module.m[4], module.m[5], module.m[6]}, back));
  const Vec up = Cross(back, side);
  OxMath::oxMatrix44 result;
  for (int c = 0; c < 3; ++c) {
    result.m[c] = static_cast<float>(side[c]);
    result.m[4 + c] = static_cast<float>(up[c]);
    result.m[8 + c] = static_cast<float>(back[c]);
    result.m[12 + c] = module.m[12 + c];
  }
  return result;
}

// The matrix of a transform with the values `v` (as StaticValues lists them).
OxMath::oxMatrix44 MatrixOf(const Transform& transform, const std::vector<double>& v) {
  OxMath::oxMatrix44 m;
  if (oxDAEHierarchyElement::TranslateElement::DynamicCast(&transform)) {
    for (int c = 0; c < 3; ++c)
      m.m[12 + c] = static_cast<float>(v[c]);
  } else if (oxDAEHierarchyElement::ScaleElement::DynamicCast(&transform)) {
    for (int c = 0; c < 3; ++c)
      m.m[5 * c] = static_cast<float>(v[c]);
  } else if (oxDAEHierarchyElement::RotateElement::DynamicCast(&transform)) {
    const Vec axis = Normal({v[0], v[1], v[2]});
    if (Length(axis) == 0) return m;
    const double angle = v[3] * 3.14159265358979323846 / 180.0;
    const double c = std::cos(angle), s = std::sin(angle), t = 1 - c;
    const double x = axis[0], y = axis[1], z = axis[2];
    // Rows of the column-vector rotation, stored as the host's columns.
    const double r[3][3] = {{t * x * x + c, t * x * y - s * z, t * x * z + s * y},
                            {t * x * y + s * z, t * y * y + c, t * y * z - s * x},
                            {t * x * z - s * y, t * y * z + s * x, t * z * z + c}};
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j)
        m.m[4 * j + i] = static_cast<float>(r[i][j]);
    }
  } else if (oxDAEHierarchyElement::MatrixElement::DynamicCast(&transform)) {
    for (int i = 0; i < 4; ++i) {
      for (int j = 0; j < 4; ++j)
        m.m[4 * j + i] = static_cast<float>(v[4 * i + j]);
    }
  }
  return m;
}

// The member a target path selects after its transform's sid: ".X", ".Y",
// ".Z" (0 to 2), ".ANGLE" (3), "(i)" (i) or "(i)(j)" (4i + j); -1 for the
// whole value.
int MemberOf(std::string_view path) {
  const size_t slash = path.rfind('/');
  const std::string_view last = slash == std::string_view::npos ? path : path.substr(slash + 1);
  const size_t at = last.find_first_of(".(");
  if (at == std::string_view::npos) return -1;
  if (last[at] == '.') {
    const std::string_view name = last.substr(at + 1);
    if (name == "X") return 0;
    if (name == "Y") return 1;
    if (name == "Z") return 2;
    return 3;
  }
  // "(i)" or "(i)(j)": the numbers inside the brackets.
  std::vector<int> numbers;
  for (size_t k = at; k < last.size(); ++k) {
    if (last[k] == '(') {
      numbers.push_back(0);
    } else if (last[k] >= '0' && last[k] <= '9' && !numbers.empty()) {
      numbers.back() = std::min(numbers.back() * 10 + (last[k] - '0'), 1 << 20);
    }
  }
  if (numbers.size() == 1) return numbers[0];
  if (numbers.size() == 2) return 4 * numbers[0] + numbers[1];
  return -1;
}

// True when `channel` belongs to `animation` or to one nested in it.
bool IsWithin(const oxDAEChannel& channel, const oxDAEAnimation& animation) {
  for (const oxDAEAnimation* a = oxDAEAnimation::DynamicCast(channel.parent); a;
       a = a->parentAnimation) {
    if (a == &animation) return true;
  }
  return false;
}

}  // namespace

std::vector<double> StaticValues(const Transform& transform) {
  const OxMath::oxMatrix44 m = transform.GetTransformMatrix();
  if (oxDAEHierarchyElement::TranslateElement::DynamicCast(&transform))
    return {m.m[12], m.m[13], m.m[14]};
  if (oxDAEHierarchyElement::ScaleElement::DynamicCast(&transform))
    return {m.m[0], m.m[5], m.m[10]};
  if (const auto* rotate = oxDAEHierarchyElement::RotateElement::DynamicCast(&transform)) {
    const OxMath::oxGenVec3<float> axis = rotate->GetRotateAxis();
    return {axis.x, axis.y, axis.z, rotate->GetRotateAngle()};
  }
  if (oxDAEHierarchyElement::MatrixElement::DynamicCast(&transform)) {
    // The text lists the rows of the column-vector matrix; the host keeps
    // it transposed.
    std::vector<double> values(16);
    for (int i = 0; i < 4; ++i) {
      for (int j = 0; j < 4; ++j)
        values[4 * i + j] = m.m[4 * j + i];
    }
    return values;
  }
  return {};
}

OxMath::oxMatrix44 LocalMatrix(const oxDAENode& node) {
  static const oxNodeAnimation kStill;
  return LocalMatrixAt(node, kStill, 0.0f);
}

void oxAnimatedSpan::Add(const oxDAECurve& curve) {
  if (keyTimes.empty() || curve.GetStartTime() < start) start = curve.GetStartTime();
  if (keyTimes.empty() || curve.GetEndTime() > end) end = curve.GetEndTime();
  for (size_t k = 0; k < curve.GetKeyCount(); ++k)
    keyTimes.push_back(curve.GetTime(k));
}

void oxAnimatedSpan::Finish() {
  std::sort(keyTimes.begin(), keyTimes.end());
  keyTimes.erase(std::unique(keyTimes.begin(), keyTimes.end()), keyTimes.end());
}

oxDocumentAnimations CollectAnimations(const oxDAEFile& document, const oxDAEAnimation* only) {
  oxDocumentAnimations animations;
  for (const auto& element : document.GetElements()) {
    const auto* channel = oxDAEChannel::DynamicCast(element.get());
    if (!channel || !channel->sampler || !channel->target) continue;
    if (only && !IsWithin(*channel, *only)) continue;
    const oxDAEChannelTarget* owner =
        channel->target->GetTargetParent() ? channel->target->GetTargetParent() : channel->target;
    const auto* transform = Transform::DynamicCast(owner->GetContainerParent());
    const auto* node = transform ? oxDAENode::DynamicCast(transform->parent) : nullptr;
    const auto* morph = oxDAEMorph::DynamicCast(owner->GetContainerParent());
    if ((!node || StaticValues(*transform).empty()) && !morph) {
      ++animations.others;
      continue;
    }
    std::optional<oxDAECurve> curve = oxDAECurve::FromSampler(*channel->sampler);
    if (!curve || curve->GetKeyCount() == 0) continue;
    const int member = MemberOf(channel->targetPath.View());
    if (morph) {
      oxMorphAnimation& animation = animations.morphs[morph];
      animation.Add(*curve);
      animation.channels.emplace_back(member, std::move(*curve));
      continue;
    }
    oxNodeAnimation& animation = animations.nodes[node];
    animation.Add(*curve);
    animation.channels.push_back({transform, member, std::move(*curve)});
  }
  for (auto& [node, animation] : animations.nodes)
    animation.Finish();
  for (auto& [morph, animation] : animations.morphs)
    animation.Finish();
  return animations;
}

std::vector<double> TransformValuesAt(const Transform& transform, const oxNodeAnimation& animation,
                                      float time) {
  std::vector<double> values = StaticValues(transform);
  for (const oxTransformChannel& channel : animation.channels) {
    if (channel.transform != &transform || values.empty()) continue;
    std::vector<float> value(channel.curve.GetStride());
    channel.curve.Evaluate(time, value.data());
    if (channel.member < 0) {
      for (size_t i = 0; i < std::min(values.size(), value.size()); ++i)
        values[i] = value[i];
    } else if (static_cast<size_t>(channel.member) < values.size()) {
      values[static_cast<size_t>(channel.member)] = value[0];
    }
  }
  return values;
}

oxTrsPart PartOf(const Transform& transform) {
  if (oxDAEHierarchyElement::TranslateElement::DynamicCast(&transform))
    return oxTrsPart::kTranslation;
  if (oxDAEHierarchyElement::RotateElement::DynamicCast(&transform)) return oxTrsPart::kRotation;
  if (oxDAEHierarchyElement::ScaleElement::DynamicCast(&transform)) return oxTrsPart::kScale;
  return oxTrsPart::kOther;
}

bool HasTrsOrder(const oxDAENode& node) {
  oxTrsPart last = oxTrsPart::kTranslation;
  for (const auto& transform : node.transforms) {
    const oxTrsPart part = PartOf(*transform);
    if (part == oxTrsPart::kOther || part < last) return false;
    last = part;
  }
  return true;
}

OxMath::oxMatrix44 LocalMatrixAt(const oxDAENode& node, const oxNodeAnimation& animation,
                                 float time, oxTrsPart only) {
  OxMath::oxMatrix44 result;
  for (const auto& owned : node.transforms) {
    const Transform& transform = *owned;
    if (only != oxTrsPart::kOther && PartOf(transform) != only) continue;
    const OxMath::oxMatrix44 matrix =
        oxDAEHierarchyElement::LookAtElement::DynamicCast(&transform)
            ? LookAtMatrix(transform.GetTransformMatrix())
            : MatrixOf(transform, TransformValuesAt(transform, animation, time));
    result.MultiplyAB(result, matrix);
  }
  return result;
}

std::optional<oxTRS> Decompose(const OxMath::oxMatrix44& matrix) {
  const float* m = matrix.m;
  if (std::abs(m[3]) > 1e-6 || std::abs(m[7]) > 1e-6 || std::abs(m[11]) > 1e-6 ||
      std::abs(m[15] - 1) > 1e-6)
    return std::nullopt;
  Vec columns[3] = {{m[0], m[1], m[2]}, {m[4], m[5], m[6]}, {m[8], m[9], m[10]}};
  oxTRS trs;
  trs.translation = {m[12], m[13], m[14]};
  for (int c = 0; c < 3; ++c) {
    trs.scale[c] = Length(columns[c]);
    if (!(trs.scale[c] > 0)) return std::nullopt;
  }
  // A mirroring matrix (negative determinant) takes a negative x scale.
  const Vec xy = Cross(columns[0], columns[1]);
  if (xy[0] * columns[2][0] + xy[1] * columns[2][1] + xy[2] * columns[2][2] < 0)
    trs.scale[0] = -trs.scale[0];
  double r[3][3];
  for (int c = 0; c < 3; ++c) {
    for (int i = 0; i < 3; ++i)
      r[i][c] = columns[c][i] / trs.scale[c];
  }
  for (int a = 0; a < 3; ++a) {
    const int b = (a + 1) % 3;
    if (std::abs(r[0][a] * r[0][b] + r[1][a] * r[1][b] + r[2][a] * r[2][b]) > 1e-4)
      trs.exact = false;
  }
  // The quaternion of the rotation matrix, from its largest diagonal term.
  const double trace = r[0][0] + r[1][1] + r[2][2];
  double q[4];
  if (trace > 0) {
    const double s = std::sqrt(trace + 1.0) * 2;
    q[3] = 0.25 * s;
    q[0] = (r[2][1] - r[1][2]) / s;
    q[1] = (r[0][2] - r[2][0]) / s;
    q[2] = (r[1][0] - r[0][1]) / s;
  } else if (r[0][0] > r[1][1] && r[0][0] > r[2][2]) {
    const double s = std::sqrt(1.0 + r[0][0] - r[1][1] - r[2][2]) * 2;
    q[3] = (r[2][1] - r[1][2]) / s;
    q[0] = 0.25 * s;
    q[1] = (r[0][1] + r[1][0]) / s;
    q[2] = (r[0][2] + r[2][0]) / s;
  } else if (r[1][1] > r[2][2]) {
    const double s = std::sqrt(1.0 + r[1][1] - r[0][0] - r[2][2]) * 2;
    q[3] = (r[0][2] - r[2][0]) / s;
    q[0] = (r[0][1] + r[1][0]) / s;
    q[1] = 0.25 * s;
    q[2] = (r[1][2] + r[2][1]) / s;
  } else {
    const double s = std::sqrt(1.0 + r[2][2] - r[0][0] - r[1][1]) * 2;
    q[3] = (r[1][0] - r[0][1]) / s;
    q[0] = (r[0][2] + r[2][0]) / s;
    q[1] = (r[1][2] + r[2][1]) / s;
    q[2] = 0.25 * s;
  }
  const double norm = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  for (int i = 0; i < 4; ++i)
    trs.rotation[i] = q[i] / norm;
  return trs;
}

}  // namespace OxDAEConvert
