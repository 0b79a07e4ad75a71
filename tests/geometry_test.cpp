// Inputs, vertices, meshes, primitives and splines.
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::Warning;

namespace {

constexpr std::string_view kPositions = R"(
  <source id="pos"><float_array id="pos-a" count="9">0 0 0 1 0 0 0 1 0</float_array>
    <technique_common><accessor source="#pos-a" count="3" stride="3"/></technique_common></source>
  <vertices id="verts"><input semantic="POSITION" source="#pos"/></vertices>)";

// A document with one geometry "g" whose mesh holds the positions above and
// `primitives`.
std::string Mesh(std::string_view primitives, std::string_view geometryAttributes = R"(id="g")") {
  return Collada("<library_geometries><geometry " + std::string(geometryAttributes) + "><mesh>" +
                 std::string(kPositions) + std::string(primitives) +
                 "</mesh></geometry></library_geometries>");
}

const oxDAEMesh* MeshOf(const oxDAEFile& document) {
  const auto* geometry = oxDAEGeometry::DynamicCast(document.ResolveURI("#g"));
  return geometry ? geometry->mesh : nullptr;
}

}  // namespace

OX_DOCUMENT_SUITE(PrimitiveReading);

TEST_XML(PrimitiveReading, TrianglesReadOneListWhateverTheCount,
         Mesh(R"(<triangles count="2"><input semantic="VERTEX" source="#verts" offset="0"/>
                 <p>0 1 2 2 1 0</p><p>9 9 9</p></triangles>)")) {
  ASSERT_EQ(rc, 0);
  const oxDAEMesh* mesh = MeshOf(document);
  ASSERT_NE(mesh, nullptr);
  ASSERT_EQ(mesh->primitives.size(), 1u);
  const oxDAEMeshPrimitive& t = *mesh->primitives[0];
  EXPECT_EQ(t.type, oxDAEMeshPrimitive::EType::TRIANGLES);
  EXPECT_EQ(t.count, 2u);
  ASSERT_EQ(t.p.size(), 1u);
  EXPECT_EQ(t.p[0], (oxArray<int32_t>{0, 1, 2, 2, 1, 0}));
  ASSERT_EQ(t.inputs.size(), 1u);
  EXPECT_EQ(t.inputs[0]->source, mesh->vertices);
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(PrimitiveReading, PolygonsReadOneListPerP,
         Mesh(R"(<polygons count="2"><input semantic="VERTEX" source="#verts" offset="0"/>
                 <p>0 1 2</p><p>2 1 0</p></polygons>)")) {
  const oxDAEMeshPrimitive& p = *MeshOf(document)->primitives.at(0);
  ASSERT_EQ(p.p.size(), 2u);
  EXPECT_EQ(p.p[0], (oxArray<int32_t>{0, 1, 2}));
  EXPECT_EQ(p.p[1], (oxArray<int32_t>{2, 1, 0}));
}

TEST_XML(
    PrimitiveReading, PolygonsWithFewerPThanCountKeepEmptyLists,
    Mesh(
        R"(<polygons count="2"><input semantic="VERTEX" source="#verts" offset="0"/><p>0 1 2</p></polygons>)")) {
  const oxDAEMeshPrimitive& p = *MeshOf(document)->primitives.at(0);
  ASSERT_EQ(p.p.size(), 2u);
  EXPECT_EQ(p.p[0], (oxArray<int32_t>{0, 1, 2}));
  EXPECT_TRUE(p.p[1].empty());
  EXPECT_EQ(p.GetIndexCount(), 3u);
}

TEST_XML(PrimitiveReading, SurplusPElementsAreIgnored,
         Mesh(R"(<linestrips count="1"><input semantic="VERTEX" source="#verts" offset="0"/>
                 <p>0 1</p><p>1 2</p></linestrips>)")) {
  const oxDAEMeshPrimitive& p = *MeshOf(document)->primitives.at(0);
  ASSERT_EQ(p.p.size(), 1u);
  EXPECT_EQ(p.p[0], (oxArray<int32_t>{0, 1}));
}

TEST_XML(PrimitiveReading, PSplitByACommentIsGatheredIntoOneList,
         Mesh(R"(<triangles count="2"><input semantic="VERTEX" source="#verts" offset="0"/>
                 <p>0 1 2<!-- a comment -->2 1 0</p></triangles>)")) {
  const oxDAEMeshPrimitive& t = *MeshOf(document)->primitives.at(0);
  ASSERT_EQ(t.p.size(), 1u);
  EXPECT_EQ(t.p[0], (oxArray<int32_t>{0, 1, 2, 2, 1, 0}));
}

TEST_XML(PrimitiveReading, PSplitByAChildElementIsGatheredIntoOneList,
         Mesh(R"(<triangles count="2"><input semantic="VERTEX" source="#verts" offset="0"/>
                 <p>0 1 <b>9</b>2 2 <![CDATA[1 0]]></p></triangles>)")) {
  const oxDAEMeshPrimitive& t = *MeshOf(document)->primitives.at(0);
  EXPECT_EQ(t.p.at(0), (oxArray<int32_t>{0, 1, 2, 2, 1, 0}));
}

TEST_XML(PrimitiveReading, VcountIsReadForPolylists,
         Mesh(R"(<polylist count="2"><input semantic="VERTEX" source="#verts" offset="0"/>
                 <vcount>3 3</vcount><p>0 1 2 2 1 0</p></polylist>)")) {
  const oxDAEMeshPrimitive& p = *MeshOf(document)->primitives.at(0);
  EXPECT_EQ(p.type, oxDAEMeshPrimitive::EType::POLYLIST);
  EXPECT_EQ(p.vcount, (oxArray<int32_t>{3, 3}));
  ASSERT_EQ(p.p.size(), 1u);
  EXPECT_EQ(p.p[0].size(), 6u);
}

TEST_XML(PrimitiveReading, EveryKindHasItsType,
         Mesh(R"(<lines count="1"><p>0 1</p></lines><linestrips count="1"><p>0 1 2</p></linestrips>
                 <polygons count="1"><p>0 1 2</p></polygons><polylist count="1"><p>0 1 2</p></polylist>
                 <triangles count="1"><p>0 1 2</p></triangles><trifans count="1"><p>0 1 2</p></trifans>
                 <tristrips count="1"><p>0 1 2</p></tristrips>)")) {
  const oxDAEMesh* mesh = MeshOf(document);
  ASSERT_EQ(mesh->primitives.size(), 7u);
  const std::string_view tags[] = {"lines",     "linestrips", "polygons", "polylist",
                                   "triangles", "trifans",    "tristrips"};
  for (size_t i = 0; i < 7; ++i) {
    EXPECT_EQ(static_cast<size_t>(mesh->primitives[i]->type), i);
    EXPECT_EQ(oxDAEMeshPrimitive::kTags[i], tags[i]);
  }
}

TEST_XML(
    PrimitiveReading, LinesWithOnePAndALargeCountKeepOneListPerSegment,
    Mesh(
        R"(<lines count="3"><input semantic="VERTEX" source="#verts" offset="0"/><p>0 1 1 2 2 0</p></lines>)")) {
  const oxDAEMeshPrimitive& p = *MeshOf(document)->primitives.at(0);
  ASSERT_EQ(p.p.size(), 3u);
  EXPECT_EQ(p.p[0].size(), 6u);
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(
    PrimitiveReading, HugeCountOfListsIsBoundedWithAnError,
    Mesh(
        R"(<polygons count="4000000000"><p>0 1 2</p></polygons><lines count="1"><p>0 1</p></lines>)")) {
  ASSERT_EQ(rc, 0);
  const oxDAEMeshPrimitive& p = *MeshOf(document)->primitives.at(0);
  // The element spans 52 bytes up to the next element: at most 26 + 16 lists.
  EXPECT_EQ(p.p.size(), 42u);
  EXPECT_EQ(p.p[0], (oxArray<int32_t>{0, 1, 2}));
  EXPECT_EQ(log.entries, (std::vector{Error("<polygons> count 4000000000 is larger than its "
                                            "content can hold; keeping 42 index lists")}));
}

TEST_XML(PrimitiveReading, MaterialThatNamesNoElementKeepsItsText,
         Mesh(R"(<triangles count="1" material="symbol"><p>0 1 2</p></triangles>)")) {
  const oxDAEMeshPrimitive& t = *MeshOf(document)->primitives.at(0);
  EXPECT_EQ(t.material, "symbol");
  EXPECT_EQ(t.materialElement, nullptr);
  EXPECT_NE(SaveText().find(R"(<triangles count="1" material="symbol">)"), std::string::npos);
}

TEST_XML(PrimitiveReading, MaterialThatNamesAnIdIsResolvedAtOnce,
         Mesh(R"(<triangles count="1" material="pos"><p>0 1 2</p></triangles>)")) {
  EXPECT_EQ(MeshOf(document)->primitives.at(0)->materialElement, document.ResolveURI("#pos"));
}

TEST_XML(PrimitiveReading, UnknownChildIsReportedAgainstTheMesh,
         Mesh(R"(<polygons count="1"><p>0 1 2</p><ph><p>0</p><h>1</h></ph><extra/></polygons>)")) {
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <ph> in <mesh>"),
                                      Warning("unknown element <extra> in <mesh>")}));
}

TEST_F(PrimitiveReading, TenMillionIndicesReadInOneList) {
  std::string p;
  p.reserve(40'000'000);
  for (int i = 0; i < 10'000'000; ++i) {
    p += std::to_string(i % 1000);
    p += ' ';
  }
  ASSERT_EQ(
      LoadText(Mesh(
          R"(<triangles count="3333333"><input semantic="VERTEX" source="#verts" offset="0"/><p>)" +
          p + "</p></triangles>")),
      0);
  const oxDAEMeshPrimitive& t = *MeshOf(document)->primitives.at(0);
  ASSERT_EQ(t.p.size(), 1u);
  ASSERT_EQ(t.p[0].size(), 10'000'000u);
  EXPECT_EQ(t.p[0][1234567], 567);
  // The list is sized once: at most one spare slot beyond the values read.
  EXPECT_LE(t.p[0].capacity(), 10'000'001u);
}

OX_DOCUMENT_SUITE(InputReading);

TEST_XML(InputReading, AttributesAndSourceAreResolvedAtOnce,
         Mesh(R"(<triangles count="1"><input semantic="VERTEX" source="#verts" offset="0"/>
                 <input semantic="TEXCOORD" source="#pos" offset="1" set="2"/>
                 <input semantic="WHATEVER" source="#later" offset="2"/><p>0 0 0 1 1 1 2 2 2</p></triangles>
                 <source id="later"/>)")) {
  const oxDAEMeshPrimitive& t = *MeshOf(document)->primitives.at(0);
  ASSERT_EQ(t.inputs.size(), 3u);
  EXPECT_EQ(t.inputs[0]->semanticToken, EToken::VERTEX);
  EXPECT_EQ(t.inputs[0]->GetCommonAccessor(), nullptr);
  EXPECT_EQ(t.inputs[1]->offset, 1u);
  EXPECT_EQ(t.inputs[1]->set, 2u);
  EXPECT_EQ(t.inputs[1]->semanticToken, EToken::TEXCOORD);
  EXPECT_EQ(t.inputs[1]->source, document.ResolveURI("#pos"));
  EXPECT_NE(t.inputs[1]->GetCommonAccessor(), nullptr);
  EXPECT_EQ(t.inputs[1]->GetCommonAccessor()->count, 3u);
  // A source that comes later in the file is not resolved; its text is kept.
  EXPECT_EQ(t.inputs[2]->semanticToken, EToken::NONE);
  EXPECT_EQ(t.inputs[2]->source, nullptr);
  EXPECT_EQ(t.inputs[2]->sourceURI, "#later");
}

TEST_XML(
    InputReading, SetZeroIsNotWrittenAndOffsetZeroIs,
    Mesh(
        R"(<triangles count="1"><input semantic="TEXCOORD" source="#pos" offset="0" set="0"/><p>0 1 2</p></triangles>)")) {
  EXPECT_NE(SaveText().find(R"(<input offset="0" semantic="TEXCOORD" source="#pos"/>)"),
            std::string::npos);
}

TEST_XML(
    InputReading, SemanticIsWrittenInTheTokenSpelling,
    Mesh(
        R"(<triangles count="1"><input semantic="BOGUS" source="#nowhere" offset="1" set="3"/><p>0</p></triangles>)")) {
  const std::string xml = SaveText();
  EXPECT_NE(xml.find(R"(<input offset="1" semantic="" set="3" source="#nowhere"/>)"),
            std::string::npos);
  EXPECT_EQ(MeshOf(document)->primitives.at(0)->inputs.at(0)->semantic, "");
}

TEST_XML(
    InputReading, VerticesGetInputIsExactAndFirstWins,
    Mesh(
        R"(<vertices id="v2"><input semantic="POSITION" source="#pos"/><input semantic="NORMAL" source="#pos"/>
                 <input semantic="POSITION" source="#nowhere"/><bogus/></vertices>)")) {
  const oxDAEVertices* v = MeshOf(document)->vertices;
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v->id, "v2");
  ASSERT_EQ(v->inputs.size(), 3u);
  EXPECT_EQ(v->GetInput("POSITION"), v->inputs[0]);
  EXPECT_EQ(v->GetInput("NORMAL"), v->inputs[1]);
  EXPECT_EQ(v->GetInput("position"), nullptr);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <bogus> in <vertices>")}));
}

OX_DOCUMENT_SUITE(MeshWriting);

TEST_XML(
    MeshWriting, PolylistLeavesNoPolylistAndNoVcount,
    Mesh(R"(<polylist count="1" material="m"><input semantic="VERTEX" source="#verts" offset="0"/>
                 <vcount>3</vcount><p>0 1 2</p></polylist>)")) {
  const std::string xml = SaveText();
  EXPECT_EQ(xml.find("polylist"), std::string::npos);
  EXPECT_EQ(xml.find("vcount"), std::string::npos);
  // Its inputs and list land in the mesh itself.
  EXPECT_NE(
      xml.find("</vertices>\n        <input offset=\"0\" semantic=\"VERTEX\" source=\"#verts\"/>\n"
               "        <p>0 1 2</p>\n      </mesh>"),
      std::string::npos);
}

TEST_XML(MeshWriting, GeometryHoldingOnlyASplineWritesAnEmptyGeometry,
         Collada(R"(<library_geometries><geometry id="g"><spline closed="true"><source id="cv"/>
                    <control_vertices><input semantic="POSITION" source="#cv"/><extra/></control_vertices><extra/>
                    </spline></geometry></library_geometries>)")) {
  const auto* geometry = Find<oxDAEGeometry>("#g");
  ASSERT_NE(geometry, nullptr);
  ASSERT_NE(geometry->spline, nullptr);
  EXPECT_TRUE(geometry->spline->closed);
  EXPECT_EQ(geometry->spline->sources.size(), 1u);
  ASSERT_NE(geometry->spline->controlVertices, nullptr);
  EXPECT_EQ(geometry->spline->controlVertices->GetInput("POSITION")->source,
            document.ResolveURI("#cv"));
  EXPECT_EQ(geometry->mesh, nullptr);
  EXPECT_EQ(log.Count(), 0u);
  EXPECT_NE(SaveText().find(R"(<geometry id="g"/>)"), std::string::npos);
}

TEST_XML(
    MeshWriting, WholeMeshIsWrittenInSchemaOrder,
    Mesh(
        R"(<triangles count="1"><input semantic="VERTEX" source="#verts" offset="0"/><p>0 1 2</p></triangles>
                 <lines count="1"><p>0 1</p></lines>)",
        R"(name="Tri")")) {
  EXPECT_EQ(SaveText(),
            "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
            "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\">\n"
            "  <library_geometries>\n"
            "    <geometry name=\"Tri\" id=\"Tri\">\n"
            "      <mesh>\n"
            "        <source id=\"pos\">\n"
            "          <float_array id=\"pos-a\" count=\"9\">0 0 0 1 0 0 0 1 0</float_array>\n"
            "          <technique_common>\n"
            "            <accessor count=\"3\" stride=\"3\" source=\"#pos-a\"/>\n"
            "          </technique_common>\n"
            "        </source>\n"
            "        <vertices id=\"verts\">\n"
            "          <input offset=\"0\" semantic=\"POSITION\" source=\"#pos\"/>\n"
            "        </vertices>\n"
            "        <triangles count=\"1\">\n"
            "          <input offset=\"0\" semantic=\"VERTEX\" source=\"#verts\"/>\n"
            "          <p>0 1 2</p>\n"
            "        </triangles>\n"
            "        <lines count=\"1\">\n"
            "          <p>0 1</p>\n"
            "        </lines>\n"
            "      </mesh>\n"
            "    </geometry>\n"
            "  </library_geometries>\n"
            "</COLLADA>\n");
}

TEST_XML(
    MeshWriting, UnknownChildrenOfGeometryAndMeshWarn,
    Collada(
        R"(<library_geometries><geometry id="g"><convex_mesh/><mesh><extra/><source id="s"/></mesh>
                    </geometry></library_geometries>)")) {
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <convex_mesh> in <geometry>"),
                                      Warning("unknown element <extra> in <mesh>")}));
  EXPECT_EQ(MeshOf(document)->sources.size(), 1u);
}
