// Skin and morph controllers. Their contents are not modelled yet.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// <controller>
OX_DAE_IDENTITY_ELEMENT(oxDAEController, oxDAEElement, "controller");

}  // namespace OxDAEReader
