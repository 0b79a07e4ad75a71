// The renderer on documents whose pictures are known: colours, faces an
// animation turns, pictures on a quad, a skin's joints, an empty scene, and
// the parts that make pictures (matrices, text, sheets, PNG files).
#include <oxDAERender/oxRender.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "oxTestSupport.h"
#include "render_documents.h"

namespace {

using namespace OxDAERender;

constexpr int kSide = 64;

// A picture of the document made of `body`, at `time`.
oxPicture Render(const std::string& body, float time = 0.0f, int side = kSide) {
  const oxtest::TempFile file(oxtest::Collada(body));
  OxDAEReader::oxDAEFile document;
  EXPECT_EQ(document.Load(file.URI()), 0);
  oxRenderOptions options;
  options.scene.time = time;
  options.width = options.height = side;
  oxPicture picture;
  EXPECT_EQ(RenderDocument(document, options, picture), 0);
  return picture;
}

bool IsBackground(const std::array<uint8_t, 4>& pixel) {
  return pixel == kBackground;
}

// True when the pixel's colour is mostly `channel` (0 red, 1 green, 2 blue).
bool IsMostly(const std::array<uint8_t, 4>& pixel, int channel) {
  for (int c = 0; c < 3; ++c) {
    if (c == channel ? pixel[c] < 200 : pixel[c] > 40) return false;
  }
  return true;
}

std::string Describe(const std::array<uint8_t, 4>& pixel) {
  return std::to_string(pixel[0]) + " " + std::to_string(pixel[1]) + " " +
         std::to_string(pixel[2]) + " " + std::to_string(pixel[3]);
}

TEST(RenderCube, CentreIsShadedRedAndCornersAreBackground) {
  const oxPicture picture = Render(rendertest::TurningCube());
  ASSERT_EQ(picture.width, kSide);
  ASSERT_EQ(picture.height, kSide);
  const auto centre = picture.Pixel(kSide / 2, kSide / 2);
  EXPECT_TRUE(IsMostly(centre, 0)) << Describe(centre);
  for (const auto& [x, y] :
       {std::pair{0, 0}, {kSide - 1, 0}, {0, kSide - 1}, {kSide - 1, kSide - 1}})
    EXPECT_TRUE(IsBackground(picture.Pixel(x, y))) << x << "," << y;
}

// The first renderer after Prepare draws with the context Prepare's thread
// warmed up on a few pixels; its picture is that of a new context, the
// next renderer's, pixel for pixel.
TEST(RenderCube, WarmedUpContextDrawsWhatANewOneDraws) {
  oxOffscreenRenderer::Prepare();
  const oxPicture warmed = Render(rendertest::TurningCube());
  const oxPicture fresh = Render(rendertest::TurningCube());
  EXPECT_TRUE(IsMostly(warmed.Pixel(kSide / 2, kSide / 2), 0));
  EXPECT_TRUE(warmed.rgba == fresh.rgba);
}

// Prepared for pictures of the size drawn, the first renderer also takes
// the colour buffer Prepare's thread drew its triangle into at that size:
// its picture is still that of a new context, pixel for pixel.
TEST(RenderCube, ContextWarmedUpAtThePictureSizeDrawsWhatANewOneDraws) {
  oxOffscreenRenderer::Prepare(kSide, kSide);
  const oxPicture warmed = Render(rendertest::TurningCube());
  const oxPicture fresh = Render(rendertest::TurningCube());
  EXPECT_TRUE(IsMostly(warmed.Pixel(kSide / 2, kSide / 2), 0));
  EXPECT_TRUE(warmed.rgba == fresh.rgba);
}

// Prepared for another size, the first renderer takes the context but
// makes a buffer of its own size.
TEST(RenderCube, ContextWarmedUpAtAnotherSizeDrawsWhatANewOneDraws) {
  oxOffscreenRenderer::Prepare(2 * kSide, kSide / 2);
  const oxPicture warmed = Render(rendertest::TurningCube());
  const oxPicture fresh = Render(rendertest::TurningCube());
  ASSERT_EQ(warmed.width, kSide);
  EXPECT_TRUE(IsMostly(warmed.Pixel(kSide / 2, kSide / 2), 0));
  EXPECT_TRUE(warmed.rgba == fresh.rgba);
}

// A process that prepares the renderer in a Preparation scope and ends soon
// after leaving it ends cleanly: were it to end while the drawing module
// is being mapped, exit would destroy the module's static objects under the
// thread building them (without the wait, runs ending 42 to 81 ms after
// Prepare crashed or hung). Each run is a child that ends 3 ms later than
// the one before, given 30 s. The case needs a process of its own, as
// ctest gives each: a child forked from a process that has drawn inherits
// Mesa's state without the threads behind it, and cannot draw.
TEST(RenderCube, ProcessEndingRightAfterPreparingEnds) {
  for (int run = 0; run < 30; ++run) {
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
      {
        const oxOffscreenRenderer::Preparation preparation;
        usleep(static_cast<useconds_t>(run) * 3'000);
      }
      std::exit(0);
    }
    int status = 0;
    pid_t ended = 0;
    for (int tenth = 0; tenth < 300 && (ended = waitpid(child, &status, WNOHANG)) == 0; ++tenth)
      usleep(100'000);
    if (ended == 0) {
      kill(child, SIGKILL);
      waitpid(child, &status, 0);
    }
    ASSERT_EQ(ended, child) << "run " << run << " had not ended after 30 s";
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "run " << run;
  }
}

TEST(RenderCube, AnimationTurnsTheGreenFaceToTheCameraAtOne) {
  const oxPicture picture = Render(rendertest::TurningCube(), 1.0f);
  const auto centre = picture.Pixel(kSide / 2, kSide / 2);
  EXPECT_TRUE(IsMostly(centre, 1)) << Describe(centre);
}

TEST(RenderTexture, QuadShowsThePictureInItsCorners) {
  // Quarters, top row first: red, green / blue, white.
  oxPicture texture(16, 16, {255, 255, 255, 255});
  for (int y = 0; y < 16; ++y) {
    for (int x = 0; x < 16; ++x) {
      if (y < 8)
        texture.SetPixel(x, y,
                         x < 8 ? std::array<uint8_t, 4>{255, 0, 0, 255}
                               : std::array<uint8_t, 4>{0, 255, 0, 255});
      if (y >= 8 && x < 8) texture.SetPixel(x, y, {0, 0, 255, 255});
    }
  }
  const oxtest::TempFile png("", ".png");
  ASSERT_TRUE(WritePng(texture, png.Path()));
  const oxPicture picture = Render(rendertest::TexturedQuad(png.Path()));
  const int quarter = kSide / 4;
  EXPECT_TRUE(IsMostly(picture.Pixel(quarter, quarter), 0))
      << Describe(picture.Pixel(quarter, quarter));
  EXPECT_TRUE(IsMostly(picture.Pixel(3 * quarter, quarter), 1))
      << Describe(picture.Pixel(3 * quarter, quarter));
  EXPECT_TRUE(IsMostly(picture.Pixel(quarter, 3 * quarter), 2))
      << Describe(picture.Pixel(quarter, 3 * quarter));
  const auto white = picture.Pixel(3 * quarter, 3 * quarter);
  EXPECT_GT(std::min({white[0], white[1], white[2]}), 200) << Describe(white);
}

TEST(RenderTexture, UndecodablePictureFallsBackToGreyWithAWarning) {
  const oxtest::TempFile png("not a picture", ".png");
  oxtest::LogCapture log;
  const oxPicture picture = Render(rendertest::TexturedQuad(png.Path()));
  const auto centre = picture.Pixel(kSide / 2, kSide / 2);
  EXPECT_FALSE(IsBackground(centre));
  EXPECT_EQ(centre[0], centre[1]) << Describe(centre);
  EXPECT_EQ(centre[1], centre[2]) << Describe(centre);
  bool warned = false;
  for (const auto& entry : log.entries)
    warned |= entry.text.find("cannot be read or decoded") != std::string::npos;
  EXPECT_TRUE(warned);
}

// The camera of the arm and the morph shows x from -1 to 5 and y from 3
// down to -3.
std::pair<int, int> ArmPixel(float x, float y) {
  return {static_cast<int>((x + 1) / 6 * kSide), static_cast<int>((3 - y) / 6 * kSide)};
}

TEST(RenderSkin, TwoBoneArmBendsUpAtOne) {
  const auto [forearmX, forearmY] = ArmPixel(3.5f, 0.0f);
  const auto [raisedX, raisedY] = ArmPixel(2.0f, 1.5f);
  const auto [upperX, upperY] = ArmPixel(1.0f, 0.0f);
  const oxPicture straight = Render(rendertest::SkinnedArm(), 0.0f);
  EXPECT_FALSE(IsBackground(straight.Pixel(forearmX, forearmY)));
  EXPECT_TRUE(IsBackground(straight.Pixel(raisedX, raisedY)));
  EXPECT_FALSE(IsBackground(straight.Pixel(upperX, upperY)));
  const oxPicture bent = Render(rendertest::SkinnedArm(), 1.0f);
  EXPECT_TRUE(IsBackground(bent.Pixel(forearmX, forearmY)));
  EXPECT_FALSE(IsBackground(bent.Pixel(raisedX, raisedY)));
  EXPECT_FALSE(IsBackground(bent.Pixel(upperX, upperY)));
}

TEST(RenderMorph, QuadGrowsByItsAnimatedWeight) {
  const auto [aboveX, aboveY] = ArmPixel(0.0f, 2.0f);
  const auto [insideX, insideY] = ArmPixel(0.0f, 0.0f);
  const oxPicture square = Render(rendertest::MorphingQuad(), 0.0f);
  EXPECT_FALSE(IsBackground(square.Pixel(insideX, insideY)));
  EXPECT_TRUE(IsBackground(square.Pixel(aboveX, aboveY)));
  const oxPicture tall = Render(rendertest::MorphingQuad(), 1.0f);
  EXPECT_FALSE(IsBackground(tall.Pixel(aboveX, aboveY)));
}

TEST(RenderScene, NoGeometryGivesTheBackgroundAndAWarning) {
  oxtest::LogCapture log;
  const oxPicture picture = Render(
      R"(<library_visual_scenes><visual_scene id="s"><node id="n"/></visual_scene>
         </library_visual_scenes>)");
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x)
      ASSERT_TRUE(IsBackground(picture.Pixel(x, y))) << x << "," << y;
  }
  EXPECT_NE(std::find(log.entries.begin(), log.entries.end(),
                      oxtest::Warning("the scene has no geometry to draw")),
            log.entries.end());
}

