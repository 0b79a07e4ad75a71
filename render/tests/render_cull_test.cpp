// Dropping triangles that cannot colour a pixel: which are dropped, which
// are kept, and that the picture stays the same.
#include <oxDAERender/oxOffscreenRenderer.h>
#include <oxDAERender/oxRenderView.h>

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

namespace {

using namespace OxDAERender;

// A batch of triangles over `positions` (x y z per vertex).
oxRenderBatch Batch(std::shared_ptr<const oxRenderVertices> vertices,
                    const std::vector<uint32_t>& indices, bool lines = false) {
  oxRenderBatch batch;
  batch.vertices = std::move(vertices);
  batch.indices.assign(indices.begin(), indices.end());
  batch.lines = lines;
  return batch;
}

std::shared_ptr<oxRenderVertices> Vertices(const std::vector<float>& positions) {
  auto vertices = std::make_shared<oxRenderVertices>();
  vertices->positions.assign(positions.begin(), positions.end());
  return vertices;
}

std::vector<uint32_t> Indices(const oxRenderBatch& batch) {
  return {batch.indices.begin(), batch.indices.end()};
}

// The indices left of one batch of triangles over `positions` drawn with
// the identity view into a `side` x `side` picture.
std::vector<uint32_t> Kept(const std::vector<float>& positions,
                           const std::vector<uint32_t>& indices, int side) {
  oxRenderScene scene;
  scene.batches.push_back(Batch(Vertices(positions), indices));
  DropUnseenTriangles(scene, oxRenderView{}, side, side);
  return Indices(scene.batches[0]);
}

// With the identity view, a 4 x 4 picture has its pixel centres at -0.75,
// -0.25, 0.25 and 0.75 on both axes.
constexpr int kSide = 4;

TEST(RenderCull, TriangleBetweenPixelCentresIsDroppedAndOneOverACentreKept) {
  EXPECT_EQ(Kept({0.0f, 0.0f, 0.0f, 0.1f, 0.0f, 0.0f, 0.0f, 0.1f, 0.0f,  //
                  0.2f, 0.2f, 0.0f, 0.3f, 0.2f, 0.0f, 0.2f, 0.3f, 0.0f},
                 {0, 1, 2, 3, 4, 5}, kSide),
            (std::vector<uint32_t>{3, 4, 5}));
}

// A long thin triangle holds no pixel centre when it runs between two rows
// of them, though it spans the picture.
TEST(RenderCull, ThinTriangleBetweenTwoRowsOfCentresIsDropped) {
  EXPECT_TRUE(
      Kept({-0.9f, 0.0f, 0.0f, 0.9f, 0.0f, 0.0f, 0.9f, 0.2f, 0.0f}, {0, 1, 2}, kSide).empty());
}

TEST(RenderCull, TriangleBeyondOneClipPlaneIsDropped) {
  EXPECT_TRUE(Kept({1.5f, -0.5f, 0.0f, 3.0f, 0.0f, 0.0f, 1.5f, 0.5f, 0.0f,  //
                    -0.5f, -0.5f, 2.0f, 0.5f, 0.0f, 2.0f, 0.0f, 0.5f, 2.0f},
                   {0, 1, 2, 3, 4, 5}, kSide)
                  .empty());
}

// Beyond two different planes is not beyond one: such a triangle may cross
// the picture's corner, and is left to the rasteriser.
TEST(RenderCull, TriangleAcrossACornerIsKept) {
  EXPECT_EQ(Kept({-2.0f, 0.5f, 0.0f, 0.5f, -2.0f, 0.0f, -2.0f, -2.0f, 0.0f}, {0, 1, 2}, kSide),
            (std::vector<uint32_t>{0, 1, 2}));
}

// A perspective whose w is -z: a vertex at z = 1 lies behind the eye, where
// a window position means nothing, so its tiny triangle is kept.
TEST(RenderCull, TriangleReachingBehindTheEyeIsKept) {
  oxRenderView view;
  view.projection = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 0, 0, 0, 0};
  oxRenderScene scene;
  scene.batches.push_back(
      Batch(Vertices({0.0f, 0.0f, -1.0f, 0.01f, 0.0f, -1.0f, 0.0f, 0.01f, 1.0f}), {0, 1, 2}));
  DropUnseenTriangles(scene, view, kSide, kSide);
  EXPECT_EQ(Indices(scene.batches[0]), (std::vector<uint32_t>{0, 1, 2}));
}

