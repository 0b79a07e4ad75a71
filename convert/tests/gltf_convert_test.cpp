// What the glTF converter writes for small documents written here: vertices
// and indices per primitive kind, materials, the node tree, and the
// warnings that name what is left out.
#include <oxDAEConvert/oxDAEGltf.h>

#include <cstring>
#include <filesystem>

#include <nlohmann/json.hpp>

#include "oxTestSupport.h"

using nlohmann::json;

namespace {

// A mesh "g" whose positions are `positions` (x y z ...), with `primitives`
// (each holding its own inputs), instanced by node "n" with `binding`.
std::string MeshDocument(std::string_view positions, std::string_view primitives,
                         std::string_view binding = "", std::string_view more = "") {
  const size_t count = std::count(positions.begin(), positions.end(), ' ') + 1;
  return oxtest::Collada(OxKernel::oxConcat(
      more, R"(<library_geometries><geometry id="g"><mesh>
      <source id="p"><float_array id="pa" count=")",
      count, R"(">)", positions,
      R"(</float_array><technique_common><accessor source="#pa" count=")", count / 3,
      R"(" stride="3"/></technique_common></source>
      <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>)",
      primitives, R"(</mesh></geometry></library_geometries>
      <library_visual_scenes><visual_scene id="vs"><node id="n">
      <instance_geometry url="#g">)",
      binding, R"(</instance_geometry></node></visual_scene></library_visual_scenes>
      <scene><instance_visual_scene url="#vs"/></scene>)"));
}

using Numbers = std::vector<double>;

}  // namespace

class GltfConvert : public oxtest::DocumentTest {
 protected:
  // Converts the loaded document to a .gltf and reads it back.
  void Convert() {
    ASSERT_EQ(rc, 0);
    ConvertAt(30);
  }
  // Converts with `fps` samples a second where curves are sampled.
  void ConvertAt(double fps) {
    OxDAEConvert::oxGltfOptions options;
    options.fps = fps;
    log.Clear();
    ASSERT_EQ(OxDAEConvert::ConvertToGltf(document, out.Path(), options), 0);
    gltf = json::parse(oxtest::ReadFile(out.Path()));
    const std::string bin = std::filesystem::path(out.Path()).replace_extension(".bin").string();
    buffer = oxtest::ReadFile(bin);
    std::remove(bin.c_str());
  }
  // The values of accessor `index` (floats, or unsigned ints for indices).
  std::vector<double> Read(size_t index) const {
    const json& accessor = gltf["accessors"][index];
    const json& view = gltf["bufferViews"][accessor["bufferView"].get<size_t>()];
    const size_t offset = view["byteOffset"];
    const size_t n = view["byteLength"].get<size_t>() / 4;
    std::vector<double> values;
    for (size_t i = 0; i < n; ++i) {
      if (accessor["componentType"] == 5126) {
        float f;
        std::memcpy(&f, buffer.data() + offset + 4 * i, 4);
        values.push_back(f);
      } else {
        uint32_t u;
        std::memcpy(&u, buffer.data() + offset + 4 * i, 4);
        values.push_back(u);
      }
    }
    return values;
  }
  const json& Primitive(size_t i) const { return gltf["meshes"][0]["primitives"][i]; }
  // The attributes of the skinned mesh of a SkinnedDocument: its node is
  // the third root.
  const json& SkinnedAttributes() const {
    const json& skinned = gltf["nodes"][gltf["scenes"][0]["nodes"][2].get<size_t>()];
    return gltf["meshes"][skinned["mesh"].get<size_t>()]["primitives"][0]["attributes"];
  }

  oxtest::TempFile out{"", ".gltf"};
  json gltf;
  std::string buffer;
};

// An L-shaped hexagon (concave at (1, 1)): ear clipping cuts it into four
// triangles that stay inside it, where a fan from the first corner would
// cross the notch.
TEST_XML(GltfConvert, ConcavePolygonIsCutIntoEars,
         MeshDocument("0 0 0 2 0 0 2 1 0 1 1 0 1 2 0 0 2 0",
                      R"(<polylist count="1"><input semantic="VERTEX" source="#v" offset="0"/>
                      <vcount>6</vcount><p>0 1 2 3 4 5</p></polylist>)")) {
  Convert();
  const Numbers indices = Read(Primitive(0)["indices"]);
  // Vertices are numbered as the triangles first use them: corners 0 1 2 3,
  // then 5 and 4. The ears are (0 1 2), (0 2 3), (5 0 3) and (3 4 5).
  EXPECT_EQ(indices, (Numbers{0, 1, 2, 0, 2, 3, 4, 0, 3, 3, 5, 4}));
  EXPECT_EQ(Read(Primitive(0)["attributes"]["POSITION"]),
            (Numbers{0, 0, 0, 2, 0, 0, 2, 1, 0, 1, 1, 0, 0, 2, 0, 1, 2, 0}));
  EXPECT_EQ(Primitive(0).contains("mode"), false);
  EXPECT_EQ(gltf["accessors"][Primitive(0)["attributes"]["POSITION"].get<size_t>()]["max"],
            json::parse("[2, 2, 0]"));
}

