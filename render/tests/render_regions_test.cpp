// The regions culling gives each kept triangle, and drawing region by
// region: a large triangle is filled only where it may show, and the
// picture stays the same.
#include <oxDAERender/oxOffscreenRenderer.h>
#include <oxDAERender/oxRenderView.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using namespace OxDAERender;

// With the identity view, a 64 x 64 picture has 8 x 8 cells, one per
// region: region (column, row) is window [8 column, 8 column + 8) x
// [8 row, 8 row + 8).
constexpr int kPicture = 64;

// The regions of the columns `first` to `last` (0..7) in every row.
constexpr uint64_t Columns(int first, int last) {
  uint64_t row = 0;
  for (int c = first; c <= last; ++c)
    row |= uint64_t{1} << c;
  uint64_t mask = 0;
  for (int r = 0; r < kRegionSide; ++r)
    mask |= row << (r * kRegionSide);
  return mask;
}

// A triangle over the whole picture at depth `cover`, then one over its
// left half (right of window x 32 nothing, its right edge upright at 32)
// at depth `left`, in one batch; window depth is (z + 1) / 2.
oxRenderScene CoverAndLeftHalf(float cover, float left) {
  const std::vector<float> positions = {-1.0f, -1.0f, cover, 7.0f, -1.0f, cover, -1.0f, 7.0f, cover,
                                        0.0f,  -9.0f, left,  0.0f, 9.0f,  left,  -9.0f, 0.0f, left};
  auto vertices = std::make_shared<oxRenderVertices>();
  vertices->positions.assign(positions.begin(), positions.end());
  oxRenderScene scene;
  oxRenderBatch batch;
  batch.vertices = vertices;
  batch.indices.assign({0, 1, 2, 3, 4, 5});
  scene.batches.push_back(std::move(batch));
  scene.boundsMin = {-1.0f, -1.0f, -0.5f};
  scene.boundsMax = {1.0f, 1.0f, 0.5f};
  return scene;
}

TEST(RenderRegions, RegionSpansAreWholeCells) {
  EXPECT_EQ(RegionSpan(0, 512), (std::pair<int, int>(0, 64)));
  EXPECT_EQ(RegionSpan(7, 512), (std::pair<int, int>(448, 512)));
  // 100 pixels: 13 cells, the last of 4 pixels; cell c lies in region
  // c * 8 / 13.
  EXPECT_EQ(RegionSpan(0, 100), (std::pair<int, int>(0, 16)));
  EXPECT_EQ(RegionSpan(1, 100), (std::pair<int, int>(16, 32)));
  EXPECT_EQ(RegionSpan(6, 100), (std::pair<int, int>(80, 96)));
  EXPECT_EQ(RegionSpan(7, 100), (std::pair<int, int>(96, 100)));
  // 20 pixels: 3 cells, in regions 0, 2 and 5; the others are empty.
  EXPECT_EQ(RegionSpan(0, 20), (std::pair<int, int>(0, 8)));
  EXPECT_EQ(RegionSpan(1, 20), (std::pair<int, int>(8, 8)));
  EXPECT_EQ(RegionSpan(2, 20), (std::pair<int, int>(8, 16)));
  EXPECT_EQ(RegionSpan(5, 20), (std::pair<int, int>(16, 20)));
  EXPECT_EQ(RegionSpan(7, 20), (std::pair<int, int>(20, 20)));
}

// The far cover is hidden behind the near left half's cells and shows in
// the right half; the left half shows wherever its bounds reach.
TEST(RenderRegions, HiddenRegionsAreLeftOutOfATrianglesMask) {
  const oxRenderScene scene = CoverAndLeftHalf(0.5f, -0.5f);
  const std::vector<oxRegionMasks> seen = SeenTriangles(scene, oxRenderView{}, kPicture, kPicture);
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0], (oxRegionMasks{Columns(4, 7), Columns(0, 3)}));
}

// The near cover hides the far left half, and is itself hidden nowhere its
// bounds reach: the batch keeps it, and no regions.
TEST(RenderRegions, BatchWithNothingPartlyHiddenKeepsNoRegions) {
  oxRenderScene scene = CoverAndLeftHalf(-0.5f, 0.5f);
  DropUnseenTriangles(scene, oxRenderView{}, kPicture, kPicture);
  EXPECT_EQ(std::vector<uint32_t>(scene.batches[0].indices.begin(), scene.batches[0].indices.end()),
            (std::vector<uint32_t>{0, 1, 2}));
  EXPECT_TRUE(scene.batches[0].regions.empty());
}

TEST(RenderRegions, KeptRegionsAreTheNonzeroMasksUnlessAllAreEveryRegion) {
  EXPECT_EQ(KeptRegions({0, kEveryRegion, 5, 0}), (std::vector<uint64_t>{kEveryRegion, 5}));
  EXPECT_TRUE(KeptRegions({kEveryRegion, 0, kEveryRegion}).empty());
  EXPECT_TRUE(KeptRegions({}).empty());
}

// Masks for more triangles than the batch holds: the regions kept are the
// kept triangles' own.
TEST(RenderRegions, MasksPastTheTrianglesAddNoRegions) {
  oxRenderScene scene = CoverAndLeftHalf(0.5f, -0.5f);
  oxRenderBatch& batch = scene.batches[0];
  KeepTriangles(batch, {0, 6, 7, 9});
  EXPECT_EQ(std::vector<uint32_t>(batch.indices.begin(), batch.indices.end()),
            (std::vector<uint32_t>{3, 4, 5}));
  EXPECT_EQ(batch.regions, (std::vector<uint64_t>{6}));
}

// Drawn region by region, the cover fills only the right half, and the
// picture is the one drawn without culling, pixel for pixel.
TEST(RenderRegions, DrawingByRegionsLeavesThePictureTheSame) {
  oxRenderScene scene = CoverAndLeftHalf(0.5f, -0.5f);
  oxOffscreenRenderer renderer(kPicture, kPicture);
  ASSERT_TRUE(renderer.IsValid());
  const oxPicture whole = renderer.Draw(scene, oxRenderView{});
  DropUnseenTriangles(scene, oxRenderView{}, kPicture, kPicture);
  ASSERT_EQ(scene.batches[0].regions, (std::vector<uint64_t>{Columns(4, 7), Columns(0, 3)}));
  EXPECT_TRUE(renderer.Draw(scene, oxRenderView{}).rgba == whole.rgba);
}

// A triangle whose mask leaves a region out is not drawn there, even where
// nothing hides it: masks are followed as given.
TEST(RenderRegions, ATriangleIsDrawnOnlyInItsRegions) {
  oxRenderScene scene = CoverAndLeftHalf(0.5f, -0.5f);
  scene.batches[0].indices.resize(3);
  scene.batches[0].regions = {Columns(4, 7)};
  oxOffscreenRenderer renderer(kPicture, kPicture);
  ASSERT_TRUE(renderer.IsValid());
  const oxPicture picture = renderer.Draw(scene, oxRenderView{});
  // Rows run top down in a picture.
  EXPECT_EQ(picture.Pixel(10, 30), kBackground);
  EXPECT_EQ(picture.Pixel(31, 30), kBackground);
  EXPECT_NE(picture.Pixel(32, 30), kBackground);
  EXPECT_NE(picture.Pixel(60, 3), kBackground);
}

}  // namespace
