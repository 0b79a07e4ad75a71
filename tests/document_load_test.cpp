// Loading a document: the root and version gate, the registries and their
// resolution rules, Clear and reload, and the shared reading helpers.
#include "oxTestSupport.h"

#include <cstdint>

#include <oxKernel/oxProfiling.h>

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::Warning;

OX_DOCUMENT_SUITE(DocumentLoad);

namespace {

using oxtest::kNoLog;

// The address an element had, for comparisons that must not touch it.
uintptr_t Address(const oxDAEBaseElement* e) {
  return reinterpret_cast<uintptr_t>(e);
}

// Puts the document's reader on the root element of `xml`.
void ReadFrom(oxDAEFile& file, std::string_view xml) {
  ASSERT_EQ(OxKernel::oxXMLFactory::Instance(0).CreateReader(file.reader, xml, 0), 0);
  ASSERT_EQ(file.reader->MoveNext(), 0);
}

// Rebuilds the token table when the test that removed it ends.
struct TokenTableRestorer {
  ~TokenTableRestorer() { oxDAEFile::_PrepareHashTable(); }
};

}  // namespace

// --- Root tag and version ---------------------------------------------------------

TEST_XML(DocumentLoad, RootTagDAELoadsLikeCOLLADA,
         R"(<DAE version="1.4.1"><library_geometries id="lib"/></DAE>)") {
  EXPECT_EQ(rc, 0);
  ASSERT_NE(document.GetRoot(), nullptr);
  ASSERT_EQ(document.GetRoot()->libraries.size(), 1u);
  EXPECT_EQ(document.GetRoot()->libraries[0]->type, "library_geometries");
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(DocumentLoad, LowerCaseRootTagIsNotCollada, R"(<collada version="1.4.1"/>)") {
  EXPECT_EQ(rc, kDAENotCollada);
  EXPECT_EQ(rc, -23);
  EXPECT_EQ(document.GetRoot(), nullptr);
  EXPECT_EQ(log.entries, (std::vector{Error("the root element is <collada>, not <COLLADA>")}));
}

TEST_XML(DocumentLoad, ForeignRootTagIsNotColladaAndCreatesNothing,
         R"(<scene version="1.4.1"><library_nodes/></scene>)") {
  EXPECT_EQ(rc, -23);
  EXPECT_EQ(document.GetElements().size(), 0u);
  EXPECT_EQ(log.entries, (std::vector{Error("the root element is <scene>, not <COLLADA>")}));
}

TEST_XML(DocumentLoad, Version141IsRead,
         R"(<COLLADA version="1.4.1"><library_nodes id="n"/></COLLADA>)") {
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(document.GetRoot()->version, oxDAEVersion(1, 4, 1));
  EXPECT_EQ(document.GetRoot()->libraries.size(), 1u);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(DocumentLoad, Version140IsRead,
         R"(<COLLADA version="1.4.0"><library_nodes id="n"/></COLLADA>)") {
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(document.GetRoot()->version, oxDAEVersion(1, 4, 0));
  EXPECT_EQ(document.GetRoot()->libraries.size(), 1u);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(DocumentLoad, Version131LoadsAsAnEmptyRoot,
         R"(<COLLADA version="1.3.1"><asset/><library_nodes id="n"/><scene/></COLLADA>)") {
  EXPECT_EQ(rc, 0);
  const oxDAEColladaElement* root = document.GetRoot();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->version, oxDAEVersion(1, 3, 1));
  EXPECT_EQ(root->asset, nullptr);
  EXPECT_EQ(root->libraries.size(), 0u);
  EXPECT_EQ(root->scene, nullptr);
  EXPECT_EQ(document.GetElements().size(), 1u);
  EXPECT_EQ(document.ResolveURI("#n"), nullptr);
  EXPECT_EQ(log.entries, (std::vector{Error("Unsupported version of DAE File")}));
}

TEST_XML(DocumentLoad, Version150LoadsAsAnEmptyRoot,
         R"(<COLLADA version="1.5.0"><library_nodes id="n"/></COLLADA>)") {
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(document.GetRoot()->version, oxDAEVersion(1, 5, 0));
  EXPECT_EQ(document.GetElements().size(), 1u);
  EXPECT_EQ(log.entries, (std::vector{Error("Unsupported version of DAE File")}));
}

TEST_XML(DocumentLoad, Version142IsAboveTheRange,
         R"(<COLLADA version="1.4.2"><library_nodes id="n"/></COLLADA>)") {
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(document.GetElements().size(), 1u);
  EXPECT_EQ(log.entries, (std::vector{Error("Unsupported version of DAE File")}));
}

TEST_XML(DocumentLoad, MissingVersionIsReadAsEmptyTextAndRefused,
         R"(<COLLADA><library_nodes id="n"/></COLLADA>)") {
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(document.GetRoot()->version, oxDAEVersion(0, 0, 0));
  EXPECT_EQ(document.GetElements().size(), 1u);
  EXPECT_EQ(log.entries, (std::vector{Error("invalid version number"),
                                      Error("Unsupported version of DAE File")}));
}

TEST_XML(
    DocumentLoad, UnknownRootChildIsWarnedAndSkipped,
    R"(<COLLADA version="1.4.1"><foo><library_nodes id="inner"/></foo><library_nodes id="n"/></COLLADA>)") {
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(document.GetRoot()->libraries.size(), 1u);
  EXPECT_EQ(document.GetRoot()->libraries[0]->id, "n");
  EXPECT_EQ(document.ResolveURI("#inner"), nullptr);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <foo> in <COLLADA>")}));
}

TEST_XML(DocumentLoad, ExtraUnderTheRootIsUnsupported,
         R"(<COLLADA version="1.4.1"><extra><technique profile="X"/></extra></COLLADA>)") {
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(document.GetElements().size(), 1u);
  EXPECT_EQ(log.entries, (std::vector{Warning("unsupported <extra> in <COLLADA>")}));
}

TEST_XML(DocumentLoad, WarningsUnderADAERootNameCOLLADA, R"(<DAE version="1.4.1"><foo/></DAE>)") {
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <foo> in <COLLADA>")}));
}

TEST_F(DocumentLoad, LoadRemembersTheURIAlsoWhenItFails) {
  const OxKernel::oxURI missing("/nonexistent-folder/scene.dae");
  EXPECT_EQ(document.Load(missing), OxKernel::kXMLCannotOpen);
  EXPECT_EQ(document.GetFileURI(), missing);
}

TEST_F(DocumentLoad, LoadWithoutTheModuleTablesReturnsModuleNotStarted) {
  const TokenTableRestorer restorer;
  oxDAEFile::_DestroyHashTable();
  oxtest::TempFile file(Collada(""));
  EXPECT_EQ(document.Load(file.URI()), kDAEModuleNotStarted);
  EXPECT_EQ(document.GetRoot(), nullptr);
  EXPECT_EQ(document.GetFileURI(), file.URI());
  EXPECT_EQ(
      log.entries,
      (std::vector{Error("the oxDAEReadWrite module is not started: no document can be read")}));
}

TEST_F(DocumentLoad, LoadTimeIsRecordedUnderDAEParsing) {
  oxtest::TempFile file(Collada(""));
  ASSERT_EQ(document.Load(file.URI()), 0);
  EXPECT_GE(OxKernel::oxProfilingManager::GetElapsedSeconds("DAE Parsing"), 0.0);
}

// --- Id registry and URI resolution ---------------------------------------------------

TEST_XML(DocumentLoad, DuplicateIdResolvesToTheElementRegisteredLast,
         R"(<COLLADA version="1.4.1"><library_nodes id="x"/><library_lights id="x"/></COLLADA>)") {
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(document.GetRoot()->libraries.size(), 2u);
  EXPECT_EQ(document.ResolveURI("#x"), document.GetRoot()->libraries[1]);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(DocumentLoad, BareIdResolvesWithoutAContext,
         R"(<COLLADA version="1.4.1"><library_nodes id="x"/></COLLADA>)") {
  oxDAELibrary* library = document.GetRoot()->libraries[0];
  EXPECT_EQ(document.ResolveURI("#x"), library);
  EXPECT_EQ(document.ResolveURI("x"), library);
}

TEST_XML(DocumentLoad, DoubleHashFindsNothing,
         R"(<COLLADA version="1.4.1"><library_nodes id="x"/></COLLADA>)") {
  EXPECT_EQ(document.ResolveURI("##x"), nullptr);
  EXPECT_EQ(document.ResolveURI("#X"), nullptr);
  EXPECT_EQ(document.ResolveURI(""), nullptr);
}

TEST_XML(DocumentLoad, ReferenceIntoAnotherFileIsNeverResolved,
         R"(<COLLADA version="1.4.1"><library_nodes id="x"/></COLLADA>)") {
  EXPECT_EQ(document.ResolveURI("other.dae#x"), nullptr);
  EXPECT_EQ(document.ResolveURI("file:///tmp/other.dae#x"), nullptr);
}

TEST_XML(
    DocumentLoad, WithAContextABareIdIsRetriedOnlyAsAPath,
    R"(<COLLADA version="1.4.1"><library_nodes id="x"/><library_lights id="ctx"/></COLLADA>)") {
  oxDAELibrary* context = document.GetRoot()->libraries[1];
  EXPECT_EQ(document.ResolveURI("x", context), nullptr);
  EXPECT_EQ(document.ResolveURI("#x", context), document.GetRoot()->libraries[0]);
}

TEST_XML(
    DocumentLoad, WithAContextAMissedURIIsResolvedAsARelativeSid,
    R"(<COLLADA version="1.4.1"><library_nodes id="lib"><node sid="joint1"/></library_nodes></COLLADA>)") {
  oxDAELibrary* library = document.GetRoot()->libraries[0];
  ASSERT_EQ(library->children.size(), 1u);
  EXPECT_EQ(document.ResolveURI("joint1", library), library->children[0]);
  EXPECT_EQ(document.ResolveURI("joint1"), nullptr);
}

// --- Path registry -------------------------------------------------------------------

TEST_F(DocumentLoad, RelativePathIsAnchoredAtTheContextsNearestId) {
  auto* root = new oxDAENode();
  root->id = "root";
  document.RegisterElement(root, nullptr);
  auto* joint = new oxDAENode();
  joint->sid = "joint1";
  document.RegisterElement(joint, root);
  auto* inner = new oxDAENode();
  document.RegisterElement(inner, root);

  EXPECT_EQ(document.ResolvePath("root/joint1"), joint);
  EXPECT_EQ(document.ResolvePath("joint1", root), joint);
  EXPECT_EQ(document.ResolvePath("joint1", inner), joint);
  EXPECT_EQ(document.ResolvePath("joint1"), nullptr);
}

TEST_F(DocumentLoad, RelativePathIsRetriedOnlyOnce) {
  auto* a = new oxDAENode();
  a->id = "a";
  document.RegisterElement(a, nullptr);
  auto* b = new oxDAENode();
  b->id = "b";
  document.RegisterElement(b, a);
  auto* joint = new oxDAENode();
  joint->sid = "joint1";
  document.RegisterElement(joint, b);

  EXPECT_EQ(document.ResolvePath("joint1", b), joint);
  EXPECT_EQ(document.ResolvePath("joint1", a), nullptr);
  EXPECT_EQ(document.ResolvePath("b/joint1", a), joint);
}

// --- Element list ----------------------------------------------------------------------

TEST_F(DocumentLoad, AddElementHandsTheElementToTheDocument) {
  auto* e = new oxDAEElement();
  EXPECT_EQ(document._AddElement(e), e);
  ASSERT_EQ(document.GetElements().size(), 1u);
  EXPECT_EQ(document.GetElements()[0].get(), e);
}

TEST_F(DocumentLoad, RegisterElementIgnoresNull) {
  document.RegisterElement(nullptr, nullptr);
  EXPECT_EQ(document.GetElements().size(), 0u);
}

TEST_F(DocumentLoad, RegisterElementSetsTheParentAndRegistersIdAndPath) {
  auto* parent = new oxDAEElement();
  parent->id = "p";
  document.RegisterElement(parent, nullptr);
  auto* child = new oxDAEElement();
  child->id = "c";
  child->sid = "s";
  document.RegisterElement(child, parent);

  EXPECT_EQ(document.GetElements().size(), 2u);
  EXPECT_EQ(child->parent, parent);
  EXPECT_EQ(document.ResolveURI("#p"), parent);
  EXPECT_EQ(document.ResolveURI("#c"), child);
  EXPECT_EQ(document.ResolvePath("c"), child);
}

TEST_F(DocumentLoad, RegisterElementWithoutSidLeavesThePathRegistryAlone) {
  auto* e = new oxDAEElement();
  e->id = "only";
  document.RegisterElement(e, nullptr);
  EXPECT_EQ(document.ResolveURI("#only"), e);
  EXPECT_EQ(document.ResolvePath("only"), nullptr);
}

TEST_F(DocumentLoad, RegisterElementWithoutAParentKeepsTheParentItHas) {
  oxDAEColladaElement holder;
  auto* e = new oxDAEElement();
  e->parent = &holder;
  document.RegisterElement(e, nullptr);
  EXPECT_EQ(e->parent, &holder);
}

TEST_F(DocumentLoad, AddElementToUpdateQueuesInOrder) {
  auto* first = new oxDAEInstance(EToken::NODE);
  auto* second = new oxDAEInstance(EToken::LIGHT);
  document.RegisterElement(first, nullptr);
  document.RegisterElement(second, nullptr);
  document.AddElementToUpdate(first);
  document.AddElementToUpdate(second);
  ASSERT_EQ(document.GetElementsToUpdate().size(), 2u);
  EXPECT_EQ(document.GetElementsToUpdate()[0], first);
  EXPECT_EQ(document.GetElementsToUpdate()[1], second);
}

TEST_F(DocumentLoad, FirstAnimationTargetRegisteredUnderAPathKeepsIt) {
  oxDAEElement node;
  node.id = "node";
  oxDAEChannelTargetFloat first, second;
  for (oxDAEChannelTargetFloat* target : {&first, &second}) {
    target->SetContainerParent(&node);
    target->SetQualifier("translate");
  }
  document.RegisterAnimationTarget(&first);
  document.RegisterAnimationTarget(&second);
  EXPECT_EQ(document.ResolveAnimationTargetPath("node/translate"), &first);
  document.UnregisterAnimationTarget(&first);
  EXPECT_EQ(document.ResolveAnimationTargetPath("node/translate"), nullptr);
}

// --- Clear and reload --------------------------------------------------------------------

TEST_XML(DocumentLoad, ClearDeletesElementsEmptiesIdsAndDropsTheRoot,
         R"(<COLLADA version="1.4.1"><library_nodes id="lib"/></COLLADA>)") {
  ASSERT_NE(document.ResolveURI("#lib"), nullptr);
  document.Clear();
  EXPECT_EQ(document.GetRoot(), nullptr);
  EXPECT_EQ(document.GetElements().size(), 0u);
  EXPECT_EQ(document.ResolveURI("#lib"), nullptr);
}

TEST_XML(
    DocumentLoad, ClearKeepsPathsOfTheDeletedElements,
    R"(<COLLADA version="1.4.1"><library_nodes id="lib"><node sid="s"/></library_nodes></COLLADA>)") {
  const uintptr_t node = Address(document.ResolvePath("lib/s"));
  ASSERT_NE(node, 0u);
  document.Clear();
  // The entry still holds the deleted element's address: callers must not
  // resolve paths across a reload.
  EXPECT_EQ(Address(document.ResolvePath("lib/s")), node);
}

TEST_XML(
    DocumentLoad, ClearKeepsTheUpdateListAndTheAnimationTargets,
    R"(<COLLADA version="1.4.1"><scene><instance_visual_scene url="#vs"/></scene></COLLADA>)") {
  oxDAEElement lib;
  lib.id = "lib";
  oxDAEChannelTargetFloat target;
  target.SetContainerParent(&lib);
  target.SetQualifier("s");
  document.RegisterAnimationTarget(&target);
  ASSERT_EQ(document.GetElementsToUpdate().size(), 1u);
  document.Clear();
  EXPECT_EQ(document.GetElementsToUpdate().size(), 1u);
  EXPECT_EQ(document.ResolveAnimationTargetPath("lib/s"), &target);
}

TEST_XML(
    DocumentLoad, ReloadStartsWithEmptyPathsUpdatesAndTargets,
    R"(<COLLADA version="1.4.1"><library_nodes id="lib"><node sid="s"/></library_nodes><scene><instance_visual_scene url="#vs"/></scene></COLLADA>)") {
  oxDAEElement lib;
  lib.id = "lib";
  oxDAEChannelTargetFloat target;
  target.SetContainerParent(&lib);
  target.SetQualifier("s");
  document.RegisterAnimationTarget(&target);
  ASSERT_EQ(document.ResolveAnimationTargetPath("lib/s"), &target);
  ASSERT_EQ(LoadText(Collada(R"(<library_lights id="other"/>)")), 0);
  EXPECT_EQ(document.ResolvePath("lib/s"), nullptr);
  EXPECT_EQ(document.ResolveURI("#lib"), nullptr);
  EXPECT_EQ(document.GetElementsToUpdate().size(), 0u);
  EXPECT_EQ(document.ResolveAnimationTargetPath("lib/s"), nullptr);
  EXPECT_NE(document.ResolveURI("#other"), nullptr);
}

// --- Tokens --------------------------------------------------------------------------------

TEST_F(DocumentLoad, EveryTokenWordRoundTrips) {
  const char* const words[] = {"",
                               "COLOR",
                               "POSITION",
                               "NORMAL",
                               "BINORMAL",
                               "TANGENT",
                               "TEXCOORD",
                               "TEXTURE",
                               "UV",
                               "VERTEX",
                               "IMAGE",
                               "ANIMATION",
                               "CAMERA",
                               "CODE",
                               "CONTROLLER",
                               "GEOMETRY",
                               "LIGHT",
                               "MATERIAL",
                               "PROGRAM",
                               "JOINT",
                               "NODE",
                               "FRAGMENT_PROGRAM",
                               "VERTEX_PROGRAM",
                               "CONSTANT",
                               "LINEAR",
                               "QUADRATIC",
                               "LAMBERT",
                               "ORTHOGRAPHIC",
                               "PERSPECTIVE",
                               "PHONG",
                               "AMBIENT",
                               "ANGLE",
                               "BOTTOM",
                               "DIRECTIONAL",
                               "POINT",
                               "SPOT",
                               "BIND_SHAPE_NORMAL",
                               "BIND_SHAPE_POSITION",
                               "INPUT",
                               "OUTPUT",
                               "INV_BIND_MATRIX",
                               "WEIGHT",
                               "UNIT",
                               "VISUALSCENE",
                               "TEXBINORMAL",
                               "TEXTANGENT"};
  static_assert(std::size(words) == oxDAEBaseElement::kTokenCount);
  for (int i = 0; i < oxDAEBaseElement::kTokenCount; ++i) {
    SCOPED_TRACE(words[i]);
    EXPECT_EQ(oxDAEFile::s_Tokens[i], words[i]);
    EXPECT_EQ(oxDAEFile::_GetTokenString(static_cast<EToken>(i)), words[i]);
    EXPECT_EQ(static_cast<int>(oxDAEFile::_GetToken(words[i])), i);
  }
}

TEST_F(DocumentLoad, EmptyAndUnknownTokenWordsAreNone) {
  EXPECT_EQ(oxDAEFile::_GetToken(""), EToken::NONE);
  EXPECT_EQ(oxDAEFile::_GetToken("SPLINE"), EToken::NONE);
  EXPECT_EQ(oxDAEFile::_GetToken("color"), EToken::NONE);
  EXPECT_EQ(oxDAEFile::_GetToken(" COLOR"), EToken::NONE);
}

TEST_F(DocumentLoad, TokenOutsideTheEnumerationHasTheEmptyWord) {
  EXPECT_EQ(oxDAEFile::_GetTokenString(static_cast<EToken>(46)), "");
  EXPECT_EQ(oxDAEFile::_GetTokenString(static_cast<EToken>(-1)), "");
  EXPECT_EQ(oxDAEFile::_GetTokenString(static_cast<EToken>(1000000)), "");
}

TEST_F(DocumentLoad, PreparingTheTokenTableTwiceKeepsIt) {
  oxDAEFile::_PrepareHashTable();
  EXPECT_TRUE(oxDAEFile::_HasHashTable());
  EXPECT_EQ(oxDAEFile::_GetToken("VISUALSCENE"), EToken::VISUALSCENE);
}

TEST_F(DocumentLoad, WithoutTheTokenTableEveryWordIsNone) {
  const TokenTableRestorer restorer;
  oxDAEFile::_DestroyHashTable();
  EXPECT_FALSE(oxDAEFile::_HasHashTable());
  EXPECT_EQ(oxDAEFile::_GetToken("COLOR"), EToken::NONE);
  EXPECT_EQ(oxDAEFile::_GetTokenString(EToken::COLOR), "COLOR");
}

// --- Reading helpers -------------------------------------------------------------------------

TEST_F(DocumentLoad, ParamAndParameterAreParameterNodes) {
  ReadFrom(document, "<param/>");
  EXPECT_TRUE(document._IsXMLNodeAParameter());
  ReadFrom(document, "<parameter/>");
  EXPECT_TRUE(document._IsXMLNodeAParameter());
  ReadFrom(document, "<params/>");
  EXPECT_FALSE(document._IsXMLNodeAParameter());
  ReadFrom(document, "<Param/>");
  EXPECT_FALSE(document._IsXMLNodeAParameter());
}

TEST_F(DocumentLoad, ReadColor3ValueSetsRedGreenBlueAndKeepsAlpha) {
  ReadFrom(document, "<color>0.25 0.5 1 0.125</color>");
  OxMath::oxFColor color{9, 9, 9, 0.75f};
  EXPECT_EQ(oxDAEFile::ReadColor3Value(document.reader.Get(), color), 0);
  EXPECT_EQ(color, (OxMath::oxFColor{0.25f, 0.5f, 1.0f, 0.75f}));
}

TEST_F(DocumentLoad, ReadColor3ValueKeepsComponentsTheTextDoesNotGive) {
  ReadFrom(document, "<color>0.25</color>");
  OxMath::oxFColor color{9, 8, 7, 6};
  EXPECT_EQ(oxDAEFile::ReadColor3Value(document.reader.Get(), color), 0);
  EXPECT_EQ(color, (OxMath::oxFColor{0.25f, 8, 7, 6}));
}

TEST_F(DocumentLoad, ReadColor3ValueWithoutTextIsNoValueAndLeavesTheColor) {
  ReadFrom(document, "<color/>");
  OxMath::oxFColor color{9, 8, 7, 6};
  EXPECT_EQ(oxDAEFile::ReadColor3Value(document.reader.Get(), color), kDAENoValue);
  EXPECT_EQ(oxDAEFile::ReadColor3Value(document.reader.Get(), color), -4);
  EXPECT_EQ(color, (OxMath::oxFColor{9, 8, 7, 6}));
}

TEST_F(DocumentLoad, ReadMatrix44ValueTransposesTheWrittenMatrix) {
  ReadFrom(document, "<matrix>1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16</matrix>");
  OxMath::oxMatrix44 m;
  EXPECT_EQ(oxDAEFile::ReadMatrix44Value(document.reader.Get(), m), 0);
  const OxMath::oxMatrix44 expected{{1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16}};
  EXPECT_EQ(m, expected);
}

TEST_F(DocumentLoad, ReadMatrix44ValuePutsTheTranslationInTheFourthRow) {
  ReadFrom(document, "<matrix>1 0 0 10  0 1 0 20  0 0 1 30  0 0 0 1</matrix>");
  OxMath::oxMatrix44 m;
  ASSERT_EQ(oxDAEFile::ReadMatrix44Value(document.reader.Get(), m), 0);
  EXPECT_EQ(m.m[12], 10.0f);
  EXPECT_EQ(m.m[13], 20.0f);
  EXPECT_EQ(m.m[14], 30.0f);
  EXPECT_EQ(m.m[3], 0.0f);
}

TEST_F(DocumentLoad, ReadMatrix44ValueWithoutTextIsNoValueAndLeavesTheMatrix) {
  ReadFrom(document, "<matrix></matrix>");
  OxMath::oxMatrix44 m{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
  const OxMath::oxMatrix44 before = m;
  EXPECT_EQ(oxDAEFile::ReadMatrix44Value(document.reader.Get(), m), -4);
  EXPECT_EQ(m, before);
}

TEST_F(DocumentLoad, XMLSafeToCommonStringDecodesQuoteCarriageReturnLessAndGreater) {
  oxString text = "a&lt;b&gt;c&quot;d&#13;e";
  oxDAEFile::XMLSafeToCommonString(text);
  EXPECT_EQ(text, "a<b>c\"de");
}

TEST_F(DocumentLoad, XMLSafeToCommonStringNeverDecodesAmpersandOrApostrophe) {
  oxString text = "&amp;lt; &amp; &apos;";
  oxDAEFile::XMLSafeToCommonString(text);
  EXPECT_EQ(text, "&amp;lt; &amp; &apos;");
}

TEST_F(DocumentLoad, XMLSafeToCommonStringRemovesCarriageReturnsBeforeDecodingLess) {
  oxString text = "&l&#13;t;&g&#13;t;";
  oxDAEFile::XMLSafeToCommonString(text);
  EXPECT_EQ(text, "<>");
}

TEST_F(DocumentLoad, CommonToXMLSafeStringChangesNothing) {
  oxString text = "a<b & \"c\"";
  oxDAEFile::CommonToXMLSafeString(text);
  EXPECT_EQ(text, "a<b & \"c\"");
}

TEST_F(DocumentLoad, CorrectURITurnsTheBarDriveFormIntoAFileURI) {
  oxString text = "file://C|/x/y.png";
  EXPECT_EQ(oxDAEFile::CorrectURI(text), 0);
  EXPECT_EQ(text, "file:///C:/x/y.png");
}

TEST_F(DocumentLoad, CorrectURIAddsTheMissingSlashBeforeADrive) {
  oxString text = "file://D:/textures/wood.png";
  EXPECT_EQ(oxDAEFile::CorrectURI(text), 0);
  EXPECT_EQ(text, "file:///D:/textures/wood.png");
}

TEST_F(DocumentLoad, CorrectURITurnsAFileURIWithAHostIntoANetworkShare) {
  oxString text = "file://server/share/a.png";
  EXPECT_EQ(oxDAEFile::CorrectURI(text), 0);
  EXPECT_EQ(text, "smb://server/share/a.png");
}

TEST_F(DocumentLoad, CorrectURILeavesAProperURIUnchanged) {
  oxString web = "http://example.com/textures/a.png";
  EXPECT_EQ(oxDAEFile::CorrectURI(web), 0);
  EXPECT_EQ(web, "http://example.com/textures/a.png");
  oxString local = "file:///home/user/a.png";
  EXPECT_EQ(oxDAEFile::CorrectURI(local), 0);
  EXPECT_EQ(local, "file:///home/user/a.png");
}

TEST_F(DocumentLoad, CorrectURILeavesARelativePathUnchanged) {
  oxString text = "textures\\a.png";
  EXPECT_EQ(oxDAEFile::CorrectURI(text), 0);
  EXPECT_EQ(text, "textures\\a.png");
}

TEST_XML(DocumentLoad, UnresolvedElementsAreListedWithTheirCodeUntilCleared,
         Collada(R"(<library_visual_scenes><visual_scene id="vs"><node id="n">
                      <instance_geometry url="#nowhere"/></node></visual_scene>
                    </library_visual_scenes><scene><instance_visual_scene url="#vs"/></scene>)")) {
  ASSERT_EQ(rc, 0);
  const auto* node = Find<oxDAENode>("#n");
  ASSERT_NE(node, nullptr);
  ASSERT_EQ(node->instances.size(), 1u);
  ASSERT_EQ(document.GetUnresolved().size(), 1u);
  EXPECT_EQ(document.GetUnresolved()[0].element, node->instances[0]);
  EXPECT_EQ(document.GetUnresolved()[0].code, kDAEUnresolved);
  // The list points to the document's elements, so it goes with them.
  document.Clear();
  EXPECT_TRUE(document.GetUnresolved().empty());
  ASSERT_EQ(LoadText(Collada(R"(<library_visual_scenes><visual_scene id="vs"/>
                                </library_visual_scenes>)")),
            0);
  EXPECT_TRUE(document.GetUnresolved().empty());
}
