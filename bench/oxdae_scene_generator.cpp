#include "oxdae_scene_generator.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "oxdae_generator_support.h"

namespace oxdae_bench {

namespace {

constexpr uint32_t kMeshes = 8;
constexpr uint32_t kPrototypes = 8;  // library nodes that <instance_node> names
constexpr double kFramesPerSecond = 30.0;

// --- Plans -------------------------------------------------------------------

enum class EInstance : uint8_t { None, Geometry, Light, Camera, Node };

struct NodePlan {
  uint32_t depth = 1;
  bool matrix = false;  // a <matrix> instead of translate, rotate and scale
  EInstance instance = EInstance::None;
};

// Most nodes show a geometry; a few a light, a camera or a library node.
EInstance PickInstance(Random& random) {
  const uint32_t r = random.Below(100);
  if (r < 55) return EInstance::Geometry;
  if (r < 60) return EInstance::Light;
  if (r < 62) return EInstance::Camera;
  if (r < 72) return EInstance::Node;
  return EInstance::None;
}

// The nodes in document order (depth first). A node's depth is at most one
// more than the previous node's: deeper means a child of the previous node,
// the same or shallower a sibling of it or of one of its ancestors.
std::vector<NodePlan> PlanNodes(uint32_t count, Random& random) {
  std::vector<NodePlan> plans(count);
  uint32_t depth = 1;
  for (NodePlan& plan : plans) {
    plan.depth = depth;
    plan.matrix = random.Below(10) == 0;
    plan.instance = PickInstance(random);
    depth = 1 + random.Below(std::min(depth + 1, kSceneMaxDepth));
  }
  return plans;
}

struct ChannelPlan {
  uint32_t node = 0;
  bool angle = true;  // "rot.ANGLE", else "trans"
};

// Channels spread over the nodes that have a rotate and a translate; they
// alternate between the angle and the translation. With more channels than
// such nodes, some values are driven by more than one channel.
std::vector<ChannelPlan> PlanChannels(const std::vector<NodePlan>& nodes, uint32_t channels) {
  std::vector<uint32_t> animatable;
  for (uint32_t i = 0; i < nodes.size(); ++i) {
    if (!nodes[i].matrix) animatable.push_back(i);
  }
  std::vector<ChannelPlan> plans;
  if (animatable.empty()) return plans;
  const uint64_t n = animatable.size();
  for (uint32_t c = 0; c < channels; ++c) {
    const uint64_t slot = channels <= n ? uint64_t{c} * n / channels : c % n;
    plans.push_back({animatable[slot], c % 2 == 0});
  }
  return plans;
}

// --- Markup helpers ------------------------------------------------------------

std::string NodeID(uint32_t index) {
  return "node-" + std::to_string(index);
}

// Writes the values separated by blanks.
void PutNumbers(TextSink& out, std::initializer_list<double> values, int decimals) {
  bool first = true;
  for (double v : values) {
    if (!first) out.Put(' ');
    out.PutFixed(v, decimals);
    first = false;
  }
}

// Writes `<tag>`, the values separated by blanks and `</tag>`.
void PutValues(TextSink& out, std::string_view tag, std::initializer_list<double> values,
               int decimals) {
  out.Put('<');
  out.Put(tag);
  out.Put('>');
  PutNumbers(out, values, decimals);
  out.Put("</");
  out.Put(tag);
  out.Put(">\n");
}

// A source of the scene: at six spaces, its records separated by blanks.
template <class PutRecord>
void WriteSource(TextSink& out, const std::string& id, std::string_view arrayTag,
                 std::string_view paramType, std::vector<std::string_view> params, uint32_t records,
                 PutRecord&& putRecord) {
  WriteArraySource(out, {6, id, arrayTag, paramType, std::move(params), records, " "},
                   std::forward<PutRecord>(putRecord));
}

// --- Animations ------------------------------------------------------------------

// Key values wander a little from key to key, as sampled motion does.
class Walk {
 public:
  Walk(double start, double step) : m_value(start), m_step(step) {}
  double Next(Random& random) { return m_value += random.Between(-m_step, m_step); }

