// The oxdae command-line tool, run as a separate process. JSON output is
// parsed and compared as values, not as bytes.
#include "cli_test_support.h"

namespace {

using namespace clitest;

// An animation "move" that drives a/t (0 0 0 at time 0, 2 4 6 at time 1)
// and holds the animation "turn", which drives a/r.ANGLE (0 at time 0, 90
// at time 2) and has a channel whose target names nothing.
constexpr std::string_view kAnimations = R"(
<library_animations>
 <animation id="move">
  <source id="t"><float_array id="t-a" count="2">0 1</float_array>
   <technique_common><accessor source="#t-a" count="2"/></technique_common></source>
  <source id="v"><float_array id="v-a" count="6">0 0 0 2 4 6</float_array>
   <technique_common><accessor source="#v-a" count="2" stride="3"/></technique_common></source>
  <source id="i"><Name_array id="i-a" count="2">LINEAR LINEAR</Name_array>
   <technique_common><accessor source="#i-a" count="2"/></technique_common></source>
  <sampler id="s"><input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#v"/>
   <input semantic="INTERPOLATION" source="#i"/></sampler>
  <channel source="#s" target="a/t"/>
  <animation id="turn">
   <source id="ta"><float_array id="ta-a" count="2">0 2</float_array>
    <technique_common><accessor source="#ta-a" count="2"/></technique_common></source>
   <source id="va"><float_array id="va-a" count="2">0 90</float_array>
    <technique_common><accessor source="#va-a" count="2"/></technique_common></source>
   <sampler id="sa"><input semantic="INPUT" source="#ta"/><input semantic="OUTPUT" source="#va"/>
    <input semantic="INTERPOLATION" source="#i"/></sampler>
   <channel source="#sa" target="a/r.ANGLE"/>
   <channel source="#sa" target="a/nothing.X"/>
  </animation>
 </animation>
</library_animations>)";

// Node "a" with a translate and a rotate that the animations drive, and a
// static node "still".
const std::string kAnimatedScene = std::string(kAnimations) + R"(
<library_visual_scenes><visual_scene id="vs">
 <node id="a"><translate sid="t">1 0 0</translate><rotate sid="r">0 0 1 0</rotate></node>
 <node id="still"><translate sid="t">0 0 5</translate></node>
</visual_scene></library_visual_scenes>)";

// The translation row of a matrix written by "tree".
json Translation(const json& matrix) {
  return json{matrix[12], matrix[13], matrix[14]};
}

}  // namespace

// --- Command line -------------------------------------------------------------

TEST(Cli, NoArgumentsPrintsUsageAndExitsTwo) {
  const ToolRun run = Oxdae("");
  EXPECT_EQ(run.code, 2);
  EXPECT_TRUE(run.err.starts_with("oxdae: A subcommand is required\n")) << run.err;
  EXPECT_NE(run.err.find("Usage: oxdae [OPTIONS] SUBCOMMAND"), std::string::npos) << run.err;
  EXPECT_EQ(run.out, "");
}

TEST(Cli, UnknownCommandIsNamedAndExitsTwo) {
  const ToolRun run = Oxdae("paint x");
  EXPECT_EQ(run.code, 2);
  EXPECT_TRUE(run.err.starts_with("oxdae: unknown command 'paint'\n")) << run.err;
}

TEST(Cli, BadOptionsOrArgumentsExitTwoWithTheCommandUsage) {
  const ToolRun run = Oxdae("info --yaml " + Quote(kSample));
  EXPECT_EQ(run.code, 2);
  EXPECT_TRUE(run.err.starts_with("oxdae: The following argument was not expected: --yaml\n"))
      << run.err;
  EXPECT_NE(run.err.find("Usage: oxdae info [OPTIONS] FILE"), std::string::npos) << run.err;
  EXPECT_EQ(Oxdae("info").code, 2);
  EXPECT_EQ(Oxdae("resave only-one").code, 2);
  EXPECT_EQ(Oxdae("sample " + Quote(kSample)).code, 2);
  EXPECT_EQ(Oxdae("tree --animation spin " + Quote(kSample)).code, 2);
  EXPECT_EQ(Oxdae("check " + Quote(kSample) + " extra").code, 2);
  EXPECT_EQ(Oxdae("materials").code, 2);
  EXPECT_EQ(Oxdae("textures --yaml " + Quote(kSample)).code, 2);
}

TEST(Cli, TimeMustBeAFiniteNumber) {
  for (const char* time : {"abc", "nan", "inf", "1e99", "1x"}) {
    const ToolRun run = Oxdae("sample " + Quote(kSample) + " --time " + time);
    EXPECT_EQ(run.code, 2) << time;
    EXPECT_TRUE(run.err.starts_with(std::string("oxdae: --time: not a finite number: ") + time))
        << run.err;
  }
  EXPECT_EQ(Oxdae("sample " + Quote(kSample) + " --time -0.25").code, 0);
}

TEST(Cli, VersionPrintsTheProjectVersion) {
  const ToolRun run = Oxdae("--version");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "oxdae 0.1.0\n");
  EXPECT_EQ(run.err, "");
}

