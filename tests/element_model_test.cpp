// The element base classes: identity attributes, paths, class records, the
// reader diagnostics and the version triple.
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::Warning;

OX_DOCUMENT_SUITE(ElementModel);

namespace {

// An element kept by the test's document, with the identity it is given.
template <class T = oxDAEElement>
T* Make(oxDAEFile& file, oxDAEBaseElement* parent, std::string_view id, std::string_view sid = {}) {
  T* e = new T();
  e->id = oxString(id);
  e->sid = oxString(sid);
  file.RegisterElement(e, parent);
  return e;
}

}  // namespace

// --- Defaults, copies and class records ---------------------------------------------

TEST_F(ElementModel, BaseElementHasNoParentAndNoIdentity) {
  const oxDAEColladaElement root;
  EXPECT_EQ(root.parent, nullptr);
  EXPECT_FALSE(root.HasID());
}

TEST_F(ElementModel, ElementStartsWithEmptyIdentityAndTakesPartInRegistries) {
  const oxDAEElement e;
  EXPECT_TRUE(e.HasID());
  EXPECT_EQ(e.parent, nullptr);
  EXPECT_EQ(e.name, "");
  EXPECT_EQ(e.id, "");
  EXPECT_EQ(e.sid, "");
  EXPECT_EQ(e.extras.size(), 0u);
}

TEST_F(ElementModel, TypedElementStartsWithEmptyType) {
  const oxDAETypedElement e;
  EXPECT_EQ(e.type, "");
  EXPECT_TRUE(e.HasID());
}

TEST_F(ElementModel, CopyTakesIdentityAndParentAndSharesTheExtras) {
  oxDAEColladaElement root;
  oxDAEExtraElement extra;
  oxDAEElement original;
  original.parent = &root;
  original.name = "n";
  original.id = "i";
  original.sid = "s";
  original.extras.push_back(&extra);

  const oxDAEElement copy(original);
  EXPECT_EQ(copy.parent, &root);
  EXPECT_EQ(copy.name, "n");
  EXPECT_EQ(copy.id, "i");
  EXPECT_EQ(copy.sid, "s");
  ASSERT_EQ(copy.extras.size(), 1u);
  EXPECT_EQ(copy.extras[0], &extra);

  oxDAEElement assigned;
  assigned = original;
  EXPECT_EQ(assigned.parent, &root);
  EXPECT_EQ(assigned.id, "i");
  ASSERT_EQ(assigned.extras.size(), 1u);
  EXPECT_EQ(assigned.extras[0], &extra);
}

TEST_F(ElementModel, TypedElementCopyTakesTheType) {
  oxDAETypedElement original;
  original.type = "library_nodes";
  original.id = "lib";
  const oxDAETypedElement copy(original);
  EXPECT_EQ(copy.type, "library_nodes");
  EXPECT_EQ(copy.id, "lib");
}

TEST_F(ElementModel, ClassRecordsCarryTheClassNameAndTheParentRecord) {
  EXPECT_STREQ(oxDAEBaseElement::kRTTI.GetName(), "oxDAEBaseElement");
  EXPECT_EQ(oxDAEBaseElement::kRTTI.GetParent(), &OxKernel::oxRTTIObject::kRTTI);
  EXPECT_STREQ(oxDAEElement::kRTTI.GetName(), "oxDAEElement");
  EXPECT_EQ(oxDAEElement::kRTTI.GetParent(), &oxDAEBaseElement::kRTTI);
  EXPECT_EQ(oxDAETypedElement::kRTTI.GetParent(), &oxDAEElement::kRTTI);
  EXPECT_EQ(oxDAELibrary::kRTTI.GetParent(), &oxDAETypedElement::kRTTI);
  EXPECT_EQ(oxDAESceneElement::kRTTI.GetParent(), &oxDAEElement::kRTTI);
  EXPECT_EQ(oxDAEColladaElement::kRTTI.GetParent(), &oxDAEBaseElement::kRTTI);
  EXPECT_EQ(oxDAEAssetElement::kRTTI.GetParent(), &oxDAEBaseElement::kRTTI);
  EXPECT_EQ(oxDAEInstance::kRTTI.GetParent(), &oxDAEBaseElement::kRTTI);
  EXPECT_EQ(oxDAEPhysicsScene::kRTTI.GetParent(), &oxDAEElement::kRTTI);
  EXPECT_EQ(oxDAEForceField::kRTTI.GetParent(), &oxDAEElement::kRTTI);
  EXPECT_EQ(oxDAENode::kRTTI.GetParent(), &oxDAEHierarchyElement::kRTTI);
  EXPECT_EQ(oxDAEHierarchyElement::kRTTI.GetParent(), &oxDAEElement::kRTTI);
}

