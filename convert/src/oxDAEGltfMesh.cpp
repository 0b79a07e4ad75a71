#include "oxDAEGltfMesh.h"

#include <array>
#include <cmath>
#include <map>
#include <set>
#include <unordered_map>

#include <oxKernel/oxLog.h>

#include "oxRecords.h"

namespace OxDAEConvert {

using OxDAEReader::oxDAEAccessor;
using OxDAEReader::oxDAEGeometry;
using OxDAEReader::oxDAEInputElement;
using OxDAEReader::oxDAEMeshPrimitive;
using OxDAEReader::oxDAEVertices;
using EType = oxDAEMeshPrimitive::EType;

namespace {

// Polygons with more corners than this are cut as fans: ear clipping takes
// time quadratic in the corners.
constexpr size_t kMostClippedCorners = 256;

enum class Kind { Position, Normal, Texcoord, Color, Tangent, Binormal };

// One attribute of a primitive's vertices: where its index sits in a
// tuple and the source records it indexes.
struct Channel {
  std::string name;
  Kind kind = Kind::Position;
  uint32_t offset = 0;
  const oxDAEAccessor* accessor = nullptr;
  unsigned int width = 3;
};

// A corner of a face: list `list` of the primitive, tuple starting at `at`.
struct Corner {
  size_t list = 0;
  size_t at = 0;
};

// The distinct index tuples of a primitive, one per glTF vertex in the
// order first used, found again through an open-addressing hash table over
// their flat storage (a map of vectors allocates per vertex and dominates
// the conversion of large meshes).
class Vertices {
 public:
  explicit Vertices(size_t width = 0) : m_width(std::max<size_t>(width, 1)) {}
  size_t size() const { return m_tuples.size() / m_width; }
  const int32_t* operator[](size_t i) const { return m_tuples.data() + i * m_width; }

  // The vertex of `tuple` (m_width indices), added when new.
  uint32_t Add(const int32_t* tuple) {
    if (2 * (size() + 1) > m_slots.size()) Grow();
    for (size_t slot = Hash(tuple) & (m_slots.size() - 1);;
         slot = (slot + 1) & (m_slots.size() - 1)) {
      if (m_slots[slot] == 0) {
        m_tuples.insert(m_tuples.end(), tuple, tuple + m_width);
        m_slots[slot] = static_cast<uint32_t>(size());
        return m_slots[slot] - 1;
      }
      const uint32_t vertex = m_slots[slot] - 1;
      if (std::equal(tuple, tuple + m_width, (*this)[vertex])) return vertex;
    }
  }

 private:
  uint64_t Hash(const int32_t* tuple) const {
    uint64_t h = 0x9E3779B97F4A7C15u;
    for (size_t i = 0; i < m_width; ++i) {
      h ^= static_cast<uint32_t>(tuple[i]);
      h *= 0xBF58476D1CE4E5B9u;
      h ^= h >> 31;
    }
    return h;
  }
  void Grow() {
    m_slots.assign(std::max<size_t>(64, m_slots.size() * 2), 0);
    const size_t mask = m_slots.size() - 1;
    for (size_t v = 0; v < size(); ++v) {
      size_t slot = Hash((*this)[v]) & mask;
      while (m_slots[slot] != 0)
        slot = (slot + 1) & mask;
      m_slots[slot] = static_cast<uint32_t>(v + 1);
    }
  }