// Each distinct index tuple is one vertex: a corner shared by position but
// not by normal is written twice.
TEST_XML(GltfConvert, EachIndexTupleIsOneVertex,
         MeshDocument("0 0 0 1 0 0 0 1 0 1 1 0",
                      R"(<source id="nm"><float_array id="nma" count="6">0 0 2 0 0 -1</float_array>
                      <technique_common><accessor source="#nma" count="2" stride="3"/>
                      </technique_common></source>
                      <triangles count="2"><input semantic="VERTEX" source="#v" offset="0"/>
                      <input semantic="NORMAL" source="#nm" offset="1"/>
                      <p>0 0 1 0 2 0 1 1 3 1 2 1</p></triangles>)")) {
  Convert();
  EXPECT_EQ(Read(Primitive(0)["indices"]), (Numbers{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(Read(Primitive(0)["attributes"]["NORMAL"]),
            (Numbers{0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, -1, 0, 0, -1}));
  EXPECT_EQ(gltf["accessors"][Primitive(0)["attributes"]["POSITION"].get<size_t>()]["count"], 6);
}

TEST_XML(GltfConvert, StripsAndFansBecomeTriangles,
         MeshDocument("0 0 0 1 0 0 0 1 0 1 1 0 2 0 0",
                      R"(<tristrips count="1"><input semantic="VERTEX" source="#v" offset="0"/>
                      <p>0 1 2 3</p></tristrips>
                      <trifans count="1" material="m"><input semantic="VERTEX" source="#v" offset="0"/>
                      <p>0 1 3 2</p></trifans>)")) {
  Convert();
  ASSERT_EQ(gltf["meshes"][0]["primitives"].size(), 2u);
  // The second triangle of a strip turns back: (2, 1, 3).
  EXPECT_EQ(Read(Primitive(0)["indices"]), (Numbers{0, 1, 2, 2, 1, 3}));
  EXPECT_EQ(Read(Primitive(1)["indices"]), (Numbers{0, 1, 2, 0, 2, 3}));
}

TEST_XML(GltfConvert, LinesAndLineStripsStayLines,
         MeshDocument("0 0 0 1 0 0 1 1 0",
                      R"(<lines count="1"><input semantic="VERTEX" source="#v" offset="0"/>
                      <p>0 1</p></lines>
                      <linestrips count="1" material="m"><input semantic="VERTEX" source="#v" offset="0"/>
                      <p>0 1 2</p></linestrips>)")) {
  Convert();
  EXPECT_EQ(Primitive(0)["mode"], 1);
  EXPECT_EQ(Read(Primitive(0)["indices"]), (Numbers{0, 1}));
  EXPECT_EQ(Primitive(1)["mode"], 1);
  EXPECT_EQ(Read(Primitive(1)["indices"]), (Numbers{0, 1, 1, 2}));
}

// Texture coordinates keep their set order and flip to glTF's top-left
// origin.
TEST_XML(
    GltfConvert, TexcoordSetsInOrderFlipped,
    MeshDocument("0 0 0 1 0 0 0 1 0",
                 R"(<source id="uv"><float_array id="uva" count="6">0 0 1 0.25 0 1</float_array>
                      <technique_common><accessor source="#uva" count="3" stride="2"/>
                      </technique_common></source>
                      <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/>
                      <input semantic="TEXCOORD" source="#uv" offset="0" set="3"/>
                      <input semantic="TEXCOORD" source="#uv" offset="0" set="1"/>
                      <p>0 1 2</p></triangles>)")) {
  Convert();
  EXPECT_EQ(Read(Primitive(0)["attributes"]["TEXCOORD_0"]), (Numbers{0, 1, 1, 0.75, 0, 0}));
  EXPECT_TRUE(Primitive(0)["attributes"].contains("TEXCOORD_1"));
  EXPECT_FALSE(Primitive(0)["attributes"].contains("TEXCOORD_3"));
}

TEST_XML(
    GltfConvert, BoundMaterialsBecomeMetallicRoughness,
    MeshDocument(
        "0 0 0 1 0 0 0 1 0",
        R"(<triangles count="1" material="shiny"><input semantic="VERTEX" source="#v" offset="0"/>
                      <p>0 1 2</p></triangles>
                      <triangles count="1" material="flat"><input semantic="VERTEX" source="#v" offset="0"/>
                      <p>0 1 2</p></triangles>)",
        R"(<bind_material><technique_common>
                      <instance_material symbol="shiny" target="#phong"/>
                      <instance_material symbol="flat" target="#constant"/>
                      </technique_common></bind_material>)",
        R"(<library_effects>
                      <effect id="e1"><profile_COMMON><technique sid="t"><phong>
                       <emission><color>0.5 0 0 1</color></emission>
                       <diffuse><color>0.2 0.4 0.6 1</color></diffuse>
                       <shininess><float>30</float></shininess>
                       <transparent opaque="A_ONE"><color>0 0 0 0.5</color></transparent>
                      </phong></technique></profile_COMMON></effect>
                      <effect id="e2"><profile_COMMON><technique sid="t"><constant>
                       <emission><color>1 1 0 1</color></emission>
                      </constant></technique></profile_COMMON></effect>
                      </library_effects><library_materials>
                      <material id="phong"><instance_effect url="#e1"/></material>
                      <material id="constant" name="Flat"><instance_effect url="#e2"/></material>
                      </library_materials>)")) {
  Convert();
  ASSERT_EQ(gltf["materials"].size(), 2u);
  EXPECT_EQ(Primitive(0)["material"], 0);
  EXPECT_EQ(Primitive(1)["material"], 1);
  const json& phong = gltf["materials"][0];
  EXPECT_EQ(phong["name"], "phong");
  EXPECT_EQ(phong["alphaMode"], "BLEND");
  EXPECT_EQ(phong["emissiveFactor"], json::parse("[0.5, 0, 0]"));
  const json& pbr = phong["pbrMetallicRoughness"];
  EXPECT_EQ(pbr["metallicFactor"], 0.0);
  EXPECT_NEAR(pbr["baseColorFactor"][0].get<double>(), 0.2, 1e-7);
  EXPECT_EQ(pbr["baseColorFactor"][3], 0.5);
  // sqrt(2 / (30 + 2)) = 0.25
  EXPECT_EQ(pbr["roughnessFactor"], 0.25);
  const json& flat = gltf["materials"][1];
  EXPECT_EQ(flat["name"], "Flat");
  EXPECT_TRUE(flat["extensions"].contains("KHR_materials_unlit"));
  EXPECT_EQ(flat["pbrMetallicRoughness"]["baseColorFactor"], json::parse("[1, 1, 0, 1]"));
  EXPECT_EQ(gltf["extensionsUsed"], json::parse(R"(["KHR_materials_unlit"])"));
}

TEST_XML(GltfConvert, NodeTreeWithMatricesAndInstancedNodes,
         oxtest::Collada(R"(<library_nodes><node id="lib"><translate>0 0 5</translate></node>
         </library_nodes><library_visual_scenes><visual_scene id="vs">
         <node id="root"><translate>1 2 3</translate>
          <node id="child"><scale>2 2 2</scale></node>
          <instance_node url="#lib"/></node>
         <node id="plain"/></visual_scene></library_visual_scenes>)")) {
  Convert();
  const json& scene = gltf["scenes"][0];
  ASSERT_EQ(scene["nodes"].size(), 2u);
  const json& root = gltf["nodes"][scene["nodes"][0].get<size_t>()];
  EXPECT_EQ(root["name"], "root");
  EXPECT_EQ(root["matrix"], json::parse("[1,0,0,0, 0,1,0,0, 0,0,1,0, 1,2,3,1]"));
  ASSERT_EQ(root["children"].size(), 2u);
  EXPECT_EQ(gltf["nodes"][root["children"][0].get<size_t>()]["matrix"],
            json::parse("[2,0,0,0, 0,2,0,0, 0,0,2,0, 0,0,0,1]"));
  const json& instanced = gltf["nodes"][root["children"][1].get<size_t>()];
  EXPECT_EQ(instanced["name"], "lib");
  EXPECT_EQ(instanced["matrix"][14], 5);
  EXPECT_FALSE(gltf["nodes"][scene["nodes"][1].get<size_t>()].contains("matrix"));
}

TEST_XML(GltfConvert, WhatIsLeftOutIsNamed,
         MeshDocument("0 0 0 1 0 0 0 1 0",
                      R"(<source id="tg"><float_array id="tga" count="3">1 0 0</float_array>
                      <technique_common><accessor source="#tga" count="1" stride="3"/>
                      </technique_common></source>
                      <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/>
                      <input semantic="TEXTANGENT" source="#tg" offset="1"/>
                      <p>0 0 1 0 2 0</p></triangles>)",
                      "", R"(<library_cameras><camera id="c"><optics><technique_common>
                      <perspective><yfov>45</yfov><znear>1</znear><zfar>10</zfar></perspective>
                      </technique_common></optics></camera></library_cameras>)")) {
  Convert();
  EXPECT_EQ(log.entries,
            std::vector{oxtest::Warning(
                "geometry 'g': its input TEXTANGENT (set 0, without NORMAL) is not carried over")});
}

