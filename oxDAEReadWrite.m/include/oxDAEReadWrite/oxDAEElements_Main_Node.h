// The node hierarchy: <node> with its transforms (<rotate>, <scale>, <skew>,
// <translate>, <lookat>, <matrix>), child nodes, instances and extras.
//
// Matrices follow the host's convention: 16 floats in row order, points as
// row vectors (p' = p * M), translation in elements 12, 13 and 14. A node's
// local matrix composes its transforms in document order so that the last
// one acts first on a point, as COLLADA means it; a node's world matrix is
// its local matrix composed with its parent's world matrix:
//   world.MultiplyAB(parentWorld, local);
#pragma once

#include <memory>

#include <oxMath/oxMatrix44.h>

#include "oxDAEReadWrite/oxDAEElements_Animation_Target.h"
#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEAnimation;
class oxDAEInstance;
class oxDAENode;

// The part of a node that forms the hierarchy: its child nodes (document
// order; owned by the document) and its transforms (document order; owned
// here, not by the document). It owns its transforms, whose values are
// registered under its paths, so it cannot be copied.
class oxDAEHierarchyElement : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEHierarchyElement, oxDAEElement, "")

 public:
  class TransformElement;
  class RotateElement;
  class ScaleElement;
  class SkewElement;
  class TranslateElement;
  class LookAtElement;
  class MatrixElement;

  oxDAEHierarchyElement();
  ~oxDAEHierarchyElement() override;
  oxDAEHierarchyElement(const oxDAEHierarchyElement&) = delete;
  oxDAEHierarchyElement& operator=(const oxDAEHierarchyElement&) = delete;

  // Reads the child the reader stands on when it is an <extra> (appended to
  // the extras), a <node> (appended to the child nodes) or a transform
  // (appended to the transforms) and returns true; returns false, reading
  // nothing, for any other tag.
  bool ReadChild(oxDAEFile& file);
  // Writes the transforms, then the child nodes, each in order.
  void WriteChildren(oxDAEFile& file);
  // True when `child` is one of the child nodes or, with `recursive`, a
  // descendant at any depth. The descendants are walked without recursion;
  // the child lists must form a tree.
  bool HasChild(const oxDAEHierarchyElement* child, bool recursive) const;

  oxArray<oxDAENode*> nodes;
  oxArray<std::unique_ptr<TransformElement>> transforms;

 protected:
  // Writes each transform in order.
  void WriteTransforms(oxDAEFile& file);
};

// One transform of a node: its sid, by which animation channels address it
// ("nodeId/sid"), and its value, held in a channel target it owns (null for
// a skew). The target takes the element as container and the sid as
// qualifier and is registered with the document once the value is read
// (not at all with an empty sid). It is destroyed with the element but not
// taken out of the document's target table then: its path runs through
// ancestors the document may already have deleted. Like the document's
// other registries, the table is emptied by the next Load. The parent is
// the node the transform belongs to.
class oxDAEHierarchyElement::TransformElement : public oxDAEElement {
  OX_DAE_ELEMENT(TransformElement, oxDAEElement, "")

 public:
  ~TransformElement() override;
  TransformElement(const TransformElement&) = delete;
  TransformElement& operator=(const TransformElement&) = delete;

  // Reads the identity attributes and the floats of the element's text into
  // the value; floats the text does not give keep their previous values
  // (the defaults of a new element), without a message. Then registers the
  // target.
  void Read(oxDAEFile& file) override;
  // Writes the element's tag, "sid" when not empty, and the value's floats
  // as the element's text, in the order they are read.
  void Write(oxDAEFile& file) override;

  // True when `animation` drives the value, as a whole or through one of its
  // components; false for a null animation and for a skew.
  virtual bool IsAnimated(const oxDAEAnimation* animation) const;
  // The matrix of the value `animation` gives the transform at `time`. When
  // `animation` does not drive the transform (or is null) this is the static
  // matrix, with no message.
  virtual OxMath::oxMatrix44 GetTransformMatrix(float time, const oxDAEAnimation* animation) const;
  // The matrix of the stored value (the identity by default).
  virtual OxMath::oxMatrix44 GetTransformMatrix() const;

