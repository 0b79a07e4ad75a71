#include "oxDAEReadWrite/oxDAEElements_Fx_Common.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEFxProfile);
OX_DAE_ELEMENT_DEFINE(oxDAEFxProfileCommon);
OX_DAE_ELEMENT_DEFINE(oxDAEFxProfileCommon::Technique);
OX_DAE_ELEMENT_DEFINE(oxDAEFxColorOrTextureType);

}  // namespace OxDAEReader
