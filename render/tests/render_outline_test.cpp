// Gathering with a filter of seen triangles: the outline the filter is
// shown, the triangles it keeps, and pictures that stay the same.
#include <oxDAERender/oxRender.h>
#include <oxDAERender/oxRenderView.h>

#include <string>
#include <vector>

#include "oxTestSupport.h"
#include "render_documents.h"

namespace {

using namespace OxDAERender;

constexpr int kSide = 64;

using Masks = std::vector<oxRegionMasks>;

// A document loaded from the body of a <COLLADA> element.
struct Loaded {
  explicit Loaded(const std::string& body) : file(oxtest::Collada(body)) {
    EXPECT_EQ(document.Load(file.URI()), 0);
  }
  oxtest::TempFile file;
  OxDAEReader::oxDAEFile document;
};

// What a gathering with a filter saw and made.
struct Outlined {
  oxRenderScene outline;  // a copy of what the filter was shown
  oxRenderScene scene;
  int calls = 0;
};

// Gathers `loaded` at `time`, the filter answering with `choose(outline)`.
template <typename Choose>
Outlined Gather(const Loaded& loaded, Choose&& choose, float time = 0.0f) {
  Outlined result;
  oxRenderSceneOptions options;
  options.time = time;
  EXPECT_EQ(GatherScene(loaded.document, options, result.scene,
                        [&](const oxRenderScene& outline) {
                          ++result.calls;
                          result.outline = outline;
                          return choose(outline);
                        }),
            0);
  return result;
}

// The mask `mask` for every triangle of every batch.
Masks All(const oxRenderScene& outline, uint64_t mask) {
  Masks masks;
  for (const oxRenderBatch& batch : outline.batches)
    masks.emplace_back(batch.indices.size() / 3, mask);
  return masks;
}

std::vector<float> Positions(const oxRenderBatch& batch, uint32_t corner) {
  const float* p = &batch.vertices->positions[3 * batch.indices[corner]];
  return {p[0], p[1], p[2]};
}

// `body` with a NORMAL input (reading the positions `source` names) after
// each VERTEX input: the arm and the quad come without normals.
std::string WithNormals(std::string body, const std::string& source) {
  const std::string vertex = R"(offset="0"/>)";
  const std::string normal = R"(<input semantic="NORMAL" source="#)" + source + R"(" offset="0"/>)";
  for (size_t at = body.find("semantic=\"VERTEX\""); at != std::string::npos;
       at = body.find("semantic=\"VERTEX\"", at + 1)) {
    const size_t end = body.find(vertex, at) + vertex.size();
    body.insert(end, normal);
  }
  return body;
}

// The picture RenderDocument makes, which cuts only what it sees, against
// the picture of everything gathered, drawn through the same view.
void ExpectSamePictureCulled(const std::string& body, float time) {
  const Loaded loaded(body);
  oxRenderOptions options;
  options.scene.time = time;
  options.width = options.height = kSide;
  oxPicture culled;
  ASSERT_EQ(RenderDocument(loaded.document, options, culled), 0);
  oxRenderScene whole;
  ASSERT_EQ(GatherScene(loaded.document, options.scene, whole), 0);
  oxOffscreenRenderer renderer(kSide, kSide);
  ASSERT_TRUE(renderer.IsValid());
  EXPECT_TRUE(renderer.Draw(whole, ViewOf(whole, kSide, kSide, false)).rgba == culled.rgba);
}

}  // namespace

// The cube's eight corners are its positions; the red part has ten
// triangles, the green two; the outline has the camera and the bounds the
// scene ends with.
TEST(RenderOutline, OutlineHasTheScenesCameraBoundsAndOnePositionPerRecord) {
  const Loaded loaded(rendertest::TurningCube());
  const Outlined seen =
      Gather(loaded, [](const oxRenderScene& outline) { return All(outline, kEveryRegion); });
  EXPECT_EQ(seen.calls, 1);
  ASSERT_EQ(seen.outline.batches.size(), 2u);
  EXPECT_EQ(seen.outline.batches[0].vertices->positions.size(), 24u);
  EXPECT_TRUE(seen.outline.batches[0].vertices->normals.empty());
  EXPECT_EQ(seen.outline.batches[0].indices.size(), 30u);
  EXPECT_EQ(seen.outline.batches[1].indices.size(), 6u);
  EXPECT_TRUE(seen.outline.camera.has_value());
  EXPECT_EQ(seen.outline.boundsMin, (std::array<float, 3>{-1, -1, -1}));
  EXPECT_EQ(seen.outline.boundsMax, (std::array<float, 3>{1, 1, 1}));
  EXPECT_EQ(seen.scene.boundsMin, seen.outline.boundsMin);
  EXPECT_EQ(seen.scene.boundsMax, seen.outline.boundsMax);
  ASSERT_EQ(seen.scene.batches.size(), 2u);
  EXPECT_EQ(seen.scene.batches[0].indices.size(), 30u);
  EXPECT_FALSE(seen.scene.batches[0].vertices->normals.empty());
}

