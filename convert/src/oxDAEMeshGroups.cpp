#include "oxDAEMeshGroups.h"

#include <cmath>
#include <map>
#include <tuple>

#include <oxKernel/oxParallel.h>
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
                size_t list, size_t tuple) {
  if (!position) return {0, 0, 0};
  const auto& indices = primitive.p[list];
  const size_t at = tuple * width + position->offset;
  if (at >= indices.size() || indices[at] < 0) return {0, 0, 0};
  const size_t record = static_cast<size_t>(indices[at]);
  return {RecordFloat(position->accessor, record, 0), RecordFloat(position->accessor, record, 1),
          RecordFloat(position->accessor, record, 2)};
}

// Cuts a polygon of `points.size()` corners into triangles, written to `cut`
// as corner numbers: ears clipped in the plane the polygon faces most (its
// Newell normal), else a fan. `remaining` is working space kept by the
// caller, so that a mesh of many polygons allocates once.
void Triangulate(const std::vector<Vec3>& points, std::vector<size_t>& remaining,
                 std::vector<size_t>& cut) {
  cut.clear();
  const size_t n = points.size();
  const auto fan = [&cut, &remaining] {
    for (size_t i = 1; i + 1 < remaining.size(); ++i)
      cut.insert(cut.end(), {remaining[0], remaining[i], remaining[i + 1]});
  };
  remaining.resize(n);
  for (size_t i = 0; i < n; ++i)
    remaining[i] = i;
  if (n <= 3 || n > kMostClippedCorners) {
    fan();
    return;
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
      cut.insert(cut.end(), {a, b, c});
      remaining.erase(remaining.begin() + static_cast<ptrdiff_t>(i));
      clipped = true;
    }
    if (!clipped) break;  // degenerate or self-crossing: the rest as a fan
  }
  fan();
}

// 1 (segments) for lines and line strips, 4 (triangles) for the rest.
int ModeOf(const oxDAEMeshPrimitive& primitive) {
  return primitive.type == EType::LINES || primitive.type == EType::LINESTRIPS ? 1 : 4;
}

// Calls `face(first, count)` for each face a polylist's counts give over a
// list of `tuples` index tuples. A negative count, or one that runs past the
// list, ends the faces: the cutting and the room reserved for it both read
// the counts here, so a hostile count costs neither.
template <typename Face>
void ForEachPolylistFace(const oxDAEMeshPrimitive& primitive, size_t tuples, Face&& face) {
  size_t first = 0;
  for (const int32_t count : primitive.vcount) {
    if (count < 0 || first + static_cast<size_t>(count) > tuples) return;
    face(first, static_cast<size_t>(count));
    first += static_cast<size_t>(count);
  }
}

// How many corners ForEachCorner gives for `primitive`, to reserve room
// before they come.
size_t CornerCount(const oxDAEMeshPrimitive& primitive, uint32_t width) {
  const auto faces = [](size_t n) { return n >= 3 ? 3 * (n - 2) : 0; };
  size_t corners = 0;
  for (const auto& list : primitive.p) {
    const size_t n = list.size() / width;
    switch (primitive.type) {
      case EType::TRIANGLES:
        corners += n / 3 * 3;
        break;
      case EType::LINES:
        corners += n / 2 * 2;
        break;
      case EType::LINESTRIPS:
        corners += n >= 2 ? 2 * (n - 1) : 0;
        break;
      case EType::TRIFANS:
      case EType::TRISTRIPS:
      case EType::POLYGONS:
        corners += faces(n);
        break;
      case EType::POLYLIST:
        ForEachPolylistFace(primitive, n, [&](size_t, size_t count) { corners += faces(count); });
        break;
    }
  }
  return corners;
}