TEST(Cli, EveryCommandHasHelp) {
  for (const std::string command :
       {"info", "resave", "tree", "sample", "check", "materials", "textures"}) {
    const ToolRun run = Oxdae(command + " --help");
    EXPECT_EQ(run.code, 0) << command;
    EXPECT_NE(run.out.find("Usage: oxdae " + command + " [OPTIONS]"), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "");
  }
  const ToolRun tool = Oxdae("--help");
  EXPECT_EQ(tool.code, 0);
  EXPECT_NE(tool.out.find("Subcommands:"), std::string::npos) << tool.out;
}

// --- Failures are said once -----------------------------------------------------

TEST(Cli, MissingFileExitsOneWithOneLine) {
  for (const std::string command :
       {"info /nonexistent/scene.dae", "tree --json /nonexistent/scene.dae",
        "check /nonexistent/scene.dae", "sample /nonexistent/scene.dae --time 0",
        "materials --json /nonexistent/scene.dae", "textures /nonexistent/scene.dae",
        "resave /nonexistent/scene.dae /nonexistent/out.dae"}) {
    const ToolRun run = Oxdae(command);
    EXPECT_EQ(run.code, 1) << command;
    EXPECT_EQ(run.err, "oxdae: cannot open '/nonexistent/scene.dae': No such file or directory\n")
        << command;
    EXPECT_EQ(run.out, "") << command;
  }
}

TEST(Cli, TextThatIsNotXMLExitsOneWithOneLine) {
  oxtest::TempFile file("this is not a COLLADA file");
  const ToolRun run = Oxdae("info " + Quote(file.Path()));
  EXPECT_EQ(run.code, 1);
  EXPECT_TRUE(run.err.starts_with("oxdae: cannot parse '" + file.Path() + "': ")) << run.err;
  EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
}

TEST(Cli, RootThatIsNotColladaExitsOneWithOneLine) {
  oxtest::TempFile file("<scene/>");
  const ToolRun run = Oxdae("check " + Quote(file.Path()));
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "oxdae: " + file.Path() + ": the root element is <scene>, not <COLLADA>\n");
}

TEST(Cli, RecordsOfALoadThatSucceedsKeepTheirOrder) {
  const ToolRun run = OnDocument("check", R"(<library_visual_scenes><visual_scene id="vs">
 <node id="n"><instance_geometry url="#g"><bind_material><technique_common>
  <instance_material/></technique_common></bind_material></instance_geometry>
  <bogus/></node></visual_scene></library_visual_scenes>
 <library_geometries><geometry id="g"/></library_geometries>)");
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.err,
            "error: attribute 'symbol' is required in <instance_material> element!\n"
            "error: attribute 'target' is required in <instance_material> element!\n"
            "warning: unknown element <bogus> in <node>\n");
}

// --- info ---------------------------------------------------------------------

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
                          "  library_images: 1\n"
                          "  library_effects: 2\n"
                          "  library_materials: 2\n"
                          "  library_geometries: 3\n"
                          "  library_animations: 1\n"
                          "  library_visual_scenes: 1\n"
                          "scene: #scene\n"
                          "nodes: 6, scene depth 2\n"
                          "lights: 1 (1 directional)\n"
                          "cameras: 1 (1 perspective)\n"
                          "animations: 1, channels: 1 of 1 bound, clips: 0\n"
                          "controllers: 0\n"
                          "materials: 2\n"
                          "effects: 2, profiles: 2 (2 COMMON)\n"
                          "images: 1\n"
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

TEST(Cli, InfoJsonIsOneLineWithTheSameFacts) {
  const ToolRun run = Oxdae("info --json " + Quote(kSample));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 1);
  const json report = run.Json();
  EXPECT_EQ(report["file"], kSample);
  EXPECT_EQ(report["version"], "1.4.1");
  EXPECT_EQ(report["asset"], json::parse(R"({"authoringTool": "oxdae sample writer 1.0",
      "authoringToolCode": 0, "authoringToolVersion": "0.0.0",
      "unit": {"name": "centimeter", "meter": 0.01}, "upAxis": "Y_UP"})"));
  EXPECT_EQ(report["libraries"].size(), 8u);
  EXPECT_EQ(report["libraries"][5], json::parse(R"({"tag": "library_geometries", "elements": 3})"));
  EXPECT_EQ(report["scene"], "#scene");
  EXPECT_EQ(report["geometries"][1], json::parse(R"({"id": "pyramid", "indexValues": 16,
      "primitives": [{"kind": "polylist", "elements": 1, "count": 5}],
      "sources": [{"id": "pyramid-positions", "arrayType": "float_array", "count": 15,
                   "stride": 3}]})"));
  EXPECT_EQ(report["totalVertices"], 17);
  EXPECT_EQ(report["totalIndexValues"], 96);
  EXPECT_TRUE(report["loadMilliseconds"].is_number());
  EXPECT_EQ(report["warnings"], 1);
  EXPECT_EQ(report["errors"], 0);
}