TEST_F(ElementModel, GetRTTIAnswersTheRecordOfTheMostDerivedClass) {
  oxDAELibrary library;
  const oxDAEBaseElement& base = library;
  EXPECT_EQ(&base.GetRTTI(), &oxDAELibrary::kRTTI);
}

TEST_F(ElementModel, DynamicCastAcceptsTheClassAndItsDescendantsOnly) {
  oxDAELibrary library;
  oxDAEColladaElement root;
  EXPECT_EQ(oxDAEElement::DynamicCast(&library), &library);
  EXPECT_EQ(oxDAETypedElement::DynamicCast(&library), &library);
  EXPECT_EQ(oxDAEBaseElement::DynamicCast(&root), &root);
  EXPECT_EQ(oxDAEElement::DynamicCast(&root), nullptr);
  EXPECT_EQ(oxDAESceneElement::DynamicCast(&library), nullptr);
  EXPECT_EQ(oxDAEElement::DynamicCast(static_cast<OxKernel::oxRTTIObject*>(nullptr)), nullptr);
}

TEST_F(ElementModel, WeakDynamicCastComparesClassNames) {
  oxDAEPhysicsScene scene;
  oxDAEAssetElement asset;
  EXPECT_EQ(oxDAEElement::WeakDynamicCast(&scene), &scene);
  EXPECT_EQ(oxDAEPhysicsScene::WeakDynamicCast(&scene), &scene);
  EXPECT_EQ(oxDAEElement::WeakDynamicCast(&asset), nullptr);
  EXPECT_EQ(oxDAEElement::WeakDynamicCast(static_cast<OxKernel::oxRTTIObject*>(nullptr)), nullptr);
}

TEST_F(ElementModel, TokenValuesFollowTheWordTable) {
  EXPECT_EQ(static_cast<int>(EToken::NONE), 0);
  EXPECT_EQ(static_cast<int>(EToken::COLOR), 1);
  EXPECT_EQ(static_cast<int>(EToken::ANIMATION), 11);
  EXPECT_EQ(static_cast<int>(EToken::GEOMETRY), 15);
  EXPECT_EQ(static_cast<int>(EToken::NODE), 20);
  EXPECT_EQ(static_cast<int>(EToken::SPOT), 35);
  EXPECT_EQ(static_cast<int>(EToken::VISUALSCENE), 43);
  EXPECT_EQ(static_cast<int>(EToken::TEXTANGENT), 45);
  EXPECT_EQ(oxDAEBaseElement::kTokenCount, 46);
}

TEST_F(ElementModel, InstanceKeepsTheKindItIsBuiltWith) {
  const oxDAEInstance animation(static_cast<EToken>(11));
  EXPECT_EQ(animation.kind, EToken::ANIMATION);
  EXPECT_EQ(animation.target, nullptr);
  EXPECT_FALSE(animation.resolved);
  EXPECT_EQ(animation.url, "");
  EXPECT_EQ(oxDAEInstance().kind, EToken::NONE);
}

// --- Parenting paths and registry paths ---------------------------------------------

TEST_F(ElementModel, ParentingPathWithoutAnyIdIsEmpty) {
  oxDAEElement* top = Make(document, nullptr, "");
  oxDAEElement* middle = Make(document, top, "", "m");
  oxDAEElement* leaf = Make(document, middle, "", "l");
  EXPECT_EQ(leaf->GetParentingPath(), "");
  EXPECT_EQ(oxDAEColladaElement().GetParentingPath(), "");
}

