// The oxdae commands about effects and pictures, run as a separate process:
// what "info" counts of controllers, materials, effects and images, and the
// "materials" (with the profiles and render states of each effect) and
// "textures" commands.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "cli_test_support.h"

using namespace clitest;

// --- info ---------------------------------------------------------------------

TEST(Cli, InfoCountsControllersMaterialsEffectsAndImages) {
  const std::string body = R"(
<library_images><image id="pic"><init_from>pic.png</init_from></image></library_images>
<library_geometries><geometry id="g"><mesh/></geometry></library_geometries>
<library_controllers>
 <controller id="skinned"><skin source="#g">
  <source id="names"><Name_array id="names-a" count="3">hip knee foot</Name_array>
   <technique_common><accessor source="#names-a" count="3"/></technique_common></source>
  <joints><input semantic="JOINT" source="#names"/></joints>
  <vertex_weights count="2"><input semantic="JOINT" source="#names" offset="0"/>
   <vcount>1 3</vcount><v>0 0 1 1 2 2 0 3</v></vertex_weights>
 </skin></controller>
 <controller id="blend"><morph source="#g" method="RELATIVE">
  <source id="targets"><IDREF_array id="targets-a" count="2">g g</IDREF_array>
   <technique_common><accessor source="#targets-a" count="2"/></technique_common></source>
  <targets><input semantic="MORPH_TARGET" source="#targets"/></targets>
 </morph></controller>
</library_controllers>
<library_effects>
 <effect id="e1"><profile_CG/><profile_COMMON/></effect>
 <effect id="e2"><profile_GLSL><image id="inner"><init_from>x.png</init_from></image></profile_GLSL>
  <profile_GLES/></effect>
</library_effects>
<library_materials><material id="m1"/><material id="m2"/></library_materials>)";
  const ToolRun run = OnDocument("info --json", body);
  EXPECT_EQ(run.code, 0) << run.err;
  const json report = run.Json();
  EXPECT_EQ(report["controllers"], json::parse(R"({
      "skins": [{"id": "skinned", "joints": 3, "vertices": 2, "maxInfluences": 3}],
      "morphs": [{"id": "blend", "targets": 2, "method": "RELATIVE"}]})"));
  EXPECT_EQ(report["materials"], 2);
  EXPECT_EQ(report["effects"], 2);
  EXPECT_EQ(report["profiles"], json::parse(R"({"COMMON": 1, "CG": 1, "GLSL": 1, "GLES": 1})"));
  EXPECT_EQ(report["images"], 2);
  const ToolRun text = OnDocument("info", body);
  EXPECT_NE(
      text.out.find("controllers: 2 (1 skin, 1 morph)\n"
                    "  skin skinned: 3 joint(s), 2 vertices, up to 3 influence(s) per vertex\n"
                    "  morph blend: 2 target(s), method RELATIVE\n"
                    "materials: 2\n"
                    "effects: 2, profiles: 4 (1 COMMON, 1 CG, 1 GLSL, 1 GLES)\n"
                    "images: 2\n"),
      std::string::npos)
      << text.out;
}

TEST(Cli, InfoOfASkinWithoutJointsOrWeightsCountsZero) {
  const ToolRun run = OnDocument("info --json", R"(<library_controllers>
 <controller id="c"><skin source="#nothing"/></controller>
 <controller id="d"><morph/></controller></library_controllers>)");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json()["controllers"], json::parse(R"({
      "skins": [{"id": "c", "joints": 0, "vertices": 0, "maxInfluences": 0}],
      "morphs": [{"id": "d", "targets": 0, "method": null}]})"));
}

// --- materials ----------------------------------------------------------------

