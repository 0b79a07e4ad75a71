// The techniques of the Maya, 3ds Max, FCollada and NVIDIA exporters, read
// under their owners from whole documents and written on their own.
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::kNoLog;
using oxtest::Warning;

namespace {

// An asset naming `tool` as the authoring tool.
std::string Asset(std::string_view tool) {
  return "<asset><contributor><authoring_tool>" + std::string(tool) +
         "</authoring_tool></contributor></asset>";
}

// The first technique of the first extra of `owner`, as a T (null when
// there is none or it is of another class).
template <class T>
T* ToolOf(const oxDAEElement* owner) {
  if (!owner || owner->extras.empty() || owner->extras[0]->techniques.empty()) return nullptr;
  return T::DynamicCast(owner->extras[0]->techniques[0]);
}

const oxDAEFxProfileCommon::Technique* CommonTechniqueOf(const oxDAEEffect* effect) {
  if (!effect || effect->profiles.empty()) return nullptr;
  const auto* common = oxDAEFxProfileCommon::DynamicCast(effect->profiles[0]);
  return common ? common->technique : nullptr;
}

bool IsUnresolved(const oxDAEFile& document, const oxDAEBaseElement* element) {
  for (const oxDAEFile::Unresolved& u : document.GetUnresolved()) {
    if (u.element == element) return true;
  }
  return false;
}

struct AttributeCase {
  std::string name;
  std::string type;
  std::string value;
  bool operator==(const AttributeCase&) const = default;
};

std::vector<AttributeCase> Entries(const oxDAEAttributes& attributes) {
  std::vector<AttributeCase> out;
  for (const auto& e : attributes.GetEntries())
    out.push_back({e.name, std::string(e.type->GetName()), e.value.GetStringValue()});
  return out;
}

void PrintTo(const AttributeCase& a, std::ostream* os) {
  *os << a.name << ":" << a.type << "=" << a.value;
}

// A node "n" whose FCOLLADA technique holds <user_properties>`text`.
std::string UserProperties(std::string_view text) {
  return Collada(
      R"(<library_visual_scenes><visual_scene id="vs"><node id="n"><extra><technique profile="FCOLLADA"><user_properties>)" +
      std::string(text) +
      "</user_properties></technique></extra></node></visual_scene></library_visual_scenes>");
}

std::string Repeated(std::string_view text, int times) {
  std::string out;
  out.reserve(text.size() * static_cast<size_t>(times));
  for (int i = 0; i < times; ++i)
    out += text;
  return out;
}

}  // namespace

// --- Maya ----------------------------------------------------------------------------------

OX_DOCUMENT_SUITE(MayaTechniques);

