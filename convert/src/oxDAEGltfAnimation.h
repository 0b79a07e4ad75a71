// Node and morph-weight animations as one glTF animation: keys taken over
// where one of glTF's interpolations draws the document's curve exactly,
// values sampled on the exact curves where none does.
#pragma once

#include <string>
#include <vector>

#include "oxDAEGltfTransform.h"
#include "oxGltfBuilder.h"

namespace OxDAEConvert {

// The node's translation, rotation and scale at `time`: for a node whose
// transforms are in translation, rotation, scale order, each part from its
// own transforms (so that a part's animation and the others' still values
// fit together); for other nodes, the split of the local matrix. Null when
// that matrix does not split.
std::optional<oxTRS> TrsAt(const OxDAEReader::oxDAENode& node, const oxNodeAnimation& animation,
                           float time);

// Collects the samplers and channels of the animation, then writes it.
class oxGltfAnimationWriter {
 public:
  // `fps` is the rate, in samples per second, of curves that are sampled;
  // `keyTimes` (sorted) are the key times of every animation of the
  // document, at which sampled curves are sampled too.
  oxGltfAnimationWriter(oxGltfBuilder& gltf, double fps, std::vector<float> keyTimes)
      : m_gltf(gltf), m_fps(fps), m_keyTimes(std::move(keyTimes)) {}

  // The channels that move `node`, on each glTF node of `targets`.
  //
  // A node whose transforms are in translation, rotation, scale order gets a
  // channel for each part its animation drives, with that part's keys taken
  // over when one transform of the part is animated and its curves are:
  //  - all STEP: STEP at every key time of the curves;
  //  - all LINEAR: LINEAR at every key time (a rotation turning half a turn
  //    or more between keys gets keys in between, because glTF turns the
  //    short way);
  //  - LINEAR, BEZIER and HERMITE with one-dimensional tangents (a Bezier
  //    curve whose time runs evenly through the segment), with the same
  //    key times on every curve: CUBICSPLINE with the tangents the curve
  //    has at each key (translation and scale only: glTF's cubic rotations
  //    do not follow an angle's curve).
  // A part that is none of these is sampled at its keys and every whole
  // frame (multiple of 1/fps) between them and interpolated linearly
  // (rotations spherically).
  //
  // Any other node has its local matrix split into the three parts at
  // times sampled so; false, after a warning, when a sample does not split.
  // When every channel drives a whole <matrix>, all STEP or all LINEAR, the
  // times are the keys and the parts STEP or LINEAR: numbers of a matrix
  // running linearly from pose to pose are no translation, rotation and
  // scale between the poses, which glTF interpolates instead.
  bool AddNode(const OxDAEReader::oxDAENode& node, const oxNodeAnimation& animation,
               const std::vector<size_t>& targets);

  // A "weights" channel on each of `targets`, sampled as AddNode samples:
  // `weights` at every sample, with morph weight i replaced by its curve's
  // value in glTF weight `slots[i]` (none when that is -1).
  void AddWeights(const std::string& name, const oxMorphAnimation& animation,
                  const std::vector<float>& weights, const std::vector<int>& slots,
                  const std::vector<size_t>& targets);

  // Writes the animation ("animation") when a channel was added.
  void Finish();

 private:
  // The channel of one part of a node whose transforms are in TRS order.
  void AddPart(const OxDAEReader::oxDAENode& node, const oxNodeAnimation& animation, oxTrsPart part,
               const std::vector<size_t>& targets);
  // The key times, the document's key times between the first and the last,
  // and every whole frame (a multiple of 1/fps) between them, sorted: curves
  // sampled on one grid move together. A range too long for the frame rate
  // keeps its keys only (with a warning).
  std::vector<float> SampleTimes(const std::string& name, const oxAnimatedSpan& span) const;
  void AddSampler(const std::vector<float>& times, const std::vector<float>& values,
                  const char* type, const char* interpolation, const char* path,
                  const std::vector<size_t>& targets);

  oxGltfBuilder& m_gltf;
  double m_fps;
  std::vector<float> m_keyTimes;
  Json m_samplers = Json::array();
  Json m_channels = Json::array();
};

}  // namespace OxDAEConvert
