// The CG profile: its code and include records, techniques, passes with their
// targets, clears, shaders and render states, read from whole documents.
#include <malloc.h>

#include <string>

#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::kNoLog;
using oxtest::Warning;
using Log = std::vector<oxtest::LogEntry>;

namespace {

using B = EFxBasicType;

class CgProfileTest : public oxtest::DocumentTest {
 protected:
  // The CG profile of the effect "fx".
  oxDAEFxProfileCG* Profile() {
    auto* effect = Find<oxDAEEffect>("#fx");
    if (!effect) return nullptr;
    return oxDAEFxProfileCG::DynamicCast(effect->GetProfile(oxDAEFxProfile::CG));
  }
  // Pass `pass` of technique `technique` of the CG profile.
  oxDAEFxPass* Pass(size_t technique = 0, size_t pass = 0) {
    oxDAEFxProfileCG* profile = Profile();
    if (!profile || technique >= profile->techniques.size()) return nullptr;
    const auto& passes = profile->techniques[technique]->passes;
    return pass < passes.size() ? passes[pass] : nullptr;
  }
};

// A document whose effect "fx" has a CG profile holding `content`.
std::string CgEffect(std::string_view content) {
  return oxtest::Collada(R"(<library_effects><effect id="fx"><profile_CG platform="PC-OGL">)" +
                         std::string(content) + "</profile_CG></effect></library_effects>");
}

// As CgEffect, with one technique "t" with one pass "p" holding `content`.
std::string CgPass(std::string_view content) {
  return CgEffect(R"(<technique sid="t"><pass sid="p">)" + std::string(content) +
                  "</pass></technique>");
}

}  // namespace

// --- A whole profile -----------------------------------------------------------------

