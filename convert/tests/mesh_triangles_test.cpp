// The drawable form of a mesh: vertices per distinct index tuple, parts per
// material symbol and kind, and the values each vertex reads.
#include <oxDAEConvert/oxDAEMeshTriangles.h>

#include "oxTestSupport.h"

using OxDAEConvert::MeshTriangles;
using OxDAEConvert::oxMeshTriangles;
using OxDAEReader::oxDAEGeometry;

namespace {

// Geometry "g": positions `p` (a unit square's corners), texture
// coordinates `t`, and `primitives`.
std::string SquareDocument(std::string_view primitives) {
  return oxtest::Collada(OxKernel::oxConcat(
      R"(<library_geometries><geometry id="g"><mesh>
      <source id="p"><float_array id="pa" count="12">0 0 0 1 0 0 1 1 0 0 1 0</float_array>
      <technique_common><accessor source="#pa" count="4" stride="3"/></technique_common></source>
      <source id="t"><float_array id="ta" count="4">0.25 0.5 0.75 1</float_array>
      <technique_common><accessor source="#ta" count="2" stride="2"/></technique_common></source>
      <source id="c"><float_array id="ca" count="3">0.5 0.25 1</float_array>
      <technique_common><accessor source="#ca" count="1" stride="3"/></technique_common></source>
      <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>)",
      primitives, R"(</mesh></geometry></library_geometries>)"));
}

using Float3 = std::array<float, 3>;
using Float2 = std::array<float, 2>;

}  // namespace

class MeshTrianglesTest : public oxtest::DocumentTest {
 protected:
  oxMeshTriangles Mesh() {
    const auto* geometry = oxDAEGeometry::DynamicCast(document.ResolveURI("#g"));
    EXPECT_NE(geometry, nullptr);
    return geometry ? MeshTriangles(*geometry) : oxMeshTriangles{};
  }
};

TEST_XML(MeshTrianglesTest, QuadPolygonIsTwoTrianglesOverItsFourCorners,
         SquareDocument(R"(<polygons count="1" material="red">
           <input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2 3</p></polygons>)")) {
  const oxMeshTriangles mesh = Mesh();
  // The first ear clipped is the one at the first corner: (3, 0, 1).
  EXPECT_EQ(mesh.positions,
            (OxKernel::oxArray<Float3>{{0, 1, 0}, {0, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
  EXPECT_EQ(mesh.positionRecords, (OxKernel::oxArray<uint32_t>{3, 0, 1, 2}));
  EXPECT_TRUE(mesh.normals.empty());
  EXPECT_TRUE(mesh.texcoords.empty());
  EXPECT_TRUE(mesh.colors.empty());
  ASSERT_EQ(mesh.parts.size(), 1u);
  EXPECT_EQ(mesh.parts[0].symbol, "red");
  EXPECT_FALSE(mesh.parts[0].lines);
  EXPECT_EQ(mesh.parts[0].indices, (OxKernel::oxArray<uint32_t>{0, 1, 2, 2, 3, 0}));
}

TEST_XML(MeshTrianglesTest, EachIndexTupleIsOneVertexWithTheValuesItReads,
         SquareDocument(R"(<triangles count="2">
           <input semantic="VERTEX" source="#v" offset="0"/>
           <input semantic="TEXCOORD" source="#t" offset="1" set="0"/>
           <p>0 0 1 1 2 1 0 0 2 1 3 0</p></triangles>)")) {
  const oxMeshTriangles mesh = Mesh();
  EXPECT_EQ(mesh.positions,
            (OxKernel::oxArray<Float3>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}));
  EXPECT_EQ(mesh.texcoords,
            (OxKernel::oxArray<Float2>{{0.25f, 0.5f}, {0.75f, 1}, {0.75f, 1}, {0.25f, 0.5f}}));
  ASSERT_EQ(mesh.parts.size(), 1u);
  EXPECT_EQ(mesh.parts[0].indices, (OxKernel::oxArray<uint32_t>{0, 1, 2, 0, 2, 3}));
}

TEST_XML(MeshTrianglesTest, PartsAreBySymbolAndKindAndShareOneVertexList,
         SquareDocument(R"(<triangles count="1" material="a">
           <input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
           <lines count="1" material="a"><input semantic="VERTEX" source="#v" offset="0"/>
           <p>2 3</p></lines>
           <triangles count="1" material="b"><input semantic="VERTEX" source="#v" offset="0"/>
           <input semantic="COLOR" source="#c" offset="0"/><p>0 0 0</p></triangles>)")) {
  const oxMeshTriangles mesh = Mesh();
  ASSERT_EQ(mesh.parts.size(), 3u);
  EXPECT_EQ(mesh.parts[0].symbol, "a");
  EXPECT_FALSE(mesh.parts[0].lines);
  EXPECT_EQ(mesh.parts[0].indices, (OxKernel::oxArray<uint32_t>{0, 1, 2}));
  EXPECT_TRUE(mesh.parts[1].lines);
  EXPECT_EQ(mesh.parts[1].indices, (OxKernel::oxArray<uint32_t>{3, 4}));
  EXPECT_EQ(mesh.parts[2].symbol, "b");
  EXPECT_EQ(mesh.parts[2].indices, (OxKernel::oxArray<uint32_t>{5, 5, 5}));
  EXPECT_EQ(mesh.positionRecords, (OxKernel::oxArray<uint32_t>{0, 1, 2, 2, 3, 0}));
  // Only the last part reads a colour: the others read zeros, alpha 1.
  using Float4 = std::array<float, 4>;
  ASSERT_EQ(mesh.colors.size(), 6u);
  EXPECT_EQ(mesh.colors[0], (Float4{0, 0, 0, 1}));
  EXPECT_EQ(mesh.colors[5], (Float4{0.5f, 0.25f, 1, 1}));
}

TEST_XML(MeshTrianglesTest, IndexPastItsSourceReadsZeros,
         SquareDocument(R"(<triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/>
           <p>0 1 9</p></triangles>)")) {
  const oxMeshTriangles mesh = Mesh();
  ASSERT_EQ(mesh.positions.size(), 3u);
  EXPECT_EQ(mesh.positions[2], (Float3{0, 0, 0}));
  EXPECT_EQ(mesh.positionRecords[2], 9u);
}

TEST_XML(MeshTrianglesTest, GeometryWithoutAMeshIsEmpty,
         oxtest::Collada(R"(<library_geometries><geometry id="g"/></library_geometries>)")) {
  const oxMeshTriangles mesh = Mesh();
  EXPECT_TRUE(mesh.positions.empty());
  EXPECT_TRUE(mesh.parts.empty());
}

// A count far beyond the list ends the counts there: what comes before it is
// cut, and room is reserved for what the list holds, not for what the count
// claims (two thousand million corners would not fit in memory).
TEST_XML(MeshTrianglesTest, CountBeyondTheListReservesNothingForIt,
         SquareDocument(R"(<polylist count="2">
           <input semantic="VERTEX" source="#v" offset="0"/>
           <vcount>3 2000000000</vcount><p>0 1 2 3</p></polylist>)")) {
  const oxMeshTriangles mesh = Mesh();
  ASSERT_EQ(mesh.parts.size(), 1u);
  EXPECT_EQ(mesh.parts[0].indices, (OxKernel::oxArray<uint32_t>{0, 1, 2}));
  EXPECT_EQ(mesh.positionRecords, (OxKernel::oxArray<uint32_t>{0, 1, 2}));
}
