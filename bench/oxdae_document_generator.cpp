#include "oxdae_document_generator.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "oxdae_generator_support.h"

namespace oxdae_bench {

namespace {

// --- Numbers as exporters write them ------------------------------------------

// Mesh sizes from a tenth of a unit to a few thousand units. A table rather
// than a power function keeps the values independent of the maths library.
constexpr double kScales[] = {0.1, 0.35, 1.0, 2.5, 10.0, 40.0, 100.0, 350.0, 1000.0};
// The near-zero components that exporters leave in normals.
constexpr double kTinyScales[] = {1e-9, 1e-8, 1e-7, 1e-6, 1e-5};

// Mostly fixed notation with one to six decimals; now and then a whole number
// or scientific notation.
void PutCoordinate(TextSink& out, Random& random, double value) {
  const uint32_t style = random.Below(100);
  if (style < 3) {
    out.PutScientific(value, 2 + static_cast<int>(random.Below(5)));
  } else if (style < 6) {
    out.PutFixed(value, 0);
  } else {
    out.PutFixed(value, 1 + static_cast<int>(random.Below(6)));
  }
}

// A unit-vector component: four to six decimals, scientific notation for the
// tiny values.
void PutNormalComponent(TextSink& out, Random& random, double value) {
  if (std::fabs(value) < 1e-3) {
    out.PutScientific(value, 3 + static_cast<int>(random.Below(4)));
  } else {
    out.PutFixed(value, 4 + static_cast<int>(random.Below(3)));
  }
}

struct MeshPlan {
  uint32_t index = 0;
  uint32_t positions = 0;  // records of each source
  uint32_t normals = 0;
  uint32_t texcoords = 0;
  uint32_t triangles = 0;
  uint32_t polygons = 0;  // faces of the polylist
  double scale = 1.0;
  double center[3] = {0.0, 0.0, 0.0};
};

MeshPlan PlanMesh(uint32_t index, uint32_t vertices, Random& random) {
  MeshPlan plan;
  plan.index = index;
  plan.positions = vertices;
  plan.normals = vertices;
  plan.texcoords = vertices + vertices / 4;  // texture seams split vertices
  plan.triangles = vertices;
  plan.polygons = std::max<uint32_t>(1, vertices / 2);
  plan.scale = kScales[random.Below(std::size(kScales))] * random.Between(1.0, 2.0);
  for (double& c : plan.center)
    c = plan.scale * random.Between(-2.0, 2.0);
  return plan;
}

void PutPosition(TextSink& out, Random& random, const MeshPlan& plan) {
  for (double c : plan.center) {
    out.Put(' ');
    PutCoordinate(out, random, c + plan.scale * random.Between(-1.0, 1.0));
  }
}

void PutNormal(TextSink& out, Random& random, const MeshPlan&) {
  double v[3] = {random.Between(-1.0, 1.0), random.Between(-1.0, 1.0), random.Between(-1.0, 1.0)};
  double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  if (length < 1e-6) {
    v[0] = v[2] = 0.0;
    v[1] = length = 1.0;
  }
  for (double c : v) {
    double component = c / length;
    if (random.Below(50) == 0) {
      const double tiny = kTinyScales[random.Below(std::size(kTinyScales))];
      component = (component < 0 ? -tiny : tiny) * random.Between(1.0, 10.0);
    }
    out.Put(' ');
    PutNormalComponent(out, random, component);
  }
}

void PutTexcoord(TextSink& out, Random& random, const MeshPlan&) {
  for (int k = 0; k < 2; ++k) {
    out.Put(' ');
    out.PutFixed(random.Between(-0.25, 1.25), 4 + static_cast<int>(random.Below(3)));
  }
}

// A record index near `face`'s place along the list, so that neighbouring
// faces share nearby records as in a real mesh.
uint32_t NearbyIndex(Random& random, uint32_t records, uint64_t face, uint64_t faces) {
  const uint64_t base = face * records / faces;
  return static_cast<uint32_t>((base + random.Below(48)) % records);
}

// One polygon corner: position, normal and texture coordinate indices.
void PutCorner(TextSink& out, Random& random, const MeshPlan& plan, uint64_t face, uint64_t faces) {
  for (uint32_t records : {plan.positions, plan.normals, plan.texcoords}) {
    out.Put(' ');
    out.PutUInt(NearbyIndex(random, records, face, faces));
  }
}

// --- Markup ------------------------------------------------------------------

using PutRecord = void (*)(TextSink&, Random&, const MeshPlan&);

struct SourceLayout {
  std::string_view name;                 // "positions", "normals", "uv"
  std::vector<std::string_view> params;  // a name for each value of a record
  uint32_t records;
  PutRecord put;
};

// A float source; each record writes the blank before each of its values.
void WriteSource(TextSink& out, Random& random, const MeshPlan& plan, const SourceLayout& layout) {
  const std::string id = MeshID(plan.index) + "-" + std::string(layout.name);
  WriteArraySource(out, {8, id, "float_array", "float", layout.params, layout.records, ""},
                   [&](uint32_t) { layout.put(out, random, plan); });
}

// Starts a primitive element with its three inputs at offsets 0, 1 and 2.
void StartPrimitive(TextSink& out, std::string_view tag, const MeshPlan& plan, uint32_t faces,
                    uint32_t material) {
  const std::string id = MeshID(plan.index);
  out.Put("        <");
  out.Put(tag);
  PutAttribute(out, "material", "material-" + std::to_string(material) + "-symbol");
  PutUIntAttribute(out, "count", faces);
  out.Put(">\n          <input semantic=\"VERTEX\"");
  PutAttribute(out, "source", "#" + id + "-vertices");
  out.Put(" offset=\"0\"/>\n          <input semantic=\"NORMAL\"");
  PutAttribute(out, "source", "#" + id + "-normals");
  out.Put(" offset=\"1\"/>\n          <input semantic=\"TEXCOORD\"");
  PutAttribute(out, "source", "#" + id + "-uv");
  out.Put(" offset=\"2\" set=\"0\"/>\n");
}

void EndPrimitive(TextSink& out, std::string_view tag) {
  out.Put("        </");
  out.Put(tag);
  out.Put(">\n");
}

void WriteTriangles(TextSink& out, Random& random, const MeshPlan& plan) {
  StartPrimitive(out, "triangles", plan, plan.triangles, plan.index % kMaterials);
  out.Put("          <p>");
  for (uint32_t face = 0; face < plan.triangles; ++face) {
    if (face % kRecordsPerLine == 0) out.Put('\n');
    for (int corner = 0; corner < 3; ++corner)
      PutCorner(out, random, plan, face, plan.triangles);
  }
  out.Put("\n          </p>\n");
  EndPrimitive(out, "triangles");
}

// Mostly quads, some triangles, pentagons and hexagons.
std::vector<uint8_t> PolygonSizes(Random& random, uint32_t polygons) {
  constexpr uint8_t kSizes[10] = {3, 3, 4, 4, 4, 4, 4, 4, 5, 6};
  std::vector<uint8_t> sizes(polygons);
  for (uint8_t& size : sizes)
    size = kSizes[random.Below(10)];
  return sizes;
}

void WritePolylist(TextSink& out, Random& random, const MeshPlan& plan) {
  const std::vector<uint8_t> sizes = PolygonSizes(random, plan.polygons);
  StartPrimitive(out, "polylist", plan, plan.polygons, (plan.index + 1) % kMaterials);
  out.Put("          <vcount>");
  for (uint8_t size : sizes) {
    out.PutUInt(size);
    out.Put(' ');
  }
  out.Put("</vcount>\n          <p>");
  for (uint32_t face = 0; face < plan.polygons; ++face) {
    if (face % kRecordsPerLine == 0) out.Put('\n');
    for (uint8_t corner = 0; corner < sizes[face]; ++corner)
      PutCorner(out, random, plan, face, plan.polygons);
  }
  out.Put("\n          </p>\n");
  EndPrimitive(out, "polylist");
}

void WriteMesh(TextSink& out, Random& random, const MeshPlan& plan) {
  const std::string id = MeshID(plan.index);
  out.Put("    <geometry");
  PutAttribute(out, "id", id);
  PutAttribute(out, "name", "Mesh " + std::to_string(plan.index));
  out.Put(">\n      <mesh>\n");
  WriteSource(out, random, plan, {"positions", {"X", "Y", "Z"}, plan.positions, PutPosition});
  WriteSource(out, random, plan, {"normals", {"X", "Y", "Z"}, plan.normals, PutNormal});
  WriteSource(out, random, plan, {"uv", {"S", "T"}, plan.texcoords, PutTexcoord});
  WriteVertices(out, 8, id);
  WriteTriangles(out, random, plan);
  WritePolylist(out, random, plan);
  out.Put("      </mesh>\n    </geometry>\n");
}

// --- Skin ----------------------------------------------------------------------

constexpr uint32_t kSkinJoints = 64;
constexpr uint32_t kInfluencesPerVertex = 4;  // on average
constexpr uint32_t kCountsPerLine = 64;
// What one influence costs in the text: its weight and its two indices.
constexpr double kBytesPerInfluence = 18.0;
constexpr double kSkinShare = 0.5;  // of a document's budget, at most

// Influences per vertex: pairs of vertices share eight, split 4/4, 3/5 or
// 2/6, so that the total is four a vertex.
std::vector<uint8_t> InfluenceCounts(Random& random, uint32_t vertices) {
  std::vector<uint8_t> counts(vertices, kInfluencesPerVertex);
  for (uint32_t i = 0; i + 1 < vertices; i += 2) {
    const auto spread = static_cast<uint8_t>(random.Below(3));
    counts[i] = static_cast<uint8_t>(kInfluencesPerVertex + spread);
    counts[i + 1] = static_cast<uint8_t>(kInfluencesPerVertex - spread);
  }
  return counts;
}

// The inverse bind matrices: a translation per joint, one matrix a line.
void WriteBindPoses(TextSink& out, Random& random, const std::string& id) {
  out.Put("        <source id=\"" + id + "\">\n          <float_array id=\"" + id +
          "-array\" count=\"");
  out.PutUInt(uint64_t{kSkinJoints} * 16);
  out.Put("\">");
  for (uint32_t joint = 0; joint < kSkinJoints; ++joint) {
    out.Put("\n1 0 0 ");
    out.PutFixed(random.Between(-50.0, 50.0), 4);
    out.Put(" 0 1 0 ");
    out.PutFixed(random.Between(-50.0, 50.0), 4);
    out.Put(" 0 0 1 ");
    out.PutFixed(random.Between(-50.0, 50.0), 4);
    out.Put(" 0 0 0 1");
  }
  out.Put(
      "\n          </float_array>\n          <technique_common>\n            <accessor source=\"#" +
      id + "-array\" count=\"");
  out.PutUInt(kSkinJoints);
  out.Put(
      "\" stride=\"16\">\n              <param name=\"TRANSFORM\" type=\"float4x4\"/>\n"
      "            </accessor>\n          </technique_common>\n        </source>\n");
}

// One weight per influence; the weights of a vertex add up to one.
void WriteWeights(TextSink& out, Random& random, const std::string& id,
                  const std::vector<uint8_t>& counts, uint32_t influences) {
  std::vector<double> weights;
  weights.reserve(influences);
  for (uint8_t count : counts) {
    double raw[2 * kInfluencesPerVertex];
    double sum = 0.0;
    for (uint8_t k = 0; k < count; ++k)
      sum += raw[k] = random.Between(0.05, 1.0);
    for (uint8_t k = 0; k < count; ++k)
      weights.push_back(raw[k] / sum);
  }
  WriteArraySource(out, {8, id, "float_array", "float", {"WEIGHT"}, influences, " "},
                   [&](uint32_t i) { out.PutFixed(weights[i], 3 + static_cast<int>(i % 4)); });
}

void WriteVertexWeights(TextSink& out, Random& random, const std::string& id,
                        const std::vector<uint8_t>& counts) {
  out.Put("        <vertex_weights count=\"");
  out.PutUInt(counts.size());
  out.Put("\">\n          <input semantic=\"JOINT\" source=\"#" + id +
          "-joints\" offset=\"0\"/>\n          <input semantic=\"WEIGHT\" source=\"#" + id +
          "-weights\" offset=\"1\"/>\n          <vcount>");
  for (size_t i = 0; i < counts.size(); ++i) {
    out.Put(i % kCountsPerLine == 0 ? '\n' : ' ');
    out.PutUInt(counts[i]);
  }
  out.Put("\n          </vcount>\n          <v>");
  // Neighbouring vertices hang on neighbouring joints, as along a limb.
  uint64_t influence = 0;
  for (size_t vertex = 0; vertex < counts.size(); ++vertex) {
    const uint64_t limb = vertex * kSkinJoints / counts.size();
    for (uint8_t k = 0; k < counts[vertex]; ++k, ++influence) {
      out.Put(influence % kRecordsPerLine == 0 ? '\n' : ' ');
      out.PutUInt((limb + random.Below(4)) % kSkinJoints);
      out.Put(' ');
      out.PutUInt(influence);
    }
  }
  out.Put("\n          </v>\n        </vertex_weights>\n");
}

// The controller `id`, a skin of the mesh `meshID` with about `influences`
// joint influences.
void WriteSkin(TextSink& out, Random& random, const std::string& id, uint32_t influences,
               const std::string& meshID) {
  const std::vector<uint8_t> counts = InfluenceCounts(random, influences / kInfluencesPerVertex);
  out.Put("    <controller id=\"" + id + "\" name=\"Skin\">\n      <skin source=\"#" + meshID +
          "\">\n        <bind_shape_matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</bind_shape_matrix>\n");
  WriteArraySource(out, {8, id + "-joints", "Name_array", "name", {"JOINT"}, kSkinJoints, " "},
                   [&](uint32_t i) { out.Put("joint-" + std::to_string(i)); });
  WriteBindPoses(out, random, id + "-bind-poses");
  uint32_t total = 0;
  for (uint8_t count : counts)
    total += count;
  WriteWeights(out, random, id + "-weights", counts, total);
  out.Put("        <joints>\n          <input semantic=\"JOINT\" source=\"#" + id +
          "-joints\"/>\n          <input semantic=\"INV_BIND_MATRIX\" source=\"#" + id +
          "-bind-poses\"/>\n        </joints>\n");
  WriteVertexWeights(out, random, id, counts);
  out.Put("      </skin>\n    </controller>\n");
}

// <library_controllers> with `influences` joint influences shared out
// evenly over the skins "skin-0", "skin-1"... of the mesh `meshID`.
void WriteSkinLibrary(TextSink& out, Random& random, uint32_t influences, uint32_t skins,
                      const std::string& meshID) {
  out.Put("  <library_controllers>\n");
  for (uint32_t i = 0; i < skins; ++i) {
    const uint32_t share = influences / skins + (i < influences % skins ? 1 : 0);
    WriteSkin(out, random, "skin-" + std::to_string(i), share, meshID);
  }
  out.Put("  </library_controllers>\n");
}

// How many pieces of about `pieceBytes` make up `bytes`: at least one.
uint32_t PieceCount(double bytes, uint64_t pieceBytes) {
  const double pieces = std::round(bytes / static_cast<double>(pieceBytes));
  return static_cast<uint32_t>(std::clamp(pieces, 1.0, 1e9));
}

// The skin's text, made before the meshes so that its size is known when
// they are sized: `wanted` influences at most, and no more than its share
// of `bytes`; in one skin, or in skins of about `pieceBytes` each.
std::string SkinText(Random& random, uint32_t wanted, uint64_t bytes, uint64_t pieceBytes) {
  const double fit = kSkinShare * static_cast<double>(bytes) / kBytesPerInfluence;
  const auto influences = static_cast<uint32_t>(std::min(static_cast<double>(wanted), fit));
  if (influences < kInfluencesPerVertex) return {};
  const uint32_t skins =
      pieceBytes == 0 ? 1 : PieceCount(influences * kBytesPerInfluence, pieceBytes);
  TextSink out;
  WriteSkinLibrary(out, random, influences, std::min(skins, influences / kInfluencesPerVertex),
                   MeshID(0));
  return out.Take();
}

// --- Document ------------------------------------------------------------------

constexpr double kMeshBytes = 8e6;     // about one mesh per 8 MB...
constexpr uint32_t kFewestMeshes = 3;  // ...but at least three
constexpr uint32_t kMostMeshes = 24;
constexpr uint32_t kFewestVertices = 8;
constexpr double kFirstBytesPerVertex = 170.0;  // corrected after each mesh

constexpr std::string_view kGeometriesOpen = "  <library_geometries>\n";
constexpr std::string_view kGeometriesClose = "  </library_geometries>\n";

// The number of meshes: see DocumentOptions::pieceBytes.
uint32_t MeshCount(const DocumentOptions& options, uint64_t skinBytes) {
  if (options.pieceBytes != 0) {
    const uint64_t left = options.bytes - std::min(options.bytes, skinBytes);
    return PieceCount(static_cast<double>(left), options.pieceBytes);
  }
  const auto meshes = static_cast<uint32_t>(static_cast<double>(options.bytes) / kMeshBytes);
  return std::clamp(meshes, kFewestMeshes, kMostMeshes);
}

void WriteAsset(TextSink& out, uint64_t seed) {
  out.Put(
      "  <asset>\n    <contributor>\n      <author>oxdae_generate</author>\n"
      "      <authoring_tool>oxdae_generate (seed ");
  out.PutUInt(seed);
  out.Put(
      ")</authoring_tool>\n      <comments>Synthetic meshes for the load and save "
      "benchmarks.</comments>\n    </contributor>\n"
      "    <created>2026-01-01T00:00:00Z</created>\n"
      "    <modified>2026-01-01T00:00:00Z</modified>\n"
      "    <unit name=\"centimeter\" meter=\"0.01\"/>\n    <up_axis>Y_UP</up_axis>\n  </asset>\n");
}

void WriteEffects(TextSink& out, Random& random) {
  out.Put("  <library_effects>\n");
  for (uint32_t i = 0; i < kMaterials; ++i) {
    out.Put("    <effect id=\"effect-");
    out.PutUInt(i);
    out.Put(
        "\">\n      <profile_COMMON>\n        <technique sid=\"common\">\n          <phong>\n"
        "            <diffuse><color>");
    for (int k = 0; k < 3; ++k) {
      out.PutFixed(random.Unit(), 3);
      out.Put(' ');
    }
    out.Put(
        "1</color></diffuse>\n            <shininess><float>20</float></shininess>\n"
        "          </phong>\n        </technique>\n      </profile_COMMON>\n    </effect>\n");
  }
  out.Put("  </library_effects>\n");
}

void WriteMaterials(TextSink& out) {
  out.Put("  <library_materials>\n");
  for (uint32_t i = 0; i < kMaterials; ++i) {
    const std::string n = std::to_string(i);
    out.Put("    <material id=\"material-" + n + "\" name=\"Material " + n +
            "\">\n      <instance_effect url=\"#effect-" + n + "\"/>\n    </material>\n");
  }
  out.Put("  </library_materials>\n");
}

void WriteMaterialBinding(TextSink& out, uint32_t material) {
  const std::string n = std::to_string(material);
  out.Put("              <instance_material symbol=\"material-" + n +
          "-symbol\" target=\"#material-" + n + "\"/>\n");
}

void WriteNode(TextSink& out, Random& random, uint32_t mesh) {
  const std::string id = MeshID(mesh);
  out.Put("      <node id=\"node-" + std::to_string(mesh) + "\" name=\"Mesh " +
          std::to_string(mesh) + "\">\n        <translate sid=\"translate\">");
  for (int k = 0; k < 3; ++k) {
    out.PutFixed(random.Between(-500.0, 500.0), 2);
    out.Put(k < 2 ? " " : "</translate>\n");
  }
  out.Put("        <instance_geometry url=\"#" + id +
          "\">\n          <bind_material>\n            <technique_common>\n");
  WriteMaterialBinding(out, mesh % kMaterials);
  WriteMaterialBinding(out, (mesh + 1) % kMaterials);
  out.Put(
      "            </technique_common>\n          </bind_material>\n        </instance_geometry>\n"
      "      </node>\n");
}

// Everything after the geometries, made first so that its size is known
// when the meshes are sized.
std::string SceneText(Random& random, uint32_t meshes) {
  TextSink out;
  PutVisualSceneStart(out);
  for (uint32_t i = 0; i < meshes; ++i)
    WriteNode(out, random, i);
  PutVisualSceneEnd(out);
  PutDocumentEnd(out);
  return out.Take();
}

// Sizes each mesh from the bytes left and the bytes per vertex the previous
// mesh took, so that the document lands close to its budget.
void WriteMeshes(TextSink& out, Random& random, uint64_t budget, uint32_t meshes) {
  const uint64_t start = out.Size();
  double bytesPerVertex = kFirstBytesPerVertex;
  for (uint32_t i = 0; i < meshes; ++i) {
    const uint64_t used = out.Size() - start;
    const double share = static_cast<double>(budget > used ? budget - used : 0) / (meshes - i);
    const double wanted = std::min(share / bytesPerVertex, 1e9);
    const uint32_t vertices = std::max(kFewestVertices, static_cast<uint32_t>(wanted));
    const uint64_t before = out.Size();
    WriteMesh(out, random, PlanMesh(i, vertices, random));
    bytesPerVertex = static_cast<double>(out.Size() - before) / vertices;
  }
}

}  // namespace

DocumentOptions ScalingDocument(uint64_t bytes, uint64_t seed) {
  const auto influences = static_cast<uint32_t>(std::min<uint64_t>(bytes / 50, UINT32_MAX));
  return {bytes, seed, influences, 4'000'000};
}

uint64_t WriteDocument(const DocumentOptions& options, std::FILE* file) {
  TextSink out(file);
  Random random(options.seed);
  PutDocumentStart(out);
  WriteAsset(out, options.seed);
  WriteEffects(out, random);
  WriteMaterials(out);
  const std::string skin =
      SkinText(random, options.skinInfluences, options.bytes, options.pieceBytes);
  const uint32_t meshes = MeshCount(options, skin.size());
  const std::string scene = SceneText(random, meshes);
  const uint64_t fixed =
      out.Size() + kGeometriesOpen.size() + kGeometriesClose.size() + skin.size() + scene.size();
  out.Put(kGeometriesOpen);
  WriteMeshes(out, random, options.bytes > fixed ? options.bytes - fixed : 0, meshes);
  out.Put(kGeometriesClose);
  out.Put(skin);
  out.Put(scene);
  return out.Finish() ? out.Size() : 0;
}

namespace {

// Runs `write` on the file `path`; the bytes it wrote, or 0 when the file
// could not be created, written or closed.
template <class Write>
uint64_t WriteFile(const std::string& path, Write&& write) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return 0;
  const uint64_t written = write(file);
  const bool closed = std::fclose(file) == 0;
  return closed ? written : 0;
}

}  // namespace