TEST_XML(GltfConvert, UnknownSceneIsRefused, MeshDocument("0 0 0 1 0 0 0 1 0", "")) {
  ASSERT_EQ(rc, 0);
  OxDAEConvert::oxGltfOptions options;
  options.scene = "elsewhere";
  log.Clear();
  EXPECT_EQ(OxDAEConvert::ConvertToGltf(document, out.Path(), options), OxDAEConvert::kGltfNoScene);
  EXPECT_EQ(log.entries, std::vector{oxtest::Error("no visual scene with id 'elsewhere'")});
}

TEST_XML(GltfConvert, DocumentWithoutAVisualSceneShowsEachGeometry,
         oxtest::Collada(R"(<library_geometries>
           <geometry id="empty"><mesh/></geometry>
           <geometry id="tri" name="Triangle"><mesh>
           <source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array>
           <technique_common><accessor source="#pa" count="3" stride="3"/></technique_common>
           </source><vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
           <triangles count="1" material="m"><input semantic="VERTEX" source="#v" offset="0"/>
           <p>0 1 2</p></triangles></mesh></geometry></library_geometries>)")) {
  Convert();
  EXPECT_EQ(
      log.entries,
      (std::vector{oxtest::Warning("the document has no visual scene; each geometry becomes a root "
                                   "node of its own")}));
  EXPECT_EQ(gltf["scenes"][0]["nodes"], json::parse("[0]"));
  EXPECT_EQ(gltf["nodes"][0], json::parse(R"({"mesh": 0, "name": "Triangle"})"));
  EXPECT_FALSE(Primitive(0).contains("material"));
}

TEST_XML(GltfConvert, UnwritableOutputIsAnError, MeshDocument("0 0 0 1 0 0 0 1 0", "")) {
  ASSERT_EQ(rc, 0);
  log.Clear();
  EXPECT_EQ(OxDAEConvert::ConvertToGltf(document, "/nonexistent/folder/x.glb"),
            OxDAEConvert::kGltfCannotWrite);
  EXPECT_EQ(log.entries, std::vector{oxtest::Error("cannot write '/nonexistent/folder/x.glb'")});
}

namespace {

// Node "a" with a translate animated linearly (x from 0 to 2 over a second)
// and a rotation angle animated by STEP (0, then 90 degrees about z at 1).
const std::string kAnimatedNode = oxtest::Collada(R"(<library_animations><animation id="m">
  <source id="t"><float_array id="t-a" count="2">0 1</float_array>
   <technique_common><accessor source="#t-a" count="2"/></technique_common></source>
  <source id="x"><float_array id="x-a" count="2">0 2</float_array>
   <technique_common><accessor source="#x-a" count="2"/></technique_common></source>
  <source id="r"><float_array id="r-a" count="2">0 90</float_array>
   <technique_common><accessor source="#r-a" count="2"/></technique_common></source>
  <source id="lin"><Name_array id="lin-a" count="2">LINEAR LINEAR</Name_array>
   <technique_common><accessor source="#lin-a" count="2"/></technique_common></source>
  <source id="step"><Name_array id="step-a" count="2">STEP STEP</Name_array>
   <technique_common><accessor source="#step-a" count="2"/></technique_common></source>
  <sampler id="sx"><input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#x"/>
   <input semantic="INTERPOLATION" source="#lin"/></sampler>
  <sampler id="sr"><input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#r"/>
   <input semantic="INTERPOLATION" source="#step"/></sampler>
  <channel source="#sx" target="a/t.X"/><channel source="#sr" target="a/r.ANGLE"/>
  </animation></library_animations>
  <library_visual_scenes><visual_scene id="vs"><node id="a">
   <translate sid="t">0 5 0</translate><rotate sid="r">0 0 1 0</rotate>
  </node></visual_scene></library_visual_scenes>)");

}  // namespace

TEST_XML(GltfConvert, LinearAndStepKeysAreTakenOver, kAnimatedNode) {
  ASSERT_EQ(rc, 0);
  ConvertAt(4);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  const json& node = gltf["nodes"][0];
  EXPECT_EQ(node["translation"], json::parse("[0, 5, 0]"));
  EXPECT_EQ(node["rotation"], json::parse("[0, 0, 0, 1]"));
  EXPECT_EQ(node["scale"], json::parse("[1, 1, 1]"));
  EXPECT_FALSE(node.contains("matrix"));
  const json& animation = gltf["animations"][0];
  ASSERT_EQ(animation["channels"].size(), 2u);
  EXPECT_EQ(animation["channels"][0]["target"],
            json::parse(R"({"node": 0, "path": "translation"})"));
  EXPECT_EQ(animation["channels"][1]["target"], json::parse(R"({"node": 0, "path": "rotation"})"));
  const json& translation = animation["samplers"][0];
  EXPECT_EQ(translation["interpolation"], "LINEAR");
  EXPECT_EQ(Read(translation["input"]), (Numbers{0, 1}));
  EXPECT_EQ(Read(translation["output"]), (Numbers{0, 5, 0, 2, 5, 0}));
  // STEP: no turn until the second key, then a quarter turn about z.
  const json& rotation = animation["samplers"][1];
  EXPECT_EQ(rotation["interpolation"], "STEP");
  EXPECT_EQ(Read(rotation["input"]), (Numbers{0, 1}));
  const Numbers quaternions = Read(rotation["output"]);
  ASSERT_EQ(quaternions.size(), 8u);
  EXPECT_EQ((Numbers(quaternions.begin(), quaternions.begin() + 4)), (Numbers{0, 0, 0, 1}));
  EXPECT_NEAR(quaternions[6], std::sqrt(0.5), 1e-6);
  EXPECT_NEAR(quaternions[7], std::sqrt(0.5), 1e-6);
}

