// Physics elements, kept as placeholders: <force_field>, <physics_material>,
// <physics_model> and <physics_scene> in their libraries.
//
// The four classes add no field to oxDAEElement. They all read through
// oxDAEElement::Read, one routine for the four: "name", "id" and "sid" are
// read and registered (so "#id" references and sid paths reach them), and
// the children are not entered, so every child (<technique_common>,
// <instance_physics_model>, <extra>, anything else) is stepped over without a
// message and nothing is kept of it. Each writes back its tag with "name"
// and "id" when they are non-empty (never "sid", as for every element) and
// no content. The compiler-generated copies copy the identity fields and the
// extras pointer list, which stays empty for these elements.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// <force_field>
class oxDAEForceField : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEForceField, oxDAEElement, "force_field")

 public:
  void Write(oxDAEFile& file) override;
};

// <physics_material>
class oxDAEPhysicsMaterial : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEPhysicsMaterial, oxDAEElement, "physics_material")

 public:
  void Write(oxDAEFile& file) override;
};

// <physics_model>
class oxDAEPhysicsModel : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEPhysicsModel, oxDAEElement, "physics_model")

 public:
  void Write(oxDAEFile& file) override;
};

// <physics_scene>
class oxDAEPhysicsScene : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEPhysicsScene, oxDAEElement, "physics_scene")

 public:
  void Write(oxDAEFile& file) override;
};

}  // namespace OxDAEReader
