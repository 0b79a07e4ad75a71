#include <cmath>
#include <vector>

#include <oxKernel/oxConstants.h>
#include <oxKernel/oxModule.h>
#include <oxKernel/oxRTTI.h>
#include <oxKernel/oxRefPtr.h>
#include <oxMath/oxColor.h>
#include <oxMath/oxMatrix44.h>

#include "oxTestSupport.h"

using namespace OxKernel;
using OxMath::oxMatrix44;
using OxMath::oxQuat;
using OxMath::oxTransformMatrix44;
using OxMath::oxVec3;

namespace {

class CountingModule : public oxDynamicModule {
  OX_DECLARE_RTTI(CountingModule)

 public:
  using oxDynamicModule::oxDynamicModule;
  int _CreateSingletons() override {
    ++created;
    return createResult;
  }
  int _DestroySingletons() override {
    ++destroyed;
    return destroyResult;
  }
  int created = 0, destroyed = 0;
  int createResult = 0, destroyResult = 0;
};
OX_DEFINE_RTTI(CountingModule, oxDynamicModule);

class Animal : public oxRTTIObject {
  OX_DECLARE_RTTI(Animal)
};
class Dog : public Animal {
  OX_DECLARE_RTTI(Dog)
};
class Stone : public oxRTTIObject {
  OX_DECLARE_RTTI(Stone)
};
OX_DEFINE_RTTI(Animal, oxRTTIObject);
OX_DEFINE_RTTI(Dog, Animal);
OX_DEFINE_RTTI(Stone, oxRTTIObject);

class Counted : public oxRefPtrObject {
 public:
  explicit Counted(int& deaths) : m_deaths(deaths) {}
  ~Counted() override { ++m_deaths; }

 private:
  int& m_deaths;
};
class DerivedCounted : public Counted {
 public:
  using Counted::Counted;
};

// Context identifiers of this file, kept apart from those of other tests.
constexpr unsigned int kContext = 901;

oxMatrix44 Matrix(std::initializer_list<float> values) {
  oxMatrix44 m;
  unsigned int i = 0;
  for (float v : values)
    m[i++] = v;
  return m;
}

oxVec3 TransformPoint(const oxMatrix44& m, const oxVec3& p) {
  return {p.x * m[0] + p.y * m[4] + p.z * m[8] + m[12],
          p.x * m[1] + p.y * m[5] + p.z * m[9] + m[13],
          p.x * m[2] + p.y * m[6] + p.z * m[10] + m[14]};
}

void ExpectNear(const oxMatrix44& actual, const oxMatrix44& expected) {
  for (unsigned int i = 0; i < 16; ++i)
    EXPECT_NEAR(actual[i], expected[i], 1e-6f) << "element " << i;
}

}  // namespace

// ---------------------------------------------------------------- modules

TEST(HostModule, FirstUseStartsAndLastReleaseStops) {
  oxRefPtr<CountingModule> module(new CountingModule(kContext, nullptr));
  EXPECT_FALSE(module->IsStarted());
  EXPECT_EQ(module->_AddUse(nullptr), 0);
  EXPECT_EQ(module->_AddUse(nullptr), 0);
  EXPECT_EQ(module->_AddUse(nullptr), 0);
  EXPECT_EQ(module->created, 1);
  EXPECT_TRUE(module->IsStarted());
  EXPECT_EQ(module->GetUseCount(), 3u);
  EXPECT_EQ(module->_ReleaseUse(nullptr), 0);
  EXPECT_EQ(module->_ReleaseUse(nullptr), 0);
  EXPECT_EQ(module->destroyed, 0);
  EXPECT_TRUE(module->IsStarted());
  EXPECT_EQ(module->_ReleaseUse(nullptr), 0);
  EXPECT_EQ(module->destroyed, 1);
  EXPECT_FALSE(module->IsStarted());
  EXPECT_EQ(module->GetUseCount(), 0u);
}

