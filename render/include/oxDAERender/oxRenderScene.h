// The visual scene of a document as the renderer draws it: every instanced
// geometry and controller turned into world-space triangles and lines at
// one time, with the common-profile material of each part, the camera to
// look through and the bounds of everything drawn. Gathering reads the
// module's public tree only; drawing it is oxOffscreenRenderer's work.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <oxDAEReadWrite/oxDAEReadWrite_File.h>
#include <oxKernel/oxContainers.h>
#include <oxMath/oxMatrix44.h>

namespace OxDAERender {

// A decoded picture: 8-bit RGBA rows, the bottom row first, as OpenGL takes
// texture rows. Empty (0 x 0) by default.
struct oxRenderImage {
  int width = 0;
  int height = 0;
  bool translucent = false;  // some pixel's alpha is below 255
  std::vector<uint8_t> rgba;
};

// How one part is coloured. The default is the light grey a part without a
// bound material is drawn in, lit and opaque.
struct oxRenderMaterial {
  // The diffuse colour (the emission for constant shading), RGBA 0..1;
  // white when a picture gives the colour.
  std::array<float, 4> color = {0.8f, 0.8f, 0.8f, 1.0f};
  // False for constant shading: the colour is drawn as it is, unlit.
  bool lit = true;
  // The diffuse picture (null without one, or when it could not be
  // decoded); shared by every material that names the same file.
  std::shared_ptr<const oxRenderImage> picture;
  // 1 opaque .. 0 invisible: <transparent> and <transparency> by the
  // opaque mode (A_ONE: alpha x transparency; RGB_ZERO: 1 - luminance x
  // transparency); 1 when the effect gives neither, and 1 (with a
  // warning) where that reckoning gives 0: exporters write a transparency
  // of 0 for opaque materials.
  float opacity = 1.0f;
};

// The vertices of one placed mesh in world space, shared by its batches.
// In the host's arrays, as the meshes they come from.
struct oxRenderVertices {
  OxKernel::oxArray<float> positions;  // x y z per vertex
  OxKernel::oxArray<float> normals;    // unit x y z per vertex
  OxKernel::oxArray<float> texcoords;  // s t per vertex; empty when the mesh has none
};

// Culling (see DropUnseenTriangles) judges a picture in cells of
// kRenderCell x kRenderCell pixels, and tells per triangle the regions of
// the picture where it may colour a pixel: kRegionSide x kRegionSide of
// them, each made of whole cells. Bit (row * kRegionSide + column) of a
// region mask stands for one region, rows counted from the bottom.
inline constexpr int kRenderCell = 8;
inline constexpr int kRegionSide = 8;
inline constexpr uint64_t kEveryRegion = ~uint64_t{0};

// A region mask per triangle of a batch, in the host's large-page arrays:
// a large scene's masks are megabytes written at once, which faulted in
// a small page at a time would cost more than judging the triangles.
using oxRegionMasks = OxKernel::oxArray<uint64_t>;

// The pixels [first, end) of the regions numbered `index` along an axis of
// `extent` pixels: the cells c for which c * kRegionSide / cells is
// `index`, cells being the number of cells along the axis (the last one
// maybe partial). Along an axis of fewer than kRegionSide cells, some
// regions are empty.
inline std::pair<int, int> RegionSpan(int index, int extent) {
  const int cells = (extent + kRenderCell - 1) / kRenderCell;
  const auto start = [&](int i) {
    return std::min(extent, (i * cells + kRegionSide - 1) / kRegionSide * kRenderCell);
  };
  return {start(index), start(index + 1)};
}

// Triangles or line segments of one material over shared vertices.
struct oxRenderBatch {
  std::shared_ptr<const oxRenderVertices> vertices;  // never null once gathered
  OxKernel::oxArray<uint32_t> indices;               // three per triangle, two per segment
  bool lines = false;
  size_t material = 0;  // index into oxRenderScene::materials (0: the default)
  // Per triangle, the region mask of where it may colour a pixel, which
  // culling found; empty (the default) when each may colour any. Drawing
  // fills a triangle only in its regions, so that the parts of a large
  // triangle that culling found hidden cost nothing; masks of another count
  // than the triangles are not followed.
  std::vector<uint64_t> regions;
};

// The camera a picture is seen through: the optics of a <camera> and the
// world matrix of the node that instances it (host convention). Values the
// document does not give are -1, as the module keeps them.
struct oxRenderCamera {
  bool orthographic = false;
  float xfov = -1.0f;
  float yfov = -1.0f;
  float xmag = -1.0f;
  float ymag = -1.0f;
  float znear = -1.0f;
  float zfar = -1.0f;
  OxMath::oxMatrix44 world;
};

// The up axis of the document's root asset.
enum class oxUpAxis { X, Y, Z };

struct oxRenderScene {
  // materials[0] is the default material.
  std::vector<oxRenderMaterial> materials = {oxRenderMaterial{}};
  std::vector<oxRenderBatch> batches;
  // The camera asked for, else the first one the scene instances; none
  // when the scene instances no camera.
  std::optional<oxRenderCamera> camera;
  oxUpAxis upAxis = oxUpAxis::Y;
  // The box around every drawn vertex; min above max when nothing is drawn.
  std::array<float, 3> boundsMin = {1.0f, 1.0f, 1.0f};
  std::array<float, 3> boundsMax = {-1.0f, -1.0f, -1.0f};

