// Materials, instance effects, effects, their profiles and the common
// technique's values as read.
#include <algorithm>

#include "effect_markup.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::CommonProfile;
using oxtest::EffectOf;
using oxtest::Error;
using oxtest::Image1;
using oxtest::IsUnresolved;
using oxtest::kImages;
using oxtest::kNoLog;
using oxtest::SavedEffect;
using oxtest::Shading;
using oxtest::TechniqueOf;
using oxtest::Warning;
using Technique = oxDAEFxProfileCommon::Technique;
using EProfile = oxDAEFxProfile::EFxProfileType;

// --- <material> and <instance_effect> ----------------------------------------------

OX_DOCUMENT_SUITE(MaterialReading);

TEST_XML(MaterialReading, MaterialWithANameAndNoIdIsFoundByItsName,
         Collada(R"(<library_materials><material name="M"/></library_materials>)")) {
  ASSERT_EQ(rc, 0);
  const auto* material = Find<oxDAEMaterial>("#M");
  ASSERT_NE(material, nullptr);
  EXPECT_EQ(material->id, "M");
  EXPECT_EQ(material->name, "M");
  EXPECT_EQ(material->instanceEffect, nullptr);
  EXPECT_EQ(material->asset, nullptr);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(MaterialReading, AnIdIsKeptOverTheName,
         Collada(R"(<library_materials><material id="m" name="M"/></library_materials>)")) {
  EXPECT_NE(Find<oxDAEMaterial>("#m"), nullptr);
  EXPECT_EQ(Find<oxDAEMaterial>("#M"), nullptr);
}

TEST_XML(MaterialReading, InstanceEffectIsBoundToItsEffect, Collada(R"(
  <library_materials><material id="m"><asset><title>T</title></asset>
    <instance_effect url="#fx"/></material></library_materials>
  <library_effects><effect id="fx"/></library_effects>)")) {
  ASSERT_EQ(rc, 0);
  const auto* material = Find<oxDAEMaterial>("#m");
  ASSERT_NE(material, nullptr);
  ASSERT_NE(material->asset, nullptr);
  EXPECT_EQ(material->asset->title, "T");
  const oxDAEInstanceEffect* instance = material->instanceEffect;
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(instance->owner, material);
  EXPECT_EQ(instance->parent, material);
  EXPECT_EQ(instance->url, "#fx");
  EXPECT_EQ(instance->effect, Find<oxDAEEffect>("#fx"));
  EXPECT_NE(instance->effect, nullptr);
  EXPECT_TRUE(document.GetUnresolved().empty());
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(MaterialReading, InstanceEffectNamingSomethingElseStaysUnbound,
         Collada(std::string(kImages) + R"(<library_materials><material id="m">
           <instance_effect url="#img1"/></material>
           <material id="n"><instance_effect url="#nowhere"/></material></library_materials>)")) {
  ASSERT_EQ(rc, 0);
  const oxDAEInstanceEffect* image = Find<oxDAEMaterial>("#m")->instanceEffect;
  const oxDAEInstanceEffect* nowhere = Find<oxDAEMaterial>("#n")->instanceEffect;
  EXPECT_EQ(image->effect, nullptr);
  EXPECT_EQ(nowhere->effect, nullptr);
  ASSERT_EQ(document.GetUnresolved().size(), 2u);
  EXPECT_TRUE(IsUnresolved(document, image));
  EXPECT_TRUE(IsUnresolved(document, nowhere));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(MaterialReading, ASecondInstanceEffectReplacesTheFirst, Collada(R"(
  <library_materials><material id="m"><instance_effect url="#a"/><instance_effect url="#b"/>
  </material></library_materials>
  <library_effects><effect id="a"/><effect id="b"/></library_effects>)")) {
  const oxDAEMaterial* material = Find<oxDAEMaterial>("#m");
  ASSERT_NE(material->instanceEffect, nullptr);
  EXPECT_EQ(material->instanceEffect->url, "#b");
  EXPECT_EQ(material->instanceEffect->effect, Find<oxDAEEffect>("#b"));
  // The first stays in the document and is bound too.
  const auto instances = All<oxDAEInstanceEffect>();
  ASSERT_EQ(instances.size(), 2u);
  EXPECT_EQ(instances[0]->effect, Find<oxDAEEffect>("#a"));
}

TEST_XML(MaterialReading, UnknownChildrenOfAMaterialAreReported, Collada(R"(
  <library_materials><material id="m"><technique/><instance_effect url="#fx"/></material>
  </library_materials><library_effects><effect id="fx"/></library_effects>)")) {
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning("unknown element <technique> in <material>")}));
  EXPECT_NE(Find<oxDAEMaterial>("#m")->instanceEffect, nullptr);
}