TEST_F(ElementModel, ParentingPathIsTheOwnIdFirst) {
  oxDAEElement* top = Make(document, nullptr, "top");
  oxDAEElement* leaf = Make(document, top, "leaf");
  EXPECT_EQ(leaf->GetParentingPath(), "leaf");
}

TEST_F(ElementModel, ParentingPathClimbsOverElementsWithoutIdAndNonElements) {
  oxDAEElement* top = Make(document, nullptr, "top");
  auto* technique = new oxDAETechnique();
  document.RegisterElement(technique, top);
  oxDAEElement* middle = Make(document, technique, "", "m");
  oxDAEElement* leaf = Make(document, middle, "");
  EXPECT_EQ(leaf->GetParentingPath(), "top");
  EXPECT_EQ(technique->GetParentingPath(), "top");
}

TEST_F(ElementModel, PathOfElementWithIdAndSidIsTheId) {
  oxDAEElement* top = Make(document, nullptr, "top");
  oxDAEElement* e = Make(document, top, "both", "s");
  EXPECT_EQ(e->GetPath(), "both");
  EXPECT_EQ(document.ResolvePath("both"), e);
  EXPECT_EQ(document.ResolvePath("top/s"), nullptr);
}

TEST_F(ElementModel, SidPathIsAnchoredAtTheNearestAncestorWithAnId) {
  oxDAEElement* top = Make(document, nullptr, "top");
  oxDAEElement* a = Make(document, top, "", "a");
  oxDAEElement* b = Make(document, a, "", "b");
  oxDAEElement* c = Make(document, b, "", "c");
  EXPECT_EQ(a->GetPath(), "top/a");
  EXPECT_EQ(c->GetPath(), "top/c");
  EXPECT_EQ(document.ResolvePath("top/c"), c);
  EXPECT_EQ(document.ResolvePath("top/a/b/c"), nullptr);
}

TEST_F(ElementModel, SidUnderAnElementChainWithoutIdsStartsWithTheSlash) {
  oxDAEElement* top = Make(document, nullptr, "");
  oxDAEElement* e = Make(document, top, "", "s");
  EXPECT_EQ(e->GetPath(), "/s");
  EXPECT_EQ(document.ResolvePath("/s"), e);
}

TEST_F(ElementModel, SidUnderANonElementParentHasNoPathAndIsNotRegistered) {
  oxDAEElement* top = Make(document, nullptr, "top");
  auto* technique = new oxDAETechnique();
  document.RegisterElement(technique, top);
  oxDAEElement* e = Make(document, technique, "", "s");
  EXPECT_EQ(e->GetPath(), "");
  EXPECT_EQ(document.ResolvePath("s"), nullptr);
  EXPECT_EQ(document.ResolvePath("top/s"), nullptr);
  EXPECT_EQ(document.ResolvePath("/s"), nullptr);
}

TEST_F(ElementModel, SidWithoutAnyParentHasNoPath) {
  oxDAEElement e;
  e.sid = "s";
  EXPECT_EQ(e.GetPath(), "");
}

TEST_F(ElementModel, ElementWithoutIdOrSidHasNoPath) {
  oxDAEElement* top = Make(document, nullptr, "top");
  oxDAEElement* e = Make(document, top, "");
  EXPECT_EQ(e->GetPath(), "");
}

TEST_F(ElementModel, ComputeURLIsHashAndId) {
  oxDAEElement e;
  e.id = "mesh1";
  EXPECT_EQ(e.ComputeURL(document), "#mesh1");
  EXPECT_EQ(oxDAEElement().ComputeURL(document), "#");
}

TEST_XML(ElementModel, ReadTakesNameIdAndSidAndRegistersIdAndPath,
         Collada(R"(<library_visual_scenes id="lib" name="Scenes"><visual_scene name="N" sid="s"/>
               </library_visual_scenes>)")) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(log.entries, std::vector<oxtest::LogEntry>{});
  auto* library = Find<oxDAELibrary>("#lib");
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(library->name, "Scenes");
  EXPECT_EQ(library->sid, "");
  ASSERT_EQ(library->children.size(), 1u);
  oxDAEElement* scene = library->children[0];
  EXPECT_EQ(scene->name, "N");
  EXPECT_EQ(scene->id, "");
  EXPECT_EQ(scene->sid, "s");
  EXPECT_EQ(scene->parent, library);
  EXPECT_EQ(document.ResolvePath("lib/s"), scene);
}

