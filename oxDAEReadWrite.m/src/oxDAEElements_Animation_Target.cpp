#include "oxDAEReadWrite/oxDAEElements_Animation_Target.h"

#include <algorithm>

#include <oxKernel/oxLog.h>

#include "oxDAEReadWrite/oxDAEElements_Animation.h"
#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DEFINE_RTTI(oxDAEChannelTarget, OxKernel::oxRTTIObject);
OX_DEFINE_RTTI(oxDAEChannelTargetFloat, oxDAEChannelTarget);
OX_DEFINE_RTTI(oxDAEChannelTargetArray, oxDAEChannelTarget);
OX_DEFINE_RTTI(oxDAEChannelTargetFloatArray, oxDAEChannelTargetArray);
OX_DEFINE_RTTI(oxDAEChannelTargetFloatXYZ, oxDAEChannelTargetArray);
OX_DEFINE_RTTI(oxDAEChannelTargetRotate, oxDAEChannelTargetArray);
OX_DEFINE_RTTI(oxDAEChannelTargetColor, oxDAEChannelTargetArray);
OX_DEFINE_RTTI(oxDAEChannelTargetLookat, oxDAEChannelTargetArray);
OX_DEFINE_RTTI(oxDAEChannelTargetMatrix, oxDAEChannelTargetArray);

using OxKernel::kLogError;

namespace {

// The widest value a target samples at once (a matrix).
constexpr unsigned int kMaxValueFloats = 16;

// True when `channel`'s sampler lies in `animation` or in one of its direct
// child animations.
bool BelongsTo(const oxDAEChannel* channel, const oxDAEAnimation* animation) {
  if (!animation || !channel->sampler) return false;
  const oxDAEAnimation* owner = oxDAEAnimation::DynamicCast(channel->sampler->parent);
  return owner && (owner == animation || owner->parentAnimation == animation);
}

// Samples `count` floats of the channel of `animation` bound to `target`
// into `out`, without any message. False when there is no such channel
// with a sampler, or sampling fails.
bool SampleQuietly(const oxDAEChannelTarget& target, float time, const oxDAEAnimation* animation,
                   unsigned int count, float* out) {
  if (!target.IsTargeted()) return false;
  const oxDAEChannel* channel = target.GetChannel(animation);
  return channel && channel->sampler && channel->sampler->GetFloatValue(time, count, out) == 0;
}

}  // namespace

// --- oxDAEChannelTarget ----------------------------------------------------------

// A target does not leave its document's table when destroyed: its
// container may already be gone, so its path cannot be computed any more.
// Targets live as long as the document's elements, and Load empties the
// table before reading.
oxDAEChannelTarget::~oxDAEChannelTarget() = default;

oxString oxDAEChannelTarget::GetPath() const {
  if (targetParent) return OxKernel::oxConcat(targetParent->GetPath(), '.', qualifier);
  if (!containerParent) {
    OX_LOG(kLogError, "neither parent no container");
    return {};
  }
  oxString path = containerParent->GetPath();
  if (containerParent->sid == qualifier) return path;
  if (!path.empty()) path += '/';
  return path + qualifier;
}

bool oxDAEChannelTarget::IsTargeted(const oxDAEAnimation* animation, bool) const {
  return GetChannel(animation) != nullptr;
}

oxDAEChannel* oxDAEChannelTarget::GetChannel(const oxDAEAnimation* animation) const {
  for (oxDAEChannel* channel : channels) {
    if (BelongsTo(channel, animation)) return channel;
  }
  return nullptr;
}

void oxDAEChannelTarget::Register(oxDAEFile& file) {
  if (qualifier.empty()) return;
  document = &file;
  file.RegisterAnimationTarget(this);
}

void oxDAEChannelTarget::Unregister() {
  if (qualifier.empty() || !document) return;
  document->UnregisterAnimationTarget(this);
  document = nullptr;
}

void oxDAEChannelTarget::SetContainerParent(OxKernel::oxRTTIObject* container) {
  containerParent = oxDAEElement::DynamicCast(container);
}

// --- oxDAEChannelTargetFloat -------------------------------------------------------

float oxDAEChannelTargetFloat::GetValue(float time, const oxDAEAnimation* animation) const {
  if (!IsTargeted()) {
    OX_LOG(kLogError, "value not targeted");
    return value;
  }
  const oxDAEChannel* channel = GetChannel(animation);
  if (!channel || !channel->sampler) return value;
  float sampled = value;
  if (channel->sampler->GetFloatValue(time, 1, &sampled) != 0) {
    OX_LOG(kLogError, "cannot retrieve sampled value");
    return value;
  }
  return sampled;
}

// --- oxDAEChannelTargetArray -------------------------------------------------------

void oxDAEChannelTargetArray::Register(oxDAEFile& file) {
  oxDAEChannelTarget::Register(file);
  // Named members belong to the document through their array; unnamed ones
  // (matrix and look-at cells) are reached by no path.
  for (oxDAEChannelTargetFloat& member : members) {
    if (!member.GetQualifier().empty()) member.document = document;
  }
}

