#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <optional>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include <oxKernel/oxContainers.h>
#include <oxKernel/oxParallel.h>

#include "oxDAERender/oxRenderView.h"

namespace OxDAERender {

namespace {

// A vertex as the rasteriser places it: the clip planes it lies outside of,
// and its window coordinates when it lies in front of the eye.
struct WindowVertex {
  float x = 0.0f;
  float y = 0.0f;
  float z = 0.0f;       // window depth, 0 at the near plane and 1 at the far one
  uint8_t outside = 0;  // a bit per clip plane: -x +x -y +y -z +z
  bool placed = false;  // in front of the eye, at a window position a float holds exactly enough
};

constexpr uint8_t kOutsideDepth = 0x30;  // the -z and +z bits

// Window positions further out than this are left to the rasteriser: a float
// no longer tells pixel centres apart there.
constexpr double kFarWindow = 1 << 20;

// How far a window position may lie from where the rasteriser puts it: it
// snaps vertices to 1/256 pixel and computes in floats. Bounds are widened
// by this before looking for a pixel centre, so that no triangle that might
// cover one is dropped.
constexpr double kSlack = 1.0 / 64;

oxGLMatrix Product(const oxGLMatrix& a, const oxGLMatrix& b) {
  oxGLMatrix m{};
  for (int c = 0; c < 4; ++c) {
    for (int r = 0; r < 4; ++r) {
      double sum = 0.0;
      for (int k = 0; k < 4; ++k)
        sum += a[k * 4 + r] * b[c * 4 + k];
      m[c * 4 + r] = sum;
    }
  }
  return m;
}

WindowVertex Place(const oxGLMatrix& m, const float* p, double width, double height) {
  double clip[4];
  for (int r = 0; r < 4; ++r)
    clip[r] = m[r] * p[0] + m[4 + r] * p[1] + m[8 + r] * p[2] + m[12 + r];
  const double w = clip[3];
  WindowVertex v;
  for (int axis = 0; axis < 3; ++axis) {
    v.outside |= static_cast<uint8_t>((clip[axis] < -w ? 1 : 0) << (2 * axis));
    v.outside |= static_cast<uint8_t>((clip[axis] > w ? 1 : 0) << (2 * axis + 1));
  }
  if (!(w > 0.0)) return v;
  const double half = 0.5 / w;
  const double x = (clip[0] * half + 0.5) * width;
  const double y = (clip[1] * half + 0.5) * height;
  v.placed = std::abs(x) < kFarWindow && std::abs(y) < kFarWindow;
  v.x = static_cast<float>(x);
  v.y = static_cast<float>(y);
  v.z = static_cast<float>(clip[2] * half + 0.5);
  return v;
}

// Items `first` to `end` of list `list`.
struct Piece {
  size_t list = 0;
  size_t first = 0;
  size_t end = 0;
};

// The items of lists of `sizes` in pieces of at most kPiece: work shared
// among the cores by piece rather than by list, so that one large mesh of a
// scene is not left to one core.
std::vector<Piece> Pieces(const std::vector<size_t>& sizes) {
  constexpr size_t kPiece = 16384;
  std::vector<Piece> pieces;
  for (size_t list = 0; list < sizes.size(); ++list) {
    for (size_t first = 0; first < sizes[list]; first += kPiece)
      pieces.push_back({list, first, std::min(sizes[list], first + kPiece)});
  }
  return pieces;
}

// Each of `shared`'s vertices placed; in the host's large-page arrays, as a
// small page faulted in per 4 kB would cost more than placing the vertices
// it holds.
std::vector<OxKernel::oxArray<WindowVertex>> PlaceAll(
    const std::vector<const oxRenderVertices*>& shared, const oxGLMatrix& m, int width,
    int height) {
  std::vector<OxKernel::oxArray<WindowVertex>> placed(shared.size());
  std::vector<size_t> sizes;
  for (size_t i = 0; i < shared.size(); ++i) {
    placed[i].resize(shared[i]->positions.size() / 3);
    sizes.push_back(placed[i].size());
  }
  const std::vector<Piece> pieces = Pieces(sizes);
  OxKernel::oxParallelFor(pieces.size(), [&](size_t p) {
    const Piece& piece = pieces[p];
    for (size_t v = piece.first; v < piece.end; ++v)
      placed[piece.list][v] = Place(m, &shared[piece.list]->positions[3 * v], width, height);
  });
  return placed;
}

// Whether [low, high], widened by kSlack, holds a pixel centre (k + 0.5).
bool HoldsPixelCentre(double low, double high) {
  return std::ceil(low - kSlack - 0.5) + 0.5 <= high + kSlack;
}

bool CanColourAPixel(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c) {
  if (a.outside & b.outside & c.outside) return false;   // wholly beyond one clip plane
  if (!(a.placed && b.placed && c.placed)) return true;  // crosses the eye's plane, or too far out
  return HoldsPixelCentre(std::min({a.x, b.x, c.x}), std::max({a.x, b.x, c.x})) &&
         HoldsPixelCentre(std::min({a.y, b.y, c.y}), std::max({a.y, b.y, c.y}));
}

// Occlusion is known per cell of kCell x kCell pixels: fine enough that the
// large triangles of a dense model cover whole cells, coarse enough that
// a 512 x 512 picture has only 4,096 of them.
constexpr int kCell = kRenderCell;

// floor(v / kCell) and ceil(v / kCell), the cells a window position lies
// in or before; 0 for a position before the picture, where no cell lies.
// Positions are below 2^20 (see kFarWindow), so the quotient fits an int.
int FloorCell(double v) {
  return v > 0.0 ? static_cast<int>(v * (1.0 / kCell)) : 0;
}
int CeilCell(double v) {
  if (!(v > 0.0)) return 0;
  const double quotient = v * (1.0 / kCell);
  const int whole = static_cast<int>(quotient);
  return whole < quotient ? whole + 1 : whole;
}

// How much farther than a cell's known depth a triangle must lie to be
// hidden there: well above a 24-bit depth buffer's step (6e-8) and the
// rasteriser's float rounding, so that the depth test cannot let it
// through whatever the drawing order.
constexpr double kDepthMargin = 1e-5;

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
std::optional<DepthPlane> PlaneOf(const WindowVertex& a, const WindowVertex& b,
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
void NarrowToEdge(const Edge& edge, double needed, double& low, double& high) {
  if (edge.nx > 0.0) low = std::max(low, needed * edge.inverseNx);
  if (edge.nx < 0.0) high = std::min(high, needed * edge.inverseNx);
  if (edge.nx == 0.0 && needed > 0.0) high = low - 1.0;
}

std::array<Edge, 3> EdgesOf(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c) {
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

std::array<Side, 3> SidesOf(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c) {
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
bool SpanInBand(const std::array<Side, 3>& sides, double low, double high, double& left,
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
std::pair<double, double> Centres(int index, int extent) {
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
std::optional<Footprint> FootprintOf(const WindowVertex& a, const WindowVertex& b,
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
uint64_t RegionsReached(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c,
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
// is the triangle's nearest depth over the cell. A region is done with at
// its first such cell, and the whole triangle once every region of
// `reach` is. `reach` itself when the triangle may colour no cell.
template <typename Hidden>
uint64_t ShownRegions(const Footprint& footprint, const Cells& cells, uint64_t reach,
                      Hidden&& hidden) {
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
    for (int column = firstColumn; column <= lastColumn; ++column) {
      examined = true;
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

// A coarse grid over the picture holding, per cell, a depth that every
// pixel centre of the cell reaches or passes once the opaque triangles are
// drawn (kNothing while none is known). A triangle that lies farther than
// that everywhere it could colour a pixel loses the depth test there, so
// dropping it leaves the picture as it is. The nearest triangle behind a
// cell's value is never dropped itself: its depth there cannot lie beyond
// its own farthest.
class OcclusionGrid {
 public:
  OcclusionGrid(int width, int height)
      : m_cells(width, height),
        m_depth(m_cells.Count(), kNothing),
        m_owner(m_depth.size(), kNoOwner) {}

  // Lowers each cell whose pixel centres all lie inside the triangle (by
  // kSlack) to the triangle's farthest depth over them and kSlack around.
  // The triangle must lie in front of the eye and between the near and far
  // planes, where nothing of it is clipped away.
  void Cover(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c, uint64_t owner) {
    const double top = std::max({a.y, b.y, c.y});
    const double bottom = std::min({a.y, b.y, c.y});
    // Narrower or lower than the pixel centres of a whole cell span: such a
    // triangle could hide at most a partial cell at the picture's far
    // edges, which is left unknown.
    if (top - bottom < kCell - 1 ||
        std::max({a.x, b.x, c.x}) - std::min({a.x, b.x, c.x}) < kCell - 1)
      return;
    const std::optional<DepthPlane> plane = PlaneOf(a, b, c);
    if (!plane) return;
    const std::array<Edge, 3> edges = EdgesOf(a, b, c);
    const int firstRow = FloorCell(bottom);
    const int lastRow = top > 0.0 ? std::min(m_cells.rows - 1, FloorCell(top)) : -1;
    for (int row = firstRow; row <= lastRow; ++row) {
      const auto [yl, yh] = Centres(row, m_cells.height);
      // The cells' left and right centres must lie in [low, high].
      double low = -1.0;
      double high = m_cells.width + 1.0;
      for (const Edge& edge : edges)
        NarrowToEdge(edge, kSlack - edge.d - std::min(edge.ny * yl, edge.ny * yh), low, high);
      if (!(low <= high)) continue;
      for (int column = CeilCell(low - 0.5); column < m_cells.columns; ++column) {
        const auto [xl, xh] = Centres(column, m_cells.width);
        if (xh > high) break;
        // The rasteriser's plane passes through its own vertex positions:
        // its depth at a centre is this plane's up to kSlack away.
        const double farthest = plane->Most(xl - kSlack, xh + kSlack, yl - kSlack, yh + kSlack);
        const size_t cell = m_cells.Index(column, row);
        if (static_cast<float>(farthest) < m_depth[cell]) {
          m_depth[cell] = static_cast<float>(farthest);
          m_owner[cell] = owner;
        }
      }
    }
  }

  // The regions of `reach` where some pixel centre the triangle might
  // colour lies in a cell not known nearer, by kDepthMargin, than the
  // triangle's nearest depth over that cell. All of `reach` for a triangle
  // of less than a square pixel, and for one reaching behind the eye.
  uint64_t Shown(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c,
                 uint64_t reach) const {
    const std::optional<Footprint> footprint = FootprintOf(a, b, c);
    if (!footprint) return reach;
    return ShownRegions(*footprint, m_cells, reach, [this](int column, int row, double nearest) {
      return nearest > m_depth[m_cells.Index(column, row)] + kDepthMargin;
    });
  }

  const Cells& Grid() const { return m_cells; }

  // Keeps, cell by cell, the nearer of this grid's depth and `other`'s.
  void Merge(const OcclusionGrid& other) {
    for (size_t i = 0; i < m_depth.size(); ++i) {
      if (other.m_depth[i] < m_depth[i]) {
        m_depth[i] = other.m_depth[i];
        m_owner[i] = other.m_owner[i];
      }
    }
  }

  // The triangles that set some cell's depth, each once, in order: the
  // nearest large triangles, which hide most of what lies behind.
  std::vector<uint64_t> Owners() const {
    std::vector<uint64_t> owners;
    for (const uint64_t owner : m_owner) {
      if (owner != kNoOwner) owners.push_back(owner);
    }
    std::sort(owners.begin(), owners.end());
    owners.erase(std::unique(owners.begin(), owners.end()), owners.end());
    return owners;
  }

 private:
  static constexpr float kNothing = 2.0f;  // beyond the far plane's depth of 1
  static constexpr uint64_t kNoOwner = UINT64_MAX;

  Cells m_cells;
  std::vector<float> m_depth;
  // The triangle that set each cell's depth: its batch in the high half,
  // its number in the batch in the low half.
  std::vector<uint64_t> m_owner;
};

// The depth buffer left by drawing some of the opaque triangles first (see
// oxOffscreenRenderer::Depths), with the farthest depth of each cell.
// Drawing the rest only brings pixels nearer, so a triangle that lies
// beyond this buffer by kDepthMargin at every pixel centre it may colour
// loses the depth test there, whatever the order: dropping it leaves the
// picture as it is. Unlike the grid, it knows depth per pixel, wherever
// the triangles drawn first meet.
class DrawnDepths {
 public:
  // How far beyond a run's computed ends a pixel centre is still taken in:
  // far above the rounding of a division over window coordinates.
  static constexpr double kRunRounding = 1e-6;

  DrawnDepths(std::vector<float> depths, int width, int height)
      : m_cells(width, height), m_depths(std::move(depths)), m_farthest(m_cells.Count(), 0.0f) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        float& farthest = m_farthest[m_cells.Index(x / kCell, y / kCell)];
        farthest = std::max(farthest, At(x, y));
      }
    }
  }

  // The regions of `reach` where the triangle does not lie beyond the
  // buffer at every pixel centre it may colour: judged per cell by the
  // cell's farthest depth, and pixel by pixel in the cells where that does
  // not settle it. All of `reach` for a triangle of less than a square
  // pixel, and for one reaching behind the eye.
  uint64_t Shown(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c,
                 uint64_t reach) const {
    const std::optional<Footprint> footprint = FootprintOf(a, b, c);
    if (!footprint) return reach;
    return ShownRegions(*footprint, m_cells, reach,
                        [this, &footprint](int column, int row, double nearest) {
                          return nearest > m_farthest[m_cells.Index(column, row)] + kDepthMargin ||
                                 HiddenAtEveryCentre(column, row, *footprint);
                        });
  }

 private:
  // Pixel by pixel over one cell: a centre the triangle may colour is one
  // whose square of kSlack around it reaches inside every edge, and the
  // triangle's depth there is its nearest over that square. Along a row
  // those centres form one run, found from the edges.
  bool HiddenAtEveryCentre(int column, int row, const Footprint& f) const {
    const DepthPlane& plane = f.plane;
    const double reach = kSlack * (std::abs(plane.dx) + std::abs(plane.dy));
    const int firstX = column * kCell;
    const int lastX = std::min((column + 1) * kCell, m_cells.width) - 1;
    const int lastY = std::min((row + 1) * kCell, m_cells.height) - 1;
    for (int y = row * kCell; y <= lastY; ++y) {
      const double yc = y + 0.5;
      if (yc < f.bottom || yc > f.top) continue;
      double low = firstX + 0.5;
      double high = lastX + 0.5;
      // Each edge reaching kSlack further either way.
      for (const Edge& e : f.edges)
        NarrowToEdge(e, -(e.ny * yc + e.d + kSlack * (std::abs(e.nx) + std::abs(e.ny))), low, high);
      // A centre on the run's ends by rounding is taken in.
      const int from = std::max(firstX, static_cast<int>(std::ceil(low - 0.5 - kRunRounding)));
      const int to = std::min(lastX, static_cast<int>(std::floor(high - 0.5 + kRunRounding)));
      const double rowNearest = plane.z0 + plane.dy * (yc - plane.y0) - reach - kDepthMargin;
      for (int x = from; x <= to; ++x) {
        if (!(rowNearest + plane.dx * (x + 0.5 - plane.x0) > At(x, y))) return false;
      }
    }
    return true;
  }

  float At(int x, int y) const {
    return m_depths[static_cast<size_t>(y) * static_cast<size_t>(m_cells.width) +
                    static_cast<size_t>(x)];
  }

  Cells m_cells;
  std::vector<float> m_depths;    // bottom row first
  std::vector<float> m_farthest;  // per cell
};

// Whether the triangle may stand in front of others in the grid: in front of
// the eye and clipped by neither the near nor the far plane.
bool CanOcclude(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c) {
  return a.placed && b.placed && c.placed && !((a.outside | b.outside | c.outside) & kOutsideDepth);
}

// Whether the three indices from `corner` on name placed vertices; the
// rasteriser is left to deal with a triangle whose indices lie past them.
bool Known(const uint32_t* corner, const OxKernel::oxArray<WindowVertex>& placed) {
  return corner[0] < placed.size() && corner[1] < placed.size() && corner[2] < placed.size();
}

// Sets seen[t], for the triangles t of `piece` of a batch of triangles, to
// the regions where the triangle may colour a pixel: judged against the
// drawn depths when there are some, else the grid. True when some kept
// triangle is hidden in a region its bounds reach.
bool JudgeTriangles(const oxRenderBatch& batch, const Piece& piece,
                    const OxKernel::oxArray<WindowVertex>& placed, const OcclusionGrid& grid,
                    const DrawnDepths* drawn, std::vector<uint64_t>& seen) {
  const auto& indices = batch.indices;
  bool narrowed = false;
  for (size_t t = piece.first; t < piece.end; ++t) {
    const uint32_t* corner = &indices[3 * t];
    if (!Known(corner, placed)) continue;
    const WindowVertex& a = placed[corner[0]];
    const WindowVertex& b = placed[corner[1]];
    const WindowVertex& c = placed[corner[2]];
    if (!CanColourAPixel(a, b, c)) {
      seen[t] = 0;
      continue;
    }
    // A triangle reaching behind the eye, or too far out, may colour any
    // region.
    if (!(a.placed && b.placed && c.placed)) continue;
    const uint64_t reach = RegionsReached(a, b, c, grid.Grid());
    seen[t] = drawn ? drawn->Shown(a, b, c, reach) : grid.Shown(a, b, c, reach);
    narrowed = narrowed || (seen[t] != 0 && seen[t] != reach);
  }
  return narrowed;
}

// The grid of every opaque triangle of `scene` (blended ones write no
// depth): each core covers a share of every batch in a grid of its own, and
// the grids are merged.
OcclusionGrid GridOf(const oxRenderScene& scene, const std::vector<size_t>& slotOfBatch,
                     const std::vector<OxKernel::oxArray<WindowVertex>>& placed, int width,
                     int height) {
  const size_t parts = std::max(1u, std::thread::hardware_concurrency());
  std::vector<OcclusionGrid> grids(parts, OcclusionGrid(width, height));
  OxKernel::oxParallelFor(parts, [&](size_t part) {
    for (size_t i = 0; i < scene.batches.size(); ++i) {
      const oxRenderBatch& batch = scene.batches[i];
      if (slotOfBatch[i] == SIZE_MAX || scene.IsBlended(batch)) continue;
      const OxKernel::oxArray<WindowVertex>& vertices = placed[slotOfBatch[i]];
      const size_t triangles = batch.indices.size() / 3;
      for (size_t t = triangles * part / parts; t < triangles * (part + 1) / parts; ++t) {
        const uint32_t* corner = &batch.indices[3 * t];
        if (!Known(corner, vertices)) continue;
        const WindowVertex& a = vertices[corner[0]];
        const WindowVertex& b = vertices[corner[1]];
        const WindowVertex& c = vertices[corner[2]];
        if (CanOcclude(a, b, c)) grids[part].Cover(a, b, c, uint64_t{i} << 32 | t);
      }
    }
  });
  for (size_t part = 1; part < parts; ++part)
    grids[0].Merge(grids[part]);
  return std::move(grids[0]);
}

// The triangles `owners` names (see OcclusionGrid::Owners) as a scene of
// their own, over the vertices of their batches.
oxRenderScene Occluders(const oxRenderScene& scene, const std::vector<uint64_t>& owners) {
  oxRenderScene occluders;
  size_t current = SIZE_MAX;
  for (const uint64_t owner : owners) {
    const size_t batch = owner >> 32;
    const size_t triangle = owner & 0xFFFFFFFFu;
    if (batch != current) {
      occluders.batches.push_back({scene.batches[batch].vertices, {}, false, 0, {}});
      current = batch;
    }
    const uint32_t* corner = &scene.batches[batch].indices[3 * triangle];
    occluders.batches.back().indices.insert(occluders.batches.back().indices.end(), corner,
                                            corner + 3);
  }
  return occluders;
}

}  // namespace

std::vector<std::vector<uint64_t>> SeenTriangles(const oxRenderScene& scene,
                                                 const oxRenderView& view, int width, int height,
                                                 const oxDepthDrawing& drawDepths) {
  const oxGLMatrix clip = Product(view.projection, view.view);
  // Batches of one mesh share its vertices: each is placed once.
  std::unordered_map<const oxRenderVertices*, size_t> slots;
  std::vector<const oxRenderVertices*> shared;
  std::vector<size_t> slotOfBatch(scene.batches.size(), SIZE_MAX);
  for (size_t i = 0; i < scene.batches.size(); ++i) {
    const oxRenderBatch& batch = scene.batches[i];
    if (batch.lines || batch.indices.empty()) continue;
    const auto [it, added] = slots.try_emplace(batch.vertices.get(), shared.size());
    if (added) shared.push_back(batch.vertices.get());
    slotOfBatch[i] = it->second;
  }
  const std::vector<OxKernel::oxArray<WindowVertex>> placed = PlaceAll(shared, clip, width, height);
  const OcclusionGrid grid = GridOf(scene, slotOfBatch, placed, width, height);
  std::optional<DrawnDepths> drawn;
  // Without a triangle that sets a cell's depth, the drawn depths would be
  // the far plane's everywhere and hide nothing: they are not drawn.
  const std::vector<uint64_t> owners = grid.Owners();
  if (drawDepths && !owners.empty()) {
    std::vector<float> depths = drawDepths(Occluders(scene, owners));
    if (depths.size() == static_cast<size_t>(width) * static_cast<size_t>(height))
      drawn.emplace(std::move(depths), width, height);
  }
  std::vector<std::vector<uint64_t>> seen(scene.batches.size());
  std::vector<size_t> judged(scene.batches.size(), 0);
  for (size_t i = 0; i < scene.batches.size(); ++i) {
    const oxRenderBatch& batch = scene.batches[i];
    seen[i].assign(batch.indices.size() / (batch.lines ? 2 : 3), kEveryRegion);
    if (slotOfBatch[i] != SIZE_MAX) judged[i] = seen[i].size();
  }
  const std::vector<Piece> pieces = Pieces(judged);
  std::vector<uint8_t> narrowed(pieces.size(), 0);
  OxKernel::oxParallelFor(pieces.size(), [&](size_t p) {
    const size_t i = pieces[p].list;
    narrowed[p] = JudgeTriangles(scene.batches[i], pieces[p], placed[slotOfBatch[i]], grid,
                                 drawn ? &*drawn : nullptr, seen[i]);
  });
  // A batch none of whose kept triangles is hidden in a region its bounds
  // reach is given kEveryRegion for each: drawing it region by region would
  // cost draws and fill no fewer pixels.
  std::vector<bool> regional(scene.batches.size(), false);
  for (size_t p = 0; p < pieces.size(); ++p)
    regional[pieces[p].list] = regional[pieces[p].list] || narrowed[p] != 0;
  for (size_t i = 0; i < seen.size(); ++i) {
    if (regional[i]) continue;
    for (uint64_t& regions : seen[i])
      regions = regions != 0 ? kEveryRegion : 0;
  }
  return seen;
}

std::vector<uint64_t> KeptRegions(const std::vector<uint64_t>& masks) {
  std::vector<uint64_t> regions;
  if (std::all_of(masks.begin(), masks.end(),
                  [](uint64_t mask) { return mask == 0 || mask == kEveryRegion; }))
    return regions;
  std::copy_if(masks.begin(), masks.end(), std::back_inserter(regions),
               [](uint64_t mask) { return mask != 0; });
  return regions;
}

void KeepTriangles(oxRenderBatch& batch, const std::vector<uint64_t>& masks) {
  if (batch.lines) return;
  auto& indices = batch.indices;
  std::vector<uint64_t> kept;
  for (size_t t = 0; t < masks.size() && 3 * t + 3 <= indices.size(); ++t) {
    if (masks[t] == 0) continue;
    std::copy_n(&indices[3 * t], 3, &indices[3 * kept.size()]);
    kept.push_back(masks[t]);
  }
  indices.resize(3 * kept.size());
  batch.regions = KeptRegions(kept);
}

void DropUnseenTriangles(oxRenderScene& scene, const oxRenderView& view, int width, int height,
                         const oxDepthDrawing& drawDepths) {
  const std::vector<std::vector<uint64_t>> seen =
      SeenTriangles(scene, view, width, height, drawDepths);
  for (size_t i = 0; i < scene.batches.size(); ++i)
    KeepTriangles(scene.batches[i], seen[i]);
}

}  // namespace OxDAERender