namespace {

// An image "img" in "tex/pic 1.png" (written "%20"), reached from material
// "m1" directly (specular) and through a sampler and a surface (diffuse); a
// material named "Lost" without id whose effect is missing, and a material
// "bare" without effect.
constexpr std::string_view kMaterials = R"(
<library_images><image id="img" name="pic"><init_from>tex/pic%201.png</init_from></image>
</library_images>
<library_effects><effect id="fx"><profile_COMMON>
 <newparam sid="surf"><surface type="2D"><init_from>img</init_from></surface></newparam>
 <newparam sid="samp"><sampler2D><source>surf</source></sampler2D></newparam>
 <technique sid="common"><blinn>
  <emission><color>0 0 0 1</color></emission>
  <diffuse><texture texture="samp" texcoord="UV0"/></diffuse>
  <specular><texture texture="img" texcoord="UV1"/></specular>
  <reflective><texture texture="nowhere" texcoord="UV2"/></reflective>
  <transparent opaque="RGB_ZERO"><color>1 1 1 0.5</color></transparent>
  <shininess><float>20</float></shininess>
  <transparency><float>0.25</float></transparency>
  <ambient/>
 </blinn></technique></profile_COMMON></effect></library_effects>
<library_materials>
 <material id="m1" name="Red"><instance_effect url="#fx"/></material>
 <material name="Lost"><instance_effect url="#nothing"/></material>
 <material id="bare"/>
</library_materials>)";

}  // namespace

TEST(Cli, MaterialsJsonGivesEachMaterialItsEffectAndValues) {
  const ToolRun run = OnDocument("materials --json", kMaterials);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 1);
  // The empty <ambient/> holds no value and is left out.
  EXPECT_EQ(run.Json(), json::parse(R"({"materials": [
      {"id": "m1", "name": "Red", "effect": "fx", "shading": "blinn", "values": {
        "emission": {"color": [0, 0, 0, 1]},
        "diffuse": {"texture": "samp", "texcoord": "UV0", "image": "img",
                    "init_from": "tex/pic%201.png"},
        "specular": {"texture": "img", "texcoord": "UV1", "image": "img",
                     "init_from": "tex/pic%201.png"},
        "reflective": {"texture": "nowhere", "texcoord": "UV2", "image": null,
                       "init_from": null},
        "transparent": {"color": [1, 1, 1, 0.5], "opaque": "RGB_ZERO"},
        "shininess": {"float": 20},
        "transparency": {"float": 0.25}},
       "profiles": [{"kind": "COMMON"}]},
      {"id": "Lost", "name": "Lost", "effect": null, "shading": null, "values": {},
       "profiles": []},
      {"id": "bare", "name": "", "effect": null, "shading": null, "values": {},
       "profiles": []}]})"));
}

TEST(Cli, MaterialsTextListsTheValuesAligned) {
  const ToolRun run = OnDocument("materials", kMaterials);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out,
            "m1 (\"Red\"): effect fx, blinn\n"
            "  emission             color 0 0 0 1\n"
            "  diffuse              texture \"samp\" (texcoord UV0) -> image img: tex/pic%201.png\n"
            "  specular             texture \"img\" (texcoord UV1) -> image img: tex/pic%201.png\n"
            "  reflective           texture \"nowhere\" (texcoord UV2) -> no image\n"
            "  transparent          color 1 1 1 0.5, opaque RGB_ZERO\n"
            "  shininess            float 20\n"
            "  transparency         float 0.25\n"
            "  profiles             COMMON\n"
            "Lost: effect \"#nothing\" not found\n"
            "bare: no effect\n"
            "3 material(s)\n");
}