void oxDAEChannelTargetArray::Unregister() {
  oxDAEChannelTarget::Unregister();
  for (oxDAEChannelTargetFloat& member : members)
    member.document = nullptr;
}

bool oxDAEChannelTargetArray::IsTargetedEx() const {
  return IsTargeted() ||
         std::any_of(members.begin(), members.end(), [](const auto& m) { return m.IsTargeted(); });
}

bool oxDAEChannelTargetArray::IsTargetedEx(const oxDAEAnimation* animation) const {
  return IsTargeted(animation, true) ||
         std::any_of(members.begin(), members.end(),
                     [animation](const auto& m) { return m.IsTargeted(animation, true); });
}

oxDAEChannelTarget* oxDAEChannelTargetArray::GetChannelTarget(signed char row,
                                                              signed char column) const {
  if (row < 0 || column < 0 || row >= rows || column >= columns) return nullptr;
  const size_t index =
      static_cast<size_t>(row) * static_cast<size_t>(columns) + static_cast<size_t>(column);
  return index < members.size() ? const_cast<oxDAEChannelTargetFloat*>(&members[index]) : nullptr;
}

oxDAEChannelTarget* oxDAEChannelTargetArray::GetChannelTarget(const oxString& name) const {
  for (const oxDAEChannelTargetFloat& member : members) {
    if (member.GetQualifier() == name) return const_cast<oxDAEChannelTargetFloat*>(&member);
  }
  return nullptr;
}

void oxDAEChannelTargetArray::_AttachMembers() {
  for (oxDAEChannelTargetFloat& member : members)
    member.SetTargetParent(this);
}

void oxDAEChannelTargetArray::MakeFloatMembers(unsigned int count, int8_t rowCount,
                                               int8_t columnCount,
                                               std::initializer_list<const char*> names) {
  // Sized once: members are never moved afterwards, so pointers to them
  // (held by channels and by the document's table) stay valid.
  members = oxArray<oxDAEChannelTargetFloat>(count);
  const char* const* name = names.begin();
  for (unsigned int i = 0; i < count && name != names.end(); ++i)
    members[i].SetQualifier(*name++);
  _AttachMembers();
  rows = rowCount;
  columns = columnCount;
}

const oxDAEChannelTargetFloat* oxDAEChannelTargetArray::FloatMember(unsigned int i) const {
  return i < members.size() ? &members[i] : nullptr;
}

void oxDAEChannelTargetArray::StoreMembers(const float* values, unsigned int count) {
  for (unsigned int i = 0; i < count; ++i) {
    if (i < members.size()) members[i].SetValue(values[i]);
  }
}

void oxDAEChannelTargetArray::LoadMembers(float* out, unsigned int count) const {
  for (unsigned int i = 0; i < count; ++i) {
    const oxDAEChannelTargetFloat* member = FloatMember(i);
    out[i] = member ? member->GetValue() : 0.0f;
  }
}

bool oxDAEChannelTargetArray::SampleValue(float* out, unsigned int count, float time,
                                          const oxDAEAnimation* animation) const {
  count = std::min(count, kMaxValueFloats);
  if (IsTargeted()) {
    const oxDAEChannel* channel = GetChannel(animation);
    if (!channel || !channel->sampler) {
      OX_LOG(kLogError, "invalid channel");
      return false;
    }
    float sampled[kMaxValueFloats];
    std::copy_n(out, count, sampled);
    if (channel->sampler->GetFloatValue(time, count, sampled) != 0) {
      OX_LOG(kLogError, "cannot get sampled value");
      return false;
    }
    std::copy_n(sampled, count, out);
    return true;
  }
  if (!IsTargetedEx()) {
    OX_LOG(kLogError, "not a targeted value");
    return false;
  }
  for (unsigned int i = 0; i < count; ++i) {
    if (const oxDAEChannelTargetFloat* member = FloatMember(i))
      out[i] = member->GetValue(time, animation);
  }
  return true;
}

// --- oxDAEChannelTargetFloatArray --------------------------------------------------

void oxDAEChannelTargetFloatArray::SetChannelCount(unsigned int n) {
  MakeFloatMembers(static_cast<uint8_t>(n), 1, static_cast<int8_t>(n));
}

int oxDAEChannelTargetFloatArray::GetChannelIndex(const oxDAEChannelTarget* member) const {
  for (size_t i = 0; i < members.size(); ++i) {
    if (&members[i] == member) return static_cast<int>(i);
  }
  return -1;
}

// --- oxDAEChannelTargetFloatXYZ ----------------------------------------------------

oxDAEChannelTargetFloatXYZ::oxDAEChannelTargetFloatXYZ() {
  MakeFloatMembers(3, 1, 3, {"X", "Y", "Z"});
}

