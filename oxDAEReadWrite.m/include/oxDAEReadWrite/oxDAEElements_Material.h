// Materials and effects. Their contents are not modelled yet: both are kept
// by identity only and written back empty.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// <material>
OX_DAE_IDENTITY_ELEMENT(oxDAEMaterial, oxDAEElement, "material");
// <effect>
OX_DAE_IDENTITY_ELEMENT(oxDAEEffect, oxDAEElement, "effect");

}  // namespace OxDAEReader
