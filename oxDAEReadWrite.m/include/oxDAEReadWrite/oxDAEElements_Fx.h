// Images. Their contents are not modelled yet: an image is kept by identity
// only and written back empty.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// <image>
OX_DAE_IDENTITY_ELEMENT(oxDAEImage, oxDAEElement);

}  // namespace OxDAEReader
