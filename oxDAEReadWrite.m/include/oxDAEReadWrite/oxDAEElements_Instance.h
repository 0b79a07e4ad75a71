// Instance elements: references from the scene to library objects by "url",
// bound after the whole document is read.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// <instance_camera>, <instance_light>, <instance_node> and
// <instance_visual_scene>: the kind of object referred to (a document
// token, given at construction), the "url" text (empty), and the element it
// resolved to (null until resolved; not owned).
class oxDAEInstance : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEInstance, oxDAEBaseElement, "instance")

 public:
  oxDAEInstance() = default;
  explicit oxDAEInstance(EToken kind) : kind(kind) {}

  // Reads "url" only.
  void Read(oxDAEFile& file) override;
  // Starts the element named after the kind ("instance_camera",
  // "instance_controller", "instance_geometry", "instance_light",
  // "instance_visual_scene"); other kinds, NODE included, start a nameless
  // (transparent) element. Then writes "url".
  void Write(oxDAEFile& file) override;
  // After reading: resolves the url once (kDAEUnresolved on failure). Before
  // writing: replaces the url by the target's reference when bound.
  int UpdateDependencies(oxDAEFile& file, bool beforeWrite) override;
  // Same url text and same kind.
  virtual bool Equals(const oxDAEBaseElement* other) const;

  // The element tag of an instance of `kind`; empty for kinds without one.
  static std::string_view TagOfKind(EToken kind);

  EToken kind = EToken::NONE;
  oxDAEBaseElement* target = nullptr;
  bool resolved = false;
  oxString url;
};

// <visual_scene>. Its nodes are not modelled yet: it is kept by identity
// only and written back empty.
OX_DAE_IDENTITY_ELEMENT(oxDAEVisualScene, oxDAEElement, "visual_scene");

}  // namespace OxDAEReader
