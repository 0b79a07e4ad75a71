#include "oxDAEReadWrite/oxDAEReadWrite.h"

#include <atomic>

namespace OxDAEReader {

using OxKernel::oxRefPtr;

OX_DEFINE_RTTI(oxDAEReadWriteModule, OxKernel::oxDynamicModule);

namespace {
// The lookup tables are shared by every context: they are built when the
// first module object starts and freed when the last started one stops.
std::atomic<int> g_startedModules{0};
}  // namespace

oxDAEReadWriteModule::~oxDAEReadWriteModule() = default;

OxKernel::oxHash<unsigned int, oxRefPtr<oxDAEReadWriteModule>>& oxDAEReadWriteModule::Instances() {
  static OxKernel::oxHash<unsigned int, oxRefPtr<oxDAEReadWriteModule>> instances;
  return instances;
}

int oxDAEReadWriteModule::CreateInstance(unsigned int contextID,
                                         oxRefPtr<OxKernel::oxModule>& module,
                                         OxKernel::oxAssetSerializationContext* context) {
  auto& instances = Instances();
  if (auto it = instances.find(contextID); it != instances.end()) {
    OxKernel::oxRefPtrObject::_WaitForDeletion(it->second.Get());
    instances.erase(it);
  }
  oxRefPtr<oxDAEReadWriteModule> created(new oxDAEReadWriteModule(contextID, nullptr));
  instances.insert_or_assign(contextID, created);
  module = created;
  return created->_CreateFromStaticLinkage(context);
}

int oxDAEReadWriteModule::Init(unsigned int contextID, OxKernel::oxAsset* asset) {
  auto& instances = Instances();
  if (auto it = instances.find(contextID); it != instances.end()) return it->second->_AddUse(asset);
  oxRefPtr<oxDAEReadWriteModule> created(new oxDAEReadWriteModule(contextID, nullptr));
  instances.insert_or_assign(contextID, created);
  const int rc = created->_AddUse(asset);
  return rc != 0 ? rc : created->_LoadModule("oxDAEReadWriteModule");
}

int oxDAEReadWriteModule::Uninit(unsigned int contextID, OxKernel::oxAsset* asset) {
  oxDAEReadWriteModule* module = InstancePtr(contextID);
  return module ? module->_ReleaseUse(asset) : 0;
}

oxDAEReadWriteModule& oxDAEReadWriteModule::Instance(unsigned int contextID) {
  return *Instances().at(contextID);
}

oxDAEReadWriteModule* oxDAEReadWriteModule::InstancePtr(unsigned int contextID) {
  auto& instances = Instances();
  const auto it = instances.find(contextID);
  return it == instances.end() ? nullptr : it->second.Get();
}

int oxDAEReadWriteModule::_CreateSingletons() {
  if (g_startedModules.fetch_add(1) == 0) _PrepareHashes();
  return 0;
}

int oxDAEReadWriteModule::_DestroySingletons() {
  if (g_startedModules.fetch_sub(1) == 1) _DestroyHashes();
  return 0;
}

void oxDAEReadWriteModule::_PrepareHashes() {
  oxDAEEnumConverter::PrepareHashTables();
  oxDAEParameter::_PrepareHashTable();
  oxDAEFxRenderState::PrepareHashTables();
  oxDAEFile::_PrepareHashTable();
}

void oxDAEReadWriteModule::_DestroyHashes() {
  oxDAEEnumConverter::DestroyHashTables();
  oxDAEParameter::_DestroyHashTable();
  oxDAEFxRenderState::DestroyHashTables();
  oxDAEFile::_DestroyHashTable();
}

OxKernel::oxModuleStaticData oxDAEReadWriteModule::_GetStaticData() const {
  return {{
      {"enumerations", oxDAEEnumConverter::HasHashTables()},
      {"parameter types", oxDAEParameter::_HasHashTable()},
      {"render states", oxDAEFxRenderState::HasHashTables()},
      {"tokens", oxDAEFile::_HasHashTable()},
  }};
}

std::vector<unsigned int> oxDAEReadWriteModule::_GetCtxObjectsList() const {
  std::vector<unsigned int> contexts;
  for (const auto& [context, module] : Instances()) {
    if (module) contexts.push_back(context);
  }
  return contexts;
}

}  // namespace OxDAEReader

extern "C" int oxCreateModule(unsigned int contextID,
                              OxKernel::oxRefPtr<OxKernel::oxModule>& module,
                              OxKernel::oxAssetSerializationContext* context) {
  return OxDAEReader::oxDAEReadWriteModule::CreateInstance(contextID, module, context);
}