TEST(Cli, InfoWritesFloatsInTheirShortestForm) {
  const ToolRun run = OnDocument("info --json", "<asset><unit meter=\"0.1\"/></asset>");
  EXPECT_EQ(run.code, 0);
  EXPECT_NE(run.out.find("\"meter\":0.1}"), std::string::npos) << run.out;
  EXPECT_EQ(run.Json()["asset"]["unit"]["meter"], 0.1);
}

TEST(Cli, InfoWritesANonFiniteNumberAsNull) {
  const ToolRun run = OnDocument("info --json", "<asset><unit meter=\"INF\"/></asset>");
  EXPECT_EQ(run.code, 0);
  EXPECT_TRUE(run.Json()["asset"]["unit"]["meter"].is_null()) << run.out;
  const ToolRun text = OnDocument("info", "<asset><unit meter=\"INF\"/></asset>");
  EXPECT_NE(text.out.find("  unit: meter (inf m)\n"), std::string::npos) << text.out;
}

TEST(Cli, InfoJsonEscapesTexts) {
  const ToolRun run = OnDocument(
      "info --json",
      "<asset><contributor><authoring_tool>say \"hi\"\\ \t</authoring_tool></contributor></asset>");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json()["asset"]["authoringTool"], "say \"hi\"\\ \t");
}

TEST(Cli, InfoJsonReplacesBytesThatAreNotUTF8) {
  const ToolRun run = OnDocument(
      "info --json",
      "<asset><contributor><authoring_tool>a\xff</authoring_tool></contributor></asset>");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json()["asset"]["authoringTool"], "a\xef\xbf\xbd");
}

TEST(Cli, InfoCountsTheSceneGraphAndTheAnimation) {
  const std::string body = kAnimatedScene + R"(
<library_lights>
 <light id="l1"><technique_common><ambient/></technique_common></light>
 <light id="l2"><technique_common><directional/></technique_common></light>
 <light id="l3"><technique_common><point/></technique_common></light>
 <light id="l4"><technique_common><spot/></technique_common></light>
 <light id="l5"><technique_common><spot/></technique_common></light>
 <light id="l6"/>
</library_lights>
<library_cameras>
 <camera id="c1"><optics><technique_common><perspective/></technique_common></optics></camera>
 <camera id="c2"><optics><technique_common><orthographic/></technique_common></optics></camera>
 <camera id="c3"/>
</library_cameras>
<library_animation_clips>
 <animation_clip id="clip"><instance_animation url="#move"/></animation_clip>
</library_animation_clips>
<library_nodes><node id="n1"><node id="n2"><node id="n3"><node id="n4"/></node></node></node></library_nodes>
<library_visual_scenes><visual_scene id="deep">
 <node id="d1"><node id="d2"><node id="d3"/></node></node>
</visual_scene></library_visual_scenes>
<scene><instance_visual_scene url="#deep"/></scene>)";
  const ToolRun run = OnDocument("info --json", body);
  EXPECT_EQ(run.code, 0) << run.err;
  const json report = run.Json();
  EXPECT_EQ(report["nodes"], 9);
  EXPECT_EQ(report["sceneDepth"], 3);
  EXPECT_EQ(report["lights"], json::parse(R"({"ambient": 1, "directional": 1, "point": 1,
      "spot": 2, "other": 1})"));
  EXPECT_EQ(report["cameras"], json::parse(R"({"perspective": 1, "orthographic": 1,
      "other": 1})"));
  EXPECT_EQ(report["animations"], 2);
  EXPECT_EQ(report["channels"], json::parse(R"({"bound": 2, "total": 3})"));
  EXPECT_EQ(report["clips"], 1);
  const ToolRun text = OnDocument("info", body);
  EXPECT_NE(text.out.find("scene: #deep\n"
                          "nodes: 9, scene depth 3\n"
                          "lights: 6 (1 ambient, 1 directional, 1 point, 2 spot, 1 other)\n"
                          "cameras: 3 (1 perspective, 1 orthographic, 1 other)\n"
                          "animations: 2, channels: 2 of 3 bound, clips: 1\n"),
            std::string::npos)
      << text.out;
}

TEST(Cli, InfoOfAnEmptyDocumentCountsNothing) {
  const ToolRun run = OnDocument("info", "");
  EXPECT_EQ(run.code, 0);
  EXPECT_NE(run.out.find("scene: none\n"
                         "nodes: 0, scene depth 0\n"
                         "lights: 0\n"
                         "cameras: 0\n"
                         "animations: 0, channels: 0 of 0 bound, clips: 0\n"
                         "controllers: 0\n"
                         "materials: 0\n"
                         "effects: 0, profiles: 0\n"
                         "images: 0\n"),
            std::string::npos)
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

// --- resave -------------------------------------------------------------------

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

TEST(Cli, ResaveToAnUnwritablePlaceExitsOneWithOneLine) {
  const ToolRun run = Oxdae("resave " + Quote(kSample) + " /nonexistent/dir/out.dae");
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err,
            "warning: unknown element <created> in <asset>\n"
            "oxdae: cannot create '/nonexistent/dir/out.dae': No such file or directory\n");
}

