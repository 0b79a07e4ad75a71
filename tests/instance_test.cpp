// Instances, material binding and visual scenes: reading, binding after
// loading, comparison and writing.
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::Warning;

namespace {

using oxtest::kNoLog;
using oxtest::kProlog;

// A document with a geometry "g", materials "red" and "blue", a controller
// "skin", and a visual scene "vs" whose node "n" holds `content`, followed by
// a node "root" with a child node "hip".
std::string Scene(std::string_view content) {
  return Collada(R"(
    <library_geometries><geometry id="g"/></library_geometries>
    <library_materials><material id="red"/><material id="blue"/></library_materials>
    <library_controllers><controller id="skin"/></library_controllers>
    <library_visual_scenes><visual_scene id="vs"><node id="n">)" +
                 std::string(content) + R"(</node>
      <node id="root"><node id="hip"/></node></visual_scene></library_visual_scenes>)");
}

// The one element of class T in the document, or null when there is not
// exactly one.
template <class T>
T* Only(const std::vector<T*>& all) {
  EXPECT_EQ(all.size(), 1u);
  return all.size() == 1 ? all[0] : nullptr;
}

// The text `element` writes inside a <holder> element of a memory document,
// without the XML prolog.
std::string WrittenAlone(oxDAEFile& document, oxDAEBaseElement& element) {
  OxKernel::oxRefPtr<OxKernel::oxXMLWriter> writer;
  OxKernel::oxXMLFactory::Instance(0).CreateWriter(writer);
  document.writer = writer;
  writer->StartElement("holder");
  writer->EndAttributes();
  document.WriteChild(&element);
  writer->Close();
  document.writer.Reset();
  const std::string text(writer->GetBuffer());
  EXPECT_TRUE(text.starts_with(kProlog));
  return text.substr(kProlog.size());
}

bool HasUnresolved(const oxDAEFile& document, const oxDAEBaseElement* element, int code) {
  for (const oxDAEFile::Unresolved& u : document.GetUnresolved()) {
    if (u.element == element) return u.code == code;
  }
  return false;
}

}  // namespace

// --- Reading -----------------------------------------------------------------------

OX_DOCUMENT_SUITE(InstanceReading);

TEST_XML(InstanceReading, GeometryInstanceReadsItsBindMaterial, Scene(R"(
  <instance_geometry url="#g">
    <bind_material>
      <param sid="p" type="float">0.5</param>
      <technique_common>
        <instance_material symbol="mat0" target="#red">
          <bind semantic="DIFFUSE_UV" target="/n/uv"/>
          <bind_vertex_input semantic="CHANNEL1" input_semantic="TEXCOORD" input_set="1"/>
        </instance_material>
        <instance_material symbol="mat1" target="#blue"/>
      </technique_common>
    </bind_material>
  </instance_geometry>)")) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(log.entries, kNoLog);
  const oxDAEInstanceGeometry* instance = Only(All<oxDAEInstanceGeometry>());
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(instance->kind, EToken::GEOMETRY);
  EXPECT_EQ(instance->url, "#g");
  EXPECT_TRUE(instance->resolved);
  EXPECT_EQ(instance->target, Find<oxDAEGeometry>("#g"));
  const oxDAEBindMaterial* bind = instance->bindMaterial;
  ASSERT_NE(bind, nullptr);
  EXPECT_EQ(bind->parent, instance);
  ASSERT_EQ(bind->params.size(), 1u);
  EXPECT_EQ(bind->params[0]->floatValue, 0.5f);
  ASSERT_NE(bind->techniqueCommon, nullptr);
  EXPECT_EQ(bind->techniqueCommon->parent, bind);
  const auto& materials = bind->techniqueCommon->instanceMaterials;
  ASSERT_EQ(materials.size(), 2u);
  EXPECT_EQ(materials[0]->parent, bind->techniqueCommon);
  EXPECT_EQ(materials[0]->symbol, "mat0");
  EXPECT_EQ(materials[0]->target, "#red");
  EXPECT_EQ(materials[0]->material, Find<oxDAEMaterial>("#red"));
  EXPECT_EQ(materials[1]->symbol, "mat1");
  EXPECT_EQ(materials[1]->material, Find<oxDAEMaterial>("#blue"));
  ASSERT_NE(materials[0]->GetBinding("DIFFUSE_UV"), nullptr);
  EXPECT_EQ(*materials[0]->GetBinding("DIFFUSE_UV"), "/n/uv");
  const auto* input = materials[0]->GetVertexInputBinding("CHANNEL1");
  ASSERT_NE(input, nullptr);
  EXPECT_EQ(input->inputSemantic, "TEXCOORD");
  EXPECT_EQ(input->inputSet, 1u);
  EXPECT_TRUE(document.GetUnresolved().empty());
}

