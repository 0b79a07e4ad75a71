// A <geometry>'s mesh in drawable form, for hosts that draw or export it:
// one vertex per distinct index tuple, and per material symbol the
// triangles or line segments that use them. The glTF converter and the
// renderer both take their meshes from here, so both cut polygons the same
// way.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <oxDAEReadWrite/oxDAEElements_Main_Geometry.h>
#include <oxKernel/oxContainers.h>

namespace OxDAEConvert {

// The drawable form of one mesh. Every array of per-vertex values has one
// entry per vertex, or none when no primitive of the mesh has that input.
// A vertex reads zeros where its primitive lacks an input the others have.
// The arrays are the host's (large blocks in large pages): a big mesh's
// would otherwise cost a page fault per 4 kB.
struct oxMeshTriangles {
  // The triangles (three indices each) or line segments (two each) of the
  // primitives of one material symbol and one kind, in document order.
  struct Part {
    std::string symbol;  // the primitives' "material", empty when none
    bool lines = false;  // line segments rather than triangles
    OxKernel::oxArray<uint32_t> indices;
  };

  OxKernel::oxArray<std::array<float, 3>> positions;
  OxKernel::oxArray<std::array<float, 3>> normals;  // as the document gives them
  // The lowest TEXCOORD set, as the document gives it (origin at the
  // picture's bottom left).
  OxKernel::oxArray<std::array<float, 2>> texcoords;
  OxKernel::oxArray<std::array<float, 4>> colors;  // COLOR, alpha 1 when RGB
  // The POSITION record each vertex reads: skin influences and morph
  // targets are given per record.
  OxKernel::oxArray<uint32_t> positionRecords;
  std::vector<Part> parts;
};

// The mesh of `geometry` (empty for a geometry without one). Polygons are
// cut by ear clipping in the plane they face most; strips and fans become
// triangles; lines and line strips become segments. Indices past their
// source read zeros; primitives without POSITION and faces with too few
// corners are left out, as the glTF converter leaves them out. Polygons
// with holes (<ph>) are not in the document tree: its reader reports them
// as unknown children of <mesh>.
oxMeshTriangles MeshTriangles(const OxDAEReader::oxDAEGeometry& geometry);

// Where the corners of a mesh's parts lie, before any vertex is made: a
// cheap first look for a host that draws only some of the triangles (those
// it can see, say), then cuts just those with the MeshTriangles below.
struct oxMeshCorners {
  // The POSITION values the corners read, each (source, record) once: every
  // record of each source the mesh reads, in the order the parts first
  // name the sources, then the corners' indices past their source or
  // negative, each once in the order met. A source of more than four
  // records per corner reading it (and 4,096 besides) is not taken whole:
  // its records are entries as the corners first name them.
  struct Positions {
    // x y z, as MeshTriangles reads them: zeros past the source.
    OxKernel::oxArray<std::array<float, 3>> values;
    // The record, as oxMeshTriangles::positionRecords gives it (0 for a
    // negative index).
    OxKernel::oxArray<uint32_t> records;
  };

  // The corners of MeshTriangles's part of the same number: the same
  // symbol and kind, a corner for each of its indices, in order.
  struct Part {
    std::string symbol;
    bool lines = false;
    OxKernel::oxArray<uint32_t> corners;  // the entry of `positions` each corner reads
    // Which triangles MeshTriangles(geometry, corners) makes, by number;
    // empty (the default) for all of them. Line segments are all made.
    std::vector<bool> keep;
  };

  Positions positions;
  std::vector<Part> parts;
  bool normals = false;  // some primitive has a NORMAL input
};

// The corners of `geometry`'s mesh (empty for a geometry without one), cut
// as MeshTriangles cuts them.
oxMeshCorners MeshCorners(const OxDAEReader::oxDAEGeometry& geometry);

// MeshTriangles(geometry) with only the triangles `corners` (from
// MeshCorners of the same geometry) keeps, and only the vertices they and
// the line segments use: the kept triangles and every segment come in the
// same order, over vertices of the same values, numbered as the kept
// triangles first use them.
oxMeshTriangles MeshTriangles(const OxDAEReader::oxDAEGeometry& geometry,
                              const oxMeshCorners& corners);

}  // namespace OxDAEConvert
