// Animations, animation clips and controllers. Their contents are not
// modelled yet: each is kept by identity only and written back empty.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// <animation>
OX_DAE_IDENTITY_ELEMENT(oxDAEAnimation, oxDAEElement, "animation");
// <animation_clip>
OX_DAE_IDENTITY_ELEMENT(oxDAEAnimationClip, oxDAEElement, "animation_clip");
// <controller>
OX_DAE_IDENTITY_ELEMENT(oxDAEController, oxDAEElement, "controller");

}  // namespace OxDAEReader