TEST(RenderCull, LinesAndIndicesPastTheVerticesAreKept) {
  const auto vertices = Vertices({0.0f, 0.0f, 0.0f, 0.1f, 0.0f, 0.0f, 0.0f, 0.1f, 0.0f});
  oxRenderScene scene;
  scene.batches.push_back(Batch(vertices, {0, 1, 1, 2}, true));
  scene.batches.push_back(Batch(vertices, {0, 1, 7, 0, 1, 2}));
  DropUnseenTriangles(scene, oxRenderView{}, kSide, kSide);
  EXPECT_EQ(Indices(scene.batches[0]), (std::vector<uint32_t>{0, 1, 1, 2}));
  EXPECT_EQ(Indices(scene.batches[1]), (std::vector<uint32_t>{0, 1, 7}));
}

// The same scene judged rather than cut: every region for each segment of
// the lines and for the triangle past the vertices, none for the one that
// holds no pixel centre.
TEST(RenderCull, SeenTrianglesGivesTheRegionsDroppingWouldKeep) {
  const auto vertices = Vertices({0.0f, 0.0f, 0.0f, 0.1f, 0.0f, 0.0f, 0.0f, 0.1f, 0.0f});
  oxRenderScene scene;
  scene.batches.push_back(Batch(vertices, {0, 1, 1, 2}, true));
  scene.batches.push_back(Batch(vertices, {0, 1, 7, 0, 1, 2}));
  const std::vector<oxRegionMasks> seen = SeenTriangles(scene, oxRenderView{}, kSide, kSide);
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0], (oxRegionMasks{kEveryRegion, kEveryRegion}));
  EXPECT_EQ(seen[1], (oxRegionMasks{kEveryRegion, 0}));
  KeepTriangles(scene.batches[1], seen[1]);
  EXPECT_EQ(Indices(scene.batches[1]), (std::vector<uint32_t>{0, 1, 7}));
  EXPECT_TRUE(scene.batches[1].regions.empty());
}

// A grid of 200 x 200 cells, two triangles each, over a 32 x 32 picture:
// most triangles fall between pixel centres, and the picture without them
// is the picture with them, pixel for pixel.
TEST(RenderCull, DenseMeshDrawsTheSamePictureWithFewerTriangles) {
  constexpr int kCells = 200;
  constexpr int kPicture = 32;
  std::vector<float> positions;
  for (int j = 0; j <= kCells; ++j) {
    for (int i = 0; i <= kCells; ++i) {
      const float x = -0.8f + 1.6f * static_cast<float>(i) / kCells;
      const float y = -0.8f + 1.6f * static_cast<float>(j) / kCells;
      positions.insert(positions.end(), {x, y, 0.3f * x * y});
    }
  }
  std::vector<uint32_t> indices;
  for (uint32_t j = 0; j < kCells; ++j) {
    for (uint32_t i = 0; i < kCells; ++i) {
      const uint32_t corner = j * (kCells + 1) + i;
      indices.insert(indices.end(), {corner, corner + 1, corner + kCells + 2, corner,
                                     corner + kCells + 2, corner + kCells + 1});
    }
  }
  oxRenderScene scene;
  scene.batches.push_back(Batch(Vertices(positions), indices));
  scene.boundsMin = {-0.8f, -0.8f, -0.3f};
  scene.boundsMax = {0.8f, 0.8f, 0.3f};
  oxOffscreenRenderer renderer(kPicture, kPicture);
  ASSERT_TRUE(renderer.IsValid());
  const oxPicture whole = renderer.Draw(scene, oxRenderView{});
  DropUnseenTriangles(scene, oxRenderView{}, kPicture, kPicture);
  const size_t kept = scene.batches[0].indices.size() / 3;
  EXPECT_GT(kept, 0u);
  EXPECT_LT(kept, indices.size() / 3 / 10);
  const oxPicture culled = renderer.Draw(scene, oxRenderView{});
  EXPECT_TRUE(culled.rgba == whole.rgba);
  EXPECT_NE(whole.Pixel(kPicture / 2, kPicture / 2), kBackground);
}

