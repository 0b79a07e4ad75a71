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

// Where each (material symbol, lines) part stands in a list of parts.
using PartPlaces = std::map<std::pair<std::string, bool>, size_t>;

// The part of `parts` that `group`'s triangles or segments go to, added at
// the end when its symbol and kind are new: MeshTriangles and MeshCorners
// number their parts alike.
template <typename Part, typename Group>
Part& PartOf(const Group& group, std::vector<Part>& parts, PartPlaces& places) {
  const bool lines = group.mode == 1;
  const auto [at, added] = places.try_emplace({group.symbol, lines}, parts.size());
  if (added) {
    parts.emplace_back();
    parts.back().symbol = group.symbol;
    parts.back().lines = lines;
  }
  return parts[at->second];
}

// The mesh of the groups GroupPrimitives made.
oxMeshTriangles FromGroups(const std::vector<oxMeshGroup>& groups) {
  oxMeshTriangles mesh;
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
  PartPlaces places;
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
    OxKernel::oxArray<uint32_t>& indices = PartOf(group, mesh.parts, places).indices;
    const size_t from = indices.size();
    indices.resize(from + group.indices.size());
    for (size_t i = 0; i < group.indices.size(); ++i)
      indices[from + i] = static_cast<uint32_t>(first + group.indices[i]);
  }
  return mesh;
}

// Numbers the entries of oxMeshCorners::positions: every record of each
// source in one run, and the indices past a source or negative one by one.
// A source far larger than the corners that read it (a shared array, or a
// hostile one) is numbered record by record as its corners name them
// instead, so that the entries never outgrow the corners.
class PositionEntries {
 public:
  explicit PositionEntries(oxMeshCorners::Positions& positions) : m_positions(positions) {}

  // Where the records of `source` begin among the entries, and how many
  // there are: each record of a corner lies there, which spares a lookup
  // per corner.
  struct Run {
    size_t first;
    size_t count;
    uint32_t Of(const OxDAEReader::oxDAEAccessor* source, int32_t index,
                PositionEntries& entries) const {
      if (index >= 0 && static_cast<size_t>(index) < count)
        return static_cast<uint32_t>(first + static_cast<size_t>(index));
      return entries.Stray(source, index);
    }
  };

  // The run of `source`, which `corners` corners of the mesh read.
  Run RunOf(const OxDAEReader::oxDAEAccessor* source, size_t corners) {
    const auto [run, added] = m_runs.try_emplace(source, Run{m_positions.values.size(), 0});
    if (added && HeldRecords(source) <= kRunPerCorner * corners + kSmallRun)
      run->second.count = AddRun(source);
    return run->second;
  }

 private:
  // How many records a run may hold per corner reading it, beyond a few.
  static constexpr size_t kRunPerCorner = 4;
  static constexpr size_t kSmallRun = 4096;

  // The entry of an index past `source`'s run or negative, added when new.
  uint32_t Stray(const OxDAEReader::oxDAEAccessor* source, int32_t index) {
    const auto [stray, added] =
        m_strays.try_emplace({source, std::max(index, -1)}, m_positions.values.size());
    if (added) Add(oxRecords(source), index);
    return static_cast<uint32_t>(stray->second);
  }

  // Adds every record the source's array holds; returns how many.
  size_t AddRun(const OxDAEReader::oxDAEAccessor* source) {
    const size_t count = HeldRecords(source);
    const oxRecords records(source);
    m_positions.values.reserve(m_positions.values.size() + count);
    m_positions.records.reserve(m_positions.records.size() + count);
    for (size_t r = 0; r < count; ++r)
      Add(records, static_cast<int32_t>(r));
    return count;
  }

  // The records that begin inside the source's array (at most 2^31, as
  // indices go).
  static size_t HeldRecords(const OxDAEReader::oxDAEAccessor* source) {
    if (!HasRecords(source)) return 0;
    const size_t floats = source->source->floats.size();
    const size_t first = static_cast<size_t>(source->offset) * RecordStride(source);
    return floats > first ? std::min<size_t>((floats - first) / RecordStride(source), INT32_MAX)
                          : 0;
  }

  void Add(const oxRecords& records, int32_t index) {
    std::array<float, 3> value{};
    for (unsigned int j = 0; index >= 0 && j < 3; ++j)
      value[j] = static_cast<float>(records(static_cast<size_t>(index), j));
    m_positions.values.push_back(value);
    m_positions.records.push_back(static_cast<uint32_t>(std::max(index, 0)));
  }

  oxMeshCorners::Positions& m_positions;
  std::map<const OxDAEReader::oxDAEAccessor*, Run> m_runs;
  std::map<std::pair<const OxDAEReader::oxDAEAccessor*, int32_t>, size_t> m_strays;
};

}  // namespace

oxMeshTriangles MeshTriangles(const OxDAEReader::oxDAEGeometry& geometry) {
  if (!geometry.mesh) return {};
  std::set<std::string> dropped;
  return FromGroups(GroupPrimitives(*geometry.mesh, dropped));
}

oxMeshCorners MeshCorners(const OxDAEReader::oxDAEGeometry& geometry) {
  oxMeshCorners mesh;
  if (!geometry.mesh) return mesh;
  const std::vector<oxCornerGroup> groups = GroupCorners(*geometry.mesh);
  std::map<const OxDAEReader::oxDAEAccessor*, size_t> reading;
  for (const oxCornerGroup& group : groups)
    reading[group.positions] += group.corners.size();
  PositionEntries entries(mesh.positions);
  PartPlaces places;
  for (const oxCornerGroup& group : groups) {
    mesh.normals = mesh.normals || group.normals;
    OxKernel::oxArray<uint32_t>& corners = PartOf(group, mesh.parts, places).corners;
    corners.reserve(corners.size() + group.corners.size());
    const PositionEntries::Run run = entries.RunOf(group.positions, reading[group.positions]);
    for (const int32_t index : group.corners)
      corners.push_back(run.Of(group.positions, index, entries));
  }
  return mesh;
}

oxMeshTriangles MeshTriangles(const OxDAEReader::oxDAEGeometry& geometry,
                              const oxMeshCorners& corners) {
  if (!geometry.mesh) return {};
  std::map<std::pair<std::string, bool>, const std::vector<bool>*> keep;
  for (const oxMeshCorners::Part& part : corners.parts)
    keep.emplace(std::make_pair(part.symbol, part.lines), &part.keep);
  std::set<std::string> dropped;
  return FromGroups(GroupPrimitives(*geometry.mesh, dropped, [&keep](const oxMeshGroup& group) {
    const auto found = keep.find({group.symbol, group.mode == 1});
    return found != keep.end() ? found->second : nullptr;
  }));
}

}  // namespace OxDAEConvert
