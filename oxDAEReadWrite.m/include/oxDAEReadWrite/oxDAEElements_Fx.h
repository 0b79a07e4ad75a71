// Images. Their contents are not modelled yet: each is kept by identity only.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// <image>
OX_DAE_IDENTITY_ELEMENT(oxDAEImage, oxDAEElement, "image");

}  // namespace OxDAEReader
