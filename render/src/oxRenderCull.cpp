#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>
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
  uint8_t outside = 0;  // a bit per clip plane: -x +x -y +y -z +z
  bool placed = false;  // in front of the eye, at a window position a float holds exactly enough
};

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
  return v;
}

// In the host's large-page arrays: a small page faulted in per 4 kB would
// cost more than placing the vertices it holds.
OxKernel::oxArray<WindowVertex> PlaceAll(const oxRenderVertices& vertices, const oxGLMatrix& m,
                                         int width, int height) {
  OxKernel::oxArray<WindowVertex> placed(vertices.positions.size() / 3);
  for (size_t i = 0; i < placed.size(); ++i)
    placed[i] = Place(m, &vertices.positions[3 * i], width, height);
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

void DropFromBatch(oxRenderBatch& batch, const OxKernel::oxArray<WindowVertex>& placed) {
  auto& indices = batch.indices;
  size_t kept = 0;
  for (size_t t = 0; t + 3 <= indices.size(); t += 3) {
    const uint32_t a = indices[t];
    const uint32_t b = indices[t + 1];
    const uint32_t c = indices[t + 2];
    const bool known = a < placed.size() && b < placed.size() && c < placed.size();
    if (known && !CanColourAPixel(placed[a], placed[b], placed[c])) continue;
    indices[kept++] = a;
    indices[kept++] = b;
    indices[kept++] = c;
  }
  indices.resize(kept);
}

}  // namespace

void DropUnseenTriangles(oxRenderScene& scene, const oxRenderView& view, int width, int height) {
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
  std::vector<OxKernel::oxArray<WindowVertex>> placed(shared.size());
  OxKernel::oxParallelFor(shared.size(),
                          [&](size_t i) { placed[i] = PlaceAll(*shared[i], clip, width, height); });
  OxKernel::oxParallelFor(scene.batches.size(), [&](size_t i) {
    if (slotOfBatch[i] != SIZE_MAX) DropFromBatch(scene.batches[i], placed[slotOfBatch[i]]);
  });
}

}  // namespace OxDAERender
