#include "oxDAEReadWrite/oxDAEElements_Main_Physics.h"

#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

namespace OxDAEReader {

OX_DAE_ELEMENT_DEFINE(oxDAEForceField);
OX_DAE_ELEMENT_DEFINE(oxDAEPhysicsMaterial);
OX_DAE_ELEMENT_DEFINE(oxDAEPhysicsModel);
OX_DAE_ELEMENT_DEFINE(oxDAEPhysicsScene);

// The four writers differ only by the tag: an empty element with the
// identity attributes.

void oxDAEForceField::Write(oxDAEFile& file) {
  WriteIdentityOnly(file, s_XMLTag);
}

void oxDAEPhysicsMaterial::Write(oxDAEFile& file) {
  WriteIdentityOnly(file, s_XMLTag);
}

void oxDAEPhysicsModel::Write(oxDAEFile& file) {
  WriteIdentityOnly(file, s_XMLTag);
}

void oxDAEPhysicsScene::Write(oxDAEFile& file) {
  WriteIdentityOnly(file, s_XMLTag);
}

}  // namespace OxDAEReader