TEST_XML(CgProfileTest, WholeProfileIsReachable, CgEffect(R"(
    <code sid="main">float4 f() : COLOR { return 1; }</code>
    <include sid="lib" url="file://C|/fx/lib.cg"/>
    <newparam sid="tint"><float4>1 0 0 1</float4></newparam>
    <technique sid="hi">
      <annotate name="UIName"><string>High</string></annotate>
      <pass sid="base">
        <annotate name="order"><int>1</int></annotate>
        <shader stage="VERTEX">
          <compiler_target>arbvp1</compiler_target>
          <name source="main">vmain</name>
          <bind symbol="tintColor"><param ref="tint"/></bind>
        </shader>
        <depth_test_enable value="true"/>
        <color_mask value="true true false true"/>
        <stencil_mask value="7"/>
        <line_stipple value="3 255"/>
        <scissor value="0 0 640 480"/>
        <point_size value="2.5"/>
        <depth_range value="0 0.5"/>
        <light_spot_direction index="1" value="0 -1 0"/>
        <clear_color value="0.25 0.5 0.75 1"/>
        <model_view_matrix value="1 0 0 0 0 1 0 0 0 0 1 0 5 6 7 1"/>
        <texture2D index="0" value="diffuseSampler"/>
        <texture_env_mode index="0" value="MODULATE"/>
        <cull_face value="FRONT"/>
        <stencil_func><func value="EQUAL"/><ref value="1"/></stencil_func>
      </pass>
      <pass sid="glow">
        <shader stage="FRAGMENT"><name source="main">fmain</name></shader>
        <blend_enable value="true"/>
        <blend_func><src value="SRC_ALPHA"/><dest value="ONE_MINUS_SRC_ALPHA"/></blend_func>
      </pass>
    </technique>)")) {
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(log.entries, kNoLog);
  oxDAEFxProfileCG* profile = Profile();
  ASSERT_NE(profile, nullptr);
  EXPECT_EQ(profile->GetProfileType(), oxDAEFxProfile::CG);
  EXPECT_EQ(profile->platform, "PC-OGL");
  ASSERT_NE(profile->GetCode("main"), nullptr);
  EXPECT_EQ(profile->GetCode("main")->text, "float4 f() : COLOR { return 1; }");
  ASSERT_NE(profile->GetInclude("lib"), nullptr);
  EXPECT_EQ(profile->GetInclude("lib")->url, "file:///C:/fx/lib.cg");
  ASSERT_NE(profile->GetNewParam("tint"), nullptr);
  EXPECT_EQ(profile->GetNewParam("tint")->GetValueType(), B::FLOAT4);

  ASSERT_EQ(profile->techniques.size(), 1u);
  oxDAEFxProfileCGTechnique* technique = profile->GetTechnique("hi");
  ASSERT_NE(technique, nullptr);
  EXPECT_EQ(technique->annotations.size(), 1u);
  ASSERT_EQ(technique->passes.size(), 2u);

  oxDAEFxPass* base = technique->GetPass("base");
  ASSERT_NE(base, nullptr);
  EXPECT_EQ(base->annotations.size(), 1u);
  EXPECT_EQ(base->shadersAndStates.size(), 15u);
  oxDAEFxShader* vertex = base->GetShader();
  ASSERT_NE(vertex, nullptr);
  EXPECT_EQ(vertex->stage, "VERTEX");
  EXPECT_EQ(vertex->compilerTarget, "arbvp1");
  EXPECT_EQ(vertex->entryName, "vmain");
  EXPECT_EQ(vertex->entrySource, "main");
  ASSERT_NE(vertex->GetBind("tintColor"), nullptr);
  EXPECT_EQ(vertex->GetBind("tintColor")->paramRef, "tint");

  struct Expected {
    const char* name;
    B type;
    const char* text;
  };
  const Expected states[] = {
      {"depth_test_enable", B::BOOL, "true"},
      {"color_mask", B::BOOL4, "true true false true"},
      {"stencil_mask", B::INT, "7"},
      {"line_stipple", B::INT2, "3 255"},
      {"scissor", B::INT4, "0 0 640 480"},
      {"point_size", B::FLOAT, "2.5"},
      {"depth_range", B::FLOAT2, "0 0.5"},
      {"light_spot_direction", B::FLOAT3, "0 -1 0"},
      {"clear_color", B::FLOAT4, "0.25 0.5 0.75 1"},
      {"model_view_matrix", B::FLOAT4X4, "1 0 0 0 0 1 0 0 0 0 1 0 5 6 7 1"},
      {"texture2D", B::SAMPLER2D, "diffuseSampler"},
      {"texture_env_mode", B::STRING, "MODULATE"},
      {"cull_face", B::ENUM, "FRONT"},
  };
  for (const Expected& e : states) {
    oxDAEFxSimpleRenderState* s = base->GetSimpleRenderState(e.name);
    ASSERT_NE(s, nullptr) << e.name;
    EXPECT_EQ(base->GetRenderState(e.name), s) << e.name;
    EXPECT_EQ(s->valueType, e.type) << e.name;
    EXPECT_EQ(s->GetStringValue(), e.text) << e.name;
  }
  EXPECT_EQ(base->GetSimpleRenderState("light_spot_direction")->index, 1);
  EXPECT_EQ(base->GetSimpleRenderState("texture2D", 0)->GetStringValue(), "diffuseSampler");
  EXPECT_EQ(base->GetSimpleRenderState("texture2D", 1), nullptr);
  oxDAEFxComplexRenderState* stencil = base->GetComplexRenderState("stencil_func");
  ASSERT_NE(stencil, nullptr);
  EXPECT_EQ(base->GetSimpleRenderState("stencil_func"), nullptr);
  EXPECT_EQ(stencil->GetSubRenderState("func")->GetStringValue(), "EQUAL");
  EXPECT_FALSE(base->HasRenderState("blend_enable"));

  oxDAEFxPass* glow = technique->passes[1];
  EXPECT_EQ(glow->sid, "glow");
  EXPECT_EQ(glow->GetShader("FRAGMENT")->entryName, "fmain");
  EXPECT_EQ(glow->GetShader("VERTEX"), nullptr);
  EXPECT_TRUE(glow->HasRenderState("blend_enable"));
  EXPECT_EQ(glow->GetComplexRenderState("blend_func")->GetSubRenderState("dest")->GetStringValue(),
            "ONE_MINUS_SRC_ALPHA");
}

TEST_XML(CgProfileTest, ShadersAndStatesKeepDocumentOrder,
         CgPass(R"(<cull_face_enable/><shader/><alpha_func><func/></alpha_func>)")) {
  oxDAEFxPass* pass = Pass();
  ASSERT_NE(pass, nullptr);
  ASSERT_EQ(pass->shadersAndStates.size(), 3u);
  EXPECT_NE(oxDAEFxSimpleRenderState::DynamicCast(pass->shadersAndStates[0]), nullptr);
  EXPECT_NE(oxDAEFxShader::DynamicCast(pass->shadersAndStates[1]), nullptr);
  EXPECT_NE(oxDAEFxComplexRenderState::DynamicCast(pass->shadersAndStates[2]), nullptr);
  EXPECT_EQ(pass->shadersAndStates[2]->parent, pass);
}

