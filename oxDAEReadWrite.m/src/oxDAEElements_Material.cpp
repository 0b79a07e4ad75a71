#include "oxDAEReadWrite/oxDAEElements_Material.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEMaterial);
OX_DAE_ELEMENT_DEFINE(oxDAEEffect);

}  // namespace OxDAEReader
