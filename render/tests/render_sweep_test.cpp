// Every document the project carries renders: the sample scene, the
// fuzzer's seed documents (one or more per element kind, the shapes the
// module's tests load) and, when the shared corpus folder exists, every
// COLLADA 1.4.x file it lists that loads. Each must render without a
// crash, one with geometry must cover some pixels, and cutting only the
// triangles that can be seen must leave its picture as it is. Pictures are
// thumbnails, to keep the sweep quick.
#include <oxDAERender/oxRender.h>
#include <oxDAERender/oxRenderView.h>

#include <filesystem>

#include "oxTestSupport.h"
#include "sweep_documents.h"

namespace {

using namespace OxDAERender;

constexpr int kThumbnail = 64;

// Renders `path` at thumbnail size; a document with geometry must cover
// some pixels. A document that does not load is passed over.
void ExpectRendered(const std::string& path, oxOffscreenRenderer& renderer) {
  SCOPED_TRACE(path);
  // The documents' own warnings are not what this test is about.
  oxtest::LogCapture log;
  OxDAEReader::oxDAEFile document;
  if (document.Load(OxKernel::oxURI(OxKernel::oxString(path))) != 0) return;
  oxRenderScene scene;
  const int gathered = GatherScene(document, {}, scene);
  ASSERT_TRUE(gathered == 0 || gathered == kRenderNoScene) << gathered;
  const oxPicture seen = renderer.Draw(scene, ViewOf(scene, kThumbnail, kThumbnail, false));
  ASSERT_EQ(seen.rgba.size(), size_t{kThumbnail} * kThumbnail * 4);
  oxRenderScene culled;
  oxRenderView culledView;
  GatherScene(document, {}, culled, [&](const oxRenderScene& outline) {
    culledView = ViewOf(outline, kThumbnail, kThumbnail, false);
    return SeenTriangles(
        outline, culledView, kThumbnail, kThumbnail,
        [&](const oxRenderScene& occluders) { return renderer.Depths(occluders, culledView); });
  });
  EXPECT_TRUE(renderer.Draw(culled, culledView).rgba == seen.rgba);
  if (scene.IsEmpty()) return;
  // A document's camera may look elsewhere at time 0 (or see a plane edge
  // on): coverage is checked in the automatic view, which frames whatever
  // was gathered.
  scene.camera.reset();
  const oxPicture picture = renderer.Draw(scene, ViewOf(scene, kThumbnail, kThumbnail, false));
  int covered = 0;
  for (int y = 0; y < kThumbnail; ++y) {
    for (int x = 0; x < kThumbnail; ++x)
      covered += picture.Pixel(x, y) != kBackground;
  }
  EXPECT_GT(covered, 0);
}

// One test per group of documents rather than one per document: each test
// process starts Mesa afresh, which costs more than drawing a thumbnail.
TEST(RenderSweep, SampleAndSeedDocumentsRender) {
  oxOffscreenRenderer renderer(kThumbnail, kThumbnail);
  ASSERT_TRUE(renderer.IsValid());
  for (const sweep::Document& document : sweep::Documents()) {
    if (!document.name.starts_with("corpus_")) ExpectRendered(document.path, renderer);
  }
}

TEST(RenderSweep, CorpusDocumentsRender) {
  if (!std::filesystem::exists(std::string(OX_CORPUS_DIR) + "/MANIFEST.tsv"))
    GTEST_SKIP() << "no corpus folder";
  oxOffscreenRenderer renderer(kThumbnail, kThumbnail);
  ASSERT_TRUE(renderer.IsValid());
  for (const sweep::Document& document : sweep::Documents()) {
    if (document.name.starts_with("corpus_")) ExpectRendered(document.path, renderer);
  }
}

}  // namespace
