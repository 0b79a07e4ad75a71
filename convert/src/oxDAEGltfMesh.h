// A COLLADA <geometry> as glTF primitives.
#pragma once

#include <string>
#include <vector>

#include <oxDAEReadWrite/oxDAEElements_Main_Geometry.h>
#include <oxMath/oxMatrix44.h>

#include "oxGltfBuilder.h"

namespace OxDAEConvert {

// One glTF primitive: the COLLADA primitives of one material symbol, one
// mode and one set of attributes, merged.
struct oxGltfPrimitive {
  std::string symbol;  // the COLLADA material symbol, empty when none
  int mode = 4;        // 4 triangles, 1 lines
  Json attributes;     // attribute name -> accessor index
  size_t indices = 0;  // accessor index
  Json targets;        // morph targets (null when none)
};

// What skins a mesh: the bind shape matrix (host layout) that places the
// vertices before the joints move them, and per COLLADA vertex (POSITION
// record) its influences as (glTF joint number, weight).
struct oxGltfSkinning {
  OxMath::oxMatrix44 bindShape;
  std::vector<std::vector<std::pair<uint16_t, float>>> influences;
};

// The morph targets of a mesh: per target the POSITION records of its
// geometry, which are read at the same record numbers as the base's, and
// whether they are offsets already (RELATIVE) or positions (NORMALIZED).
struct oxGltfMorphing {
  std::vector<const OxDAEReader::oxDAEAccessor*> targets;
  bool relative = false;
};

// Writes the vertices and indices of `geometry`'s mesh into `gltf` and
// returns its primitives (none for a geometry without a mesh, which is
// reported). Polygons are triangulated by ear clipping in their plane;
// strips and fans become triangles; lines and line strips become lines.
// Every index tuple that occurs becomes one vertex. Inputs glTF has no
// attribute for are named in a warning.
//
// With `skinning`, positions, normals and tangents are first placed by the
// bind shape matrix, and each vertex gets JOINTS_0 and WEIGHTS_0: its four
// strongest influences, weights normalised to sum 1; a vertex with more
// than four also gets JOINTS_1 and WEIGHTS_1 for the next four, the eight
// normalised together. Weaker influences beyond eight, influences of the
// bind shape (joint -1) and vertices without influences (which follow joint
// 0) are counted in one warning each.
//
// With `morphing`, each primitive gets one glTF morph target per target
// geometry: the POSITION offsets of its vertices from the base's (skinned
// vertices' offsets placed by the bind shape matrix's rotation and scale).
std::vector<oxGltfPrimitive> ConvertGeometry(const OxDAEReader::oxDAEGeometry& geometry,
                                             oxGltfBuilder& gltf,
                                             const oxGltfSkinning* skinning = nullptr,
                                             const oxGltfMorphing* morphing = nullptr);

}  // namespace OxDAEConvert