  bool IsEmpty() const { return boundsMin[0] > boundsMax[0]; }

  // Whether `batch` is drawn blended, after the opaque parts and without
  // writing depth: its material's opacity is below 1 or its picture is
  // translucent.
  bool IsBlended(const oxRenderBatch& batch) const {
    const oxRenderMaterial& material = materials[batch.material];
    return material.opacity < 1.0f || (material.picture && material.picture->translucent);
  }
};

struct oxRenderSceneOptions {
  // The time at which animations are evaluated, in seconds.
  float time = 0.0f;
  // The id of the visual scene; empty for the one <scene> instances, else
  // the first.
  std::string scene;
  // The id of a <camera> the scene instances, or of a node that instances
  // one; empty for the first instanced camera.
  std::string camera;
};

// Results of GatherScene besides 0.
enum oxRenderResult : int {
  kRenderNoScene = -70,    // no visual scene, or none with the asked id
  kRenderNoCamera = -71,   // the asked camera is not instanced by the scene
  kRenderNoContext = -72,  // the off-screen GL context could not be made
};

// Gathers the visual scene into `scene` at `options.time`. Nodes are
// walked depth first in document order, instanced nodes included (below
// the instancing node, up to 64 levels of <instance_node> inside each
// other). A node's local matrix is its transforms evaluated at the time
// under the first animation of the document (nested ones included) that
// drives one of them, as `oxdae tree --time` evaluates it, except that a
// <lookat> is the frame COLLADA means (looking down -Z from the eye at the
// interest point, +Y towards up) rather than the module's matrix, which
// turns +Z to the interest point and would aim cameras backwards. A node's
// world matrix composes its parent's.
//
// Geometry: each part of OxDAEConvert::MeshTriangles, placed by the world
// matrix, with the lowest TEXCOORD set; vertex colours are not drawn.
// Normals the mesh lacks are made from the triangles around each vertex.
// Skins deform their geometry (or morph) by linear blend skinning: each
// vertex is the weighted sum, weights normalised to sum 1, of its bind-shape
// position moved by each joint's inverse bind matrix and world matrix at the
// time (joint -1 keeps the bind shape); the instancing node's own matrix
// plays no part, except for a vertex without influences, which it places in
// its bind shape. A skin whose joints are not all nodes of the scene is
// drawn unskinned at its node, with a warning. Morphs add their targets'
// POSITION records by their weights at the time (NORMALIZED: base + sum w
// (target - base); RELATIVE: base + sum w target); normals stay the base's.
// Weights come from the MORPH_WEIGHT source, replaced by what a channel that
// drives a weight samples at the time.
//
// Materials: a part's symbol is looked up in the instance's bound
// materials; an unbound symbol takes the default material. Pictures are
// read as `oxdae textures` finds them (inside a .zae too) and decoded with
// stb_image; one that cannot be read or decoded is named in a warning and
// the part keeps the default grey.
//
// Returns 0, kRenderNoScene or kRenderNoCamera, each failure after a
// logged error. A scene with nothing to draw is not a failure.
//
// With `seen` (empty by default), only the triangles it keeps are cut, the
// work of cutting the others (their vertices, normals and texture
// coordinates) spared. It is called once, with the scene's outline: the
// materials, camera, up axis and bounds the scene ends with, and the same
// batches in the same order, but each mesh drawn once over the distinct
// positions its corners read (placed, with neither normals nor texture
// coordinates), a batch's indices naming a position per corner. It returns
// per outline batch, per triangle, the region mask of where it may colour
// a pixel, 0 for a triangle not to cut (SeenTriangles gives such masks; a
// mask per segment of a batch of lines, all of which are kept); with masks
// for some other number of batches, every triangle is cut. The scene keeps
// the triangles of nonzero masks of each batch, in order, over vertices of
// the same positions the outline gave them, with their masks as the
// batch's regions (as KeepTriangles sets them), and leaves out the batches
// left empty. A geometry instanced more than once, and one without normals
// (which are made from every triangle around a vertex), is cut whole and
// then loses the others.
using oxSeenTriangles = std::function<std::vector<oxRegionMasks>(const oxRenderScene& outline)>;
int GatherScene(const OxDAEReader::oxDAEFile& document, const oxRenderSceneOptions& options,
                oxRenderScene& scene, const oxSeenTriangles& seen = {});

}  // namespace OxDAERender
