// The nodes of a visual scene with their world matrices at one time, and
// the small matrix helpers gathering a scene shares with them (see
// oxRenderScene.cpp, their only user).
#pragma once

#include <array>
#include <vector>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxMath/oxMatrix44.h>

namespace OxDAERender::scene {

// The matrix that applies `first`, then `then` (row vectors).
OxMath::oxMatrix44 Then(const OxMath::oxMatrix44& first, const OxMath::oxMatrix44& then);

// `v` at unit length; +Z for a vector of no length.
std::array<float, 3> Normalised(const std::array<float, 3>& v);

// A node as the walk reaches it, with its world matrix.
struct PlacedNode {
  const OxDAEReader::oxDAENode* node = nullptr;
  OxMath::oxMatrix44 world;
};

// Every node of `scene` depth first in document order, instanced nodes
// below the instancing node after its own children, with the world
// matrices of `oxdae tree --time`: each node's local matrix under the
// first animation of `document` that drives one of its transforms, and a
// <lookat> as COLLADA means it. <instance_node>s nest at most 64 deep (a
// node that instances itself would never end).
std::vector<PlacedNode> WalkScene(const OxDAEReader::oxDAEFile& document,
                                  const OxDAEReader::oxDAEVisualScene& scene, float time);

}  // namespace OxDAERender::scene
