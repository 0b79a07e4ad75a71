// The drawable form of a mesh: vertices per distinct index tuple, parts per
// material symbol and kind, and the values each vertex reads.
#include <oxDAEConvert/oxDAEMeshTriangles.h>

#include "oxTestSupport.h"

using OxDAEConvert::MeshCorners;
using OxDAEConvert::MeshTriangles;
using OxDAEConvert::oxMeshCorners;
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
  oxMeshCorners Corners() {
    const auto* geometry = oxDAEGeometry::DynamicCast(document.ResolveURI("#g"));
    EXPECT_NE(geometry, nullptr);
    return geometry ? MeshCorners(*geometry) : oxMeshCorners{};
  }
  oxMeshTriangles Kept(const oxMeshCorners& corners) {
    const auto* geometry = oxDAEGeometry::DynamicCast(document.ResolveURI("#g"));
    EXPECT_NE(geometry, nullptr);
    return geometry ? MeshTriangles(*geometry, corners) : oxMeshTriangles{};
  }

  // Each corner of `corners` reads the position and record of the vertex
  // MeshTriangles gives the same corner.
  void ExpectSameCorners(const oxMeshCorners& corners, const oxMeshTriangles& mesh) {
    ASSERT_EQ(corners.parts.size(), mesh.parts.size());
    for (size_t p = 0; p < mesh.parts.size(); ++p) {
      EXPECT_EQ(corners.parts[p].symbol, mesh.parts[p].symbol);
      EXPECT_EQ(corners.parts[p].lines, mesh.parts[p].lines);
      ASSERT_EQ(corners.parts[p].corners.size(), mesh.parts[p].indices.size());
      for (size_t i = 0; i < mesh.parts[p].indices.size(); ++i) {
        const uint32_t entry = corners.parts[p].corners[i];
        const uint32_t vertex = mesh.parts[p].indices[i];
        EXPECT_EQ(corners.positions.values[entry], mesh.positions[vertex]) << p << " " << i;
        EXPECT_EQ(corners.positions.records[entry], mesh.positionRecords[vertex]) << p << " " << i;
      }
    }
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

// A polygon, a line and a triangle of another material: each corner reads
// what the vertex of the same corner of MeshTriangles reads, and every
// record of the source is an entry of its own, in record order.
TEST_XML(MeshTrianglesTest, CornersReadWhatTheVerticesOfTheSameCornersRead,
         SquareDocument(R"(<polygons count="1" material="a">
           <input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2 3</p></polygons>
           <lines count="1" material="a"><input semantic="VERTEX" source="#v" offset="0"/>
           <p>2 3</p></lines>
           <triangles count="1" material="b"><input semantic="VERTEX" source="#v" offset="0"/>
           <input semantic="COLOR" source="#c" offset="1"/><p>3 0 1 0 2 0</p></triangles>)")) {
  const oxMeshCorners corners = Corners();
  EXPECT_EQ(corners.positions.values,
            (OxKernel::oxArray<Float3>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}));
  EXPECT_EQ(corners.positions.records, (OxKernel::oxArray<uint32_t>{0, 1, 2, 3}));
  ASSERT_EQ(corners.parts.size(), 3u);
  EXPECT_EQ(corners.parts[0].corners, (OxKernel::oxArray<uint32_t>{3, 0, 1, 1, 2, 3}));
  EXPECT_EQ(corners.parts[1].corners, (OxKernel::oxArray<uint32_t>{2, 3}));
  EXPECT_EQ(corners.parts[2].corners, (OxKernel::oxArray<uint32_t>{3, 1, 2}));
  EXPECT_FALSE(corners.normals);
  ExpectSameCorners(corners, Mesh());
}

// Indices past the source and negative ones are entries of their own after
// the source's records, once each: zeros, with the record MeshTriangles
// gives them (0 for a negative one).
TEST_XML(MeshTrianglesTest, CornersPastTheSourceOrNegativeAreEntriesOfTheirOwn,
         SquareDocument(R"(<triangles count="2"><input semantic="VERTEX" source="#v" offset="0"/>
           <p>0 1 9 -3 9 -1</p></triangles>)")) {
  const oxMeshCorners corners = Corners();
  ASSERT_EQ(corners.positions.values.size(), 6u);
  EXPECT_EQ(corners.positions.values[4], (Float3{0, 0, 0}));
  EXPECT_EQ(corners.positions.records[4], 9u);
  EXPECT_EQ(corners.positions.values[5], (Float3{0, 0, 0}));
  EXPECT_EQ(corners.positions.records[5], 0u);
  ASSERT_EQ(corners.parts.size(), 1u);
  EXPECT_EQ(corners.parts[0].corners, (OxKernel::oxArray<uint32_t>{0, 1, 4, 5, 4, 5}));
  ExpectSameCorners(corners, Mesh());
}

// A normal anywhere in the mesh is noted: a host that makes normals from
// the triangles around a vertex needs them all.
TEST_XML(MeshTrianglesTest, CornersNoteANormalInput,
         SquareDocument(R"(<triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/>
           <input semantic="NORMAL" source="#p" offset="0"/><p>0 1 2</p></triangles>)")) {
  EXPECT_TRUE(Corners().normals);
}

