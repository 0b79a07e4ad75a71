// Small fixed-size vectors of the host math module.
#pragma once

namespace OxMath {

template <class T>
struct oxGenVec2 {
  T x{}, y{};
  bool operator==(const oxGenVec2&) const = default;
};

template <class T>
struct oxGenVec3 {
  T x{}, y{}, z{};
  bool operator==(const oxGenVec3&) const = default;
  oxGenVec3 operator+(const oxGenVec3& o) const { return {x + o.x, y + o.y, z + o.z}; }
  oxGenVec3 operator-(const oxGenVec3& o) const { return {x - o.x, y - o.y, z - o.z}; }
  oxGenVec3 operator*(T s) const { return {x * s, y * s, z * s}; }
};

template <class T>
struct oxGenVec4 {
  T x{}, y{}, z{}, w{};
  bool operator==(const oxGenVec4&) const = default;
};

template <class T>
T Dot(const oxGenVec3<T>& a, const oxGenVec3<T>& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

template <class T>
oxGenVec3<T> Cross(const oxGenVec3<T>& a, const oxGenVec3<T>& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

using oxVec2 = oxGenVec2<float>;
using oxVec3 = oxGenVec3<float>;
using oxVec4 = oxGenVec4<float>;

}  // namespace OxMath