// Calls `corner(list, tuple)` for each corner of the triangles or line
// segments of `primitive`, in order: the corners are used as they are made,
// because a list of them would be the biggest allocation of a conversion.
// A polygon of more than three corners for which `passOver(triangles)`
// (given the n - 2 triangles it is cut into) returns true is not cut, and
// gives no corners: cutting is the costly part of a polygon, and a caller
// keeping only some triangles need not cut one it keeps none of.
template <typename Emit, typename PassOver>
void ForEachCorner(const oxDAEMeshPrimitive& primitive, uint32_t width, const Channel* position,
                   Emit&& corner, PassOver&& passOver) {
  const auto tuples = [&](size_t list) { return primitive.p[list].size() / width; };
  // Buffers reused from polygon to polygon; a triangle needs none.
  std::vector<Vec3> points;
  std::vector<size_t> remaining;
  std::vector<size_t> cut;
  const auto polygon = [&](size_t list, size_t first, size_t count) {
    if (count == 3) {
      corner(list, first);
      corner(list, first + 1);
      corner(list, first + 2);
      return;
    }
    if (passOver(count - 2)) return;
    points.clear();
    for (size_t i = 0; i < count; ++i)
      points.push_back(PositionOf(primitive, position, width, list, first + i));
    Triangulate(points, remaining, cut);
    for (const size_t i : cut)
      corner(list, first + i);
  };
  const auto triangle = [&corner](size_t list, size_t a, size_t b, size_t c) {
    corner(list, a);
    corner(list, b);
    corner(list, c);
  };
  for (size_t list = 0; list < primitive.p.size(); ++list) {
    const size_t n = tuples(list);
    switch (primitive.type) {
      case EType::TRIANGLES:
        for (size_t i = 0; i + 2 < n; i += 3)
          triangle(list, i, i + 1, i + 2);
        break;
      case EType::LINES:
        for (size_t i = 0; i + 1 < n; i += 2) {
          corner(list, i);
          corner(list, i + 1);
        }
        break;
      case EType::LINESTRIPS:
        for (size_t i = 0; i + 1 < n; ++i) {
          corner(list, i);
          corner(list, i + 1);
        }
        break;
      case EType::TRIFANS:
        for (size_t i = 1; i + 1 < n; ++i)
          triangle(list, 0, i, i + 1);
        break;
      case EType::TRISTRIPS:
        // Every other triangle of a strip turns the other way.
        for (size_t i = 0; i + 2 < n; ++i)
          triangle(list, i % 2 == 0 ? i : i + 1, i % 2 == 0 ? i + 1 : i, i + 2);
        break;
      case EType::POLYGONS:
        if (n >= 3) polygon(list, 0, n);
        break;
      case EType::POLYLIST:
        ForEachPolylistFace(primitive, n, [&](size_t first, size_t count) {
          if (count >= 3) polygon(list, first, count);
        });
        break;
    }
  }
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

// A primitive that goes to a group, with what its corners are read by.
struct Member {
  const oxDAEMeshPrimitive* primitive = nullptr;
  std::vector<Channel> channels;  // its own: merged primitives may differ in offsets
  uint32_t width = 1;             // indices per corner
  size_t corners = 0;             // as ForEachCorner gives them
};

// The Position channel of `member`; every member has one.
const Channel* PositionChannel(const Member& member) {
  return &*std::find_if(member.channels.begin(), member.channels.end(),
                        [](const Channel& c) { return c.kind == Kind::Position; });
}

// How many of the `count` triangles from `first` on `flags` keeps; a
// triangle past the flags is not kept.
size_t KeptTriangles(const std::vector<bool>& flags, size_t first, size_t count) {
  if (first >= flags.size()) return 0;
  const auto from = flags.begin() + static_cast<ptrdiff_t>(first);
  const size_t within = std::min(count, flags.size() - first);
  return static_cast<size_t>(std::count(from, from + static_cast<ptrdiff_t>(within), true));
}

// The vertices and indices of `group` from the corners of its primitives,
// of those triangles `keep` (when set) keeps; `firstTriangle` is the
// number `keep` knows the group's first triangle by. Corners are looked up
// in runs of kRun, each run's slots fetched before the first of them is
// looked up (see Vertices::Prefetch); the run is taken in order, so
// vertices are numbered as they are first used.
void FillGroup(const std::vector<Member>& members, oxMeshGroup& group, const TriangleFilter& keep,
               size_t firstTriangle) {
  constexpr size_t kRun = 16;
  size_t corners = 0;
  for (const Member& member : members)
    corners += member.corners;
  const std::vector<bool>* flags = keep && group.mode == 4 ? keep(group) : nullptr;
  const bool filtered = flags && !flags->empty();
  // Room for the kept corners only: a table sized for every corner of a
  // mesh mostly dropped would cost more to clear than the cut itself.
  if (filtered) corners = 3 * KeptTriangles(*flags, firstTriangle, corners / 3);
  // A group none of whose triangles is kept is not walked at all: passing
  // over the corners of a large, wholly hidden mesh costs milliseconds.
  if (filtered && corners == 0) return;
  group.indices.reserve(corners);
  group.vertices.Reserve(corners);
  size_t corner = firstTriangle * 3;
  // True, passing the triangles over, when none of the next `triangles` is
  // kept.
  const auto keepsNone = [&](size_t triangles) {
    if (!filtered) return false;
    const size_t first = corner / 3;
    if (KeptTriangles(*flags, first, triangles) > 0) return false;
    corner += 3 * triangles;
    return true;
  };
  for (const Member& member : members) {
    const auto& channels = member.channels;
    const Channel* position = PositionChannel(member);
    std::vector<int32_t> run(kRun * channels.size());
    std::array<uint64_t, kRun> hashes;
    size_t waiting = 0;
    const auto lookUp = [&] {
      for (size_t i = 0; i < waiting; ++i)
        group.indices.push_back(group.vertices.Add(&run[i * channels.size()], hashes[i]));
      waiting = 0;
    };
    ForEachCorner(
        *member.primitive, member.width, position,
        [&](size_t list, size_t at) {
          if (filtered) {
            const size_t triangle = corner++ / 3;
            if (triangle >= flags->size() || !(*flags)[triangle]) return;
          }
          const auto& indices = member.primitive->p[list];
          int32_t* tuple = &run[waiting * channels.size()];
          for (size_t c = 0; c < channels.size(); ++c) {
            const size_t i = at * member.width + channels[c].offset;
            tuple[c] = i < indices.size() ? indices[i] : -1;
          }
          hashes[waiting] = group.vertices.Hash(tuple);
          group.vertices.Prefetch(hashes[waiting]);
          if (++waiting == kRun) lookUp();
        },
        keepsNone);
    lookUp();
  }
}

// The groups of `mesh`'s primitives in the order first met, their
// vertices not yet made, and the members of each.
std::vector<oxMeshGroup> SortPrimitives(const oxDAEMesh& mesh, std::set<std::string>& dropped,
                                        std::vector<std::vector<Member>>& members) {
  std::vector<oxMeshGroup> groups;
  std::map<std::tuple<std::string, int, std::string>, size_t> found;
  for (const oxDAEMeshPrimitive* primitive : mesh.primitives) {
    Member member{primitive, ChannelsOf(*primitive, dropped), TupleWidth(*primitive), 0};
    const auto position = std::find_if(member.channels.begin(), member.channels.end(),
                                       [](const Channel& c) { return c.kind == Kind::Position; });
    if (position == member.channels.end()) continue;
    member.corners = CornerCount(*primitive, member.width);
    // A primitive without a whole face starts no group.
    if (member.corners == 0) continue;
    const int mode = ModeOf(*primitive);
    const auto key =
        std::make_tuple(std::string(primitive->material), mode, Signature(member.channels));
    const auto [it, added] = found.try_emplace(key, groups.size());
    if (added) {
      groups.push_back(
          {std::get<0>(key), mode, member.channels, Vertices(member.channels.size()), {}});
      members.emplace_back();
    }
    members[it->second].push_back(std::move(member));
  }
  return groups;
}

}  // namespace