TEST_XML(InstanceReading, InstanceMaterialsAreQueuedForUpdate,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="#red"/>
                  </technique_common></bind_material></instance_geometry>)")) {
  const oxDAEInstanceMaterial* material = Only(All<oxDAEInstanceMaterial>());
  const auto& queued = document.GetElementsToUpdate();
  EXPECT_NE(std::find(queued.begin(), queued.end(), material), queued.end());
}

TEST_XML(InstanceReading, FirstBindOfASemanticKeepsItsTarget,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="#red">
                      <bind semantic="UV" target="first"/><bind semantic="UV" target="second"/>
                    </instance_material>
                  </technique_common></bind_material></instance_geometry>)")) {
  const oxDAEInstanceMaterial* material = Only(All<oxDAEInstanceMaterial>());
  ASSERT_NE(material, nullptr);
  ASSERT_EQ(material->bindings.size(), 1u);
  EXPECT_EQ(material->bindings.at("UV"), "first");
}

TEST_XML(InstanceReading, LastBindVertexInputOfASemanticWins,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="#red">
                      <bind_vertex_input semantic="CH" input_semantic="TEXCOORD" input_set="0"/>
                      <bind_vertex_input semantic="CH" input_semantic="UV" input_set="2"/>
                    </instance_material>
                  </technique_common></bind_material></instance_geometry>)")) {
  const oxDAEInstanceMaterial* material = Only(All<oxDAEInstanceMaterial>());
  ASSERT_NE(material, nullptr);
  ASSERT_EQ(material->vertexInputBindings.size(), 1u);
  const auto* input = material->GetVertexInputBinding("CH");
  ASSERT_NE(input, nullptr);
  EXPECT_EQ(input->inputSemantic, "UV");
  EXPECT_EQ(input->inputSet, 2u);
}

TEST_XML(InstanceReading, InstanceMaterialWithoutSymbolIsAnErrorAndStillReadsItsBinds,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material target="#red"><bind semantic="UV" target="t"/>
                    </instance_material>
                  </technique_common></bind_material></instance_geometry>)")) {
  const oxDAEInstanceMaterial* material = Only(All<oxDAEInstanceMaterial>());
  ASSERT_NE(material, nullptr);
  EXPECT_EQ(material->symbol, "");
  EXPECT_EQ(material->material, Find<oxDAEMaterial>("#red"));
  ASSERT_NE(material->GetBinding("UV"), nullptr);
  EXPECT_EQ(*material->GetBinding("UV"), "t");
  EXPECT_EQ(log.entries,
            (std::vector{Error("attribute 'symbol' is required in <instance_material> element!")}));
}

TEST_XML(InstanceReading, InstanceMaterialWithoutTargetIsAnErrorAndDoesNotResolve,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a"/>
                  </technique_common></bind_material></instance_geometry>)")) {
  const oxDAEInstanceMaterial* material = Only(All<oxDAEInstanceMaterial>());
  ASSERT_NE(material, nullptr);
  EXPECT_EQ(material->target, "");
  EXPECT_EQ(material->material, nullptr);
  EXPECT_TRUE(HasUnresolved(document, material, kDAEUnresolved));
  EXPECT_EQ(log.entries,
            (std::vector{Error("attribute 'target' is required in <instance_material> element!")}));
}

TEST_XML(InstanceReading, BindWithoutSemanticOrTargetIsAnErrorAndReadAsEmptyText,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="#red">
                      <bind target="t"/><bind semantic="S"/>
                    </instance_material>
                  </technique_common></bind_material></instance_geometry>)")) {
  const oxDAEInstanceMaterial* material = Only(All<oxDAEInstanceMaterial>());
  ASSERT_NE(material, nullptr);
  ASSERT_EQ(material->bindings.size(), 2u);
  EXPECT_EQ(material->bindings.at(""), "t");
  EXPECT_EQ(material->bindings.at("S"), "");
  EXPECT_EQ(log.entries, (std::vector{Error("attribute 'semantic' is required in <bind> element!"),
                                      Error("attribute 'target' is required in <bind> element!")}));
}

