// Instances and material binding, in document order:
// <node> > <instance_geometry> | <instance_controller> > <bind_material> >
// <technique_common> > <instance_material> > <bind>, <bind_vertex_input>;
// the other instances (<instance_camera>, <instance_light>, <instance_node>,
// <instance_visual_scene>) hold a "url" only. <visual_scene> holds the root
// nodes. Instances and instance materials are bound to the elements they name
// after the whole document is read.
#pragma once

#include <cstdint>

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEBindMaterial;
class oxDAEBindMaterialTechniqueCommon;
class oxDAEInstanceMaterial;
class oxDAEMaterial;
class oxDAENode;
class oxDAEParameter;
class oxDAETechnique;

// An instance of a library object: the kind of object it refers to (a
// document token given at construction; NONE by default), the "url" text
// (empty), and the element the url resolved to (null until resolved; not
// owned) with the flag `resolved` (false).
//
// Declared without OX_DAE_ELEMENT because the tag is not the class's but the
// kind's: GetXMLTag answers it from kKindTags.
class oxDAEInstance : public oxDAEBaseElement {
  OX_DECLARE_RTTI(oxDAEInstance)

 public:
  using Super = oxDAEBaseElement;
  // No element of its own: the tag depends on the kind.
  static constexpr std::string_view s_XMLTag = "";

  // The element tag of each kind. `written` is false for the kinds whose
  // instances are written as a nameless (transparent) element, so that an
  // <instance_node> or <instance_animation> leaves no markup of its own.
  struct KindTag {
    EToken kind;
    std::string_view tag;
    bool written;
  };
  static constexpr KindTag kKindTags[] = {
      {EToken::CAMERA, "instance_camera", true},
      {EToken::CONTROLLER, "instance_controller", true},
      {EToken::GEOMETRY, "instance_geometry", true},
      {EToken::LIGHT, "instance_light", true},
      {EToken::NODE, "instance_node", false},
      {EToken::VISUALSCENE, "instance_visual_scene", true},
      {EToken::ANIMATION, "instance_animation", false},
  };

  oxDAEInstance() = default;
  explicit oxDAEInstance(EToken kind) : kind(kind) {}

  // The tag instances of this kind are read from; empty for a kind without
  // a row in kKindTags.
  std::string_view GetXMLTag() const override;
  // Reads "url" only (no name, id or sid).
  void Read(oxDAEFile& file) override;
  // Starts the element TagOfKind names (a transparent element for the other
  // kinds, NODE included) and writes "url". The element is left open for the
  // subclass's content; the caller's WriteChild closes it.
  void Write(oxDAEFile& file) override;
  // After reading: resolves the url unless already resolved; kDAEUnresolved
  // (and no change) when nothing answers to it. Before writing: replaces the
  // url by the target's reference when the target is an element. Returns 0
  // otherwise.
  int UpdateDependencies(oxDAEFile& file, bool beforeWrite) override;
  // True when `other` is an instance with the same url text and kind.
  virtual bool Equals(const oxDAEBaseElement* other) const;

  // The tag an instance of `kind` is written under; empty for the kinds not
  // written under their tag (NODE, ANIMATION) and for kinds without one.
  static std::string_view TagOfKind(EToken kind);

  EToken kind = EToken::NONE;
  oxDAEBaseElement* target = nullptr;
  bool resolved = false;
  oxString url;
};

// <instance_geometry>: an instance of kind GEOMETRY with its bind material
// (null when absent; owned by the document). <extra> children are stepped
// over silently.
class oxDAEInstanceGeometry : public oxDAEInstance {
  OX_DAE_ELEMENT(oxDAEInstanceGeometry, oxDAEInstance, "instance_geometry")

 public:
  oxDAEInstanceGeometry() : oxDAEInstance(EToken::GEOMETRY) {}

  void Read(oxDAEFile& file) override;
  // The instance, then its bind material if any.
  void Write(oxDAEFile& file) override;
  // The instance comparison, and both bind materials absent, or both present
  // with the same number of instance materials, pairwise equal in order (a
  // bind material without a common technique holds none). An instance that
  // is not an instance geometry counts as having no bind material.
  bool Equals(const oxDAEBaseElement* other) const override;

  oxDAEBindMaterial* bindMaterial = nullptr;
};

// <instance_controller>: an instance of kind CONTROLLER with its bind
// material (null), the text of each <skeleton> child (trimmed of white
// space), and the nodes the skeletons resolved to (filled by
// UpdateDependencies; not owned). Any child other than <skeleton> and
// <bind_material>, <extra> included, draws an unknown-tag warning.
class oxDAEInstanceController : public oxDAEInstance {
  OX_DAE_ELEMENT(oxDAEInstanceController, oxDAEInstance, "instance_controller")