namespace {

// Node "a" with `transforms`, and one animation whose sampler "s" reads
// key times `times`, values `values` (stride `stride`), interpolations
// `interpolations` and, when given, tangents `in` and `out` (one float a
// key), driving `target`.
std::string AnimatedDocument(std::string_view transforms, std::string_view target,
                             std::string_view times, std::string_view values,
                             std::string_view interpolations, std::string_view in = "",
                             std::string_view out = "", int stride = 1) {
  const auto count = [](std::string_view list) {
    return std::count(list.begin(), list.end(), ' ') + 1;
  };
  const auto source = [&](std::string_view id, std::string_view list, int width) {
    return OxKernel::oxConcat(
        R"(<source id=")", id, R"("><float_array id=")", id, R"(-a" count=")", count(list), R"(">)",
        list, R"(</float_array><technique_common><accessor source="#)", id, R"(-a" count=")",
        count(list) / width, R"(" stride=")", width, R"("/></technique_common></source>)");
  };
  std::string tangents;
  if (!in.empty()) {
    tangents = source("in", in, 1) + source("out", out, 1);
  }
  return oxtest::Collada(OxKernel::oxConcat(
      R"(<library_animations><animation id="m">)", source("t", times, 1),
      source("v", values, stride), tangents, R"(<source id="i"><Name_array id="i-a" count=")",
      count(interpolations), R"(">)", interpolations,
      R"(</Name_array><technique_common><accessor source="#i-a" count=")", count(interpolations),
      R"("/></technique_common></source><sampler id="s">
      <input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#v"/>
      <input semantic="INTERPOLATION" source="#i"/>)",
      in.empty() ? "" : R"(<input semantic="IN_TANGENT" source="#in"/>
      <input semantic="OUT_TANGENT" source="#out"/>)",
      R"(</sampler><channel source="#s" target=")", target, R"("/></animation>
      </library_animations><library_visual_scenes><visual_scene id="vs"><node id="a">)",
      transforms, R"(</node></visual_scene></library_visual_scenes>)"));
}

// glTF's cubic spline between two keys at fraction `s` of the span `dt`.
double CubicSpline(double v0, double out0, double in1, double v1, double dt, double s) {
  const double s2 = s * s, s3 = s2 * s;
  return (2 * s3 - 3 * s2 + 1) * v0 + (s3 - 2 * s2 + s) * dt * out0 + (-2 * s3 + 3 * s2) * v1 +
         (s3 - s2) * dt * in1;
}

}  // namespace

// x runs from 0 to 6 over two seconds on a Bezier curve with control
// values 1 and 4 at a third and two thirds of the time.
TEST_XML(GltfConvert, BezierKeysBecomeACubicSplineWithTheirTangents,
         AnimatedDocument(R"(<translate sid="t">0 5 0</translate>)", "a/t.X", "0 2", "0 6",
                          "BEZIER BEZIER", "0 2", "1 0")) {
  ASSERT_EQ(rc, 0);
  ConvertAt(4);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  const json& sampler = gltf["animations"][0]["samplers"][0];
  EXPECT_EQ(sampler["interpolation"], "CUBICSPLINE");
  EXPECT_EQ(Read(sampler["input"]), (Numbers{0, 2}));
  // Per key: in-tangent, value, out-tangent. Leaving 0 towards 1 over a
  // third of 2 s: 1.5 a second; arriving at 6 from 4: 3 a second.
  const Numbers keyed = Read(sampler["output"]);
  EXPECT_EQ(keyed, (Numbers{0, 0, 0, 0, 5, 0, 1.5, 0, 0, 3, 0, 0, 6, 5, 0, 0, 0, 0}));
  // Halfway the Bezier curve is at 0.125 * 0 + 0.375 * 1 + 0.375 * 4 +
  // 0.125 * 6 = 2.625; so is the spline.
  EXPECT_DOUBLE_EQ(CubicSpline(keyed[3], keyed[6], keyed[9], keyed[12], 2, 0.5), 2.625);
}

TEST_XML(GltfConvert, ScaleTangentsAreMultipliedByTheStillScales,
         AnimatedDocument(R"(<scale>2 2 2</scale><scale sid="s">1 1 1</scale>)", "a/s.Y", "0 1",
                          "1 4", "HERMITE HERMITE", "0 3", "3 0")) {
  ASSERT_EQ(rc, 0);
  ConvertAt(4);
  const json& sampler = gltf["animations"][0]["samplers"][0];
  EXPECT_EQ(sampler["interpolation"], "CUBICSPLINE");
  EXPECT_EQ(gltf["animations"][0]["channels"][0]["target"]["path"], "scale");
  // A one-dimensional Hermite tangent is the slope over the segment: 3 a
  // second, times the still scale 2.
  EXPECT_EQ(Read(sampler["output"]),
            (Numbers{0, 0, 0, 2, 2, 2, 0, 6, 0, 0, 6, 0, 2, 8, 2, 0, 0, 0}));
}

TEST_XML(GltfConvert, RotationOfHalfATurnOrMoreGetsKeysInBetween,
         AnimatedDocument(R"(<rotate sid="r">0 0 1 0</rotate>)", "a/r.ANGLE", "0 1", "0 270",
                          "LINEAR LINEAR")) {
  ASSERT_EQ(rc, 0);
  ConvertAt(4);
  const json& sampler = gltf["animations"][0]["samplers"][0];
  EXPECT_EQ(sampler["interpolation"], "LINEAR");
  const Numbers times = Read(sampler["input"]);
  ASSERT_EQ(times.size(), 4u);
  EXPECT_NEAR(times[1], 1.0 / 3, 1e-7);
  EXPECT_NEAR(times[2], 2.0 / 3, 1e-7);
  // 0, 90, 180 and 270 degrees about z, each on the side of the one before.
  const Numbers q = Read(sampler["output"]);
  const double h = std::sqrt(0.5);
  const Numbers expected = {0, 0, 0, 1, 0, 0, h, h, 0, 0, 1, 0, 0, 0, h, -h};
  ASSERT_EQ(q.size(), expected.size());
  for (size_t i = 0; i < q.size(); ++i)
    EXPECT_NEAR(q[i], expected[i], 1e-6) << i;
}

TEST_XML(GltfConvert, CurveGltfCannotDrawIsSampled,
         AnimatedDocument(R"(<translate sid="t">0 0 0</translate>)", "a/t.X", "0 1 2", "0 1 0",
                          "CARDINAL CARDINAL CARDINAL")) {
  ASSERT_EQ(rc, 0);
  ConvertAt(2);
  const json& sampler = gltf["animations"][0]["samplers"][0];
  EXPECT_EQ(sampler["interpolation"], "LINEAR");
  EXPECT_EQ(Read(sampler["input"]), (Numbers{0, 0.5, 1, 1.5, 2}));
  // Catmull-Rom through 0, 1, 0 with the ends repeated: 0.5625 halfway.
  EXPECT_EQ(Read(sampler["output"]),
            (Numbers{0, 0, 0, 0.5625, 0, 0, 1, 0, 0, 0.5625, 0, 0, 0, 0, 0}));
}

