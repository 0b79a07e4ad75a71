// The top of the document: the root's children, the asset with its
// authoring-tool classification, the libraries and the scene.
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Warning;
using Tool = oxDAEAssetElement::EAuthoringTool;

OX_DOCUMENT_SUITE(RootAsset);

namespace {

using oxtest::kNoLog;

}  // namespace

// --- Root ---------------------------------------------------------------------------

TEST_XML(RootAsset, RootReadsAssetLibrariesAndSceneAndKeepsTheVersion,
         R"(<COLLADA version="1.4.1"><asset/><library_nodes id="n"/><scene/></COLLADA>)") {
  ASSERT_EQ(rc, 0);
  const oxDAEColladaElement* root = document.GetRoot();
  EXPECT_EQ(root->version, oxDAEVersion(1, 4, 1));
  ASSERT_NE(root->asset, nullptr);
  EXPECT_EQ(root->asset->parent, root);
  ASSERT_EQ(root->libraries.size(), 1u);
  EXPECT_EQ(root->libraries[0]->parent, root);
  ASSERT_NE(root->scene, nullptr);
  EXPECT_EQ(root->scene->parent, root);
  EXPECT_EQ(root->scene->instanceVisualScene, nullptr);
  EXPECT_EQ(root->parent, nullptr);
  EXPECT_EQ(document.GetElements().size(), 4u);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(RootAsset, EmptyRootHasNoAssetLibrariesOrScene, R"(<COLLADA version="1.4.1"/>)") {
  const oxDAEColladaElement* root = document.GetRoot();
  EXPECT_EQ(root->asset, nullptr);
  EXPECT_EQ(root->libraries.size(), 0u);
  EXPECT_EQ(root->scene, nullptr);
}

TEST_XML(RootAsset, EveryLibraryTagMakesALibraryOfThatType, R"(<COLLADA version="1.4.1">
  <library_animations/><library_animation_clips/><library_cameras/><library_controllers/>
  <library_geometries/><library_effects/><library_force_fields/><library_images/>
  <library_lights/><library_materials/><library_nodes/><library_physics_materials/>
  <library_physics_models/><library_physics_scenes/><library_visual_scenes/>
</COLLADA>)") {
  const auto& libraries = document.GetRoot()->libraries;
  ASSERT_EQ(libraries.size(), 15u);
  for (size_t i = 0; i < 15; ++i) {
    EXPECT_EQ(libraries[i]->type, oxDAELibrary::kTags[i]);
    EXPECT_EQ(libraries[i]->children.size(), 0u);
  }
  EXPECT_EQ(oxDAELibrary::kTags[0], "library_animations");
  EXPECT_EQ(oxDAELibrary::kTags[14], "library_visual_scenes");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(
    RootAsset, TwoGeometryLibrariesAreBothKeptInFileOrder,
    R"(<COLLADA version="1.4.1"><library_geometries id="g1"/><library_nodes id="n"/><library_geometries id="g2"/></COLLADA>)") {
  const auto& libraries = document.GetRoot()->libraries;
  ASSERT_EQ(libraries.size(), 3u);
  EXPECT_EQ(libraries[0]->id, "g1");
  EXPECT_EQ(libraries[1]->id, "n");
  EXPECT_EQ(libraries[2]->id, "g2");
  EXPECT_EQ(libraries[2]->type, "library_geometries");
  EXPECT_EQ(document.GetRoot()->GetLibrary("library_geometries"), libraries[0]);
  EXPECT_EQ(document.GetRoot()->GetLibrary("library_lights"), nullptr);
}

TEST_XML(RootAsset, LibraryCreatesTheElementClassOfEachChildKind, R"(<COLLADA version="1.4.1">
  <library_nodes id="lib">
    <animation id="a"/><animation_clip id="ac"/><node id="n"/><camera id="c"/>
    <controller id="k"/><image id="i"/><light id="l"/><material id="m"/><effect id="e"/>
    <visual_scene id="vs"/><physics_scene id="ps"/><physics_model id="pm"/>
    <physics_material id="pmat"/><force_field id="ff"/><geometry id="g"/>
  </library_nodes>
</COLLADA>)") {
  ASSERT_EQ(rc, 0);
  const auto& children = document.GetRoot()->libraries[0]->children;
  ASSERT_EQ(children.size(), 15u);
  EXPECT_EQ(Find<oxDAEAnimation>("#a"), children[0]);
  EXPECT_EQ(Find<oxDAEAnimationClip>("#ac"), children[1]);
  EXPECT_EQ(Find<oxDAENode>("#n"), children[2]);
  EXPECT_EQ(Find<oxDAECamera>("#c"), children[3]);
  EXPECT_EQ(Find<oxDAEController>("#k"), children[4]);
  EXPECT_EQ(Find<oxDAEImage>("#i"), children[5]);
  EXPECT_EQ(Find<oxDAELight>("#l"), children[6]);
  EXPECT_EQ(Find<oxDAEMaterial>("#m"), children[7]);
  EXPECT_EQ(Find<oxDAEEffect>("#e"), children[8]);
  EXPECT_EQ(Find<oxDAEVisualScene>("#vs"), children[9]);
  EXPECT_EQ(Find<oxDAEPhysicsScene>("#ps"), children[10]);
  EXPECT_EQ(Find<oxDAEPhysicsModel>("#pm"), children[11]);
  EXPECT_EQ(Find<oxDAEPhysicsMaterial>("#pmat"), children[12]);
  EXPECT_EQ(Find<oxDAEForceField>("#ff"), children[13]);
  EXPECT_EQ(Find<oxDAEGeometry>("#g"), children[14]);
  for (oxDAEElement* child : children)
    EXPECT_EQ(child->parent, document.GetRoot()->libraries[0]);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(
    RootAsset, UnknownLibraryChildIsWarnedWithTheLibraryTag,
    R"(<COLLADA version="1.4.1"><library_geometries><asset/><geometry id="g"/></library_geometries></COLLADA>)") {
  EXPECT_EQ(document.GetRoot()->libraries[0]->children.size(), 1u);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <asset> in <library_geometries>")}));
}

// --- Asset --------------------------------------------------------------------------

TEST_F(RootAsset, AssetDefaults) {
  const oxDAEAssetElement asset;
  EXPECT_EQ(asset.author, "");
  EXPECT_EQ(asset.authoringTool, "");
  EXPECT_EQ(asset.comments, "");
  EXPECT_EQ(asset.copyright, "");
  EXPECT_EQ(asset.sourceData, "");
  EXPECT_EQ(asset.upAxis, "Y_UP");
  EXPECT_EQ(asset.unitName, "meter");
  EXPECT_EQ(asset.unitMeter, 1.0f);
  EXPECT_EQ(asset.modified, "");
  EXPECT_EQ(asset.revision, "");
  EXPECT_EQ(asset.title, "");
  EXPECT_EQ(asset.subject, "");
  EXPECT_EQ(asset.keywords, "");
  EXPECT_EQ(asset.GetAuthoringTool(), Tool::NONE);
  EXPECT_EQ(asset.GetAuthoringToolVersion(), oxDAEVersion(0, 0, 0));
  EXPECT_FALSE(asset.HasID());
}

TEST_XML(RootAsset, EmptyAssetKeepsTheDefaults, R"(<COLLADA version="1.4.1"><asset/></COLLADA>)") {
  const oxDAEAssetElement* asset = document.GetRoot()->asset;
  EXPECT_EQ(asset->upAxis, "Y_UP");
  EXPECT_EQ(asset->unitName, "meter");
  EXPECT_EQ(asset->unitMeter, 1.0f);
  EXPECT_EQ(asset->GetAuthoringTool(), Tool::NONE);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(RootAsset, AssetReadsEveryKnownField, R"(<COLLADA version="1.4.1"><asset>
  <contributor>
    <author>Ann</author><authoring_tool>Blender 2.49</authoring_tool><comments>c</comments>
    <copyright>(c) me</copyright><source_data>file:///src.blend</source_data>
  </contributor>
  <modified>2021-01-02T03:04:05Z</modified><revision>7</revision><title>Title</title>
  <subject>Subject</subject><keywords>a b</keywords>
  <unit name="centimeter" meter="0.01"/><up_axis>Z_UP</up_axis>
</asset></COLLADA>)") {
  const oxDAEAssetElement* asset = document.GetRoot()->asset;
  ASSERT_NE(asset, nullptr);
  EXPECT_EQ(asset->author, "Ann");
  EXPECT_EQ(asset->authoringTool, "Blender 2.49");
  EXPECT_EQ(asset->comments, "c");
  EXPECT_EQ(asset->copyright, "(c) me");
  EXPECT_EQ(asset->sourceData, "file:///src.blend");
  EXPECT_EQ(asset->modified, "2021-01-02T03:04:05Z");
  EXPECT_EQ(asset->revision, "7");
  EXPECT_EQ(asset->title, "Title");
  EXPECT_EQ(asset->subject, "Subject");
  EXPECT_EQ(asset->keywords, "a b");
  EXPECT_EQ(asset->unitName, "centimeter");
  EXPECT_EQ(asset->unitMeter, 0.01f);
  EXPECT_EQ(asset->upAxis, "Z_UP");
  EXPECT_EQ(asset->GetAuthoringTool(), Tool::BLENDER);
  EXPECT_EQ(asset->GetAuthoringToolVersion(), oxDAEVersion(0, 0, 0));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(
    RootAsset, CreatedHasNoCaseOfItsOwnAndIsWarned,
    R"(<COLLADA version="1.4.1"><asset><created>2020-01-01</created><title>t</title></asset></COLLADA>)") {
  EXPECT_EQ(document.GetRoot()->asset->modified, "");
  EXPECT_EQ(document.GetRoot()->asset->title, "t");
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <created> in <asset>")}));
}

TEST_XML(RootAsset, SavedAssetReloadsWithItsModifiedDateAndACreatedWarning,
         R"(<COLLADA version="1.4.1"><asset><modified>2021</modified></asset></COLLADA>)") {
  const std::string saved = SaveText();
  ASSERT_EQ(LoadText(saved), 0);
  EXPECT_EQ(document.GetRoot()->asset->modified, "2021");
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <created> in <asset>")}));
}

TEST_XML(RootAsset, UnitWithoutAttributesKeepsMeterAndOne,
         R"(<COLLADA version="1.4.1"><asset><unit/></asset></COLLADA>)") {
  EXPECT_EQ(document.GetRoot()->asset->unitName, "meter");
  EXPECT_EQ(document.GetRoot()->asset->unitMeter, 1.0f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(RootAsset, InvalidUpAxisIsWarnedAndTheDefaultKept,
         R"(<COLLADA version="1.4.1"><asset><up_axis>W_UP</up_axis></asset></COLLADA>)") {
  EXPECT_EQ(document.GetRoot()->asset->upAxis, "Y_UP");
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid up axis 'W_UP'; keeping Y_UP")}));
}

TEST_XML(RootAsset, LowerCaseUpAxisIsInvalid,
         R"(<COLLADA version="1.4.1"><asset><up_axis>z_up</up_axis></asset></COLLADA>)") {
  EXPECT_EQ(document.GetRoot()->asset->upAxis, "Y_UP");
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid up axis 'z_up'; keeping Y_UP")}));
}

TEST_XML(RootAsset, UpAxisSurroundedByWhiteSpaceIsAccepted,
         R"(<COLLADA version="1.4.1"><asset><up_axis>
    X_UP
  </up_axis></asset></COLLADA>)") {
  EXPECT_EQ(document.GetRoot()->asset->upAxis, "X_UP");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(RootAsset, EmptyUpAxisKeepsTheDefaultSilently,
         R"(<COLLADA version="1.4.1"><asset><up_axis/></asset></COLLADA>)") {
  EXPECT_EQ(document.GetRoot()->asset->upAxis, "Y_UP");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(RootAsset, LaterContributorTextsReplaceEarlierOnes,
         R"(<COLLADA version="1.4.1"><asset>
  <contributor><author>First</author><comments>kept</comments></contributor>
  <contributor><author>Second</author><comments/></contributor>
</asset></COLLADA>)") {
  EXPECT_EQ(document.GetRoot()->asset->author, "Second");
  EXPECT_EQ(document.GetRoot()->asset->comments, "kept");
}

TEST_XML(
    RootAsset, UnknownContributorChildIsWarnedWithContributor,
    R"(<COLLADA version="1.4.1"><asset><contributor><email>a@b</email><author>A</author></contributor></asset></COLLADA>)") {
  EXPECT_EQ(document.GetRoot()->asset->author, "A");
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <email> in <contributor>")}));
}

TEST_XML(
    RootAsset, AuthoringToolTextGivesCodeAndVersion,
    R"(<COLLADA version="1.4.1"><asset><contributor><authoring_tool>ColladaMaya v3.02</authoring_tool></contributor></asset></COLLADA>)") {
  const oxDAEAssetElement* asset = document.GetRoot()->asset;
  EXPECT_EQ(asset->GetAuthoringTool(), Tool::MAYA);
  EXPECT_EQ(static_cast<uint32_t>(asset->GetAuthoringTool()), 7u);
  EXPECT_EQ(asset->GetAuthoringToolVersion(), oxDAEVersion(3, 2, 0));
}

// --- Authoring-tool classification ----------------------------------------------------

TEST_F(RootAsset, EachClassificationRowGivesItsCode) {
  const struct {
    const char* text;
    uint32_t code;
  } rows[] = {
      {"ColladaMaya v3.05", 7}, {"ColladaMax v1.06", 4},  {"3ds Max 2009", 4}, {"3dsmax", 4},
      {"Equinox3D 1.0", 5},     {"ZentileDev", 1},        {"ZentileQR", 2},    {"Blender 2.49", 10},
      {"Softimage XSI 7", 8},   {"Google SketchUp 8", 9}, {"Cinema 4D", 0},    {"", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(static_cast<uint32_t>(oxDAEAssetElement::ClassifyAuthoringTool(row.text)), row.code);
  }
}

TEST_F(RootAsset, ClassificationIgnoresCase) {
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("blender"), Tool::BLENDER);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("COLLADAMAYA"), Tool::MAYA);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("3DSMAX"), Tool::MAX);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("equinox3d"), Tool::EQUINOX3D);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("zentiledev"), Tool::ZENTILE_DEV);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("zentileqr"), Tool::ZENTILE_QR);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("xsi"), Tool::XSI);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("google"), Tool::GOOGLE);
}

