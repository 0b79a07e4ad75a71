#include "oxDAEReadWrite/oxDAEElements_Animation.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEAnimation, "animation");
OX_DAE_ELEMENT_DEFINE(oxDAEAnimationClip, "animation_clip");
OX_DAE_ELEMENT_DEFINE(oxDAEController, "controller");

}  // namespace OxDAEReader
