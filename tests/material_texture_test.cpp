// Binding texture values to images (directly or through sampler and surface
// parameters), and the common technique as written back.
#include "effect_markup.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::CommonProfile;
using oxtest::DiffuseTexture;
using oxtest::EffectOf;
using oxtest::Error;
using oxtest::Image1;
using oxtest::IsUnresolved;
using oxtest::kImages;
using oxtest::kNoLog;
using oxtest::SamplerChain;
using oxtest::SavedEffect;
using oxtest::Shading;
using oxtest::TechniqueOf;
using Technique = oxDAEFxProfileCommon::Technique;

// --- Texture binding -----------------------------------------------------------------------

OX_DOCUMENT_SUITE(TextureBinding);

TEST_XML(TextureBinding, TextureNamingAnImageIdIsBoundDirectly,
         CommonProfile(DiffuseTexture("img1"))) {
  const oxDAEFxColorOrTextureType* diffuse = TechniqueOf(document)->diffuse;
  ASSERT_NE(Image1(document), nullptr);
  EXPECT_EQ(diffuse->image, Image1(document));
  EXPECT_EQ(diffuse->texcoord, "UV0");
  EXPECT_FALSE(IsUnresolved(document, diffuse));
  EXPECT_EQ(log.entries, kNoLog);
  SaveText();
  EXPECT_EQ(diffuse->texture, "#img1");
}

TEST_XML(TextureBinding, TextureNamingASamplerParamFollowsItToTheSurfaceImage,
         CommonProfile(SamplerChain("img1") + DiffuseTexture("samp"))) {
  const oxDAEFxColorOrTextureType* diffuse = TechniqueOf(document)->diffuse;
  ASSERT_NE(Image1(document), nullptr);
  EXPECT_EQ(diffuse->image, Image1(document));
  EXPECT_EQ(diffuse->texture, "samp");
  EXPECT_FALSE(IsUnresolved(document, diffuse));
  EXPECT_EQ(log.entries, kNoLog);
  const std::string saved = SaveText();
  EXPECT_EQ(oxtest::ElementText(saved, "texture"), "<texture texture=\"#img1\" texcoord=\"UV0\"/>");
  EXPECT_EQ(diffuse->texture, "#img1");
}

TEST_XML(TextureBinding, UnknownTextureReferenceStaysUnboundWithoutAMessage,
         CommonProfile(DiffuseTexture("nothing"))) {
  const oxDAEFxColorOrTextureType* diffuse = TechniqueOf(document)->diffuse;
  EXPECT_EQ(diffuse->image, nullptr);
  EXPECT_TRUE(IsUnresolved(document, diffuse));
  EXPECT_EQ(log.entries, kNoLog);
  EXPECT_EQ(oxtest::ElementText(SaveText(), "texture"),
            "<texture texture=\"nothing\" texcoord=\"UV0\"/>");
}

TEST_XML(TextureBinding, ValueWithoutTextureReferenceCountsAsUnresolved,
         Shading(R"(<lambert><diffuse><color>1 0 0 1</color></diffuse>
                    <emission><texture texcoord="UV0"/></emission>
                    <transparency><float>1</float></transparency></lambert>)")) {
  const Technique* t = TechniqueOf(document);
  EXPECT_TRUE(IsUnresolved(document, t->diffuse));
  EXPECT_TRUE(IsUnresolved(document, t->emission));
  EXPECT_EQ(document.GetUnresolved().size(), 2u);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TextureBinding, TextureNamingTheIdOfSomethingElseFallsBackToTheSidPath,
         Collada(std::string(kImages) +
                 R"(<library_materials><material id="samp"/></library_materials>
                    <library_effects><effect id="fx"><profile_COMMON>)" +
                 SamplerChain("img1") + DiffuseTexture("samp") +
                 "</profile_COMMON></effect></library_effects>")) {
  ASSERT_NE(Find<oxDAEMaterial>("#samp"), nullptr);
  EXPECT_EQ(TechniqueOf(document)->diffuse->image, Image1(document));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TextureBinding, TextureNamingAFloatParamStaysUnbound,
         CommonProfile(R"(<newparam sid="f"><float>1</float></newparam>
                          )" +
                       DiffuseTexture("f"))) {
  EXPECT_EQ(TechniqueOf(document)->diffuse->image, nullptr);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TextureBinding, SamplerWhoseSourceNamesItselfStaysUnbound,
         CommonProfile(R"(<newparam sid="loop"><sampler2D><source>loop</source></sampler2D>
                          </newparam>
                          )" +
                       DiffuseTexture("loop"))) {
  const oxDAEFxColorOrTextureType* diffuse = TechniqueOf(document)->diffuse;
  EXPECT_EQ(diffuse->image, nullptr);
  EXPECT_TRUE(IsUnresolved(document, diffuse));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TextureBinding, SamplerWhoseSourceNamesASamplerStaysUnbound,
         CommonProfile(R"(<newparam sid="a"><sampler2D><source>b</source></sampler2D></newparam>
                          <newparam sid="b"><sampler2D><source>a</source></sampler2D></newparam>
                          )" +
                       DiffuseTexture("a"))) {
  const oxDAEFxColorOrTextureType* diffuse = TechniqueOf(document)->diffuse;
  EXPECT_EQ(diffuse->image, nullptr);
  EXPECT_TRUE(IsUnresolved(document, diffuse));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TextureBinding, SurfaceInitialisedFromTheSamplerStaysUnbound,
         CommonProfile(SamplerChain("samp") + DiffuseTexture("samp"))) {
  const oxDAEFxColorOrTextureType* diffuse = TechniqueOf(document)->diffuse;
  EXPECT_EQ(diffuse->image, nullptr);
  EXPECT_TRUE(IsUnresolved(document, diffuse));
  // The surface explains why it has no image; binding itself adds nothing.
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{
                             Error("cannot get the image referenced by this surface"),
                         }));
}

