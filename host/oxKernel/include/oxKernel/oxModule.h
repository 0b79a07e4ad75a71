// The host's module system, reduced to what a plug-in module needs: a module
// object per host context that is started (_CreateSingletons) before its first
// use and stopped (_DestroySingletons) after its last, a registry of loaded
// modules, and loading of ".oxmodule" shared libraries by their exported
// factory "oxCreateModule".
#pragma once

#include <string_view>
#include <vector>

#include "oxKernel/oxProgress.h"
#include "oxKernel/oxRTTI.h"
#include "oxKernel/oxRefPtr.h"
#include "oxKernel/oxString.h"

namespace OxKernel {

// Stand-ins for host objects that modules receive but this host never fills.
struct oxManifest {};
struct oxAsset {};
struct oxAssetSerializationContext {};

// What a module reports of its process-wide tables (name and whether built).
struct oxModuleStaticData {
  struct Table {
    const char* name;
    bool built;
  };
  std::vector<Table> tables;
};

class oxModule : public oxRefPtrObject, public oxRTTIObject {
  OX_DECLARE_RTTI(oxModule)

 public:
  oxModule(unsigned int contextID, oxManifest* manifest)
      : m_contextID(contextID), m_manifest(manifest) {}

  unsigned int GetContextID() const { return m_contextID; }
  oxManifest* GetManifest() const { return m_manifest; }
  bool IsStarted() const { return m_started; }

  // Start runs _CreateSingletons once; Stop runs _DestroySingletons once after
  // a Start. Both return the hook's result, or 0 when there was nothing to do.
  int Start();
  int Stop();

  virtual int _CreateSingletons() { return 0; }
  virtual int _DestroySingletons() { return 0; }
  virtual oxModuleStaticData _GetStaticData() const { return {}; }
  // The context identifiers that own an object of this module class.
  virtual std::vector<unsigned int> _GetCtxObjectsList() const { return {m_contextID}; }

 private:
  unsigned int m_contextID;
  oxManifest* m_manifest;
  bool m_started = false;
};

// A module that counts its users: the first use starts it, the last stops it.
class oxDynamicModule : public oxModule {
  OX_DECLARE_RTTI(oxDynamicModule)

 public:
  using oxModule::oxModule;
  ~oxDynamicModule() override;

  int _AddUse(oxAsset* asset);
  int _ReleaseUse(oxAsset* asset);
  unsigned int GetUseCount() const { return m_uses; }
  // Enters the module in the registry under `name` for its context.
  int _LoadModule(std::string_view name);
  // Enters a module linked into the host (no shared library) in the registry
  // under its class name.
  int _CreateFromStaticLinkage(oxAssetSerializationContext* context);

 private:
  unsigned int m_uses = 0;
};

using oxCreateModuleFunc = int (*)(unsigned int contextID, oxRefPtr<oxModule>& module,
                                   oxAssetSerializationContext* context);

class oxModuleRegistry {
 public:
  static oxModuleRegistry& Instance();

  void Register(std::string_view name, oxModule* module);
  void Unregister(oxModule* module);
  oxModule* Find(std::string_view name, unsigned int contextID) const;

  // Opens a module library, creates its module object for `contextID` through
  // "oxCreateModule", starts it and registers it under its class name.
  // Returns 0, -1 when the library cannot be opened, -2 when it has no
  // factory, or the factory's or start's non-zero result.
  int LoadModuleFile(const oxString& path, unsigned int contextID, oxRefPtr<oxModule>& module);
  // Stops every registered module, releases them and closes the libraries.
  void ShutDown();

 private:
  struct Entry {
    oxString name;
    oxRefPtr<oxModule> module;
  };
  std::vector<Entry> m_entries;
  std::vector<void*> m_libraries;
};

}  // namespace OxKernel
