// oxdae render: the picture it writes, its sheet of a folder, and its exit
// statuses.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <oxDAERender/oxRenderPicture.h>

#include "../render/tests/render_documents.h"
#include "cli_test_support.h"

using namespace clitest;

namespace {

OxDAERender::oxPicture ReadPicture(const std::string& path) {
  return OxDAERender::DecodePicture(oxtest::ReadFile(path));
}

}  // namespace

TEST(CliRender, CubeAtTimeOneShowsItsGreenFace) {
  const oxtest::TempFile document(oxtest::Collada(rendertest::TurningCube()));
  const oxtest::TempFile out("", ".png");
  const ToolRun run = Oxdae("render " + Quote(document.Path()) + " --out " + Quote(out.Path()) +
                            " --time 1 --size 48x32");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.out, "");
  const OxDAERender::oxPicture picture = ReadPicture(out.Path());
  ASSERT_EQ(picture.width, 48);
  ASSERT_EQ(picture.height, 32);
  const auto centre = picture.Pixel(24, 16);
  EXPECT_GT(centre[1], 200);
  EXPECT_LT(centre[0], 40);
}

TEST(CliRender, SampleWithWireframeAndYUpIsWritten) {
  const oxtest::TempFile out("", ".png");
  const ToolRun run = Oxdae("render " + Quote(kSample) + " --out " + Quote(out.Path()) +
                            " --size 32x32 --wireframe --y-up --camera main-camera");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(ReadPicture(out.Path()).width, 32);
}

TEST(CliRender, EmptySceneWarnsAndSucceeds) {
  const oxtest::TempFile out("", ".png");
  const ToolRun run = OnDocument("render",
                                 R"(<library_visual_scenes><visual_scene id="s"/>
                                    </library_visual_scenes>)",
                                 "--out " + Quote(out.Path()) + " --size 8x8");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "warning: the scene has no geometry to draw\n");
  const OxDAERender::oxPicture picture = ReadPicture(out.Path());
  ASSERT_EQ(picture.width, 8);
  EXPECT_EQ(picture.Pixel(4, 4), OxDAERender::kBackground);
}

TEST(CliRender, ArchiveFindsItsPicturesInside) {
  const oxtest::TempFile archive(
      oxtest::MakeArchive({{"scene.dae", oxtest::ReadFile(kSample)},
                           {"textures/ground checker.png",
                            oxtest::ReadFile(std::string(OX_SOURCE_DIR) +
                                             "/samples/textures/ground checker.png")}}),
      ".zae");
  const oxtest::TempFile out("", ".png");
  const ToolRun run =
      Oxdae("render " + Quote(archive.Path()) + " --out " + Quote(out.Path()) + " --size 16x16");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.err.find("cannot be read or decoded"), std::string::npos) << run.err;
}

TEST(CliRender, UnknownCameraExitsOne) {
  const oxtest::TempFile out("", ".png");
  const ToolRun run =
      Oxdae("render " + Quote(kSample) + " --out " + Quote(out.Path()) + " --camera nope");
  EXPECT_EQ(run.code, 1);
  EXPECT_NE(run.err.find("no camera with id 'nope'"), std::string::npos) << run.err;
}

TEST(CliRender, BadUsageExitsTwo) {
  EXPECT_EQ(Oxdae("render " + Quote(kSample) + " --out x.jpg").code, 2);
  EXPECT_EQ(Oxdae("render " + Quote(kSample) + " --out x.png --size 10").code, 2);
  EXPECT_EQ(Oxdae("render " + Quote(kSample) + " --out x.png --size 0x10").code, 2);
  EXPECT_EQ(Oxdae("render --out x.png").code, 2);
  EXPECT_EQ(Oxdae("render " + Quote(kSample) + " --sheet . --out x.png").code, 2);
  EXPECT_EQ(Oxdae("render --sheet . --wireframe --out x.png").code, 2);
}

TEST(CliRender, UnwritableOutputExitsOne) {
  const ToolRun run = Oxdae("render " + Quote(kSample) + " --out /nonexistent/x.png");
  EXPECT_EQ(run.code, 1);
  EXPECT_NE(run.err.find("oxdae: cannot write '/nonexistent/x.png'"), std::string::npos) << run.err;
}

TEST(CliRender, SheetShowsEveryDocumentOfAFolder) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("oxdae_sheet_" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  std::filesystem::copy_file(kSample, folder / "a.dae",
                             std::filesystem::copy_options::overwrite_existing);
  {
    std::ofstream cube(folder / "b.DAE");
    cube << oxtest::Collada(rendertest::TurningCube());
    std::ofstream broken(folder / "c.dae");
    broken << "not a document";
  }
  const oxtest::TempFile out("", ".png");
  const ToolRun run =
      Oxdae("render --sheet " + Quote(folder.string()) + " --out " + Quote(out.Path()));
  EXPECT_EQ(run.code, 0) << run.err;
  // Three 128-pixel thumbnails in two columns and two rows, labels below.
  const OxDAERender::oxPicture sheet = ReadPicture(out.Path());
  EXPECT_GT(sheet.width, 2 * 128);
  EXPECT_LT(sheet.width, 3 * 128);
  EXPECT_GT(sheet.height, 2 * 128);
  EXPECT_LT(sheet.height, 3 * 128);
  EXPECT_NE(run.err.find("oxdae: c.dae: cannot be read\n"), std::string::npos) << run.err;
  std::filesystem::remove_all(folder);
}

TEST(CliRender, SheetOfAFolderWithoutDocumentsExitsOne) {
  const ToolRun run = Oxdae("render --sheet /nonexistent --out x.png");
  EXPECT_EQ(run.code, 1);
  EXPECT_NE(run.err.find("no .dae file to render"), std::string::npos) << run.err;
}

// The drawing module (OSMesa, and the LLVM it brings) is loaded by the first
// picture only: the other commands start without mapping it.
TEST(CliRender, OtherCommandsDoNotLoadTheDrawingModule) {
  const std::string libraries = clitest::Run("ldd " + Quote(OX_OXDAE_PATH) + " 2>&1").out;
  EXPECT_NE(libraries.find("liboxKernel"), std::string::npos) << libraries;
  EXPECT_EQ(libraries.find("OSMesa"), std::string::npos) << libraries;
  EXPECT_EQ(libraries.find("LLVM"), std::string::npos) << libraries;
}
