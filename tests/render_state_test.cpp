// Render states: the registry of known states with their types and defaults,
// and simple and complex states read against it.
#include <cstdint>
#include <variant>

#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::kNoLog;
using oxtest::Warning;
using Log = std::vector<oxtest::LogEntry>;

namespace {

using B = EFxBasicType;
using Tuple = OxKernel::oxVariant::Tuple;

using RenderStateTest = oxtest::DocumentTest;

template <class T>
T ValueOf(const OxKernel::oxVariant& variant) {
  const T* value = std::get_if<T>(&variant.GetValue());
  EXPECT_NE(value, nullptr);
  return value ? *value : T{};
}

}  // namespace

// --- Registry ------------------------------------------------------------------------

TEST(RenderStateRegistry, KnowsEveryStateAndPart) {
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredCount(), 127u);
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("depth_test_enable"), B::BOOL);
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("alpha_func/value"), B::FLOAT);
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("color_mask"), B::BOOL4);
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("projection_matrix"), B::FLOAT4X4);
}

TEST(RenderStateRegistry, KeysComeInRegistrationOrder) {
  const auto keys = oxDAEFxRenderState::GetRegisteredKeys();
  ASSERT_EQ(keys.size(), 127u);
  EXPECT_EQ(keys[0], "alpha_func/func");
  EXPECT_EQ(keys[29], "stencil_mask_separate/mask");
  EXPECT_EQ(keys[30], "blend_equation");
  EXPECT_EQ(keys[39], "texture_env_mode");
  EXPECT_EQ(keys[40], "light_enable");
  EXPECT_EQ(keys[126], "textureDEPTH");
}

TEST(RenderStateRegistry, EveryDefaultHoldsAValueOfItsType) {
  unsigned int withoutDefault = 0;
  for (const auto& key : oxDAEFxRenderState::GetRegisteredKeys()) {
    const auto* value = oxDAEFxRenderState::GetRegisteredDefault(key);
    if (!value) {
      ++withoutDefault;
      continue;
    }
    EXPECT_NE(value->GetValueType(), nullptr) << key;
  }
  EXPECT_EQ(withoutDefault, 4u);
}

TEST(RenderStateRegistry, ComplexStatesAreKnownOnlyByTheirParts) {
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("alpha_func"), B::UNKNOWN);
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredDefault("alpha_func"), nullptr);
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("stencil_op_separate/zpass"), B::ENUM);
}

TEST(RenderStateRegistry, UnknownKeyHasNoTypeAndNoDefault) {
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("foo_bar"), B::UNKNOWN);
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredDefault("foo_bar"), nullptr);
}

TEST(RenderStateRegistry, TextureDepthHasTheRectSamplerType) {
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("textureDEPTH"), B::SAMPLERRECT);
  EXPECT_EQ(static_cast<int>(oxDAEFxRenderState::GetRegisteredType("textureDEPTH")), 33);
  EXPECT_EQ(static_cast<int>(oxDAEFxRenderState::GetRegisteredType("textureRECT")), 33);
  EXPECT_EQ(static_cast<int>(oxDAEFxRenderState::GetRegisteredType("textureCUBE")), 32);
}

TEST(RenderStateRegistry, FourBoolStatesHaveATypeButNoDefault) {
  for (const char* key : {"sample_alpha_to_one_enable", "sample_coverage_enable",
                          "scissor_test_enable", "stencil_test_enable"}) {
    EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType(key), B::BOOL) << key;
    EXPECT_EQ(oxDAEFxRenderState::GetRegisteredDefault(key), nullptr) << key;
  }
  EXPECT_NE(oxDAEFxRenderState::GetRegisteredDefault("sample_alpha_to_coverage_enable"), nullptr);
}

TEST(RenderStateRegistry, StencilReferenceAndMasksDefaultToUint8) {
  const auto* ref = oxDAEFxRenderState::GetRegisteredDefault("stencil_func/ref");
  const auto* mask = oxDAEFxRenderState::GetRegisteredDefault("stencil_func_separate/mask");
  const auto* maskSeparate = oxDAEFxRenderState::GetRegisteredDefault("stencil_mask_separate/mask");
  ASSERT_NE(ref, nullptr);
  ASSERT_NE(mask, nullptr);
  ASSERT_NE(maskSeparate, nullptr);
  EXPECT_EQ(ref->GetValueType()->GetName(), "uint8");
  EXPECT_EQ(ValueOf<uint8_t>(*ref), 0);
  EXPECT_EQ(ValueOf<uint8_t>(*mask), 255);
  EXPECT_EQ(ValueOf<uint8_t>(*maskSeparate), 255);
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("stencil_func/ref"), B::INT);
}

