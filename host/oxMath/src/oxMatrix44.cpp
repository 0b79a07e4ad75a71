#include <cmath>

#include "oxMath/oxMatrix44.h"

namespace OxMath {

const oxMatrix44 oxMatrix44::kIdentity{};

oxQuat oxQuat::FromAxisAngle(const oxVec3& axis, float radians) {
  const float length = std::sqrt(Dot(axis, axis));
  if (length == 0.0f) return {};
  const float s = std::sin(radians * 0.5f) / length;
  return {axis.x * s, axis.y * s, axis.z * s, std::cos(radians * 0.5f)};
}

void oxMatrix44::MultiplyAB(const oxMatrix44& a, const oxMatrix44& b) {
  float r[16];
  for (int row = 0; row < 4; ++row) {
    for (int col = 0; col < 4; ++col) {
      float sum = 0.0f;
      for (int k = 0; k < 4; ++k)
        sum += b.m[row * 4 + k] * a.m[k * 4 + col];
      r[row * 4 + col] = sum;
    }
  }
  for (int i = 0; i < 16; ++i)
    m[i] = r[i];
}

void oxMatrix44::ComputeTranspose(const oxMatrix44& source) {
  float r[16];
  for (int row = 0; row < 4; ++row) {
    for (int col = 0; col < 4; ++col)
      r[col * 4 + row] = source.m[row * 4 + col];
  }
  for (int i = 0; i < 16; ++i)
    m[i] = r[i];
}

void oxTransformMatrix44::Create(const oxQuat& q, const oxVec3& t, const oxVec3& s) {
  const float xx = q.x * q.x, yy = q.y * q.y, zz = q.z * q.z;
  const float xy = q.x * q.y, xz = q.x * q.z, yz = q.y * q.z;
  const float wx = q.w * q.x, wy = q.w * q.y, wz = q.w * q.z;
  // Rows are the images of the basis vectors (row-vector convention).
  const float rot[9] = {1 - 2 * (yy + zz), 2 * (xy + wz),     2 * (xz - wy),
                        2 * (xy - wz),     1 - 2 * (xx + zz), 2 * (yz + wx),
                        2 * (xz + wy),     2 * (yz - wx),     1 - 2 * (xx + yy)};
  const float scale[3] = {s.x, s.y, s.z};
  for (int row = 0; row < 3; ++row) {
    for (int col = 0; col < 3; ++col)
      m[row * 4 + col] = rot[row * 3 + col] * scale[row];
    m[row * 4 + 3] = 0.0f;
  }
  m[12] = t.x;
  m[13] = t.y;
  m[14] = t.z;
  m[15] = 1.0f;
}

}  // namespace OxMath
