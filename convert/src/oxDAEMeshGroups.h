// The primitives of a <mesh> regrouped for drawing: per material symbol,
// kind of face and set of inputs, one list of distinct index tuples (the
// vertices) and the triangles or line segments that use them. The glTF
// writer and MeshTriangles both start from here.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <oxDAEReadWrite/oxDAEElements_Main_Geometry.h>

namespace OxDAEConvert {

// A point or direction in double precision, for the geometry work.
using Vec3 = std::array<double, 3>;

enum class Kind { Position, Normal, Texcoord, Color, Tangent, Binormal };

// One attribute of a primitive's vertices: where its index sits in a
// tuple and the source records it indexes.
struct Channel {
  std::string name;
  Kind kind = Kind::Position;
  uint32_t offset = 0;
  const OxDAEReader::oxDAEAccessor* accessor = nullptr;
  unsigned int width = 3;
};

// The distinct index tuples of a primitive, one per drawn vertex in the
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

// The merged vertices and indices of the primitives of one material symbol,
// one mode and one set of channels.
struct oxMeshGroup {
  std::string symbol;             // the COLLADA material symbol, empty when none
  int mode = 4;                   // 4 triangles, 1 lines (glTF's numbers)
  std::vector<Channel> channels;  // of the first COLLADA primitive merged
  Vertices vertices;              // per vertex: the index of each channel
  std::vector<uint32_t> indices;
};

// The groups of `mesh`'s primitives in the order first met. Polygons are cut
// by ear clipping in the plane they face most; strips and fans become
// triangles; lines and line strips become segments. Primitives without a
// POSITION input or without a whole face are left out. Inputs without a
// channel (glTF has no attribute for them) are added to `dropped`.
std::vector<oxMeshGroup> GroupPrimitives(const OxDAEReader::oxDAEMesh& mesh,
                                         std::set<std::string>& dropped);

// The first channel of `kind` in `group`, SIZE_MAX when none.
size_t ChannelOf(const oxMeshGroup& group, Kind kind);

// The geometry's id for messages, "(no id)" when it has none.
std::string GeometryName(const OxDAEReader::oxDAEGeometry& geometry);

}  // namespace OxDAEConvert