TEST(RenderStateRegistry, EnumeratedDefaultsAreTheirWords) {
  const auto* func = oxDAEFxRenderState::GetRegisteredDefault("alpha_func/func");
  const auto* cull = oxDAEFxRenderState::GetRegisteredDefault("cull_face");
  ASSERT_NE(func, nullptr);
  ASSERT_NE(cull, nullptr);
  EXPECT_EQ(ValueOf<OxKernel::oxString>(*func), "ALWAYS");
  EXPECT_EQ(ValueOf<OxKernel::oxString>(*cull), "BACK");
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("cull_face"), B::ENUM);
}

TEST(RenderStateRegistry, TextureEnvModeIsAStringNotApplicable) {
  EXPECT_EQ(oxDAEFxRenderState::GetRegisteredType("texture_env_mode"), B::STRING);
  const auto* mode = oxDAEFxRenderState::GetRegisteredDefault("texture_env_mode");
  ASSERT_NE(mode, nullptr);
  EXPECT_EQ(ValueOf<OxKernel::oxString>(*mode), "N/A");
}

// --- Simple states ---------------------------------------------------------------------

TEST_F(RenderStateTest, DepthTestEnableReadsItsValue) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<depth_test_enable value="true"/>)");
  EXPECT_EQ(s->name, "depth_test_enable");
  EXPECT_EQ(s->valueType, B::BOOL);
  EXPECT_TRUE(ValueOf<bool>(s->value));
  EXPECT_EQ(s->GetStringValue(), "true");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(RenderStateTest, DepthTestEnableWithoutValueGetsTheDefault) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<depth_test_enable/>)");
  EXPECT_TRUE(s->HasValue());
  EXPECT_FALSE(ValueOf<bool>(s->value));
  EXPECT_EQ(s->GetStringValue(), "false");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(RenderStateTest, DepthMaskDefaultsToTrue) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<depth_mask/>)");
  EXPECT_EQ(s->GetStringValue(), "true");
}

TEST_F(RenderStateTest, StencilTestEnableWithAValueStillHasNoDefault) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<stencil_test_enable value="true"/>)");
  EXPECT_EQ(
      log.entries,
      (Log{Warning("cannot get the default value of the render state (stencil_test_enable)")}));
  EXPECT_FALSE(s->HasValue());
  EXPECT_EQ(s->valueType, B::BOOL);
  EXPECT_EQ(s->GetStringValue(), "");
}

TEST_F(RenderStateTest, LightEnableKeepsItsIndex) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<light_enable index="2" value="true"/>)");
  EXPECT_EQ(s->index, 2);
  EXPECT_TRUE(ValueOf<bool>(s->value));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(RenderStateTest, LightEnableWithoutIndexHasNone) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<light_enable value="false"/>)");
  EXPECT_EQ(s->index, 65535);
  EXPECT_EQ(s->index, oxDAEFxSimpleRenderState::kNoIndex);
}

TEST_F(RenderStateTest, UnknownStateKeepsItsNameAndNoValue) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<foo_bar value="1"/>)");
  EXPECT_EQ(log.entries, (Log{Warning("cannot get the type of the render state (foo_bar)")}));
  EXPECT_EQ(s->name, "foo_bar");
  EXPECT_EQ(s->valueType, B::UNKNOWN);
  EXPECT_FALSE(s->HasValue());
}

TEST_F(RenderStateTest, TextureDepthReadsAsARectSampler) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<textureDEPTH index="1" value="shadow"/>)");
  EXPECT_EQ(s->valueType, B::SAMPLERRECT);
  EXPECT_EQ(s->index, 1);
  EXPECT_EQ(s->GetStringValue(), "shadow");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(RenderStateTest, SamplerStateWithoutValueHasAnEmptyReference) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<texture2D/>)");
  EXPECT_TRUE(s->HasValue());
  EXPECT_EQ(s->GetStringValue(), "");
}

TEST_F(RenderStateTest, BoolVectorReadsAsTrueAndFalse) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<color_mask value="true false 1 0"/>)");
  EXPECT_EQ(s->valueType, B::BOOL4);
  EXPECT_EQ(s->GetStringValue(), "true false true false");
  const Tuple t = ValueOf<Tuple>(s->value);
  EXPECT_EQ((std::vector<float>(t.begin(), t.begin() + 4)), (std::vector<float>{1, 0, 1, 0}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(RenderStateTest, IntVectorReadsAsIntegers) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<scissor value="-4 0 640 480"/>)");
  EXPECT_EQ(s->valueType, B::INT4);
  EXPECT_EQ(s->GetStringValue(), "-4 0 640 480");
  EXPECT_EQ(s->value.GetValueType()->GetName(), "oxVec4");
}

TEST_F(RenderStateTest, LineStippleDefaultsToFactorOneFullPattern) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<line_stipple/>)");
  EXPECT_EQ(s->valueType, B::INT2);
  EXPECT_EQ(s->GetStringValue(), "1 65535");
}

