// The window geometry culling works in: vertices as the rasteriser places
// them, the depth plane, edges and sides of a triangle, the cells and
// regions of the picture, and the scan of a triangle's cells that both
// depth judges (oxRenderCullDepths.h) share. Inline, as the culling calls
// them per triangle, per row of cells and per cell.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "oxDAERender/oxRenderScene.h"

namespace OxDAERender::cull {

// A vertex as the rasteriser places it: the clip planes it lies outside of,
// and its window coordinates when it lies in front of the eye.
struct WindowVertex {
  float x = 0.0f;
  float y = 0.0f;
  float z = 0.0f;       // window depth, 0 at the near plane and 1 at the far one
  uint8_t outside = 0;  // a bit per clip plane: -x +x -y +y -z +z
  bool placed = false;  // in front of the eye, at a window position a float holds exactly enough
};

inline constexpr uint8_t kOutsideDepth = 0x30;  // the -z and +z bits

// Window positions further out than this are left to the rasteriser: a float
// no longer tells pixel centres apart there.
inline constexpr double kFarWindow = 1 << 20;

// How far a window position may lie from where the rasteriser puts it: it
// snaps vertices to 1/256 pixel and computes in floats. Bounds are widened
// by this before looking for a pixel centre, so that no triangle that might
// cover one is dropped.
inline constexpr double kSlack = 1.0 / 64;

// Whether [low, high], widened by kSlack, holds a pixel centre (k + 0.5).
inline bool HoldsPixelCentre(double low, double high) {
  return std::ceil(low - kSlack - 0.5) + 0.5 <= high + kSlack;
}

inline bool CanColourAPixel(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c) {
  if (a.outside & b.outside & c.outside) return false;   // wholly beyond one clip plane
  if (!(a.placed && b.placed && c.placed)) return true;  // crosses the eye's plane, or too far out
  return HoldsPixelCentre(std::min({a.x, b.x, c.x}), std::max({a.x, b.x, c.x})) &&
         HoldsPixelCentre(std::min({a.y, b.y, c.y}), std::max({a.y, b.y, c.y}));
}

// Occlusion is known per cell of kCell x kCell pixels: fine enough that the
// large triangles of a dense model cover whole cells, coarse enough that
// a 512 x 512 picture has only 4,096 of them.
inline constexpr int kCell = kRenderCell;

// floor(v / kCell) and ceil(v / kCell), the cells a window position lies
// in or before; 0 for a position before the picture, where no cell lies.
// Positions are below 2^20 (see kFarWindow), so the quotient fits an int.
inline int FloorCell(double v) {
  return v > 0.0 ? static_cast<int>(v * (1.0 / kCell)) : 0;
}
inline int CeilCell(double v) {
  if (!(v > 0.0)) return 0;
  const double quotient = v * (1.0 / kCell);
  const int whole = static_cast<int>(quotient);
  return whole < quotient ? whole + 1 : whole;
}

// How much farther than a cell's known depth a triangle must lie to be
// hidden there: well above a 24-bit depth buffer's step (6e-8) and the
// rasteriser's float rounding, so that the depth test cannot let it
// through whatever the drawing order.
inline constexpr double kDepthMargin = 1e-5;

// The window depth over a triangle's plane, z0 + dx (x - x0) + dy (y - y0):
// window depth is affine in window position over a flat triangle, so this
// is the depth the rasteriser interpolates at any pixel centre.
struct DepthPlane {
  double x0 = 0.0;
  double y0 = 0.0;
  double z0 = 0.0;
  double dx = 0.0;
  double dy = 0.0;