// Keeping the second of three triangles of one part and the first of
// another: each keeps its triangles' values and order, over the vertices
// they use; the line segment is made though nothing names it.
TEST_XML(MeshTrianglesTest, OnlyTheKeptTrianglesAndTheirVerticesAreMade,
         SquareDocument(R"(<triangles count="2" material="a">
           <input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2 2 3 0</p></triangles>
           <lines count="1" material="a"><input semantic="VERTEX" source="#v" offset="0"/>
           <p>1 3</p></lines>
           <triangles count="2" material="b">
           <input semantic="VERTEX" source="#v" offset="0"/><p>3 1 0 1 2 3</p></triangles>
           <triangles count="1" material="a">
           <input semantic="VERTEX" source="#v" offset="0"/>
           <input semantic="TEXCOORD" source="#t" offset="0" set="0"/><p>0 1 1</p></triangles>)")) {
  oxMeshCorners corners = Corners();
  ASSERT_EQ(corners.parts.size(), 3u);
  corners.parts[0].keep = {false, true, false};
  corners.parts[2].keep = {true, false};
  const oxMeshTriangles mesh = Kept(corners);
  ASSERT_EQ(mesh.parts.size(), 3u);
  EXPECT_EQ(mesh.parts[0].symbol, "a");
  EXPECT_EQ(mesh.parts[0].indices, (OxKernel::oxArray<uint32_t>{0, 1, 2}));
  EXPECT_EQ(mesh.parts[1].indices, (OxKernel::oxArray<uint32_t>{3, 4}));
  EXPECT_EQ(mesh.parts[2].symbol, "b");
  EXPECT_EQ(mesh.parts[2].indices, (OxKernel::oxArray<uint32_t>{5, 6, 7}));
  EXPECT_EQ(
      mesh.positions,
      (OxKernel::oxArray<Float3>{
          {1, 1, 0}, {0, 1, 0}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}, {1, 0, 0}, {0, 0, 0}}));
  EXPECT_EQ(mesh.positionRecords, (OxKernel::oxArray<uint32_t>{2, 3, 0, 1, 3, 3, 1, 0}));
}

// Polygons cut into several triangles: a polygon none of whose triangles
// is kept is passed over whole, and the flags after it still name the
// triangles they named, here the triangle (3 2 1) and the second of the
// last square's two, (2 3 0).
TEST_XML(MeshTrianglesTest, PolygonsKeepingNoTriangleArePassedOverInStep,
         SquareDocument(R"(<polylist count="3"><input semantic="VERTEX" source="#v" offset="0"/>
           <vcount>4 3 4</vcount><p>0 1 2 3 3 2 1 1 2 3 0</p></polylist>)")) {
  oxMeshCorners corners = Corners();
  ASSERT_EQ(corners.parts.size(), 1u);
  corners.parts[0].keep = {false, false, true, false, true};
  const oxMeshTriangles mesh = Kept(corners);
  ASSERT_EQ(mesh.parts.size(), 1u);
  EXPECT_EQ(mesh.parts[0].indices, (OxKernel::oxArray<uint32_t>{0, 1, 2, 1, 0, 3}));
  EXPECT_EQ(mesh.positionRecords, (OxKernel::oxArray<uint32_t>{3, 2, 1, 0}));
  EXPECT_EQ(mesh.positions,
            (OxKernel::oxArray<Float3>{{0, 1, 0}, {1, 1, 0}, {1, 0, 0}, {0, 0, 0}}));
}

// Without keep flags every triangle is made, as MeshTriangles makes them.
TEST_XML(MeshTrianglesTest, CornersWithoutKeepFlagsMakeTheWholeMesh,
         SquareDocument(R"(<polylist count="2"><input semantic="VERTEX" source="#v" offset="0"/>
           <vcount>4 3</vcount><p>0 1 2 3 3 2 1</p></polylist>)")) {
  const oxMeshTriangles whole = Mesh();
  const oxMeshTriangles kept = Kept(Corners());
  EXPECT_EQ(kept.positions, whole.positions);
  ASSERT_EQ(kept.parts.size(), 1u);
  EXPECT_EQ(kept.parts[0].indices, whole.parts[0].indices);
}

// A source of 10,000 records read by one triangle is not taken whole: its
// three records are entries in the order the corners name them.
TEST_XML(MeshTrianglesTest, SourceFarLargerThanItsCornersGivesOnlyTheRecordsRead,
         oxtest::Collada(OxKernel::oxConcat(
             R"(<library_geometries><geometry id="g"><mesh>
             <source id="p"><float_array id="pa" count="30000">)",
             [] {
               std::string values;
               for (int i = 0; i < 30000; ++i)
                 values += std::to_string(i % 7) + " ";
               return values;
             }(),
             R"(</float_array><technique_common><accessor source="#pa" count="10000" stride="3"/>
             </technique_common></source>
             <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
             <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/>
             <p>9000 5 9000</p></triangles></mesh></geometry></library_geometries>)"))) {
  const oxMeshCorners corners = Corners();
  EXPECT_EQ(corners.positions.records, (OxKernel::oxArray<uint32_t>{9000, 5}));
  EXPECT_EQ(corners.positions.values, (OxKernel::oxArray<Float3>{{1, 2, 3}, {1, 2, 3}}));
  ASSERT_EQ(corners.parts.size(), 1u);
  EXPECT_EQ(corners.parts[0].corners, (OxKernel::oxArray<uint32_t>{0, 1, 0}));
  ExpectSameCorners(corners, Mesh());
}