// A scene far from the origin: its bounds are those of its vertices and
// nothing else, on the negative side as on the positive one.
TEST(RenderScene, BoundsHoldTheDrawnVerticesOnly) {
  const std::string triangle =
      "<library_geometries><geometry id=\"g\"><mesh>" +
      rendertest::FloatSource("g-p", "-30 20 10 -29 20 10 -30 22 13", 3, 3) +
      R"(<vertices id="g-v"><input semantic="POSITION" source="#g-p"/></vertices>
         <triangles count="1"><input semantic="VERTEX" source="#g-v" offset="0"/><p>0 1 2</p>
         </triangles></mesh></geometry></library_geometries>
         <library_visual_scenes><visual_scene id="s"><node id="n">
         <instance_geometry url="#g"/></node></visual_scene></library_visual_scenes>)";
  const oxtest::TempFile file(oxtest::Collada(triangle));
  OxDAEReader::oxDAEFile document;
  ASSERT_EQ(document.Load(file.URI()), 0);
  oxRenderScene scene;
  ASSERT_EQ(GatherScene(document, {}, scene), 0);
  EXPECT_EQ(scene.boundsMin, (std::array<float, 3>{-30.0f, 20.0f, 10.0f}));
  EXPECT_EQ(scene.boundsMax, (std::array<float, 3>{-29.0f, 22.0f, 13.0f}));
}

