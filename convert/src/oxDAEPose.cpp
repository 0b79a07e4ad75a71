#include <oxDAEConvert/oxDAEPose.h>

#include "oxDAEGltfTransform.h"

namespace OxDAEConvert {

const OxDAEReader::oxDAEAnimation* DrivingAnimation(
    const OxDAEReader::oxDAENode& node,
    const std::vector<const OxDAEReader::oxDAEAnimation*>& animations) {
  for (const OxDAEReader::oxDAEAnimation* animation : animations) {
    for (const auto& transform : node.transforms) {
      if (transform->IsAnimated(animation)) return animation;
    }
  }
  return nullptr;
}

struct oxDAEPose::Channels {
  oxDocumentAnimations animations;
};

oxDAEPose::oxDAEPose(const OxDAEReader::oxDAEFile& document,
                     const OxDAEReader::oxDAEAnimation* only)
    : m_channels(std::make_unique<Channels>()) {
  m_channels->animations = CollectAnimations(document, only);
}

oxDAEPose::~oxDAEPose() = default;

OxMath::oxMatrix44 oxDAEPose::LocalMatrix(const OxDAEReader::oxDAENode& node, float time) const {
  static const oxNodeAnimation kStill;
  const auto it = m_channels->animations.nodes.find(&node);
  return LocalMatrixAt(node, it == m_channels->animations.nodes.end() ? kStill : it->second, time);
}

bool oxDAEPose::IsAnimated(const OxDAEReader::oxDAENode& node) const {
  return m_channels->animations.nodes.contains(&node);
}

bool oxDAEPose::IsStill() const {
  return m_channels->animations.nodes.empty();
}

std::vector<float> oxDAEPose::GetKeyTimes() const {
  oxAnimatedSpan all;
  for (const auto& [node, animation] : m_channels->animations.nodes)
    all.keyTimes.insert(all.keyTimes.end(), animation.keyTimes.begin(), animation.keyTimes.end());
  all.Finish();
  return all.keyTimes;
}

}  // namespace OxDAEConvert