TEST(Cli, MaterialsShowEveryShadingModelAndTheDefaultOpacity) {
  const std::string body = R"(<library_effects>
 <effect id="c"><profile_COMMON><technique><constant>
  <transparent><color>0 0 0 1</color></transparent><index_of_refraction><float>1.5</float>
  </index_of_refraction></constant></technique></profile_COMMON></effect>
 <effect id="l"><profile_COMMON><technique><lambert><reflectivity><float>-2</float>
  </reflectivity></lambert></technique></profile_COMMON></effect>
 <effect id="p"><profile_COMMON><technique><phong/></technique></profile_COMMON></effect>
 <effect id="g"><profile_GLSL/></effect>
 <effect id="n"><profile_COMMON/></effect>
</library_effects>
<library_materials>
 <material id="mc"><instance_effect url="#c"/></material>
 <material id="ml"><instance_effect url="#l"/></material>
 <material id="mp"><instance_effect url="#p"/></material>
 <material id="mg"><instance_effect url="#g"/></material>
 <material id="mn"><instance_effect url="#n"/></material>
</library_materials>)";
  const ToolRun run = OnDocument("materials --json", body);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json(), json::parse(R"({"materials": [
      {"id": "mc", "name": "", "effect": "c", "shading": "constant", "values": {
        "transparent": {"color": [0, 0, 0, 1], "opaque": "A_ONE"},
        "index_of_refraction": {"float": 1.5}}, "profiles": [{"kind": "COMMON"}]},
      {"id": "ml", "name": "", "effect": "l", "shading": "lambert", "values": {
        "reflectivity": {"float": -2}}, "profiles": [{"kind": "COMMON"}]},
      {"id": "mp", "name": "", "effect": "p", "shading": "phong", "values": {},
       "profiles": [{"kind": "COMMON"}]},
      {"id": "mg", "name": "", "effect": "g", "shading": null, "values": {},
       "profiles": [{"kind": "GLSL"}]},
      {"id": "mn", "name": "", "effect": "n", "shading": null, "values": {},
       "profiles": [{"kind": "COMMON"}]}]})"));
  const ToolRun text = OnDocument("materials", body);
  EXPECT_EQ(text.out,
            "mc: effect c, constant\n"
            "  transparent          color 0 0 0 1, opaque A_ONE\n"
            "  index_of_refraction  float 1.5\n"
            "  profiles             COMMON\n"
            "ml: effect l, lambert\n"
            "  reflectivity         float -2\n"
            "  profiles             COMMON\n"
            "mp: effect p, phong\n"
            "  profiles             COMMON\n"
            "mg: effect g, no common profile\n"
            "  profiles             GLSL\n"
            "mn: effect n, no common profile\n"
            "  profiles             COMMON\n"
            "5 material(s)\n");
}

TEST(Cli, MaterialsOfADocumentWithoutMaterials) {
  const ToolRun run = OnDocument("materials --json", "");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json(), json::parse(R"({"materials": []})"));
  EXPECT_EQ(OnDocument("materials", "").out, "0 material(s)\n");
}

TEST(Cli, MaterialsWriteANonFiniteColourAsNull) {
  const ToolRun run = OnDocument("materials --json", R"(<library_effects><effect id="e">
 <profile_COMMON><technique><lambert><diffuse><color>INF 0 0 1</color></diffuse></lambert>
 </technique></profile_COMMON></effect></library_effects>
 <library_materials><material id="m"><instance_effect url="#e"/></material></library_materials>)");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json()["materials"][0]["values"]["diffuse"],
            json::parse(R"({"color": [null, 0, 0, 1]})"));
}

// --- materials: profiles and render states ---------------------------------------

namespace {

// An effect "fx" with a common, a CG and a GLSL profile; the CG technique
// "t1" has a pass "p0" with simple, indexed, complex, default-less, sampler
// and unknown states and a shader, and a pass without sid or states.
constexpr std::string_view kCGEffect = R"(<library_effects><effect id="fx">
 <profile_COMMON><technique><lambert><diffuse><color>1 0 0 1</color></diffuse></lambert>
 </technique></profile_COMMON>
 <profile_CG><technique sid="t1"><pass sid="p0">
  <depth_test_enable value="true"/>
  <light_enable index="2" value="true"/>
  <stencil_func><func value="EQUAL"/><ref value="1"/></stencil_func>
  <stencil_test_enable value="true"/>
  <textureDEPTH value="depthSampler"/>
  <depth_func/>
  <foo_bar/>
  <shader stage="VERTEX"><name>main</name></shader>
 </pass><pass/></technique></profile_CG>
 <profile_GLSL/></effect></library_effects>
<library_materials><material id="m"><instance_effect url="#fx"/></material></library_materials>)";

}  // namespace

