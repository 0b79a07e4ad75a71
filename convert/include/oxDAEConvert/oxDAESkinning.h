// What a host needs to deform a <skin>: the joint nodes its JOINT source
// names, each vertex's influences and the inverse bind matrices, read
// through the module's public tree. The renderer deforms vertices with
// these; the glTF converter carries the same values over.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include <oxDAEReadWrite/oxDAEElements_Animation_Controller.h>
#include <oxDAEReadWrite/oxDAEElements_Instance.h>
#include <oxDAEReadWrite/oxDAEElements_Main_Node.h>
#include <oxDAEReadWrite/oxDAEReadWrite_File.h>

namespace OxDAEConvert {

// One joint's share of a vertex: the joint's position in the JOINT source
// (-1 for the bind shape itself) and its weight.
struct oxSkinInfluence {
  int32_t joint = -1;
  float weight = 0.0f;
};

// The influences of every vertex of a skin (one per POSITION record of its
// geometry): vertex k's are influences[first[k]] up to influences[first[k +
// 1]], so `first` holds one entry more than there are vertices (or none).
struct oxSkinWeights {
  std::vector<oxSkinInfluence> influences;
  std::vector<size_t> first;

  size_t VertexCount() const { return first.empty() ? 0 : first.size() - 1; }
};

// The names the skin's JOINT source lists, in order; empty when the skin
// has no JOINT input with a name array.
std::vector<std::string_view> SkinJointNames(const OxDAEReader::oxDAESkin& skin);

// The node a joint name stands for: by sid (or id) below the instance's
// skeleton nodes, else the node with that id, else the first node of
// `sceneNodes` whose sid or name it is. Null when none is found, or when
// the node found is not among `sceneNodes` (a joint must be drawn by the
// scene to move anything).
const OxDAEReader::oxDAENode* FindJointNode(
    const OxDAEReader::oxDAEFile& document, const OxDAEReader::oxDAEInstanceController& instance,
    std::string_view name, const std::vector<const OxDAEReader::oxDAENode*>& sceneNodes);

// The influences of every vertex; false when the skin has no vertex
// weights that decode. Influences whose weight is not above 0 are left
// out, and a joint named twice for one vertex counts once with the sum of
// its weights. Weights are kept as written (not normalised).
bool ReadSkinWeights(const OxDAEReader::oxDAESkin& skin, oxSkinWeights& weights);

// Joint `joint`'s inverse bind matrix in the host's convention (the
// document lists a column-vector matrix row by row, so it is transposed);
// the identity when the INV_BIND_MATRIX source does not hold it.
OxMath::oxMatrix44 InverseBindMatrix(const OxDAEReader::oxDAESkin& skin, size_t joint);

}  // namespace OxDAEConvert
