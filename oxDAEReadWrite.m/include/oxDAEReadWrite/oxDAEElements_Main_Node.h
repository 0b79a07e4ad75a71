// The node hierarchy. The node's transforms, instances and child nodes are
// not modelled yet: a node is kept by identity only and written back empty.
#pragma once

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

// Base of the elements that form the node hierarchy.
class oxDAEHierarchyElement : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEHierarchyElement, oxDAEElement, "")
};

// <node>
OX_DAE_IDENTITY_ELEMENT(oxDAENode, oxDAEHierarchyElement, "node");

}  // namespace OxDAEReader