TEST_XML(MaterialReading, MaterialExtrasChooseTheirToolTechnique, Collada(R"(
  <library_materials><material id="m"><extra><technique profile="FCOLLADA"/>
    <technique profile="OTHER"/></extra></material></library_materials>)")) {
  const oxDAEMaterial* material = Find<oxDAEMaterial>("#m");
  ASSERT_EQ(material->extras.size(), 1u);
  ASSERT_EQ(material->extras[0]->techniques.size(), 1u);
  EXPECT_NE(oxDAETechMaterial_FCOLLADA::DynamicCast(material->extras[0]->techniques[0]), nullptr);
  EXPECT_EQ(material->extras[0]->techniques[0]->profile, "FCOLLADA");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(MaterialReading, InstanceEffectKeepsHintsAndSetParamsAndReportsExtra, Collada(R"(
  <library_materials><material id="m"><instance_effect url="#fx">
    <technique_hint platform="PC" profile="GLSL" ref="t0"/>
    <setparam ref="x"><float>0.5</float></setparam>
    <extra/>
  </instance_effect></material></library_materials>)")) {
  const oxDAEInstanceEffect* instance = Find<oxDAEMaterial>("#m")->instanceEffect;
  ASSERT_EQ(instance->techniqueHints.size(), 1u);
  const oxDAETechniqueHint* hint = instance->techniqueHints[0];
  EXPECT_EQ(hint->parent, instance);
  EXPECT_EQ(hint->platform, "PC");
  EXPECT_EQ(hint->profile, "GLSL");
  EXPECT_EQ(hint->ref, "t0");
  ASSERT_EQ(instance->setParams.size(), 1u);
  EXPECT_EQ(instance->setParams[0]->ref, "x");
  EXPECT_EQ(instance->setParams[0]->GetFloatValue(), 0.5f);
  EXPECT_EQ(
      log.entries,
      (std::vector<oxtest::LogEntry>{Warning("unknown element <extra> in <instance_effect>")}));
}

TEST_XML(MaterialReading, TechniqueHintWithOnlyAPlatformIsReportedAndKept, Collada(R"(
  <library_materials><material id="m"><instance_effect url="#fx">
    <technique_hint platform="PC"/></instance_effect></material></library_materials>)")) {
  const oxDAEInstanceEffect* instance = Find<oxDAEMaterial>("#m")->instanceEffect;
  ASSERT_EQ(instance->techniqueHints.size(), 1u);
  EXPECT_EQ(instance->techniqueHints[0]->platform, "PC");
  EXPECT_EQ(instance->techniqueHints[0]->profile, "");
  EXPECT_EQ(instance->techniqueHints[0]->ref, "");
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("attribute 'ref' is required")}));
}

OX_DOCUMENT_SUITE(MaterialWriting);

