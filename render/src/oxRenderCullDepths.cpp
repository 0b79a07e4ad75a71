#include "oxRenderCullDepths.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>
#include <utility>

namespace OxDAERender::cull {

OcclusionGrid::OcclusionGrid(int width, int height)
    : m_cells(width, height),
      m_depth(m_cells.Count(), kNothing),
      m_owner(m_depth.size(), kNoOwner) {}

void OcclusionGrid::Cover(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c,
                          uint64_t owner) {
  const double top = std::max({a.y, b.y, c.y});
  const double bottom = std::min({a.y, b.y, c.y});
  // Narrower or lower than the pixel centres of a whole cell span: such a
  // triangle could hide at most a partial cell at the picture's far
  // edges, which is left unknown.
  if (top - bottom < kCell - 1 || std::max({a.x, b.x, c.x}) - std::min({a.x, b.x, c.x}) < kCell - 1)
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

uint64_t OcclusionGrid::Shown(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c,
                              uint64_t reach) const {
  const std::optional<Footprint> footprint = FootprintOf(a, b, c);
  if (!footprint) return reach;
  return ShownRegions(
      *footprint, m_cells, reach, [](int, int, int, double) { return false; },
      [this](int column, int row, double nearest) {
        return nearest > m_depth[m_cells.Index(column, row)] + kDepthMargin;
      });
}

void OcclusionGrid::Merge(const OcclusionGrid& other) {
  for (size_t i = 0; i < m_depth.size(); ++i) {
    if (other.m_depth[i] < m_depth[i]) {
      m_depth[i] = other.m_depth[i];
      m_owner[i] = other.m_owner[i];
    }
  }
}

std::vector<uint64_t> OcclusionGrid::Owners() const {
  std::vector<uint64_t> owners;
  for (const uint64_t owner : m_owner) {
    if (owner != kNoOwner) owners.push_back(owner);
  }
  std::sort(owners.begin(), owners.end());
  owners.erase(std::unique(owners.begin(), owners.end()), owners.end());
  return owners;
}

RowRuns::RowRuns(std::vector<float> values, int columns) : m_columns(columns) {
  m_levels.push_back(std::move(values));
  for (int span = 2; span <= columns; span *= 2) {
    const std::vector<float>& below = m_levels.back();
    std::vector<float> level(below.size());
    const size_t half = static_cast<size_t>(span / 2);
    for (size_t i = 0; i < level.size(); ++i) {
      const bool inRow = i % static_cast<size_t>(columns) + half < static_cast<size_t>(columns);
      level[i] = inRow ? std::max(below[i], below[i + half]) : below[i];
    }
    m_levels.push_back(std::move(level));
  }
}

float RowRuns::Over(int row, int first, int last) const {
  const int k = std::bit_width(static_cast<unsigned>(last - first + 1)) - 1;
  const std::vector<float>& level = m_levels[static_cast<size_t>(k)];
  const size_t start = static_cast<size_t>(row) * static_cast<size_t>(m_columns);
  return std::max(level[start + static_cast<size_t>(first)],
                  level[start + static_cast<size_t>(last - (1 << k) + 1)]);
}

DrawnDepths::DrawnDepths(OxKernel::oxArray<float> depths, int width, int height)
    : m_cells(width, height), m_depths(std::move(depths)) {
  std::vector<float> farthest(m_cells.Count(), 0.0f);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      float& cell = farthest[m_cells.Index(x / kCell, y / kCell)];
      cell = std::max(cell, At(x, y));
    }
  }
  m_farthest = RowRuns(std::move(farthest), m_cells.columns);
}

uint64_t DrawnDepths::Shown(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c,
                            uint64_t reach) const {
  const std::optional<Footprint> footprint = FootprintOf(a, b, c);
  if (!footprint) return reach;
  return ShownRegions(
      *footprint, m_cells, reach,
      [this](int first, int last, int row, double nearest) {
        return nearest > m_farthest.Over(row, first, last) + kDepthMargin;
      },
      [this, &footprint](int column, int row, double nearest) {
        return nearest > m_farthest.Over(row, column, column) + kDepthMargin ||
               HiddenAtEveryCentre(column, row, *footprint);
      });
}

// Pixel by pixel over one cell: a centre the triangle may colour is one
// whose square of kSlack around it reaches inside every edge, and the
// triangle's depth there is its nearest over that square. Along a row
// those centres form one run, found from the edges.
bool DrawnDepths::HiddenAtEveryCentre(int column, int row, const Footprint& f) const {
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

}  // namespace OxDAERender::cull
