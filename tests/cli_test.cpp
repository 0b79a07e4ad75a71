// The oxdae command-line tool, run as a separate process.
#include <sys/wait.h>

#include <cstdio>

#include "oxTestSupport.h"

namespace {

struct ToolRun {
  int code = -1;
  std::string out;
  std::string err;
};

// Runs oxdae with `arguments` (already quoted for the shell).
ToolRun Oxdae(const std::string& arguments) {
  oxtest::TempFile errFile("", ".err");
  const std::string command = std::string(OX_OXDAE_PATH) + " " + arguments + " 2>" + errFile.Path();
  ToolRun run;
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return run;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    run.out.append(buffer, n);
  const int status = pclose(pipe);
  run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  run.err = oxtest::ReadFile(errFile.Path());
  return run;
}

std::string Quote(const std::string& path) {
  return "'" + path + "'";
}

const std::string kSample = std::string(OX_SOURCE_DIR) + "/samples/scene.dae";

constexpr std::string_view kUsageStart =
    "usage: oxdae info [--json] FILE\n       oxdae resave IN OUT\n";

}  // namespace

TEST(Cli, NoArgumentsPrintsUsageAndExitsTwo) {
  const ToolRun run = Oxdae("");
  EXPECT_EQ(run.code, 2);
  EXPECT_TRUE(run.err.starts_with(kUsageStart)) << run.err;
  EXPECT_EQ(run.out, "");
}

TEST(Cli, UnknownCommandOrOptionIsBadUsage) {
  EXPECT_EQ(Oxdae("convert x").code, 2);
  EXPECT_EQ(Oxdae("info --yaml " + Quote(kSample)).code, 2);
  EXPECT_EQ(Oxdae("info").code, 2);
  EXPECT_EQ(Oxdae("resave only-one").code, 2);
}

TEST(Cli, MissingFileExitsOneWithOneReason) {
  const ToolRun run = Oxdae("info /nonexistent/scene.dae");
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err,
            "error: cannot open '/nonexistent/scene.dae': No such file or directory\n"
            "oxdae: /nonexistent/scene.dae: cannot open the file\n");
}

TEST(Cli, TextThatIsNotXMLExitsOne) {
  oxtest::TempFile file("this is not a COLLADA file");
  const ToolRun run = Oxdae("info " + Quote(file.Path()));
  EXPECT_EQ(run.code, 1);
  EXPECT_TRUE(run.err.ends_with("oxdae: " + file.Path() + ": not an XML document\n")) << run.err;
  EXPECT_TRUE(run.err.starts_with("error: cannot parse '" + file.Path() + "': ")) << run.err;
}

TEST(Cli, RootThatIsNotColladaExitsOne) {
  oxtest::TempFile file("<scene/>");
  const ToolRun run = Oxdae("info " + Quote(file.Path()));
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "error: the root element is <scene>, not <COLLADA>\noxdae: " + file.Path() +
                         ": the root element is not <COLLADA>\n");
}

TEST(Cli, InfoSummarisesTheSample) {
  const ToolRun run = Oxdae("info " + Quote(kSample));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "warning: unknown element <created> in <asset>\n");
  EXPECT_TRUE(
      run.out.starts_with("file: " + kSample +
                          "\n"
                          "COLLADA version: 1.4.1\n"
                          "asset:\n"
                          "  authoring tool: \"oxdae sample writer 1.0\" (code 0, version 0.0.0)\n"
                          "  unit: centimeter (0.01 m)\n"
                          "  up axis: Y_UP\n"
                          "libraries:\n"
                          "  library_cameras: 1\n"
                          "  library_lights: 1\n"
                          "  library_effects: 1\n"
                          "  library_materials: 1\n"
                          "  library_geometries: 3\n"
                          "  library_animations: 1\n"
                          "  library_visual_scenes: 1\n"
                          "scene: #scene\n"
                          "geometries:\n"
                          "  cube: 72 index values\n"
                          "    triangles: 1 element(s), count 12\n"
                          "    source cube-positions: float_array of 24, stride 3\n"
                          "    source cube-normals: float_array of 18, stride 3\n"
                          "  pyramid: 16 index values\n"
                          "    polylist: 1 element(s), count 5\n"
                          "    source pyramid-positions: float_array of 15, stride 3\n"
                          "  ground: 8 index values\n"
                          "    polygons: 1 element(s), count 1\n"
                          "    source ground-positions: float_array of 12, stride 3\n"
                          "    source ground-uv: float_array of 8, stride 2\n"
                          "total: 17 vertices, 96 index values\n"
                          "load time: "))
      << run.out;
  EXPECT_TRUE(run.out.ends_with(" ms\nlog: 1 warning(s), 0 error(s)\n")) << run.out;
}

