// RGBA colour with float components; opaque black by default.
#pragma once

namespace OxMath {

struct oxFColor {
  float r = 0.0f, g = 0.0f, b = 0.0f, a = 1.0f;
  bool operator==(const oxFColor&) const = default;
};

inline constexpr oxFColor kGreenColor{0.0f, 1.0f, 0.0f, 1.0f};

}  // namespace OxMath