TEST_XML(MaterialWriting, InstanceEffectIsClosedByItsMaterialAndNamesTheEffect, Collada(R"(
  <library_materials><material name="M"><instance_effect url="fx">
    <technique_hint ref="t"/><setparam ref="x"><float>1</float></setparam>
  </instance_effect><extra><technique profile="FCOLLADA"/></extra></material>
  <material id="n"/></library_materials>
  <library_effects><effect id="fx"/></library_effects>)")) {
  ASSERT_EQ(Find<oxDAEMaterial>("#M")->instanceEffect->url, "fx");
  EXPECT_EQ(SaveText(), oxtest::Saved("  <library_materials>\n"
                                      "    <material name=\"M\" id=\"M\">\n"
                                      "      <instance_effect url=\"#fx\"/>\n"
                                      "    </material>\n"
                                      "    <material id=\"n\"/>\n"
                                      "  </library_materials>\n"
                                      "  <library_effects>\n"
                                      "    <effect id=\"fx\"/>\n"
                                      "  </library_effects>\n"));
  EXPECT_EQ(Find<oxDAEMaterial>("#M")->instanceEffect->url, "#fx");
}

TEST_XML(MaterialWriting, UnboundInstanceEffectKeepsItsUrlText,
         Collada(R"(<library_materials><material id="m"><asset/>
           <instance_effect url="#elsewhere"/></material></library_materials>)")) {
  const std::string saved = SaveText();
  EXPECT_EQ(oxtest::ElementText(saved, "instance_effect"), "<instance_effect url=\"#elsewhere\"/>");
  // The asset comes before the instance effect.
  EXPECT_LT(saved.find("<asset>"), saved.find("<instance_effect"));
}

// --- <effect> and its profiles ---------------------------------------------------------

OX_DOCUMENT_SUITE(EffectReading);

TEST_XML(EffectReading, EveryProfileIsKeptInDocumentOrder, Collada(R"(
  <library_effects><effect id="fx" name="F">
    <annotate name="a"><string>word</string></annotate>
    <profile_CG/><profile_COMMON/><profile_GLSL/><profile_GLES/>
    <extra><technique profile="MAX3D"/></extra>
  </effect></library_effects>)")) {
  ASSERT_EQ(rc, 0);
  const oxDAEEffect* effect = EffectOf(document);
  ASSERT_NE(effect, nullptr);
  EXPECT_EQ(effect->name, "F");
  ASSERT_EQ(effect->profiles.size(), 4u);
  EXPECT_EQ(effect->profiles[0]->GetProfileType(), EProfile::CG);
  EXPECT_EQ(effect->profiles[1]->GetProfileType(), EProfile::COMMON);
  EXPECT_EQ(effect->profiles[2]->GetProfileType(), EProfile::GLSL);
  EXPECT_EQ(effect->profiles[3]->GetProfileType(), EProfile::GLES);
  EXPECT_EQ(effect->commonProfile, effect->profiles[1]);
  for (const oxDAEFxProfile* profile : effect->profiles)
    EXPECT_EQ(profile->parent, effect);
  ASSERT_EQ(effect->annotations.size(), 1u);
  EXPECT_EQ(effect->annotations[0]->name, "a");
  EXPECT_EQ(effect->annotations[0]->GetStringValue(), "word");
  EXPECT_EQ(effect->annotations[0]->parent, effect);
  ASSERT_EQ(effect->extras.size(), 1u);
  ASSERT_EQ(effect->extras[0]->techniques.size(), 1u);
  EXPECT_NE(oxDAETechEffect_Max3D::DynamicCast(effect->extras[0]->techniques[0]), nullptr);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(EffectReading, GetProfileAnswersTheFirstOfAType, Collada(R"(
  <library_effects><effect id="fx"><profile_GLSL/><profile_COMMON/><profile_GLSL/>
  </effect></library_effects>)")) {
  const oxDAEEffect* effect = EffectOf(document);
  ASSERT_EQ(effect->profiles.size(), 3u);
  EXPECT_EQ(effect->GetProfile(EProfile::GLSL), effect->profiles[0]);
  EXPECT_EQ(effect->GetProfile(EProfile::COMMON), effect->profiles[1]);
  EXPECT_EQ(effect->GetProfile(EProfile::CG), nullptr);
  EXPECT_EQ(effect->GetProfile(EProfile::GLES), nullptr);
}

TEST_XML(EffectReading, ALaterCommonProfileReplacesThePointerAndBothStay, Collada(R"(
  <library_effects><effect id="fx"><profile_COMMON/><profile_COMMON/></effect>
  </library_effects>)")) {
  const oxDAEEffect* effect = EffectOf(document);
  ASSERT_EQ(effect->profiles.size(), 2u);
  EXPECT_EQ(effect->commonProfile, effect->profiles[1]);
  EXPECT_NE(effect->profiles[0], effect->profiles[1]);
  EXPECT_EQ(effect->GetProfile(EProfile::COMMON), effect->profiles[0]);
}

TEST_XML(EffectReading, UnknownChildrenOfAnEffectAreReported, Collada(R"(
  <library_effects><effect id="fx"><image id="i"/><newparam sid="p"/><asset/><profile_HLSL/>
  </effect></library_effects>)")) {
  EXPECT_TRUE(EffectOf(document)->profiles.empty());
  EXPECT_EQ(Find<oxDAEImage>("#i"), nullptr);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{
                             Warning("unknown element <image> in <effect>"),
                             Warning("unknown element <newparam> in <effect>"),
                             Warning("unknown element <asset> in <effect>"),
                             Warning("unknown element <profile_HLSL> in <effect>"),
                         }));
}