// --- tree ---------------------------------------------------------------------

TEST(Cli, TreeJsonDescribesEachNode) {
  const ToolRun run = OnDocument("tree --json", R"(
<library_geometries><geometry id="box"/></library_geometries>
<library_visual_scenes><visual_scene id="vs">
 <node id="a" name="Arm" sid="arm" type="JOINT">
  <translate sid="t">1 0 0</translate><rotate sid="r">0 0 1 90</rotate><scale>1 1 1</scale>
  <instance_geometry url="#box"/><instance_node url="#missing"/><instance_light/>
  <node name="inner"/>
 </node>
</visual_scene></library_visual_scenes>)");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.err, "");
  const json tree = run.Json();
  EXPECT_EQ(tree["visual_scene"], "vs");
  ASSERT_EQ(tree["nodes"].size(), 1u);
  const json& a = tree["nodes"][0];
  std::vector<std::string> keys;
  for (const auto& [key, value] : a.items())
    keys.push_back(key);
  std::sort(keys.begin(), keys.end());
  EXPECT_EQ(keys, (std::vector<std::string>{"children", "id", "instances", "local", "name", "sid",
                                            "transforms", "type", "world"}));
  EXPECT_EQ(a["id"], "a");
  EXPECT_EQ(a["name"], "Arm");
  EXPECT_EQ(a["sid"], "arm");
  EXPECT_EQ(a["type"], "JOINT");
  // translate, then rotate by 90 degrees about z: the rotation acts first.
  const json local = json::parse(R"([5.9604645e-08, 0.99999994, 0, 0, -0.99999994, 5.9604645e-08,
      0, 0, 0, 0, 1, 0, 1, 0, 0, 1])");
  EXPECT_EQ(a["local"], local);
  EXPECT_EQ(a["world"], local);
  EXPECT_NE(run.out.find("[5.9604645e-08,0.99999994,"), std::string::npos) << run.out;
  EXPECT_EQ(a["transforms"], json::parse(R"([{"kind": "translate", "sid": "t", "animated": false},
      {"kind": "rotate", "sid": "r", "animated": false},
      {"kind": "scale", "sid": null, "animated": false}])"));
  EXPECT_EQ(a["instances"], json::parse(R"([
      {"kind": "instance_geometry", "url": "#box", "resolved": true},
      {"kind": "instance_node", "url": "#missing", "resolved": false},
      {"kind": "instance_light", "url": null, "resolved": false}])"));
  ASSERT_EQ(a["children"].size(), 1u);
  const json& inner = a["children"][0];
  EXPECT_EQ(inner["id"], "inner");  // a node without an id takes its name
  EXPECT_EQ(inner["type"], "NODE");
  EXPECT_EQ(inner["local"], json::parse("[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]"));
  EXPECT_EQ(inner["world"], local);
  EXPECT_EQ(inner["children"], json::array());
}

TEST(Cli, TreeWorldComposesTheParentsWorld) {
  const ToolRun run = OnDocument("tree --json", R"(<library_visual_scenes><visual_scene id="vs">
 <node id="p"><translate>1 0 0</translate><scale>2 2 2</scale>
  <node id="c"><translate>0 3 0</translate>
   <node id="g"><translate>0 0 4</translate></node></node></node>
</visual_scene></library_visual_scenes>)");
  EXPECT_EQ(run.code, 0);
  const json tree = run.Json();
  const json& c = tree["nodes"][0]["children"][0];
  EXPECT_EQ(Translation(c["local"]), json::parse("[0, 3, 0]"));
  // The child's translation is scaled by the parent, then moved by it.
  EXPECT_EQ(Translation(c["world"]), json::parse("[1, 6, 0]"));
  EXPECT_EQ(c["world"][0], 2);
  EXPECT_EQ(Translation(c["children"][0]["world"]), json::parse("[1, 6, 8]"));
}

TEST(Cli, TreeWritesNonFiniteMatrixValuesAsNull) {
  const ToolRun run = OnDocument("tree --json", R"(<library_visual_scenes><visual_scene id="vs">
 <node id="z"><rotate>0 0 0 30</rotate></node></visual_scene></library_visual_scenes>)");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out.find("nan"), std::string::npos) << run.out;
  const json local = run.Json()["nodes"][0]["local"];
  ASSERT_EQ(local.size(), 16u);
  for (int i = 0; i < 12; ++i)
    EXPECT_TRUE(local[i].is_null()) << i;
  EXPECT_EQ(Translation(local), json::parse("[0, 0, 0]"));
  EXPECT_EQ(local[15], 1);
  const ToolRun text = OnDocument("tree", R"(<library_visual_scenes><visual_scene id="vs">
 <node id="z"><rotate>0 0 0 30</rotate></node></visual_scene></library_visual_scenes>)");
  EXPECT_NE(text.out.find("  local: nan  nan  nan  nan\n"), std::string::npos) << text.out;
}

