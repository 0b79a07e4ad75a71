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

}  // namespace OxDAEConvert