TEST_XML(EffectReading, GenericProfileKeepsImagesAndNewParamsAndStepsOverTheRest, Collada(R"(
  <library_effects><effect id="fx"><profile_GLES platform="PC">
    <image id="gi"><init_from>b.png</init_from></image>
    <newparam sid="c"><float3>1 2 3</float3></newparam>
    <technique sid="t"><pass/></technique><code>x</code><include sid="i"/>
  </profile_GLES></effect></library_effects>)")) {
  const oxDAEFxProfile* profile = EffectOf(document)->profiles.at(0);
  EXPECT_EQ(profile->GetProfileType(), EProfile::GLES);
  ASSERT_EQ(profile->images.size(), 1u);
  EXPECT_EQ(profile->images[0], Find<oxDAEImage>("#gi"));
  EXPECT_EQ(profile->images[0]->parent, profile);
  ASSERT_EQ(profile->newParams.size(), 1u);
  EXPECT_EQ(profile->newParams[0]->parent, profile);
  EXPECT_EQ(profile->GetNewParam("c"), profile->newParams[0]);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(EffectReading, GetNewParamNeedsTheExactSid,
         CommonProfile(R"(<newparam sid="tex"><float>1</float></newparam>
                          <newparam sid="Tex2"><float>2</float></newparam>)")) {
  const oxDAEFxProfile* profile = EffectOf(document)->commonProfile;
  ASSERT_EQ(profile->newParams.size(), 2u);
  EXPECT_EQ(profile->GetNewParam("tex"), profile->newParams[0]);
  EXPECT_EQ(profile->GetNewParam("Tex2"), profile->newParams[1]);
  EXPECT_EQ(profile->GetNewParam("te"), nullptr);
  EXPECT_EQ(profile->GetNewParam("TEX"), nullptr);
  EXPECT_EQ(profile->GetNewParam("tex "), nullptr);
  EXPECT_EQ(profile->GetNewParam("tex2"), nullptr);
  EXPECT_EQ(profile->GetNewParam(""), nullptr);
}

TEST_XML(EffectReading, CommonProfileRegistersItsNewParamsUnderTheEffect,
         CommonProfile(R"(<newparam sid="p"><float>1</float></newparam>)")) {
  const oxDAEFxProfile* profile = EffectOf(document)->commonProfile;
  ASSERT_EQ(profile->newParams.size(), 1u);
  EXPECT_EQ(document.ResolvePath("fx/p"), profile->newParams[0]);
}

TEST_XML(EffectReading, CommonProfileReportsImagesAndAssetsAndStepsOverExtras,
         CommonProfile(R"(<image id="ci"/><asset/><extra><technique profile="X"/></extra>
                          <technique sid="t"/>)")) {
  const oxDAEFxProfileCommon* profile = EffectOf(document)->commonProfile;
  ASSERT_NE(profile->technique, nullptr);
  EXPECT_EQ(profile->technique->parent, profile);
  EXPECT_TRUE(profile->images.empty());
  EXPECT_EQ(Find<oxDAEImage>("#ci"), nullptr);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{
                             Warning("unknown element <image> in <profile>"),
                             Warning("unknown element <asset> in <profile>"),
                         }));
}