TEST_XML(TextureBinding, SidPathsAreScopedByTheEffect, Collada(std::string(kImages) + R"(
  <library_effects>
    <effect id="fx"><profile_COMMON>)" + SamplerChain("img1") + R"(</profile_COMMON></effect>
    <effect id="other"><profile_COMMON><technique sid="t"><lambert><diffuse>
      <texture texture="samp" texcoord="UV0"/></diffuse></lambert></technique>
    </profile_COMMON></effect>
  </library_effects>)")) {
  const oxDAEEffect* other = Find<oxDAEEffect>("#other");
  ASSERT_NE(other, nullptr);
  EXPECT_EQ(other->commonProfile->technique->diffuse->image, nullptr);
}

// --- Technique writing ----------------------------------------------------------------------

OX_DOCUMENT_SUITE(TechniqueWriting);

TEST_XML(TechniqueWriting, ColorIsWrittenWithoutAlpha,
         Shading("<lambert><diffuse><color>1 0 0 0.5</color></diffuse></lambert>")) {
  EXPECT_EQ(SaveText(), SavedEffect("          <lambert>\n"
                                    "            <diffuse>\n"
                                    "              <color>1 0 0</color>\n"
                                    "            </diffuse>\n"
                                    "          </lambert>\n"));
}

TEST_XML(TechniqueWriting, ConstantDropsItsDiffuse,
         Shading(R"(<constant><emission><color>1 1 1 1</color></emission>
                    <diffuse><color>1 0 0 1</color></diffuse></constant>)")) {
  EXPECT_EQ(SaveText(), SavedEffect("          <constant>\n"
                                    "            <emission>\n"
                                    "              <color>1 1 1</color>\n"
                                    "            </emission>\n"
                                    "          </constant>\n"));
  EXPECT_NE(TechniqueOf(document)->diffuse, nullptr);
}

// Every value, in schema order, under the model `model`.
std::string AllValues(std::string_view model) {
  const std::string m(model);
  return Shading("<" + m + R"(>
    <emission><color>0.5 0 0 1</color></emission>
    <ambient><color>0 0.5 0 1</color></ambient>
    <diffuse><color>0 0 0.5 1</color></diffuse>
    <specular><color>0.5 0.5 0 1</color></specular>
    <shininess><float>20</float></shininess>
    <reflective><color>0 0.5 0.5 1</color></reflective>
    <reflectivity><float>0.5</float></reflectivity>
    <transparent opaque="RGB_ZERO"><texture texture="img1" texcoord="UV0"/></transparent>
    <transparency><float>0.25</float></transparency>
    <index_of_refraction><float>1.5</float></index_of_refraction>
  </)" + m + ">");
}

constexpr std::string_view kSavedCommonValues =
    "            <emission>\n              <color>0.5 0 0</color>\n            </emission>\n"
    "            <transparent>\n"
    "              <texture texture=\"#img1\" texcoord=\"UV0\"/>\n"
    "            </transparent>\n"
    "            <reflective>\n              <color>0 0.5 0.5</color>\n            </reflective>\n"
    "            <reflectivity>\n              <float>0.5</float>\n            </reflectivity>\n"
    "            <transparency>\n              <float>0.25</float>\n            </transparency>\n"
    "            <index_of_refraction>\n              <float>1.5</float>\n"
    "            </index_of_refraction>\n";

constexpr std::string_view kSavedLitValues =
    "            <diffuse>\n              <color>0 0 0.5</color>\n            </diffuse>\n"
    "            <ambient>\n              <color>0 0.5 0</color>\n            </ambient>\n";

constexpr std::string_view kSavedShinyValues =
    "            <specular>\n              <color>0.5 0.5 0</color>\n            </specular>\n"
    "            <shininess>\n              <float>20</float>\n            </shininess>\n";