TEST_XML(GltfConvert, NodeOutOfTrsOrderIsSampledWhole,
         AnimatedDocument(R"(<rotate>0 0 1 90</rotate><translate sid="t">0 0 0</translate>)",
                          "a/t.X", "0 1", "0 2", "LINEAR LINEAR")) {
  ASSERT_EQ(rc, 0);
  ConvertAt(2);
  const json& animation = gltf["animations"][0];
  ASSERT_EQ(animation["channels"].size(), 3u);
  EXPECT_EQ(Read(animation["samplers"][0]["input"]), (Numbers{0, 0.5, 1}));
  // The translate comes after the quarter turn: x moves along y.
  const Numbers t = Read(animation["samplers"][0]["output"]);
  ASSERT_EQ(t.size(), 9u);
  EXPECT_NEAR(t[7], 2, 1e-6);
  EXPECT_NEAR(t[6], 0, 1e-6);
}

// A matrix moving from the identity to a quarter turn about z with x
// doubled, keys at 0 and 1 (rows of the column-vector matrix).
TEST_XML(GltfConvert, AnimatedMatrixKeysAreTakenOverAsPoses,
         AnimatedDocument(R"(<matrix sid="m">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>)", "a/m",
                          "0 1", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 0 -1 0 3 2 0 0 0 0 0 1 0 0 0 0 1",
                          "LINEAR LINEAR", "", "", 16)) {
  ASSERT_EQ(rc, 0);
  ConvertAt(30);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  const json& animation = gltf["animations"][0];
  ASSERT_EQ(animation["samplers"].size(), 3u);
  for (const json& sampler : animation["samplers"]) {
    EXPECT_EQ(sampler["interpolation"], "LINEAR");
    EXPECT_EQ(Read(sampler["input"]), (Numbers{0, 1}));
  }
  EXPECT_EQ(Read(animation["samplers"][0]["output"]), (Numbers{0, 0, 0, 3, 0, 0}));
  const Numbers q = Read(animation["samplers"][1]["output"]);
  ASSERT_EQ(q.size(), 8u);
  EXPECT_NEAR(q[6], std::sqrt(0.5), 1e-6);
  EXPECT_NEAR(q[7], std::sqrt(0.5), 1e-6);
  // The first column, (0, 2, 0), is x scaled by 2 and turned onto y.
  EXPECT_EQ(Read(animation["samplers"][2]["output"]), (Numbers{1, 1, 1, 2, 1, 1}));
}

TEST_XML(GltfConvert, ShearingAnimatedMatrixIsNamed,
         AnimatedDocument(R"(<matrix sid="m">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>)", "a/m",
                          "0 1", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 1 1 0 0 0 1 0 0 0 0 1 0 0 0 0 1",
                          "LINEAR LINEAR", "", "", 16)) {
  ASSERT_EQ(rc, 0);
  ConvertAt(30);
  EXPECT_EQ(log.entries,
            (std::vector{oxtest::Warning(
                "node 'a': its animated matrix shears, which glTF's translation, rotation and "
                "scale cannot hold; the rotation of its columns is kept")}));
  EXPECT_EQ(gltf["animations"][0]["samplers"].size(), 3u);
}

TEST_XML(GltfConvert, CamerasAndLightsBecomeGltfOnes, oxtest::Collada(R"(<library_cameras>
  <camera id="wide"><optics><technique_common><perspective>
   <xfov>90</xfov><aspect_ratio>2</aspect_ratio><znear>0</znear><zfar>100</zfar>
  </perspective></technique_common></optics></camera>
  <camera id="plan"><optics><technique_common><orthographic>
   <ymag>5</ymag><aspect_ratio>2</aspect_ratio><znear>1</znear><zfar>50</zfar>
  </orthographic></technique_common></optics></camera></library_cameras>
  <library_lights>
  <light id="bulb"><technique_common><point><color>2 1 0.5</color></point></technique_common></light>
  <light id="spot"><technique_common><spot><color>1 1 1</color>
   <constant_attenuation>0</constant_attenuation><quadratic_attenuation>1</quadratic_attenuation>
   <falloff_angle>60</falloff_angle></spot></technique_common></light>
  <light id="sky"><technique_common><ambient><color>1 1 1</color></ambient></technique_common></light>
  </library_lights><library_visual_scenes><visual_scene id="vs">
  <node id="eye"><lookat>0 0 10 0 0 0 0 1 0</lookat><instance_camera url="#wide"/>
   <instance_camera url="#plan"/></node>
  <node id="lamps"><instance_light url="#bulb"/><instance_light url="#spot"/>
   <instance_light url="#sky"/></node>
  </visual_scene></library_visual_scenes>)")) {
  Convert();
  EXPECT_EQ(
      log.entries,
      (std::vector{oxtest::Warning("camera 'wide' has no positive near plane, which glTF requires; "
                                   "0.01 is written"),
                   oxtest::Warning("light 'bulb': its attenuation (constant 1, linear 0, quadratic "
                                   "0) is not carried over; glTF lights fall off with the inverse "
                                   "square"),
                   oxtest::Warning("light 'sky' is ambient, which glTF lights are not; it is left "
                                   "out")}));
  const json& wide = gltf["cameras"][0];
  EXPECT_EQ(wide["type"], "perspective");
  // 2 atan(tan(45 degrees) / 2)
  EXPECT_NEAR(wide["perspective"]["yfov"].get<double>(), 2 * std::atan(0.5), 1e-7);
  EXPECT_EQ(wide["perspective"]["znear"], 0.01);
  EXPECT_EQ(gltf["cameras"][1]["orthographic"],
            json::parse(R"({"xmag": 10, "ymag": 5, "znear": 1, "zfar": 50})"));
  // Looking down -z from (0, 0, 10) at the origin: no turn at all.
  const json& eye = gltf["nodes"][1];
  EXPECT_EQ(eye["matrix"], json::parse("[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,10,1]"));
  EXPECT_EQ(eye["camera"], 0);
  EXPECT_EQ(gltf["nodes"][0]["camera"], 1);
  const json& lights = gltf["extensions"]["KHR_lights_punctual"]["lights"];
  ASSERT_EQ(lights.size(), 2u);
  EXPECT_EQ(lights[0], json::parse(R"({"intensity": 2, "color": [1, 0.5, 0.25], "type": "point",
                                       "name": "bulb"})"));
  EXPECT_NEAR(lights[1]["spot"]["outerConeAngle"].get<double>(), 3.14159265358979 / 6, 1e-7);
  EXPECT_EQ(gltf["extensionsUsed"], json::parse(R"(["KHR_lights_punctual"])"));
}

namespace {

const std::string kCentimetersZUp = oxtest::Collada(
    R"(<asset><unit name="centimeter" meter="0.01"/><up_axis>Z_UP</up_axis></asset>
    <library_visual_scenes><visual_scene id="vs"><node id="a"><translate>0 0 100</translate>
    </node></visual_scene></library_visual_scenes>)");

}  // namespace