std::vector<oxMeshGroup> GroupPrimitives(const oxDAEMesh& mesh, std::set<std::string>& dropped,
                                         const TriangleFilter& keep) {
  // First which primitive goes to which group, in one pass; then each
  // group's vertices, the groups side by side on the machine's cores: a
  // group depends only on its own primitives, taken in document order, so
  // the result is the same however the work is shared.
  std::vector<std::vector<Member>> members;
  std::vector<oxMeshGroup> groups = SortPrimitives(mesh, dropped, members);
  // The triangles of one symbol and mode are numbered across its groups.
  std::vector<size_t> firstTriangle(groups.size(), 0);
  std::map<std::pair<std::string, int>, size_t> numbered;
  for (size_t g = 0; g < groups.size(); ++g) {
    size_t& next = numbered[{groups[g].symbol, groups[g].mode}];
    firstTriangle[g] = next;
    for (const Member& member : members[g])
      next += member.corners / 3;
  }
  OxKernel::oxParallelFor(
      groups.size(), [&](size_t g) { FillGroup(members[g], groups[g], keep, firstTriangle[g]); });
  return groups;
}

std::vector<oxCornerGroup> GroupCorners(const oxDAEMesh& mesh) {
  std::set<std::string> dropped;
  std::vector<std::vector<Member>> members;
  const std::vector<oxMeshGroup> sorted = SortPrimitives(mesh, dropped, members);
  std::vector<oxCornerGroup> groups(sorted.size());
  OxKernel::oxParallelFor(groups.size(), [&](size_t g) {
    oxCornerGroup& group = groups[g];
    group.symbol = sorted[g].symbol;
    group.mode = sorted[g].mode;
    group.positions = sorted[g].channels[ChannelOf(sorted[g], Kind::Position)].accessor;
    group.normals = ChannelOf(sorted[g], Kind::Normal) != SIZE_MAX;
    size_t corners = 0;
    for (const Member& member : members[g])
      corners += member.corners;
    group.corners.reserve(corners);
    for (const Member& member : members[g]) {
      const Channel* position = PositionChannel(member);
      ForEachCorner(
          *member.primitive, member.width, position,
          [&](size_t list, size_t at) {
            const auto& indices = member.primitive->p[list];
            const size_t i = at * member.width + position->offset;
            group.corners.push_back(i < indices.size() ? indices[i] : -1);
          },
          [](size_t) { return false; });
    }
  });
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