uint64_t WriteDocumentFile(const DocumentOptions& options, const std::string& path) {
  return WriteFile(path, [&options](std::FILE* file) { return WriteDocument(options, file); });
}

uint64_t WriteSkinDocumentFile(uint32_t influences, uint64_t seed, const std::string& path) {
  return WriteFile(path, [&](std::FILE* file) -> uint64_t {
    TextSink out(file);
    Random random(seed);
    PutDocumentStart(out);
    WriteAsset(out, seed);
    out.Put(kGeometriesOpen);
    WriteMesh(out, random, PlanMesh(0, kFewestVertices, random));
    out.Put(kGeometriesClose);
    WriteSkinLibrary(out, random, std::max(influences, kInfluencesPerVertex), 1, MeshID(0));
    PutDocumentEnd(out);
    return out.Finish() ? out.Size() : 0;
  });
}

std::string MakeFloatText(size_t bytes, uint64_t seed) {
  Random random(seed);
  const MeshPlan plan = PlanMesh(0, 1, random);
  constexpr PutRecord kRecords[] = {PutPosition, PutNormal, PutTexcoord};
  TextSink out;
  for (uint32_t i = 0; out.Size() < bytes; ++i) {
    if (i % kRecordsPerLine == 0) out.Put('\n');
    kRecords[(i / kRecordsPerLine) % 3](out, random, plan);
  }
  return out.Take();
}

std::string MakeIndexText(size_t bytes, uint64_t seed) {
  constexpr uint32_t kVertices = 100'000;  // indices of five and six digits
  Random random(seed);
  const MeshPlan plan = PlanMesh(0, kVertices, random);
  TextSink out;
  for (uint32_t face = 0; out.Size() < bytes; ++face) {
    if (face % kRecordsPerLine == 0) out.Put('\n');
    PutCorner(out, random, plan, face % plan.triangles, plan.triangles);
  }
  return out.Take();
}

}  // namespace oxdae_bench