// --- Profile children ------------------------------------------------------------------

TEST_XML(CgProfileTest, AssetAndExtraAreNotSupported,
         CgEffect(R"(<asset/><technique sid="t"/><extra/><foo/>)")) {
  EXPECT_EQ(log.entries, (Log{Warning("<asset> elements are not supported in <profile_CG>"),
                              Warning("<extra> elements are not supported in <profile_CG>"),
                              Warning("unknown element <foo> in <profile_CG>")}));
  ASSERT_NE(Profile(), nullptr);
  EXPECT_EQ(Profile()->techniques.size(), 1u);
}

TEST_XML(CgProfileTest, ProfileIdIsRegistered, oxtest::Collada(R"(<library_effects><effect id="fx">
           <profile_CG id="cg"><image id="pic"><init_from>a.png</init_from></image></profile_CG>
         </effect></library_effects>)")) {
  auto* profile = Find<oxDAEFxProfileCG>("#cg");
  ASSERT_NE(profile, nullptr);
  EXPECT_EQ(profile, Profile());
  EXPECT_EQ(profile->platform, "");
  ASSERT_EQ(profile->images.size(), 1u);
  EXPECT_EQ(profile->images[0]->initFrom, "a.png");
}

TEST_XML(CgProfileTest, LookupsMissReturnNull, CgEffect(R"(<code sid="a">x</code>)")) {
  ASSERT_NE(Profile(), nullptr);
  EXPECT_EQ(Profile()->GetCode("A"), nullptr);
  EXPECT_EQ(Profile()->GetInclude("a"), nullptr);
  EXPECT_EQ(Profile()->GetTechnique("t"), nullptr);
}

TEST_XML(CgProfileTest, CodeTextSplitByCdataIsJoined,
         CgEffect("<code sid=\"c\">int a;<![CDATA[ if (a < 1) ]]>a = 1;</code>")) {
  ASSERT_NE(Profile(), nullptr);
  EXPECT_EQ(Profile()->GetCode("c")->text, "int a; if (a < 1) a = 1;");
}

// --- Techniques ---------------------------------------------------------------------------

TEST_XML(CgProfileTest, TechniqueHoldsItsOwnRecordsAndParams, CgEffect(R"(
    <technique sid="t">
      <asset/>
      <code sid="tc">void f() {}</code>
      <include sid="ti" url="shaders/common.cg"/>
      <image id="timg"/>
      <newparam sid="n"><float>2</float></newparam>
      <setparam ref="n"><float>3</float></setparam>
      <pass sid="p"/>
      <extra/>
    </technique>)")) {
  EXPECT_EQ(log.entries, (Log{Warning("unsupported element <asset> in <technique>"),
                              Warning("unsupported <extra> in <technique>")}));
  ASSERT_NE(Profile(), nullptr);
  oxDAEFxProfileCGTechnique* t = Profile()->techniques[0];
  EXPECT_EQ(t->GetCode("tc")->text, "void f() {}");
  EXPECT_EQ(t->GetInclude("ti")->url, "shaders/common.cg");
  EXPECT_EQ(t->images.size(), 1u);
  ASSERT_NE(t->GetNewParam("n"), nullptr);
  EXPECT_EQ(t->GetNewParam("n")->GetFloatValue(), 2.0f);
  ASSERT_EQ(t->setParams.size(), 1u);
  EXPECT_EQ(t->setParams[0]->ref, "n");
  EXPECT_EQ(t->GetPass("p"), t->passes[0]);
  EXPECT_TRUE(Profile()->codes.empty());
}

// --- Passes ---------------------------------------------------------------------------------