TEST_XML(InstanceReading, UnknownBindingIsNull,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="#red"/>
                  </technique_common></bind_material></instance_geometry>)")) {
  const oxDAEInstanceMaterial* material = Only(All<oxDAEInstanceMaterial>());
  ASSERT_NE(material, nullptr);
  EXPECT_EQ(material->GetBinding("UV"), nullptr);
  EXPECT_EQ(material->GetVertexInputBinding("UV"), nullptr);
}

TEST_XML(InstanceReading, InstanceMaterialSkipsExtraAndWarnsOtherwise,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="#red"><extra/><remap/></instance_material>
                  </technique_common></bind_material></instance_geometry>)")) {
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <remap> in <instance_material>")}));
}

TEST_XML(
    InstanceReading, GeometryInstanceSkipsExtraSilentlyAndWarnsOtherwise,
    Scene(
        R"(<instance_geometry url="#g"><extra><technique profile="X"/></extra><skeleton>#n</skeleton>
                  </instance_geometry>)")) {
  const oxDAEInstanceGeometry* instance = Only(All<oxDAEInstanceGeometry>());
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(instance->bindMaterial, nullptr);
  EXPECT_TRUE(All<oxDAEExtraElement>().empty());
  EXPECT_EQ(log.entries,
            (std::vector{Warning("unknown element <skeleton> in <instance_geometry>")}));
}

TEST_XML(InstanceReading, BindMaterialWarnsForEveryOtherChild,
         Scene(R"(<instance_geometry url="#g"><bind_material>
                    <technique profile="MAYA"/><extra/>
                  </bind_material></instance_geometry>)")) {
  const oxDAEInstanceGeometry* instance = Only(All<oxDAEInstanceGeometry>());
  ASSERT_NE(instance, nullptr);
  ASSERT_NE(instance->bindMaterial, nullptr);
  EXPECT_EQ(instance->bindMaterial->techniqueCommon, nullptr);
  EXPECT_TRUE(instance->bindMaterial->techniques.empty());
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <technique> in <bind_material>"),
                                      Warning("unknown element <extra> in <bind_material>")}));
}

TEST_XML(InstanceReading, BindMaterialCommonTechniqueWarnsWithTechniqueCommon,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_effect url="#e"/>
                  </technique_common></bind_material></instance_geometry>)")) {
  EXPECT_EQ(log.entries,
            (std::vector{Warning("unknown element <instance_effect> in <technique_common>")}));
}

TEST_XML(InstanceReading, ControllerInstanceReadsSkeletonsAndBindMaterial,
         Scene(R"(<instance_controller url="#skin">
                    <skeleton> #root </skeleton><skeleton>#hip</skeleton>
                    <bind_material><technique_common>
                      <instance_material symbol="a" target="#red"/>
                    </technique_common></bind_material>
                  </instance_controller>)")) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(log.entries, kNoLog);
  const oxDAEInstanceController* instance = Only(All<oxDAEInstanceController>());
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(instance->kind, EToken::CONTROLLER);
  EXPECT_EQ(instance->skeletons, (oxArray<oxString>{"#root", "#hip"}));
  EXPECT_EQ(instance->skeletonNodes,
            (oxArray<oxDAENode*>{Find<oxDAENode>("#root"), Find<oxDAENode>("#hip")}));
  EXPECT_TRUE(instance->resolved);
  EXPECT_EQ(instance->target, Find<oxDAEController>("#skin"));
  ASSERT_NE(instance->bindMaterial, nullptr);
  EXPECT_EQ(instance->bindMaterial->parent, instance);
  EXPECT_TRUE(document.GetUnresolved().empty());
}