TEST_F(RootAsset, ClassificationTakesTheFirstMatchingRow) {
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("ColladaMaya for Max users"), Tool::MAYA);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("Equinox3D Max bridge"), Tool::MAX);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("Maximum Blender"), Tool::MAX);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("ZentileDev ZentileQR"), Tool::ZENTILE_DEV);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("Blender XSI Google"), Tool::BLENDER);
  EXPECT_EQ(oxDAEAssetElement::ClassifyAuthoringTool("Google XSI"), Tool::XSI);
}

TEST_F(RootAsset, ToolVersionFollowsTheKnownPrefixes) {
  EXPECT_EQ(oxDAEAssetElement::ParseAuthoringToolVersion("ColladaMaya v3.02"),
            oxDAEVersion(3, 2, 0));
  EXPECT_EQ(oxDAEAssetElement::ParseAuthoringToolVersion("Google SketchUp 8.0.4811"),
            oxDAEVersion(8, 0, 4811));
  EXPECT_EQ(oxDAEAssetElement::ParseAuthoringToolVersion("ColladaMax v1.06;xyz"),
            oxDAEVersion(1, 6, 0));
  EXPECT_EQ(oxDAEAssetElement::ParseAuthoringToolVersion("Feeling ColladaMax v2.1.3.9"),
            oxDAEVersion(2, 1, 3));
}

