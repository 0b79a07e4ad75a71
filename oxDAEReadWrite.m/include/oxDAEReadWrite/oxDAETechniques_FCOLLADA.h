// Technique classes of the Maya, 3ds Max and FCollada exporters. The
// document creates them for the owner and profile pairs listed with
// oxDAEFile::ReadExtra. Their tool values are not modelled yet: each reads
// its profile, parameters and asset like the generic technique.
#pragma once

#include "oxDAEReadWrite/oxDAETechniques.h"

namespace OxDAEReader {

#define OX_DAE_TOOL_TECHNIQUE(Class)                   \
  class Class : public oxDAETechnique {                \
    OX_DAE_ELEMENT(Class, oxDAETechnique, "technique") \
  }

// Maya dynamic attributes.
OX_DAE_TOOL_TECHNIQUE(oxDAETechDynAttr_Maya);
// Maya maps of a common-profile technique (profile "MAYA").
OX_DAE_TOOL_TECHNIQUE(oxDAETechMaps_Maya);
// Maya texture placement of a colour-or-texture value (profile "MAYA").
OX_DAE_TOOL_TECHNIQUE(oxDAETechTexture_Maya);
// 3ds Max texture amount of a colour-or-texture value (profile "MAX3D").
OX_DAE_TOOL_TECHNIQUE(oxDAETechTexture_Max3D);
// 3ds Max effect flags (profile "MAX3D").
OX_DAE_TOOL_TECHNIQUE(oxDAETechEffect_Max3D);
// 3ds Max light attenuation (profile "MAX3D").
OX_DAE_TOOL_TECHNIQUE(oxDAETechLight_Max3D);
// FCollada maps of a common-profile technique (profile "FCOLLADA").
OX_DAE_TOOL_TECHNIQUE(oxDAETechMaps_FCOLLADA);
// FCollada node user properties (profile "FCOLLADA").
OX_DAE_TOOL_TECHNIQUE(oxDAETechNode_FCOLLADA);
// FCollada geometry data (profile "FCOLLADA").
OX_DAE_TOOL_TECHNIQUE(oxDAETechGeometry_FCOLLADA);
// FCollada material custom attributes (profile "FCOLLADA").
OX_DAE_TOOL_TECHNIQUE(oxDAETechMaterial_FCOLLADA);
// FCollada light values (profile "FCOLLADA").
OX_DAE_TOOL_TECHNIQUE(oxDAETechLight_FCOLLADA);

}  // namespace OxDAEReader
