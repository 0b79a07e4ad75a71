// The primitives of a <mesh> regrouped for drawing: per material symbol,
// kind of face and set of inputs, one list of distinct index tuples (the
// vertices) and the triangles or line segments that use them. The glTF
// writer and MeshTriangles both start from here.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <oxDAEReadWrite/oxDAEElements_Main_Geometry.h>
#include <oxKernel/oxContainers.h>

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
  size_t size() const { return m_count; }
  const int32_t* operator[](size_t i) const { return m_tuples.data() + i * m_width; }

  // Room for `more` vertices beyond those held, so that adding them
  // neither moves the tuples nor rebuilds the table.
  void Reserve(size_t more) {
    m_tuples.reserve((m_count + more) * m_width);
    size_t slots = std::max<size_t>(64, m_slots.size());
    while (slots < 2 * (m_count + more))
      slots *= 2;
    if (slots > m_slots.size()) Rehash(slots);
  }

  // The vertex of `tuple` (m_width indices, whose Hash is `hash`), added
  // when new.
  uint32_t Add(const int32_t* tuple, uint64_t hash) {
    if (2 * (m_count + 1) > m_slots.size()) Rehash(std::max<size_t>(64, m_slots.size() * 2));
    const uint64_t tag = hash & kTagBits;
    const size_t mask = m_slots.size() - 1;
    for (size_t slot = hash & mask;; slot = (slot + 1) & mask) {
      const uint64_t entry = m_slots[slot];
      if (entry == 0) {
        const size_t at = m_tuples.size();
        m_tuples.resize(at + m_width);
        std::copy(tuple, tuple + m_width, m_tuples.data() + at);
        m_slots[slot] = tag | ++m_count;
        return static_cast<uint32_t>(m_count - 1);
      }
      const auto vertex = static_cast<uint32_t>(entry - 1);
      if ((entry & kTagBits) == tag && Same(tuple, (*this)[vertex])) return vertex;
    }
  }

  // Each index multiplied by its own odd constant, then mixed once: the
  // low bits pick the slot, the high bits make the tag.
  uint64_t Hash(const int32_t* tuple) const {
    uint64_t h = 0;
    for (size_t i = 0; i < m_width; ++i)
      h += (static_cast<uint64_t>(static_cast<uint32_t>(tuple[i])) + 1) *
           (0x9E3779B97F4A7C15u + 2 * i);
    h ^= h >> 29;
    h *= 0xBF58476D1CE4E5B9u;
    return h ^ (h >> 32);
  }

  // Starts bringing the slot a tuple of `hash` is first looked for in into
  // the cache. In a table larger than the cache nearly every lookup waits
  // for memory; asking for several slots before looking any up lets those
  // waits overlap.
  void Prefetch(uint64_t hash) const {
    if (!m_slots.empty()) __builtin_prefetch(&m_slots[hash & (m_slots.size() - 1)]);
  }

 private:
  // A slot holds the vertex number + 1 (0 when empty) in its low half and
  // the high half of the tuple's hash in its high half, so that a probe
  // past another tuple seldom has to read that tuple.
  static constexpr uint64_t kTagBits = 0xFFFFFFFF00000000u;

  // A loop rather than std::equal, which calls memcmp for a few bytes.
  bool Same(const int32_t* a, const int32_t* b) const {
    for (size_t i = 0; i < m_width; ++i) {
      if (a[i] != b[i]) return false;
    }
    return true;
  }
  void Rehash(size_t slots) {
    m_slots.assign(slots, 0);
    const size_t mask = slots - 1;
    for (size_t v = 0; v < m_count; ++v) {
      const uint64_t hash = Hash((*this)[v]);
      size_t slot = hash & mask;
      while (m_slots[slot] != 0)
        slot = (slot + 1) & mask;
      m_slots[slot] = (hash & kTagBits) | (v + 1);
    }
  }

  // In the host's large blocks, as are a group's indices: a big mesh's
  // vertices would otherwise cost a page fault per 4 kB as they grow.
  size_t m_width;
  size_t m_count = 0;
  OxKernel::oxArray<int32_t> m_tuples;
  OxKernel::oxArray<uint64_t> m_slots;
};

// The merged vertices and indices of the primitives of one material symbol,
// one mode and one set of channels.
struct oxMeshGroup {
  std::string symbol;             // the COLLADA material symbol, empty when none
  int mode = 4;                   // 4 triangles, 1 lines (glTF's numbers)
  std::vector<Channel> channels;  // of the first COLLADA primitive merged
  Vertices vertices;              // per vertex: the index of each channel
  OxKernel::oxArray<uint32_t> indices;
};

// Which triangles of the groups of `group`'s symbol and mode to make, by
// their number counted across those groups in group order: a triangle is
// made when its flag is set or the flags are empty; null makes them all.
using TriangleFilter = std::function<const std::vector<bool>*(const oxMeshGroup& group)>;

// The groups of `mesh`'s primitives in the order first met. Polygons are cut
// by ear clipping in the plane they face most; strips and fans become
// triangles; lines and line strips become segments. Primitives without a
// POSITION input or without a whole face are left out. Inputs without a
// channel (glTF has no attribute for them) are added to `dropped`. With
// `keep`, only the triangles it keeps are made, and only the vertices they
// use; line segments are all made.
std::vector<oxMeshGroup> GroupPrimitives(const OxDAEReader::oxDAEMesh& mesh,
                                         std::set<std::string>& dropped,
                                         const TriangleFilter& keep = {});

// The corners of a group as GroupPrimitives cuts them, before any vertex
// is made: the POSITION index of each.
struct oxCornerGroup {
  std::string symbol;  // the COLLADA material symbol, empty when none
  int mode = 4;        // 4 triangles, 1 lines
  const OxDAEReader::oxDAEAccessor* positions = nullptr;  // the records POSITION reads
  bool normals = false;                                   // the group has a NORMAL input
  // Per corner, in the order GroupPrimitives makes them: the POSITION
  // index, -1 where the corner's list ends before it.
  OxKernel::oxArray<int32_t> corners;
};

// The groups GroupPrimitives makes of `mesh`, in the same order, as corners.
std::vector<oxCornerGroup> GroupCorners(const OxDAEReader::oxDAEMesh& mesh);

// The first channel of `kind` in `group`, SIZE_MAX when none.
size_t ChannelOf(const oxMeshGroup& group, Kind kind);

// The geometry's id for messages, "(no id)" when it has none.
std::string GeometryName(const OxDAEReader::oxDAEGeometry& geometry);

}  // namespace OxDAEConvert
