// Physics placeholders: <force_field>, <physics_material>, <physics_model> and
// <physics_scene> keep their identity, drop their content without a word and
// are written back empty.
#include <type_traits>

#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::kNoLog;
using oxtest::Saved;

namespace {

// The four share the one reader of identity elements: none declares a Read
// of its own, so taking Read through any of them names oxDAEElement::Read.
template <class T>
constexpr bool kReadsAsAnElement =
    std::is_same_v<decltype(&T::Read), void (oxDAEElement::*)(oxDAEFile&)>;
static_assert(kReadsAsAnElement<oxDAEForceField>);
static_assert(kReadsAsAnElement<oxDAEPhysicsMaterial>);
static_assert(kReadsAsAnElement<oxDAEPhysicsModel>);
static_assert(kReadsAsAnElement<oxDAEPhysicsScene>);

// Each declares its own Write, which differs by the tag.
template <class T>
constexpr bool kWritesItsOwnTag = std::is_same_v<decltype(&T::Write), void (T::*)(oxDAEFile&)>;
static_assert(kWritesItsOwnTag<oxDAEForceField>);
static_assert(kWritesItsOwnTag<oxDAEPhysicsMaterial>);
static_assert(kWritesItsOwnTag<oxDAEPhysicsModel>);
static_assert(kWritesItsOwnTag<oxDAEPhysicsScene>);

std::string Tag(std::string_view tag) {
  return std::string(tag);
}

}  // namespace

// --- The four kinds, one behaviour ------------------------------------------------------

template <class T>
class PhysicsKind : public oxtest::DocumentTest {};

using PhysicsKinds =
    ::testing::Types<oxDAEForceField, oxDAEPhysicsMaterial, oxDAEPhysicsModel, oxDAEPhysicsScene>;
TYPED_TEST_SUITE(PhysicsKind, PhysicsKinds);

TYPED_TEST(PhysicsKind, KeepsNameIdAndSidAndDropsEveryChildSilently) {
  const std::string tag = Tag(TypeParam::s_XMLTag);
  auto* e = this->template ReadFragment<TypeParam>("<" + tag + R"( name="n" id="i" sid="s">
        <technique_common><gravity>0 -9.8 0</gravity></technique_common>
        <instance_physics_model url="#m"><instance_rigid_body body="b" target="#t"/></instance_physics_model>
        <extra><technique profile="MAX3D"><faceted>1</faceted></technique></extra>
        <no_such_child/>
      </)" + tag + ">");
  EXPECT_EQ(this->log.entries, kNoLog);
  EXPECT_EQ(e->name, "n");
  EXPECT_EQ(e->id, "i");
  EXPECT_EQ(e->sid, "s");
  EXPECT_TRUE(e->extras.empty());
  // Only the element itself is in the document: no child became an element.
  EXPECT_EQ(this->document.GetElements().size(), 1u);
  EXPECT_EQ(this->document.ResolveURI("#i"), e);
  EXPECT_EQ(TypeParam::DynamicCast(e)->GetXMLTag(), TypeParam::s_XMLTag);
}

TYPED_TEST(PhysicsKind, IsWrittenEmptyWithNameAndIdButNoSid) {
  const std::string tag = Tag(TypeParam::s_XMLTag);
  auto* e = this->template ReadFragment<TypeParam>(
      "<" + tag + R"( name="n" id="i" sid="s"><a/></)" + tag + ">");
  EXPECT_EQ(this->Written([&] { this->document.WriteChild(e); }),
            "<w>\n  <" + tag + " name=\"n\" id=\"i\"/>\n</w>\n");
}

TYPED_TEST(PhysicsKind, WithoutAttributesIsWrittenWithoutAttributes) {
  const std::string tag = Tag(TypeParam::s_XMLTag);
  auto* e = this->template ReadFragment<TypeParam>("<" + tag + "/>");
  EXPECT_EQ(this->log.entries, kNoLog);
  EXPECT_EQ(this->Written([&] { this->document.WriteChild(e); }), "<w>\n  <" + tag + "/>\n</w>\n");
}

TYPED_TEST(PhysicsKind, CopiesCarryTheIdentityFields) {
  TypeParam original;
  original.name = "n";
  original.id = "i";
  original.sid = "s";
  const TypeParam copy(original);
  EXPECT_EQ(copy.name, "n");
  EXPECT_EQ(copy.id, "i");
  EXPECT_EQ(copy.sid, "s");
  TypeParam assigned;
  assigned = original;
  EXPECT_EQ(assigned.name, "n");
  EXPECT_EQ(assigned.id, "i");
  EXPECT_EQ(assigned.sid, "s");
  EXPECT_EQ(&assigned.GetRTTI(), &TypeParam::kRTTI);
  EXPECT_EQ(TypeParam::kRTTI.GetParent(), &oxDAEElement::kRTTI);
}