TEST(EffectModel, ProfilesKeepTheTypeTheyWereMadeWith) {
  EXPECT_EQ(oxDAEFxProfile().GetProfileType(), EProfile::UNKNOWN);
  EXPECT_EQ(oxDAEFxProfile(EProfile::GLSL).GetProfileType(), EProfile::GLSL);
  EXPECT_EQ(oxDAEFxProfileCommon().GetProfileType(), EProfile::COMMON);
  oxDAEFxProfile copy(EProfile::CG);
  copy = oxDAEFxProfile(EProfile::GLES);
  EXPECT_EQ(copy.GetProfileType(), EProfile::GLES);
  EXPECT_EQ(oxDAEFxProfile::s_XMLTag, "profile");
  EXPECT_EQ(oxDAEFxProfile::s_XMLTagCommon, "profile_COMMON");
  EXPECT_EQ(oxDAEFxProfile::s_XMLTagCG, "profile_CG");
  EXPECT_EQ(oxDAEFxProfile::s_XMLTagGLSL, "profile_GLSL");
  EXPECT_EQ(oxDAEFxProfile::s_XMLTagGLES, "profile_GLES");
  EXPECT_EQ(oxDAEFxProfile::s_XMLTagHLSL, "profile_HLSL");
  EXPECT_EQ(oxDAEFxProfileCommon::s_XMLTag, "profile_COMMON");
  EXPECT_EQ(Technique::s_XMLTag, "technique");
}

OX_DOCUMENT_SUITE(EffectWriting);

TEST_XML(EffectWriting, OnlyTheCommonProfileIsSaved, Collada(std::string(kImages) + R"(
  <library_effects><effect id="fx"><annotate name="a"><float>1</float></annotate>
    <profile_CG><newparam sid="c"><float>1</float></newparam></profile_CG>
    <profile_COMMON><newparam sid="p"><float>1</float></newparam>
      <technique sid="t"><constant/></technique></profile_COMMON>
    <extra><technique profile="MAX3D"/></extra>
  </effect></library_effects>)")) {
  ASSERT_EQ(EffectOf(document)->profiles.size(), 2u);
  EXPECT_EQ(SaveText(), SavedEffect("          <constant/>\n"));
}

TEST_XML(EffectWriting, EffectWithoutCommonProfileIsWrittenEmpty, Collada(R"(
  <library_effects><effect id="fx" name="F"><profile_GLSL/></effect></library_effects>)")) {
  EXPECT_EQ(oxtest::ElementText(SaveText(), "effect"), "<effect name=\"F\" id=\"fx\"/>");
}

// --- The common technique ----------------------------------------------------------------

OX_DOCUMENT_SUITE(TechniqueReading);