// Occlusion is known per 8 x 8 pixel cell: with the identity view a 32 x 32
// picture has 4 x 4 cells, and window depth is (z + 1) / 2, nearer for a
// lower z.
constexpr int kOcclusionSide = 32;

// A triangle at depth z over the whole picture (its corners lie beyond
// the picture's sides, which clipping keeps to the picture).
std::vector<float> Cover(float z) {
  return {-1.0f, -1.0f, z, 3.0f, -1.0f, z, -1.0f, 3.0f, z};
}

// `a` followed by `b`.
std::vector<float> Join(std::vector<float> a, const std::vector<float>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST(RenderCull, TriangleBehindANearerOneEverywhereIsDropped) {
  EXPECT_EQ(Kept(Join(Cover(-0.5f), {-0.5f, -0.5f, 0.5f, 0.5f, -0.5f, 0.5f, 0.0f, 0.5f, 0.5f}),
                 {0, 1, 2, 3, 4, 5}, kOcclusionSide),
            (std::vector<uint32_t>{0, 1, 2}));
}

// The nearer triangle ends at window x 23, short of the last pixel centre
// (23.5) of the third column of cells, which it therefore does not hide:
// the far triangle whose right edge is at window x 24 shows there and is
// kept, the one wholly within the first two columns is dropped.
TEST(RenderCull, TriangleSeenBesideANearerOneIsKept) {
  EXPECT_EQ(Kept({-5.0f, -5.0f, -0.5f, 0.4375f, -5.0f, -0.5f, 0.4375f, 5.0f, -0.5f,  //
                  -0.5f, -0.5f, 0.5f,  0.5f,    -0.5f, 0.5f,  0.5f,    0.5f, 0.5f,   //
                  -0.9f, -0.5f, 0.5f,  -0.3f,   -0.5f, 0.5f,  -0.6f,   0.5f, 0.5f},
                 {0, 1, 2, 3, 4, 5, 6, 7, 8}, kOcclusionSide),
            (std::vector<uint32_t>{0, 1, 2, 3, 4, 5}));
}

// A blended triangle writes no depth, so it hides nothing; behind an opaque
// one it loses the depth test like any other and is dropped.
TEST(RenderCull, BlendedTrianglesHideNothingButAreHidden) {
  oxRenderMaterial glass;
  glass.opacity = 0.5f;
  oxRenderScene scene;
  scene.materials.push_back(glass);
  scene.batches.push_back(Batch(Vertices(Join(Cover(-0.5f), Cover(0.0f))), {0, 1, 2}));
  scene.batches.back().material = 1;
  scene.batches.push_back(Batch(Vertices(Cover(0.5f)), {0, 1, 2}));
  scene.batches.push_back(Batch(Vertices(Cover(0.8f)), {0, 1, 2}));
  scene.batches.back().material = 1;
  DropUnseenTriangles(scene, oxRenderView{}, kOcclusionSide, kOcclusionSide);
  EXPECT_EQ(Indices(scene.batches[0]), (std::vector<uint32_t>{0, 1, 2}));
  EXPECT_EQ(Indices(scene.batches[1]), (std::vector<uint32_t>{0, 1, 2}));
  EXPECT_TRUE(scene.batches[2].indices.empty());
}

// At equal depths the drawing order decides which shows: both are kept.
TEST(RenderCull, TrianglesAtEqualDepthsAreKept) {
  EXPECT_EQ(Kept(Join(Cover(0.25f), Cover(0.25f)), {0, 1, 2, 3, 4, 5}, kOcclusionSide),
            (std::vector<uint32_t>{0, 1, 2, 3, 4, 5}));
}

// A triangle reaching beyond the near plane is cut there: what is left of
// it may not cover the picture, so it hides nothing.
TEST(RenderCull, TriangleCutByTheNearPlaneHidesNothing) {
  EXPECT_EQ(Kept({-1.0f, -1.0f, -0.5f, 3.0f, -1.0f, -0.5f, -1.0f, 3.0f, -1.5f,  //
                  -0.5f, -0.5f, 0.5f, 0.5f, -0.5f, 0.5f, 0.0f, 0.5f, 0.5f},
                 {0, 1, 2, 3, 4, 5}, kOcclusionSide),
            (std::vector<uint32_t>{0, 1, 2, 3, 4, 5}));
}

// The rasteriser puts vertices up to a fraction of a pixel from where the
// view places them, which shifts a steep triangle's depth at a pixel
// centre by that much of its slope. The nearer triangle here rises by 0.01
// per pixel; the flat one lies inside one cell, 9e-5 beyond the nearer
// one's depth at the cell's last centre (window x 15.5): beyond the margin
// of 1e-5, but not beyond what the shift may add, so it is kept.
TEST(RenderCull, TriangleCloseBehindASteepOneIsKept) {
  const float steep[3] = {-0.82f, 0.46f, -0.82f};  // z = -0.5 + 0.32 x
  const float flat = -0.50982f;                    // window depth 0.24509
  EXPECT_EQ(Kept({-1.0f, -1.0f, steep[0], 3.0f, -1.0f, steep[1], -1.0f, 3.0f, steep[2],  //
                  -0.4375f, -0.4375f, flat, -0.0625f, -0.4375f, flat, -0.4375f, -0.0625f, flat},
                 {0, 1, 2, 3, 4, 5}, kOcclusionSide),
            (std::vector<uint32_t>{0, 1, 2, 3, 4, 5}));
}

// The nearest hides the middle one, which hides the farthest: only the
// nearest is drawn, whatever their order.
TEST(RenderCull, OnlyTheNearestOfThreeLayersIsKept) {
  EXPECT_EQ(Kept(Join(Join(Cover(0.0f), Cover(0.6f)), Cover(-0.6f)), {0, 1, 2, 3, 4, 5, 6, 7, 8},
                 kOcclusionSide),
            (std::vector<uint32_t>{6, 7, 8}));
}

// 4,000 random triangles in a cube, in 40 batches of their own colour.
oxRenderScene CrowdedScene() {
  constexpr int kBatches = 40;
  constexpr int kPerBatch = 100;
  std::mt19937 random(7);
  std::uniform_real_distribution<float> centre(-1.0f, 1.0f);
  std::uniform_real_distribution<float> offset(-0.8f, 0.8f);
  oxRenderScene scene;
  for (int b = 0; b < kBatches; ++b) {
    oxRenderMaterial colour;
    colour.lit = false;
    colour.color = {static_cast<float>(b % 5) / 4.0f, static_cast<float>(b / 5 % 4) / 3.0f,
                    static_cast<float>(b / 20), 1.0f};
    scene.materials.push_back(colour);
    std::vector<float> positions;
    std::vector<uint32_t> indices;
    for (int t = 0; t < kPerBatch; ++t) {
      const float c[3] = {centre(random), centre(random), centre(random)};
      for (int corner = 0; corner < 3; ++corner) {
        for (int axis = 0; axis < 3; ++axis)
          positions.push_back(c[axis] + offset(random));
        indices.push_back(static_cast<uint32_t>(indices.size()));
      }
    }
    scene.batches.push_back(Batch(Vertices(positions), indices));
    scene.batches.back().material = scene.materials.size() - 1;
  }
  scene.boundsMin = {-1.4f, -1.4f, -1.4f};
  scene.boundsMax = {1.4f, 1.4f, 1.4f};
  return scene;
}

size_t TriangleCount(const oxRenderScene& scene) {
  size_t triangles = 0;
  for (const oxRenderBatch& batch : scene.batches)
    triangles += batch.indices.size() / 3;
  return triangles;
}

// The crowd seen in perspective: over a quarter are hidden by others and
// dropped, and the picture stays the same pixel for pixel.
TEST(RenderCull, CrowdedTrianglesDrawTheSamePictureWithFewerTriangles) {
  constexpr int kPicture = 128;
  oxRenderScene scene = CrowdedScene();
  const size_t total = TriangleCount(scene);
  const oxRenderView view = ViewOf(scene, kPicture, kPicture, false);
  oxOffscreenRenderer renderer(kPicture, kPicture);
  ASSERT_TRUE(renderer.IsValid());
  const oxPicture whole = renderer.Draw(scene, view);
  DropUnseenTriangles(scene, view, kPicture, kPicture);
  EXPECT_LT(TriangleCount(scene), total * 3 / 4);
  EXPECT_TRUE(renderer.Draw(scene, view).rgba == whole.rgba);
}

// With the depth the renderer draws for the cells' nearest triangles,
// hiding is judged pixel by pixel: of the same crowd, fewer than half of
// what the cells alone keep are kept, and the picture stays the same.
TEST(RenderCull, CrowdBehindDrawnDepthsKeepsFewerAndTheSamePicture) {
  constexpr int kPicture = 128;
  oxRenderScene byCells = CrowdedScene();
  oxRenderScene byPixels = CrowdedScene();
  const oxRenderView view = ViewOf(byCells, kPicture, kPicture, false);
  oxOffscreenRenderer renderer(kPicture, kPicture);
  ASSERT_TRUE(renderer.IsValid());
  const oxPicture whole = renderer.Draw(byPixels, view);
  DropUnseenTriangles(byCells, view, kPicture, kPicture);
  DropUnseenTriangles(byPixels, view, kPicture, kPicture, [&](const oxRenderScene& occluders) {
    return renderer.Depths(occluders, view);
  });
  EXPECT_LT(TriangleCount(byPixels), TriangleCount(byCells) / 2);
  EXPECT_TRUE(renderer.Draw(byPixels, view).rgba == whole.rgba);
}

// The default far triangle's pixel centres run from window (8.5, 8.5) to
// (23.5, 23.5); the near one covers the whole picture at window depth 0.25
// and is the only triangle that sets a cell's depth.
std::vector<uint32_t> KeptBehindDrawnDepths(
    const OxKernel::oxArray<float>& depths, std::vector<uint32_t>& occluders,
    const std::vector<float>& far = {-0.5f, -0.5f, 0.5f, 0.5f, -0.5f, 0.5f, 0.0f, 0.5f, 0.5f}) {
  oxRenderScene scene;
  scene.batches.push_back(Batch(Vertices(Join(Cover(-0.5f), far)), {0, 1, 2, 3, 4, 5}));
  DropUnseenTriangles(
      scene, oxRenderView{}, kOcclusionSide, kOcclusionSide, [&](const oxRenderScene& drawn) {
        for (const oxRenderBatch& batch : drawn.batches)
          occluders.insert(occluders.end(), batch.indices.begin(), batch.indices.end());
        return depths;
      });
  return Indices(scene.batches[0]);
}

// Window depth 0.25 everywhere but at one pixel, where nothing was drawn.
OxKernel::oxArray<float> DepthsWithAHole(int x, int y) {
  OxKernel::oxArray<float> depths(kOcclusionSide * kOcclusionSide, 0.25f);
  depths[static_cast<size_t>(y * kOcclusionSide + x)] = 1.0f;
  return depths;
}

TEST(RenderCull, TriangleBehindTheDrawnDepthsEverywhereIsDropped) {
  std::vector<uint32_t> occluders;
  EXPECT_EQ(KeptBehindDrawnDepths(OxKernel::oxArray<float>(kOcclusionSide * kOcclusionSide, 0.25f),
                                  occluders),
            (std::vector<uint32_t>{0, 1, 2}));
  EXPECT_EQ(occluders, (std::vector<uint32_t>{0, 1, 2}));
}

TEST(RenderCull, TriangleSeenThroughOneUndrawnPixelIsKept) {
  std::vector<uint32_t> occluders;
  EXPECT_EQ(KeptBehindDrawnDepths(DepthsWithAHole(16, 16), occluders),
            (std::vector<uint32_t>{0, 1, 2, 3, 4, 5}));
}

// The hole at (4, 16) lies in a cell the far triangle reaches, but its
// centre (4.5, 16.5) is left of the triangle's edge.
TEST(RenderCull, UndrawnPixelBesideTheTriangleKeepsNothing) {
  std::vector<uint32_t> occluders;
  EXPECT_EQ(KeptBehindDrawnDepths(DepthsWithAHole(4, 16), occluders),
            (std::vector<uint32_t>{0, 1, 2}));
}

// The far triangle's lowest row of cells (window y 8 to 16) runs over
// cells 1 to 3, its right edge falling from (32, 8) to (8, 24); the hole's
// centre (30.5, 8.5) lies inside it, in the last of those cells, so the
// row cannot be passed over as hidden.
TEST(RenderCull, TriangleSeenThroughAPixelInTheLastCellOfItsRowIsKept) {
  const std::vector<float> far = {-0.5f, -0.5f, 0.5f, 1.0f, -0.5f, 0.5f, -0.5f, 0.5f, 0.5f};
  std::vector<uint32_t> occluders;
  EXPECT_EQ(KeptBehindDrawnDepths(DepthsWithAHole(30, 8), occluders, far),
            (std::vector<uint32_t>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(KeptBehindDrawnDepths(DepthsWithAHole(8, 30), occluders, far),
            (std::vector<uint32_t>{0, 1, 2}));
}

// Without a triangle that covers a whole cell there is nothing to draw the
// depth of: it is not asked for, and the cells alone decide.
TEST(RenderCull, NoTriangleCoveringACellAsksForNoDepths) {
  oxRenderScene scene;
  scene.batches.push_back(
      Batch(Vertices({-0.5f, -0.5f, 0.0f, 0.0f, -0.5f, 0.0f, -0.5f, 0.0f, 0.0f}), {0, 1, 2}));
  int asked = 0;
  DropUnseenTriangles(scene, oxRenderView{}, kOcclusionSide, kOcclusionSide,
                      [&](const oxRenderScene&) {
                        ++asked;
                        return OxKernel::oxArray<float>{};
                      });
  EXPECT_EQ(asked, 0);
  EXPECT_EQ(Indices(scene.batches[0]), (std::vector<uint32_t>{0, 1, 2}));
}

// A renderer that cannot draw gives no depths: the cells alone decide.
TEST(RenderCull, NoDrawnDepthsLeavesTheCellsToDecide) {
  std::vector<uint32_t> occluders;
  EXPECT_EQ(KeptBehindDrawnDepths({}, occluders), (std::vector<uint32_t>{0, 1, 2}));
}

// Depths of a quad at z = 0 over the left half of the picture: window depth
// 0.5 there, the far plane's 1 elsewhere, the bottom row first.
TEST(RenderCull, RendererDrawsTheDepthOfOpaqueTriangles) {
  constexpr int kSide = 8;
  oxRenderScene scene;
  scene.batches.push_back(
      Batch(Vertices({-1.0f, -1.0f, 0.0f, 0.0f, -1.0f, 0.0f, 0.0f, 1.0f, 0.0f, -1.0f, 1.0f, 0.0f}),
            {0, 1, 2, 0, 2, 3}));
  oxOffscreenRenderer renderer(kSide, kSide);
  ASSERT_TRUE(renderer.IsValid());
  const OxKernel::oxArray<float> depths = renderer.Depths(scene, oxRenderView{});
  ASSERT_EQ(depths.size(), static_cast<size_t>(kSide * kSide));
  EXPECT_NEAR(depths[0], 0.5f, 1e-6f);
  EXPECT_NEAR(depths[kSide * kSide - kSide + 3], 0.5f, 1e-6f);
  EXPECT_EQ(depths[4], 1.0f);
  EXPECT_EQ(depths[kSide * kSide - 1], 1.0f);
}

}  // namespace
