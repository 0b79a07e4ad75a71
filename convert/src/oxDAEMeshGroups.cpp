#include "oxDAEMeshGroups.h"

#include <cmath>
#include <map>
#include <tuple>

#include "oxRecords.h"

namespace OxDAEConvert {

using OxDAEReader::oxDAEAccessor;
using OxDAEReader::oxDAEGeometry;
using OxDAEReader::oxDAEInputElement;
using OxDAEReader::oxDAEMesh;
using OxDAEReader::oxDAEMeshPrimitive;
using OxDAEReader::oxDAEVertices;
using EType = oxDAEMeshPrimitive::EType;

namespace {

// Polygons with more corners than this are cut as fans: ear clipping takes
// time quadratic in the corners.
constexpr size_t kMostClippedCorners = 256;

// A corner of a face: list `list` of the primitive, tuple starting at `at`.
struct Corner {
  size_t list = 0;
  size_t at = 0;
};

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

}  // namespace

std::vector<oxMeshGroup> GroupPrimitives(const oxDAEMesh& mesh, std::set<std::string>& dropped) {
  std::vector<oxMeshGroup> groups;
  std::map<std::tuple<std::string, int, std::string>, size_t> found;
  for (const oxDAEMeshPrimitive* primitive : mesh.primitives) {
    std::vector<Channel> channels = ChannelsOf(*primitive, dropped);
    const auto position = std::find_if(channels.begin(), channels.end(),
                                       [](const Channel& c) { return c.kind == Kind::Position; });
    if (position == channels.end()) continue;
    const uint32_t width = TupleWidth(*primitive);
    int mode = 4;
    const std::vector<Corner> corners = CornersOf(*primitive, width, &*position, mode);
    if (corners.empty()) continue;
    const auto key = std::make_tuple(std::string(primitive->material), mode, Signature(channels));
    const auto [it, added] = found.try_emplace(key, groups.size());
    if (added) {
      groups.push_back({std::get<0>(key), mode, channels, Vertices(channels.size()), {}});
    }
    oxMeshGroup& group = groups[it->second];
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
  return groups;
}

size_t ChannelOf(const oxMeshGroup& group, Kind kind) {
  for (size_t c = 0; c < group.channels.size(); ++c) {
    if (group.channels[c].kind == kind) return c;
  }
  return SIZE_MAX;
}

std::string GeometryName(const oxDAEGeometry& geometry) {
  return geometry.id.empty() ? std::string("(no id)") : std::string(geometry.id);
}

}  // namespace OxDAEConvert