  // The least and the greatest depth over [xl, xh] x [yl, yh].
  double Least(double xl, double xh, double yl, double yh) const {
    return z0 + dx * ((dx > 0 ? xl : xh) - x0) + dy * ((dy > 0 ? yl : yh) - y0);
  }
  double Most(double xl, double xh, double yl, double yh) const {
    return z0 + dx * ((dx > 0 ? xh : xl) - x0) + dy * ((dy > 0 ? yh : yl) - y0);
  }
};

// The plane of a triangle of at least one square pixel; none for a smaller
// one, whose slopes rounding could make anything.
inline std::optional<DepthPlane> PlaneOf(const WindowVertex& a, const WindowVertex& b,
                                         const WindowVertex& c) {
  const double ux = b.x - a.x, uy = b.y - a.y, uz = b.z - a.z;
  const double vx = c.x - a.x, vy = c.y - a.y, vz = c.z - a.z;
  const double doubleArea = ux * vy - vx * uy;
  if (!(std::abs(doubleArea) >= 2.0)) return std::nullopt;
  return DepthPlane{a.x, a.y, a.z, (uz * vy - vz * uy) / doubleArea,
                    (ux * vz - vx * uz) / doubleArea};
}

// An edge as the half-plane nx x + ny y + d >= 0 that holds the triangle,
// (nx, ny) of unit length.
struct Edge {
  double nx = 0.0;
  double ny = 0.0;
  double d = 0.0;
  double inverseNx = 0.0;  // 1 / nx, 0 when nx is
};

// Narrows [low, high] to the x where nx x >= `needed` along `edge`; empties
// it (high below low) for a level edge that nowhere reaches `needed`.
inline void NarrowToEdge(const Edge& edge, double needed, double& low, double& high) {
  if (edge.nx > 0.0) low = std::max(low, needed * edge.inverseNx);
  if (edge.nx < 0.0) high = std::min(high, needed * edge.inverseNx);
  if (edge.nx == 0.0 && needed > 0.0) high = low - 1.0;
}

inline std::array<Edge, 3> EdgesOf(const WindowVertex& a, const WindowVertex& b,
                                   const WindowVertex& c) {
  const double turn = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y) > 0 ? 1.0 : -1.0;
  const WindowVertex* corners[3] = {&a, &b, &c};
  std::array<Edge, 3> edges;
  for (int i = 0; i < 3; ++i) {
    const WindowVertex& p = *corners[i];
    const WindowVertex& q = *corners[(i + 1) % 3];
    const double nx = -(q.y - p.y) * turn;
    const double ny = (q.x - p.x) * turn;
    const double length = std::sqrt(nx * nx + ny * ny);
    edges[i] = {nx / length, ny / length, -(nx * p.x + ny * p.y) / length,
                nx != 0.0 ? length / nx : 0.0};
  }
  return edges;
}

// An edge from (x, y) on, rising by `rise` over its height, with its run
// per unit of height (0 for a level edge).
struct Side {
  double x = 0.0;
  double y = 0.0;
  double rise = 0.0;
  double run = 0.0;
};

inline std::array<Side, 3> SidesOf(const WindowVertex& a, const WindowVertex& b,
                                   const WindowVertex& c) {
  const WindowVertex* corners[3] = {&a, &b, &c};
  std::array<Side, 3> sides;
  for (int i = 0; i < 3; ++i) {
    const WindowVertex& p = *corners[i];
    const WindowVertex& q = *corners[(i + 1) % 3];
    const double rise = double{q.y} - p.y;
    sides[i] = {p.x, p.y, rise, rise != 0.0 ? (double{q.x} - p.x) / rise : 0.0};
  }
  return sides;
}

// The leftmost and rightmost x of the triangle between heights low and
// high; false when it does not reach there.
inline bool SpanInBand(const std::array<Side, 3>& sides, double low, double high, double& left,
                       double& right) {
  left = HUGE_VAL;
  right = -HUGE_VAL;
  for (const Side& side : sides) {
    if (side.y >= low && side.y <= high) {
      left = std::min(left, side.x);
      right = std::max(right, side.x);
    }
    for (const double y : {low, high}) {
      // Strictly between the edge's ends: its ends are the corners above.
      const double up = y - side.y;
      if (!(side.rise > 0.0 ? up > 0.0 && up < side.rise : up < 0.0 && up > side.rise)) continue;
      const double x = side.x + up * side.run;
      left = std::min(left, x);
      right = std::max(right, x);
    }
  }
  return left <= right;
}