TEST_XML(TechniqueWriting, BlinnWritesEveryValueInTheFixedOrder, AllValues("blinn")) {
  EXPECT_EQ(SaveText(), SavedEffect("          <blinn>\n" + std::string(kSavedCommonValues) +
                                    std::string(kSavedLitValues) + std::string(kSavedShinyValues) +
                                    "          </blinn>\n"));
}

TEST_XML(TechniqueWriting, PhongWritesEveryValueInTheFixedOrder, AllValues("phong")) {
  EXPECT_EQ(SaveText(), SavedEffect("          <phong>\n" + std::string(kSavedCommonValues) +
                                    std::string(kSavedLitValues) + std::string(kSavedShinyValues) +
                                    "          </phong>\n"));
}

TEST_XML(TechniqueWriting, LambertDropsSpecularAndShininess, AllValues("lambert")) {
  EXPECT_EQ(SaveText(), SavedEffect("          <lambert>\n" + std::string(kSavedCommonValues) +
                                    std::string(kSavedLitValues) + "          </lambert>\n"));
}

TEST_XML(TechniqueWriting, ConstantKeepsOnlyTheModelFreeValues, AllValues("constant")) {
  EXPECT_EQ(SaveText(), SavedEffect("          <constant>\n" + std::string(kSavedCommonValues) +
                                    "          </constant>\n"));
}

TEST_XML(TechniqueWriting, AnUnknownModelWritesItsValuesWithoutAModelElement,
         Shading("<lambert><emission><color>1 1 1 1</color></emission></lambert>")) {
  Technique* t = TechniqueOf(document);
  ASSERT_NE(t, nullptr);
  t->shadingModel = 7;
  EXPECT_EQ(SaveText(), SavedEffect("          <emission>\n"
                                    "            <color>1 1 1</color>\n"
                                    "          </emission>\n"));
}

TEST_XML(TechniqueWriting, ValuesOfOtherKindsAreWrittenEmpty,
         Shading(R"(<phong><diffuse><param ref="c"/></diffuse>
                    <shininess><param ref="s"/></shininess></phong>)")) {
  EXPECT_EQ(SaveText(), SavedEffect("          <phong>\n"
                                    "            <diffuse/>\n"
                                    "            <shininess/>\n"
                                    "          </phong>\n"));
}

TEST_XML(TechniqueWriting, ValuesWriteNothingWithoutTheParentsTag,
         Shading("<lambert><diffuse><color>1 0 0 1</color></diffuse></lambert>")) {
  ASSERT_EQ(OxKernel::oxXMLFactory::Instance(0).CreateWriter(document.writer), 0);
  OxKernel::oxXMLWriter& w = *document.writer;
  w.StartElement("x");
  w.EndAttributes();
  TechniqueOf(document)->diffuse->Write(document);
  oxDAEFxFloatOrParamType number;
  number.SetFloat(1.0f);
  number.Write(document);
  w.EndElement();
  ASSERT_EQ(w.Close(), 0);
  EXPECT_EQ(std::string(w.GetBuffer()), std::string(oxtest::kProlog) + "<x/>\n");
  document.writer.Reset();
}

TEST_XML(TechniqueWriting, SavedEffectsReadBackToTheSameValues,
         Collada(std::string(kImages) +
                 R"(<library_materials><material name="M"><instance_effect url="#fx"/></material>
                    </library_materials>
                    <library_effects><effect id="fx"><profile_COMMON>)" +
                 SamplerChain("img1") +
                 R"(<technique sid="t"><phong>
                      <emission><color>0.25 0.5 0.75 1</color></emission>
                      <diffuse><texture texture="samp" texcoord="CHANNEL1"/></diffuse>
                      <transparent opaque="A_ONE"><color>0 0 0 1</color></transparent>
                      <shininess><float>32</float></shininess>
                    </phong></technique></profile_COMMON></effect></library_effects>)")) {
  const std::string first = SaveText();
  ASSERT_EQ(LoadText(first), 0);
  EXPECT_EQ(log.entries, kNoLog);
  const Technique* t = TechniqueOf(document);
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(t->shadingModel, Technique::PHONG);
  EXPECT_EQ(t->emission->color, (OxMath::oxFColor{0.25f, 0.5f, 0.75f, 1}));
  EXPECT_EQ(t->diffuse->image, Image1(document));
  EXPECT_EQ(t->diffuse->texcoord, "CHANNEL1");
  EXPECT_TRUE(t->transparent->UseAlphaChannel());
  EXPECT_EQ(t->shininess->value, 32.0f);
  const oxDAEMaterial* material = Find<oxDAEMaterial>("#M");
  ASSERT_NE(material, nullptr);
  EXPECT_EQ(material->instanceEffect->effect, EffectOf(document));
  EXPECT_EQ(SaveText(), first);
}