TEST_XML(GltfConvert, AxesAndUnitAreKeptAndNamed, kCentimetersZUp) {
  Convert();
  EXPECT_EQ(log.entries,
            (std::vector{oxtest::Warning("the document's up axis is Z_UP and glTF's is +Y; the "
                                         "axes are kept as they are (--y-up turns them)"),
                         oxtest::Warning("the document's unit is the centimeter (0.01 m) and "
                                         "glTF's the meter; lengths are kept as they are "
                                         "(--meters scales them)")}));
  EXPECT_EQ(gltf["scenes"][0]["nodes"], json::parse("[0]"));
}

// Z_UP sends z to y: the node 100 cm up lands 1 m up along +Y.
TEST_XML(GltfConvert, YUpAndMetersTurnAndScaleAtTheRoot, kCentimetersZUp) {
  ASSERT_EQ(rc, 0);
  OxDAEConvert::oxGltfOptions options;
  options.yUp = true;
  options.meters = true;
  log.Clear();
  ASSERT_EQ(OxDAEConvert::ConvertToGltf(document, out.Path(), options), 0);
  EXPECT_EQ(
      log.entries,
      (std::vector{oxtest::LogEntry{OxKernel::kLogInfo, "turned from Z_UP to +Y up at the root"},
                   oxtest::LogEntry{OxKernel::kLogInfo,
                                    "scaled from the centimeter (0.01 m) to meters at the "
                                    "root"}}));
  gltf = json::parse(oxtest::ReadFile(out.Path()));
  const json& root = gltf["nodes"][gltf["scenes"][0]["nodes"][0].get<size_t>()];
  EXPECT_EQ(root["name"], "COLLADA root");
  EXPECT_EQ(root["children"], json::parse("[0]"));
  const json& m = root["matrix"];
  // The column-vector matrix times (0, 0, 100) gives (0, 1, 0).
  const double y = m[4 * 2 + 1].get<double>() * 100;
  const double z = m[4 * 2 + 2].get<double>() * 100;
  EXPECT_NEAR(y, 1.0, 1e-9);
  EXPECT_NEAR(z, 0.0, 1e-9);
  EXPECT_NEAR(m[4 * 1 + 2].get<double>(), -0.01, 1e-12);
}

// Tangent (1 0 0) on normal (0 0 1): normal x tangent is (0 1 0), and the
// binormal (0 -1 0) lies on the other side, so w is -1.
TEST_XML(GltfConvert, TangentTakesItsSignFromTheBinormal,
         MeshDocument("0 0 0 1 0 0 0 1 0",
                      R"(<source id="n"><float_array id="na" count="3">0 0 2</float_array>
                      <technique_common><accessor source="#na" count="1" stride="3"/>
                      </technique_common></source>
                      <source id="t"><float_array id="ta" count="3">3 0 1</float_array>
                      <technique_common><accessor source="#ta" count="1" stride="3"/>
                      </technique_common></source>
                      <source id="b"><float_array id="ba" count="3">0 -1 0</float_array>
                      <technique_common><accessor source="#ba" count="1" stride="3"/>
                      </technique_common></source>
                      <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/>
                      <input semantic="NORMAL" source="#n" offset="1"/>
                      <input semantic="TEXTANGENT" source="#t" offset="1"/>
                      <input semantic="TEXBINORMAL" source="#b" offset="1"/>
                      <p>0 0 1 0 2 0</p></triangles>)")) {
  Convert();
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  EXPECT_EQ(Read(Primitive(0)["attributes"]["TANGENT"]),
            (Numbers{1, 0, 0, -1, 1, 0, 0, -1, 1, 0, 0, -1}));
  EXPECT_FALSE(Primitive(0)["attributes"].contains(""));
}

namespace {

// Joints "hip", "knee" (1 up the y axis) and "a" to "d" below the knee
// (inverse bind matrices given for the first two), a triangle whose
// vertices lean on them with the weights `weights` (vcount `vcount`, v
// `v`), a bind shape matrix that lifts it 1 along z, and the instance
// under node "holder" (which has a transform of its own).
std::string SkinnedDocument(std::string_view vcount, std::string_view v, std::string_view weights) {
  const size_t count = std::count(weights.begin(), weights.end(), ' ') + 1;
  return oxtest::Collada(OxKernel::oxConcat(R"(<library_geometries><geometry id="g"><mesh>
    <source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array>
    <technique_common><accessor source="#pa" count="3" stride="3"/></technique_common></source>
    <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
    <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
    </mesh></geometry></library_geometries>
    <library_controllers><controller id="c"><skin source="#g">
    <bind_shape_matrix>1 0 0 0 0 1 0 0 0 0 1 1 0 0 0 1</bind_shape_matrix>
    <source id="j"><Name_array id="ja" count="6">hip knee a b c d</Name_array>
    <technique_common><accessor source="#ja" count="6"/></technique_common></source>
    <source id="ib"><float_array id="iba" count="32">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1
      1 0 0 0 0 1 0 -1 0 0 1 0 0 0 0 1</float_array>
    <technique_common><accessor source="#iba" count="2" stride="16"/></technique_common></source>
    <source id="w"><float_array id="wa" count=")",
                                            count, R"(">)", weights,
                                            R"(</float_array>
    <technique_common><accessor source="#wa" count=")",
                                            count, R"("/></technique_common></source>
    <joints><input semantic="JOINT" source="#j"/><input semantic="INV_BIND_MATRIX" source="#ib"/></joints>
    <vertex_weights count="3"><input semantic="JOINT" source="#j" offset="0"/>
    <input semantic="WEIGHT" source="#w" offset="1"/><vcount>)",
                                            vcount, "</vcount><v>", v,
                                            R"(</v></vertex_weights>
    </skin></controller></library_controllers>
    <library_visual_scenes><visual_scene id="vs">
    <node id="hip" sid="hip" type="JOINT"><node id="knee" sid="knee" type="JOINT"><translate>0 1 0</translate>
    <node sid="a"/><node sid="b"/><node sid="c"/><node sid="d"/></node></node>
    <node id="holder"><translate>5 5 5</translate><instance_controller url="#c"><skeleton>#hip</skeleton></instance_controller></node>
    </visual_scene></library_visual_scenes>)"));
}

}  // namespace

