#include <dlfcn.h>

#include <string>
#include <vector>

#include <oxKernel/oxLog.h>
#include <oxKernel/oxModule.h>

#include "oxTestSupport.h"

using namespace OxKernel;
using oxtest::Error;
using oxtest::LogCapture;

namespace {

// Context identifiers used by no other test: each test starts its own
// module object inside the loaded library.
constexpr unsigned int kRegistryContext = 77;
constexpr unsigned int kFactoryContext = 78;
// Context of the copy of the module linked into this program.
constexpr unsigned int kLinkedContext = 79;

struct TableState {
  std::string name;
  bool built;
  bool operator==(const TableState&) const = default;
};

std::vector<TableState> Tables(const oxModule& module) {
  std::vector<TableState> tables;
  for (const oxModuleStaticData::Table& table : module._GetStaticData().tables)
    tables.push_back({table.name, table.built});
  return tables;
}

std::vector<TableState> AllTables(bool built) {
  return {{"enumerations", built},
          {"parameter types", built},
          {"render states", built},
          {"tokens", built}};
}

// The file the host kernel library was loaded from: a shared library that
// exports no module factory.
std::string KernelLibraryPath() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&oxLog::Print), &info) == 0 || !info.dli_fname) return {};
  return info.dli_fname;
}

}  // namespace

TEST(ModuleLoad, RegistryLoadsStartsAndStopsTheModule) {
  LogCapture log;
  oxModuleRegistry& registry = oxModuleRegistry::Instance();
  oxRefPtr<oxModule> module;
  ASSERT_EQ(registry.LoadModuleFile(OX_MODULE_PATH, kRegistryContext, module), 0);
  ASSERT_TRUE(module);
  EXPECT_STREQ(module->GetRTTI().GetName(), "oxDAEReadWriteModule");
  EXPECT_TRUE(module->IsKindOf(oxDynamicModule::kRTTI));
  EXPECT_EQ(module->GetContextID(), kRegistryContext);
  EXPECT_EQ(module->_GetCtxObjectsList(), std::vector<unsigned int>{kRegistryContext});
  EXPECT_EQ(registry.Find("oxDAEReadWriteModule", kRegistryContext), module.Get());
  EXPECT_TRUE(module->IsStarted());
  EXPECT_EQ(Tables(*module), AllTables(true));
  EXPECT_EQ(module->Stop(), 0);
  EXPECT_FALSE(module->IsStarted());
  EXPECT_EQ(Tables(*module), AllTables(false));
  registry.Unregister(module.Get());
  EXPECT_EQ(registry.Find("oxDAEReadWriteModule", kRegistryContext), nullptr);
  EXPECT_EQ(log.Count(), 0u);
}

TEST(ModuleLoad, ExportedFactoryCreatesAModuleWithItsOwnTables) {
  using OxDAEReader::oxDAEReadWriteModule;
  ASSERT_EQ(oxDAEReadWriteModule::Init(kLinkedContext), 0);
  void* library = dlopen(OX_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  const auto create = reinterpret_cast<oxCreateModuleFunc>(dlsym(library, "oxCreateModule"));
  ASSERT_NE(create, nullptr);
  oxRefPtr<oxModule> module;
  ASSERT_EQ(create(kFactoryContext, module, nullptr), 0);
  ASSERT_TRUE(module);
  EXPECT_EQ(module->GetContextID(), kFactoryContext);
  EXPECT_FALSE(module->IsStarted());
  EXPECT_EQ(Tables(*module), AllTables(false));
  EXPECT_EQ(module->Start(), 0);
  EXPECT_EQ(Tables(*module), AllTables(true));
  EXPECT_EQ(module->Stop(), 0);
  EXPECT_EQ(Tables(*module), AllTables(false));
  // The copy linked into this program keeps its own tables.
  oxDAEReadWriteModule& linked = oxDAEReadWriteModule::Instance(kLinkedContext);
  EXPECT_EQ(Tables(linked), AllTables(true));
  oxModuleRegistry::Instance().Unregister(module.Get());
  module.Reset();
  EXPECT_EQ(dlclose(library), 0);
  EXPECT_EQ(Tables(linked), AllTables(true));
  oxModuleRegistry::Instance().Unregister(&linked);
  EXPECT_EQ(oxDAEReadWriteModule::Uninit(kLinkedContext), 0);
}

TEST(ModuleLoad, MissingFileReturnsMinusOneWithAnError) {
  LogCapture log;
  const std::string path = "/nonexistent/oxDAEReadWrite.oxmodule";
  oxRefPtr<oxModule> module;
  EXPECT_EQ(oxModuleRegistry::Instance().LoadModuleFile(oxString(path), kRegistryContext, module),
            -1);
  EXPECT_FALSE(module);
  EXPECT_EQ(log.entries,
            (std::vector{Error("cannot load module '" + path + "': " + path +
                               ": cannot open shared object file: No such file or directory")}));
}

TEST(ModuleLoad, LibraryWithoutFactoryReturnsMinusTwoWithAnError) {
  LogCapture log;
  const std::string path = KernelLibraryPath();
  ASSERT_FALSE(path.empty());
  oxRefPtr<oxModule> module;
  EXPECT_EQ(oxModuleRegistry::Instance().LoadModuleFile(oxString(path), kRegistryContext, module),
            -2);
  EXPECT_FALSE(module);
  EXPECT_EQ(log.entries, (std::vector{Error("module '" + path + "' exports no oxCreateModule")}));
}