// A Maya document: a file texture on the diffuse colour with its placement,
// and the Maya maps of the technique whose bump reaches its image through a
// sampler and a surface.
TEST_XML(MayaTechniques, PlacementAndMapsOfAMayaEffect,
         Collada(Asset("Maya 8.5 | ColladaMaya v3.02") + R"(
  <library_images><image id="file1"><init_from>brick.png</init_from></image>
    <image id="file2"><init_from>brick_bump.png</init_from></image></library_images>
  <library_effects><effect id="brick-fx"><profile_COMMON>
    <newparam sid="file2-surface"><surface type="2D"><init_from>file2</init_from></surface></newparam>
    <newparam sid="file2-sampler"><sampler2D><source>file2-surface</source></sampler2D></newparam>
    <technique sid="common"><phong>
      <diffuse><texture texture="file1" texcoord="TEX0"><extra><technique profile="MAYA">
        <wrapU sid="wrapU0">0</wrapU><repeatU>2</repeatU><repeatV>3</repeatV><offsetV>0.25</offsetV>
        <rotateUV>45</rotateUV><mirrorV>1</mirrorV><translateFrameU>-0.5</translateFrameU>
      </technique></extra></texture></diffuse>
    </phong>
    <extra><technique profile="MAYA">
      <spec_level><float>0.75</float></spec_level>
      <bump><texture texture="file2-sampler" texcoord="TEX0"/></bump>
    </technique></extra></technique>
  </profile_COMMON></effect></library_effects>)")) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(log.entries, kNoLog);
  const auto* technique = CommonTechniqueOf(Find<oxDAEEffect>("#brick-fx"));
  ASSERT_NE(technique, nullptr);
  ASSERT_NE(technique->diffuse, nullptr);
  const auto* placement = ToolOf<oxDAETechTexture_Maya>(technique->diffuse);
  ASSERT_NE(placement, nullptr);
  EXPECT_EQ(placement->profile, "MAYA");
  EXPECT_EQ(placement->wrapU, 0.0f);
  EXPECT_EQ(placement->wrapV, 1.0f);
  EXPECT_EQ(placement->repeatU, 2.0f);
  EXPECT_EQ(placement->repeatV, 3.0f);
  EXPECT_EQ(placement->offsetU, 0.0f);
  EXPECT_EQ(placement->offsetV, 0.25f);
  EXPECT_EQ(placement->rotateUV, 45.0f);
  EXPECT_EQ(placement->mirrorU, 0.0f);
  EXPECT_EQ(placement->mirrorV, 1.0f);
  EXPECT_EQ(placement->translateFrameU, -0.5f);
  EXPECT_EQ(placement->translateFrameV, 0.0f);
  EXPECT_EQ(placement->rotateFrame, 0.0f);

  const auto* maps = ToolOf<oxDAETechMaps_Maya>(technique);
  ASSERT_NE(maps, nullptr);
  ASSERT_NE(maps->specLevel, nullptr);
  EXPECT_TRUE(maps->specLevel->IsFloat());
  EXPECT_EQ(maps->specLevel->value, 0.75f);
  ASSERT_NE(maps->bump, nullptr);
  EXPECT_EQ(maps->bump->parent, maps);
  EXPECT_TRUE(maps->bump->IsTexture());
  EXPECT_EQ(maps->bump->image, Find<oxDAEImage>("#file2"));
  EXPECT_NE(maps->bump->image, nullptr);
  EXPECT_FALSE(IsUnresolved(document, maps->bump));
  EXPECT_EQ(maps->shininess, nullptr);
  EXPECT_EQ(maps->displacement, nullptr);
  EXPECT_EQ(maps->filterColor, nullptr);
}

TEST_XML(MayaTechniques, UnknownChildOfATexturePlacementNamesTechnique,
         Collada(Asset("ColladaMaya v3.05") + R"(
  <library_effects><effect id="fx"><profile_COMMON><technique sid="t"><lambert>
    <diffuse><texture texture="img" texcoord="UV0"><extra><technique profile="MAYA">
      <coverageU>0.5</coverageU><repeatU>4</repeatU></technique></extra></texture></diffuse>
  </lambert></technique></profile_COMMON></effect></library_effects>)")) {
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <coverageU> in <technique>")}));
  const auto* placement =
      ToolOf<oxDAETechTexture_Maya>(CommonTechniqueOf(Find<oxDAEEffect>("#fx"))->diffuse);
  ASSERT_NE(placement, nullptr);
  EXPECT_EQ(placement->repeatU, 4.0f);
}