// Weights 1; 0.25 and 0.75; 2 alone (normalised to 1).
TEST_XML(GltfConvert, SkinHasItsJointsWeightsAndInverseBindMatrices,
         SkinnedDocument("1 2 1", "0 0 0 1 1 2 1 3", "1 0.25 0.75 2")) {
  Convert();
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  ASSERT_EQ(gltf["skins"].size(), 1u);
  const json& skin = gltf["skins"][0];
  // Children are written before their parent: a to d are nodes 0 to 3.
  EXPECT_EQ(skin["joints"], json::parse("[5, 4, 0, 1, 2, 3]"));
  const Numbers inverse = Read(skin["inverseBindMatrices"]);
  ASSERT_EQ(inverse.size(), 96u);
  EXPECT_EQ((Numbers(inverse.begin(), inverse.begin() + 48)),
            (Numbers{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0,  0, 1,  //
                     1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -1, 0, 1,  //
                     1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0,  0, 1}));
  // The skinned mesh stands at the root, apart from its holder's transform.
  const json& roots = gltf["scenes"][0]["nodes"];
  ASSERT_EQ(roots.size(), 3u);
  const json& skinned = gltf["nodes"][roots[2].get<size_t>()];
  EXPECT_EQ(skinned["skin"], 0);
  EXPECT_EQ(skinned["name"], "c");
  const json& attributes =
      gltf["meshes"][skinned["mesh"].get<size_t>()]["primitives"][0]["attributes"];
  // The bind shape matrix lifts the vertices 1 along z.
  EXPECT_EQ(Read(attributes["POSITION"]), (Numbers{0, 0, 1, 1, 0, 1, 0, 1, 1}));
  EXPECT_EQ(Read(attributes["WEIGHTS_0"]), (Numbers{1, 0, 0, 0, 0.75, 0.25, 0, 0, 1, 0, 0, 0}));
  EXPECT_FALSE(attributes.contains("JOINTS_1"));
}

// Six influences on the first vertex: the strongest four go in the first
// set, the other two in the second, all eight normalised together.
TEST_XML(GltfConvert, MoreThanFourInfluencesFillASecondSet,
         SkinnedDocument("6 1 1", "0 0 1 1 2 2 3 3 4 4 5 5 0 0 0 0", "0.1 0.2 0.3 0.4 0.5 0.5")) {
  Convert();
  const json& attributes = SkinnedAttributes();
  const Numbers first = Read(attributes["WEIGHTS_0"]);
  const Numbers second = Read(attributes["WEIGHTS_1"]);
  ASSERT_EQ(first.size(), 12u);
  const double sum = 0.1 + 0.2 + 0.3 + 0.4 + 0.5 + 0.5;
  EXPECT_NEAR(first[0], 0.5 / sum, 1e-6);
  EXPECT_NEAR(first[3], 0.3 / sum, 1e-6);
  EXPECT_NEAR(second[0], 0.2 / sum, 1e-6);
  EXPECT_NEAR(second[1], 0.1 / sum, 1e-6);
  EXPECT_EQ(second[4], 0);
}

TEST_XML(GltfConvert, SkinWhoseJointsAreMissingIsDrawnUnskinned,
         oxtest::Collada(R"(<library_geometries><geometry id="g"><mesh>
    <source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array>
    <technique_common><accessor source="#pa" count="3" stride="3"/></technique_common></source>
    <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
    <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
    </mesh></geometry></library_geometries>
    <library_controllers><controller id="c"><skin source="#g">
    <source id="j"><Name_array id="ja" count="1">ghost</Name_array>
    <technique_common><accessor source="#ja" count="1"/></technique_common></source>
    <joints><input semantic="JOINT" source="#j"/></joints>
    </skin></controller></library_controllers>
    <library_visual_scenes><visual_scene id="vs"><node id="n">
    <instance_controller url="#c"><skeleton>#nowhere</skeleton></instance_controller></node>
    </visual_scene></library_visual_scenes>)")) {
  Convert();
  EXPECT_EQ(log.entries,
            std::vector{oxtest::Warning("controller 'c': its joint 'ghost' is no node of "
                                        "the scene; the skin is left out")});
  EXPECT_EQ(gltf["nodes"][0]["mesh"], 0);
  EXPECT_FALSE(gltf.contains("skins"));
}

namespace {

// A NORMALIZED morph of a triangle towards a copy lifted by 2 along z, at
// weight 0.5 (a second target names nothing), with `animation` beside it.
std::string MorphDocument(std::string_view animation = "") {
  return oxtest::Collada(std::string(animation) + R"(<library_geometries>
    <geometry id="base"><mesh>
    <source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array>
    <technique_common><accessor source="#pa" count="3" stride="3"/></technique_common></source>
    <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
    <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
    </mesh></geometry>
    <geometry id="lifted"><mesh>
    <source id="q"><float_array id="qa" count="9">0 0 2 1 0 2 0 1 2</float_array>
    <technique_common><accessor source="#qa" count="3" stride="3"/></technique_common></source>
    <vertices id="w"><input semantic="POSITION" source="#q"/></vertices>
    <triangles count="1"><input semantic="VERTEX" source="#w" offset="0"/><p>0 1 2</p></triangles>
    </mesh></geometry></library_geometries>
    <library_controllers><controller id="c"><morph source="#base" method="NORMALIZED">
    <source id="t"><IDREF_array id="ta" count="2">lifted nothing</IDREF_array>
    <technique_common><accessor source="#ta" count="2"/></technique_common></source>
    <source id="wt"><float_array id="wta" count="2">0.5 0.25</float_array>
    <technique_common><accessor source="#wta" count="2"/></technique_common></source>
    <targets><input semantic="MORPH_TARGET" source="#t"/><input semantic="MORPH_WEIGHT" source="#wt"/></targets>
    </morph></controller></library_controllers>
    <library_visual_scenes><visual_scene id="vs"><node id="n"><instance_controller url="#c"/></node>
    </visual_scene></library_visual_scenes>)");
}

}  // namespace

// One glTF target of offsets (0 0 2) and the mesh weight 0.5.
TEST_XML(GltfConvert, MorphTargetsAreOffsetsWithTheirWeights, MorphDocument()) {
  Convert();
  EXPECT_EQ(log.entries,
            std::vector{oxtest::Warning("controller 'c': its morph target 'nothing' is no "
                                        "geometry with positions; it is left out")});
  const json& mesh = gltf["meshes"][gltf["nodes"][0]["mesh"].get<size_t>()];
  EXPECT_EQ(mesh["weights"], json::parse("[0.5]"));
  const json& targets = mesh["primitives"][0]["targets"];
  ASSERT_EQ(targets.size(), 1u);
  EXPECT_EQ(Read(targets[0]["POSITION"]), (Numbers{0, 0, 2, 0, 0, 2, 0, 0, 2}));
}

// glTF wants each joint once per vertex: the first vertex names the hip
// twice with 0.25 each, which becomes the hip alone at weight 1.
TEST_XML(GltfConvert, JointNamedTwiceForAVertexCountsOnce,
         SkinnedDocument("2 1 1", "0 0 0 0 1 1 1 2", "0.25 1 1")) {
  Convert();
  const json& attributes = SkinnedAttributes();
  EXPECT_EQ(Read(attributes["WEIGHTS_0"]), (Numbers{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}));
}

