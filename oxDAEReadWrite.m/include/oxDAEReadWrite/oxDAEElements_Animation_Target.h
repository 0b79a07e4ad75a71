// Animation targets: the animatable values of a document (a transform's
// vector, angle or matrix, a colour, a light parameter, ...). Each value
// lives in a channel target that knows its target path ("node1/rot.ANGLE"),
// the channels bound to it, and its value at a time under an animation: the
// stored value when nothing drives it, else what the driving channel's
// sampler gives.
//
// The element that holds a value creates its target, sets its container (the
// element) and qualifier (the element's sid, or a member name), and registers
// it with the document; channels bind to it after loading. A target never
// owns its channels; an array target owns its members.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>

#include <oxKernel/oxContainers.h>
#include <oxKernel/oxRTTI.h>
#include <oxKernel/oxString.h>
#include <oxMath/oxMatrix44.h>

namespace OxDAEReader {

using OxKernel::oxArray;
using OxKernel::oxString;

class oxDAEAnimation;
class oxDAEChannel;
class oxDAEElement;
class oxDAEFile;

// One animatable value. No target parent, container, qualifier, document or
// channel by default. Destroying a target does not take it out of its
// document's table (its container may already be gone); the document's
// targets live as long as its elements, and Load empties the table.
class oxDAEChannelTarget : public OxKernel::oxRTTIObject {
  OX_DECLARE_RTTI(oxDAEChannelTarget)

 public:
  oxDAEChannelTarget() = default;
  ~oxDAEChannelTarget() override;

  // The target path: for a member, the array's path + "." + qualifier; for
  // a value whose container's sid equals the qualifier, the container's
  // element path; else the container's path, "/" (when that path is not
  // empty) and the qualifier. Without parent or container: empty, and the
  // error "neither parent no container" is logged.
  oxString GetPath() const;

  // Appends a channel (no duplicate test).
  void AddChannel(oxDAEChannel* channel) { channels.push_back(channel); }
  // True when at least one channel is bound.
  bool IsTargeted() const { return !channels.empty(); }
  // True when a bound channel belongs to `animation`: its sampler's parent is
  // `animation` or a direct child animation of it. False for null. The flag
  // is not consulted.
  bool IsTargeted(const oxDAEAnimation* animation, bool extended) const;
  // The first bound channel that belongs to `animation`, or null.
  oxDAEChannel* GetChannel(const oxDAEAnimation* animation) const;
  const oxArray<oxDAEChannel*>& GetChannels() const { return channels; }

  // Enters the target in the document's target table under GetPath() (the
  // first target of a path keeps it). A target with an empty qualifier is
  // never registered. An array registers itself only: its members are
  // found through it ("rot.ANGLE" is the member "ANGLE" of the target
  // registered as "rot"), which keeps the table at one entry per value.
  virtual void Register(oxDAEFile& file);
  // Removes a registered target from its document's table.
  virtual void Unregister();
  oxDAEFile* GetDocument() const { return document; }

  void SetTargetParent(oxDAEChannelTarget* parent) { targetParent = parent; }
  oxDAEChannelTarget* GetTargetParent() const { return targetParent; }
  // Keeps `container` only when it is an oxDAEElement (else null).
  void SetContainerParent(OxKernel::oxRTTIObject* container);
  oxDAEElement* GetContainerParent() const { return containerParent; }
  void SetQualifier(const oxString& name) { qualifier = name; }
  const oxString& GetQualifier() const { return qualifier; }

 protected:
  // An array hands its document on to its members.
  friend class oxDAEChannelTargetArray;

  oxDAEChannelTarget* targetParent = nullptr;
  oxDAEElement* containerParent = nullptr;
  oxString qualifier;
  oxDAEFile* document = nullptr;
  oxArray<oxDAEChannel*> channels;
};

// One float (0 by default).
class oxDAEChannelTargetFloat : public oxDAEChannelTarget {
  OX_DECLARE_RTTI(oxDAEChannelTargetFloat)

 public:
  // The value at `time` under `animation`: the stored value when no channel
  // is bound (logs "value not targeted"), when none belongs to `animation`
  // or it has no sampler (silently), or when sampling fails (logs "cannot
  // retrieve sampled value"); else the sampled float.
  float GetValue(float time, const oxDAEAnimation* animation) const;
  float GetValue() const { return value; }
  void SetValue(float v) { value = v; }

 private:
  float value = 0.0f;
};

// A rows x columns grid of float member targets (row-major), owned by the
// array and stored side by side. Members are created by the subclasses; an
// array cannot be copied.
class oxDAEChannelTargetArray : public oxDAEChannelTarget {
  OX_DECLARE_RTTI(oxDAEChannelTargetArray)

 public:
  oxDAEChannelTargetArray() = default;
  oxDAEChannelTargetArray(const oxDAEChannelTargetArray&) = delete;
  oxDAEChannelTargetArray& operator=(const oxDAEChannelTargetArray&) = delete;

  void Register(oxDAEFile& file) override;
  void Unregister() override;

  // True when the array or any member is targeted (by `animation`).
  bool IsTargetedEx() const;
  bool IsTargetedEx(const oxDAEAnimation* animation) const;
  // The member at row * columns + column; null when row or column is
  // negative or not below the row or column count, or there is no such
  // member.
  oxDAEChannelTarget* GetChannelTarget(signed char row, signed char column) const;
  // The first member whose qualifier equals `name`, or null.
  oxDAEChannelTarget* GetChannelTarget(const oxString& name) const;
  // Sets every member's target parent to this array.
  void _AttachMembers();

  unsigned int GetMemberCount() const { return static_cast<unsigned int>(members.size()); }
  int8_t GetRowCount() const { return rows; }
  int8_t GetColumnCount() const { return columns; }

