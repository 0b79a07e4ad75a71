// Keyframe animation: <animation> (which may nest) with its <source>,
// <sampler> and <channel> children, and <animation_clip>. A sampler turns
// its INPUT (key times) and OUTPUT (key values) sources into a keyframe
// controller of the host; a channel connects a sampler to an animatable
// value of the scene (a channel target). Samplers and channels are bound
// after the whole document is read, so they may name what comes later.
#pragma once

#include <oxKernel/oxRefPtr.h>
#include <oxMath/oxKeyframeController.h>

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEChannel;
class oxDAEChannelTarget;
class oxDAEInputElement;
class oxDAEInstance;
class oxDAESampler;
class oxDAESource;

// <animation>: its sources, nested animations, samplers and channels, each
// in document order (owned by the document), and the enclosing animation
// (null for one directly under a library; not owned). An animation without
// an id takes its name as id.
class oxDAEAnimation : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEAnimation, oxDAEElement, "animation")

 public:
  // Reads the identity, then the children "source", "sampler", "channel"
  // and "animation"; samplers and channels are queued for binding.
  void Read(oxDAEFile& file) override;
  // Writes the sources, samplers and channels, then the nested animations:
  // nested animations are written too, so that they survive a save.
  void Write(oxDAEFile& file) override;
  // True when the animation holds at least one nested animation.
  bool IsContainerAnimation() const { return !animations.empty(); }

  oxArray<oxDAESource*> sources;
  oxArray<oxDAEAnimation*> animations;
  oxArray<oxDAESampler*> samplers;
  oxArray<oxDAEChannel*> channels;
  oxDAEAnimation* parentAnimation = nullptr;
};

// <sampler>: its inputs in document order and the keyframe controller built
// from them when it is read (null when the inputs do not allow one; shared
// by copies).
//
// A controller is built when the "INPUT", "OUTPUT" and "INTERPOLATION"
// inputs all exist and have an accessor, and the OUTPUT stride is 1, 2, 3,
// 4 or 16 (a stride of 0, i.e. no "stride" attribute, counts as 1). Every controller interpolates
// linearly, whatever the interpolation source says; before the first key it gives the first key's
// value, after the last key the last key's value. Key i takes its time from
// INPUT record i and its value from OUTPUT record i (for strides 3, 4 and 16
// the floats from position (offset + i) * stride of the OUTPUT array). Keys
// of stride 2 are counted but left zero, and keys whose value would lie
// past the OUTPUT array keep a zero value. The number of keys is the INPUT
// accessor's count; a count above the number of floats the INPUT array
// holds is lowered to that number with the error "<sampler> INPUT count N
// is larger than its array holds; keeping M keys".
class oxDAESampler : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAESampler, oxDAEElement, "sampler")

 public:
  void Read(oxDAEFile& file) override;
  // Writes the identity and the inputs as local inputs: "semantic" as read
  // (so that INTERPOLATION and the tangent inputs, which are not document
  // tokens, survive) and "source", without "offset" or "set".
  void Write(oxDAEFile& file) override;

  // Writes the value at `time` into `out` and returns 0, or returns
  // kDAENoValue (-4) with a logged error.
  //
  // With a controller, the interpolated value is written: at most `count`
  // floats and at most the controller's value size, so a short buffer is
  // never overrun; a controller without keys leaves `out` unchanged.
  // Without a controller, `time` must equal a float of the INPUT array
  // exactly (raw array, no offset or stride), and `count` floats are copied
  // from position k * count of the OUTPUT array, k being the first equal
  // position. Errors: "invalid sampler" (INPUT or OUTPUT missing or
  // unresolved), "invalid input data type" / "invalid output data type"
  // (not a float array), "sampling time not found", "sampled value lies
  // past the OUTPUT array" (nothing is written then).
  int GetFloatValue(float time, unsigned int count, float* out) const;
  // The first input whose semantic text equals `semantic` exactly, or null.
  oxDAEInputElement* GetInput(const oxString& semantic) const;

  oxArray<oxDAEInputElement*> inputs;
  OxKernel::oxRefPtr<OxMath::oxKeyframeController> controller;

 private:
  // Builds the controller from the inputs; leaves it null when they do not
  // allow one.
  void BuildController(oxDAEFile& file);
  int SampleExactKey(float time, unsigned int count, float* out) const;
};

// <channel>: the "source" text (a reference to a sampler) and the "target"
// path text, both empty by default, and the sampler and target they bound
// to (null until bound; not owned).
class oxDAEChannel : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEChannel, oxDAEElement, "channel")

 public:
  // Reads the identity, "source" and "target"; resolves nothing.
  void Read(oxDAEFile& file) override;
  // Writes "source" as the bound sampler's reference ("#" + id, which
  // resolves again on reload) or else the text read, and "target" as the
  // bound target's path (a float-array member as "array(i)") or else the
  // text read, so that an unbound channel survives a save unchanged.
  void Write(oxDAEFile& file) override;
  // After reading: binds the sampler (through ResolveURI) and the target
  // (through ResolveAnimationTargetPath) and adds the channel to the
  // target's channels; kDAEUnresolved when either is missing (whatever did
  // resolve is kept). Before writing: replaces the source text by the bound
  // sampler's reference. Returns 0 otherwise.
  int UpdateDependencies(oxDAEFile& file, bool beforeWrite) override;
  // The path written for the bound target: its GetPath(), or for a member
  // of a float array the array's path and "(index)"; the text read when no
  // target is bound or its path is empty.
  oxString GetWrittenTargetPath() const;

  oxDAESampler* sampler = nullptr;
  oxDAEChannelTarget* target = nullptr;
  oxString targetPath;
  oxString source;
};

// <animation_clip>: "start" and "end" in seconds (0) and one instance per
// <instance_animation> child (queued for binding to its animation). Written
// with its identity, "start" and "end" when non-zero, and the instances.
class oxDAEAnimationClip : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEAnimationClip, oxDAEElement, "animation_clip")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  oxArray<oxDAEInstance*> instances;
  double start = 0.0;
  double end = 0.0;
};

}  // namespace OxDAEReader
