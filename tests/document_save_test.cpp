// Saving a document: the root, asset, libraries and scene as written text,
// the reference refresh before writing, and the writer's result codes.
#include "oxTestSupport.h"

#include <filesystem>

using namespace OxDAEReader;
using oxtest::Error;
using oxtest::kProlog;
using oxtest::Saved;

OX_DOCUMENT_SUITE(DocumentSave);

TEST_XML(DocumentSave, WritesRootAssetLibrariesInOrderAndScene,
         R"(<COLLADA version="1.4.1">
  <asset>
    <contributor><author>Ann</author><authoring_tool>ColladaMaya v3.02</authoring_tool></contributor>
    <modified>2021-01-02</modified><title>T</title>
    <unit name="cm" meter="0.01"/><up_axis>Z_UP</up_axis>
  </asset>
  <library_physics_scenes id="lps">
    <physics_scene id="ps" name="P"><technique_common><gravity>0 -9.8 0</gravity></technique_common></physics_scene>
  </library_physics_scenes>
  <library_visual_scenes><visual_scene id="vs"/></library_visual_scenes>
  <scene><instance_visual_scene url="#vs"/></scene>
</COLLADA>)") {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(SaveText(), Saved(R"(  <asset>
    <contributor>
      <author>Ann</author>
      <authoring_tool>ColladaMaya v3.02</authoring_tool>
    </contributor>
    <created>2021-01-02</created>
    <modified>2021-01-02</modified>
    <title>T</title>
    <unit name="cm" meter="0.01"/>
    <up_axis>Z_UP</up_axis>
  </asset>
  <library_physics_scenes id="lps">
    <physics_scene name="P" id="ps"/>
  </library_physics_scenes>
  <library_visual_scenes>
    <visual_scene id="vs"/>
  </library_visual_scenes>
  <scene>
    <instance_visual_scene url="#vs"/>
  </scene>
)"));
}