 protected:
  // Replaces the members by `count` float members named by `names` (empty
  // names when `names` is shorter), attaches them and sets the grid size.
  void MakeFloatMembers(unsigned int count, int8_t rowCount, int8_t columnCount,
                        std::initializer_list<const char*> names = {});
  const oxDAEChannelTargetFloat* FloatMember(unsigned int i) const;
  // Copies `count` floats into / out of the first float members (a missing
  // member reads as 0).
  void StoreMembers(const float* values, unsigned int count);
  void LoadMembers(float* out, unsigned int count) const;
  // The value of `count` floats (at most 16) at `time`, filled into `out`
  // (which holds the stored value on entry): from a channel bound to the
  // whole value, else member by member when a member is targeted (each
  // untargeted member then logs "value not targeted"). Failures log "invalid
  // channel" (no channel of `animation`, or no sampler), "cannot get sampled
  // value" (sampling failed) or "not a targeted value" (nothing targeted)
  // and return false, leaving `out` as it was.
  bool SampleValue(float* out, unsigned int count, float time,
                   const oxDAEAnimation* animation) const;

  oxArray<oxDAEChannelTargetFloat> members;
  int8_t rows = 0;
  int8_t columns = 0;
};

// One row of n float members (a float array's values), unnamed: channels
// reach them by index ("path(i)"). No member by default.
class oxDAEChannelTargetFloatArray : public oxDAEChannelTargetArray {
  OX_DECLARE_RTTI(oxDAEChannelTargetFloatArray)

 public:
  // Rows 1, columns n kept as 8 bits; the count is truncated to 8 bits
  // before the new float members are made (300 gives 44).
  void SetChannelCount(unsigned int n);
  // The position of `member`, or -1.
  int GetChannelIndex(const oxDAEChannelTarget* member) const;
};

// Three floats with members "X", "Y", "Z" (translate, scale); 0, 0, 0 by
// default. The stored value is kept in the members too, so an untargeted
// member reads its component.
class oxDAEChannelTargetFloatXYZ : public oxDAEChannelTargetArray {
  OX_DECLARE_RTTI(oxDAEChannelTargetFloatXYZ)

 public:
  oxDAEChannelTargetFloatXYZ();
  void SetValue(const float xyz[3]);
  const float* GetValue() const { return value; }
  // The stored value, replaced by 3 sampled floats when a channel is bound
  // to the vector itself (a failed sample leaves what the sampler wrote),
  // else component by component when a member is targeted.
  void GetValue(float out[3], float time, const oxDAEAnimation* animation) const;

 private:
  float value[3] = {0.0f, 0.0f, 0.0f};
};

// An axis and an angle in degrees, members "X", "Y", "Z", "ANGLE" (which
// hold the stored value; all 0 by default).
class oxDAEChannelTargetRotate : public oxDAEChannelTargetArray {
  OX_DECLARE_RTTI(oxDAEChannelTargetRotate)

 public:
  oxDAEChannelTargetRotate();
  void SetValue(const OxMath::oxVec3& axis, float angle);
  OxMath::oxVec3 GetAxis() const;
  float GetAngle() const;
  // The angle at `time`: the fourth of 4 sampled floats when a channel is
  // bound to the whole rotation ("invalid channel" without a usable
  // channel, "cannot get sampled value" when sampling fails), else the
  // "ANGLE" member's value when only members are targeted, else the stored
  // angle with "not a targeted value".
  float GetAngle(float time, const oxDAEAnimation* animation) const;
  // The axis at `time`: the first 3 of 4 sampled floats when a channel of
  // `animation` is bound to the whole rotation, else each targeted
  // component's value; untargeted components keep the stored value. Logs
  // nothing.
  OxMath::oxVec3 GetAxis(float time, const oxDAEAnimation* animation) const;
};

// An RGBA colour, members "R", "G", "B", "A" (which hold the stored value;
// all 0 by default).
class oxDAEChannelTargetColor : public oxDAEChannelTargetArray {
  OX_DECLARE_RTTI(oxDAEChannelTargetColor)

 public:
  oxDAEChannelTargetColor();
  void SetValue(const float rgba[4]);
  void GetValue(float out[4]) const;
  // The colour at `time` (the array rule with its three messages; when only
  // members are targeted, each untargeted member logs "value not targeted").
  void GetValue(float out[4], float time, const oxDAEAnimation* animation) const;
};

// A look-at: eye, interest and up, 9 unnamed float members in 3 rows of 3
// (which hold the stored value; all 0 by default).
class oxDAEChannelTargetLookat : public oxDAEChannelTargetArray {
  OX_DECLARE_RTTI(oxDAEChannelTargetLookat)

 public:
  oxDAEChannelTargetLookat();
  void SetValue(const float values[9]);
  void GetValue(float out[9]) const;
  // The nine values at `time` (the array rule with its three messages).
  void GetValue(float out[9], float time, const oxDAEAnimation* animation) const;
};

// A 4 x 4 matrix, 16 unnamed float members. The members hold the matrix as
// a document writes it (member row r, column c is the written row r, column
// c); SetValue and GetValue take and give the host's convention, i.e. the
// transpose. The identity by default.
class oxDAEChannelTargetMatrix : public oxDAEChannelTargetArray {
  OX_DECLARE_RTTI(oxDAEChannelTargetMatrix)

 public:
  oxDAEChannelTargetMatrix();
  void SetValue(const OxMath::oxMatrix44& matrix);
  OxMath::oxMatrix44 GetValue() const;
  // The matrix at `time` (the array rule with its three messages). Sampled
  // values are in document order and are transposed into the host's
  // convention, as a <matrix> text is when read.
  OxMath::oxMatrix44 GetValue(float time, const oxDAEAnimation* animation) const;
};

}  // namespace OxDAEReader
