#include "oxDAEReadWrite/oxDAEElements_Main_Node.h"

#include <algorithm>
#include <cmath>

#include <oxKernel/oxConstants.h>

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

using Hierarchy = oxDAEHierarchyElement;
using OxMath::oxMatrix44;
using OxMath::oxVec3;

OX_DAE_ELEMENT_DEFINE(oxDAEHierarchyElement::TransformElement);
OX_DAE_ELEMENT_DEFINE(oxDAEHierarchyElement::RotateElement);
OX_DAE_ELEMENT_DEFINE(oxDAEHierarchyElement::ScaleElement);
OX_DAE_ELEMENT_DEFINE(oxDAEHierarchyElement::SkewElement);
OX_DAE_ELEMENT_DEFINE(oxDAEHierarchyElement::TranslateElement);
OX_DAE_ELEMENT_DEFINE(oxDAEHierarchyElement::LookAtElement);
OX_DAE_ELEMENT_DEFINE(oxDAEHierarchyElement::MatrixElement);

namespace {

oxMatrix44 TranslationMatrix(const float* xyz) {
  oxMatrix44 m;
  m.m[12] = xyz[0];
  m.m[13] = xyz[1];
  m.m[14] = xyz[2];
  return m;
}

oxMatrix44 ScaleMatrix(const float* xyz) {
  oxMatrix44 m;
  m.m[0] = xyz[0];
  m.m[5] = xyz[1];
  m.m[10] = xyz[2];
  return m;
}

// The rotation of `degrees` about `axis`; the quaternion's vector part is
// divided by the axis length when that is above 0, so any non-zero axis
// gives a unit quaternion.
oxMatrix44 RotationMatrix(const oxVec3& axis, float degrees) {
  const float half = degrees * OxKernel::kPiOn180 * 0.5f;
  const float length = std::sqrt(OxMath::Dot(axis, axis));
  float s = std::sin(half);
  if (length > 0.0f) s /= length;
  const OxMath::oxQuat rotation{axis.x * s, axis.y * s, axis.z * s, std::cos(half)};
  OxMath::oxTransformMatrix44 m;
  m.Create(rotation, oxVec3{0.0f, 0.0f, 0.0f}, oxVec3{1.0f, 1.0f, 1.0f});
  return m;
}

// The text of a translate or scale: its three floats.
unsigned int VectorText(const oxDAEChannelTargetFloatXYZ& vector, float* values) {
  std::copy_n(vector.GetValue(), 3, values);
  return 3;
}

// `v` divided by its length; a zero vector stays zero.
oxVec3 Normalised(const oxVec3& v) {
  const float length = std::sqrt(OxMath::Dot(v, v));
  return length > 0.0f ? v * (1.0f / length) : v;
}

void SetRow(oxMatrix44& m, int row, const oxVec3& v) {
  m.m[row * 4 + 0] = v.x;
  m.m[row * 4 + 1] = v.y;
  m.m[row * 4 + 2] = v.z;
}

// `values` holds eye, interest and up, three floats each.
oxMatrix44 LookAtMatrix(const float* values) {
  const oxVec3 eye{values[0], values[1], values[2]};
  const oxVec3 interest{values[3], values[4], values[5]};
  const oxVec3 d = Normalised(interest - eye);
  const oxVec3 u = Normalised(oxVec3{values[6], values[7], values[8]});
  oxVec3 r = OxMath::Cross(u, d);
  const double squared = static_cast<double>(r.x) * r.x + static_cast<double>(r.y) * r.y +
                         static_cast<double>(r.z) * r.z;
  if (std::fabs(1.0 - squared) > static_cast<double>(OxKernel::kEpsilon)) r = Normalised(r);
  oxMatrix44 m;
  SetRow(m, 0, r);
  SetRow(m, 1, u);
  SetRow(m, 2, d);
  SetRow(m, 3, eye);
  return m;
}

}  // namespace

// --- Shared behaviour ------------------------------------------------------------

Hierarchy::TransformElement::TransformElement(std::unique_ptr<oxDAEChannelTargetArray> value)
    : target(std::move(value)) {}

Hierarchy::TransformElement::~TransformElement() = default;

