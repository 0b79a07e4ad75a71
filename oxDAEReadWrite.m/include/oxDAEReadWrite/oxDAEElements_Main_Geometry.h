// Geometry, in document order: <geometry> > <mesh> > <source>, <vertices>,
// the primitives (<lines> ... <tristrips>) with their <input>s and <p>
// lists; <geometry> > <spline> > <control_vertices>. The module keeps what it
// reads: it neither triangulates nor de-indexes.
#pragma once

#include <cstdint>

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEAccessor;
class oxDAEMesh;
class oxDAEMeshPrimitive;
class oxDAESource;
class oxDAESpline;
class oxDAEControlVertices;

// <input>: "offset" and "set" (0), "semantic" as written (empty) with its
// document token (NONE), and "source" as written (empty) with the element it
// resolved to when read (a source, or the vertices for "VERTEX"; null when
// it did not resolve; not owned).
class oxDAEInputElement : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEInputElement, oxDAEBaseElement, "input")

 public:
  void Read(oxDAEFile& file) override;
  // Writes "offset" always, the token's canonical spelling as "semantic",
  // "set" when non-zero, and the source's reference (or the text read).
  void Write(oxDAEFile& file) override;
  // The accessor of the source's common technique; null when the input has
  // no source, its source is not a <source> (as for "VERTEX"), or the source
  // has no common technique.
  oxDAEAccessor* GetCommonAccessor() const;
  // The "source" text to write: the reference of the element the input
  // resolved to, else the text read (empty when there was none).
  oxString GetSourceReference(oxDAEFile& file) const;
  // The first of `inputs` whose semantic text equals `semantic` exactly, or
  // null: the lookup every element with inputs offers as GetInput.
  static oxDAEInputElement* FindBySemantic(const oxArray<oxDAEInputElement*>& inputs,
                                           const oxString& semantic);

  uint32_t offset = 0;
  uint32_t set = 0;
  oxString semantic;
  EToken semanticToken = EToken::NONE;
  oxDAEBaseElement* source = nullptr;
  oxString sourceURI;
};

// <vertices>: its inputs in document order.
class oxDAEVertices : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEVertices, oxDAEElement, "vertices")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;
  // The first input whose semantic text equals `semantic` exactly, or null.
  oxDAEInputElement* GetInput(const oxString& semantic) const;

  oxArray<oxDAEInputElement*> inputs;
};

// <geometry>: its mesh or spline (null when absent) and extras. A geometry
// without an id takes its name as id. Only the mesh is written.
class oxDAEGeometry : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEGeometry, oxDAEElement, "geometry")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  oxDAEMesh* mesh = nullptr;
  oxDAESpline* spline = nullptr;
};

// <mesh>: sources, vertices (null; a later one replaces an earlier one) and
// primitives, each in document order.
class oxDAEMesh : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEMesh, oxDAEElement, "mesh")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  oxArray<oxDAESource*> sources;
  oxDAEVertices* vertices = nullptr;
  oxArray<oxDAEMeshPrimitive*> primitives;
};

// A primitive element (<lines>, <linestrips>, <polygons>, <polylist>,
// <triangles>, <trifans>, <tristrips>): its type (given at construction),
// "count" (0), "material" (empty) and the element whose id it names (null;
// not owned), its inputs, one index list per <p> and the <vcount> list.
class oxDAEMeshPrimitive : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEMeshPrimitive, oxDAEBaseElement, "")

 public:
  enum class EType : int32_t {
    LINES,
    LINESTRIPS,
    POLYGONS,
    POLYLIST,
    TRIANGLES,
    TRIFANS,
    TRISTRIPS
  };
  // The tags of the seven types, by type.
  static const std::string_view kTags[7];
  // How many index lists a primitive may hold beyond half its byte size.
  static constexpr uint32_t kSpareIndexLists = 16;

  oxDAEMeshPrimitive() = default;
  explicit oxDAEMeshPrimitive(EType type) : type(type) {}

  // Triangles and polylists hold one index list, the other types "count"
  // lists (bounded, with an error, by half the element's size in bytes plus
  // kSpareIndexLists); <p> elements beyond the lists are ignored. A <p>
  // whose text is split by comments or elements is gathered into one list.
  void Read(oxDAEFile& file) override;
  // Writes the element of its type (a polylist has no element of its own:
  // its inputs and lists go into the enclosing element), "count",
  // "material" when set, the inputs and one <p> per list; never <vcount>.
  void Write(oxDAEFile& file) override;
  // The total number of indices in all lists.
  size_t GetIndexCount() const;

  EType type = EType::TRIANGLES;
  uint32_t count = 0;
  oxString material;
  oxDAEBaseElement* materialElement = nullptr;
  oxArray<oxDAEInputElement*> inputs;
  oxArray<oxArray<int32_t>> p;
  oxArray<int32_t> vcount;
};

// <spline>: "closed" (false), its sources and control vertices (null). Read,
// not written.
class oxDAESpline : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAESpline, oxDAEBaseElement, "spline")

 public:
  void Read(oxDAEFile& file) override;

  bool closed = false;
  oxArray<oxDAESource*> sources;
  oxDAEControlVertices* controlVertices = nullptr;
};

// <control_vertices>: its inputs. Read, not written.
class oxDAEControlVertices : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEControlVertices, oxDAEBaseElement, "control_vertices")

 public:
  void Read(oxDAEFile& file) override;
  // The first input whose semantic text equals `semantic` exactly, or null.
  oxDAEInputElement* GetInput(const oxString& semantic) const;

  oxArray<oxDAEInputElement*> inputs;
};

}  // namespace OxDAEReader