TEST_XML(TechniqueReading, EveryValueGoesToItsSlotWithItsClass, Shading(R"(<blinn>
    <emission><color>1 0 0 1</color></emission>
    <ambient><color>0 1 0 1</color></ambient>
    <diffuse><color>0 0 1 1</color></diffuse>
    <specular><color>1 1 0 1</color></specular>
    <shininess><float>20</float></shininess>
    <reflective><color>0 1 1 1</color></reflective>
    <reflectivity><float>0.5</float></reflectivity>
    <transparent><color>1 1 1 1</color></transparent>
    <transparency><float>0.25</float></transparency>
    <index_of_refraction><float>1.5</float></index_of_refraction>
    <bump/>
  </blinn>)")) {
  ASSERT_EQ(rc, 0);
  const Technique* t = TechniqueOf(document);
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(t->shadingModel, Technique::BLINN);
  const oxDAEFxColorOrTextureType* colors[] = {t->emission, t->ambient, t->diffuse, t->specular,
                                               t->reflective};
  const OxMath::oxFColor expected[] = {
      {1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 0, 1}, {0, 1, 1, 1}};
  for (size_t i = 0; i < 5; ++i) {
    ASSERT_NE(colors[i], nullptr) << i;
    EXPECT_EQ(colors[i]->GetRTTI().GetName(), std::string_view("oxDAEFxColorOrTextureType"));
    EXPECT_TRUE(colors[i]->IsColor());
    EXPECT_EQ(colors[i]->color, expected[i]) << i;
    EXPECT_EQ(colors[i]->parent, t);
  }
  ASSERT_NE(t->transparent, nullptr);
  EXPECT_EQ(t->transparent->color, (OxMath::oxFColor{1, 1, 1, 1}));
  const oxDAEFxFloatOrParamType* floats[] = {t->shininess, t->reflectivity, t->transparency,
                                             t->indexOfRefraction};
  const float numbers[] = {20.0f, 0.5f, 0.25f, 1.5f};
  for (size_t i = 0; i < 4; ++i) {
    ASSERT_NE(floats[i], nullptr) << i;
    EXPECT_TRUE(floats[i]->IsFloat());
    EXPECT_FALSE(floats[i]->IsParam());
    EXPECT_EQ(floats[i]->value, numbers[i]);
    EXPECT_EQ(floats[i]->parent, t);
  }
  // Every value is queued for the update pass.
  const auto& queued = document.GetElementsToUpdate();
  for (const oxDAEBaseElement* value : {static_cast<const oxDAEBaseElement*>(t->emission),
                                        static_cast<const oxDAEBaseElement*>(t->transparent),
                                        static_cast<const oxDAEBaseElement*>(t->shininess)}) {
    EXPECT_NE(std::find(queued.begin(), queued.end(), value), queued.end());
  }
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(TechniqueReading, ATechniqueStartsConstantAndEmpty) {
  const Technique t;
  EXPECT_EQ(t.shadingModel, Technique::CONSTANT);
  for (const void* value :
       {static_cast<const void*>(t.emission), static_cast<const void*>(t.ambient),
        static_cast<const void*>(t.diffuse), static_cast<const void*>(t.specular),
        static_cast<const void*>(t.reflective), static_cast<const void*>(t.transparent),
        static_cast<const void*>(t.shininess), static_cast<const void*>(t.reflectivity),
        static_cast<const void*>(t.transparency), static_cast<const void*>(t.indexOfRefraction)})
    EXPECT_EQ(value, nullptr);
  const oxDAEFxColorOrTextureType color;
  EXPECT_EQ(color.kind, kFxValueUnset);
  EXPECT_EQ(color.image, nullptr);
  EXPECT_FALSE(color.IsColor() || color.IsParam() || color.IsTexture());
  const oxDAEFxFloatOrParamType number;
  EXPECT_EQ(number.kind, kFxValueUnset);
  EXPECT_EQ(number.value, 0.0f);
  EXPECT_TRUE(oxDAEFxCOTTransparent().UseAlphaChannel());
}

TEST_XML(TechniqueReading, TheLastShadingModelDecidesAndValuesAccumulate,
         Shading(R"(<phong><diffuse><color>1 0 0 1</color></diffuse></phong>
                    <lambert><emission><color>0 1 0 1</color></emission>
                      <diffuse><color>0 0 1 1</color></diffuse></lambert>)")) {
  const Technique* t = TechniqueOf(document);
  EXPECT_EQ(t->shadingModel, Technique::LAMBERT);
  ASSERT_NE(t->emission, nullptr);
  ASSERT_NE(t->diffuse, nullptr);
  EXPECT_EQ(t->diffuse->color, (OxMath::oxFColor{0, 0, 1, 1}));
  // The replaced diffuse is still in the document.
  EXPECT_EQ(All<oxDAEFxColorOrTextureType>().size(), 3u);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TechniqueReading, EachShadingModelElementSetsItsModel, Shading("<constant/><phong/>")) {
  EXPECT_EQ(TechniqueOf(document)->shadingModel, Technique::PHONG);
  ASSERT_EQ(LoadText(Shading("<phong/><blinn/>")), 0);
  EXPECT_EQ(TechniqueOf(document)->shadingModel, Technique::BLINN);
  ASSERT_EQ(LoadText(Shading("<blinn/><constant/>")), 0);
  EXPECT_EQ(TechniqueOf(document)->shadingModel, Technique::CONSTANT);
}

TEST_XML(TechniqueReading, UnknownTechniqueChildrenAreReportedAndExtrasRead,
         Shading(R"(<lambert/><cel/><extra><technique profile="MAYA"/>
                    <technique profile="FCOLLADA"/></extra>)")) {
  const Technique* t = TechniqueOf(document);
  EXPECT_EQ(t->shadingModel, Technique::LAMBERT);
  ASSERT_EQ(t->extras.size(), 1u);
  ASSERT_EQ(t->extras[0]->techniques.size(), 2u);
  EXPECT_NE(oxDAETechMaps_Maya::DynamicCast(t->extras[0]->techniques[0]), nullptr);
  EXPECT_NE(oxDAETechMaps_FCOLLADA::DynamicCast(t->extras[0]->techniques[1]), nullptr);
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning("unknown element <cel> in <technique>")}));
}

