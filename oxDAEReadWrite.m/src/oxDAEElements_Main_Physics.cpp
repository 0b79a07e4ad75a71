#include "oxDAEReadWrite/oxDAEElements_Main_Physics.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEForceField, "force_field");
OX_DAE_ELEMENT_DEFINE(oxDAEPhysicsMaterial, "physics_material");
OX_DAE_ELEMENT_DEFINE(oxDAEPhysicsModel, "physics_model");
OX_DAE_ELEMENT_DEFINE(oxDAEPhysicsScene, "physics_scene");

}  // namespace OxDAEReader