TEST_F(RenderStateTest, EnumeratedValueKeepsItsWord) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<depth_func value="LEQUAL"/>)");
  EXPECT_EQ(s->valueType, B::ENUM);
  EXPECT_EQ(ValueOf<OxKernel::oxString>(s->value), "LEQUAL");
  EXPECT_EQ(log.entries, kNoLog);
}

// --- Values that do not convert -------------------------------------------------------

TEST_F(RenderStateTest, BoolValueThatDoesNotConvertLeavesNoValue) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<depth_test_enable value="maybe"/>)");
  EXPECT_EQ(log.entries,
            (Log{Warning("cannot convert the value of the render state (depth_test_enable)")}));
  EXPECT_FALSE(s->HasValue());
  EXPECT_EQ(s->valueType, B::BOOL);
}

TEST_F(RenderStateTest, VectorWithTooFewComponentsLeavesNoValue) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<clear_color value="1 0 0"/>)");
  EXPECT_EQ(log.entries,
            (Log{Warning("cannot convert the value of the render state (clear_color)")}));
  EXPECT_FALSE(s->HasValue());
}

TEST_F(RenderStateTest, IntVectorWithAFloatLeavesNoValue) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<line_stipple value="1 0.5"/>)");
  EXPECT_EQ(log.entries,
            (Log{Warning("cannot convert the value of the render state (line_stipple)")}));
  EXPECT_FALSE(s->HasValue());
}

TEST_F(RenderStateTest, UnknownEnumeratedWordLeavesNoValue) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<depth_func value="SOMETIMES"/>)");
  EXPECT_EQ(log.entries,
            (Log{Warning("cannot convert the value of the render state (depth_func)")}));
  EXPECT_FALSE(s->HasValue());
}

TEST_F(RenderStateTest, TextureEnvModeTakesAnyText) {
  auto* s = ReadFragment<oxDAEFxSimpleRenderState>(R"(<texture_env_mode value="MODULATE"/>)");
  EXPECT_EQ(s->GetStringValue(), "MODULATE");
  EXPECT_EQ(log.entries, kNoLog);
}

// --- Complex states ---------------------------------------------------------------------

TEST_F(RenderStateTest, StencilFuncHasOnlyThePartsGiven) {
  auto* c = ReadFragment<oxDAEFxComplexRenderState>(
      R"(<stencil_func><func value="EQUAL"/><ref value="1"/></stencil_func>)");
  EXPECT_EQ(c->name, "stencil_func");
  ASSERT_EQ(c->subStates.size(), 2u);
  EXPECT_EQ(c->subStates[0].GetKey(), "stencil_func/func");
  EXPECT_EQ(c->GetSubRenderState("func")->GetStringValue(), "EQUAL");
  EXPECT_EQ(c->GetSubRenderState("ref")->valueType, B::INT);
  EXPECT_EQ(c->GetSubRenderState("ref")->GetStringValue(), "1");
  EXPECT_EQ(c->GetSubRenderState("mask"), nullptr);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(RenderStateTest, ReadReferenceIsInt32WhileTheDefaultIsUint8) {
  auto* c = ReadFragment<oxDAEFxComplexRenderState>(
      R"(<stencil_func><ref value="3"/><mask/></stencil_func>)");
  EXPECT_EQ(ValueOf<int32_t>(c->GetSubRenderState("ref")->value), 3);
  EXPECT_EQ(ValueOf<uint8_t>(c->GetSubRenderState("mask")->value), 255);
  EXPECT_EQ(c->GetSubRenderState("mask")->GetStringValue(), "255");
}

TEST_F(RenderStateTest, AlphaFuncPartsTakeTheirTypes) {
  auto* c = ReadFragment<oxDAEFxComplexRenderState>(
      R"(<alpha_func><func value="GREATER"/><value value="0.5"/></alpha_func>)");
  EXPECT_EQ(c->GetSubRenderState("func")->valueType, B::ENUM);
  EXPECT_EQ(ValueOf<float>(c->GetSubRenderState("value")->value), 0.5f);
  EXPECT_EQ(c->GetSubRenderState("value")->index, 65535);
}

TEST_F(RenderStateTest, UnknownPartIsNamedWithItsComplexState) {
  auto* c = ReadFragment<oxDAEFxComplexRenderState>(
      R"(<alpha_func><bogus value="1"/><func/></alpha_func>)");
  EXPECT_EQ(log.entries,
            (Log{Warning("cannot get the type of the render state (alpha_func/bogus)")}));
  ASSERT_EQ(c->subStates.size(), 2u);
  EXPECT_FALSE(c->subStates[0].HasValue());
  EXPECT_EQ(c->GetSubRenderState("func")->GetStringValue(), "ALWAYS");
}

TEST_F(RenderStateTest, PartOfAnotherComplexStateIsUnknownHere) {
  ReadFragment<oxDAEFxComplexRenderState>(R"(<blend_func><func value="ALWAYS"/></blend_func>)");
  EXPECT_EQ(log.entries,
            (Log{Warning("cannot get the type of the render state (blend_func/func)")}));
}
