#include <oxDAEConvert/oxDAEMeshTriangles.h>

#include <algorithm>
#include <map>

#include "oxDAEMeshGroups.h"
#include "oxRecords.h"

namespace OxDAEConvert {

namespace {

// Copies `width` floats of channel `c` of every vertex of `group` into
// `out`, which gets an entry for every vertex before; missing records read
// zeros except the last float of a four-float colour, which reads 1.
template <size_t N>
void AppendChannel(const oxMeshGroup& group, size_t c, size_t before,
                   OxKernel::oxArray<std::array<float, N>>& out) {
  out.resize(before, std::array<float, N>{});
  const unsigned int width = c == SIZE_MAX ? 0 : group.channels[c].width;
  const oxRecords records(c == SIZE_MAX ? nullptr : group.channels[c].accessor);
  for (size_t i = 0; i < group.vertices.size(); ++i) {
    std::array<float, N> value{};
    if constexpr (N == 4) value[3] = 1.0f;
    const int32_t record = c == SIZE_MAX ? -1 : group.vertices[i][c];
    for (unsigned int j = 0; record >= 0 && j < std::min<unsigned int>(width, N); ++j) {
      value[j] = static_cast<float>(records(static_cast<size_t>(record), j));
    }
    out.push_back(value);
  }
}

// The channel named `name` in `group`, SIZE_MAX when none.
size_t NamedChannel(const oxMeshGroup& group, std::string_view name) {
  for (size_t c = 0; c < group.channels.size(); ++c) {
    if (group.channels[c].name == name) return c;
  }
  return SIZE_MAX;
}

}  // namespace

oxMeshTriangles MeshTriangles(const OxDAEReader::oxDAEGeometry& geometry) {
  oxMeshTriangles mesh;
  if (!geometry.mesh) return mesh;
  std::set<std::string> dropped;
  const std::vector<oxMeshGroup> groups = GroupPrimitives(*geometry.mesh, dropped);
  const auto has = [&groups](Kind kind) {
    return std::any_of(groups.begin(), groups.end(),
                       [kind](const oxMeshGroup& g) { return ChannelOf(g, kind) != SIZE_MAX; });
  };
  const bool normals = has(Kind::Normal);
  const bool texcoords = std::any_of(groups.begin(), groups.end(), [](const oxMeshGroup& g) {
    return NamedChannel(g, "TEXCOORD_0") != SIZE_MAX;
  });
  const bool colors = has(Kind::Color);
  // Room for every vertex up front: grown a vertex at a time, the arrays of
  // a large mesh would be copied and faulted in again at each doubling.
  size_t vertices = 0;
  for (const oxMeshGroup& group : groups)
    vertices += group.vertices.size();
  mesh.positions.reserve(vertices);
  if (normals) mesh.normals.reserve(vertices);
  if (texcoords) mesh.texcoords.reserve(vertices);
  if (colors) mesh.colors.reserve(vertices);
  mesh.positionRecords.reserve(vertices);
  std::map<std::pair<std::string, bool>, size_t> parts;
  for (const oxMeshGroup& group : groups) {
    const size_t first = mesh.positions.size();
    AppendChannel(group, ChannelOf(group, Kind::Position), first, mesh.positions);
    if (normals) AppendChannel(group, ChannelOf(group, Kind::Normal), first, mesh.normals);
    if (texcoords) AppendChannel(group, NamedChannel(group, "TEXCOORD_0"), first, mesh.texcoords);
    if (colors) AppendChannel(group, ChannelOf(group, Kind::Color), first, mesh.colors);
    const size_t position = ChannelOf(group, Kind::Position);
    for (size_t i = 0; i < group.vertices.size(); ++i)
      mesh.positionRecords.push_back(
          static_cast<uint32_t>(std::max(group.vertices[i][position], 0)));
    const bool lines = group.mode == 1;
    const auto [at, added] = parts.try_emplace({group.symbol, lines}, mesh.parts.size());
    if (added) mesh.parts.push_back({group.symbol, lines, {}});
    OxKernel::oxArray<uint32_t>& indices = mesh.parts[at->second].indices;
    const size_t from = indices.size();
    indices.resize(from + group.indices.size());
    for (size_t i = 0; i < group.indices.size(); ++i)
      indices[from + i] = static_cast<uint32_t>(first + group.indices[i]);
  }
  return mesh;
}

}  // namespace OxDAEConvert
