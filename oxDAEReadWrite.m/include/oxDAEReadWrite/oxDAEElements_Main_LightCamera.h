// Lights and cameras. Their techniques are not modelled yet: both are kept by
// identity only and written back empty.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// <light>
OX_DAE_IDENTITY_ELEMENT(oxDAELight, oxDAEElement, "light");
// <camera>
OX_DAE_IDENTITY_ELEMENT(oxDAECamera, oxDAEElement, "camera");

}  // namespace OxDAEReader