// The weight animated from 0 to 1 over a second, sampled at 2 per second,
// on the node that shows the morph.
TEST_XML(GltfConvert, MorphWeightsAreAnimatedOnTheirNode,
         MorphDocument(R"x(<library_animations><animation>
    <source id="at"><float_array id="at-a" count="2">0 1</float_array>
     <technique_common><accessor source="#at-a" count="2"/></technique_common></source>
    <source id="av"><float_array id="av-a" count="2">0 1</float_array>
     <technique_common><accessor source="#av-a" count="2"/></technique_common></source>
    <source id="ai"><Name_array id="ai-a" count="2">LINEAR LINEAR</Name_array>
     <technique_common><accessor source="#ai-a" count="2"/></technique_common></source>
    <sampler id="as"><input semantic="INPUT" source="#at"/><input semantic="OUTPUT" source="#av"/>
     <input semantic="INTERPOLATION" source="#ai"/></sampler>
    <channel source="#as" target="wt(0)"/></animation></library_animations>)x")) {
  ASSERT_EQ(rc, 0);
  OxDAEConvert::oxGltfOptions options;
  options.fps = 2;
  log.Clear();
  ASSERT_EQ(OxDAEConvert::ConvertToGltf(document, out.Path(), options), 0);
  gltf = json::parse(oxtest::ReadFile(out.Path()));
  buffer = oxtest::ReadFile(std::filesystem::path(out.Path()).replace_extension(".bin").string());
  const json& channel = gltf["animations"][0]["channels"][0];
  EXPECT_EQ(channel["target"]["path"], "weights");
  EXPECT_TRUE(gltf["nodes"][channel["target"]["node"].get<size_t>()].contains("mesh"));
  const json& sampler = gltf["animations"][0]["samplers"][0];
  EXPECT_EQ(Read(sampler["input"]), (Numbers{0, 0.5, 1}));
  EXPECT_EQ(Read(sampler["output"]), (Numbers{0, 0.5, 1}));
  std::remove(std::filesystem::path(out.Path()).replace_extension(".bin").string().c_str());
}

namespace {

// A triangle with texture coordinates whose material "m" shows `picture`
// through a sampler with `samplerChildren` (wrap and filter words), its
// effect carrying `effectExtra`.
std::string TexturedDocument(const std::string& picture, std::string_view samplerChildren,
                             std::string_view effectExtra = "") {
  return MeshDocument(
      "0 0 0 1 0 0 0 1 0",
      R"(<source id="uv"><float_array id="uva" count="6">0 0 1 0 0 1</float_array>
         <technique_common><accessor source="#uva" count="3" stride="2"/></technique_common>
         </source><triangles count="1" material="m">
         <input semantic="VERTEX" source="#v" offset="0"/>
         <input semantic="TEXCOORD" source="#uv" offset="0" set="0"/><p>0 1 2</p></triangles>)",
      R"(<bind_material><technique_common><instance_material symbol="m" target="#mat"/>
         </technique_common></bind_material>)",
      OxKernel::oxConcat(R"(<library_images><image id="img"><init_from>file://)", picture,
                         R"(</init_from></image></library_images>
          <library_effects><effect id="e"><profile_COMMON>
          <newparam sid="surface"><surface type="2D"><init_from>img</init_from></surface>
          </newparam><newparam sid="sampler"><sampler2D><source>surface</source>)",
                         samplerChildren, R"(</sampler2D></newparam>
          <technique sid="t"><lambert><diffuse><texture texture="sampler" texcoord="uv0"/>
          </diffuse></lambert></technique></profile_COMMON>)",
                         effectExtra, R"(</effect></library_effects>
          <library_materials><material id="mat"><instance_effect url="#e"/></material>
          </library_materials>)"));
}

// The first bytes of a PNG file: enough for the converter to carry it.
constexpr std::string_view kPngStart("\x89PNG\r\n\x1a\n\0\0\0\0", 12);

}  // namespace

TEST_F(GltfConvert, SamplerWrapAndFilterBecomeAGltfSampler) {
  const oxtest::TempFile picture(kPngStart, ".png");
  LoadText(TexturedDocument(picture.Path(), R"(<wrap_s>MIRROR</wrap_s><wrap_t>CLAMP</wrap_t>
      <minfilter>LINEAR</minfilter><magfilter>NEAREST</magfilter>
      <mipfilter>LINEAR</mipfilter>)"));
  Convert();
  ASSERT_EQ(gltf["textures"].size(), 1u);
  EXPECT_EQ(gltf["textures"][0]["sampler"], 0);
  EXPECT_EQ(gltf["samplers"][0], json::parse(R"({"magFilter": 9728, "minFilter": 9987,
                                                 "wrapS": 33648, "wrapT": 33071})"));
  EXPECT_EQ(gltf["materials"][0]["pbrMetallicRoughness"]["baseColorTexture"]["index"], 0);
  EXPECT_EQ(log.entries, std::vector<oxtest::LogEntry>{});
}

TEST_F(GltfConvert, BorderWrapClampsToTheEdgeAndIsNamed) {
  const oxtest::TempFile picture(kPngStart, ".png");
  LoadText(TexturedDocument(picture.Path(), "<wrap_s>BORDER</wrap_s>"));
  Convert();
  EXPECT_EQ(gltf["samplers"][0], json::parse(R"({"wrapS": 33071})"));
  EXPECT_EQ(log.entries,
            (std::vector{oxtest::Warning("border colours of texture samplers (clamped to the "
                                         "edge instead): 1 left out (the converter does not "
                                         "carry them over)")}));
}

TEST_F(GltfConvert, SamplerWithoutWordsTakesGltfDefaults) {
  const oxtest::TempFile picture(kPngStart, ".png");
  LoadText(TexturedDocument(picture.Path(), ""));
  Convert();
  EXPECT_FALSE(gltf.contains("samplers"));
  EXPECT_FALSE(gltf["textures"][0].contains("sampler"));
}

TEST_F(GltfConvert, DoubleSidedComesFromThe3dsMaxTechnique) {
  const oxtest::TempFile picture(kPngStart, ".png");
  LoadText(TexturedDocument(
      picture.Path(), "",
      R"(<extra><technique profile="MAX3D"><double_sided>1</double_sided></technique></extra>)"));
  Convert();
  EXPECT_EQ(gltf["materials"][0]["doubleSided"], true);
}

TEST_F(GltfConvert, MaterialIsOneSidedWithoutATechniqueSayingOtherwise) {
  const oxtest::TempFile picture(kPngStart, ".png");
  LoadText(TexturedDocument(
      picture.Path(), "",
      R"(<extra><technique profile="MAX3D"><double_sided>0</double_sided></technique></extra>)"));
  Convert();
  EXPECT_FALSE(gltf["materials"][0].contains("doubleSided"));
}
