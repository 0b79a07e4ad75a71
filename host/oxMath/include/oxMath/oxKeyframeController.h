// Keyframe controllers: a value (a float, a 2-, 3- or 4-float vector or a
// 4 x 4 matrix) given at key times, evaluated at any time.
//
// Keys are stored in one float buffer: key i starts at GetKeyBase() +
// i * GetKeySize() and holds the value's floats, then the key's time. Keys
// are expected in increasing time order; other orders, and key times that are
// infinite or not a number, give some value between two keys, never a NaN
// from the keys' times nor a read outside the buffer.
//
// Key type LINEAR (1) interpolates linearly, component by component (also
// for matrices), between the two keys around the time; before the first key
// it holds the first key's value, after the last key the last key's value.
// A time that is not a number evaluates to the first key's value. A
// controller with no key leaves the output unchanged.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include <oxKernel/oxRefPtr.h>
#include <oxKernel/oxVariant.h>

namespace OxMath {

class oxKeyframeController : public OxKernel::oxRefPtrObject {
 public:
  enum EKeyType : int { LINEAR = 1 };

  // A controller of `keyType` for values of `valueType` ("float", "oxVec2",
  // "oxVec3", "oxVec4" or "oxMatrix44" of the host type manager), with no
  // keys; null for another key type or value type. `context` is not used.
  static oxKeyframeController* CreateController(int keyType, const OxKernel::oxType* valueType,
                                                void* context);

  // Resizes the key buffer to `count` keys; new keys are zero (value and
  // time).
  void SetKeysCount(unsigned int count);
  unsigned int GetKeysCount() const { return keyCount; }
  // Floats of one value, and of one key (the value and its time).
  unsigned int GetValueSize() const { return valueSize; }
  unsigned int GetKeySize() const { return valueSize + 1; }
  float* GetKeyBase() { return keys.data(); }
  const float* GetKeyBase() const { return keys.data(); }
  int GetKeyType() const { return keyType; }

  // Writes the value at `time` (GetValueSize() floats) into `out`.
  void Evaluate(float time, float* out) const;

 private:
  // The first of two neighbour keys whose times enclose `time`, for a time
  // after the first key's and before the last key's (any key order).
  unsigned int FindSegment(float time) const;

  oxKeyframeController(int keyType, unsigned int valueSize)
      : keyType(keyType), valueSize(valueSize) {}

  int keyType;
  unsigned int valueSize;
  unsigned int keyCount = 0;
  std::vector<float> keys;
  // The key that began the segment of the last evaluation: playback asks
  // for the same or the next segment most of the time. Only a hint, so
  // concurrent evaluations may overwrite it freely.
  mutable std::atomic<unsigned int> lastSegment{0};
};

}  // namespace OxMath