TEST(HostModule, ReleaseWithoutUseDoesNothing) {
  oxRefPtr<CountingModule> module(new CountingModule(kContext, nullptr));
  EXPECT_EQ(module->_ReleaseUse(nullptr), 0);
  EXPECT_EQ(module->GetUseCount(), 0u);
  EXPECT_EQ(module->destroyed, 0);
}

TEST(HostModule, UseAfterTheLastReleaseStartsAgain) {
  oxRefPtr<CountingModule> module(new CountingModule(kContext, nullptr));
  module->_AddUse(nullptr);
  module->_ReleaseUse(nullptr);
  module->_AddUse(nullptr);
  EXPECT_EQ(module->created, 2);
  EXPECT_EQ(module->destroyed, 1);
  EXPECT_TRUE(module->IsStarted());
}

TEST(HostModule, UseAndReleaseReturnTheHooksResults) {
  oxRefPtr<CountingModule> module(new CountingModule(kContext, nullptr));
  module->createResult = 7;
  module->destroyResult = 9;
  EXPECT_EQ(module->_AddUse(nullptr), 7);
  EXPECT_EQ(module->_AddUse(nullptr), 0);
  EXPECT_EQ(module->_ReleaseUse(nullptr), 0);
  EXPECT_EQ(module->_ReleaseUse(nullptr), 9);
}

TEST(HostModule, StartAndStopRunTheirHooksOnce) {
  oxRefPtr<CountingModule> module(new CountingModule(kContext, nullptr));
  EXPECT_EQ(module->Stop(), 0);
  EXPECT_EQ(module->destroyed, 0);
  module->createResult = 3;
  EXPECT_EQ(module->Start(), 3);
  EXPECT_EQ(module->Start(), 0);
  EXPECT_EQ(module->created, 1);
  module->destroyResult = 4;
  EXPECT_EQ(module->Stop(), 4);
  EXPECT_EQ(module->Stop(), 0);
  EXPECT_EQ(module->destroyed, 1);
}

TEST(HostModule, DefaultsDescribeTheOwnContextOnly) {
  oxManifest manifest;
  oxRefPtr<oxModule> module(new oxModule(kContext, &manifest));
  EXPECT_EQ(module->GetContextID(), kContext);
  EXPECT_EQ(module->GetManifest(), &manifest);
  EXPECT_EQ(module->_GetCtxObjectsList(), std::vector<unsigned int>{kContext});
  EXPECT_TRUE(module->_GetStaticData().tables.empty());
  EXPECT_EQ(module->Start(), 0);
  EXPECT_EQ(module->Stop(), 0);
  EXPECT_STREQ(module->GetRTTI().GetName(), "oxModule");
}

TEST(HostModuleRegistry, FindsModulesByNameAndContext) {
  oxModuleRegistry& registry = oxModuleRegistry::Instance();
  oxRefPtr<CountingModule> a(new CountingModule(kContext, nullptr));
  oxRefPtr<CountingModule> b(new CountingModule(kContext + 1, nullptr));
  registry.Register("HostModuleRegistry.find", a.Get());
  registry.Register("HostModuleRegistry.find", b.Get());
  EXPECT_EQ(registry.Find("HostModuleRegistry.find", kContext), a.Get());
  EXPECT_EQ(registry.Find("HostModuleRegistry.find", kContext + 1), b.Get());
  EXPECT_EQ(registry.Find("HostModuleRegistry.find", kContext + 2), nullptr);
  EXPECT_EQ(registry.Find("HostModuleRegistry.FIND", kContext), nullptr);
  EXPECT_EQ(a->GetRefCount(), 2);
  registry.Unregister(a.Get());
  registry.Unregister(b.Get());
  EXPECT_EQ(registry.Find("HostModuleRegistry.find", kContext), nullptr);
  EXPECT_EQ(a->GetRefCount(), 1);
}

