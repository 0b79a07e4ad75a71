// Physics elements, kept as placeholders: read by name, id and sid (so that
// references to them resolve), contents stepped over, written back empty.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// <force_field>
OX_DAE_IDENTITY_ELEMENT(oxDAEForceField, oxDAEElement, "force_field");
// <physics_material>
OX_DAE_IDENTITY_ELEMENT(oxDAEPhysicsMaterial, oxDAEElement, "physics_material");
// <physics_model>
OX_DAE_IDENTITY_ELEMENT(oxDAEPhysicsModel, oxDAEElement, "physics_model");
// <physics_scene>
OX_DAE_IDENTITY_ELEMENT(oxDAEPhysicsScene, oxDAEElement, "physics_scene");

}  // namespace OxDAEReader