TEST_XML(InstanceReading, ControllerInstanceWarnsForExtra,
         Scene(R"(<instance_controller url="#skin"><extra/></instance_controller>)")) {
  EXPECT_EQ(log.entries,
            (std::vector{Warning("unknown element <extra> in <instance_controller>")}));
}

TEST_XML(InstanceReading, OtherInstancesHoldTheirKindAndUrl,
         Scene(R"(<instance_camera url="#cam"/><instance_light url="#lamp"/>
                  <instance_node url="#root"/>)")) {
  const std::vector<oxDAEInstance*> instances = All<oxDAEInstance>();
  ASSERT_EQ(instances.size(), 3u);
  EXPECT_EQ(instances[0]->kind, EToken::CAMERA);
  EXPECT_EQ(instances[0]->url, "#cam");
  EXPECT_EQ(instances[1]->kind, EToken::LIGHT);
  EXPECT_EQ(instances[2]->kind, EToken::NODE);
  EXPECT_EQ(instances[2]->target, Find<oxDAENode>("#root"));
}

// --- Tags ----------------------------------------------------------------------------

OX_DOCUMENT_SUITE(InstanceTags);

TEST_F(InstanceTags, EveryInstanceAnswersTheTagItIsReadFrom) {
  EXPECT_EQ(oxDAEInstance(EToken::CAMERA).GetXMLTag(), "instance_camera");
  EXPECT_EQ(oxDAEInstance(EToken::LIGHT).GetXMLTag(), "instance_light");
  EXPECT_EQ(oxDAEInstance(EToken::NODE).GetXMLTag(), "instance_node");
  EXPECT_EQ(oxDAEInstance(EToken::VISUALSCENE).GetXMLTag(), "instance_visual_scene");
  EXPECT_EQ(oxDAEInstance(EToken::ANIMATION).GetXMLTag(), "instance_animation");
  EXPECT_EQ(oxDAEInstance(EToken::NONE).GetXMLTag(), "");
  EXPECT_EQ(oxDAEInstanceGeometry().GetXMLTag(), "instance_geometry");
  EXPECT_EQ(oxDAEInstanceController().GetXMLTag(), "instance_controller");
  const oxDAEInstance& asBase = oxDAEInstanceGeometry();
  EXPECT_EQ(asBase.GetXMLTag(), "instance_geometry");
}

TEST_F(InstanceTags, GeometryAndControllerInstancesHaveTheirKindFromConstruction) {
  EXPECT_EQ(oxDAEInstanceGeometry().kind, EToken::GEOMETRY);
  EXPECT_EQ(static_cast<int>(oxDAEInstanceGeometry().kind), 15);
  EXPECT_EQ(oxDAEInstanceController().kind, EToken::CONTROLLER);
  EXPECT_EQ(static_cast<int>(oxDAEInstanceController().kind), 14);
  EXPECT_EQ(oxDAEInstanceGeometry().bindMaterial, nullptr);
  EXPECT_EQ(oxDAEInstanceController().bindMaterial, nullptr);
}

TEST_F(InstanceTags, MaterialBindingClassesAnswerTheirTags) {
  EXPECT_EQ(oxDAEBindMaterial().GetXMLTag(), "bind_material");
  EXPECT_EQ(oxDAEBindMaterialTechniqueCommon().GetXMLTag(), "technique_common");
  EXPECT_EQ(oxDAEInstanceMaterial().GetXMLTag(), "instance_material");
  EXPECT_EQ(oxDAEVisualScene().GetXMLTag(), "visual_scene");
  EXPECT_EQ(oxDAEInstanceGeometry::kRTTI.GetParent(), &oxDAEInstance::kRTTI);
  EXPECT_EQ(oxDAEInstanceController::kRTTI.GetParent(), &oxDAEInstance::kRTTI);
  EXPECT_EQ(oxDAEVisualScene::kRTTI.GetParent(), &oxDAEElement::kRTTI);
}

// --- Binding after loading -----------------------------------------------------------

OX_DOCUMENT_SUITE(InstanceBinding);

TEST_XML(InstanceBinding, UnresolvedGeometryInstanceIsListedWithMinusOne,
         Scene(R"(<instance_geometry url="#missing"/>)")) {
  ASSERT_EQ(rc, 0);
  const oxDAEInstanceGeometry* instance = Only(All<oxDAEInstanceGeometry>());
  ASSERT_NE(instance, nullptr);
  EXPECT_FALSE(instance->resolved);
  EXPECT_EQ(instance->target, nullptr);
  ASSERT_EQ(document.GetUnresolved().size(), 1u);
  EXPECT_EQ(document.GetUnresolved()[0].element, instance);
  EXPECT_EQ(document.GetUnresolved()[0].code, -1);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(InstanceBinding, ControllerInstanceWithAnUnresolvedUrlStillSucceeds,
         Scene(R"(<instance_controller url="#missing"><skeleton>#root</skeleton>
                  </instance_controller>)")) {
  ASSERT_EQ(rc, 0);
  const oxDAEInstanceController* instance = Only(All<oxDAEInstanceController>());
  ASSERT_NE(instance, nullptr);
  EXPECT_TRUE(instance->resolved);
  EXPECT_EQ(instance->target, nullptr);
  EXPECT_EQ(instance->skeletonNodes, (oxArray<oxDAENode*>{Find<oxDAENode>("#root")}));
  EXPECT_TRUE(document.GetUnresolved().empty());
}

TEST_XML(InstanceBinding, ControllerInstanceWhoseSkeletonNamesAGeometryFails,
         Scene(R"(<instance_controller url="#skin">
                    <skeleton>#root</skeleton><skeleton>#g</skeleton><skeleton>#hip</skeleton>
                  </instance_controller>)")) {
  ASSERT_EQ(rc, 0);
  oxDAEInstanceController* instance = Only(All<oxDAEInstanceController>());
  ASSERT_NE(instance, nullptr);
  EXPECT_TRUE(HasUnresolved(document, instance, -1));
  EXPECT_FALSE(instance->resolved);
  EXPECT_EQ(instance->target, nullptr);
  EXPECT_EQ(instance->skeletonNodes, (oxArray<oxDAENode*>{Find<oxDAENode>("#root")}));
  EXPECT_EQ(instance->UpdateDependencies(document, false), -1);
  EXPECT_EQ(instance->skeletonNodes, (oxArray<oxDAENode*>{Find<oxDAENode>("#root")}));
}

TEST_XML(InstanceBinding, ControllerInstanceDoesNothingBeforeWriting,
         Scene(R"(<instance_controller url="skin"/>)")) {
  oxDAEInstanceController* instance = Only(All<oxDAEInstanceController>());
  ASSERT_NE(instance, nullptr);
  ASSERT_EQ(instance->target, Find<oxDAEController>("#skin"));
  EXPECT_EQ(instance->UpdateDependencies(document, true), kDAENothingToDo);
  EXPECT_EQ(instance->UpdateDependencies(document, true), -3);
  EXPECT_EQ(instance->url, "skin");
}

TEST_XML(
    InstanceBinding, ResolvedControllerInstanceIsNotResolvedAgain,
    Scene(R"(<instance_controller url="#skin"><skeleton>#root</skeleton></instance_controller>)")) {
  oxDAEInstanceController* instance = Only(All<oxDAEInstanceController>());
  ASSERT_NE(instance, nullptr);
  instance->skeletons.push_back("#g");
  EXPECT_EQ(instance->UpdateDependencies(document, false), 0);
  EXPECT_EQ(instance->skeletonNodes.size(), 1u);
}

TEST_XML(InstanceBinding, GeometryInstanceTakesTheTargetsReferenceBeforeWriting,
         Scene(R"(<instance_geometry url="g"/>)")) {
  oxDAEInstanceGeometry* instance = Only(All<oxDAEInstanceGeometry>());
  ASSERT_NE(instance, nullptr);
  Find<oxDAEGeometry>("#g")->id = "mesh";
  EXPECT_EQ(instance->UpdateDependencies(document, true), 0);
  EXPECT_EQ(instance->url, "#mesh");
}

TEST_XML(InstanceBinding, InstanceMaterialWhoseTargetIsNotAMaterialFails,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="#g"/>
                  </technique_common></bind_material></instance_geometry>)")) {
  const oxDAEInstanceMaterial* material = Only(All<oxDAEInstanceMaterial>());
  ASSERT_NE(material, nullptr);
  EXPECT_EQ(material->material, nullptr);
  ASSERT_EQ(document.GetUnresolved().size(), 1u);
  EXPECT_EQ(document.GetUnresolved()[0].element, material);
  EXPECT_EQ(document.GetUnresolved()[0].code, kDAEUnresolved);
}

TEST_XML(InstanceBinding, InstanceMaterialIsResolvedAgainAtEveryUpdate,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="#red"/>
                  </technique_common></bind_material></instance_geometry>)")) {
  oxDAEInstanceMaterial* material = Only(All<oxDAEInstanceMaterial>());
  ASSERT_NE(material, nullptr);
  EXPECT_EQ(material->material, Find<oxDAEMaterial>("#red"));
  EXPECT_FALSE(material->resolved);
  material->target = "#blue";
  EXPECT_EQ(material->UpdateDependencies(document, false), 0);
  EXPECT_EQ(material->material, Find<oxDAEMaterial>("#blue"));
  EXPECT_FALSE(material->resolved);
  material->target = "#nowhere";
  EXPECT_EQ(material->UpdateDependencies(document, false), -1);
  EXPECT_EQ(material->material, Find<oxDAEMaterial>("#blue"));
}

TEST_XML(InstanceBinding, InstanceMaterialTakesTheMaterialsReferenceBeforeWriting,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="red"/>
                  </technique_common></bind_material></instance_geometry>)")) {
  oxDAEInstanceMaterial* material = Only(All<oxDAEInstanceMaterial>());
  ASSERT_NE(material, nullptr);
  Find<oxDAEMaterial>("#red")->id = "crimson";
  EXPECT_EQ(material->UpdateDependencies(document, true), 0);
  EXPECT_EQ(material->target, "#crimson");
  oxDAEInstanceMaterial unbound;
  unbound.target = "#kept";
  EXPECT_EQ(unbound.UpdateDependencies(document, true), 0);
  EXPECT_EQ(unbound.target, "#kept");
}

// --- Equality ------------------------------------------------------------------------

OX_DOCUMENT_SUITE(InstanceEquality);

TEST_XML(InstanceEquality, GeometryInstancesWithTheSameUrlOneWithoutBindMaterialDiffer,
         Scene(R"(<instance_geometry url="#g"/>
                  <instance_geometry url="#g"><bind_material/></instance_geometry>
                  <instance_geometry url="#g"/>)")) {
  const std::vector<oxDAEInstanceGeometry*> instances = All<oxDAEInstanceGeometry>();
  ASSERT_EQ(instances.size(), 3u);
  EXPECT_FALSE(instances[0]->Equals(instances[1]));
  EXPECT_FALSE(instances[1]->Equals(instances[0]));
  EXPECT_TRUE(instances[0]->Equals(instances[2]));
}

TEST_XML(InstanceEquality, GeometryInstancesCompareTheirInstanceMaterialsInOrder,
         Scene(R"(<instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="#red"/><instance_material symbol="b" target="#blue"/>
                  </technique_common></bind_material></instance_geometry>
                  <instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="x" target="#red"/><instance_material symbol="y" target="#blue"/>
                  </technique_common></bind_material></instance_geometry>
                  <instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="b" target="#blue"/><instance_material symbol="a" target="#red"/>
                  </technique_common></bind_material></instance_geometry>
                  <instance_geometry url="#g"><bind_material><technique_common>
                    <instance_material symbol="a" target="#red"/>
                  </technique_common></bind_material></instance_geometry>
                  <instance_geometry url="#g"><bind_material/></instance_geometry>
                  <instance_geometry url="#g"><bind_material><technique_common/></bind_material>
                  </instance_geometry>)")) {
  const std::vector<oxDAEInstanceGeometry*> i = All<oxDAEInstanceGeometry>();
  ASSERT_EQ(i.size(), 6u);
  EXPECT_TRUE(i[0]->Equals(i[1]));  // the symbol takes no part
  EXPECT_FALSE(i[0]->Equals(i[2]));
  EXPECT_FALSE(i[0]->Equals(i[3]));
  EXPECT_TRUE(i[4]->Equals(i[5]));
}

TEST_F(InstanceEquality, GeometryInstanceComparesUrlAndKindFirst) {
  oxDAEInstanceGeometry a, b;
  a.url = b.url = "#g";
  EXPECT_TRUE(a.Equals(&b));
  b.url = "#h";
  EXPECT_FALSE(a.Equals(&b));
  oxDAEInstance plain(EToken::GEOMETRY);
  plain.url = "#g";
  EXPECT_TRUE(a.Equals(&plain));
  plain.kind = EToken::NODE;
  EXPECT_FALSE(a.Equals(&plain));
  EXPECT_FALSE(a.Equals(nullptr));
}

TEST_F(InstanceEquality, InstanceMaterialsCompareTargetAndBindings) {
  oxDAEInstanceMaterial a, b;
  a.target = b.target = "#red";
  a.symbol = "one";
  b.symbol = "two";
  EXPECT_TRUE(a.Equals(&b));
  a.bindings["UV"] = "x";
  EXPECT_FALSE(a.Equals(&b));
  b.bindings["UV"] = "y";
  EXPECT_FALSE(a.Equals(&b));
  b.bindings["UV"] = "x";
  EXPECT_TRUE(a.Equals(&b));
  a.vertexInputBindings["CH"] = {"TEXCOORD", 1};
  b.vertexInputBindings["CH"] = {"TEXCOORD", 2};
  EXPECT_FALSE(a.Equals(&b));
  b.vertexInputBindings["CH"].inputSet = 1;
  EXPECT_TRUE(a.Equals(&b));
  b.vertexInputBindings["CH"].inputSemantic = "UV";
  EXPECT_FALSE(a.Equals(&b));
  b.vertexInputBindings["CH"].inputSemantic = "TEXCOORD";
  b.target = "#blue";
  EXPECT_FALSE(a.Equals(&b));
  const oxDAEInstance notAMaterial(EToken::MATERIAL);
  EXPECT_FALSE(a.Equals(&notAMaterial));
  EXPECT_FALSE(a.Equals(nullptr));
}

// --- Writing -------------------------------------------------------------------------

OX_DOCUMENT_SUITE(InstanceWriting);

TEST_F(InstanceWriting, InstanceNodeOpensAnElementWithAnEmptyName) {
  oxDAEInstance instance(EToken::NODE);
  instance.url = "#root";
  EXPECT_EQ(oxDAEInstance::TagOfKind(EToken::NODE), "");
  EXPECT_EQ(WrittenAlone(document, instance), "<holder/>\n");
}

TEST_F(InstanceWriting, OtherInstancesAreWrittenUnderTheTagOfTheirKind) {
  oxDAEInstance light(EToken::LIGHT);
  light.url = "#lamp";
  EXPECT_EQ(WrittenAlone(document, light),
            "<holder>\n  <instance_light url=\"#lamp\"/>\n</holder>\n");
}

TEST_XML(InstanceWriting, GeometryInstanceWritesItsBindMaterialWithoutVertexInputs,
         Scene(R"(<instance_geometry url="#g"><bind_material>
                    <param sid="p" type="float">0.5</param>
                    <technique_common>
                      <instance_material symbol="mat0" target="#red">
                        <bind semantic="UV" target="/n/uv"/>
                        <bind semantic="NORMALS" target="/n/normals"/>
                        <bind_vertex_input semantic="CH" input_semantic="TEXCOORD" input_set="1"/>
                      </instance_material>
                    </technique_common>
                  </bind_material></instance_geometry>)")) {
  oxDAEInstanceGeometry* instance = Only(All<oxDAEInstanceGeometry>());
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(WrittenAlone(document, *instance), R"(<holder>
  <instance_geometry url="#g">
    <bind_material>
      <param type="float">0.5</param>
      <technique_common>
        <instance_material symbol="mat0" target="#red">
          <bind semantic="NORMALS" target="/n/normals"/>
          <bind semantic="UV" target="/n/uv"/>
        </instance_material>
      </technique_common>
    </bind_material>
  </instance_geometry>
</holder>
)");
}

TEST_XML(InstanceWriting, GeometryInstanceWithoutBindMaterialIsWrittenEmpty,
         Scene(R"(<instance_geometry url="#g"/>)")) {
  oxDAEInstanceGeometry* instance = Only(All<oxDAEInstanceGeometry>());
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(WrittenAlone(document, *instance),
            "<holder>\n  <instance_geometry url=\"#g\"/>\n</holder>\n");
}

TEST_XML(InstanceWriting, ControllerInstanceWritesItsSkeletonsAndBindMaterial,
         Scene(R"(<instance_controller url="#skin"><skeleton>#root</skeleton>
                    <bind_material><technique_common/></bind_material>
                  </instance_controller>)")) {
  oxDAEInstanceController* instance = Only(All<oxDAEInstanceController>());
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(WrittenAlone(document, *instance), R"(<holder>
  <instance_controller url="#skin">
    <skeleton>#root</skeleton>
    <bind_material>
      <technique_common/>
    </bind_material>
  </instance_controller>
</holder>
)");
}

TEST_XML(InstanceWriting, RoundTripKeepsInstancesAndMaterialBinding, Scene(R"(
  <instance_geometry url="#g"><bind_material><technique_common>
    <instance_material symbol="mat0" target="#red">
      <bind semantic="UV" target="/n/uv"/><bind semantic="N" target="/n/n"/>
      <bind_vertex_input semantic="CH" input_semantic="TEXCOORD" input_set="1"/>
    </instance_material>
    <instance_material symbol="mat1" target="#blue"/>
  </technique_common></bind_material></instance_geometry>
  <instance_controller url="#skin"><skeleton>#root</skeleton></instance_controller>
  <instance_light url="#lamp"/><instance_node url="#root"/>)")) {
  ASSERT_EQ(rc, 0);
  const std::string saved = SaveText();
  EXPECT_EQ(saved.find("instance_node"), std::string::npos);
  ASSERT_EQ(LoadText(saved), 0);
  EXPECT_EQ(log.entries, kNoLog);
  const oxDAEVisualScene* scene = Find<oxDAEVisualScene>("#vs");
  ASSERT_NE(scene, nullptr);
  ASSERT_EQ(scene->nodes.size(), 2u);
  EXPECT_EQ(scene->nodes[0], Find<oxDAENode>("#n"));
  EXPECT_EQ(scene->nodes[1], Find<oxDAENode>("#root"));
  const oxDAEInstanceGeometry* geometry = Only(All<oxDAEInstanceGeometry>());
  ASSERT_NE(geometry, nullptr);
  EXPECT_EQ(geometry->target, Find<oxDAEGeometry>("#g"));
  ASSERT_NE(geometry->bindMaterial, nullptr);
  ASSERT_NE(geometry->bindMaterial->techniqueCommon, nullptr);
  const auto& materials = geometry->bindMaterial->techniqueCommon->instanceMaterials;
  ASSERT_EQ(materials.size(), 2u);
  EXPECT_EQ(materials[0]->symbol, "mat0");
  EXPECT_EQ(materials[0]->material, Find<oxDAEMaterial>("#red"));
  EXPECT_EQ(materials[0]->bindings, (oxHash<oxString, oxString>{{"UV", "/n/uv"}, {"N", "/n/n"}}));
  EXPECT_TRUE(materials[0]->vertexInputBindings.empty());
  EXPECT_EQ(materials[1]->symbol, "mat1");
  EXPECT_EQ(materials[1]->material, Find<oxDAEMaterial>("#blue"));
  const oxDAEInstanceController* controller = Only(All<oxDAEInstanceController>());
  ASSERT_NE(controller, nullptr);
  EXPECT_EQ(controller->target, Find<oxDAEController>("#skin"));
  EXPECT_EQ(controller->skeletonNodes, (oxArray<oxDAENode*>{Find<oxDAENode>("#root")}));
  EXPECT_EQ(SaveText(), saved);
}

// --- Visual scenes -------------------------------------------------------------------

OX_DOCUMENT_SUITE(VisualSceneReading);

TEST_XML(VisualSceneReading, NodesAreKeptInOrderAndExtraIsSkipped,
         Collada(R"(<library_visual_scenes><visual_scene id="vs" name="Scene">
                      <node id="a"/><extra><technique profile="X"/></extra><node id="b"/>
                    </visual_scene></library_visual_scenes>)")) {
  const oxDAEVisualScene* scene = Find<oxDAEVisualScene>("#vs");
  ASSERT_NE(scene, nullptr);
  EXPECT_EQ(scene->name, "Scene");
  EXPECT_EQ(scene->nodes, (oxArray<oxDAENode*>{Find<oxDAENode>("#a"), Find<oxDAENode>("#b")}));
  EXPECT_EQ(scene->nodes.at(0)->parent, scene);
  EXPECT_TRUE(scene->extras.empty());
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(VisualSceneReading, UnknownChildIsWarnedWithVisualScene,
         Collada(R"(<library_visual_scenes><visual_scene id="vs"><evaluate_scene/>
                    </visual_scene></library_visual_scenes>)")) {
  EXPECT_EQ(log.entries,
            (std::vector{Warning("unknown element <evaluate_scene> in <visual_scene>")}));
}

TEST_XML(VisualSceneReading, VisualSceneWithoutIdDoesNotTakeItsName,
         Collada(R"(<library_visual_scenes><visual_scene name="Main"/></library_visual_scenes>)")) {
  EXPECT_EQ(document.ResolveURI("#Main"), nullptr);
  const oxDAEVisualScene* scene = Only(All<oxDAEVisualScene>());
  ASSERT_NE(scene, nullptr);
  EXPECT_EQ(scene->id, "");
}

TEST_XML(VisualSceneReading, VisualSceneIsWrittenWithItsNodes,
         Collada(R"(<library_visual_scenes><visual_scene id="vs" name="S"><node id="a"/>
                    </visual_scene><visual_scene id="empty"/></library_visual_scenes>)")) {
  oxDAEVisualScene* scene = Find<oxDAEVisualScene>("#vs");
  ASSERT_NE(scene, nullptr);
  // The node's own attributes are the node's business: only its place is checked.
  const std::string written = WrittenAlone(document, *scene);
  EXPECT_TRUE(
      written.starts_with("<holder>\n  <visual_scene name=\"S\" id=\"vs\">\n    <node id=\"a\""))
      << written;
  EXPECT_TRUE(written.ends_with("/>\n  </visual_scene>\n</holder>\n")) << written;
  EXPECT_EQ(WrittenAlone(document, *Find<oxDAEVisualScene>("#empty")),
            "<holder>\n  <visual_scene id=\"empty\"/>\n</holder>\n");
}
