// Node transforms for glTF: local matrices (a <lookat> placed as glTF
// places cameras), the channels that animate a node's transforms evaluated
// on their exact curves, and the split of a matrix into translation,
// rotation and scale.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <vector>

#include <oxDAEConvert/oxDAECurve.h>
#include <oxDAEReadWrite/oxDAEElements_Animation_Controller.h>
#include <oxDAEReadWrite/oxDAEElements_Main_Node.h>
#include <oxDAEReadWrite/oxDAEReadWrite_File.h>

namespace OxDAEConvert {

// The node's local matrix: each transform's matrix in document order, as
// COLLADA defines them: a rotation about a zero axis is no rotation, and a
// <lookat> looks down its -Z axis from the eye at the interest point (a
// skew is left out, as the document tree leaves it).
OxMath::oxMatrix44 LocalMatrix(const OxDAEReader::oxDAENode& node);

// One channel driving one transform: the whole value (member -1) or one
// float of it, in the order the transform's text lists them.
struct oxTransformChannel {
  const OxDAEReader::oxDAEHierarchyElement::TransformElement* transform = nullptr;
  int member = -1;
  oxDAECurve curve;
};

// The time span and key times of a set of channels.
struct oxAnimatedSpan {
  float start = 0.0f;
  float end = 0.0f;
  // Every key time of the channels, sorted, without repeats (once Finish
  // has run).
  std::vector<float> keyTimes;

  // Widens the span to `curve`'s keys.
  void Add(const oxDAECurve& curve);
  void Finish();
};

// The channels that drive a node's transforms.
struct oxNodeAnimation : oxAnimatedSpan {
  std::vector<oxTransformChannel> channels;
};

// The channels that drive a morph's weights: weight `member` (-1 for all of
// them) on each curve.
struct oxMorphAnimation : oxAnimatedSpan {
  std::vector<std::pair<int, oxDAECurve>> channels;
};

// The bound channels of `document` that drive node transforms, by node, and
// those that drive morph weights, by morph. Channels that drive anything
// else (a material parameter) are counted in `others`.
struct oxDocumentAnimations {
  std::map<const OxDAEReader::oxDAENode*, oxNodeAnimation> nodes;
  std::map<const OxDAEReader::oxDAEMorph*, oxMorphAnimation> morphs;
  size_t others = 0;
};
// With `only`, the channels of that animation and those nested in it.
oxDocumentAnimations CollectAnimations(const OxDAEReader::oxDAEFile& document,
                                       const OxDAEReader::oxDAEAnimation* only = nullptr);

// The floats a transform's text lists (translate and scale x y z, rotate
// x y z angle, a matrix's sixteen row by row), from its static value; empty
// for a lookat or skew, which are not animated here.
std::vector<double> StaticValues(const OxDAEReader::oxDAEHierarchyElement::TransformElement& t);
// The same floats at `time`, the members `animation` drives evaluated on
// their exact curves.
std::vector<double> TransformValuesAt(
    const OxDAEReader::oxDAEHierarchyElement::TransformElement& transform,
    const oxNodeAnimation& animation, float time);

// The part of glTF's translation, rotation and scale a transform makes;
// kOther for a matrix, lookat or skew.
enum class oxTrsPart { kTranslation, kRotation, kScale, kOther };
oxTrsPart PartOf(const OxDAEReader::oxDAEHierarchyElement::TransformElement& transform);
// True when the node's transforms are translations, then rotations, then
// scales (each kind may be absent): its local matrix is then glTF's
// translation * rotation * scale, each part the product of its transforms.
bool HasTrsOrder(const OxDAEReader::oxDAENode& node);

// The node's local matrix at `time`, its driven transforms evaluated on the
// exact curves of `animation`; with `only` set to a part, the product of
// that part's transforms alone.
OxMath::oxMatrix44 LocalMatrixAt(const OxDAEReader::oxDAENode& node,
                                 const oxNodeAnimation& animation, float time,
                                 oxTrsPart only = oxTrsPart::kOther);

// A matrix split into translation, rotation (a unit quaternion x, y, z, w)
// and scale; null when it does not split (a projection, or a zero scale).
struct oxTRS {
  std::array<double, 3> translation = {0, 0, 0};
  std::array<double, 4> rotation = {0, 0, 0, 1};
  std::array<double, 3> scale = {1, 1, 1};
  // False when the matrix shears (its columns are not at right angles):
  // the rotation is then that of its columns, which the three parts only
  // approach.
  bool exact = true;
};
std::optional<oxTRS> Decompose(const OxMath::oxMatrix44& matrix);

}  // namespace OxDAEConvert