TEST_XML(DocumentSave, AssetWithoutChildrenWritesItsDefaultUnitAndUpAxis,
         R"(<COLLADA version="1.4.1"><asset/></COLLADA>)") {
  EXPECT_EQ(SaveText(), Saved(R"(  <asset>
    <unit name="meter" meter="1"/>
    <up_axis>Y_UP</up_axis>
  </asset>
)"));
}

TEST_XML(DocumentSave, AllContributorTextsAndDescriptionsAreWrittenInSchemaOrder,
         R"(<COLLADA version="1.4.1"><asset>
  <up_axis>X_UP</up_axis><title>T</title><subject>S</subject><revision>R</revision>
  <keywords>K</keywords><modified>M</modified>
  <contributor><source_data>D</source_data><copyright>C</copyright><comments>N</comments>
    <authoring_tool>A</authoring_tool><author>W</author></contributor>
</asset></COLLADA>)") {
  EXPECT_EQ(SaveText(), Saved(R"(  <asset>
    <contributor>
      <author>W</author>
      <authoring_tool>A</authoring_tool>
      <comments>N</comments>
      <copyright>C</copyright>
      <source_data>D</source_data>
    </contributor>
    <created>M</created>
    <keywords>K</keywords>
    <modified>M</modified>
    <revision>R</revision>
    <subject>S</subject>
    <title>T</title>
    <unit name="meter" meter="1"/>
    <up_axis>X_UP</up_axis>
  </asset>
)"));
}

TEST_XML(DocumentSave, UnsupportedVersionIsWrittenBackWithNoChildren,
         R"(<COLLADA version="1.5.0"><asset/><library_nodes id="n"/><scene/></COLLADA>)") {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(SaveText(), std::string(kProlog) +
                            "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" "
                            "version=\"1.5.0\"/>\n");
}

TEST_XML(DocumentSave, EmptyRootKeepsTheVersionItWasReadWith, R"(<COLLADA version="1.4.0"/>)") {
  EXPECT_EQ(SaveText(), std::string(kProlog) +
                            "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" "
                            "version=\"1.4.0\"/>\n");
}

TEST_XML(DocumentSave, RootWithoutAssetOrSceneWritesOnlyItsLibraries,
         R"(<COLLADA version="1.4.1"><library_nodes id="a"/><library_lights id="b"/></COLLADA>)") {
  EXPECT_EQ(SaveText(), Saved("  <library_nodes id=\"a\"/>\n  <library_lights id=\"b\"/>\n"));
}

TEST_XML(
    DocumentSave, ElementWithoutNameOrIdWritesNeither,
    R"(<COLLADA version="1.4.1"><library_physics_models><physics_model/></library_physics_models></COLLADA>)") {
  EXPECT_EQ(
      SaveText(),
      Saved("  <library_physics_models>\n    <physics_model/>\n  </library_physics_models>\n"));
}

TEST_XML(
    DocumentSave, NameIsWrittenBeforeIdAndSidIsNotWritten,
    R"(<COLLADA version="1.4.1"><library_physics_models><physics_model sid="s" id="m" name="M"/></library_physics_models></COLLADA>)") {
  EXPECT_EQ(SaveText(), Saved("  <library_physics_models>\n    <physics_model name=\"M\" "
                              "id=\"m\"/>\n  </library_physics_models>\n"));
}

TEST_XML(
    DocumentSave, SceneURLIsRewrittenFromTheResolvedTarget,
    R"(<COLLADA version="1.4.1"><library_visual_scenes><visual_scene id="vs"/></library_visual_scenes><scene><instance_visual_scene url="vs"/></scene></COLLADA>)") {
  ASSERT_NE(Find<oxDAEVisualScene>("#vs"), nullptr);
  Find<oxDAEVisualScene>("#vs")->id = "renamed";
  EXPECT_EQ(SaveText(), Saved(R"(  <library_visual_scenes>
    <visual_scene id="renamed"/>
  </library_visual_scenes>
  <scene>
    <instance_visual_scene url="#renamed"/>
  </scene>
)"));
  EXPECT_EQ(document.GetRoot()->scene->instanceVisualScene->url, "#renamed");
}

TEST_XML(
    DocumentSave, UnresolvedSceneURLIsWrittenAsRead,
    R"(<COLLADA version="1.4.1"><scene><instance_visual_scene url="#missing"/></scene></COLLADA>)") {
  EXPECT_EQ(SaveText(),
            Saved("  <scene>\n    <instance_visual_scene url=\"#missing\"/>\n  </scene>\n"));
}

TEST_F(DocumentSave, WithoutARootSaveReturnsNotColladaAndWritesNothing) {
  const std::string path =
      (std::filesystem::temp_directory_path() / "oxdae_never_written.dae").string();
  EXPECT_EQ(document.Save(OxKernel::oxURI(path)), kDAENotCollada);
  EXPECT_FALSE(std::filesystem::exists(path));
  oxString xml = "unchanged";
  EXPECT_EQ(document.SaveToString(xml), -23);
  EXPECT_EQ(xml, "unchanged");
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(
    DocumentSave, AfterClearSaveReturnsNotCollada,
    R"(<COLLADA version="1.4.1"><scene><instance_visual_scene url="#vs"/></scene></COLLADA>)") {
  document.Clear();
  oxString xml;
  EXPECT_EQ(document.SaveToString(xml), kDAENotCollada);
}

TEST_XML(DocumentSave, SaveToAFileWritesTheSameTextAsSaveToString,
         R"(<COLLADA version="1.4.1"><library_nodes id="a"/></COLLADA>)") {
  const oxtest::TempFile out("old content that is replaced");
  EXPECT_EQ(document.Save(out.URI()), 0);
  EXPECT_EQ(oxtest::ReadFile(out.Path()), Saved("  <library_nodes id=\"a\"/>\n"));
  EXPECT_EQ(SaveText(), Saved("  <library_nodes id=\"a\"/>\n"));
  EXPECT_EQ(document.writer.Get(), nullptr);
}

TEST_XML(DocumentSave, SaveToAFolderThatDoesNotExistReturnsCannotOpen,
         R"(<COLLADA version="1.4.1"/>)") {
  EXPECT_EQ(document.Save(OxKernel::oxURI("/nonexistent-folder/out.dae")),
            OxKernel::kXMLCannotOpen);
  EXPECT_EQ(log.entries,
            (std::vector{
                Error("cannot create '/nonexistent-folder/out.dae': No such file or directory")}));
  EXPECT_EQ(document.writer.Get(), nullptr);
}

TEST_XML(DocumentSave, SaveToANonFileURIReturnsCannotOpen, R"(<COLLADA version="1.4.1"/>)") {
  EXPECT_EQ(document.Save(OxKernel::oxURI("http://example.com/out.dae")), -30);
  EXPECT_EQ(log.entries,
            (std::vector{Error("cannot write 'http://example.com/out.dae': not a local file")}));
}

TEST_XML(DocumentSave, SaveReturnsTheResultOfTheFinalWrite, R"(<COLLADA version="1.4.1"/>)") {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full on this system";
  EXPECT_EQ(document.Save(OxKernel::oxURI("/dev/full")), OxKernel::kXMLWriteFailed);
  EXPECT_EQ(log.entries, (std::vector{Error("cannot write '/dev/full'")}));
}

TEST_F(DocumentSave, WriteColor3ValueWritesRedGreenBlueOnly) {
  OxKernel::oxRefPtr<OxKernel::oxXMLWriter> writer;
  ASSERT_EQ(OxKernel::oxXMLFactory::Instance(0).CreateWriter(writer), 0);
  writer->StartElement("color");
  writer->EndAttributes();
  EXPECT_EQ(oxDAEFile::WriteColor3Value(writer.Get(), OxMath::oxFColor{0.25f, 0.5f, 1.0f, 0.0f}),
            0);
  ASSERT_EQ(writer->Close(), 0);
  EXPECT_EQ(writer->GetBuffer(), std::string(kProlog) + "<color>0.25 0.5 1</color>\n");
}

TEST_F(DocumentSave, InstancesAreWrittenUnderTheTagOfTheirKind) {
  EXPECT_EQ(oxDAEInstance::TagOfKind(EToken::CAMERA), "instance_camera");
  EXPECT_EQ(oxDAEInstance::TagOfKind(EToken::CONTROLLER), "instance_controller");
  EXPECT_EQ(oxDAEInstance::TagOfKind(EToken::GEOMETRY), "instance_geometry");
  EXPECT_EQ(oxDAEInstance::TagOfKind(EToken::LIGHT), "instance_light");
  EXPECT_EQ(oxDAEInstance::TagOfKind(EToken::VISUALSCENE), "instance_visual_scene");
  EXPECT_EQ(oxDAEInstance::TagOfKind(EToken::NODE), "");
  EXPECT_EQ(oxDAEInstance::TagOfKind(EToken::ANIMATION), "");
  EXPECT_EQ(oxDAEInstance::TagOfKind(EToken::NONE), "");
}