// --- Extras ---------------------------------------------------------------------------

class ElementModelExtras : public ::testing::Test {
 protected:
  void SetUp() override {
    first.type = "t";
    first.name = "n1";
    first.id = "x1";
    second.type = "t";
    second.name = "n2";
    second.id = "x2";
    owner.extras.push_back(&first);
    owner.extras.push_back(&second);
  }
  oxDAEExtraElement first, second;
  oxDAEElement owner;
};

TEST_F(ElementModelExtras, LookupsAnswerTheFirstMatchInDocumentOrder) {
  EXPECT_EQ(owner.GetExtraByType("t"), &first);
  EXPECT_EQ(owner.GetExtraByName("n2"), &second);
  EXPECT_EQ(owner.GetExtraByID("x2"), &second);
  EXPECT_EQ(owner.GetExtraByIndex(0), &first);
  EXPECT_EQ(owner.GetExtraByIndex(1), &second);
}

TEST_F(ElementModelExtras, LookupsAnswerNullWhenNothingMatches) {
  EXPECT_EQ(owner.GetExtraByType("T"), nullptr);
  EXPECT_EQ(owner.GetExtraByName("x1"), nullptr);
  EXPECT_EQ(owner.GetExtraByID("n1"), nullptr);
}

TEST_F(ElementModelExtras, IndexAtTheCountIsNull) {
  EXPECT_EQ(owner.GetExtraByIndex(2), nullptr);
  EXPECT_EQ(owner.GetExtraByIndex(0xFFFFFFFFu), nullptr);
  EXPECT_EQ(oxDAEElement().GetExtraByIndex(0), nullptr);
}

// --- Reader diagnostics -------------------------------------------------------------

TEST_F(ElementModel, UnsupportedTagWarningNamesTagAndParent) {
  oxDAEBaseElement::UnsupportedTagWarning("spline", "geometry");
  EXPECT_EQ(log.entries, std::vector{Warning("unsupported element <spline> in <geometry>")});
}

TEST_F(ElementModel, UnsupportedExtraWarningNamesTheParent) {
  oxDAEBaseElement::UnsupportedExtraWarning("COLLADA");
  EXPECT_EQ(log.entries, std::vector{Warning("unsupported <extra> in <COLLADA>")});
}

TEST_F(ElementModel, UnknownTagErrorIsLoggedAsAnError) {
  oxDAEBaseElement::UnknownTagError("blob", "mesh");
  EXPECT_EQ(log.entries, std::vector{Error("unknown element <blob> in <mesh>")});
}

TEST_F(ElementModel, UnknownTagWarningIsLoggedAsAWarning) {
  oxDAEBaseElement::UnknownTagWarning("blob", "mesh");
  EXPECT_EQ(log.entries, std::vector{Warning("unknown element <blob> in <mesh>")});
}

// --- Version triple -------------------------------------------------------------------

TEST_F(ElementModel, VersionDefaultsToZero) {
  const oxDAEVersion v;
  EXPECT_EQ(v, oxDAEVersion(0, 0, 0));
  EXPECT_EQ(v.ToString(), "0.0.0");
}

TEST_F(ElementModel, VersionReadsThreeNumbersSilently) {
  const oxDAEVersion v(oxString("1.4.1"));
  EXPECT_EQ(v.majorNumber, 1u);
  EXPECT_EQ(v.minorNumber, 4u);
  EXPECT_EQ(v.revision, 1u);
  EXPECT_EQ(v.ToString(), "1.4.1");
  EXPECT_EQ(log.Count(), 0u);
}

TEST_F(ElementModel, VersionWithTwoNumbersLogsOnceAndKeepsRevisionZero) {
  const oxDAEVersion v(oxString("1.4"));
  EXPECT_EQ(v, oxDAEVersion(1, 4, 0));
  EXPECT_EQ(log.entries, std::vector{Error("invalid version number")});
}

