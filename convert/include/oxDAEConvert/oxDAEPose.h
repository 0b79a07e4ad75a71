// The local matrices of a document's nodes at any time, every channel that
// drives a node's transform evaluated on its exact curve (oxDAECurve).
//
// The module's own sampler interpolates every curve linearly; a host that
// wants the curves the document describes (a converter, a renderer, the
// `oxdae tree --exact` command) takes its matrices from here instead.
#pragma once

#include <memory>
#include <vector>

#include <oxDAEReadWrite/oxDAEElements_Animation.h>
#include <oxDAEReadWrite/oxDAEElements_Main_Node.h>
#include <oxDAEReadWrite/oxDAEReadWrite_File.h>
#include <oxMath/oxMatrix44.h>

namespace OxDAEConvert {

// The first of `animations` that drives one of the node's transforms, or
// null: the animation under which the module's own sampler evaluates the
// node (as `oxdae tree --time` and the renderer do).
const OxDAEReader::oxDAEAnimation* DrivingAnimation(
    const OxDAEReader::oxDAENode& node,
    const std::vector<const OxDAEReader::oxDAEAnimation*>& animations);

class oxDAEPose {
 public:
  // Gathers the channels of every animation of `document` that drive node
  // transforms (translate, rotate, scale, matrix), or with `only` the
  // channels of that animation and the animations nested in it. The
  // document must outlive the pose.
  explicit oxDAEPose(const OxDAEReader::oxDAEFile& document,
                     const OxDAEReader::oxDAEAnimation* only = nullptr);
  ~oxDAEPose();
  oxDAEPose(const oxDAEPose&) = delete;
  oxDAEPose& operator=(const oxDAEPose&) = delete;

  // The node's local matrix at `time`: each transform's matrix in document
  // order, animated members evaluated at `time` (held at the end values
  // outside the keys). A rotation about a zero axis is no rotation, and a
  // <lookat> looks down -Z from the eye at the interest point, as COLLADA
  // defines them.
  OxMath::oxMatrix44 LocalMatrix(const OxDAEReader::oxDAENode& node, float time) const;
  // True when a gathered channel drives one of the node's transforms.
  bool IsAnimated(const OxDAEReader::oxDAENode& node) const;
  // True when no gathered channel drives a node.
  bool IsStill() const;
  // Every key time of the channels that drive nodes, sorted, without
  // repeats.
  std::vector<float> GetKeyTimes() const;

 private:
  struct Channels;
  std::unique_ptr<Channels> m_channels;
};

}  // namespace OxDAEConvert