TEST(HostModuleRegistry, RegisteringTheSameNameAndContextReplaces) {
  oxModuleRegistry& registry = oxModuleRegistry::Instance();
  oxRefPtr<CountingModule> first(new CountingModule(kContext, nullptr));
  oxRefPtr<CountingModule> second(new CountingModule(kContext, nullptr));
  registry.Register("HostModuleRegistry.replace", first.Get());
  registry.Register("HostModuleRegistry.replace", second.Get());
  EXPECT_EQ(registry.Find("HostModuleRegistry.replace", kContext), second.Get());
  EXPECT_EQ(first->GetRefCount(), 1);
  EXPECT_EQ(second->GetRefCount(), 2);
  registry.Unregister(second.Get());
  EXPECT_EQ(registry.Find("HostModuleRegistry.replace", kContext), nullptr);
}

TEST(HostModuleRegistry, UnregisterRemovesEveryNameOfTheModule) {
  oxModuleRegistry& registry = oxModuleRegistry::Instance();
  oxRefPtr<CountingModule> module(new CountingModule(kContext, nullptr));
  registry.Register("HostModuleRegistry.one", module.Get());
  registry.Register("HostModuleRegistry.two", module.Get());
  EXPECT_EQ(module->GetRefCount(), 3);
  registry.Unregister(module.Get());
  EXPECT_EQ(registry.Find("HostModuleRegistry.one", kContext), nullptr);
  EXPECT_EQ(registry.Find("HostModuleRegistry.two", kContext), nullptr);
  EXPECT_EQ(module->GetRefCount(), 1);
}

TEST(HostModuleRegistry, ModulesEnterTheRegistryUnderTheirNames) {
  oxModuleRegistry& registry = oxModuleRegistry::Instance();
  oxRefPtr<CountingModule> module(new CountingModule(kContext, nullptr));
  EXPECT_EQ(module->_LoadModule("HostModuleRegistry.loaded"), 0);
  EXPECT_EQ(module->_CreateFromStaticLinkage(nullptr), 0);
  EXPECT_EQ(registry.Find("HostModuleRegistry.loaded", kContext), module.Get());
  EXPECT_EQ(registry.Find("CountingModule", kContext), module.Get());
  registry.Unregister(module.Get());
}

TEST(HostModuleRegistry, ShutDownStopsAndReleasesEveryModule) {
  oxModuleRegistry& registry = oxModuleRegistry::Instance();
  oxRefPtr<CountingModule> kept(new CountingModule(kContext, nullptr));
  registry.Register("HostModuleRegistry.kept", kept.Get());
  kept->Start();
  registry.Register("HostModuleRegistry.idle", new CountingModule(kContext, nullptr));
  registry.ShutDown();
  EXPECT_EQ(kept->destroyed, 1);
  EXPECT_FALSE(kept->IsStarted());
  EXPECT_EQ(kept->GetRefCount(), 1);
  EXPECT_EQ(registry.Find("HostModuleRegistry.kept", kContext), nullptr);
  EXPECT_EQ(registry.Find("HostModuleRegistry.idle", kContext), nullptr);
  // ShutDown also stopped the module the test program started for context 0;
  // give it back its registration and tables for the remaining tests.
  OxDAEReader::oxDAEReadWriteModule& dae = OxDAEReader::oxDAEReadWriteModule::Instance(0);
  dae._LoadModule("oxDAEReadWriteModule");
  EXPECT_EQ(dae.Start(), 0);
}

// ---------------------------------------------------------------- run-time types