// The window coordinates of the first and last pixel centres of cell
// `index` along an axis of `extent` pixels.
inline std::pair<double, double> Centres(int index, int extent) {
  return {index * kCell + 0.5, std::min(index * kCell + kCell, extent) - 0.5};
}

// What of a triangle the hiding tests read: the plane its depth lies on,
// its sides, and the heights it may colour pixel centres between (its own
// widened by kSlack).
struct Footprint {
  DepthPlane plane;
  std::array<Side, 3> sides;
  std::array<Edge, 3> edges;
  double bottom = 0.0;
  double top = 0.0;
};

// The footprint of a triangle of at least one square pixel wholly in front
// of the eye; none for any other, which no test may call hidden.
inline std::optional<Footprint> FootprintOf(const WindowVertex& a, const WindowVertex& b,
                                            const WindowVertex& c) {
  if (!(a.placed && b.placed && c.placed)) return std::nullopt;
  const std::optional<DepthPlane> plane = PlaneOf(a, b, c);
  if (!plane) return std::nullopt;
  return Footprint{*plane, SidesOf(a, b, c), EdgesOf(a, b, c), std::min({a.y, b.y, c.y}) - kSlack,
                   std::max({a.y, b.y, c.y}) + kSlack};
}

// The cells of kCell x kCell pixels over a picture, row by row from the
// bottom; those of the last column and row may be partial. Cell column c
// lies in region column c * kRegionSide / columns (rows likewise), as
// RegionSpan has it.
struct Cells {
  Cells(int pictureWidth, int pictureHeight)
      : width(pictureWidth),
        height(pictureHeight),
        columns((pictureWidth + kCell - 1) / kCell),
        rows((pictureHeight + kCell - 1) / kCell),
        regionColumnEnd(static_cast<size_t>(std::max(columns, 0))),
        regionBits(regionColumnEnd.size()),
        regionShifts(static_cast<size_t>(std::max(rows, 0))) {
    // Tables, as a division per cell would cost the scans more than
    // their tests.
    for (int c = columns - 1; c >= 0; --c) {
      const int region = c * kRegionSide / columns;
      regionBits[c] = uint64_t{1} << region;
      regionColumnEnd[c] =
          c + 1 < columns && regionBits[c + 1] == regionBits[c] ? regionColumnEnd[c + 1] : c + 1;
    }
    for (int r = 0; r < rows; ++r)
      regionShifts[r] = static_cast<uint8_t>(r * kRegionSide / rows * kRegionSide);
  }

  size_t Count() const { return static_cast<size_t>(columns) * static_cast<size_t>(rows); }
  size_t Index(int column, int row) const {
    return static_cast<size_t>(row) * static_cast<size_t>(columns) + static_cast<size_t>(column);
  }
  uint64_t RegionBit(int column, int row) const { return regionBits[column] << regionShifts[row]; }
  // The regions of the cells from (firstColumn, firstRow) to (lastColumn,
  // lastRow), within the picture.
  uint64_t RegionsOver(int firstColumn, int lastColumn, int firstRow, int lastRow) const {
    // The bottom row's bits from the first column's region to the last's.
    const uint64_t rowBits = (regionBits[lastColumn] << 1) - regionBits[firstColumn];
    uint64_t mask = 0;
    for (int shift = regionShifts[firstRow]; shift <= regionShifts[lastRow]; shift += kRegionSide)
      mask |= rowBits << shift;
    return mask;
  }

  int width;
  int height;
  int columns;
  int rows;
  std::vector<int> regionColumnEnd;   // per column, the first of the next region column
  std::vector<uint64_t> regionBits;   // per column, its region's bit in the bottom row
  std::vector<uint8_t> regionShifts;  // per row, how far its regions' bits lie up
};

