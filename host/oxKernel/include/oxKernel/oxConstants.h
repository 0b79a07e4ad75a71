// Numeric constants shared by the host modules.
#pragma once

namespace OxKernel {

inline constexpr float kPi = 3.14159265358979323846f;
// Degrees to radians.
inline constexpr float kPiOn180 = kPi / 180.0f;
// Tolerance for comparisons of unit-scale float values.
inline constexpr float kEpsilon = 1.0e-6f;

}  // namespace OxKernel