TEST(RenderScene, UnknownCameraIsAnError) {
  const oxtest::TempFile file(oxtest::Collada(rendertest::TurningCube()));
  OxDAEReader::oxDAEFile document;
  ASSERT_EQ(document.Load(file.URI()), 0);
  oxRenderScene scene;
  oxRenderSceneOptions options;
  options.camera = "nope";
  oxtest::LogCapture log;
  EXPECT_EQ(GatherScene(document, options, scene), kRenderNoCamera);
}

TEST(RenderScene, CameraIsFoundByItsNode) {
  const oxtest::TempFile file(oxtest::Collada(rendertest::TurningCube()));
  OxDAEReader::oxDAEFile document;
  ASSERT_EQ(document.Load(file.URI()), 0);
  oxRenderScene scene;
  oxRenderSceneOptions options;
  options.camera = "camera-node";
  ASSERT_EQ(GatherScene(document, options, scene), 0);
  ASSERT_TRUE(scene.camera.has_value());
  EXPECT_FLOAT_EQ(scene.camera->world.m[14], 6.0f);
  EXPECT_FLOAT_EQ(scene.camera->yfov, 30.0f);
}

TEST(RenderView, AutomaticViewFramesTheBoundsWithZUp) {
  oxRenderScene scene;
  scene.upAxis = oxUpAxis::Z;
  scene.boundsMin = {-1, -1, -1};
  scene.boundsMax = {1, 1, 1};
  const oxRenderView view = ViewOf(scene, 100, 100, false);
  // The world's +Z maps onto the eye's up side: its eye-space y is positive.
  EXPECT_GT(view.view[9], 0.5);
  const oxRenderView yUp = ViewOf(scene, 100, 100, true);
  EXPECT_GT(yUp.view[5], 0.5);
}

