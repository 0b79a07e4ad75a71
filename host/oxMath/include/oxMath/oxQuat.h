// Rotation quaternion (x, y, z vector part, w scalar part); identity by default.
#pragma once

#include "oxMath/oxVec.h"

namespace OxMath {

struct oxQuat {
  float x = 0.0f, y = 0.0f, z = 0.0f, w = 1.0f;

  // The rotation of `radians` about `axis` (normalised here; a zero axis
  // gives the identity).
  static oxQuat FromAxisAngle(const oxVec3& axis, float radians);
  bool operator==(const oxQuat&) const = default;
};

}  // namespace OxMath