TEST_XML(CgProfileTest, PassTargetsClearsAndDraw, CgPass(R"(
    <color_target index="1" slice="2" mip="3" face="NEGATIVE_Z">colorSurface</color_target>
    <depth_target>depthSurface</depth_target>
    <stencil_target index="4"/>
    <color_clear index="1">0.5 0.25 0 1</color_clear>
    <color_clear>0.5</color_clear>
    <depth_clear index="2">0.75</depth_clear>
    <stencil_clear>8</stencil_clear>
    <draw>SCENE_GEOMETRY</draw>)")) {
  EXPECT_EQ(log.entries, kNoLog);
  oxDAEFxPass* pass = Pass();
  ASSERT_NE(pass, nullptr);
  ASSERT_EQ(pass->colorTargets.size(), 1u);
  EXPECT_EQ(pass->colorTargets[0].index, 1u);
  EXPECT_EQ(pass->colorTargets[0].slice, 2u);
  EXPECT_EQ(pass->colorTargets[0].mip, 3u);
  EXPECT_EQ(pass->colorTargets[0].face, "NEGATIVE_Z");
  EXPECT_EQ(pass->colorTargets[0].surface, "colorSurface");
  ASSERT_EQ(pass->depthTargets.size(), 1u);
  EXPECT_EQ(pass->depthTargets[0].index, 0u);
  EXPECT_EQ(pass->depthTargets[0].face, "POSITIVE_X");
  EXPECT_EQ(pass->depthTargets[0].surface, "depthSurface");
  ASSERT_EQ(pass->stencilTargets.size(), 1u);
  EXPECT_EQ(pass->stencilTargets[0].index, 4u);
  EXPECT_EQ(pass->stencilTargets[0].surface, "");
  ASSERT_EQ(pass->colorClears.size(), 2u);
  EXPECT_EQ(pass->colorClears[0].index, 1u);
  EXPECT_EQ(pass->colorClears[0].color, (OxMath::oxGenVec4<float>{0.5f, 0.25f, 0.0f, 1.0f}));
  EXPECT_EQ(pass->colorClears[1].color, (OxMath::oxGenVec4<float>{0.5f, 0.0f, 0.0f, 0.0f}));
  ASSERT_EQ(pass->depthClears.size(), 1u);
  EXPECT_EQ(pass->depthClears[0].index, 2u);
  EXPECT_EQ(pass->depthClears[0].depth, 0.75f);
  ASSERT_EQ(pass->stencilClears.size(), 1u);
  EXPECT_EQ(pass->stencilClears[0].stencil, 8);
  EXPECT_EQ(pass->draw, "SCENE_GEOMETRY");
  EXPECT_TRUE(pass->shadersAndStates.empty());
}

TEST_XML(CgProfileTest, EmptyClearsKeepTheirDefaults,
         CgPass("<color_clear/><depth_clear/><stencil_clear/>")) {
  oxDAEFxPass* pass = Pass();
  ASSERT_NE(pass, nullptr);
  EXPECT_EQ(pass->colorClears.at(0).color, (OxMath::oxGenVec4<float>{}));
  EXPECT_EQ(pass->depthClears.at(0).depth, 1.0f);
  EXPECT_EQ(pass->stencilClears.at(0).stencil, 0);
}

TEST_XML(CgProfileTest, PassExtraIsUnsupported, CgPass(R"(<extra/><blend_enable/>)")) {
  EXPECT_EQ(log.entries, (Log{Warning("unsupported <extra> in <pass>")}));
  ASSERT_NE(Pass(), nullptr);
  EXPECT_EQ(Pass()->shadersAndStates.size(), 1u);
}

TEST_XML(CgProfileTest, UnknownStateInAPassIsKeptWithoutValue,
         CgPass(R"(<foo_bar value="1"/><depth_test_enable/>)")) {
  EXPECT_EQ(log.entries, (Log{Warning("cannot get the type of the render state (foo_bar)")}));
  oxDAEFxPass* pass = Pass();
  ASSERT_NE(pass, nullptr);
  ASSERT_NE(pass->GetSimpleRenderState("foo_bar"), nullptr);
  EXPECT_FALSE(pass->GetSimpleRenderState("foo_bar")->HasValue());
  EXPECT_TRUE(pass->GetSimpleRenderState("depth_test_enable")->HasValue());
}

TEST_XML(CgProfileTest, StateValueThatDoesNotConvertIsReportedAndKept,
         CgPass(R"(<point_size value="large"/>)")) {
  EXPECT_EQ(log.entries,
            (Log{Warning("cannot convert the value of the render state (point_size)")}));
  ASSERT_NE(Pass(), nullptr);
  oxDAEFxSimpleRenderState* s = Pass()->GetSimpleRenderState("point_size");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->valueType, B::FLOAT);
  EXPECT_FALSE(s->HasValue());
}