TEST(RenderView, InverseUndoesAMatrix) {
  const oxGLMatrix m = {2, 0, 0, 0, 0, 0, 3, 0, 0, -1, 0, 0, 5, 6, 7, 1};
  const oxGLMatrix inverse = Inverse(m);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      double sum = 0;
      for (int k = 0; k < 4; ++k)
        sum += m[k * 4 + r] * inverse[c * 4 + k];
      EXPECT_NEAR(sum, r == c ? 1.0 : 0.0, 1e-12) << r << "," << c;
    }
  }
}

TEST(RenderPicture, PngRoundTrips) {
  oxPicture picture(3, 2, {10, 20, 30, 255});
  picture.SetPixel(2, 1, {200, 100, 50, 255});
  const oxtest::TempFile png("", ".png");
  ASSERT_TRUE(WritePng(picture, png.Path()));
  const oxPicture read = DecodePicture(oxtest::ReadFile(png.Path()));
  EXPECT_EQ(read.width, 3);
  EXPECT_EQ(read.height, 2);
  EXPECT_EQ(read.rgba, picture.rgba);
}

TEST(RenderPicture, SheetLaysOutLabelledCells) {
  // A label outside ASCII is drawn with stand-ins, not read past the glyphs.
  std::vector<oxSheetCell> cells(5, {oxPicture(20, 10, {255, 0, 0, 255}), "\xc3\xa9.dae"});
  const oxPicture sheet = ComposeSheet(cells);
  // Three columns and two rows of 20 x 10 thumbnails with room for labels.
  EXPECT_GT(sheet.width, 3 * 20);
  EXPECT_LT(sheet.width, 4 * 20 + 30);
  EXPECT_GT(sheet.height, 2 * 10 + 2 * 10);
  int labelPixels = 0;
  for (int y = 0; y < sheet.height; ++y) {
    for (int x = 0; x < sheet.width; ++x) {
      const auto pixel = sheet.Pixel(x, y);
      labelPixels += pixel[0] > 200 && pixel[1] > 200;
    }
  }
  EXPECT_GT(labelPixels, 10);
}

}  // namespace