TEST_XML(TechniqueReading, ConstantKeepsADiffuse,
         Shading("<constant><diffuse><color>1 0 0 1</color></diffuse></constant>")) {
  const Technique* t = TechniqueOf(document);
  EXPECT_EQ(t->shadingModel, Technique::CONSTANT);
  ASSERT_NE(t->diffuse, nullptr);
  EXPECT_EQ(t->diffuse->color, (OxMath::oxFColor{1, 0, 0, 1}));
}

// --- Colour, texture and float values -----------------------------------------------------

OX_DOCUMENT_SUITE(ValueReading);

TEST_XML(ValueReading, ColorReadsFourComponents,
         Shading("<lambert><diffuse><color>1 0 0 0.5</color></diffuse></lambert>")) {
  const oxDAEFxColorOrTextureType* diffuse = TechniqueOf(document)->diffuse;
  ASSERT_NE(diffuse, nullptr);
  EXPECT_EQ(diffuse->kind, kFxValueColor);
  EXPECT_EQ(diffuse->color, (OxMath::oxFColor{1, 0, 0, 0.5f}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(ValueReading, ShortColorKeepsTheComponentsNotGiven,
         Shading("<lambert><diffuse><color>0.5 0.25</color></diffuse></lambert>")) {
  EXPECT_EQ(TechniqueOf(document)->diffuse->color, (OxMath::oxFColor{0.5f, 0.25f, 0, 1}));
}

TEST_XML(ValueReading, ParamInADiffuseIsReportedAgainstTheProfile,
         Shading(R"(<lambert><diffuse><param ref="c"/></diffuse></lambert>)")) {
  const oxDAEFxColorOrTextureType* diffuse = TechniqueOf(document)->diffuse;
  ASSERT_NE(diffuse, nullptr);
  EXPECT_EQ(diffuse->kind, kFxValueUnset);
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning("unknown element <param> in <profile>")}));
}

TEST_XML(ValueReading, OnlyTheFirstTextureIsRead,
         Shading(R"(<lambert><diffuse><texture texture="img1" texcoord="UV0"/>
                      <texture texture="other" texcoord="UV1"/></diffuse></lambert>)")) {
  const oxDAEFxColorOrTextureType* diffuse = TechniqueOf(document)->diffuse;
  EXPECT_TRUE(diffuse->IsTexture());
  EXPECT_EQ(diffuse->texture, "img1");
  EXPECT_EQ(diffuse->GetChannel(), "UV0");
  EXPECT_EQ(diffuse->image, Image1(document));
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning("unknown element <texture> in <profile>")}));
}