TEST_XML(CgProfileTest, PassSidIsRegisteredUnderItsPath, CgPass("")) {
  ASSERT_NE(Pass(), nullptr);
  EXPECT_EQ(document.ResolvePath("fx/p"), Pass());
}

// --- Shaders --------------------------------------------------------------------------------

TEST_XML(CgProfileTest, ShaderReadsItsCompilerEntryAndBinds, CgPass(R"(
    <shader stage="FRAGMENT">
      <annotate name="note"><string>x</string></annotate>
      <compiler_target>arbfp1</compiler_target>
      <compiler_options>-O3</compiler_options>
      <name source="lib">shade</name>
      <bind symbol="gain"><float>0.5</float></bind>
      <bind symbol="tex"><param ref="diffuseSampler"/></bind>
      <oops/>
    </shader>)")) {
  EXPECT_EQ(log.entries, (Log{Warning("unknown element <oops> in <shader>")}));
  ASSERT_NE(Pass(), nullptr);
  oxDAEFxShader* shader = Pass()->GetShader();
  ASSERT_NE(shader, nullptr);
  EXPECT_EQ(shader->stage, "FRAGMENT");
  EXPECT_EQ(shader->annotations.size(), 1u);
  EXPECT_EQ(shader->compilerTarget, "arbfp1");
  EXPECT_EQ(shader->compilerOptions, "-O3");
  EXPECT_EQ(shader->entryName, "shade");
  EXPECT_EQ(shader->entrySource, "lib");
  ASSERT_EQ(shader->binds.size(), 2u);
  EXPECT_EQ(shader->binds[0].symbol, "gain");
  EXPECT_EQ(shader->binds[0].GetValueType(), B::FLOAT);
  EXPECT_EQ(shader->binds[0].GetFloatValue(), 0.5f);
  EXPECT_EQ(shader->binds[0].paramRef, "");
  EXPECT_EQ(shader->GetBind("tex")->paramRef, "diffuseSampler");
  EXPECT_EQ(shader->GetBind("tex")->GetValueType(), B::UNKNOWN);
  EXPECT_EQ(shader->GetBind("none"), nullptr);
}

// --- Size -----------------------------------------------------------------------------------

namespace {

std::string ManyStates(int count) {
  std::string states;
  states.reserve(static_cast<size_t>(count) * 40);
  for (int i = 0; i < count; ++i) {
    states += "<light_enable index=\"" + std::to_string(i % 8) + "\" value=\"true\"/>";
  }
  return CgPass(states + R"(<point_size value="9"/>)");
}

std::string HugeCode() {
  return CgEffect(R"(<code sid="big">)" + std::string(20u << 20, 'x') + "</code>");
}

}  // namespace

TEST_XML(CgProfileTest, PassWithAHundredThousandStates, ManyStates(100000)) {
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(log.entries, kNoLog);
  oxDAEFxPass* pass = Pass();
  ASSERT_NE(pass, nullptr);
  ASSERT_EQ(pass->shadersAndStates.size(), 100001u);
  // One element per state, beside the root, library, effect, profile,
  // technique and pass.
  EXPECT_LT(document.GetElements().size(), 100001u + 10u);
  EXPECT_EQ(pass->GetSimpleRenderState("point_size")->GetStringValue(), "9");
  EXPECT_EQ(pass->GetSimpleRenderState("light_enable", 7)->index, 7);
}

TEST_F(CgProfileTest, HundredThousandStatesTakeMemoryInProportion) {
  const std::string xml = ManyStates(100000);
  const size_t before = mallinfo2().uordblks;
  ASSERT_EQ(LoadText(xml), 0);
  const size_t used = mallinfo2().uordblks - before;
  ASSERT_NE(Pass(), nullptr);
  EXPECT_EQ(Pass()->shadersAndStates.size(), 100001u);
  // A state element with its name, value and list entries takes about 200
  // bytes, some five times its 38 bytes of markup.
  EXPECT_LT(used, 100001u * 300u);
  EXPECT_LT(used, 8 * xml.size());
}

TEST_XML(CgProfileTest, CodeOfTwentyMegabytesIsKept, HugeCode()) {
  EXPECT_EQ(rc, 0);
  ASSERT_NE(Profile(), nullptr);
  const SFxCode* code = Profile()->GetCode("big");
  ASSERT_NE(code, nullptr);
  EXPECT_EQ(code->text.size(), 20u << 20);
  EXPECT_EQ(code->text.find_first_not_of('x'), std::string::npos);
}