void oxDAEChannelTargetFloatXYZ::SetValue(const float xyz[3]) {
  std::copy_n(xyz, 3, value);
  StoreMembers(xyz, 3);
}

void oxDAEChannelTargetFloatXYZ::GetValue(float out[3], float time,
                                          const oxDAEAnimation* animation) const {
  std::copy_n(value, 3, out);
  if (IsTargeted()) {
    const oxDAEChannel* channel = GetChannel(animation);
    if (channel && channel->sampler) channel->sampler->GetFloatValue(time, 3, out);
    return;
  }
  if (!IsTargetedEx()) return;
  for (unsigned int i = 0; i < 3; ++i)
    out[i] = FloatMember(i)->GetValue(time, animation);
}

// --- oxDAEChannelTargetRotate ------------------------------------------------------

oxDAEChannelTargetRotate::oxDAEChannelTargetRotate() {
  MakeFloatMembers(4, 1, 4, {"X", "Y", "Z", "ANGLE"});
}

void oxDAEChannelTargetRotate::SetValue(const OxMath::oxVec3& axis, float angle) {
  const float values[4] = {axis.x, axis.y, axis.z, angle};
  StoreMembers(values, 4);
}

OxMath::oxVec3 oxDAEChannelTargetRotate::GetAxis() const {
  float values[4];
  LoadMembers(values, 4);
  return {values[0], values[1], values[2]};
}

float oxDAEChannelTargetRotate::GetAngle() const {
  return FloatMember(3)->GetValue();
}

float oxDAEChannelTargetRotate::GetAngle(float time, const oxDAEAnimation* animation) const {
  float values[4];
  LoadMembers(values, 4);
  if (IsTargeted() || !IsTargetedEx()) {
    const float angle = values[3];
    return SampleValue(values, 4, time, animation) ? values[3] : angle;
  }
  return FloatMember(3)->GetValue(time, animation);
}

OxMath::oxVec3 oxDAEChannelTargetRotate::GetAxis(float time,
                                                 const oxDAEAnimation* animation) const {
  float values[4];
  LoadMembers(values, 4);
  if (!SampleQuietly(*this, time, animation, 4, values)) {
    for (unsigned int i = 0; i < 3; ++i)
      SampleQuietly(members[i], time, animation, 1, &values[i]);
  }
  return {values[0], values[1], values[2]};
}

// --- oxDAEChannelTargetColor -------------------------------------------------------

oxDAEChannelTargetColor::oxDAEChannelTargetColor() {
  MakeFloatMembers(4, 1, 4, {"R", "G", "B", "A"});
}

void oxDAEChannelTargetColor::SetValue(const float rgba[4]) {
  StoreMembers(rgba, 4);
}

void oxDAEChannelTargetColor::GetValue(float out[4]) const {
  LoadMembers(out, 4);
}

void oxDAEChannelTargetColor::GetValue(float out[4], float time,
                                       const oxDAEAnimation* animation) const {
  LoadMembers(out, 4);
  SampleValue(out, 4, time, animation);
}

// --- oxDAEChannelTargetLookat ------------------------------------------------------

oxDAEChannelTargetLookat::oxDAEChannelTargetLookat() {
  MakeFloatMembers(9, 3, 3);
}

void oxDAEChannelTargetLookat::SetValue(const float values[9]) {
  StoreMembers(values, 9);
}

void oxDAEChannelTargetLookat::GetValue(float out[9]) const {
  LoadMembers(out, 9);
}

void oxDAEChannelTargetLookat::GetValue(float out[9], float time,
                                        const oxDAEAnimation* animation) const {
  LoadMembers(out, 9);
  SampleValue(out, 9, time, animation);
}

// --- oxDAEChannelTargetMatrix ------------------------------------------------------

oxDAEChannelTargetMatrix::oxDAEChannelTargetMatrix() {
  MakeFloatMembers(16, 4, 4);
  SetValue(OxMath::oxMatrix44::kIdentity);
}

void oxDAEChannelTargetMatrix::SetValue(const OxMath::oxMatrix44& matrix) {
  OxMath::oxMatrix44 written;
  written.ComputeTranspose(matrix);
  StoreMembers(written.m, 16);
}

OxMath::oxMatrix44 oxDAEChannelTargetMatrix::GetValue() const {
  OxMath::oxMatrix44 written;
  LoadMembers(written.m, 16);
  OxMath::oxMatrix44 matrix;
  matrix.ComputeTranspose(written);
  return matrix;
}

OxMath::oxMatrix44 oxDAEChannelTargetMatrix::GetValue(float time,
                                                      const oxDAEAnimation* animation) const {
  OxMath::oxMatrix44 written;
  LoadMembers(written.m, 16);
  SampleValue(written.m, 16, time, animation);
  OxMath::oxMatrix44 matrix;
  matrix.ComputeTranspose(written);
  return matrix;
}

}  // namespace OxDAEReader
