// The depths culling judges triangles against: a coarse grid of the
// nearest large triangles' depth per cell, and the depth buffer the
// renderer draws for those triangles (see oxRenderCull.cpp, their only
// user).
#pragma once

#include <cstdint>
#include <vector>

#include <oxKernel/oxContainers.h>

#include "oxRenderCullWindow.h"

namespace OxDAERender::cull {

// A coarse grid over the picture holding, per cell, a depth that every
// pixel centre of the cell reaches or passes once the opaque triangles are
// drawn (kNothing while none is known). A triangle that lies farther than
// that everywhere it could colour a pixel loses the depth test there, so
// dropping it leaves the picture as it is. The nearest triangle behind a
// cell's value is never dropped itself: its depth there cannot lie beyond
// its own farthest.
class OcclusionGrid {
 public:
  OcclusionGrid(int width, int height);

  // Lowers each cell whose pixel centres all lie inside the triangle (by
  // kSlack) to the triangle's farthest depth over them and kSlack around.
  // The triangle must lie in front of the eye and between the near and far
  // planes, where nothing of it is clipped away.
  void Cover(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c, uint64_t owner);

  // The regions of `reach` where some pixel centre the triangle might
  // colour lies in a cell not known nearer, by kDepthMargin, than the
  // triangle's nearest depth over that cell. All of `reach` for a triangle
  // of less than a square pixel, and for one reaching behind the eye.
  uint64_t Shown(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c,
                 uint64_t reach) const;

  const Cells& Grid() const { return m_cells; }

  // Keeps, cell by cell, the nearer of this grid's depth and `other`'s.
  void Merge(const OcclusionGrid& other);

  // The triangles that set some cell's depth, each once, in order: the
  // nearest large triangles, which hide most of what lies behind.
  std::vector<uint64_t> Owners() const;

 private:
  static constexpr float kNothing = 2.0f;  // beyond the far plane's depth of 1
  static constexpr uint64_t kNoOwner = UINT64_MAX;

  Cells m_cells;
  std::vector<float> m_depth;
  // The triangle that set each cell's depth: its batch in the high half,
  // its number in the batch in the low half.
  std::vector<uint64_t> m_owner;
};

// The greatest of a row's values over any run of it, for a grid of values
// stored row by row: levels holding, per value, the greatest of the 2^k
// from it on within its row, so that a run is two overlapping spans of a
// level. Empty by default.
class RowRuns {
 public:
  RowRuns() = default;
  RowRuns(std::vector<float> values, int columns);

  // The greatest value of row `row` from column `first` to `last`.
  float Over(int row, int first, int last) const;

 private:
  int m_columns = 0;
  std::vector<std::vector<float>> m_levels;  // level k: spans of 2^k
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

  // `depths` holds width x height values, the bottom row first.
  DrawnDepths(OxKernel::oxArray<float> depths, int width, int height);

  // The regions of `reach` where the triangle does not lie beyond the
  // buffer at every pixel centre it may colour: judged a row of cells at
  // once by their farthest depth, then per cell by the cell's, and pixel
  // by pixel in the cells where that does not settle it. All of `reach`
  // for a triangle of less than a square pixel, and for one reaching
  // behind the eye.
  uint64_t Shown(const WindowVertex& a, const WindowVertex& b, const WindowVertex& c,
                 uint64_t reach) const;

 private:
  bool HiddenAtEveryCentre(int column, int row, const Footprint& f) const;

  float At(int x, int y) const {
    return m_depths[static_cast<size_t>(y) * static_cast<size_t>(m_cells.width) +
                    static_cast<size_t>(x)];
  }

  Cells m_cells;
  OxKernel::oxArray<float> m_depths;  // bottom row first
  RowRuns m_farthest;                 // per cell, and over runs of a row's cells
};

}  // namespace OxDAERender::cull
