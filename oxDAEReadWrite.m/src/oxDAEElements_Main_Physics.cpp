#include "oxDAEReadWrite/oxDAEElements_Main_Physics.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEForceField);
OX_DAE_ELEMENT_DEFINE(oxDAEPhysicsMaterial);
OX_DAE_ELEMENT_DEFINE(oxDAEPhysicsModel);
OX_DAE_ELEMENT_DEFINE(oxDAEPhysicsScene);

}  // namespace OxDAEReader