 public:
  oxDAEInstanceController() : oxDAEInstance(EToken::CONTROLLER) {}

  void Read(oxDAEFile& file) override;
  // The instance, one <skeleton> per skeleton text, then the bind material
  // if any, so that the instance reads back as it was.
  void Write(oxDAEFile& file) override;
  // Before writing: does nothing and returns kDAENothingToDo (the url keeps
  // its text). After reading, once: resolves every skeleton in order to a
  // node, stopping with kDAEUnresolved at the first that names no node
  // (skeletonNodes then holds those found before it; a later attempt starts
  // the list afresh). Then resolves the url as an instance does, whose
  // outcome is not reported: an unresolved url leaves the target null and
  // still counts as resolved. Returns 0.
  int UpdateDependencies(oxDAEFile& file, bool beforeWrite) override;

  oxDAEBindMaterial* bindMaterial = nullptr;
  oxArray<oxDAENode*> skeletonNodes;
  oxArray<oxString> skeletons;
};

// <bind_material>: its <param> children (`params`), its common technique
// (null when absent; a later one replaces an earlier one) and `techniques`,
// all owned by the document. <technique> and <extra> children are not read:
// like any other tag they draw an unknown-tag warning.
class oxDAEBindMaterial : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEBindMaterial, oxDAEElement, "bind_material")

 public:
  void Read(oxDAEFile& file) override;
  // The parameters, the common technique if any, then the techniques, each
  // as its own class writes it.
  void Write(oxDAEFile& file) override;

  oxDAEBindMaterialTechniqueCommon* techniqueCommon = nullptr;
  oxArray<oxDAETechnique*> techniques;
  oxArray<oxDAEParameter*> params;
};

// <technique_common> of a bind material: its instance materials in document
// order (owned by the document, each queued for dependency update).
class oxDAEBindMaterialTechniqueCommon : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEBindMaterialTechniqueCommon, oxDAEElement, "technique_common")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  oxArray<oxDAEInstanceMaterial*> instanceMaterials;
};

// <instance_material>: "symbol" (the material name the primitives use) and
// "target" (the material's URI), both empty by default; the material target
// resolved to (null; not owned); the <bind> entries (semantic to target
// text; the first entry of a semantic wins) and the <bind_vertex_input>
// entries (semantic to input semantic and set; the last entry of a semantic
// wins). A missing "symbol" or "target", or a <bind> without "semantic" or
// "target", is logged as an error and read as empty text.
class oxDAEInstanceMaterial : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEInstanceMaterial, oxDAEBaseElement, "instance_material")

 public:
  struct VertexInputBinding {
    oxString inputSemantic;
    uint32_t inputSet = 0;
    bool operator==(const VertexInputBinding&) const = default;
  };

  void Read(oxDAEFile& file) override;
  // "symbol", "target" and one <bind> per binding, in the order of their
  // semantics so that the output does not depend on the hash table. The
  // vertex-input bindings are not written.
  void Write(oxDAEFile& file) override;
  // Before writing: replaces target by the material's reference when a
  // material is bound; returns 0. After reading: binds `material` to the
  // element target names, or returns kDAEUnresolved (keeping the material
  // bound before) when that is not a material. `resolved` is left false, so
  // every update resolves the target again.
  int UpdateDependencies(oxDAEFile& file, bool beforeWrite) override;
  // True when `other` is an instance material with the same target text and
  // the same bindings and vertex-input bindings (same semantics, each with
  // equal values).
  virtual bool Equals(const oxDAEBaseElement* other) const;

  // The target text bound to `semantic`, or null.
  const oxString* GetBinding(const oxString& semantic) const;
  // The vertex input bound to `semantic`, or null.
  const VertexInputBinding* GetVertexInputBinding(const oxString& semantic) const;

  oxDAEMaterial* material = nullptr;
  oxString target;
  oxString symbol;
  oxHash<oxString, oxString> bindings;
  oxHash<oxString, VertexInputBinding> vertexInputBindings;
  bool resolved = false;
};

// <visual_scene>: the identity attributes, its extras (not read: <extra> is
// stepped over) and its root nodes in document order (owned by the
// document). The name is not taken as id when the id is missing.
class oxDAEVisualScene : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEVisualScene, oxDAEElement, "visual_scene")

 public:
  void Read(oxDAEFile& file) override;
  // The identity attributes and every node.
  void Write(oxDAEFile& file) override;

  oxArray<oxDAENode*> nodes;
};

}  // namespace OxDAEReader