// The second red triangle and the first green one are kept: each comes
// over vertices at the positions its outline corners had, the red one
// with its regions.
TEST(RenderOutline, OnlyTrianglesOfNonzeroMasksAreCutAtTheOutlinesPositions) {
  const Loaded loaded(rendertest::TurningCube());
  const Outlined seen = Gather(loaded, [](const oxRenderScene& outline) {
    Masks masks = All(outline, 0);
    masks[0][1] = 5;
    masks[1][0] = kEveryRegion;
    return masks;
  });
  ASSERT_EQ(seen.scene.batches.size(), 2u);
  for (size_t b = 0; b < 2; ++b) {
    ASSERT_EQ(seen.scene.batches[b].indices.size(), 3u);
    const uint32_t first = b == 0 ? 3 : 0;
    for (uint32_t corner = 0; corner < 3; ++corner) {
      EXPECT_EQ(Positions(seen.scene.batches[b], corner),
                Positions(seen.outline.batches[b], first + corner));
    }
  }
  EXPECT_EQ(seen.scene.batches[0].material, seen.outline.batches[0].material);
  EXPECT_EQ(seen.scene.batches[1].material, seen.outline.batches[1].material);
  EXPECT_EQ(seen.scene.batches[0].regions, (std::vector<uint64_t>{5}));
  EXPECT_TRUE(seen.scene.batches[1].regions.empty());
}

// A filter that answers for some other number of batches keeps everything.
TEST(RenderOutline, MasksForAnotherNumberOfBatchesCutEveryTriangle) {
  const Loaded loaded(rendertest::TurningCube());
  const Outlined seen = Gather(loaded, [](const oxRenderScene&) { return Masks{}; });
  oxRenderScene whole;
  ASSERT_EQ(GatherScene(loaded.document, {}, whole), 0);
  ASSERT_EQ(seen.scene.batches.size(), whole.batches.size());
  for (size_t b = 0; b < whole.batches.size(); ++b) {
    EXPECT_EQ(seen.scene.batches[b].indices, whole.batches[b].indices);
    EXPECT_EQ(seen.scene.batches[b].vertices->positions, whole.batches[b].vertices->positions);
    EXPECT_EQ(seen.scene.batches[b].vertices->normals, whole.batches[b].vertices->normals);
    EXPECT_TRUE(seen.scene.batches[b].regions.empty());
  }
}

// Nothing kept: no batch is left, and the bounds still frame the scene.
TEST(RenderOutline, BatchesLeftEmptyAreLeftOutAndTheBoundsStay) {
  const Loaded loaded(rendertest::TurningCube());
  const Outlined seen =
      Gather(loaded, [](const oxRenderScene& outline) { return All(outline, 0); });
  EXPECT_TRUE(seen.scene.batches.empty());
  EXPECT_FALSE(seen.scene.IsEmpty());
  EXPECT_EQ(seen.scene.boundsMax, (std::array<float, 3>{1, 1, 1}));
}

// Normals made from the triangles around a vertex need every triangle, and
// a geometry drawn twice is cut once for both: such meshes are outlined by
// their whole cut (with its normals), then lose the triangles of mask 0
// and keep the others' masks.
TEST(RenderOutline, MeshWithoutNormalsOrDrawnTwiceIsOutlinedByItsWholeCut) {
  const Loaded arm(rendertest::SkinnedArm());
  const Outlined madeNormals = Gather(arm, [](const oxRenderScene& outline) {
    Masks masks = All(outline, kEveryRegion);
    masks[0][0] = 0;
    masks[0][1] = 3;
    return masks;
  });
  ASSERT_EQ(madeNormals.outline.batches.size(), 1u);
  EXPECT_FALSE(madeNormals.outline.batches[0].vertices->normals.empty());
  EXPECT_EQ(madeNormals.scene.batches[0].indices.size(), 15u);
  ASSERT_EQ(madeNormals.scene.batches[0].regions.size(), 5u);
  EXPECT_EQ(madeNormals.scene.batches[0].regions[0], 3u);
  EXPECT_EQ(madeNormals.scene.batches[0].regions[1], kEveryRegion);
  std::string twice = rendertest::TurningCube();
  const std::string node = R"(<node id="box">)";
  twice.insert(twice.find(node),
               R"(<node id="again"><translate>3 0 0</translate><instance_geometry url="#cube"/>
                  </node>)");
  const Loaded drawnTwice(twice);
  const Outlined cutOnce =
      Gather(drawnTwice, [](const oxRenderScene& outline) { return All(outline, kEveryRegion); });
  ASSERT_EQ(cutOnce.outline.batches.size(), 4u);
  for (const oxRenderBatch& batch : cutOnce.outline.batches)
    EXPECT_FALSE(batch.vertices->normals.empty());
}

// A skin and a morph whose meshes have normals are outlined by their
// positions, placed as their vertices are: bent and grown at t = 1, the
// picture that cuts only what it sees is the whole picture.
TEST(RenderOutline, SkinAndMorphWithNormalsDrawTheSamePictureCulled) {
  const std::string arm = WithNormals(rendertest::SkinnedArm(), "arm-positions");
  const Outlined outlined = Gather(
      Loaded(arm), [](const oxRenderScene& outline) { return All(outline, kEveryRegion); }, 1.0f);
  ASSERT_EQ(outlined.outline.batches.size(), 1u);
  EXPECT_TRUE(outlined.outline.batches[0].vertices->normals.empty());
  ExpectSamePictureCulled(arm, 1.0f);
  ExpectSamePictureCulled(WithNormals(rendertest::MorphingQuad(), "square-positions"), 1.0f);
  ExpectSamePictureCulled(rendertest::TurningCube(), 0.5f);
}