  // The target holding the value; null for a skew.
  oxDAEChannelTarget* GetChannelTarget() const { return target.get(); }

 protected:
  // Most floats any transform's text holds.
  static constexpr unsigned int kMaxTextValues = 16;

  // A transform without a value (a skew) when `value` is null.
  explicit TransformElement(std::unique_ptr<oxDAEChannelTargetArray> value = nullptr);

  // The value as the element's text lists it, in document order; returns how
  // many floats that is. Reading and writing both go through this pair, so
  // each transform states the shape of its text once.
  virtual unsigned int GetTextValues(float* values) const;
  virtual void SetTextValues(const float* values);
  // The matrix of the value at `time` under `animation`, for a transform
  // that `animation` drives.
  virtual OxMath::oxMatrix44 GetSampledMatrix(float time, const oxDAEAnimation* animation) const;

  std::unique_ptr<oxDAEChannelTargetArray> target;
};

// <rotate>: axis x y z and angle in degrees, members "X", "Y", "Z" and
// "ANGLE". Default axis (0, 0, 1), angle 0. The static matrix normalises the
// axis (a zero axis gives non-finite elements; no check is made), then turns
// the rotation into a matrix with oxTransformMatrix44::Create. An animated
// rotation takes the sampled axis as it is and divides the quaternion's
// vector part by its length when that is above 0.
class oxDAEHierarchyElement::RotateElement : public TransformElement {
  OX_DAE_ELEMENT(RotateElement, TransformElement, "rotate")

 public:
  RotateElement();

  OxMath::oxMatrix44 GetTransformMatrix() const override;
  using TransformElement::GetTransformMatrix;
  OxMath::oxGenVec3<float> GetRotateAxis() const;
  // In degrees, as stored.
  float GetRotateAngle() const;

 protected:
  unsigned int GetTextValues(float* values) const override;
  void SetTextValues(const float* values) override;
  OxMath::oxMatrix44 GetSampledMatrix(float time, const oxDAEAnimation* animation) const override;

 private:
  oxDAEChannelTargetRotate& Value() const;
};

// <scale>: three factors, members "X", "Y", "Z"; default 1 1 1. The matrix
// is diag(sx, sy, sz, 1).
class oxDAEHierarchyElement::ScaleElement : public TransformElement {
  OX_DAE_ELEMENT(ScaleElement, TransformElement, "scale")

 public:
  ScaleElement();

  OxMath::oxMatrix44 GetTransformMatrix() const override;
  using TransformElement::GetTransformMatrix;

 protected:
  unsigned int GetTextValues(float* values) const override;
  void SetTextValues(const float* values) override;
  OxMath::oxMatrix44 GetSampledMatrix(float time, const oxDAEAnimation* animation) const override;

 private:
  oxDAEChannelTargetFloatXYZ& Value() const;
};

// <skew>: not kept. Reading and writing it do nothing (a document written
// back loses its skews); it contributes the identity and is never animated.
class oxDAEHierarchyElement::SkewElement : public TransformElement {
  OX_DAE_ELEMENT(SkewElement, TransformElement, "skew")

 public:
  SkewElement() = default;

  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;
};

// <translate>: a vector, members "X", "Y", "Z"; default 0 0 0. The matrix
// is the identity with x, y, z in elements 12, 13, 14.
class oxDAEHierarchyElement::TranslateElement : public TransformElement {
  OX_DAE_ELEMENT(TranslateElement, TransformElement, "translate")

 public:
  TranslateElement();

  OxMath::oxMatrix44 GetTransformMatrix() const override;
  using TransformElement::GetTransformMatrix;