TEST(HostRTTI, RecordsNameTheirClassAndParent) {
  EXPECT_STREQ(Dog::kRTTI.GetName(), "Dog");
  EXPECT_EQ(Dog::kRTTI.GetParent(), &Animal::kRTTI);
  EXPECT_EQ(Animal::kRTTI.GetParent(), &oxRTTIObject::kRTTI);
  EXPECT_EQ(oxRTTIObject::kRTTI.GetParent(), nullptr);
  EXPECT_STREQ(oxRTTIObject::kRTTI.GetName(), "oxRTTIObject");
  EXPECT_EQ(Dog::kRTTI.GetFlags(), 0u);
  EXPECT_STREQ(oxDynamicModule::kRTTI.GetName(), "oxDynamicModule");
  EXPECT_EQ(oxDynamicModule::kRTTI.GetParent(), &oxModule::kRTTI);
}

TEST(HostRTTI, IsKindOfByRecordWalksTheParentChain) {
  const Dog dog;
  const Animal& asAnimal = dog;
  EXPECT_EQ(&asAnimal.GetRTTI(), &Dog::kRTTI);
  EXPECT_TRUE(dog.IsKindOf(Dog::kRTTI));
  EXPECT_TRUE(dog.IsKindOf(Animal::kRTTI));
  EXPECT_TRUE(dog.IsKindOf(oxRTTIObject::kRTTI));
  EXPECT_FALSE(dog.IsKindOf(Stone::kRTTI));
  EXPECT_FALSE(Animal().IsKindOf(Dog::kRTTI));
}

TEST(HostRTTI, IsKindOfByNameMatchesRecordsFromElsewhere) {
  // A record with the same name that is not in the chain, as another module
  // would hold: only the name test recognises it.
  const oxRTTI foreignAnimal("Animal", 0, nullptr);
  EXPECT_FALSE(oxRTTI::IsKindOf(Dog::kRTTI, foreignAnimal));
  EXPECT_TRUE(oxRTTI::IsKindOf(Dog::kRTTI, foreignAnimal.GetName()));
  const Dog dog;
  EXPECT_TRUE(dog.IsKindOf("Dog"));
  EXPECT_TRUE(dog.IsKindOf("Animal"));
  EXPECT_TRUE(dog.IsKindOf("oxRTTIObject"));
  EXPECT_FALSE(dog.IsKindOf("Stone"));
  EXPECT_FALSE(dog.IsKindOf("animal"));
  EXPECT_FALSE(dog.IsKindOf(""));
}

TEST(HostRTTI, DynamicCastsCheckTheClass) {
  Dog dog;
  Stone stone;
  oxRTTIObject* object = &dog;
  const oxRTTIObject* constObject = &dog;
  EXPECT_EQ(Animal::DynamicCast(object), &dog);
  EXPECT_EQ(Dog::DynamicCast(constObject), &dog);
  EXPECT_EQ(Dog::DynamicCast(static_cast<oxRTTIObject*>(&stone)), nullptr);
  EXPECT_EQ(Dog::DynamicCast(static_cast<oxRTTIObject*>(nullptr)), nullptr);
  EXPECT_EQ(Animal::WeakDynamicCast(object), &dog);
  EXPECT_EQ(Animal::WeakDynamicCast(constObject), &dog);
  EXPECT_EQ(Stone::WeakDynamicCast(object), nullptr);
  EXPECT_EQ(Stone::WeakDynamicCast(static_cast<const oxRTTIObject*>(nullptr)), nullptr);
}

// ---------------------------------------------------------------- reference counting

TEST(HostRefPtr, CountsReferencesAndDeletesAtTheLastRelease) {
  int deaths = 0;
  oxRefPtr<Counted> first(new Counted(deaths));
  EXPECT_EQ(first->GetRefCount(), 1);
  {
    oxRefPtr<Counted> copy(first);
    EXPECT_EQ(first->GetRefCount(), 2);
    oxRefPtr<Counted> assigned;
    assigned = copy;
    EXPECT_EQ(first->GetRefCount(), 3);
  }
  EXPECT_EQ(first->GetRefCount(), 1);
  EXPECT_EQ(deaths, 0);
  first.Reset();
  EXPECT_FALSE(first);
  EXPECT_EQ(first.Get(), nullptr);
  EXPECT_EQ(deaths, 1);
  first.Reset();
  EXPECT_EQ(deaths, 1);
}