TEST_XML(ValueReading, TextureExtrasChooseTheirToolTechnique,
         Shading(R"(<lambert><diffuse><texture texture="img1" texcoord="UV0">
           <extra><technique profile="MAX3D"/><technique profile="MAYA"/></extra><other/>
         </texture></diffuse>
         <transparent><texture texture="img1" texcoord="UV0">
           <extra><technique profile="MAX3D"/></extra></texture></transparent></lambert>)")) {
  const Technique* t = TechniqueOf(document);
  ASSERT_EQ(t->diffuse->extras.size(), 1u);
  // The Maya technique needs a document written by Maya or 3ds Max.
  ASSERT_EQ(t->diffuse->extras[0]->techniques.size(), 1u);
  EXPECT_NE(oxDAETechTexture_Max3D::DynamicCast(t->diffuse->extras[0]->techniques[0]), nullptr);
  EXPECT_EQ(t->diffuse->extras[0]->parent, t->diffuse);
  ASSERT_EQ(t->transparent->extras.size(), 1u);
  EXPECT_EQ(t->transparent->extras[0]->techniques.size(), 1u);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(ValueReading, TransparentRgbZeroClearsTheFlag,
         Shading(R"(<constant><transparent opaque="RGB_ZERO"><color>0 0 0 1</color>
                    </transparent></constant>)")) {
  const oxDAEFxCOTTransparent* transparent = TechniqueOf(document)->transparent;
  ASSERT_NE(transparent, nullptr);
  EXPECT_FALSE(transparent->UseAlphaChannel());
  EXPECT_TRUE(transparent->IsColor());
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(ValueReading, TransparentAOneKeepsTheFlag,
         Shading(R"(<constant><transparent opaque="A_ONE"/></constant>)")) {
  EXPECT_TRUE(TechniqueOf(document)->transparent->UseAlphaChannel());
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(ValueReading, TransparentWithAnUnknownOpaqueModeIsReportedAndKeepsTheFlag,
         Shading(R"(<constant><transparent opaque="A_ZERO"><color>1 1 1 1</color>
                    </transparent></constant>)")) {
  const oxDAEFxCOTTransparent* transparent = TechniqueOf(document)->transparent;
  EXPECT_TRUE(transparent->UseAlphaChannel());
  EXPECT_TRUE(transparent->IsColor());
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("invalid opaque attribute")}));
}

TEST_XML(ValueReading, FloatValueReadsOneFloatAndReportsParams,
         Shading(R"(<phong><shininess><float>12.5</float><param ref="s"/></shininess>
                    <reflectivity><param ref="r"/></reflectivity></phong>)")) {
  const Technique* t = TechniqueOf(document);
  EXPECT_TRUE(t->shininess->IsFloat());
  EXPECT_EQ(t->shininess->value, 12.5f);
  EXPECT_EQ(t->reflectivity->kind, kFxValueUnset);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{
                             Warning("unknown element <param> in <profile>"),
                             Warning("unknown element <param> in <profile>"),
                         }));
}

TEST(ValueModel, SettersSetTheKind) {
  oxDAEFxColorOrTextureType value;
  value.SetColor({0.5f, 0.25f, 0.125f, 0.75f});
  EXPECT_TRUE(value.IsColor());
  EXPECT_EQ(value.color, (OxMath::oxFColor{0.5f, 0.25f, 0.125f, 0.75f}));
  oxDAEImage image;
  value.SetTexture(&image, 3);
  EXPECT_TRUE(value.IsTexture());
  EXPECT_FALSE(value.IsColor());
  EXPECT_EQ(value.image, &image);
  EXPECT_EQ(value.GetChannel(), "3");
  value.SetTexture(nullptr, 4294967295u);
  EXPECT_EQ(value.GetChannel(), "4294967295");
  value.kind = kFxValueParam;
  EXPECT_TRUE(value.IsParam());
  oxDAEFxFloatOrParamType number;
  number.SetFloat(2.5f);
  EXPECT_TRUE(number.IsFloat());
  EXPECT_EQ(number.value, 2.5f);
}
