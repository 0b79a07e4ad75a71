#include "oxMath/oxKeyframeController.h"

#include <algorithm>

namespace OxMath {

namespace {

// Floats per value of a float or float-tuple type (the vectors and the
// matrix); 0 for the other types.
unsigned int ValueSizeOf(const OxKernel::oxType& type) {
  const OxKernel::oxType::EKind kind = type.GetKind();
  const bool floats =
      kind == OxKernel::oxType::EKind::Float || kind == OxKernel::oxType::EKind::FloatTuple;
  return floats ? type.GetComponentCount() : 0;
}

}  // namespace

oxKeyframeController* oxKeyframeController::CreateController(int keyType,
                                                             const OxKernel::oxType* valueType,
                                                             void*) {
  if (keyType != LINEAR || !valueType) return nullptr;
  const unsigned int size = ValueSizeOf(*valueType);
  return size ? new oxKeyframeController(keyType, size) : nullptr;
}

void oxKeyframeController::SetKeysCount(unsigned int count) {
  keys.assign(static_cast<size_t>(count) * GetKeySize(), 0.0f);
  keyCount = count;
}

unsigned int oxKeyframeController::FindSegment(float time) const {
  const unsigned int keySize = GetKeySize();
  const auto timeOf = [&](unsigned int i) { return keys[size_t{i} * keySize + valueSize]; };
  // Invariant: timeOf(lo) <= time and !(timeOf(hi) <= time). It holds
  // whatever the order of the keys, so the search ends on two neighbours.
  unsigned int lo = 0, hi = keyCount - 1;
  while (hi - lo > 1) {
    const unsigned int mid = lo + (hi - lo) / 2;
    if (timeOf(mid) <= time) {
      lo = mid;
    } else {
      hi = mid;
    }
  }
  return lo;
}

void oxKeyframeController::Evaluate(float time, float* out) const {
  if (keyCount == 0) return;
  const unsigned int keySize = GetKeySize();
  // Times are read through a local base and key size: this runs for every
  // sample of every channel.
  const float* base = keys.data();
  const auto timeOf = [&](unsigned int i) { return base[size_t{i} * keySize + valueSize]; };
  const auto copyKey = [&](unsigned int i) {
    std::copy_n(base + size_t{i} * keySize, valueSize, out);
  };
  const unsigned int last = keyCount - 1;
  // Comparisons written so that a NaN time lands on the first key.
  if (!(time > timeOf(0))) return copyKey(0);
  if (time >= timeOf(last)) return copyKey(last);
  // The segment [lo, lo + 1] holds the time; try the last one and the one
  // after it before searching.
  const auto holds = [&](unsigned int k) {
    return k < last && timeOf(k) <= time && time < timeOf(k + 1);
  };
  unsigned int lo = lastSegment.load(std::memory_order_relaxed);
  if (!holds(lo)) lo = holds(lo + 1) ? lo + 1 : FindSegment(time);
  lastSegment.store(lo, std::memory_order_relaxed);
  const unsigned int hi = lo + 1;
  const float t0 = timeOf(lo), t1 = timeOf(hi);
  float f = (time - t0) / (t1 - t0);
  // An infinite or NaN key time makes the fraction NaN: take the earlier key.
  if (!(f >= 0.0f)) f = 0.0f;
  const float* a = base + size_t{lo} * keySize;
  const float* b = base + size_t{hi} * keySize;
  for (unsigned int c = 0; c < valueSize; ++c)
    out[c] = a[c] + (b[c] - a[c]) * f;
}

}  // namespace OxMath