  size_t m_width;
  std::vector<int32_t> m_tuples;
  std::vector<uint32_t> m_slots;  // vertex + 1; 0 for an empty slot
};

// The merged vertices and indices of one glTF primitive.
struct Group {
  std::vector<Channel> channels;  // of the first COLLADA primitive merged
  Vertices vertices;              // per vertex: the index of each channel
  std::vector<uint32_t> indices;
};

std::string GeometryName(const oxDAEGeometry& geometry) {
  return geometry.id.empty() ? std::string("(no id)") : std::string(geometry.id);
}

using Inputs = std::map<std::pair<int, uint32_t>, std::pair<const oxDAEInputElement*, uint32_t>>;

// glTF's one TANGENT, from the first tangent input (texture-space before
// geometric, lowest set first), with the binormal of its kind and set to
// give its sign. It needs a NORMAL; the other tangent and binormal inputs
// are named as dropped.
void AddTangent(std::vector<Channel>& channels, const Inputs& tangents, const Inputs& binormals,
                std::set<std::string>& dropped) {
  const bool normal = std::any_of(channels.begin(), channels.end(),
                                  [](const Channel& c) { return c.kind == Kind::Normal; });
  bool used = false;
  for (const auto& [key, entry] : tangents) {
    if (used || !normal) {
      dropped.insert(std::string(entry.first->semantic) + " (set " + std::to_string(key.second) +
                     (normal ? ")" : ", without NORMAL)"));
      continue;
    }
    used = true;
    channels.push_back(
        {"TANGENT", Kind::Tangent, entry.second, entry.first->GetCommonAccessor(), 4});
    if (const auto binormal = binormals.find(key); binormal != binormals.end()) {
      channels.push_back({"", Kind::Binormal, binormal->second.second,
                          binormal->second.first->GetCommonAccessor(), 3});
    }
  }
}

// The channels of `primitive`, VERTEX expanded into the <vertices> inputs,
// named by their glTF attribute; TEXCOORD sets numbered in set order.
// Inputs glTF has no attribute for are added to `dropped`.
std::vector<Channel> ChannelsOf(const oxDAEMeshPrimitive& primitive,
                                std::set<std::string>& dropped) {
  std::vector<std::pair<const oxDAEInputElement*, uint32_t>> inputs;
  for (const oxDAEInputElement* input : primitive.inputs) {
    if (const auto* vertices = oxDAEVertices::DynamicCast(input->source);
        vertices && input->semantic == "VERTEX") {
      for (const oxDAEInputElement* inner : vertices->inputs)
        inputs.emplace_back(inner, input->offset);
    } else {
      inputs.emplace_back(input, input->offset);
    }
  }
  std::vector<Channel> channels;
  std::map<uint32_t, const oxDAEInputElement*> texcoords;
  // Texture-space tangents and binormals (else the geometric ones), by set.
  Inputs tangents;
  Inputs binormals;
  bool color = false;
  for (const auto& [input, offset] : inputs) {
    const std::string_view semantic = input->semantic.View();
    const oxDAEAccessor* accessor = input->GetCommonAccessor();
    if (semantic == "POSITION" || semantic == "NORMAL") {
      channels.push_back({std::string(semantic),
                          semantic == "POSITION" ? Kind::Position : Kind::Normal, offset, accessor,
                          3});
    } else if (semantic == "TEXCOORD") {
      texcoords.emplace(input->set, input);
    } else if (semantic == "TEXTANGENT" || semantic == "TANGENT") {
      tangents.try_emplace({semantic == "TANGENT", input->set}, input, offset);
    } else if (semantic == "TEXBINORMAL" || semantic == "BINORMAL") {
      binormals.try_emplace({semantic == "BINORMAL", input->set}, input, offset);
    } else if (semantic == "COLOR" && !color) {
      color = true;
      channels.push_back(
          {"COLOR_0", Kind::Color, offset, accessor, RecordStride(accessor) >= 4 ? 4u : 3u});
    } else {
      dropped.insert(std::string(semantic));
    }
  }
  AddTangent(channels, tangents, binormals, dropped);
  unsigned int set = 0;
  for (const auto& [number, input] : texcoords) {
    // A TEXCOORD inside <vertices> takes the VERTEX offset.
    const auto with = std::find_if(inputs.begin(), inputs.end(),
                                   [input](const auto& entry) { return entry.first == input; });
    channels.push_back({"TEXCOORD_" + std::to_string(set++), Kind::Texcoord, with->second,
                        input->GetCommonAccessor(), 2});
  }
  return channels;
}

uint32_t TupleWidth(const oxDAEMeshPrimitive& primitive) {
  uint32_t width = 0;
  for (const oxDAEInputElement* input : primitive.inputs)
    width = std::max(width, input->offset + 1);
  return std::max<uint32_t>(width, 1);
}

using Vec3 = std::array<double, 3>;

Vec3 PositionOf(const oxDAEMeshPrimitive& primitive, const Channel* position, uint32_t width,
                const Corner& corner) {
  if (!position) return {0, 0, 0};
  const auto& list = primitive.p[corner.list];
  const size_t at = corner.at * width + position->offset;
  if (at >= list.size() || list[at] < 0) return {0, 0, 0};
  const size_t record = static_cast<size_t>(list[at]);
  return {RecordFloat(position->accessor, record, 0), RecordFloat(position->accessor, record, 1),
          RecordFloat(position->accessor, record, 2)};
}

// Cuts a polygon into triangles: ears clipped in the plane the polygon
// faces most (its Newell normal), else a fan.
std::vector<Corner> Triangulate(const std::vector<Corner>& polygon,
                                const std::vector<Vec3>& points) {
  std::vector<Corner> triangles;
  const size_t n = polygon.size();
  const auto fan = [&](const std::vector<size_t>& order) {
    for (size_t i = 1; i + 1 < order.size(); ++i) {
      triangles.push_back(polygon[order[0]]);
      triangles.push_back(polygon[order[i]]);
      triangles.push_back(polygon[order[i + 1]]);
    }
  };
  std::vector<size_t> remaining(n);
  for (size_t i = 0; i < n; ++i)
    remaining[i] = i;
  if (n <= 3 || n > kMostClippedCorners) {
    fan(remaining);
    return triangles;
  }
  Vec3 normal = {0, 0, 0};
  for (size_t i = 0; i < n; ++i) {
    const Vec3& a = points[i];
    const Vec3& b = points[(i + 1) % n];
    normal[0] += (a[1] - b[1]) * (a[2] + b[2]);
    normal[1] += (a[2] - b[2]) * (a[0] + b[0]);
    normal[2] += (a[0] - b[0]) * (a[1] + b[1]);
  }
  const size_t drop = std::abs(normal[0]) > std::abs(normal[1])
                          ? (std::abs(normal[0]) > std::abs(normal[2]) ? 0 : 2)
                          : (std::abs(normal[1]) > std::abs(normal[2]) ? 1 : 2);
  const size_t u = (drop + 1) % 3;
  const size_t v = (drop + 2) % 3;
  const double sign = normal[drop] < 0 ? -1.0 : 1.0;
  const auto cross = [&](size_t a, size_t b, size_t c) {
    return sign * ((points[b][u] - points[a][u]) * (points[c][v] - points[a][v]) -
                   (points[b][v] - points[a][v]) * (points[c][u] - points[a][u]));
  };
  const auto inside = [&](size_t p, size_t a, size_t b, size_t c) {
    return cross(a, b, p) >= 0 && cross(b, c, p) >= 0 && cross(c, a, p) >= 0;
  };
  while (remaining.size() > 3) {
    bool clipped = false;
    for (size_t i = 0; i < remaining.size() && !clipped; ++i) {
      const size_t a = remaining[(i + remaining.size() - 1) % remaining.size()];
      const size_t b = remaining[i];
      const size_t c = remaining[(i + 1) % remaining.size()];
      if (cross(a, b, c) <= 0) continue;
      bool ear = true;
      for (const size_t p : remaining) {
        if (p != a && p != b && p != c && inside(p, a, b, c)) {
          ear = false;
          break;
        }
      }
      if (!ear) continue;
      triangles.push_back(polygon[a]);
      triangles.push_back(polygon[b]);
      triangles.push_back(polygon[c]);
      remaining.erase(remaining.begin() + static_cast<ptrdiff_t>(i));
      clipped = true;
    }
    if (!clipped) break;  // degenerate or self-crossing: the rest as a fan
  }
  fan(remaining);
  return triangles;
}

// The corners of the triangles (mode 4) or line segments (mode 1) of
// `primitive`, in order.
std::vector<Corner> CornersOf(const oxDAEMeshPrimitive& primitive, uint32_t width,
                              const Channel* position, int& mode) {
  std::vector<Corner> corners;
  mode = primitive.type == EType::LINES || primitive.type == EType::LINESTRIPS ? 1 : 4;
  const auto tuples = [&](size_t list) { return primitive.p[list].size() / width; };
  // Buffers reused from polygon to polygon; a triangle needs neither.
  std::vector<Corner> face;
  std::vector<Vec3> points;
  const auto polygon = [&](size_t list, size_t first, size_t count) {
    if (count == 3) {
      corners.insert(corners.end(), {{list, first}, {list, first + 1}, {list, first + 2}});
      return;
    }
    face.clear();
    points.clear();
    for (size_t i = 0; i < count; ++i) {
      face.push_back({list, first + i});
      points.push_back(PositionOf(primitive, position, width, face.back()));
    }
    const std::vector<Corner> cut = Triangulate(face, points);
    corners.insert(corners.end(), cut.begin(), cut.end());
  };
  for (size_t list = 0; list < primitive.p.size(); ++list) {
    const size_t n = tuples(list);
    switch (primitive.type) {
      case EType::TRIANGLES:
        for (size_t i = 0; i + 2 < n; i += 3)
          corners.insert(corners.end(), {{list, i}, {list, i + 1}, {list, i + 2}});
        break;
      case EType::LINES:
        for (size_t i = 0; i + 1 < n; i += 2)
          corners.insert(corners.end(), {{list, i}, {list, i + 1}});
        break;
      case EType::LINESTRIPS:
        for (size_t i = 0; i + 1 < n; ++i)
          corners.insert(corners.end(), {{list, i}, {list, i + 1}});
        break;
      case EType::TRIFANS:
        for (size_t i = 1; i + 1 < n; ++i)
          corners.insert(corners.end(), {{list, 0}, {list, i}, {list, i + 1}});
        break;
      case EType::TRISTRIPS:
        for (size_t i = 0; i + 2 < n; ++i) {
          // Every other triangle of a strip turns the other way.
          if (i % 2 == 0) {
            corners.insert(corners.end(), {{list, i}, {list, i + 1}, {list, i + 2}});
          } else {
            corners.insert(corners.end(), {{list, i + 1}, {list, i}, {list, i + 2}});
          }
        }
        break;
      case EType::POLYGONS:
        if (n >= 3) polygon(list, 0, n);
        break;
      case EType::POLYLIST: {
        size_t first = 0;
        for (const int32_t count : primitive.vcount) {
          if (count < 0 || first + static_cast<size_t>(count) > n) break;
          if (count >= 3) polygon(list, first, static_cast<size_t>(count));
          first += static_cast<size_t>(count);
        }
        break;
      }
    }
  }
  return corners;
}

// What primitives must share to merge: the attributes, their widths and
// the records they read.
std::string Signature(const std::vector<Channel>& channels) {
  std::string key;
  for (const Channel& c : channels) {
    key += c.name + "/" + std::to_string(c.width) + "/" +
           std::to_string(reinterpret_cast<uintptr_t>(c.accessor)) + ";";
  }
  return key;
}

// Three floats of channel `c` of `vertex`; zeros for a missing index.
Vec3 Read3(const Group& group, size_t c, const int32_t* vertex) {
  if (c >= group.channels.size() || vertex[c] < 0) return {0, 0, 0};
  const size_t record = static_cast<size_t>(vertex[c]);
  const oxDAEAccessor* accessor = group.channels[c].accessor;
  return {RecordFloat(accessor, record, 0), RecordFloat(accessor, record, 1),
          RecordFloat(accessor, record, 2)};
}

Vec3 Normalised(Vec3 v) {
  const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  if (!(length > 0)) return {0, 0, 0};
  return {v[0] / length, v[1] / length, v[2] / length};
}

// A glTF tangent: the tangent made perpendicular to the normal and of unit
// length, and as w the side the binormal lies on (+1 when it agrees with
// normal x tangent, or when there is no binormal).
std::array<double, 4> Tangent(const Vec3& normal, const Vec3& tangent, const Vec3* binormal) {
  const Vec3 n = Normalised(normal);
  const double along = n[0] * tangent[0] + n[1] * tangent[1] + n[2] * tangent[2];
  Vec3 t =
      Normalised({tangent[0] - n[0] * along, tangent[1] - n[1] * along, tangent[2] - n[2] * along});
  if (t == Vec3{0, 0, 0})
    t = Normalised(std::abs(n[0]) < 0.9 ? Vec3{1 - n[0] * n[0], -n[0] * n[1], -n[0] * n[2]}
                                        : Vec3{-n[1] * n[0], 1 - n[1] * n[1], -n[1] * n[2]});
  if (t == Vec3{0, 0, 0}) t = {1, 0, 0};
  double w = 1;
  if (binormal) {
    const Vec3 side = {n[1] * t[2] - n[2] * t[1], n[2] * t[0] - n[0] * t[2],
                       n[0] * t[1] - n[1] * t[0]};
    w = side[0] * (*binormal)[0] + side[1] * (*binormal)[1] + side[2] * (*binormal)[2] < 0 ? -1 : 1;
  }
  return {t[0], t[1], t[2], w};
}

size_t ChannelOf(const Group& group, Kind kind) {
  for (size_t c = 0; c < group.channels.size(); ++c) {
    if (group.channels[c].kind == kind) return c;
  }
  return SIZE_MAX;
}

// `v` placed by the host-layout matrix `m`: as a point (with translation)
// or as a direction (normalised again).
Vec3 Place(const OxMath::oxMatrix44& m, const Vec3& v, bool point) {
  Vec3 out;
  for (int r = 0; r < 3; ++r)
    out[r] = m.m[r] * v[0] + m.m[4 + r] * v[1] + m.m[8 + r] * v[2] + (point ? m.m[12 + r] : 0.0);
  return point ? out : Normalised(out);
}

// Counts of what skinning had to leave out, for one warning each.
struct SkinningLosses {
  size_t beyondEight = 0;
  size_t unweighted = 0;
};

// JOINTS_n and WEIGHTS_n of the group's vertices from the influences of
// their POSITION records.
void WriteSkinning(const Group& group, const oxGltfSkinning& skinning, Json& attributes,
                   oxGltfBuilder& gltf, SkinningLosses& losses) {
  constexpr size_t kMost = 8;
  const size_t position = ChannelOf(group, Kind::Position);
  std::vector<std::vector<std::pair<uint16_t, float>>> kept(group.vertices.size());
  bool second = false;
  for (size_t i = 0; i < group.vertices.size(); ++i) {
    const int32_t record = group.vertices[i][position];
    std::vector<std::pair<uint16_t, float>> all;
    if (record >= 0 && static_cast<size_t>(record) < skinning.influences.size())
      all = skinning.influences[static_cast<size_t>(record)];
    std::stable_sort(all.begin(), all.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    if (all.size() > kMost) {
      ++losses.beyondEight;
      all.resize(kMost);
    }
    double sum = 0;
    for (const auto& [joint, weight] : all)
      sum += weight;
    if (!(sum > 0)) {
      ++losses.unweighted;
      all = {{0, 1.0f}};
      sum = 1;
    }
    for (auto& entry : all)
      entry.second = static_cast<float>(entry.second / sum);
    second = second || all.size() > 4;
    kept[i] = std::move(all);
  }
  for (size_t set = 0; set < (second ? 2u : 1u); ++set) {
    std::vector<uint16_t> joints;
    std::vector<float> weights;
    for (const auto& influences : kept) {
      for (size_t j = 4 * set; j < 4 * set + 4; ++j) {
        joints.push_back(j < influences.size() ? influences[j].first : 0);
        weights.push_back(j < influences.size() ? influences[j].second : 0.0f);
      }
    }
    attributes["JOINTS_" + std::to_string(set)] = gltf.AddJoints(joints);
    attributes["WEIGHTS_" + std::to_string(set)] =
        gltf.AddFloats(weights, "VEC4", kGltfArrayBuffer, false);
  }
}

// The morph targets of the group's vertices: per target, the offset of the
// target's POSITION record from the base's (or the record itself for a
// RELATIVE morph), at each vertex's POSITION record number.
Json WriteTargets(const Group& group, const oxGltfMorphing& morphing,
                  const oxGltfSkinning* skinning, oxGltfBuilder& gltf) {
  const size_t position = ChannelOf(group, Kind::Position);
  Json targets = Json::array();
  for (const oxDAEAccessor* target : morphing.targets) {
    std::vector<float> offsets;
    for (size_t i = 0; i < group.vertices.size(); ++i) {
      const int32_t* vertex = group.vertices[i];
      const Vec3 base = morphing.relative ? Vec3{0, 0, 0} : Read3(group, position, vertex);
      Vec3 moved = {0, 0, 0};
      if (vertex[position] >= 0) {
        const size_t record = static_cast<size_t>(vertex[position]);
        moved = {RecordFloat(target, record, 0), RecordFloat(target, record, 1),
                 RecordFloat(target, record, 2)};
      }
      Vec3 offset = {moved[0] - base[0], moved[1] - base[1], moved[2] - base[2]};
      if (skinning) {
        // An offset turns and scales with the bind shape but does not move.
        Vec3 placed;
        const float* m = skinning->bindShape.m;
        for (int r = 0; r < 3; ++r)
          placed[r] = m[r] * offset[0] + m[4 + r] * offset[1] + m[8 + r] * offset[2];
        offset = placed;
      }
      offsets.insert(offsets.end(), offset.begin(), offset.end());
    }
    targets.push_back({{"POSITION", gltf.AddFloats(offsets, "VEC3", kGltfArrayBuffer, true)}});
  }
  return targets;
}

// Writes the group's attributes and indices; returns the attributes.
Json WriteGroup(const Group& group, oxGltfBuilder& gltf, const oxGltfSkinning* skinning,
                SkinningLosses& losses) {
  Json attributes = Json::object();
  const size_t normal = ChannelOf(group, Kind::Normal);
  const size_t binormal = ChannelOf(group, Kind::Binormal);
  for (size_t c = 0; c < group.channels.size(); ++c) {
    const Channel& channel = group.channels[c];
    if (channel.kind == Kind::Binormal) continue;
    std::vector<float> values;
    values.reserve(group.vertices.size() * channel.width);
    for (size_t i = 0; i < group.vertices.size(); ++i) {
      const int32_t* vertex = group.vertices[i];
      const size_t record = vertex[c] < 0 ? SIZE_MAX : static_cast<size_t>(vertex[c]);
      std::array<double, 4> v = {0, 0, 0, 1};
      // A tangent's fourth float is its sign, made below.
      const unsigned int read = channel.kind == Kind::Tangent ? 3 : channel.width;
      for (unsigned int j = 0; j < read; ++j)
        v[j] = record == SIZE_MAX ? 0.0 : RecordFloat(channel.accessor, record, j);
      if (skinning && channel.kind != Kind::Texcoord && channel.kind != Kind::Color) {
        const Vec3 placed =
            Place(skinning->bindShape, {v[0], v[1], v[2]}, channel.kind == Kind::Position);
        std::copy(placed.begin(), placed.end(), v.begin());
      }
      if (channel.kind == Kind::Normal) {
        const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        if (length > 0) {
          for (int j = 0; j < 3; ++j)
            v[j] /= length;
        } else {
          v = {0, 0, 1, 1};
        }
      } else if (channel.kind == Kind::Texcoord) {
        // glTF's texture origin is the top left, COLLADA's the bottom left.
        v[1] = 1.0 - v[1];
      } else if (channel.kind == Kind::Color) {
        for (unsigned int j = 0; j < channel.width; ++j)
          v[j] = std::clamp(v[j], 0.0, 1.0);
      } else if (channel.kind == Kind::Tangent) {
        const Vec3 b = Read3(group, binormal, vertex);
        v = Tangent(Read3(group, normal, vertex), {v[0], v[1], v[2]},
                    binormal == SIZE_MAX ? nullptr : &b);
      }
      for (unsigned int j = 0; j < channel.width; ++j)
        values.push_back(static_cast<float>(v[j]));
    }
    const char* type = channel.width == 2 ? "VEC2" : channel.width == 3 ? "VEC3" : "VEC4";
    attributes[channel.name] =
        gltf.AddFloats(values, type, kGltfArrayBuffer, channel.kind == Kind::Position);
  }
  if (skinning) WriteSkinning(group, *skinning, attributes, gltf, losses);
  return attributes;
}

}  // namespace

std::vector<oxGltfPrimitive> ConvertGeometry(const oxDAEGeometry& geometry, oxGltfBuilder& gltf,
                                             const oxGltfSkinning* skinning,
                                             const oxGltfMorphing* morphing) {
  if (!geometry.mesh) {
    OX_LOG(OxKernel::kLogWarning,
           OxKernel::oxConcat("geometry '", GeometryName(geometry),
                              "' is not a mesh (a spline or a convex mesh); it is not converted"));
    return {};
  }
  std::set<std::string> dropped;
  std::map<std::tuple<std::string, int, std::string>, Group> groups;
  std::vector<std::tuple<std::string, int, std::string>> order;
  for (const oxDAEMeshPrimitive* primitive : geometry.mesh->primitives) {
    std::vector<Channel> channels = ChannelsOf(*primitive, dropped);
    const auto position = std::find_if(channels.begin(), channels.end(),
                                       [](const Channel& c) { return c.kind == Kind::Position; });
    if (position == channels.end()) continue;
    const uint32_t width = TupleWidth(*primitive);
    int mode = 4;
    const std::vector<Corner> corners = CornersOf(*primitive, width, &*position, mode);
    if (corners.empty()) continue;
    const auto key = std::make_tuple(std::string(primitive->material), mode, Signature(channels));
    auto [it, added] = groups.try_emplace(key);
    Group& group = it->second;
    if (added) {
      group.channels = channels;
      group.vertices = Vertices(channels.size());
      order.push_back(key);
    }
    std::vector<int32_t> tuple(channels.size());
    for (const Corner& corner : corners) {
      const auto& list = primitive->p[corner.list];
      for (size_t c = 0; c < channels.size(); ++c) {
        const size_t at = corner.at * width + channels[c].offset;
        tuple[c] = at < list.size() ? list[at] : -1;
      }
      group.indices.push_back(group.vertices.Add(tuple.data()));
    }
  }
  for (const std::string& semantic : dropped) {
    OX_LOG(OxKernel::kLogWarning,
           OxKernel::oxConcat("geometry '", GeometryName(geometry), "': its input ", semantic,
                              " is not carried over"));
  }
  std::vector<oxGltfPrimitive> primitives;
  SkinningLosses losses;
  for (const auto& key : order) {
    const Group& group = groups.at(key);
    oxGltfPrimitive primitive;
    primitive.symbol = std::get<0>(key);
    primitive.mode = std::get<1>(key);
    primitive.attributes = WriteGroup(group, gltf, skinning, losses);
    if (morphing) primitive.targets = WriteTargets(group, *morphing, skinning, gltf);
    primitive.indices = gltf.AddIndices(group.indices);
    primitives.push_back(std::move(primitive));
  }
  const auto report = [&geometry](size_t count, std::string_view what) {
    if (count == 0) return;
    OX_LOG(OxKernel::kLogWarning, OxKernel::oxConcat("skinned geometry '", GeometryName(geometry),
                                                     "': ", count, " vertices ", what));
  };
  report(losses.beyondEight, "have more than eight influences; the weakest are left out");
  report(losses.unweighted, "have no weight on any joint; they follow the first joint");
  return primitives;
}

}  // namespace OxDAEConvert
