// 4x4 float matrices of the host: 16 floats in row order, points as row
// vectors (p' = p * M), so the translation sits in elements 12, 13 and 14.
#pragma once

#include "oxMath/oxQuat.h"
#include "oxMath/oxVec.h"

namespace OxMath {

struct oxMatrix44 {
  float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

  static const oxMatrix44 kIdentity;

  float& operator[](unsigned int i) { return m[i]; }
  float operator[](unsigned int i) const { return m[i]; }
  bool operator==(const oxMatrix44&) const = default;

  // this = b * a: the matrix that applies b, then a. This is the order in
  // which a node's transforms act on a point (the later one first), so a
  // local matrix is built as MultiplyAB(result, next). `this` may alias
  // either operand.
  void MultiplyAB(const oxMatrix44& a, const oxMatrix44& b);
  // this = transpose of `source` (may alias).
  void ComputeTranspose(const oxMatrix44& source);
  void ComputeTranspose() { ComputeTranspose(*this); }
  oxVec3 GetTranslation() const { return {m[12], m[13], m[14]}; }
};

// A matrix made of a rotation, a translation and a scale: scale first, then
// rotation, then translation.
struct oxTransformMatrix44 : oxMatrix44 {
  void Create(const oxQuat& rotation, const oxVec3& translation, const oxVec3& scale);
};

}  // namespace OxMath