void Hierarchy::TransformElement::Read(oxDAEFile& file) {
  oxDAEElement::Read(file);
  float values[kMaxTextValues];
  const unsigned int count = GetTextValues(values);
  if (const OxKernel::oxXMLTextValue* text = file.reader->GetTextValue()) {
    unsigned int parsed = 0;
    text->ParseFloats(values, count, parsed, 0);
  }
  SetTextValues(values);
  if (!target) return;
  target->SetContainerParent(this);
  target->SetQualifier(sid);
  target->Register(file);
}

void Hierarchy::TransformElement::Write(oxDAEFile& file) {
  OxKernel::oxXMLWriter& w = *file.writer;
  w.StartElement(GetXMLTag());
  if (!sid.empty()) w.WriteAttributeString("sid", sid);
  w.EndAttributes();
  float values[kMaxTextValues];
  w.GetTextWriter()->WriteFloats(values, GetTextValues(values), 0);
  w.EndElement();
}

bool Hierarchy::TransformElement::IsAnimated(const oxDAEAnimation* animation) const {
  return target && (target->IsTargeted(animation, true) || target->IsTargetedEx(animation));
}

oxMatrix44 Hierarchy::TransformElement::GetTransformMatrix(float time,
                                                           const oxDAEAnimation* animation) const {
  return IsAnimated(animation) ? GetSampledMatrix(time, animation) : GetTransformMatrix();
}

oxMatrix44 Hierarchy::TransformElement::GetTransformMatrix() const {
  return oxMatrix44::kIdentity;
}

unsigned int Hierarchy::TransformElement::GetTextValues(float*) const {
  return 0;
}

void Hierarchy::TransformElement::SetTextValues(const float*) {}

oxMatrix44 Hierarchy::TransformElement::GetSampledMatrix(float, const oxDAEAnimation*) const {
  return GetTransformMatrix();
}

// --- <rotate> --------------------------------------------------------------------

Hierarchy::RotateElement::RotateElement()
    : TransformElement(std::make_unique<oxDAEChannelTargetRotate>()) {
  Value().SetValue(oxVec3{0.0f, 0.0f, 1.0f}, 0.0f);
}

oxDAEChannelTargetRotate& Hierarchy::RotateElement::Value() const {
  return static_cast<oxDAEChannelTargetRotate&>(*target);
}

oxVec3 Hierarchy::RotateElement::GetRotateAxis() const {
  return Value().GetAxis();
}

float Hierarchy::RotateElement::GetRotateAngle() const {
  return Value().GetAngle();
}

oxMatrix44 Hierarchy::RotateElement::GetTransformMatrix() const {
  const oxVec3 axis = GetRotateAxis();
  // No guard: a zero axis is left to give non-finite elements.
  const oxVec3 unit = axis * (1.0f / std::sqrt(OxMath::Dot(axis, axis)));
  return RotationMatrix(unit, GetRotateAngle());
}

oxMatrix44 Hierarchy::RotateElement::GetSampledMatrix(float time,
                                                      const oxDAEAnimation* animation) const {
  return RotationMatrix(Value().GetAxis(time, animation), Value().GetAngle(time, animation));
}

unsigned int Hierarchy::RotateElement::GetTextValues(float* values) const {
  const oxVec3 axis = GetRotateAxis();
  values[0] = axis.x;
  values[1] = axis.y;
  values[2] = axis.z;
  values[3] = GetRotateAngle();
  return 4;
}

void Hierarchy::RotateElement::SetTextValues(const float* values) {
  Value().SetValue(oxVec3{values[0], values[1], values[2]}, values[3]);
}

// --- <scale> ---------------------------------------------------------------------

Hierarchy::ScaleElement::ScaleElement()
    : TransformElement(std::make_unique<oxDAEChannelTargetFloatXYZ>()) {
  const float one[3] = {1.0f, 1.0f, 1.0f};
  Value().SetValue(one);
}

oxDAEChannelTargetFloatXYZ& Hierarchy::ScaleElement::Value() const {
  return static_cast<oxDAEChannelTargetFloatXYZ&>(*target);
}

oxMatrix44 Hierarchy::ScaleElement::GetTransformMatrix() const {
  return ScaleMatrix(Value().GetValue());
}