// --- Whole documents -------------------------------------------------------------------

OX_DOCUMENT_SUITE(Physics);

TEST_XML(Physics, SceneWithGravityReadsSilentlyResolvesAndIsWrittenEmpty, Collada(R"(
  <library_physics_scenes><physics_scene id="ps"><technique_common><gravity>0 -9.8 0</gravity></technique_common></physics_scene></library_physics_scenes>)")) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(log.entries, kNoLog);
  const auto* scene = oxDAEPhysicsScene::DynamicCast(document.ResolveURI("#ps"));
  ASSERT_NE(scene, nullptr);
  EXPECT_EQ(scene->id, "ps");
  EXPECT_EQ(scene->parent, document.GetRoot()->libraries[0]);
  // The root, the library and the scene: the gravity made no element.
  EXPECT_EQ(document.GetElements().size(), 3u);
  EXPECT_EQ(SaveText(), Saved("  <library_physics_scenes>\n"
                              "    <physics_scene id=\"ps\"/>\n"
                              "  </library_physics_scenes>\n"));
}

TEST_XML(Physics, ElementsWithoutIdAreReadAndWrittenWithOnlyTheAttributesTheyHad, Collada(R"(
  <library_force_fields><force_field name="wind"/></library_force_fields>
  <library_physics_materials><physics_material/></library_physics_materials>
  <library_physics_models><physics_model name="car"><rigid_body sid="body"/></physics_model></library_physics_models>
  <library_physics_scenes><physics_scene name="world"/></library_physics_scenes>)")) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(log.entries, kNoLog);
  const auto& libraries = document.GetRoot()->libraries;
  ASSERT_EQ(libraries.size(), 4u);
  for (const oxDAELibrary* library : libraries) {
    ASSERT_EQ(library->children.size(), 1u);
    EXPECT_EQ(library->children[0]->id, "");
  }
  EXPECT_EQ(libraries[0]->children[0]->name, "wind");
  EXPECT_EQ(libraries[1]->children[0]->name, "");
  EXPECT_EQ(libraries[2]->children[0]->name, "car");
  EXPECT_EQ(libraries[3]->children[0]->name, "world");
  EXPECT_EQ(SaveText(), Saved("  <library_force_fields>\n"
                              "    <force_field name=\"wind\"/>\n"
                              "  </library_force_fields>\n"
                              "  <library_physics_materials>\n"
                              "    <physics_material/>\n"
                              "  </library_physics_materials>\n"
                              "  <library_physics_models>\n"
                              "    <physics_model name=\"car\"/>\n"
                              "  </library_physics_models>\n"
                              "  <library_physics_scenes>\n"
                              "    <physics_scene name=\"world\"/>\n"
                              "  </library_physics_scenes>\n"));
}

TEST_XML(Physics, SidIsRegisteredAsAPathUnderTheLibraryAndIsNotWritten, Collada(R"(
  <library_physics_models id="lib"><physics_model sid="pm"/></library_physics_models>)")) {
  ASSERT_EQ(rc, 0);
  const oxDAELibrary* library = document.GetRoot()->libraries[0];
  EXPECT_EQ(document.ResolvePath("lib/pm"), library->children[0]);
  EXPECT_EQ(SaveText(), Saved("  <library_physics_models id=\"lib\">\n"
                              "    <physics_model/>\n"
                              "  </library_physics_models>\n"));
}

TEST_XML(Physics, ChildSidsAreNotRegistered, Collada(R"(
  <library_physics_models><physics_model id="pm"><rigid_body sid="rb"/></physics_model></library_physics_models>)")) {
  ASSERT_EQ(rc, 0);
  EXPECT_NE(document.ResolveURI("#pm"), nullptr);
  EXPECT_EQ(document.ResolvePath("pm/rb"), nullptr);
}

TEST_F(Physics, DeeplyNestedContentIsSteppedOverSilentlyAndTheNextLibraryIsRead) {
  // The placeholder never enters its children, so not even the reader's depth
  // bound is reached below it.
  std::string deep;
  for (int i = 0; i < 100'000; ++i)
    deep += "<rigid_body>";
  for (int i = 0; i < 100'000; ++i)
    deep += "</rigid_body>";
  ASSERT_EQ(LoadText(Collada(R"(<library_physics_models><physics_model id="pm">)" + deep +
                             R"(</physics_model></library_physics_models>
    <library_geometries><geometry id="g"/></library_geometries>)")),
            0);
  EXPECT_EQ(log.entries, kNoLog);
  EXPECT_NE(Find<oxDAEPhysicsModel>("#pm"), nullptr);
  EXPECT_NE(Find<oxDAEGeometry>("#g"), nullptr);
  EXPECT_EQ(document.GetElements().size(), 5u);
}