TEST(Cli, MaterialsJsonListTheProfilesAndTheRenderStatesOfEachCGPass) {
  const ToolRun run = OnDocument("materials --json", kCGEffect);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err,
            "warning: cannot get the default value of the render state (stencil_test_enable)\n"
            "warning: cannot get the type of the render state (foo_bar)\n");
  // The parts of <stencil_func> are listed under their keys; the mask part
  // is absent from the document and from the list.
  EXPECT_EQ(run.Json()["materials"][0]["profiles"], json::parse(R"([
      {"kind": "COMMON"},
      {"kind": "CG", "techniques": [{"sid": "t1", "passes": [
        {"sid": "p0", "states": [
          {"name": "depth_test_enable", "index": null, "type": "bool", "value": "true"},
          {"name": "light_enable", "index": 2, "type": "bool", "value": "true"},
          {"name": "stencil_func/func", "index": null, "type": "enum", "value": "EQUAL"},
          {"name": "stencil_func/ref", "index": null, "type": "int", "value": "1"},
          {"name": "stencil_test_enable", "index": null, "type": "bool", "value": null},
          {"name": "textureDEPTH", "index": null, "type": "samplerRECT",
           "value": "depthSampler"},
          {"name": "depth_func", "index": null, "type": "enum", "value": "ALWAYS"},
          {"name": "foo_bar", "index": null, "type": null, "value": null}]},
        {"sid": "", "states": []}]}]},
      {"kind": "GLSL"}])"));
}

TEST(Cli, MaterialsTextShowsTheProfilesAndOneLinePerRenderState) {
  const ToolRun run = OnDocument("materials", kCGEffect);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out,
            "m: effect fx, lambert\n"
            "  diffuse              color 1 0 0 1\n"
            "  profiles             COMMON CG GLSL\n"
            "  CG technique t1\n"
            "    pass p0\n"
            "      depth_test_enable: bool true\n"
            "      light_enable[2]: bool true\n"
            "      stencil_func/func: enum EQUAL\n"
            "      stencil_func/ref: int 1\n"
            "      stencil_test_enable: bool, no value\n"
            "      textureDEPTH: samplerRECT depthSampler\n"
            "      depth_func: enum ALWAYS\n"
            "      foo_bar: no type, no value\n"
            "    pass (no sid)\n"
            "1 material(s)\n");
}

TEST(Cli, MaterialsListProfilesInDocumentOrderAndCGTechniquesWithoutPasses) {
  const std::string body = R"(<library_effects><effect id="e">
 <profile_GLES/><profile_CG><technique sid="a"/><technique/></profile_CG><profile_COMMON/>
 <profile_CG/></effect></library_effects>
<library_materials><material id="m"><instance_effect url="#e"/></material></library_materials>)";
  const ToolRun run = OnDocument("materials --json", body);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.Json()["materials"][0]["profiles"], json::parse(R"([
      {"kind": "GLES"},
      {"kind": "CG", "techniques": [{"sid": "a", "passes": []}, {"sid": "", "passes": []}]},
      {"kind": "COMMON"},
      {"kind": "CG", "techniques": []}])"));
  EXPECT_EQ(OnDocument("materials", body).out,
            "m: effect e, no common profile\n"
            "  profiles             GLES CG COMMON CG\n"
            "  CG technique a\n"
            "  CG technique (no sid)\n"
            "1 material(s)\n");
}

// --- textures -----------------------------------------------------------------

namespace {

// A fresh folder holding a document "scene.dae" and the pictures it names;
// removed with the object.
class DocumentFolder {
 public:
  explicit DocumentFolder(std::string_view body) {
    static int counter = 0;
    m_folder = (std::filesystem::temp_directory_path() /
                ("oxdae_cli_" + std::to_string(getpid()) + "_" + std::to_string(counter++)))
                   .string();
    std::filesystem::create_directories(m_folder);
    std::ofstream(Document()) << oxtest::Collada(body);
  }
  ~DocumentFolder() { std::filesystem::remove_all(m_folder); }
  DocumentFolder(const DocumentFolder&) = delete;
  DocumentFolder& operator=(const DocumentFolder&) = delete;