// The regions holding a pixel centre within the triangle's window bounds
// (widened by kSlack), where alone it may colour pixels; 0 when none lies
// in the picture. The corners must be placed.
inline uint64_t RegionsReached(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c,
                               const Cells& cells) {
  // The first and last pixel (column or row) whose centre lies in
  // [low, high] widened by kSlack, within `extent` pixels.
  const auto pixels = [](double low, double high, int extent) {
    const double first = std::max(0.0, std::ceil(low - kSlack - 0.5));
    const double last = std::min(extent - 1.0, std::floor(high + kSlack - 0.5));
    return std::pair<int, int>(static_cast<int>(first), static_cast<int>(last));
  };
  const auto [left, right] =
      pixels(std::min({a.x, b.x, c.x}), std::max({a.x, b.x, c.x}), cells.width);
  const auto [bottom, top] =
      pixels(std::min({a.y, b.y, c.y}), std::max({a.y, b.y, c.y}), cells.height);
  if (left > right || bottom > top) return 0;
  return cells.RegionsOver(left / kCell, right / kCell, bottom / kCell, top / kCell);
}

// The regions of `reach` holding a cell where the triangle may colour a
// pixel centre and `hidden(column, row, nearest)` does not hold; `nearest`
// is the triangle's nearest depth over the cell. A row's cells from
// `first` to `last` are passed over at once where `rowHidden(first, last,
// row, nearest)` holds, `nearest` then being over all of them: a hidden
// triangle far larger than a cell costs a test per row rather than per
// cell. A region is done with at its first such cell, and the whole
// triangle once every region of `reach` is. `reach` itself when the
// triangle may colour no cell.
template <typename RowHidden, typename Hidden>
uint64_t ShownRegions(const Footprint& footprint, const Cells& cells, uint64_t reach,
                      RowHidden&& rowHidden, Hidden&& hidden) {
  const int firstRow = FloorCell(footprint.bottom - 0.5);
  const int lastRow =
      footprint.top >= 0.5 ? std::min(cells.rows - 1, FloorCell(footprint.top - 0.5)) : -1;
  bool examined = false;
  uint64_t shown = 0;
  for (int row = firstRow; row <= lastRow; ++row) {
    const auto [yl, yh] = Centres(row, cells.height);
    const double bandLow = std::max(yl - kSlack, footprint.bottom);
    const double bandHigh = std::min(yh + kSlack, footprint.top);
    double left = 0.0;
    double right = 0.0;
    if (!SpanInBand(footprint.sides, bandLow, bandHigh, left, right)) continue;
    left -= kSlack;
    right += kSlack;
    const int firstColumn = CeilCell(left - (kCell - 0.5));
    const int lastColumn = right >= 0.5 ? std::min(cells.columns - 1, FloorCell(right - 0.5)) : -1;
    if (firstColumn > lastColumn) continue;
    examined = true;
    const double rowNearest = footprint.plane.Least(
        std::max(Centres(firstColumn, cells.width).first - kSlack, left),
        std::min(Centres(lastColumn, cells.width).second + kSlack, right), bandLow, bandHigh);
    if (rowHidden(firstColumn, lastColumn, row, rowNearest)) continue;
    for (int column = firstColumn; column <= lastColumn; ++column) {
      const uint64_t region = cells.RegionBit(column, row);
      if (shown & region) {
        column = cells.regionColumnEnd[static_cast<size_t>(column)] - 1;
        continue;
      }
      const auto [xl, xh] = Centres(column, cells.width);
      const double nearest = footprint.plane.Least(std::max(xl - kSlack, left),
                                                   std::min(xh + kSlack, right), bandLow, bandHigh);
      if (hidden(column, row, nearest)) continue;
      shown |= region;
      if ((reach & ~shown) == 0) return reach;
    }
  }
  return examined ? shown & reach : reach;
}

}  // namespace OxDAERender::cull