TEST_F(ElementModel, VersionWithFourNumbersKeepsThreeAndLogsOnce) {
  const oxDAEVersion v(oxString("1.4.1.2"));
  EXPECT_EQ(v, oxDAEVersion(1, 4, 1));
  EXPECT_EQ(log.entries, std::vector{Error("invalid version number")});
}

TEST_F(ElementModel, VersionLogsForANonNumberAndForTheShortCount) {
  const oxDAEVersion v(oxString("1.x.1"));
  EXPECT_EQ(v, oxDAEVersion(1, 1, 0));
  EXPECT_EQ(log.entries,
            (std::vector{Error("invalid version number"), Error("invalid version number")}));
}

TEST_F(ElementModel, NegativeAndOversizedVersionPartsAreInvalid) {
  const oxDAEVersion v(oxString("1.-4.99999999999"));
  EXPECT_EQ(v, oxDAEVersion(1, 0, 0));
  EXPECT_EQ(log.entries,
            (std::vector{Error("invalid version number"), Error("invalid version number"),
                         Error("invalid version number")}));
}

TEST_F(ElementModel, EmptyVersionTextLogsOnceAndStaysZero) {
  const oxDAEVersion v{oxString()};
  EXPECT_EQ(v, oxDAEVersion(0, 0, 0));
  EXPECT_EQ(log.entries, std::vector{Error("invalid version number")});
}

TEST_F(ElementModel, VersionPartsNotReadKeepTheirPreviousValues) {
  oxDAEVersion v(9, 8, 7);
  v._FromString("2");
  EXPECT_EQ(v, oxDAEVersion(2, 8, 7));
  EXPECT_EQ(log.entries, std::vector{Error("invalid version number")});
}

TEST_F(ElementModel, VersionSetAssignsAllThreeNumbers) {
  oxDAEVersion v;
  v.Set(1, 5, 0);
  EXPECT_EQ(v.ToString(), "1.5.0");
}

TEST_F(ElementModel, VersionsCompareMajorThenMinorThenRevision) {
  const oxDAEVersion v141(1, 4, 1);
  EXPECT_TRUE(v141 == oxDAEVersion(1, 4, 1));
  EXPECT_TRUE(v141 != oxDAEVersion(1, 4, 0));
  EXPECT_TRUE(oxDAEVersion(1, 4, 0) < v141);
  EXPECT_TRUE(oxDAEVersion(1, 3, 9) < oxDAEVersion(1, 4, 0));
  EXPECT_TRUE(oxDAEVersion(0, 9, 9) < oxDAEVersion(1, 0, 0));
  EXPECT_TRUE(oxDAEVersion(2, 0, 0) > oxDAEVersion(1, 9, 9));
  EXPECT_TRUE(v141 <= oxDAEVersion(1, 4, 1));
  EXPECT_TRUE(v141 >= oxDAEVersion(1, 4, 1));
  EXPECT_FALSE(v141 < oxDAEVersion(1, 4, 1));
  EXPECT_FALSE(v141 > oxDAEVersion(1, 5, 0));
}

TEST_F(ElementModel, IsIncludedAcceptsBothBounds) {
  const oxDAEVersion low(1, 4, 0);
  const oxDAEVersion high(1, 4, 1);
  EXPECT_TRUE(oxDAEVersion(1, 4, 0).IsIncluded(low, high));
  EXPECT_TRUE(oxDAEVersion(1, 4, 1).IsIncluded(low, high));
  EXPECT_FALSE(oxDAEVersion(1, 3, 1).IsIncluded(low, high));
  EXPECT_FALSE(oxDAEVersion(1, 4, 2).IsIncluded(low, high));
  EXPECT_FALSE(oxDAEVersion(1, 5, 0).IsIncluded(low, high));
  EXPECT_FALSE(oxDAEVersion(0, 0, 0).IsIncluded(low, high));
  EXPECT_FALSE(oxDAEVersion(1, 4, 0).IsIncluded(high, low));
}
