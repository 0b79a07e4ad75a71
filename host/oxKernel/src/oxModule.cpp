#include "oxKernel/oxModule.h"

#include <dlfcn.h>

#include <algorithm>

#include "oxKernel/oxLog.h"

namespace OxKernel {

OX_DEFINE_RTTI(oxModule, oxRTTIObject);
OX_DEFINE_RTTI(oxDynamicModule, oxModule);

int oxModule::Start() {
  if (m_started) return 0;
  m_started = true;
  return _CreateSingletons();
}

int oxModule::Stop() {
  if (!m_started) return 0;
  m_started = false;
  return _DestroySingletons();
}

oxDynamicModule::~oxDynamicModule() = default;

int oxDynamicModule::_AddUse(oxAsset*) {
  return ++m_uses == 1 ? Start() : 0;
}

int oxDynamicModule::_ReleaseUse(oxAsset*) {
  if (m_uses == 0) return 0;
  return --m_uses == 0 ? Stop() : 0;
}

int oxDynamicModule::_LoadModule(std::string_view name) {
  oxModuleRegistry::Instance().Register(name, this);
  return 0;
}

int oxDynamicModule::_CreateFromStaticLinkage(oxAssetSerializationContext*) {
  return _LoadModule(GetRTTI().GetName());
}

oxModuleRegistry& oxModuleRegistry::Instance() {
  static oxModuleRegistry registry;
  return registry;
}

void oxModuleRegistry::Register(std::string_view name, oxModule* module) {
  for (Entry& e : m_entries) {
    if (e.name == name && e.module->GetContextID() == module->GetContextID()) {
      e.module = module;
      return;
    }
  }
  m_entries.push_back({oxString(name), module});
}

void oxModuleRegistry::Unregister(oxModule* module) {
  std::erase_if(m_entries, [module](const Entry& e) { return e.module.Get() == module; });
}

oxModule* oxModuleRegistry::Find(std::string_view name, unsigned int contextID) const {
  for (const Entry& e : m_entries) {
    if (e.name == name && e.module->GetContextID() == contextID) return e.module.Get();
  }
  return nullptr;
}

int oxModuleRegistry::LoadModuleFile(const oxString& path, unsigned int contextID,
                                     oxRefPtr<oxModule>& module) {
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) {
    OX_LOG(kLogError, oxConcat("cannot load module '", path, "': ", dlerror()));
    return -1;
  }
  m_libraries.push_back(library);
  auto create = reinterpret_cast<oxCreateModuleFunc>(dlsym(library, "oxCreateModule"));
  if (!create) {
    OX_LOG(kLogError, oxConcat("module '", path, "' exports no oxCreateModule"));
    return -2;
  }
  if (const int rc = create(contextID, module, nullptr); rc != 0) return rc;
  if (!module) return -2;
  Register(module->GetRTTI().GetName(), module.Get());
  return module->Start();
}

void oxModuleRegistry::ShutDown() {
  for (auto it = m_entries.rbegin(); it != m_entries.rend(); ++it)
    it->module->Stop();
  m_entries.clear();
  for (auto it = m_libraries.rbegin(); it != m_libraries.rend(); ++it)
    dlclose(*it);
  m_libraries.clear();
}

}  // namespace OxKernel