TEST(Cli, TreeTextIsAnIndentedTree) {
  const ToolRun run = OnDocument("tree", R"(
<library_visual_scenes><visual_scene id="vs">
 <node id="a"><translate sid="t">1 0 0</translate><rotate>0 0 1 180</rotate>
  <instance_geometry url="#gone"/><instance_camera/>
  <node id="b" type="JOINT"><scale>1 2 3</scale></node></node>
 <node name="c"/>
</visual_scene></library_visual_scenes>)");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out,
            "visual scene vs\n"
            "a [NODE]\n"
            "  transforms: translate (t), rotate\n"
            "  instances: instance_geometry #gone (unresolved), instance_camera (no url)\n"
            "  local:           -1  -8.742278e-08  0  0\n"
            "         8.742278e-08             -1  0  0\n"
            "                    0              0  1  0\n"
            "                    1              0  0  1\n"
            "  b [JOINT]\n"
            "    transforms: scale\n"
            "    local: 1  0  0  0\n"
            "           0  2  0  0\n"
            "           0  0  3  0\n"
            "           0  0  0  1\n"
            "c [NODE]\n"
            "  local: identity\n");
}

TEST(Cli, TreeChoosesTheVisualScene) {
  constexpr std::string_view kScenes = R"(<library_visual_scenes>
 <visual_scene id="first"><node id="f"/></visual_scene>
 <visual_scene id="second"><node id="s"/></visual_scene>
</library_visual_scenes>)";
  const std::string named =
      std::string(kScenes) + R"(<scene><instance_visual_scene url="#second"/></scene>)";
  EXPECT_EQ(OnDocument("tree --json", kScenes).Json()["nodes"][0]["id"], "f");
  EXPECT_EQ(OnDocument("tree --json", named).Json()["nodes"][0]["id"], "s");
  EXPECT_EQ(OnDocument("tree --json", named, "--scene first").Json()["visual_scene"], "first");
  oxtest::TempFile file(oxtest::Collada(kScenes));
  const ToolRun unknown = Oxdae("tree " + Quote(file.Path()) + " --scene third");
  EXPECT_EQ(unknown.code, 1);
  EXPECT_EQ(unknown.err, "oxdae: " + file.Path() + ": no visual scene with id 'third'\n");
  EXPECT_EQ(unknown.out, "");
  const ToolRun notAScene = Oxdae("tree " + Quote(file.Path()) + " --scene f");
  EXPECT_EQ(notAScene.code, 1);
}

TEST(Cli, TreeWithoutVisualSceneIsEmpty) {
  const ToolRun run = OnDocument("tree --json", "");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json(), json::parse(R"({"visual_scene": null, "nodes": []})"));
  EXPECT_EQ(OnDocument("tree", "").out, "no visual scene\n");
}

TEST(Cli, TreeMarksAnimatedTransforms) {
  const ToolRun run = OnDocument("tree --json", kAnimatedScene);
  EXPECT_EQ(run.code, 0);
  const json tree = run.Json();
  // "r" is driven by the nested animation only.
  EXPECT_EQ(tree["nodes"][0]["transforms"], json::parse(R"([
      {"kind": "translate", "sid": "t", "animated": true},
      {"kind": "rotate", "sid": "r", "animated": true}])"));
  EXPECT_EQ(tree["nodes"][1]["transforms"][0]["animated"], false);
  EXPECT_EQ(Translation(tree["nodes"][0]["local"]), json::parse("[1, 0, 0]"));
  const ToolRun text = OnDocument("tree", kAnimatedScene);
  EXPECT_NE(text.out.find("  transforms: translate (t, animated), rotate (r, animated)\n"),
            std::string::npos)
      << text.out;
}

TEST(Cli, TreeAtATimeUsesTheAnimationThatDrivesEachNode) {
  const ToolRun run = OnDocument("tree --json", kAnimatedScene, "--time 1");
  EXPECT_EQ(run.code, 0) << run.err;
  const json tree = run.Json();
  const json& a = tree["nodes"][0];
  // "move" at its last key: translate 2 4 6; its nested "turn" halfway: 45 degrees.
  EXPECT_EQ(Translation(a["local"]), json::parse("[2, 4, 6]"));
  EXPECT_EQ(a["local"][0], 0.7071067);
  EXPECT_EQ(a["local"][1], 0.7071068);
  EXPECT_EQ(Translation(tree["nodes"][1]["local"]), json::parse("[0, 0, 5]"));
  const json between = OnDocument("tree --json", kAnimatedScene, "--time 0.5").Json();
  EXPECT_EQ(Translation(between["nodes"][0]["local"]), json::parse("[1, 2, 3]"));
}