oxMatrix44 Hierarchy::ScaleElement::GetSampledMatrix(float time,
                                                     const oxDAEAnimation* animation) const {
  float xyz[3];
  Value().GetValue(xyz, time, animation);
  return ScaleMatrix(xyz);
}

unsigned int Hierarchy::ScaleElement::GetTextValues(float* values) const {
  return VectorText(Value(), values);
}

void Hierarchy::ScaleElement::SetTextValues(const float* values) {
  Value().SetValue(values);
}

// --- <skew> ----------------------------------------------------------------------

void Hierarchy::SkewElement::Read(oxDAEFile&) {}

void Hierarchy::SkewElement::Write(oxDAEFile&) {}

// --- <translate> -----------------------------------------------------------------

Hierarchy::TranslateElement::TranslateElement()
    : TransformElement(std::make_unique<oxDAEChannelTargetFloatXYZ>()) {}

oxDAEChannelTargetFloatXYZ& Hierarchy::TranslateElement::Value() const {
  return static_cast<oxDAEChannelTargetFloatXYZ&>(*target);
}

oxMatrix44 Hierarchy::TranslateElement::GetTransformMatrix() const {
  return TranslationMatrix(Value().GetValue());
}

oxMatrix44 Hierarchy::TranslateElement::GetSampledMatrix(float time,
                                                         const oxDAEAnimation* animation) const {
  float xyz[3];
  Value().GetValue(xyz, time, animation);
  return TranslationMatrix(xyz);
}

unsigned int Hierarchy::TranslateElement::GetTextValues(float* values) const {
  return VectorText(Value(), values);
}

void Hierarchy::TranslateElement::SetTextValues(const float* values) {
  Value().SetValue(values);
}

// --- <lookat> --------------------------------------------------------------------

Hierarchy::LookAtElement::LookAtElement()
    : TransformElement(std::make_unique<oxDAEChannelTargetLookat>()) {
  const float identity[9] = {0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 1.0f, 0.0f};
  Value().SetValue(identity);
}

oxDAEChannelTargetLookat& Hierarchy::LookAtElement::Value() const {
  return static_cast<oxDAEChannelTargetLookat&>(*target);
}

oxMatrix44 Hierarchy::LookAtElement::GetTransformMatrix() const {
  float values[9];
  Value().GetValue(values);
  return LookAtMatrix(values);
}

oxMatrix44 Hierarchy::LookAtElement::GetSampledMatrix(float time,
                                                      const oxDAEAnimation* animation) const {
  float values[9];
  Value().GetValue(values, time, animation);
  return LookAtMatrix(values);
}

unsigned int Hierarchy::LookAtElement::GetTextValues(float* values) const {
  Value().GetValue(values);
  return 9;
}

void Hierarchy::LookAtElement::SetTextValues(const float* values) {
  Value().SetValue(values);
}

// --- <matrix> --------------------------------------------------------------------

Hierarchy::MatrixElement::MatrixElement()
    : TransformElement(std::make_unique<oxDAEChannelTargetMatrix>()) {
  Value().SetValue(oxMatrix44::kIdentity);
}

oxDAEChannelTargetMatrix& Hierarchy::MatrixElement::Value() const {
  return static_cast<oxDAEChannelTargetMatrix&>(*target);
}

oxMatrix44 Hierarchy::MatrixElement::GetTransformMatrix() const {
  return Value().GetValue();
}

void Hierarchy::MatrixElement::SetTransformMatrix(const oxMatrix44& matrix) {
  Value().SetValue(matrix);
}

oxMatrix44 Hierarchy::MatrixElement::GetSampledMatrix(float time,
                                                      const oxDAEAnimation* animation) const {
  return Value().GetValue(time, animation);
}

unsigned int Hierarchy::MatrixElement::GetTextValues(float* values) const {
  oxMatrix44 text;
  text.ComputeTranspose(Value().GetValue());
  for (unsigned int i = 0; i < 16; ++i)
    values[i] = text.m[i];
  return 16;
}

void Hierarchy::MatrixElement::SetTextValues(const float* values) {
  oxMatrix44 text;
  for (unsigned int i = 0; i < 16; ++i)
    text.m[i] = values[i];
  oxMatrix44 stored;
  stored.ComputeTranspose(text);
  Value().SetValue(stored);
}

}  // namespace OxDAEReader