 protected:
  unsigned int GetTextValues(float* values) const override;
  void SetTextValues(const float* values) override;
  OxMath::oxMatrix44 GetSampledMatrix(float time, const oxDAEAnimation* animation) const override;

 private:
  oxDAEChannelTargetFloatXYZ& Value() const;
};

// <lookat>: eye, interest and up positions, nine unnamed members. Default
// eye (0, 0, 0), interest (0, 0, 1), up (0, 1, 0), which is the identity.
// With d = the unit vector from eye to interest, u = the unit up vector and
// r = u x d (normalised unless its squared length is within kEpsilon of 1)
// the matrix has the rows r, u, d and eye, with the last column 0 0 0 1; u
// is not made orthogonal to d. A zero vector (eye on the interest, no up,
// up along the view) stays zero instead of being divided by its length, so
// such a matrix is singular but finite.
class oxDAEHierarchyElement::LookAtElement : public TransformElement {
  OX_DAE_ELEMENT(LookAtElement, TransformElement, "lookat")

 public:
  LookAtElement();

  OxMath::oxMatrix44 GetTransformMatrix() const override;
  using TransformElement::GetTransformMatrix;

 protected:
  unsigned int GetTextValues(float* values) const override;
  void SetTextValues(const float* values) override;
  OxMath::oxMatrix44 GetSampledMatrix(float time, const oxDAEAnimation* animation) const override;

 private:
  oxDAEChannelTargetLookat& Value() const;
};

// <matrix>: a 4 x 4 matrix, sixteen unnamed members; the identity by
// default. The text lists the rows of a column-vector matrix, so the matrix
// is stored transposed into the host's convention (the text's fourth value,
// the x translation, lands in element 12) and transposed back when written.
class oxDAEHierarchyElement::MatrixElement : public TransformElement {
  OX_DAE_ELEMENT(MatrixElement, TransformElement, "matrix")

 public:
  MatrixElement();

  OxMath::oxMatrix44 GetTransformMatrix() const override;
  using TransformElement::GetTransformMatrix;
  // Stores `matrix` as it is (host convention).
  void SetTransformMatrix(const OxMath::oxMatrix44& matrix);

 protected:
  unsigned int GetTextValues(float* values) const override;
  void SetTextValues(const float* values) override;
  OxMath::oxMatrix44 GetSampledMatrix(float time, const oxDAEAnimation* animation) const override;

 private:
  oxDAEChannelTargetMatrix& Value() const;
};

// <node>: its type (NODE by default; JOINT for skeleton bones) and its
// instances (document order; owned by the document, each queued for
// dependency update), besides the hierarchy. A node without an id takes its
// name as id. A "type" word that is not a document token is logged as the
// warning "unknown node type '<word>'" and leaves the type NODE.
class oxDAENode : public oxDAEHierarchyElement {
  OX_DAE_ELEMENT(oxDAENode, oxDAEHierarchyElement, "node")

 public:
  void Read(oxDAEFile& file) override;
  // Writes "name", "id", "sid" (each when not empty, so that the sid paths
  // of skeletons survive a save) and "type" (unless the token has no word),
  // then the instances, the transforms and the child nodes. A subtree of any
  // depth is written without recursion.
  void Write(oxDAEFile& file) override;

  // The product of the transforms' matrices in document order, starting
  // from the identity: result.MultiplyAB(result, transform). Child nodes and
  // instances play no part.
  OxMath::oxMatrix44 ComputeLocalMatrix() const;
  // The same with each transform's matrix under `animation` at `time`.
  OxMath::oxMatrix44 ComputeLocalMatrix(float time, const oxDAEAnimation* animation) const;

  EToken type = EToken::NODE;
  oxArray<oxDAEInstance*> instances;

 private:
  // Starts the element and writes its attributes, instances and transforms;
  // the caller writes the child nodes and closes it.
  void WriteOpening(oxDAEFile& file);
};

}  // namespace OxDAEReader
