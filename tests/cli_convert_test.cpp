// oxdae convert: the files it writes, its exit statuses, and the warnings
// that name what it leaves out.
#include <filesystem>

#include "cli_test_support.h"

using namespace clitest;

TEST(CliConvert, SampleToGlbIsOneBinaryFile) {
  const oxtest::TempFile out("", ".glb");
  const ToolRun run = Oxdae("convert " + Quote(kSample) + " " + Quote(out.Path()));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "");
  const std::string glb = oxtest::ReadFile(out.Path());
  EXPECT_TRUE(glb.starts_with("glTF")) << glb.substr(0, 16);
  EXPECT_NE(glb.find("\"image/png\""), std::string::npos);
  EXPECT_FALSE(
      std::filesystem::exists(std::filesystem::path(out.Path()).replace_extension(".bin")));
}

TEST(CliConvert, SampleToGltfRefersToItsBinAndPicture) {
  const oxtest::TempFile out("", ".gltf");
  const std::string bin = std::filesystem::path(out.Path()).replace_extension(".bin").string();
  ASSERT_EQ(Oxdae("convert " + Quote(kSample) + " " + Quote(out.Path())).code, 0);
  const json gltf = json::parse(oxtest::ReadFile(out.Path()));
  EXPECT_EQ(gltf["asset"]["version"], "2.0");
  EXPECT_EQ(gltf["buffers"][0]["uri"], std::filesystem::path(bin).filename().string());
  EXPECT_EQ(gltf["buffers"][0]["byteLength"], std::filesystem::file_size(bin));
  const std::string picture = gltf["images"][0]["uri"];
  EXPECT_TRUE(picture.ends_with("samples/textures/ground%20checker.png")) << picture;
  std::remove(bin.c_str());
}

TEST(CliConvert, WarningsNameWhatIsLeftOut) {
  const oxtest::TempFile out("", ".glb");
  const ToolRun run = OnDocument("convert",
                                 R"(<library_visual_scenes><visual_scene id="vs"><node id="n">
      <instance_controller url="#skin"/></node></visual_scene></library_visual_scenes>)",
                                 Quote(out.Path()));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err,
            "warning: <instance_controller>: 1 left out (the converter does not carry them "
            "over)\n");
}

TEST(CliConvert, OutputOfAnotherKindIsUsage) {
  const ToolRun run = Oxdae("convert " + Quote(kSample) + " out.obj");
  EXPECT_EQ(run.code, 2);
  EXPECT_TRUE(run.err.starts_with("oxdae: OUT: OUT must end in .gltf or .glb\n")) << run.err;
}

TEST(CliConvert, UnknownSceneExitsOne) {
  const oxtest::TempFile out("", ".glb");
  const ToolRun run =
      Oxdae("convert " + Quote(kSample) + " " + Quote(out.Path()) + " --scene nope");
  EXPECT_EQ(run.code, 1);
  EXPECT_NE(run.err.find("oxdae: " + kSample + ": no visual scene with id 'nope'\n"),
            std::string::npos)
      << run.err;
}

TEST(CliConvert, UnwritableOutputExitsOne) {
  const ToolRun run = Oxdae("convert " + Quote(kSample) + " /nonexistent/x.glb");
  EXPECT_EQ(run.code, 1);
  EXPECT_NE(run.err.find("oxdae: " + kSample + ": cannot write '/nonexistent/x.glb'\n"),
            std::string::npos)
      << run.err;
}

TEST(CliConvert, ArchiveToGlbEmbedsItsPictures) {
  const oxtest::TempFile archive(
      oxtest::MakeArchive({{"scene.dae", oxtest::ReadFile(kSample)},
                           {"textures/ground checker.png",
                            oxtest::ReadFile(std::string(OX_SOURCE_DIR) +
                                             "/samples/textures/ground checker.png")}}),
      ".zae");
  const oxtest::TempFile out("", ".glb");
  const ToolRun run = Oxdae("convert " + Quote(archive.Path()) + " " + Quote(out.Path()));
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_NE(oxtest::ReadFile(out.Path()).find("\"image/png\""), std::string::npos);
  // From standard input the archive cannot be opened again for its pictures.
  const ToolRun piped = Oxdae("convert - " + Quote(out.Path()) + " < " + Quote(archive.Path()));
  EXPECT_EQ(piped.code, 0) << piped.err;
  EXPECT_NE(piped.err.find("warning: image 'Checker' (textures/ground%20checker.png) cannot be "
                           "read again (a picture of an archive read from memory, or an empty "
                           "file); it is left out\n"),
            std::string::npos)
      << piped.err;
}