TEST_XML(MayaTechniques, PlacementIsNotReadInADocumentOfAnotherTool,
         Collada(Asset("Blender 2.79") + R"(
  <library_effects><effect id="fx"><profile_COMMON><technique sid="t"><lambert>
    <diffuse><texture texture="img" texcoord="UV0"><extra><technique profile="MAYA">
      <coverageU>0.5</coverageU></technique></extra></texture></diffuse>
  </lambert></technique></profile_COMMON></effect></library_effects>)")) {
  const auto* diffuse = CommonTechniqueOf(Find<oxDAEEffect>("#fx"))->diffuse;
  ASSERT_EQ(diffuse->extras.size(), 1u);
  EXPECT_TRUE(diffuse->extras[0]->techniques.empty());
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(MayaTechniques, MayaTechniqueOfALightCreatesNothing,
         Collada(Asset("ColladaMaya v3.05") + R"(
  <library_lights><light id="l"><technique_common><point/></technique_common>
    <extra><technique profile="MAYA"><intensity>3</intensity></technique></extra></light>
  </library_lights>)")) {
  const auto* light = Find<oxDAELight>("#l");
  ASSERT_NE(light, nullptr);
  ASSERT_EQ(light->extras.size(), 1u);
  EXPECT_TRUE(light->extras[0]->techniques.empty());
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(MayaTechniques, PlacementNumberThatDoesNotReadKeepsItsValue,
         Collada(Asset("ColladaMaya v3.05") + R"(
  <library_effects><effect id="fx"><profile_COMMON><technique sid="t"><lambert>
    <diffuse><texture texture="img" texcoord="UV0"><extra><technique profile="MAYA">
      <wrapU>TRUE</wrapU><repeatU>x</repeatU></technique></extra></texture></diffuse>
  </lambert></technique></profile_COMMON></effect></library_effects>)")) {
  const auto* placement =
      ToolOf<oxDAETechTexture_Maya>(CommonTechniqueOf(Find<oxDAEEffect>("#fx"))->diffuse);
  ASSERT_NE(placement, nullptr);
  EXPECT_EQ(placement->wrapU, 1.0f);
  EXPECT_EQ(placement->repeatU, 1.0f);
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value 'TRUE' in <wrapU>"),
                                      Warning("invalid value 'x' in <repeatU>")}));
}

TEST_XML(MayaTechniques, ALaterMapReplacesAnEarlierOne, Collada(R"(
  <library_effects><effect id="fx"><profile_COMMON><technique sid="t"><constant/>
    <extra><technique profile="MAYA">
      <filter_color><color>1 0 0 1</color></filter_color>
      <filter_color><color>0 1 0 1</color></filter_color>
      <shininess><color>0.5 0.5 0.5 1</color></shininess>
      <displacement><texture texture="nowhere" texcoord="UV0"/></displacement>
      <sheen/></technique></extra>
  </technique></profile_COMMON></effect></library_effects>)")) {
  const auto* maps = ToolOf<oxDAETechMaps_Maya>(CommonTechniqueOf(Find<oxDAEEffect>("#fx")));
  ASSERT_NE(maps, nullptr);
  ASSERT_NE(maps->filterColor, nullptr);
  EXPECT_EQ(maps->filterColor->color.g, 1.0f);
  EXPECT_EQ(maps->filterColor->color.r, 0.0f);
  EXPECT_EQ(All<oxDAEFxColorOrTextureType>().size(), 4u);
  ASSERT_NE(maps->shininess, nullptr);
  EXPECT_EQ(maps->shininess->color.b, 0.5f);
  ASSERT_NE(maps->displacement, nullptr);
  EXPECT_EQ(maps->displacement->image, nullptr);
  EXPECT_TRUE(IsUnresolved(document, maps->displacement));
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <sheen> in <technique>")}));
}

class MayaDynamicAttributes : public oxtest::DocumentTest {};

TEST_F(MayaDynamicAttributes, EveryChildIsOneAttributeFoundByTagThenShortName) {
  const auto* technique = ReadFragment<oxDAETechDynAttr_Maya>(R"(<technique profile="MAYA">
      <dynamic_attributes>
        <blinkRate shortName="br" type="float">2.5</blinkRate>
        <label shortName="blinkRate" type="string">lamp</label>
        <count type="int">3</count>
      </dynamic_attributes><param name="p" type="float">1</param><notes/></technique>)");
  EXPECT_EQ(technique->profile, "MAYA");
  ASSERT_EQ(technique->attributes.size(), 3u);
  EXPECT_EQ(technique->attributes[0]->elementName, "blinkRate");
  EXPECT_EQ(technique->attributes[0]->parent, technique);
  EXPECT_EQ(technique->parameters.size(), 1u);
  EXPECT_EQ(technique->GetAttribute("blinkRate"), technique->attributes[0]);
  EXPECT_EQ(technique->GetAttribute("br"), technique->attributes[0]);
  EXPECT_EQ(technique->GetAttribute("count"), technique->attributes[2]);
  EXPECT_EQ(technique->GetAttribute("lamp"), nullptr);
  EXPECT_EQ(technique->GetAttribute(""), nullptr);
  EXPECT_EQ(technique->attributes[0]->floatValue, 2.5f);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <notes> in <technique>")}));
}

