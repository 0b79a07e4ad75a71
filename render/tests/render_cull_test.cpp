// Dropping triangles that cannot colour a pixel: which are dropped, which
// are kept, and that the picture stays the same.
#include <oxDAERender/oxOffscreenRenderer.h>
#include <oxDAERender/oxRenderView.h>

#include <gtest/gtest.h>

#include <memory>
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

// With the identity view, a 4 x 4 picture has its pixel centres at -0.75,
// -0.25, 0.25 and 0.75 on both axes.
constexpr int kSide = 4;

TEST(RenderCull, TriangleBetweenPixelCentresIsDroppedAndOneOverACentreKept) {
  oxRenderScene scene;
  scene.batches.push_back(Batch(Vertices({0.0f, 0.0f, 0.0f, 0.1f, 0.0f, 0.0f, 0.0f, 0.1f, 0.0f,  //
                                          0.2f, 0.2f, 0.0f, 0.3f, 0.2f, 0.0f, 0.2f, 0.3f, 0.0f}),
                                {0, 1, 2, 3, 4, 5}));
  DropUnseenTriangles(scene, oxRenderView{}, kSide, kSide);
  EXPECT_EQ(Indices(scene.batches[0]), (std::vector<uint32_t>{3, 4, 5}));
}

// A long thin triangle holds no pixel centre when it runs between two rows
// of them, though it spans the picture.
TEST(RenderCull, ThinTriangleBetweenTwoRowsOfCentresIsDropped) {
  oxRenderScene scene;
  scene.batches.push_back(
      Batch(Vertices({-0.9f, 0.0f, 0.0f, 0.9f, 0.0f, 0.0f, 0.9f, 0.2f, 0.0f}), {0, 1, 2}));
  DropUnseenTriangles(scene, oxRenderView{}, kSide, kSide);
  EXPECT_TRUE(scene.batches[0].indices.empty());
}

TEST(RenderCull, TriangleBeyondOneClipPlaneIsDropped) {
  oxRenderScene scene;
  scene.batches.push_back(Batch(Vertices({1.5f, -0.5f, 0.0f, 3.0f, 0.0f, 0.0f, 1.5f, 0.5f, 0.0f,
                                          -0.5f, -0.5f, 2.0f, 0.5f, 0.0f, 2.0f, 0.0f, 0.5f, 2.0f}),
                                {0, 1, 2, 3, 4, 5}));
  DropUnseenTriangles(scene, oxRenderView{}, kSide, kSide);
  EXPECT_TRUE(scene.batches[0].indices.empty());
}

// Beyond two different planes is not beyond one: such a triangle may cross
// the picture's corner, and is left to the rasteriser.
TEST(RenderCull, TriangleAcrossACornerIsKept) {
  oxRenderScene scene;
  scene.batches.push_back(
      Batch(Vertices({-2.0f, 0.5f, 0.0f, 0.5f, -2.0f, 0.0f, -2.0f, -2.0f, 0.0f}), {0, 1, 2}));
  DropUnseenTriangles(scene, oxRenderView{}, kSide, kSide);
  EXPECT_EQ(Indices(scene.batches[0]), (std::vector<uint32_t>{0, 1, 2}));
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

}  // namespace
