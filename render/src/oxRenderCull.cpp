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
#include "oxRenderCullDepths.h"

namespace OxDAERender {

namespace {

using namespace cull;

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
                    const DrawnDepths* drawn, oxRegionMasks& seen) {
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

std::vector<oxRegionMasks> SeenTriangles(const oxRenderScene& scene, const oxRenderView& view,
                                         int width, int height, const oxDepthDrawing& drawDepths) {
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
    OxKernel::oxArray<float> depths = drawDepths(Occluders(scene, owners));
    if (depths.size() == static_cast<size_t>(width) * static_cast<size_t>(height))
      drawn.emplace(std::move(depths), width, height);
  }
  std::vector<oxRegionMasks> seen(scene.batches.size());
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

std::vector<uint64_t> KeptRegions(const oxRegionMasks& masks) {
  std::vector<uint64_t> regions;
  if (std::all_of(masks.begin(), masks.end(),
                  [](uint64_t mask) { return mask == 0 || mask == kEveryRegion; }))
    return regions;
  std::copy_if(masks.begin(), masks.end(), std::back_inserter(regions),
               [](uint64_t mask) { return mask != 0; });
  return regions;
}

void KeepTriangles(oxRenderBatch& batch, const oxRegionMasks& masks) {
  if (batch.lines) return;
  auto& indices = batch.indices;
  oxRegionMasks kept;
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
  const std::vector<oxRegionMasks> seen = SeenTriangles(scene, view, width, height, drawDepths);
  for (size_t i = 0; i < scene.batches.size(); ++i)
    KeepTriangles(scene.batches[i], seen[i]);
}

}  // namespace OxDAERender