 private:
  double m_value;
  double m_step;
};

void WriteAnimation(TextSink& out, Random& random, uint32_t index, const ChannelPlan& channel,
                    uint32_t keys) {
  const std::string id = "anim-" + std::to_string(index);
  out.Put("    <animation");
  PutAttribute(out, "id", id);
  out.Put(">\n");
  WriteSource(out, id + "-input", "float_array", "float", {"TIME"}, keys,
              [&](uint32_t k) { out.PutFixed(k / kFramesPerSecond, 4); });
  if (channel.angle) {
    Walk angle(random.Between(-180.0, 180.0), 3.0);
    WriteSource(out, id + "-output", "float_array", "float", {"ANGLE"}, keys,
                [&](uint32_t) { out.PutFixed(angle.Next(random), 3); });
  } else {
    Walk walks[3] = {{random.Between(-100.0, 100.0), 0.5},
                     {random.Between(-100.0, 100.0), 0.5},
                     {random.Between(-100.0, 100.0), 0.5}};
    WriteSource(out, id + "-output", "float_array", "float", {"X", "Y", "Z"}, keys, [&](uint32_t) {
      for (int c = 0; c < 3; ++c) {
        if (c > 0) out.Put(' ');
        out.PutFixed(walks[c].Next(random), 4);
      }
    });
  }
  WriteSource(out, id + "-interpolation", "Name_array", "Name", {"INTERPOLATION"}, keys,
              [&](uint32_t) { out.Put("LINEAR"); });
  out.Put("      <sampler");
  PutAttribute(out, "id", id + "-sampler");
  out.Put(">\n");
  for (std::string_view semantic : {"INPUT", "OUTPUT", "INTERPOLATION"}) {
    const std::string source = semantic == "INPUT"    ? "-input"
                               : semantic == "OUTPUT" ? "-output"
                                                      : "-interpolation";
    out.Put("        <input");
    PutAttribute(out, "semantic", semantic);
    PutAttribute(out, "source", "#" + id + source);
    out.Put("/>\n");
  }
  out.Put("      </sampler>\n      <channel");
  PutAttribute(out, "source", "#" + id + "-sampler");
  PutAttribute(out, "target", NodeID(channel.node) + (channel.angle ? "/rot.ANGLE" : "/trans"));
  out.Put("/>\n    </animation>\n");
}

void WriteAnimations(TextSink& out, Random& random, const std::vector<ChannelPlan>& channels,
                     uint32_t keys) {
  if (channels.empty()) return;
  out.Put("  <library_animations>\n");
  for (uint32_t i = 0; i < channels.size(); ++i)
    WriteAnimation(out, random, i, channels[i], keys);
  out.Put("  </library_animations>\n");
}

// --- Libraries ---------------------------------------------------------------------

void WriteLights(TextSink& out) {
  out.Put(
      "  <library_lights>\n"
      "    <light id=\"light-0\" name=\"Sun\">\n      <technique_common>\n"
      "        <directional><color>1 0.95 0.9</color></directional>\n"
      "      </technique_common>\n    </light>\n"
      "    <light id=\"light-1\" name=\"Lamp\">\n      <technique_common>\n"
      "        <point>\n          <color>1 0.8 0.6</color>\n"
      "          <constant_attenuation>1</constant_attenuation>\n"
      "          <linear_attenuation>0</linear_attenuation>\n"
      "          <quadratic_attenuation>0.01</quadratic_attenuation>\n        </point>\n"
      "      </technique_common>\n    </light>\n"
      "    <light id=\"light-2\" name=\"Spot\">\n      <technique_common>\n"
      "        <spot>\n          <color>0.9 0.9 1</color>\n"
      "          <constant_attenuation>1</constant_attenuation>\n"
      "          <linear_attenuation>0.02</linear_attenuation>\n"
      "          <quadratic_attenuation>0</quadratic_attenuation>\n"
      "          <falloff_angle>40</falloff_angle>\n"
      "          <falloff_exponent>0.5</falloff_exponent>\n        </spot>\n"
      "      </technique_common>\n    </light>\n"
      "  </library_lights>\n");
}

void WriteCameras(TextSink& out) {
  out.Put(
      "  <library_cameras>\n"
      "    <camera id=\"camera-0\" name=\"Perspective\">\n      <optics>\n"
      "        <technique_common>\n          <perspective>\n"
      "            <xfov>45</xfov>\n            <aspect_ratio>1.777778</aspect_ratio>\n"
      "            <znear>0.1</znear>\n            <zfar>10000</zfar>\n"
      "          </perspective>\n        </technique_common>\n      </optics>\n    </camera>\n"
      "    <camera id=\"camera-1\" name=\"Top\">\n      <optics>\n"
      "        <technique_common>\n          <orthographic>\n"
      "            <xmag>50</xmag>\n            <ymag>50</ymag>\n"
      "            <znear>0.1</znear>\n            <zfar>1000</zfar>\n"
      "          </orthographic>\n        </technique_common>\n      </optics>\n    </camera>\n"
      "  </library_cameras>\n");
}

void WriteMaterials(TextSink& out, Random& random) {
  out.Put("  <library_effects>\n");
  for (uint32_t i = 0; i < kMaterials; ++i) {
    out.Put("    <effect");
    PutAttribute(out, "id", "effect-" + std::to_string(i));
    out.Put(
        ">\n      <profile_COMMON>\n        <technique sid=\"common\">\n          <lambert>\n"
        "            <diffuse>");
    PutValues(out, "color", {random.Unit(), random.Unit(), random.Unit(), 1.0}, 3);
    out.Put(
        "            </diffuse>\n          </lambert>\n        </technique>\n"
        "      </profile_COMMON>\n    </effect>\n");
  }
  out.Put("  </library_effects>\n  <library_materials>\n");
  for (uint32_t i = 0; i < kMaterials; ++i) {
    const std::string n = std::to_string(i);
    out.Put("    <material id=\"material-" + n + "\">\n      <instance_effect url=\"#effect-" + n +
            "\"/>\n    </material>\n");
  }
  out.Put("  </library_materials>\n");
}

// The twelve triangles of a box, by corner (bit 0: x, bit 1: y, bit 2: z).
constexpr uint8_t kBoxTriangles[36] = {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4,
                                       2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5};

void WriteGeometries(TextSink& out, Random& random) {
  out.Put("  <library_geometries>\n");
  for (uint32_t i = 0; i < kMeshes; ++i) {
    const std::string id = MeshID(i);
    const double size[3] = {random.Between(0.5, 5.0), random.Between(0.5, 5.0),
                            random.Between(0.5, 5.0)};
    out.Put("    <geometry");
    PutAttribute(out, "id", id);
    out.Put(">\n      <mesh>\n");
    WriteSource(out, id + "-positions", "float_array", "float", {"X", "Y", "Z"}, 8,
                [&](uint32_t corner) {
                  for (uint32_t c = 0; c < 3; ++c) {
                    if (c > 0) out.Put(' ');
                    out.PutFixed((corner >> c) & 1 ? size[c] : -size[c], 3);
                  }
                });
    WriteVertices(out, 6, id);
    out.Put("      <triangles material=\"surface\" count=\"12\">\n");
    out.Put("        <input semantic=\"VERTEX\"");
    PutAttribute(out, "source", "#" + id + "-vertices");
    out.Put(" offset=\"0\"/>\n        <p>");
    for (uint8_t corner : kBoxTriangles) {
      out.PutUInt(corner);
      out.Put(' ');
    }
    out.Put("</p>\n      </triangles>\n      </mesh>\n    </geometry>\n");
  }
  out.Put("  </library_geometries>\n");
}

void WriteGeometryInstance(TextSink& out, uint32_t indent, uint32_t mesh, uint32_t material) {
  PutIndent(out, indent);
  out.Put("<instance_geometry url=\"#" + MeshID(mesh) + "\">\n");
  PutIndent(out, indent + 2);
  out.Put("<bind_material><technique_common>\n");
  PutIndent(out, indent + 4);
  out.Put("<instance_material symbol=\"surface\" target=\"#material-" + std::to_string(material) +
          "\"/>\n");
  PutIndent(out, indent + 2);
  out.Put("</technique_common></bind_material>\n");
  PutIndent(out, indent);
  out.Put("</instance_geometry>\n");
}

void WriteLibraryNodes(TextSink& out, Random& random) {
  out.Put("  <library_nodes>\n");
  for (uint32_t i = 0; i < kPrototypes; ++i) {
    out.Put("    <node");
    PutAttribute(out, "id", "prototype-" + std::to_string(i));
    out.Put(">\n      ");
    PutValues(out, "translate",
              {random.Between(-5.0, 5.0), random.Between(-5.0, 5.0), random.Between(-5.0, 5.0)}, 3);
    WriteGeometryInstance(out, 6, i % kMeshes, i % kMaterials);
    out.Put("    </node>\n");
  }
  out.Put("  </library_nodes>\n");
}

// --- Visual scene ------------------------------------------------------------------

// A random unit quaternion turned into the rows of a column-vector matrix,
// with a uniform scale and a translation. Only arithmetic and a square root,
// so the digits do not depend on the maths library.
void PutMatrix(TextSink& out, Random& random) {
  double q[4] = {random.Between(-1.0, 1.0), random.Between(-1.0, 1.0), random.Between(-1.0, 1.0),
                 random.Between(-1.0, 1.0)};
  double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  if (length < 1e-3) {
    q[0] = q[1] = q[2] = 0.0;
    q[3] = length = 1.0;
  }
  const double x = q[0] / length, y = q[1] / length, z = q[2] / length, w = q[3] / length;
  const double s = random.Between(0.5, 2.0);
  const double rows[3][4] = {{s * (1 - 2 * (y * y + z * z)), s * 2 * (x * y - w * z),
                              s * 2 * (x * z + w * y), random.Between(-100.0, 100.0)},
                             {s * 2 * (x * y + w * z), s * (1 - 2 * (x * x + z * z)),
                              s * 2 * (y * z - w * x), random.Between(-100.0, 100.0)},
                             {s * 2 * (x * z - w * y), s * 2 * (y * z + w * x),
                              s * (1 - 2 * (x * x + y * y)), random.Between(-100.0, 100.0)}};
  out.Put("<matrix sid=\"transform\">");
  for (const auto& row : rows) {
    for (double v : row) {
      out.PutFixed(v, 6);
      out.Put(' ');
    }
  }
  out.Put("0 0 0 1</matrix>\n");
}

// Mostly an axis of the frame, written as exporters write it ("0 0 1"),
// sometimes any unit axis.
void PutRotate(TextSink& out, Random& random) {
  double axis[3] = {0.0, 0.0, 0.0};
  int decimals = 0;
  const uint32_t pick = random.Below(10);
  if (pick < 8) {
    axis[pick % 3] = 1.0;
  } else {
    const double v[3] = {random.Between(-1.0, 1.0), random.Between(-1.0, 1.0),
                         random.Between(-1.0, 1.0)};
    const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    for (int c = 0; c < 3; ++c)
      axis[c] = length > 1e-3 ? v[c] / length : (c == 2 ? 1.0 : 0.0);
    decimals = 6;
  }
  out.Put("<rotate sid=\"rot\">");
  for (double c : axis) {
    out.PutFixed(c, decimals);
    out.Put(' ');
  }
  out.PutFixed(random.Between(-180.0, 180.0), 3);
  out.Put("</rotate>\n");
}

// A matrix, or a translate, a rotate and a scale (half of them 1 1 1).
void WriteTransforms(TextSink& out, Random& random, const NodePlan& plan, uint32_t indent) {
  PutIndent(out, indent);
  if (plan.matrix) return PutMatrix(out, random);
  out.Put("<translate sid=\"trans\">");
  PutNumbers(
      out,
      {random.Between(-100.0, 100.0), random.Between(-100.0, 100.0), random.Between(-100.0, 100.0)},
      3);
  out.Put("</translate>\n");
  PutIndent(out, indent);
  PutRotate(out, random);
  PutIndent(out, indent);
  if (random.Below(2) == 0) return out.Put("<scale sid=\"scale\">1 1 1</scale>\n");
  out.Put("<scale sid=\"scale\">");
  PutNumbers(out, {random.Between(0.5, 2.0), random.Between(0.5, 2.0), random.Between(0.5, 2.0)},
             3);
  out.Put("</scale>\n");
}

void WriteInstance(TextSink& out, Random& random, const NodePlan& plan, uint32_t indent,
                   SceneSummary& summary) {
  switch (plan.instance) {
    case EInstance::Geometry: {
      ++summary.geometryInstances;
      const uint32_t mesh = random.Below(kMeshes);
      return WriteGeometryInstance(out, indent, mesh, random.Below(kMaterials));
    }
    case EInstance::Light:
      ++summary.lightInstances;
      PutIndent(out, indent);
      return out.Put("<instance_light url=\"#light-" + std::to_string(random.Below(3)) + "\"/>\n");
    case EInstance::Camera:
      ++summary.cameraInstances;
      PutIndent(out, indent);
      return out.Put("<instance_camera url=\"#camera-" + std::to_string(random.Below(2)) +
                     "\"/>\n");
    case EInstance::Node:
      ++summary.nodeInstances;
      PutIndent(out, indent);
      return out.Put("<instance_node url=\"#prototype-" +
                     std::to_string(random.Below(kPrototypes)) + "\"/>\n");
    case EInstance::None:
      return;
  }
}

void CloseNodes(TextSink& out, uint32_t& open, uint32_t depth) {
  for (; open > depth; --open) {
    PutIndent(out, 4 + 2 * open);
    out.Put("</node>\n");
  }
}

void WriteVisualScene(TextSink& out, Random& random, const std::vector<NodePlan>& nodes,
                      SceneSummary& summary) {
  PutVisualSceneStart(out);
  uint32_t open = 0;
  for (uint32_t i = 0; i < nodes.size(); ++i) {
    const NodePlan& plan = nodes[i];
    CloseNodes(out, open, plan.depth - 1);
    const uint32_t indent = 4 + 2 * plan.depth;
    PutIndent(out, indent);
    out.Put("<node");
    PutAttribute(out, "id", NodeID(i));
    PutAttribute(out, "name", "Node " + std::to_string(i));
    out.Put(">\n");
    WriteTransforms(out, random, plan, indent + 2);
    WriteInstance(out, random, plan, indent + 2, summary);
    open = plan.depth;
    summary.depth = std::max(summary.depth, plan.depth);
    summary.matrixNodes += plan.matrix ? 1 : 0;
  }
  CloseNodes(out, open, 0);
  PutVisualSceneEnd(out);
}

void WriteAsset(TextSink& out, uint64_t seed) {
  out.Put(
      "  <asset>\n    <contributor>\n      <author>oxdae_scene_bench</author>\n"
      "      <authoring_tool>oxdae_scene_bench (seed ");
  out.PutUInt(seed);
  out.Put(
      ")</authoring_tool>\n      <comments>Synthetic scene for the scene benchmark.</comments>\n"
      "    </contributor>\n"
      "    <modified>2026-01-01T00:00:00Z</modified>\n"
      "    <unit name=\"meter\" meter=\"1\"/>\n    <up_axis>Y_UP</up_axis>\n  </asset>\n");
}

}  // namespace

SceneSummary WriteScene(const SceneOptions& options, std::FILE* file) {
  TextSink out(file);
  Random random(options.seed);
  const std::vector<NodePlan> nodes = PlanNodes(options.nodes, random);
  const std::vector<ChannelPlan> channels = PlanChannels(nodes, options.channels);
  SceneSummary summary;
  summary.nodes = options.nodes;
  summary.libraryNodes = kPrototypes;
  summary.keys = options.keys;
  for (const ChannelPlan& c : channels)
    ++(c.angle ? summary.angleChannels : summary.translateChannels);
  PutDocumentStart(out);
  WriteAsset(out, options.seed);
  WriteAnimations(out, random, channels, options.keys);
  WriteLights(out);
  WriteCameras(out);
  WriteMaterials(out, random);
  WriteGeometries(out, random);
  WriteLibraryNodes(out, random);
  WriteVisualScene(out, random, nodes, summary);
  PutDocumentEnd(out);
  summary.bytes = out.Finish() ? out.Size() : 0;
  return summary;
}

SceneSummary WriteSceneFile(const SceneOptions& options, const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return {};
  SceneSummary summary = WriteScene(options, file);
  if (std::fclose(file) != 0) summary.bytes = 0;
  return summary;
}

}  // namespace oxdae_bench