TEST(Cli, TreeAtATimeUnderOneAnimation) {
  const ToolRun run = OnDocument("tree --json", kAnimatedScene, "--time 1 --animation turn");
  EXPECT_EQ(run.code, 0) << run.err;
  const json tree = run.Json();
  const json& a = tree["nodes"][0];
  EXPECT_EQ(Translation(a["local"]), json::parse("[1, 0, 0]"));  // "turn" does not move
  EXPECT_EQ(a["local"][0], 0.7071067);
  oxtest::TempFile file(oxtest::Collada(kAnimatedScene));
  const ToolRun unknown = Oxdae("tree " + Quote(file.Path()) + " --time 1 --animation spin");
  EXPECT_EQ(unknown.code, 1);
  EXPECT_EQ(unknown.err, "oxdae: " + file.Path() + ": no animation with id 'spin'\n");
}

TEST(Cli, TreeOfTheDeepestHierarchyTheReaderKeeps) {
  // 100,000 nested nodes, each moved by 1 along x. The reader keeps 998 of them
  // (1000 element levels) and skips the content of the deepest, its translate
  // included.
  std::string body = "<library_visual_scenes><visual_scene id=\"vs\">";
  for (int i = 0; i < 100'000; ++i)
    body += "<node><translate>1 0 0</translate>";
  for (int i = 0; i < 100'000; ++i)
    body += "</node>";
  body += "</visual_scene></library_visual_scenes>";
  const ToolRun run = OnDocument("tree --json", body);
  EXPECT_EQ(run.code, 0);
  EXPECT_TRUE(run.err.starts_with("error: elements nested deeper than 1000 levels at <node>"))
      << run.err;
  const json tree = run.Json();
  const json* node = &tree["nodes"][0];
  size_t depth = 1;
  for (; !(*node)["children"].empty(); ++depth)
    node = &(*node)["children"][0];
  EXPECT_EQ(depth, 998u);
  EXPECT_EQ((*node)["world"][12], 997);
  EXPECT_EQ(OnDocument("info --json", body).Json()["sceneDepth"], 998);
  EXPECT_EQ(OnDocument("tree", body).code, 0);
}

// --- sample -------------------------------------------------------------------

TEST(Cli, SampleBetweenKeysInterpolates) {
  const ToolRun run = OnDocument("sample --json", kAnimatedScene, "--time 0.5");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.Json(), json::parse(R"({"time": 0.5, "channels": [
      {"animation": "move", "source": "#s", "target": "a/t", "bound": true,
       "values": [1, 2, 3]},
      {"animation": "turn", "source": "#sa", "target": "a/r.ANGLE", "bound": true,
       "values": [22.5]},
      {"animation": "turn", "source": "#sa", "target": "a/nothing.X", "bound": false,
       "values": null}]})"));
}

TEST(Cli, SampleAtAKeyGivesItsValue) {
  const json samples = OnDocument("sample --json", kAnimatedScene, "--time 1").Json();
  EXPECT_EQ(samples["time"], 1);
  EXPECT_EQ(samples["channels"][0]["values"], json::parse("[2, 4, 6]"));
  EXPECT_EQ(samples["channels"][1]["values"], json::parse("[45]"));
  const json before = OnDocument("sample --json", kAnimatedScene, "--time -1").Json();
  EXPECT_EQ(before["channels"][0]["values"], json::parse("[0, 0, 0]"));
}

TEST(Cli, SampleTextIsOneLinePerChannel) {
  const ToolRun run = OnDocument("sample", kAnimatedScene, "--time 0.5");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out,
            "move: a/t = 1 2 3\n"
            "turn: a/r.ANGLE = 22.5\n"
            "turn: a/nothing.X (unbound)\n");
  EXPECT_EQ(OnDocument("sample", "", "--time 0").out, "no channels\n");
}

// A STEP curve: linearly it would give 5 at 0.5, exactly it holds 0.
const std::string kStepCurve = R"(<library_animations><animation id="m">
    <source id="t"><float_array id="t-a" count="2">0 1</float_array>
     <technique_common><accessor source="#t-a" count="2"/></technique_common></source>
    <source id="v"><float_array id="v-a" count="2">0 10</float_array>
     <technique_common><accessor source="#v-a" count="2"/></technique_common></source>
    <source id="i"><Name_array id="i-a" count="2">STEP STEP</Name_array>
     <technique_common><accessor source="#i-a" count="2"/></technique_common></source>
    <sampler id="s"><input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#v"/>
     <input semantic="INTERPOLATION" source="#i"/></sampler>
    <channel source="#s" target="a/t.X"/></animation></library_animations>
    <library_visual_scenes><visual_scene id="vs"><node id="a"><translate sid="t">0 0 0</translate>
    </node></visual_scene></library_visual_scenes>)";

TEST(Cli, SampleExactFollowsTheInterpolation) {
  const std::string& step = kStepCurve;
  EXPECT_EQ(OnDocument("sample", step, "--time 0.5").out, "m: a/t.X = 5\n");
  const ToolRun exact = OnDocument("sample", step, "--time 0.5 --exact");
  EXPECT_EQ(exact.code, 0);
  EXPECT_EQ(exact.out, "m: a/t.X = 0\n");
  EXPECT_EQ(OnDocument("sample --json", step, "--time 1 --exact").Json()["channels"][0]["values"],
            json::parse("[10]"));
}