TEST(HostRefPtr, MovesTransferTheReference) {
  int deaths = 0;
  oxRefPtr<Counted> source(new Counted(deaths));
  Counted* raw = source.Get();
  oxRefPtr<Counted> target(std::move(source));
  EXPECT_EQ(source.Get(), nullptr);
  EXPECT_EQ(target.Get(), raw);
  EXPECT_EQ(raw->GetRefCount(), 1);
  oxRefPtr<Counted> other(new Counted(deaths));
  other = std::move(target);
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(other.Get(), raw);
  EXPECT_EQ(raw->GetRefCount(), 1);
  oxRefPtr<Counted>& alias = other;
  other = std::move(alias);
  EXPECT_EQ(other.Get(), raw);
  EXPECT_EQ(raw->GetRefCount(), 1);
}

TEST(HostRefPtr, SelfAssignmentKeepsTheObject) {
  int deaths = 0;
  oxRefPtr<Counted> p(new Counted(deaths));
  const oxRefPtr<Counted>& alias = p;
  p = alias;
  EXPECT_EQ(deaths, 0);
  EXPECT_EQ(p->GetRefCount(), 1);
}

TEST(HostRefPtr, ConvertsFromADerivedPointer) {
  int deaths = 0;
  oxRefPtr<DerivedCounted> derived(new DerivedCounted(deaths));
  oxRefPtr<Counted> base(derived);
  EXPECT_EQ(base.Get(), derived.Get());
  EXPECT_EQ(derived->GetRefCount(), 2);
  derived.Reset();
  EXPECT_EQ(deaths, 0);
  base.Reset();
  EXPECT_EQ(deaths, 1);
}

TEST(HostRefPtr, CopiedObjectStartsWithoutReferences) {
  int deaths = 0;
  oxRefPtr<Counted> p(new Counted(deaths));
  const Counted copy(*p);
  EXPECT_EQ(copy.GetRefCount(), 0);
  EXPECT_EQ(p->GetRefCount(), 1);
}

// ---------------------------------------------------------------- math

TEST(HostMath, IdentityIsTheDefaultMatrix) {
  const oxMatrix44 identity = Matrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
  EXPECT_EQ(oxMatrix44::kIdentity, identity);
  EXPECT_EQ(oxMatrix44(), identity);
}