TEST_F(RootAsset, ToolVersionWithoutAPrefixIsZero) {
  EXPECT_EQ(oxDAEAssetElement::ParseAuthoringToolVersion("Blender 2.49"), oxDAEVersion(0, 0, 0));
  EXPECT_EQ(oxDAEAssetElement::ParseAuthoringToolVersion("colladamaya v3.02"),
            oxDAEVersion(0, 0, 0));
  EXPECT_EQ(oxDAEAssetElement::ParseAuthoringToolVersion("Google SketchUp"), oxDAEVersion(0, 0, 0));
  EXPECT_EQ(oxDAEAssetElement::ParseAuthoringToolVersion(""), oxDAEVersion(0, 0, 0));
}

TEST_F(RootAsset, ToolVersionPrefixWithoutDigitsIsZero) {
  EXPECT_EQ(oxDAEAssetElement::ParseAuthoringToolVersion("ColladaMaya v"), oxDAEVersion(0, 0, 0));
  EXPECT_EQ(oxDAEAssetElement::ParseAuthoringToolVersion("ColladaMaya vX.1"),
            oxDAEVersion(0, 0, 0));
}

// --- Scene ----------------------------------------------------------------------------

TEST_XML(RootAsset, SceneInstanceResolvesAfterTheWholeFileIsRead,
         R"(<COLLADA version="1.4.1">
  <scene><instance_visual_scene url="#vs"/></scene>
  <library_visual_scenes><visual_scene id="vs"/></library_visual_scenes>
</COLLADA>)") {
  ASSERT_EQ(rc, 0);
  const oxDAEInstance* instance = document.GetRoot()->scene->instanceVisualScene;
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(instance->kind, EToken::VISUALSCENE);
  EXPECT_EQ(instance->url, "#vs");
  EXPECT_EQ(instance->parent, document.GetRoot()->scene);
  EXPECT_TRUE(instance->resolved);
  EXPECT_EQ(instance->target, Find<oxDAEVisualScene>("#vs"));
  ASSERT_EQ(document.GetElementsToUpdate().size(), 1u);
  EXPECT_EQ(document.GetElementsToUpdate()[0], instance);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(
    RootAsset, SceneInstanceURLWithoutHashStillResolves,
    R"(<COLLADA version="1.4.1"><library_visual_scenes><visual_scene id="vs"/></library_visual_scenes><scene><instance_visual_scene url="vs"/></scene></COLLADA>)") {
  const oxDAEInstance* instance = document.GetRoot()->scene->instanceVisualScene;
  EXPECT_TRUE(instance->resolved);
  EXPECT_EQ(instance->target, Find<oxDAEVisualScene>("#vs"));
  EXPECT_EQ(instance->url, "vs");
}

