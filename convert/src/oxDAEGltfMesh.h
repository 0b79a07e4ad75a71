// A COLLADA <geometry> as glTF primitives.
#pragma once

#include <string>
#include <vector>

#include <oxDAEReadWrite/oxDAEElements_Main_Geometry.h>

#include "oxGltfBuilder.h"

namespace OxDAEConvert {

// One glTF primitive: the COLLADA primitives of one material symbol, one
// mode and one set of attributes, merged.
struct oxGltfPrimitive {
  std::string symbol;  // the COLLADA material symbol, empty when none
  int mode = 4;        // 4 triangles, 1 lines
  Json attributes;     // attribute name -> accessor index
  size_t indices = 0;  // accessor index
};

// Writes the vertices and indices of `geometry`'s mesh into `gltf` and
// returns its primitives (none for a geometry without a mesh, which is
// reported). Polygons are triangulated by ear clipping in their plane;
// strips and fans become triangles; lines and line strips become lines.
// Every index tuple that occurs becomes one vertex. Inputs glTF has no
// attribute for are named in a warning.
std::vector<oxGltfPrimitive> ConvertGeometry(const OxDAEReader::oxDAEGeometry& geometry,
                                             oxGltfBuilder& gltf);

}  // namespace OxDAEConvert
