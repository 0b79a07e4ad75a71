#include "oxRenderSceneNodes.h"

#include <oxDAEConvert/oxDAEPose.h>

#include <algorithm>
#include <cmath>

namespace OxDAERender::scene {

using namespace OxDAEReader;
using OxMath::oxMatrix44;
using Vec3 = std::array<float, 3>;

oxMatrix44 Then(const oxMatrix44& first, const oxMatrix44& then) {
  oxMatrix44 result;
  result.MultiplyAB(then, first);
  return result;
}

Vec3 Normalised(const Vec3& v) {
  const float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  if (!(length > 0)) return {0.0f, 0.0f, 1.0f};
  return {v[0] / length, v[1] / length, v[2] / length};
}

namespace {

// How many <instance_node>s may nest inside each other before the walk
// stops following them (a node that instances itself would never end).
constexpr int kMaxInstancing = 64;

// Local matrices at one time, as `oxdae tree --time` evaluates them: under
// the first animation of the document that drives one of a node's
// transforms.
class LocalMatrices {
 public:
  LocalMatrices(const oxDAEFile& document, float time) : m_time(time) {
    for (const auto& element : document.GetElements()) {
      if (const auto* animation = oxDAEAnimation::DynamicCast(element.get()))
        m_animations.push_back(animation);
    }
  }

  oxMatrix44 Of(const oxDAENode& node) const {
    const oxDAEAnimation* animation =
        IsAnimated(node) ? OxDAEConvert::DrivingAnimation(node, m_animations) : nullptr;
    if (HasLookAt(node)) return ComposeWithLookAt(node, animation);
    if (!animation) return node.ComputeLocalMatrix();
    return node.ComputeLocalMatrix(m_time, animation);
  }

 private:
  static bool HasLookAt(const oxDAENode& node) {
    return std::any_of(node.transforms.begin(), node.transforms.end(), [](const auto& transform) {
      return oxDAEHierarchyElement::LookAtElement::DynamicCast(transform.get()) != nullptr;
    });
  }

  // The local matrix composed as the module composes it, but with each
  // <lookat> as COLLADA means it: the frame whose -Z looks from the eye at
  // the interest point, +Y towards the up vector (the module's own lookat
  // matrix turns +Z to the interest point, which would make a camera look
  // away from what it aims at).
  oxMatrix44 ComposeWithLookAt(const oxDAENode& node, const oxDAEAnimation* animation) const {
    oxMatrix44 local;
    for (const auto& transform : node.transforms) {
      const bool animated = transform->IsAnimated(animation);
      oxMatrix44 matrix = animated ? transform->GetTransformMatrix(m_time, animation)
                                   : transform->GetTransformMatrix();
      const auto* lookAt = oxDAEChannelTargetLookat::DynamicCast(transform->GetChannelTarget());
      if (lookAt && oxDAEHierarchyElement::LookAtElement::DynamicCast(transform.get())) {
        float values[9];
        if (animated) {
          lookAt->GetValue(values, m_time, animation);
        } else {
          lookAt->GetValue(values);
        }
        LookAtFrame(values, matrix);
      }
      local.MultiplyAB(local, matrix);
    }
    return local;
  }

  // Writes the frame of a look-at (eye, interest, up) into `matrix`; leaves
  // it as it is when the eye sits on the interest point or up lies along
  // the view.
  static void LookAtFrame(const float values[9], oxMatrix44& matrix) {
    const Vec3 back = {values[0] - values[3], values[1] - values[4], values[2] - values[5]};
    const Vec3 up = {values[6], values[7], values[8]};
    const Vec3 side = {up[1] * back[2] - up[2] * back[1], up[2] * back[0] - up[0] * back[2],
                       up[0] * back[1] - up[1] * back[0]};
    const float sideLength = side[0] * side[0] + side[1] * side[1] + side[2] * side[2];
    const float backLength = back[0] * back[0] + back[1] * back[1] + back[2] * back[2];
    if (!(sideLength > 0) || !(backLength > 0)) return;
    const Vec3 z = Normalised(back);
    const Vec3 x = Normalised(side);
    const Vec3 y = {z[1] * x[2] - z[2] * x[1], z[2] * x[0] - z[0] * x[2],
                    z[0] * x[1] - z[1] * x[0]};
    matrix = {{x[0], x[1], x[2], 0, y[0], y[1], y[2], 0, z[0], z[1], z[2], 0, values[0], values[1],
               values[2], 1}};
  }

  // True when some channel is bound to one of the node's transforms: the
  // search for the driving animation is spared for every other node.
  static bool IsAnimated(const oxDAENode& node) {
    return std::any_of(node.transforms.begin(), node.transforms.end(), [](const auto& transform) {
      const auto* target = oxDAEChannelTargetArray::DynamicCast(transform->GetChannelTarget());
      return target && target->IsTargetedEx();
    });
  }

  std::vector<const oxDAEAnimation*> m_animations;
  float m_time;
};

}  // namespace

std::vector<PlacedNode> WalkScene(const oxDAEFile& document, const oxDAEVisualScene& scene,
                                  float time) {
  const LocalMatrices locals(document, time);
  struct Pending {
    const oxDAENode* node;
    oxMatrix44 parentWorld;
    int instancing;
  };
  std::vector<Pending> pending;
  for (auto it = scene.nodes.rbegin(); it != scene.nodes.rend(); ++it)
    pending.push_back({*it, oxMatrix44::kIdentity, 0});
  std::vector<PlacedNode> placed;
  while (!pending.empty()) {
    const Pending next = pending.back();
    pending.pop_back();
    const oxMatrix44 world = Then(locals.Of(*next.node), next.parentWorld);
    placed.push_back({next.node, world});
    const auto& instances = next.node->instances;
    for (auto it = instances.rbegin(); it != instances.rend(); ++it) {
      const auto* instanced = oxDAENode::DynamicCast((*it)->target);
      if ((*it)->kind == EToken::NODE && instanced && next.instancing < kMaxInstancing)
        pending.push_back({instanced, world, next.instancing + 1});
    }
    const auto& children = next.node->nodes;
    for (auto it = children.rbegin(); it != children.rend(); ++it)
      pending.push_back({*it, world, next.instancing});
  }
  return placed;
}

}  // namespace OxDAERender::scene