TEST(Cli, TreeExactFollowsTheInterpolation) {
  const std::string& step = kStepCurve;
  const json plain = OnDocument("tree --json", step, "--time 0.5").Json();
  EXPECT_EQ(plain["nodes"][0]["world"][12], 5);
  const json exact = OnDocument("tree --json", step, "--time 0.5 --exact").Json();
  EXPECT_EQ(exact["nodes"][0]["world"][12], 0);
  EXPECT_EQ(OnDocument("tree --json", step, "--time 1 --exact").Json()["nodes"][0]["local"][12],
            10);
  const ToolRun untimed = OnDocument("tree", step, "--exact");
  EXPECT_EQ(untimed.code, 2);
  EXPECT_NE(untimed.err.find("--exact requires --time"), std::string::npos) << untimed.err;
}

TEST(Cli, SampleExactOfLinearCurvesIsTheLinearValue) {
  const ToolRun plain = OnDocument("sample --json", kAnimatedScene, "--time 0.5");
  const ToolRun exact = OnDocument("sample --json", kAnimatedScene, "--time 0.5 --exact");
  EXPECT_EQ(exact.Json(), plain.Json());
}

TEST(Cli, SampleOneAnimationWithItsNestedOnes) {
  const json turn = OnDocument("sample --json", kAnimatedScene, "--time 2 --animation turn").Json();
  ASSERT_EQ(turn["channels"].size(), 2u);
  EXPECT_EQ(turn["channels"][0]["values"], json::parse("[90]"));
  const json move = OnDocument("sample --json", kAnimatedScene, "--time 2 --animation move").Json();
  EXPECT_EQ(move["channels"].size(), 3u);
  oxtest::TempFile file(oxtest::Collada(kAnimatedScene));
  const ToolRun unknown = Oxdae("sample " + Quote(file.Path()) + " --time 0 --animation a");
  EXPECT_EQ(unknown.code, 1);
  EXPECT_EQ(unknown.err, "oxdae: " + file.Path() + ": no animation with id 'a'\n");
}

TEST(Cli, SampleThatFailsHasNoValuesAndSaysWhy) {
  // Without an INTERPOLATION input the sampler only answers its key times.
  const std::string body = R"(<library_animations><animation id="m">
  <source id="t"><float_array id="t-a" count="2">0 1</float_array>
   <technique_common><accessor source="#t-a" count="2"/></technique_common></source>
  <source id="v"><float_array id="v-a" count="2">5 7</float_array>
   <technique_common><accessor source="#v-a" count="2"/></technique_common></source>
  <sampler id="s"><input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#v"/>
  </sampler>
  <channel source="#s" target="a/t.X"/>
 </animation></library_animations>
 <library_visual_scenes><visual_scene id="vs">
  <node id="a"><translate sid="t">0 0 0</translate></node></visual_scene>
 </library_visual_scenes>)";
  const ToolRun between = OnDocument("sample --json", body, "--time 0.5");
  EXPECT_EQ(between.code, 0);
  EXPECT_EQ(between.err, "error: sampling time not found\n");
  EXPECT_TRUE(between.Json()["channels"][0]["values"].is_null()) << between.out;
  EXPECT_EQ(OnDocument("sample", body, "--time 0.5").out, "m: a/t.X (no value)\n");
  const ToolRun atKey = OnDocument("sample --json", body, "--time 1");
  EXPECT_EQ(atKey.err, "");
  EXPECT_EQ(atKey.Json()["channels"][0]["values"], json::parse("[7]"));
}

TEST(Cli, SampleWithAHugeStrideAllocatesNothingLarge) {
  const std::string body = R"(<library_animations><animation id="m">
  <source id="t"><float_array id="t-a" count="1">0</float_array>
   <technique_common><accessor source="#t-a" count="1"/></technique_common></source>
  <source id="v"><float_array id="v-a" count="2">5 7</float_array>
   <technique_common><accessor source="#v-a" count="1" stride="4000000000"/></technique_common>
  </source>
  <sampler id="s"><input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#v"/>
  </sampler>
  <channel source="#s" target="a/t"/>
 </animation></library_animations>
 <library_visual_scenes><visual_scene id="vs">
  <node id="a"><translate sid="t">0 0 0</translate></node></visual_scene>
 </library_visual_scenes>)";
  const ToolRun run = OnDocument("sample --json", body, "--time 0");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "error: sampled value lies past the OUTPUT array\n");
  EXPECT_TRUE(run.Json()["channels"][0]["values"].is_null()) << run.out;
}

// --- check --------------------------------------------------------------------

TEST(Cli, CheckOfACleanDocumentExitsZero) {
  const ToolRun run = Oxdae("check --json " + Quote(kSample));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json(), json::parse(R"({"unresolved": [], "errors": 0, "warnings": 1})"));
  const ToolRun text = OnDocument("check", "");
  EXPECT_EQ(text.code, 0);
  EXPECT_EQ(text.out, "0 unresolved, 0 error(s), 0 warning(s)\n");
}

