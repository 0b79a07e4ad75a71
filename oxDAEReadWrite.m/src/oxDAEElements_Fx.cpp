#include "oxDAEReadWrite/oxDAEElements_Fx.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEImage);
OX_DAE_ELEMENT_DEFINE(oxDAEFxProfile);
OX_DAE_ELEMENT_DEFINE(oxDAEFxProfileCommon);
OX_DAE_ELEMENT_DEFINE(oxDAEFxProfileCommon::Technique);
OX_DAE_ELEMENT_DEFINE(oxDAEFxColorOrTextureType);

}  // namespace OxDAEReader