  // Creates the picture `relative` (and its folders); its path.
  std::string Add(const std::string& relative) const {
    const std::filesystem::path path = std::filesystem::path(m_folder) / relative;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << "picture";
    return path.string();
  }
  std::string In(const std::string& relative) const { return m_folder + "/" + relative; }
  std::string Document() const { return In("scene.dae"); }
  ToolRun Run(const std::string& command) const { return Oxdae(command + " " + Quote(Document())); }

 private:
  std::string m_folder;
};

// One image "img" whose init_from is `reference`.
std::string OneImage(std::string_view reference) {
  return "<library_images><image id=\"img\"><init_from>" + std::string(reference) +
         "</init_from></image></library_images>";
}

// The single image entry of "textures --json" on `folder`.
json TheImage(const DocumentFolder& folder) {
  const ToolRun run = folder.Run("textures --json");
  const json images = run.Json()["images"];
  EXPECT_EQ(images.size(), 1u) << run.out;
  return images.empty() ? json() : images[0];
}

}  // namespace

TEST(Cli, TexturesDecodePercentEscapes) {
  const DocumentFolder folder(OneImage("./With%20Spaces/Pass%20Image.png"));
  const std::string picture = folder.Add("With Spaces/Pass Image.png");
  EXPECT_EQ(TheImage(folder), (json{{"id", "img"},
                                    {"init_from", "./With%20Spaces/Pass%20Image.png"},
                                    {"path", picture},
                                    {"exists", true}}));
  EXPECT_EQ(folder.Run("textures").code, 0);
}

TEST(Cli, TexturesKeepRawSpaces) {
  const DocumentFolder folder(OneImage("With Spaces/Pass Image.png"));
  const std::string picture = folder.Add("With Spaces/Pass Image.png");
  EXPECT_EQ(TheImage(folder)["path"], picture);
  EXPECT_EQ(TheImage(folder)["exists"], true);
}

TEST(Cli, TexturesFindADriveLetterFileURIBesideTheDocument) {
  const DocumentFolder folder(OneImage("file:///C:/Users/artist/maps/wood.jpg"));
  const std::string picture = folder.Add("maps/wood.jpg");
  EXPECT_EQ(TheImage(folder), (json{{"id", "img"},
                                    {"init_from", "file:///C:/Users/artist/maps/wood.jpg"},
                                    {"path", picture},
                                    {"exists", true}}));
}

TEST(Cli, TexturesReadBackslashesAsFolders) {
  const DocumentFolder folder(OneImage("C:\\Users\\artist\\maps\\wood.jpg"));
  const std::string picture = folder.Add("maps/wood.jpg");
  EXPECT_EQ(TheImage(folder)["path"], picture);
  EXPECT_EQ(TheImage(folder)["exists"], true);
}

TEST(Cli, TexturesOfTheOldDriveFormAsTheReaderCorrectsIt) {
  const DocumentFolder folder(OneImage("file://C|/maps/wood.jpg"));
  const std::string picture = folder.Add("maps/wood.jpg");
  EXPECT_EQ(TheImage(folder), (json{{"id", "img"},
                                    {"init_from", "file:///C:/maps/wood.jpg"},
                                    {"path", picture},
                                    {"exists", true}}));
}

