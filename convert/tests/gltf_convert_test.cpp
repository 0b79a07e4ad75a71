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
    log.Clear();
    ASSERT_EQ(OxDAEConvert::ConvertToGltf(document, out.Path()), 0);
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
            std::vector{oxtest::Warning("geometry 'g': the input TEXTANGENT has no glTF attribute; "
                                        "it is not converted")});
}

TEST_XML(GltfConvert, UnknownSceneIsRefused, MeshDocument("0 0 0 1 0 0 0 1 0", "")) {
  ASSERT_EQ(rc, 0);
  OxDAEConvert::oxGltfOptions options;
  options.scene = "elsewhere";
  log.Clear();
  EXPECT_EQ(OxDAEConvert::ConvertToGltf(document, out.Path(), options), OxDAEConvert::kGltfNoScene);
  EXPECT_EQ(log.entries, std::vector{oxtest::Error("no visual scene with id 'elsewhere'")});
}

TEST_XML(GltfConvert, UnwritableOutputIsAnError, MeshDocument("0 0 0 1 0 0 0 1 0", "")) {
  ASSERT_EQ(rc, 0);
  log.Clear();
  EXPECT_EQ(OxDAEConvert::ConvertToGltf(document, "/nonexistent/folder/x.glb"),
            OxDAEConvert::kGltfCannotWrite);
  EXPECT_EQ(log.entries, std::vector{oxtest::Error("cannot write '/nonexistent/folder/x.glb'")});
}