TEST_XML(
    RootAsset, UnresolvedSceneInstanceStaysUnboundWithoutAMessage,
    R"(<COLLADA version="1.4.1"><scene><instance_visual_scene url="#nowhere"/></scene></COLLADA>)") {
  ASSERT_EQ(rc, 0);
  oxDAEInstance* instance = document.GetRoot()->scene->instanceVisualScene;
  EXPECT_FALSE(instance->resolved);
  EXPECT_EQ(instance->target, nullptr);
  EXPECT_EQ(instance->UpdateDependencies(document, false), kDAEUnresolved);
  EXPECT_EQ(instance->UpdateDependencies(document, true), 0);
  EXPECT_EQ(instance->url, "#nowhere");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(
    RootAsset, ResolvedInstanceIsNotResolvedAgain,
    R"(<COLLADA version="1.4.1"><library_visual_scenes><visual_scene id="vs"/></library_visual_scenes><scene><instance_visual_scene url="#vs"/></scene></COLLADA>)") {
  oxDAEInstance* instance = document.GetRoot()->scene->instanceVisualScene;
  instance->url = "#elsewhere";
  EXPECT_EQ(instance->UpdateDependencies(document, false), 0);
  EXPECT_EQ(instance->target, Find<oxDAEVisualScene>("#vs"));
}

TEST_XML(RootAsset, InstanceBoundToAnElementWithoutIdentityKeepsItsURL,
         R"(<COLLADA version="1.4.1"><scene><instance_visual_scene url="#x"/></scene></COLLADA>)") {
  oxDAEInstance* instance = document.GetRoot()->scene->instanceVisualScene;
  instance->target = document.GetRoot();
  EXPECT_EQ(instance->UpdateDependencies(document, true), 0);
  EXPECT_EQ(instance->url, "#x");
}

TEST_XML(
    RootAsset, UnknownSceneChildIsWarnedWithScene,
    R"(<COLLADA version="1.4.1"><scene><instance_physics_scene url="#ps"/></scene></COLLADA>)") {
  EXPECT_EQ(document.GetRoot()->scene->instanceVisualScene, nullptr);
  EXPECT_EQ(document.GetElementsToUpdate().size(), 0u);
  EXPECT_EQ(log.entries,
            (std::vector{Warning("unknown element <instance_physics_scene> in <scene>")}));
}

TEST_XML(RootAsset, SceneIdentityIsReadAndRegistered,
         R"(<COLLADA version="1.4.1"><scene id="sc" name="S"/></COLLADA>)") {
  EXPECT_EQ(Find<oxDAESceneElement>("#sc"), document.GetRoot()->scene);
  EXPECT_EQ(document.GetRoot()->scene->name, "S");
}

TEST_F(RootAsset, InstancesAreEqualWithTheSameURLAndKind) {
  oxDAEInstance a(EToken::VISUALSCENE), b(EToken::VISUALSCENE), c(EToken::NODE);
  a.url = b.url = c.url = "#vs";
  EXPECT_TRUE(a.Equals(&b));
  EXPECT_FALSE(a.Equals(&c));
  b.url = "#other";
  EXPECT_FALSE(a.Equals(&b));
  oxDAEColladaElement notAnInstance;
  EXPECT_FALSE(a.Equals(&notAnInstance));
  EXPECT_FALSE(a.Equals(nullptr));
}
