// Controllers, in document order: <controller> > <skin> (<bind_shape_matrix>,
// <source>, <joints>, <vertex_weights>) or <morph> (<source>, <targets>).
// The elements keep what they read; deforming the mesh is the host's work.
// A skin binds its "source" once the whole document is read; a morph binds
// its base geometry while it is read, so that geometry must come first.
#pragma once

#include <cstddef>
#include <cstdint>

#include <oxMath/oxMatrix44.h>

#include "oxDAEReadWrite/oxDAEElements_Animation_Target.h"
#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEGeometry;
class oxDAEInputElement;
class oxDAEJoints;
class oxDAEMorph;
class oxDAESkin;
class oxDAESource;
class oxDAEVertexWeights;

// <controller>: its skin and its morph (null when absent; a second one
// replaces the first). Both are queued for the document's update pass.
// Written with its identity and its skin; the morph is not written.
class oxDAEController : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEController, oxDAEElement, "controller")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  oxDAESkin* skin = nullptr;
  oxDAEMorph* morph = nullptr;
};

// <skin>: the bind shape matrix (the identity until <bind_shape_matrix>
// gives one; read, not written), what "source" bound to after reading (a
// geometry, or the morph of the controller it names; both null until bound,
// not owned), the <source> children in order, the joints and the vertex
// weights (null when absent; a later one replaces an earlier one) and the
// "source" text (empty). Aligned for the matrix: the skin itself is
// allocated on a 16-byte boundary.
class oxDAESkin : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAESkin, oxDAEElement, "skin")

 public:
  void Read(oxDAEFile& file) override;
  // Writes "source" as "#" + the source geometry's id, or "#problem" when
  // there is none (also for a skin bound to a morph), then the sources, the
  // joints and the vertex weights.
  void Write(oxDAEFile& file) override;
  // After reading: binds "source" to a geometry, else to the morph of the
  // controller it names (null when that controller has none). Returns 0
  // when either was found, else logs "cannot find skin's source geometry"
  // (error) and returns kDAEUnresolved. Before writing: refreshes nothing
  // and returns kDAEUnresolved, which saving disregards.
  int UpdateDependencies(oxDAEFile& file, bool beforeWrite) override;

  alignas(16) OxMath::oxMatrix44 bindShapeMatrix;
  oxDAEGeometry* sourceGeometry = nullptr;
  oxDAEMorph* sourceMorph = nullptr;
  oxArray<oxDAESource*> sources;
  oxDAEJoints* joints = nullptr;
  oxDAEVertexWeights* vertexWeights = nullptr;
  oxString source;
};

// <joints>: its inputs in order, normally "JOINT" and "INV_BIND_MATRIX".
class oxDAEJoints : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEJoints, oxDAEBaseElement, "joints")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;
  // The first input whose semantic text equals `semantic` exactly, or null.
  oxDAEInputElement* GetInput(const oxString& semantic) const;

  oxArray<oxDAEInputElement*> inputs;
};

// <vertex_weights>: its inputs in order (normally "JOINT" and "WEIGHT" with
// their offsets), "count" (0: the number of vertices), and the lists as
// read: vcount (how many influences each vertex has) and v (for each
// influence one index per input offset). Vertex k's influences are vcount[k]
// groups of (largest offset + 1) integers of v, after those of the vertices
// before it; within a group the integer at an input's offset indexes that
// input's source.
class oxDAEVertexWeights : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEVertexWeights, oxDAEBaseElement, "vertex_weights")

 public:
  // One influence: the joint's index in the JOINT source (-1, as in the
  // file, binds to the bind shape) and the weight read from the WEIGHT
  // source.
  struct Influence {
    int32_t joint = -1;
    float weight = 0.0f;
    bool operator==(const Influence&) const = default;
  };

  // Reads "count", the inputs and the lists. <vcount> gives at most `count`
  // entries: the first `count` numbers of its text, or all of them when the
  // text holds fewer (vcount is then shorter than `count`; nothing is made
  // up for the missing vertices). A negative entry ends vcount with a
  // warning; a token that is not a number ends either list with the XML
  // reader's warning. A later <vcount> or <v> replaces an earlier one. The
  // lists never grow beyond what their text holds, whatever "count" says.
  void Read(oxDAEFile& file) override;
  // Writes "count", the inputs, <vcount> and <v>.
  void Write(oxDAEFile& file) override;
  // The first input whose semantic text equals `semantic` exactly, or null.
  oxDAEInputElement* GetInput(const oxString& semantic) const;
  // The largest vcount entry; 0 when vcount is empty.
  uint32_t GetMaxInfluenceCount() const;

  // Decodes the influences of every vertex of vcount, in order, into
  // `influences`; vertex k's are influences[first[k]] up to (not including)
  // influences[first[k + 1]], so `first` holds one entry more than the
  // vertices decoded. Nothing is read past v, vcount or the sources:
  //  - an influence whose joint index lies outside the JOINT source (other
  //    than -1) or whose weight index lies outside the WEIGHT source reads
  //    as joint -1, weight 0, so that it moves nothing;
  //  - decoding stops before the first vertex whose groups run past v.
  // Either logs one warning and makes the result kDAEUnresolved. Returns 0
  // when everything was in range, and kDAENoValue, with both lists empty,
  // when there is no "JOINT" or "WEIGHT" input, an input's source is not a
  // <source> with an array, or the WEIGHT array does not hold floats.
  int GetInfluences(oxArray<Influence>& influences, oxArray<size_t>& first) const;

  oxArray<oxDAEInputElement*> inputs;
  oxArray<uint32_t> vcount;
  oxArray<int32_t> v;
  uint32_t count = 0;
};

// <morph>: the base geometry "source" named when the morph was read (null
// when it was not a geometry read before the morph; not owned), "method" as
// written (empty), the <source> children and the <input>s of <targets> in
// order, and the morph weights as an animatable float array. When a
// "MORPH_WEIGHT" input names a <source>, the weights target takes the morph
// as container, that source's id as qualifier and one member per value of
// its array (the count kept to 8 bits: 300 weights give 44 members), and is
// registered: a channel reaches weight i as "<morph path>/<source id>(i)".
// Morphs are not written. A morph cannot be copied: its registered target
// belongs to it.
class oxDAEMorph : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEMorph, oxDAEElement, "morph")

 public:
  oxDAEMorph() = default;
  oxDAEMorph(const oxDAEMorph&) = delete;
  oxDAEMorph& operator=(const oxDAEMorph&) = delete;

  void Read(oxDAEFile& file) override;
  // Writes nothing: a controller's morph is left out of saved documents.
  void Write(oxDAEFile& file) override;
  // The first target input whose semantic text equals `semantic` exactly,
  // or null.
  oxDAEInputElement* GetInput(const oxString& semantic) const;

  oxDAEGeometry* sourceGeometry = nullptr;
  oxString method;
  oxArray<oxDAESource*> sources;
  oxArray<oxDAEInputElement*> targetInputs;
  oxDAEChannelTargetFloatArray weightsTarget;

 private:
  // Sets up and registers the weights target from the "MORPH_WEIGHT" input.
  void SetUpWeightsTarget(oxDAEFile& file);
};

}  // namespace OxDAEReader
