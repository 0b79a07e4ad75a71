#include "oxDAEConvert/oxDAESkinning.h"

#include <algorithm>

#include <oxDAEReadWrite/oxDAEElements_Main_Geometry.h>
#include <oxDAEReadWrite/oxDAEElements_Main_Source.h>

namespace OxDAEConvert {

using namespace OxDAEReader;

namespace {

const oxDAEAccessor* JointAccessor(const oxDAESkin& skin, const char* semantic) {
  const oxDAEInputElement* input = skin.joints ? skin.joints->GetInput(semantic) : nullptr;
  return input ? input->GetCommonAccessor() : nullptr;
}

// The node below `root` (itself included) whose sid, else id, is `name`.
const oxDAENode* FindBelow(const oxDAENode& root, std::string_view name) {
  std::vector<const oxDAENode*> pending = {&root};
  while (!pending.empty()) {
    const oxDAENode* node = pending.back();
    pending.pop_back();
    if (node->sid.View() == name || node->id.View() == name) return node;
    pending.insert(pending.end(), node->nodes.begin(), node->nodes.end());
  }
  return nullptr;
}

const oxDAENode* FindInList(const std::vector<const oxDAENode*>& nodes, std::string_view name) {
  for (const oxDAENode* node : nodes) {
    if (node->sid.View() == name || node->name.View() == name) return node;
  }
  return nullptr;
}

// Adds `influence` to `vertex`, merging it into an earlier one of the same
// joint.
void AddInfluence(std::vector<oxSkinInfluence>& influences, size_t vertexStart,
                  const oxSkinInfluence& influence) {
  const auto same = std::find_if(
      influences.begin() + static_cast<ptrdiff_t>(vertexStart), influences.end(),
      [&influence](const oxSkinInfluence& entry) { return entry.joint == influence.joint; });
  if (same != influences.end()) {
    same->weight += influence.weight;
    return;
  }
  influences.push_back(influence);
}

}  // namespace

std::vector<std::string_view> SkinJointNames(const oxDAESkin& skin) {
  const oxDAEAccessor* accessor = JointAccessor(skin, "JOINT");
  std::vector<std::string_view> names;
  if (!accessor || !accessor->source) return names;
  for (const oxString& name : accessor->source->strings)
    names.push_back(name.View());
  return names;
}

const oxDAENode* FindJointNode(const oxDAEFile& document, const oxDAEInstanceController& instance,
                               std::string_view name,
                               const std::vector<const oxDAENode*>& sceneNodes) {
  const oxDAENode* found = nullptr;
  for (const oxDAENode* root : instance.skeletonNodes) {
    if ((found = FindBelow(*root, name))) break;
  }
  if (!found) {
    found = oxDAENode::DynamicCast(document.ResolveURI(oxString(OxKernel::oxConcat("#", name))));
  }
  if (!found) found = FindInList(sceneNodes, name);
  const bool inScene = std::find(sceneNodes.begin(), sceneNodes.end(), found) != sceneNodes.end();
  return inScene ? found : nullptr;
}

bool ReadSkinWeights(const oxDAESkin& skin, oxSkinWeights& weights) {
  weights = {};
  OxKernel::oxArray<oxDAEVertexWeights::Influence> influences;
  OxKernel::oxArray<size_t> first;
  if (!skin.vertexWeights || skin.vertexWeights->GetInfluences(influences, first) == kDAENoValue)
    return false;
  for (size_t k = 0; k + 1 < first.size(); ++k) {
    const size_t start = weights.influences.size();
    weights.first.push_back(start);
    for (size_t i = first[k]; i < first[k + 1]; ++i) {
      if (influences[i].weight > 0)
        AddInfluence(weights.influences, start, {influences[i].joint, influences[i].weight});
    }
  }
  if (!weights.first.empty()) weights.first.push_back(weights.influences.size());
  return true;
}

OxMath::oxMatrix44 InverseBindMatrix(const oxDAESkin& skin, size_t joint) {
  const oxDAEAccessor* accessor = JointAccessor(skin, "INV_BIND_MATRIX");
  const bool held = accessor && accessor->source &&
                    (accessor->offset + joint + 1) * 16 <= accessor->source->floats.size();
  OxMath::oxMatrix44 matrix;
  if (!held) return matrix;
  const float* written = accessor->source->floats.data() + (accessor->offset + joint) * 16;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      matrix.m[c * 4 + r] = written[r * 4 + c];
  }
  return matrix;
}

}  // namespace OxDAEConvert