// --- 3ds Max --------------------------------------------------------------------------------

OX_DOCUMENT_SUITE(Max3DTechniques);

// A 3ds Max document: effect flags, a texture amount and a light's
// attenuation.
TEST_XML(Max3DTechniques, FlagsAmountAndLightOfAMaxDocument,
         Collada(Asset("3dsmax 9 - Feeling ColladaMax v3.05B") + R"(
  <library_images><image id="wood"><init_from>wood.jpg</init_from></image></library_images>
  <library_effects><effect id="wood-fx"><profile_COMMON><technique sid="common"><blinn>
      <diffuse><texture texture="wood" texcoord="CHANNEL1"><extra><technique profile="MAX3D">
        <amount>0.4</amount></technique></extra></texture></diffuse>
    </blinn></technique></profile_COMMON>
    <extra><technique profile="MAX3D"><faceted>0</faceted><double_sided>1</double_sided>
      <wireframe>0</wireframe><face_map>0</face_map></technique></extra></effect></library_effects>
  <library_lights><light id="omni"><technique_common><point/></technique_common>
    <extra><technique profile="MAX3D"><decay_type>2</decay_type><decay_start>40</decay_start>
      <use_near_attenuation>1</use_near_attenuation><near_attenuation_start>1.5</near_attenuation_start>
      <near_attenuation_end>10</near_attenuation_end><use_far_attenuation>1</use_far_attenuation>
      <far_attenuation_start>80</far_attenuation_start><far_attenuation_end>200</far_attenuation_end>
      <shadow_map>1</shadow_map></technique></extra></light></library_lights>)")) {
  ASSERT_EQ(rc, 0);
  const auto* effect = Find<oxDAEEffect>("#wood-fx");
  const auto* flags = ToolOf<oxDAETechEffect_Max3D>(effect);
  ASSERT_NE(flags, nullptr);
  EXPECT_FALSE(flags->faceted);
  EXPECT_TRUE(flags->doubleSided);
  EXPECT_FALSE(flags->wireframe);
  EXPECT_FALSE(flags->faceMap);

  const auto* diffuse = CommonTechniqueOf(effect)->diffuse;
  const auto* amount = ToolOf<oxDAETechTexture_Max3D>(diffuse);
  ASSERT_NE(amount, nullptr);
  EXPECT_EQ(amount->GetAmount(), 0.4f);
  EXPECT_EQ(diffuse->image, Find<oxDAEImage>("#wood"));

  const auto* light = ToolOf<oxDAETechLight_Max3D>(Find<oxDAELight>("#omni"));
  ASSERT_NE(light, nullptr);
  EXPECT_EQ(light->decayType, 2.0f);
  EXPECT_EQ(light->decayStart, 40.0f);
  EXPECT_EQ(light->useNearAttenuation, 1.0f);
  EXPECT_EQ(light->nearAttenuationStart, 1.5f);
  EXPECT_EQ(light->nearAttenuationEnd, 10.0f);
  EXPECT_EQ(light->useFarAttenuation, 1.0f);
  EXPECT_EQ(light->farAttenuationStart, 80.0f);
  EXPECT_EQ(light->farAttenuationEnd, 200.0f);
  EXPECT_EQ(
      log.entries,
      (std::vector{Warning("unknown element <shadow_map> in <technique profile=\"MAX3D\">")}));
}

