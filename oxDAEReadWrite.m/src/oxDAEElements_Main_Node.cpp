#include "oxDAEReadWrite/oxDAEElements_Main_Node.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEHierarchyElement);
OX_DAE_ELEMENT_DEFINE(oxDAENode);

}  // namespace OxDAEReader