TEST(Cli, InfoJsonIsOneObjectWithTheSameFacts) {
  const ToolRun run = Oxdae("info --json " + Quote(kSample));
  EXPECT_EQ(run.code, 0);
  EXPECT_TRUE(run.out.starts_with(
      "{\"file\":\"" + kSample +
      "\",\"version\":\"1.4.1\",\"asset\":{\"authoringTool\":"
      "\"oxdae sample writer 1.0\",\"authoringToolCode\":0,\"authoringToolVersion\":"
      "\"0.0.0\",\"unit\":{\"name\":\"centimeter\",\"meter\":0.01},\"upAxis\":\"Y_UP\"},"))
      << run.out;
  EXPECT_NE(
      run.out.find(
          "{\"id\":\"pyramid\",\"indexValues\":16,\"primitives\":[{\"kind\":\"polylist\","
          "\"elements\":1,"
          "\"count\":5}],\"sources\":[{\"id\":\"pyramid-positions\",\"arrayType\":\"float_array\","
          "\"count\":15,\"stride\":3}]}"),
      std::string::npos)
      << run.out;
  EXPECT_NE(run.out.find(",\"totalVertices\":17,\"totalIndexValues\":96,\"loadMilliseconds\":"),
            std::string::npos);
  EXPECT_TRUE(run.out.ends_with(",\"warnings\":1,\"errors\":0}\n")) << run.out;
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 1);
}

TEST(Cli, JsonEscapesTexts) {
  oxtest::TempFile file(
      oxtest::Collada("<asset><contributor><authoring_tool>say \"hi\"\\ "
                      "\t</authoring_tool></contributor></asset>"));
  const ToolRun run = Oxdae("info --json " + Quote(file.Path()));
  EXPECT_EQ(run.code, 0);
  EXPECT_NE(run.out.find("\"authoringTool\":\"say \\\"hi\\\"\\\\ \\t\""), std::string::npos)
      << run.out;
}

TEST(Cli, UnsupportedVersionIsSummarisedWithItsError) {
  oxtest::TempFile file(oxtest::Collada("<asset/>", "1.5.0"));
  const ToolRun run = Oxdae("info " + Quote(file.Path()));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "error: Unsupported version of DAE File\n");
  EXPECT_NE(run.out.find("COLLADA version: 1.5.0\nasset: none\nlibraries:\nscene: none\n"),
            std::string::npos)
      << run.out;
}

TEST(Cli, ResaveWritesADocumentThatLoadsToTheSameSummary) {
  oxtest::TempFile out("", ".dae");
  const ToolRun run = Oxdae("resave " + Quote(kSample) + " " + Quote(out.Path()));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "");
  const std::string saved = oxtest::ReadFile(out.Path());
  EXPECT_TRUE(saved.starts_with("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<COLLADA xmlns="))
      << saved;
  const ToolRun again = Oxdae("info " + Quote(out.Path()));
  EXPECT_EQ(again.code, 0);
  EXPECT_NE(again.out.find("  library_geometries: 3\n"), std::string::npos) << again.out;
  EXPECT_NE(again.out.find("  cube: 72 index values\n"), std::string::npos) << again.out;
}

TEST(Cli, ResaveToAnUnwritablePlaceExitsOne) {
  const ToolRun run = Oxdae("resave " + Quote(kSample) + " /nonexistent/dir/out.dae");
  EXPECT_EQ(run.code, 1);
  EXPECT_TRUE(run.err.ends_with("oxdae: /nonexistent/dir/out.dae: cannot be written\n")) << run.err;
  EXPECT_NE(
      run.err.find("error: cannot create '/nonexistent/dir/out.dae': No such file or directory\n"),
      std::string::npos)
      << run.err;
}