TEST(HostMath, MultiplyABAppliesBFirst) {
  const oxMatrix44 a = Matrix({1, 2, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
  const oxMatrix44 b = Matrix({1, 0, 0, 0, 3, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
  oxMatrix44 ab, ba;
  ab.MultiplyAB(a, b);
  ba.MultiplyAB(b, a);
  EXPECT_EQ(ab, Matrix({1, 2, 0, 0, 3, 7, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
  EXPECT_EQ(ba, Matrix({7, 2, 0, 0, 3, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
  oxMatrix44 both = Matrix({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
  oxMatrix44 square;
  square.MultiplyAB(both, both);
  EXPECT_EQ(square, Matrix({90, 100, 110, 120, 202, 228, 254, 280, 314, 356, 398, 440, 426, 484,
                            542, 600}));
  oxMatrix44 aliased = a;
  aliased.MultiplyAB(aliased, b);
  EXPECT_EQ(aliased, ab);
  aliased = b;
  aliased.MultiplyAB(a, aliased);
  EXPECT_EQ(aliased, ab);
  both.MultiplyAB(both, both);
  EXPECT_EQ(both, square);
}

TEST(HostMath, ComputeTransposeSwapsRowsAndColumns) {
  const oxMatrix44 m = Matrix({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
  const oxMatrix44 expected = Matrix({1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16});
  oxMatrix44 t;
  t.ComputeTranspose(m);
  EXPECT_EQ(t, expected);
  oxMatrix44 inPlace = m;
  inPlace.ComputeTranspose();
  EXPECT_EQ(inPlace, expected);
}

TEST(HostMath, CreatePutsTheTranslationInElements12To14) {
  oxTransformMatrix44 m;
  m.Create(oxQuat(), {5, 6, 7}, {1, 2, 3});
  EXPECT_EQ(static_cast<const oxMatrix44&>(m),
            Matrix({1, 0, 0, 0, 0, 2, 0, 0, 0, 0, 3, 0, 5, 6, 7, 1}));
  EXPECT_EQ(m.GetTranslation(), (oxVec3{5, 6, 7}));
}

TEST(HostMath, CreateScalesThenRotatesThenTranslates) {
  oxTransformMatrix44 m;
  m.Create(oxQuat::FromAxisAngle({0, 0, 1}, kPi / 2), {5, 6, 7}, {2, 2, 2});
  ExpectNear(m, Matrix({0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 2, 0, 5, 6, 7, 1}));
  const oxVec3 p = TransformPoint(m, {1, 0, 0});
  EXPECT_NEAR(p.x, 5.0f, 1e-6f);
  EXPECT_NEAR(p.y, 8.0f, 1e-6f);
  EXPECT_NEAR(p.z, 7.0f, 1e-6f);
}

TEST(HostMath, TransformsComposeWithMultiplyAB) {
  oxTransformMatrix44 translate, scale;
  translate.Create(oxQuat(), {1, 2, 3}, {1, 1, 1});
  scale.Create(oxQuat(), {0, 0, 0}, {2, 2, 2});
  oxMatrix44 translateThenScale, scaleThenTranslate;
  translateThenScale.MultiplyAB(scale, translate);
  scaleThenTranslate.MultiplyAB(translate, scale);
  EXPECT_EQ(translateThenScale, Matrix({2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 2, 4, 6, 1}));
  EXPECT_EQ(scaleThenTranslate, Matrix({2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 1, 2, 3, 1}));
}

TEST(HostMath, FromAxisAngleNormalisesTheAxis) {
  const oxQuat q = OxMath::oxQuat::FromAxisAngle({0, 0, 2}, kPi);
  EXPECT_EQ(q.x, 0.0f);
  EXPECT_EQ(q.y, 0.0f);
  EXPECT_NEAR(q.z, 1.0f, 1e-6f);
  EXPECT_NEAR(q.w, 0.0f, 1e-6f);
  EXPECT_EQ(oxQuat::FromAxisAngle({0, 0, 0}, 1.0f), oxQuat());
  const oxQuat x = oxQuat::FromAxisAngle({3, 0, 0}, kPi / 3);
  EXPECT_NEAR(x.x, 0.5f, 1e-6f);
  EXPECT_NEAR(x.w, std::sqrt(3.0f) / 2, 1e-6f);
}

TEST(HostMath, VectorOperations) {
  const oxVec3 a{1, 2, 3}, b{4, 5, 6};
  EXPECT_EQ(a + b, (oxVec3{5, 7, 9}));
  EXPECT_EQ(b - a, (oxVec3{3, 3, 3}));
  EXPECT_EQ(a * 2.0f, (oxVec3{2, 4, 6}));
  EXPECT_EQ(OxMath::Dot(a, b), 32.0f);
  EXPECT_EQ(OxMath::Cross(a, b), (oxVec3{-3, 6, -3}));
  EXPECT_EQ(OxMath::Cross(oxVec3{1, 0, 0}, oxVec3{0, 1, 0}), (oxVec3{0, 0, 1}));
  EXPECT_EQ(OxMath::oxFColor(), (OxMath::oxFColor{0, 0, 0, 1}));
  EXPECT_EQ(OxMath::kGreenColor, (OxMath::oxFColor{0, 1, 0, 1}));
  EXPECT_NEAR(kPiOn180 * 180.0f, kPi, 1e-6f);
}
