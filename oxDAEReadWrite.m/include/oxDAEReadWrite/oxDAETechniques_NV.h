// Technique of the NVIDIA FX Composer importer. Its import values are not
// modelled yet: it reads like the generic technique.
#pragma once

#include "oxDAEReadWrite/oxDAETechniques_FCOLLADA.h"

namespace OxDAEReader {

// Effect import reference (profile "NV_import").
OX_DAE_TOOL_TECHNIQUE(oxDAETechEffect_Nv);

}  // namespace OxDAEReader