TEST(Cli, CheckListsAnUnresolvedInstanceGeometry) {
  const std::string body = R"(<library_visual_scenes><visual_scene id="vs">
 <node id="n1"><node><instance_geometry url="#missing"/></node></node>
</visual_scene></library_visual_scenes>)";
  const ToolRun run = OnDocument("check --json", body);
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.Json(), json::parse(R"({"unresolved": [{"element": "instance_geometry",
      "owner": "n1", "reference": "#missing", "code": -1}], "errors": 0, "warnings": 0})"));
  const ToolRun text = OnDocument("check", body);
  EXPECT_EQ(text.code, 3);
  EXPECT_EQ(text.out,
            "instance_geometry in n1: #missing (code -1)\n"
            "1 unresolved, 0 error(s), 0 warning(s)\n");
}

TEST(Cli, CheckListsEveryKindOfReferenceInDocumentOrder) {
  const std::string body = std::string(kAnimations) + R"(
<library_materials><material id="m"/></library_materials>
<library_visual_scenes><visual_scene id="vs">
 <node id="a"><translate sid="t">1 0 0</translate><rotate sid="r">0 0 1 0</rotate>
  <instance_geometry url="#g"><bind_material><technique_common>
   <instance_material symbol="s" target="#m"/><instance_material symbol="u" target="#nomat"/>
  </technique_common></bind_material></instance_geometry>
  <instance_controller url="#noctrl"><skeleton>#a</skeleton><skeleton>#noskel</skeleton>
  </instance_controller>
  <instance_node url="#far"/>
  <instance_geometry/>
 </node>
</visual_scene></library_visual_scenes>
<library_animations><animation id="lost"><channel source="#nosampler" target="a/t"/></animation>
</library_animations>
<scene><instance_visual_scene url="#other"/></scene>)";
  const ToolRun run = OnDocument("check --json", body);
  EXPECT_EQ(run.code, 3);
  // The empty instance_geometry names nothing and is not listed.
  EXPECT_EQ(run.Json()["unresolved"], json::parse(R"([
      {"element": "channel", "owner": "turn", "reference": "a/nothing.X", "code": -1},
      {"element": "instance_geometry", "owner": "a", "reference": "#g", "code": -1},
      {"element": "instance_material", "owner": "a", "reference": "#nomat", "code": -1},
      {"element": "instance_controller", "owner": "a", "reference": "#noskel", "code": -1},
      {"element": "instance_controller", "owner": "a", "reference": "#noctrl", "code": -1},
      {"element": "instance_node", "owner": "a", "reference": "#far", "code": -1},
      {"element": "channel", "owner": "lost", "reference": "#nosampler", "code": -1},
      {"element": "instance_visual_scene", "owner": null, "reference": "#other", "code": -1}])"));
}

TEST(Cli, CheckListsOnlyTheSkeletonOfAControllerWhoseUrlNamesAnElement) {
  // The failed skeleton stops the update before the url is bound; the url
  // itself names a controller and is not a finding.
  const std::string body = R"(
<library_controllers><controller id="skin"/></library_controllers>
<library_visual_scenes><visual_scene id="vs"><node id="a">
  <instance_controller url="#skin"><skeleton>#nobody</skeleton></instance_controller>
</node></visual_scene></library_visual_scenes>)";
  const ToolRun run = OnDocument("check --json", body);
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.Json()["unresolved"], json::parse(R"([
      {"element": "instance_controller", "owner": "a", "reference": "#nobody", "code": -1}])"));
}

TEST(Cli, CheckExitsThreeWhenAnErrorWasLogged) {
  oxtest::TempFile file(oxtest::Collada("<asset/>", "1.5.0"));
  const ToolRun run = Oxdae("check --json " + Quote(file.Path()));
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.err, "error: Unsupported version of DAE File\n");
  EXPECT_EQ(run.Json(), json::parse(R"({"unresolved": [], "errors": 1, "warnings": 0})"));
}

TEST(Cli, CheckListsAnUnresolvedTextureButNotColoursOrFloats) {
  const std::string body = R"(<library_effects><effect id="e"><profile_COMMON><technique><phong>
 <emission><color>0 0 0 1</color></emission><diffuse><texture texture="gone" texcoord="t"/>
 </diffuse><shininess><float>3</float></shininess></phong></technique></profile_COMMON></effect>
</library_effects>
<library_materials><material id="m"><instance_effect url="#nofx"/></material></library_materials>)";
  const ToolRun run = OnDocument("check --json", body);
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.Json()["unresolved"], json::parse(R"([
      {"element": "texture", "owner": "e", "reference": "gone", "code": -1},
      {"element": "instance_effect", "owner": "m", "reference": "#nofx", "code": -1}])"));
  EXPECT_EQ(OnDocument("check", body).out,
            "texture in e: gone (code -1)\n"
            "instance_effect in m: #nofx (code -1)\n"
            "2 unresolved, 0 error(s), 0 warning(s)\n");
}