TEST_XML(Max3DTechniques, DoubleSidedSetsOnlyTheSecondFlag, Collada(R"(
  <library_effects><effect id="fx"><profile_COMMON/><extra><technique profile="MAX3D">
    <double_sided>1</double_sided><wireframe>0</wireframe></technique></extra></effect>
  </library_effects>)")) {
  const auto* flags = ToolOf<oxDAETechEffect_Max3D>(Find<oxDAEEffect>("#fx"));
  ASSERT_NE(flags, nullptr);
  EXPECT_FALSE(flags->faceted);
  EXPECT_TRUE(flags->doubleSided);
  EXPECT_FALSE(flags->wireframe);
  EXPECT_FALSE(flags->faceMap);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(Max3DTechniques, AnyNonZeroIntegerSetsAFlagAndOtherTextKeepsIt, Collada(R"(
  <library_effects><effect id="fx"><profile_COMMON/><extra><technique profile="MAX3D">
    <faceted>-7</faceted><wireframe>yes</wireframe><face_map/></technique></extra></effect>
  </library_effects>)")) {
  const auto* flags = ToolOf<oxDAETechEffect_Max3D>(Find<oxDAEEffect>("#fx"));
  ASSERT_NE(flags, nullptr);
  EXPECT_TRUE(flags->faceted);
  EXPECT_FALSE(flags->wireframe);
  EXPECT_FALSE(flags->faceMap);
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value 'yes' in <wireframe>")}));
}

// --- FCollada -------------------------------------------------------------------------------

OX_DOCUMENT_SUITE(FColladaTechniques);

// An FCollada document: light values, node user properties, material custom
// attributes, maps with an emission level, and a geometry technique.
TEST_XML(FColladaTechniques, LightNodeMaterialMapsAndGeometryOfAnFColladaDocument,
         Collada(Asset("FCollada exporter 3.05") + R"(
  <library_lights><light id="spot"><technique_common><spot/></technique_common>
    <extra><technique profile="FCOLLADA"><intensity>2.5</intensity><outer_cone>50</outer_cone>
      <aspect_ratio>1.5</aspect_ratio><dropoff>0.1</dropoff><penumbra_angle>5</penumbra_angle>
      <target_default_dist>12</target_default_dist></technique></extra></light></library_lights>
  <library_images><image id="glow"><init_from>glow.png</init_from></image></library_images>
  <library_effects><effect id="fx"><profile_COMMON><technique sid="t"><lambert/>
    <extra><technique profile="FCOLLADA"><emission_level><float>3</float></emission_level>
      <bump><texture texture="glow" texcoord="UV0"/></bump></technique></extra>
  </technique></profile_COMMON></effect></library_effects>
  <library_materials><material id="mat"><instance_effect url="#fx"/>
    <extra><technique profile="FCOLLADA"><dynamic_attributes><Custom_Attributes>
      <roughness type="float">0.3</roughness><tint type="float3">1 0.5 0</tint>
      <label type="string">painted</label><layers type="int">2</layers>
    </Custom_Attributes></dynamic_attributes></technique></extra></material></library_materials>
  <library_geometries><geometry id="g"><mesh/><extra><technique profile="FCOLLADA">
    <param name="detail" type="int">2</param><double_sided>1</double_sided></technique></extra>
  </geometry></library_geometries>
  <library_visual_scenes><visual_scene id="vs"><node id="box"><extra><technique profile="FCOLLADA">
    <user_properties>%3CAttributes%3E%3CItem name=%22mass%22 type=%22float%22%3E4.5%3C/Item%3E&amp;#13;
%3CItem name=%22tag%22 type=%22string%22%3Ecrate%3C/Item%3E%3C/Attributes%3E</user_properties>
  </technique></extra></node></visual_scene></library_visual_scenes>)")) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(log.entries, kNoLog);

  const auto* light = ToolOf<oxDAETechLight_FCOLLADA>(Find<oxDAELight>("#spot"));
  ASSERT_NE(light, nullptr);
  EXPECT_EQ(light->intensity, 2.5f);
  EXPECT_EQ(light->outerCone, 50.0f);
  EXPECT_EQ(light->aspectRatio, 1.5f);
  EXPECT_EQ(light->dropoff, 0.1f);
  EXPECT_EQ(light->penumbraAngle, 5.0f);
  EXPECT_EQ(light->targetDefaultDist, 12.0f);

  const auto* maps = ToolOf<oxDAETechMaps_FCOLLADA>(CommonTechniqueOf(Find<oxDAEEffect>("#fx")));
  ASSERT_NE(maps, nullptr);
  ASSERT_NE(maps->emissionLevel, nullptr);
  EXPECT_TRUE(maps->emissionLevel->IsFloat());
  EXPECT_EQ(maps->emissionLevel->value, 3.0f);
  ASSERT_NE(maps->bump, nullptr);
  EXPECT_EQ(maps->bump->image, Find<oxDAEImage>("#glow"));
  EXPECT_EQ(maps->specLevel, nullptr);

  const auto* material = ToolOf<oxDAETechMaterial_FCOLLADA>(Find<oxDAEMaterial>("#mat"));
  ASSERT_NE(material, nullptr);
  EXPECT_EQ(Entries(material->GetAttributes()),
            (std::vector<AttributeCase>{{"roughness", "float", "0.3"},
                                        {"tint", "oxVec3", "1 0.5 0"},
                                        {"label", "oxString", "painted"},
                                        {"layers", "int32", "2"}}));
  EXPECT_EQ(All<oxDAECustomAttributes>().size(), 1u);
  EXPECT_EQ(All<oxDAECustomAttributes>()[0]->parent, material);

  const auto* geometry = ToolOf<oxDAETechGeometry_FCOLLADA>(Find<oxDAEGeometry>("#g"));
  ASSERT_NE(geometry, nullptr);
  ASSERT_EQ(geometry->parameters.size(), 1u);
  EXPECT_EQ(geometry->parameters[0]->intValue, 2);

  const auto* node = ToolOf<oxDAETechNode_FCOLLADA>(Find<oxDAENode>("#box"));
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(Entries(node->GetAttributes()),
            (std::vector<AttributeCase>{{"mass", "float", "4.5"}, {"tag", "oxString", "crate"}}));
}

TEST_XML(
    FColladaTechniques, EscapedUserPropertiesAreReadAsAnAttributesElement,
    UserProperties("%3CAttributes%3E%3CItem name=%22size%22 type=%22int32%22%3E7%3C/Item%3E%3C/"
                   "Attributes%3E")) {
  const auto* node = ToolOf<oxDAETechNode_FCOLLADA>(Find<oxDAENode>("#n"));
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(Entries(node->GetAttributes()), (std::vector<AttributeCase>{{"size", "int32", "7"}}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(FColladaTechniques, UserPropertiesWithEmptyStringAndEmptyFloat,
         UserProperties("%3CAttributes%3E%3CItem name=%22s%22 type=%22string%22%3E%3C/Item%3E"
                        "%3CItem name=%22f%22 type=%22float%22%3E%3C/Item%3E%3C/Attributes%3E")) {
  const auto* node = ToolOf<oxDAETechNode_FCOLLADA>(Find<oxDAENode>("#n"));
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(Entries(node->GetAttributes()), (std::vector<AttributeCase>{{"s", "oxString", ""}}));
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid property item")}));
}

TEST_XML(
    FColladaTechniques, DuplicatedUserPropertyFindsTheFirst,
    UserProperties("%3CQR_Attributes%3E%3CItem name=%22a%22 type=%22int32%22%3E1%3C/Item%3E"
                   "%3CItem name=%22a%22 type=%22int32%22%3E2%3C/Item%3E%3C/QR_Attributes%3E")) {
  const auto* node = ToolOf<oxDAETechNode_FCOLLADA>(Find<oxDAENode>("#n"));
  ASSERT_NE(node, nullptr);
  unsigned int index = 9;
  EXPECT_TRUE(node->GetAttributes()._GetAttributeIndex("a", index));
  EXPECT_EQ(index, 0u);
  EXPECT_EQ(node->GetAttributes().GetEntries()[index].value.GetStringValue(), "1");
}

TEST_XML(
    FColladaTechniques, UserPropertiesThatAreNotXMLAddNothing,
    UserProperties("%3CAttributes%3E%3CItem name=%22a%22 type=%22int32%22%3E1%3C/Attributes%3E")) {
  const auto* node = ToolOf<oxDAETechNode_FCOLLADA>(Find<oxDAENode>("#n"));
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->GetAttributes().GetCount(), 0u);
  EXPECT_EQ(log.entries, (std::vector{Error("cannot parse the in-memory document: Start-end tags "
                                            "mismatch at byte offset 82")}));
}

TEST_XML(FColladaTechniques, DeeplyNestedUserPropertiesAreBounded,
         UserProperties("%3CAttributes%3E" + Repeated("%3Ca%3E", 100000) +
                        Repeated("%3C/a%3E", 100000) +
                        "%3CItem name=%22k%22 type=%22int32%22%3E5%3C/Item%3E%3C/Attributes%3E")) {
  ASSERT_EQ(rc, 0);
  const auto* node = ToolOf<oxDAETechNode_FCOLLADA>(Find<oxDAENode>("#n"));
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(Entries(node->GetAttributes()), (std::vector<AttributeCase>{{"k", "int32", "5"}}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(FColladaTechniques, UnknownChildrenNameTheirFixedParents, Collada(R"(
  <library_lights><light id="l"><technique_common><ambient/></technique_common>
    <extra><technique profile="FCOLLADA"><intensity>0.5</intensity><falloff>1</falloff>
    </technique></extra></light></library_lights>
  <library_materials><material id="m"><extra><technique profile="FCOLLADA">
    <dynamic_attributes><Custom_Attributes><gloss type="float">1</gloss></Custom_Attributes>
      <extra_attributes/></dynamic_attributes><Custom_Attributes/></technique></extra></material>
  </library_materials>)")) {
  EXPECT_EQ(ToolOf<oxDAETechLight_FCOLLADA>(Find<oxDAELight>("#l"))->intensity, 0.5f);
  EXPECT_EQ(Entries(ToolOf<oxDAETechMaterial_FCOLLADA>(Find<oxDAEMaterial>("#m"))->GetAttributes()),
            (std::vector<AttributeCase>{{"gloss", "float", "1"}}));
  EXPECT_EQ(log.entries,
            (std::vector{Warning("unknown element <falloff> in <technique profile=\"FCOLLADA\">"),
                         Warning("unknown element <extra_attributes> in <dynamic_attributes>"),
                         Warning("unknown element <Custom_Attributes> in <technique "
                                 "profile=\"FCOLLADA\">")}));
}

TEST(FColladaNodeTechnique, CleanUndoesTheEscapesInOrder) {
  oxString text("%3CItem name=%22a%22%3E&#13;x%3C/Item%3E");
  oxDAETechNode_FCOLLADA::_Clean(text);
  EXPECT_EQ(text, "<Item name=\"a\">x</Item>");
  // "&#13;" goes last, so the escape it splits stays as it is.
  oxString split("%&#13;3C");
  oxDAETechNode_FCOLLADA::_Clean(split);
  EXPECT_EQ(split, "%3C");
}

// --- NVIDIA ---------------------------------------------------------------------------------

OX_DOCUMENT_SUITE(NvTechniques);

TEST_XML(NvTechniques, ImportOfAnEffectKeepsProfileAndCorrectedURL, Collada(R"(
  <library_effects><effect id="glass"><profile_COMMON/>
    <extra><technique profile="NV_import"><import url="file://C|/shaders/glass.cgfx" profile="fx"/>
      <param name="p" type="float">1</param><pass/></technique></extra></effect>
  </library_effects>)")) {
  const auto* nv = ToolOf<oxDAETechEffect_Nv>(Find<oxDAEEffect>("#glass"));
  ASSERT_NE(nv, nullptr);
  EXPECT_EQ(nv->profile, "NV_import");
  EXPECT_EQ(nv->GetImportProfile(), "fx");
  EXPECT_EQ(nv->GetImportURI(), "file:///C:/shaders/glass.cgfx");
  EXPECT_EQ(nv->parameters.size(), 1u);
  EXPECT_EQ(log.entries, (std::vector{Warning("element not supported in <import>")}));
}

// --- Defaults and writing -------------------------------------------------------------------

TEST(ToolTechniqueDefaults, FieldsBeforeReading) {
  const oxDAETechTexture_Maya placement;
  EXPECT_EQ(placement.wrapU, 1.0f);
  EXPECT_EQ(placement.repeatV, 1.0f);
  EXPECT_EQ(placement.rotateUV, 0.0f);
  EXPECT_EQ(oxDAETechTexture_Max3D().GetAmount(), 1.0f);
  EXPECT_FALSE(oxDAETechEffect_Max3D().doubleSided);
  EXPECT_EQ(oxDAETechLight_Max3D().farAttenuationEnd, 0.0f);
  EXPECT_EQ(oxDAETechLight_FCOLLADA().intensity, 1.0f);
  EXPECT_EQ(oxDAETechLight_FCOLLADA().aspectRatio, 1.0f);
  EXPECT_EQ(oxDAETechMaps_FCOLLADA().emissionLevel, nullptr);
  EXPECT_TRUE(oxDAETechEffect_Nv().GetImportURI().empty());
}

class ToolTechniqueWriting : public oxtest::DocumentTest {};

TEST_F(ToolTechniqueWriting, NumbersAndFlagsDifferingFromTheirDefaultsAreWritten) {
  oxDAETechTexture_Maya placement;
  placement.profile = "MAYA";
  placement.repeatU = 2.0f;
  placement.wrapV = 0.0f;
  EXPECT_EQ(Written([&] { placement.Write(document); }),
            "<w>\n  <technique profile=\"MAYA\">\n    <wrapV>0</wrapV>\n    <repeatU>2</repeatU>\n"
            "  </technique>\n</w>\n");
  oxDAETechEffect_Max3D flags;
  flags.profile = "MAX3D";
  flags.wireframe = true;
  EXPECT_EQ(Written([&] { flags.Write(document); }),
            "<w>\n  <technique profile=\"MAX3D\">\n    <wireframe>1</wireframe>\n"
            "  </technique>\n</w>\n");
}

TEST_F(ToolTechniqueWriting, ImportAndMapsAreWritten) {
  oxDAETechEffect_Nv nv;
  nv.profile = "NV_import";
  nv.importURI = "glass.cgfx";
  EXPECT_EQ(Written([&] { nv.Write(document); }),
            "<w>\n  <technique profile=\"NV_import\">\n    <import url=\"glass.cgfx\"/>\n"
            "  </technique>\n</w>\n");
  oxDAEFxFloatOrParamType level;
  level.SetFloat(2.0f);
  oxDAETechMaps_FCOLLADA maps;
  maps.profile = "FCOLLADA";
  maps.emissionLevel = &level;
  EXPECT_EQ(Written([&] { maps.Write(document); }),
            "<w>\n  <technique profile=\"FCOLLADA\">\n    <emission_level>\n      "
            "<float>2</float>\n    </emission_level>\n  </technique>\n</w>\n");
}

// --- Bad input -------------------------------------------------------------------------------

OX_DOCUMENT_SUITE(ToolTechniqueBadInput);

TEST_XML(ToolTechniqueBadInput, MegabyteProfileCreatesNoTechnique,
         Collada("<library_lights><light id=\"l\"><extra><technique profile=\"" +
                 std::string(1 << 20, 'M') +
                 "\"><intensity>2</intensity></technique></extra></light></library_lights>")) {
  ASSERT_EQ(rc, 0);
  const auto* light = Find<oxDAELight>("#l");
  ASSERT_NE(light, nullptr);
  ASSERT_EQ(light->extras.size(), 1u);
  EXPECT_TRUE(light->extras[0]->techniques.empty());
  EXPECT_EQ(log.entries, kNoLog);
}