TEST(Cli, TexturesExitThreeWhenAFileIsMissing) {
  const DocumentFolder folder(
      "<library_images><image id=\"here\"><init_from>a.png</init_from></image>"
      "<image id=\"gone\"><init_from>C:\\maps\\b.png</init_from></image></library_images>");
  const std::string picture = folder.Add("a.png");
  const ToolRun run = folder.Run("textures --json");
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.Json(),
            (json{{"images",
                   {{{"id", "here"}, {"init_from", "a.png"}, {"path", picture}, {"exists", true}},
                    {{"id", "gone"},
                     {"init_from", "C:\\maps\\b.png"},
                     {"path", "C:/maps/b.png"},
                     {"exists", false}}}}}));
  const ToolRun text = folder.Run("textures");
  EXPECT_EQ(text.code, 3);
  EXPECT_EQ(text.out,
            "image  init_from      file          path\n"
            "here   a.png          ok            " +
                picture +
                "\n"
                "gone   C:\\maps\\b.png  missing       C:/maps/b.png\n"
                "2 image(s), 1 missing\n");
}

TEST(Cli, TexturesWithoutALocalFileAreNotMissing) {
  const DocumentFolder folder(
      "<library_images><image id=\"web\"><init_from>http://example.com/a.png</init_from></image>"
      "<image id=\"blank\"/></library_images>");
  const ToolRun run = folder.Run("textures --json");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json(), json::parse(R"({"images": [
      {"id": "web", "init_from": "http://example.com/a.png", "path": null, "exists": false},
      {"id": "blank", "init_from": null, "path": null, "exists": false}]})"));
  EXPECT_EQ(folder.Run("textures").out,
            "image  init_from                 file          path\n"
            "web    http://example.com/a.png  not local\n"
            "blank                            no reference\n"
            "2 image(s), 0 missing\n");
}

TEST(Cli, TexturesListTheImagesOfEffectProfilesInDocumentOrder) {
  const DocumentFolder folder(R"(<library_effects><effect id="e"><profile_GLSL>
 <image id="inner"><init_from>inner.png</init_from></image></profile_GLSL></effect>
</library_effects>
<library_images><image name="outer"><init_from>outer.png</init_from></image></library_images>)");
  folder.Add("inner.png");
  folder.Add("outer.png");
  const ToolRun run = folder.Run("textures --json");
  EXPECT_EQ(run.code, 0);
  const json images = run.Json()["images"];
  ASSERT_EQ(images.size(), 2u);
  EXPECT_EQ(images[0]["id"], "inner");
  EXPECT_EQ(images[0]["path"], folder.In("inner.png"));
  EXPECT_EQ(images[1]["id"], "outer");
  EXPECT_EQ(images[1]["path"], folder.In("outer.png"));
}

TEST(Cli, TexturesOfADocumentWithoutImages) {
  const ToolRun run = OnDocument("textures --json", "");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json(), json::parse(R"({"images": []})"));
  EXPECT_EQ(OnDocument("textures", "").out, "0 image(s), 0 missing\n");
}

TEST(Cli, TextureChainLeadsFromTheMaterialToThePictureFile) {
  const DocumentFolder folder(kMaterials);
  const std::string picture = folder.Add("tex/pic 1.png");
  const json diffuse = folder.Run("materials --json").Json()["materials"][0]["values"]["diffuse"];
  ASSERT_EQ(diffuse["image"], "img");
  const ToolRun textures = folder.Run("textures --json");
  EXPECT_EQ(textures.code, 0);
  EXPECT_EQ(
      textures.Json()["images"][0],
      (json{{"id", "img"}, {"init_from", "tex/pic%201.png"}, {"path", picture}, {"exists", true}}));
}

TEST(Cli, BundledSampleShipsThePictureItsGroundMaterialUses) {
  const ToolRun materials = Oxdae("materials --json " + Quote(kSample));
  ASSERT_EQ(materials.code, 0) << materials.err;
  const json ground = materials.Json()["materials"][1];
  EXPECT_EQ(ground["id"], "ground-material");
  EXPECT_EQ(ground["values"]["diffuse"]["image"], "checker");
  const ToolRun textures = Oxdae("textures --json " + Quote(kSample));
  EXPECT_EQ(textures.code, 0) << textures.out;
  const json image = textures.Json()["images"][0];
  EXPECT_EQ(image["path"], std::string(OX_SOURCE_DIR) + "/samples/textures/ground checker.png");
  EXPECT_EQ(image["exists"], true);
}
