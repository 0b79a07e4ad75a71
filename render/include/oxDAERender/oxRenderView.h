// Where a picture of a gathered scene is seen from: the projection and
// view matrices, in OpenGL's column-major order (which is also the host's
// storage order for row-vector matrices).
#pragma once

#include <array>
#include <functional>
#include <vector>

#include <oxKernel/oxContainers.h>

#include "oxDAERender/oxRenderScene.h"

namespace OxDAERender {

// A column-major 4 x 4 matrix of doubles; the identity by default.
using oxGLMatrix = std::array<double, 16>;
inline constexpr oxGLMatrix kGLIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

struct oxRenderView {
  oxGLMatrix projection = kGLIdentity;
  oxGLMatrix view = kGLIdentity;
};

// The view of `scene` for a picture of `width` x `height` pixels.
//
// With a camera: the inverse of its node's world matrix looks down the
// camera's -Z with +Y up. A perspective camera uses its yfov, else its xfov
// turned into a vertical angle by the picture's aspect ratio, else 45
// degrees; an orthographic one its ymag (half the height seen), else xmag
// by the aspect ratio, else the scene's radius. The picture's own aspect
// ratio is kept, so a camera's aspect_ratio does not stretch it. A near
// or far plane the document does not give (or gives as 0 or less, or far
// before near) is fitted around the scene's bounds.
//
// Without a camera: a three-quarter view, from 45 degrees to the right of
// the front and 30 degrees above,
// with a 40 degree perspective that frames the sphere around the bounds.
// Up is the document's up axis (COLLADA's frames: Y_UP looks at -Z with X
// to the right; Z_UP at +Y with X to the right; X_UP at -Z with -Y to the
// right), or +Y whatever the document says when `yUp` is true. A camera of
// the document defines its own up, so `yUp` changes nothing then.
oxRenderView ViewOf(const oxRenderScene& scene, int width, int height, bool yUp);

// Draws the depth of `occluders` (opaque triangles over the scene's own
// vertices) as oxOffscreenRenderer::Depths does, for the same view and
// picture size; returns width x height depths, the bottom row first, or
// nothing when it cannot draw.
using oxDepthDrawing = std::function<OxKernel::oxArray<float>(const oxRenderScene& occluders)>;

// Drops from the triangle batches of `scene` every triangle that cannot
// colour a pixel of a `width` x `height` picture seen through `view`: those
// wholly beyond one clip plane; those in front of the eye whose window
// bounds hold no pixel centre, where the rasteriser samples; and those that
// lie behind opaque triangles wherever they could colour a pixel.
//
// Hiding is first judged per cell of 8 x 8 pixels: a cell whose pixel
// centres all lie inside an opaque triangle (one not blended, between the
// near and far planes) is known to reach that triangle's farthest depth
// over it, and a triangle (of at least a square pixel) whose nearest depth
// over every cell it may touch lies beyond the cell's by more than 1e-5
// cannot pass the depth test there. Both depths are taken over the cell
// widened by 1/64 pixel, as the rasteriser places vertices that close to
// where the view puts them, which moves a steep triangle's depth at a
// pixel centre.
//
// With `drawDepths` (empty by default), the triangles that gave the cells
// their depths, when there are some, are drawn first, and hiding is judged
// against the depth buffer they leave: per cell by its farthest pixel,
// then pixel by pixel where that does not settle it, a pixel centre
// counting when the square of 1/64 pixel around it reaches inside the
// triangle. The rest of the
// scene can only bring pixels nearer, so this drops what the cells alone
// cannot see is hidden where several triangles meet. When it returns no
// depths, the cells alone decide.
//
// Equal depths hide nothing, so the drawing order still decides between
// them. The picture stays the same, while a dense mesh seen small, or a
// crowd of surfaces seen from outside, sends only a fraction of its
// triangles to the software renderer. Lines are left alone and hide
// nothing. Not for a picture that draws triangle edges: the edge of a
// dropped triangle may still colour pixels.
//
// The same judgement, region by region (see kRegionSide), sets the
// regions of each kept triangle (see oxRenderBatch::regions): those its
// bounds reach where some cell it may colour a pixel of is not found
// hidden. Drawing it only there leaves the picture the same, by the same
// argument, and a large triangle seen through a gap is filled only around
// the gap. A batch where no kept triangle is hidden in a region its bounds
// reach keeps no regions: drawing it region by region would fill no fewer
// pixels.
void DropUnseenTriangles(oxRenderScene& scene, const oxRenderView& view, int width, int height,
                         const oxDepthDrawing& drawDepths = {});

// What DropUnseenTriangles keeps, without dropping anything: per batch,
// per triangle, the region mask of where it may colour a pixel, 0 when
// nowhere (kEveryRegion per segment of a batch of lines, for a triangle
// whose corners lie past the vertices or reach behind the eye, and for
// every triangle of a batch that keeps no regions).
std::vector<oxRegionMasks> SeenTriangles(const oxRenderScene& scene, const oxRenderView& view,
                                         int width, int height,
                                         const oxDepthDrawing& drawDepths = {});

// The nonzero `masks` in order: the regions of the triangles they keep;
// none when each of them is kEveryRegion.
std::vector<uint64_t> KeptRegions(const oxRegionMasks& masks);

// Keeps in `batch` only the triangles of nonzero `masks`, in their order,
// and their masks as the batch's regions (none when every kept mask is
// kEveryRegion); a triangle past the masks is dropped. A batch of lines is
// left as it is.
void KeepTriangles(oxRenderBatch& batch, const oxRegionMasks& masks);

// The inverse of `m` (a general 4 x 4 inverse); the identity when `m` is
// singular.
oxGLMatrix Inverse(const oxGLMatrix& m);

}  // namespace OxDAERender
