// Effect parameters: <newparam>, <setparam>, <annotate>, their typed values,
// the basic-type table, and the data parameters of tool techniques.
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Error;
using oxtest::kNoLog;

namespace {

using B = EFxBasicType;

using FxParamTest = oxtest::DocumentTest;

}  // namespace

// --- Values by type ----------------------------------------------------------------

TEST_F(FxParamTest, Float3ReadsAnArrayOfThree) {
  auto* p = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="c"><float3>1 2 3</float3></newparam>)");
  EXPECT_EQ(p->sid, "c");
  EXPECT_EQ(p->GetValueType(), B::FLOAT3);
  EXPECT_EQ(static_cast<int>(p->GetValueType()), 10);
  EXPECT_EQ(p->valueCategory, 2);
  EXPECT_EQ(p->GetArrayOfFloatsValue(), (oxArray<float>{1.0f, 2.0f, 3.0f}));
  EXPECT_EQ(p->GetVec3Value(), (OxMath::oxGenVec3<float>{1.0f, 2.0f, 3.0f}));
  EXPECT_EQ(p->GetStringValue(), "1 2 3");
  EXPECT_EQ(p->GetStringType(), "float3");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, IntegerVectorsAreNotSupported) {
  auto* p = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="i"><int2>1 2</int2></newparam>)");
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("value type not supported yet")}));
  EXPECT_EQ(p->GetValueType(), B::INT2);
  EXPECT_EQ(static_cast<int>(p->GetValueType()), 5);
  EXPECT_EQ(p->valueCategory, 3);
  EXPECT_TRUE(p->GetArrayOfIntsValue().empty());
  EXPECT_EQ(p->GetIntValue(), 0);
}

TEST_F(FxParamTest, SetParamFloatIsAScalar) {
  auto* p = ReadFragment<oxDAEFxSetParam>(R"(<setparam ref="x"><float>0.5</float></setparam>)");
  EXPECT_EQ(p->ref, "x");
  EXPECT_EQ(p->GetValueType(), B::FLOAT);
  EXPECT_EQ(p->valueCategory, 0);
  EXPECT_EQ(p->GetFloatValue(), 0.5f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, AnnotateWithAStringKeepsTheWord) {
  auto* a =
      ReadFragment<oxDAEFxAnnotate>(R"(<annotate name="UIName"><string>Gloss</string></annotate>)");
  EXPECT_EQ(a->name, "UIName");
  EXPECT_EQ(a->GetValueType(), B::STRING);
  EXPECT_EQ(static_cast<int>(a->GetValueType()), 35);
  EXPECT_EQ(a->valueCategory, 3);
  EXPECT_EQ(a->GetStringValue(), "Gloss");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, Sampler2DReadsItsChildrenAndIsWrittenEmpty) {
  auto* p = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="s"><sampler2D>
      <source>surf</source><minfilter>LINEAR</minfilter></sampler2D></newparam>)");
  EXPECT_EQ(p->GetValueType(), B::SAMPLER2D);
  EXPECT_EQ(p->valueCategory, 1);
  oxDAEFxSampler* sampler = p->GetSamplerValue();
  ASSERT_NE(sampler, nullptr);
  EXPECT_EQ(p->GetElementValue(), sampler);
  EXPECT_EQ(sampler->GetSamplerType(), oxDAEFxSampler::EFxSamplerType::SAMPLER_2D);
  EXPECT_EQ(sampler->source, "surf");
  EXPECT_EQ(sampler->minFilter, EFxSamplerFilter::LINEAR);
  EXPECT_EQ(sampler->parent, p);
  EXPECT_EQ(Written([&] { p->WriteBasicTypeElement(document); }), "<w>\n  <sampler2D/>\n</w>\n");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, EachSamplerElementGivesItsSamplerType) {
  using T = oxDAEFxSampler::EFxSamplerType;
  const std::pair<std::string, T> cases[] = {
      {"sampler1D", T::SAMPLER_1D},     {"sampler2D", T::SAMPLER_2D},
      {"sampler3D", T::SAMPLER_3D},     {"samplerCUBE", T::SAMPLER_CUBE},
      {"samplerRECT", T::SAMPLER_RECT}, {"samplerDEPTH", T::SAMPLER_DEPTH}};
  for (const auto& [tag, type] : cases) {
    auto* p = ReadFragment<oxDAEFxNewParam>("<newparam sid=\"s\"><" + tag + "/></newparam>");
    ASSERT_NE(p->GetSamplerValue(), nullptr) << tag;
    EXPECT_EQ(p->GetSamplerValue()->GetSamplerType(), type) << tag;
    EXPECT_EQ(p->GetSamplerValue()->GetTypeTag(), tag);
  }
}

TEST_F(FxParamTest, SurfaceValueIsOwnedAndRead) {
  auto* p = ReadFragment<oxDAEFxNewParam>(
      R"(<newparam sid="surf"><surface type="2D"><init_from>img</init_from></surface></newparam>)");
  EXPECT_EQ(p->GetValueType(), B::SURFACE);
  EXPECT_EQ(p->valueCategory, 1);
  oxDAEFxSurface* surface = p->GetSurfaceValue();
  ASSERT_NE(surface, nullptr);
  EXPECT_EQ(p->GetElementValue(), surface);
  EXPECT_EQ(p->GetSamplerValue(), nullptr);
  EXPECT_EQ(surface->type, EFxSurfaceType::TYPE_2D);
  ASSERT_EQ(surface->initFrom.size(), 1u);
  EXPECT_EQ(surface->initFrom[0].ref, "img");
  EXPECT_EQ(surface->parent, p);
}

TEST_F(FxParamTest, BoolIntAndFloatScalars) {
  auto* b = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="b"><bool>true</bool></newparam>)");
  EXPECT_EQ(b->GetValueType(), B::BOOL);
  EXPECT_EQ(b->valueCategory, 0);
  EXPECT_TRUE(b->GetBoolValue());
  auto* i = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="i"><int>-7</int></newparam>)");
  EXPECT_EQ(i->GetValueType(), B::INT);
  EXPECT_EQ(i->valueCategory, 0);
  EXPECT_EQ(i->GetIntValue(), -7);
  auto* f = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="f"><float>2.25</float></newparam>)");
  EXPECT_EQ(f->GetFloatValue(), 2.25f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, BoolVectorsReadAnArray) {
  auto* p = ReadFragment<oxDAEFxNewParam>(
      R"(<newparam sid="b"><bool3>true false true</bool3></newparam>)");
  EXPECT_EQ(p->GetValueType(), B::BOOL3);
  EXPECT_EQ(p->valueCategory, 2);
  EXPECT_EQ(p->GetArrayOfBoolsValue(), (oxArray<bool>{true, false, true}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, MatrixTypesReadRowsTimesColumnsFloats) {
  auto* p = ReadFragment<oxDAEFxNewParam>(
      R"(<newparam sid="m"><float2x3>1 2 3 4 5 6 7</float2x3></newparam>)");
  EXPECT_EQ(p->GetValueType(), B::FLOAT2X3);
  EXPECT_EQ(p->GetArrayOfFloatsValue(), (oxArray<float>{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(p->GetVec4Value(), (OxMath::oxGenVec4<float>{1, 2, 3, 4}));
}

TEST_F(FxParamTest, ShortMatrixTextIsPaddedWithZeros) {
  auto* p =
      ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="m"><float4x4>1 2 3</float4x4></newparam>)");
  oxArray<float> expected(16, 0.0f);
  expected[0] = 1.0f;
  expected[1] = 2.0f;
  expected[2] = 3.0f;
  EXPECT_EQ(p->GetArrayOfFloatsValue(), expected);
  EXPECT_EQ(p->GetStringValue(), "1 2 3");
  EXPECT_EQ(p->valueCategory, 2);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, LongMatrixTextKeepsRowsTimesColumnsFloats) {
  std::string numbers;
  for (int i = 0; i < 10000; ++i)
    numbers += std::to_string(i % 10) + " ";
  auto* p = ReadFragment<oxDAEFxNewParam>("<newparam sid=\"m\"><float2x2>" + numbers +
                                          "</float2x2></newparam>");
  EXPECT_EQ(p->GetArrayOfFloatsValue(), (oxArray<float>{0, 1, 2, 3}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, BoolVectorTextThatDoesNotReadStopsWithAWarning) {
  auto* p =
      ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="b"><bool4>true yes true</bool4></newparam>)");
  EXPECT_EQ(p->GetArrayOfBoolsValue(), (oxArray<bool>{true, false, false, false}));
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{oxtest::Warning("invalid value 'yes' in <bool4>")}));
}

TEST_F(FxParamTest, VectorGettersPadAShortArrayWithZeros) {
  auto* p = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="v"><float2>4 5</float2></newparam>)");
  EXPECT_EQ(p->GetVec2Value(), (OxMath::oxGenVec2<float>{4, 5}));
  EXPECT_EQ(p->GetVec3Value(), (OxMath::oxGenVec3<float>{4, 5, 0}));
  EXPECT_EQ(p->GetVec4Value(), (OxMath::oxGenVec4<float>{4, 5, 0, 0}));
}

TEST_F(FxParamTest, GettersOfAnotherKindAnswerEmptyValues) {
  auto* p = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="c"><float3>1 2 3</float3></newparam>)");
  EXPECT_FALSE(p->GetBoolValue());
  EXPECT_EQ(p->GetIntValue(), 0);
  EXPECT_EQ(p->GetFloatValue(), 0.0f);
  EXPECT_TRUE(p->GetArrayOfBoolsValue().empty());
  EXPECT_TRUE(p->GetArrayOfIntsValue().empty());
  EXPECT_EQ(p->GetElementValue(), nullptr);
  auto* s = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="s"><string>x</string></newparam>)");
  EXPECT_TRUE(s->GetArrayOfFloatsValue().empty());
  EXPECT_EQ(s->GetVec3Value(), (OxMath::oxGenVec3<float>{}));
}

TEST_F(FxParamTest, UnknownValueElementIsAnUndefinedType) {
  auto* p = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="u"><float5>1</float5></newparam>)");
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("undefined value type")}));
  EXPECT_EQ(p->GetValueType(), B::UNKNOWN);
  EXPECT_EQ(p->valueCategory, 3);
  EXPECT_EQ(p->GetStringValue(), "1");
}

TEST_F(FxParamTest, ModifierIsReadAsTheValueElement) {
  auto* p = ReadFragment<oxDAEFxNewParam>(
      R"(<newparam sid="m"><modifier>CONST</modifier><float>1</float></newparam>)");
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("undefined value type")}));
  EXPECT_EQ(p->GetValueType(), B::FLOAT);
  EXPECT_EQ(p->GetFloatValue(), 1.0f);
}

TEST_F(FxParamTest, ALaterValueElementReplacesAnEarlierOne) {
  auto* p = ReadFragment<oxDAEFxNewParam>(
      R"(<newparam sid="v"><sampler2D><source>s</source></sampler2D><float2>2 3</float2></newparam>)");
  EXPECT_EQ(p->GetValueType(), B::FLOAT2);
  EXPECT_EQ(p->valueCategory, 2);
  EXPECT_EQ(p->GetElementValue(), nullptr);
  EXPECT_EQ(p->GetVec2Value(), (OxMath::oxGenVec2<float>{2, 3}));
}

TEST_F(FxParamTest, EnumKeepsItsTextAndHasNoTypeWord) {
  auto* p = ReadFragment<oxDAEFxSetParam>(R"(<setparam ref="e"><enum>LINEAR</enum></setparam>)");
  EXPECT_EQ(p->GetValueType(), B::ENUM);
  EXPECT_EQ(p->valueCategory, 3);
  EXPECT_EQ(p->GetStringValue(), "LINEAR");
  EXPECT_EQ(p->GetStringType(), "");
  EXPECT_EQ(log.entries, kNoLog);
}

// --- <newparam>, <setparam>, <annotate> ----------------------------------------------

TEST_F(FxParamTest, NewParamKeepsSemanticAndAnnotationCopies) {
  auto* p = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="c" name="n" id="i">
      <annotate name="UIName"><string>Colour</string></annotate>
      <semantic>DIFFUSE</semantic>
      <annotate name="UIMax"><float>2</float></annotate>
      <float3>1 2 3</float3></newparam>)");
  EXPECT_EQ(p->semantic, "DIFFUSE");
  EXPECT_EQ(p->name, "");
  EXPECT_EQ(p->id, "");
  ASSERT_EQ(p->annotations.size(), 2u);
  EXPECT_EQ(p->annotations[0].name, "UIName");
  EXPECT_EQ(p->annotations[0].GetStringValue(), "Colour");
  EXPECT_EQ(p->annotations[1].name, "UIMax");
  EXPECT_EQ(p->annotations[1].GetFloatValue(), 2.0f);
  EXPECT_EQ(p->GetValueType(), B::FLOAT3);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, SetParamKeepsAnnotationsAndNeedsNoRef) {
  auto* p = ReadFragment<oxDAEFxSetParam>(
      R"(<setparam><annotate name="a"><bool>1</bool></annotate><int>3</int></setparam>)");
  EXPECT_EQ(p->ref, "");
  ASSERT_EQ(p->annotations.size(), 1u);
  EXPECT_TRUE(p->annotations[0].GetBoolValue());
  EXPECT_EQ(p->GetIntValue(), 3);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, SetParamWhoseTypeDiffersFromItsNewParamIsKeptAsWritten) {
  auto* newParam =
      ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="c"><float3>1 2 3</float3></newparam>)");
  auto* setParam = ReadFragment<oxDAEFxSetParam>(R"(<setparam ref="c"><sampler2D/></setparam>)");
  EXPECT_EQ(setParam->ref, newParam->sid);
  EXPECT_EQ(setParam->GetValueType(), B::SAMPLER2D);
  EXPECT_NE(setParam->GetSamplerValue(), nullptr);
  EXPECT_EQ(newParam->GetValueType(), B::FLOAT3);
  EXPECT_EQ(newParam->GetVec3Value(), (OxMath::oxGenVec3<float>{1, 2, 3}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, AnnotateWithoutChildHasNoValue) {
  auto* a = ReadFragment<oxDAEFxAnnotate>(R"(<annotate name="n"/>)");
  EXPECT_EQ(a->GetValueType(), B::UNKNOWN);
  EXPECT_EQ(a->valueCategory, 3);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, AnnotateIsWrittenWithoutItsName) {
  auto* a = ReadFragment<oxDAEFxAnnotate>(R"(<annotate name="n"><float>0.5</float></annotate>)");
  EXPECT_EQ(Written([&] { document.WriteChild(a); }),
            "<w>\n  <annotate>\n    <float>0.5</float>\n  </annotate>\n</w>\n");
}

TEST_F(FxParamTest, ScalarsAreWrittenFromTheValueAndOtherTypesFromTheText) {
  auto* b = ReadFragment<oxDAEFxAnnotate>(R"(<annotate name="b"><bool>1</bool></annotate>)");
  auto* i = ReadFragment<oxDAEFxAnnotate>(R"(<annotate name="i"><int> 07 </int></annotate>)");
  auto* v = ReadFragment<oxDAEFxAnnotate>(R"(<annotate name="v"><float2>1  2</float2></annotate>)");
  auto* e = ReadFragment<oxDAEFxAnnotate>(R"(<annotate name="e"><enum>ONE</enum></annotate>)");
  EXPECT_EQ(Written([&] { b->WriteBasicTypeElement(document); }),
            "<w>\n  <bool>true</bool>\n</w>\n");
  EXPECT_EQ(Written([&] { i->WriteBasicTypeElement(document); }), "<w>\n  <int>7</int>\n</w>\n");
  EXPECT_EQ(Written([&] { v->WriteBasicTypeElement(document); }),
            "<w>\n  <float2>1  2</float2>\n</w>\n");
  // ENUM has no type word: its text goes straight into the enclosing element.
  EXPECT_EQ(Written([&] { e->WriteBasicTypeElement(document); }), "<w>ONE</w>\n");
}

TEST_F(FxParamTest, NewAndSetParamsWriteNothing) {
  auto* n = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="c"><float>1</float></newparam>)");
  auto* s = ReadFragment<oxDAEFxSetParam>(R"(<setparam ref="c"><float>1</float></setparam>)");
  EXPECT_EQ(Written([&] {
              document.WriteChild(n);
              document.WriteChild(s);
            }),
            "<w/>\n");
}

TEST_F(FxParamTest, NewParamIsFoundByItsSidInsideItsEffect) {
  auto* effect = new oxDAEEffect;
  effect->id = "e";
  document._AddElement(effect);
  auto* profile = new oxDAEFxProfile;
  profile->parent = effect;
  document._AddElement(profile);
  auto* p =
      ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="c"><float>1</float></newparam>)", profile);
  EXPECT_EQ(p->GetPath(), "e/c");
  EXPECT_EQ(document.ResolvePath("c", profile), p);
  EXPECT_EQ(document.ResolvePath("e/c"), p);
  EXPECT_EQ(document.ResolvePath("C", profile), nullptr);
  EXPECT_EQ(document.ResolvePath("c"), nullptr);
}

// --- Copies ------------------------------------------------------------------------

TEST_F(FxParamTest, CopyOfASamplerParamOwnsItsOwnSampler) {
  auto* p = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="s"><samplerCUBE>
      <source>surf</source><wrap_s>CLAMP</wrap_s></samplerCUBE></newparam>)");
  oxDAEFxNewParam copy(*p);
  ASSERT_NE(copy.GetSamplerValue(), nullptr);
  EXPECT_NE(copy.GetSamplerValue(), p->GetSamplerValue());
  EXPECT_EQ(copy.GetSamplerValue()->parent, &copy);
  EXPECT_EQ(copy.GetSamplerValue()->GetSamplerType(), oxDAEFxSampler::EFxSamplerType::SAMPLER_CUBE);
  EXPECT_EQ(copy.GetSamplerValue()->wrapS, EFxSamplerWrap::CLAMP);
  p->GetSamplerValue()->source = "changed";
  EXPECT_EQ(copy.GetSamplerValue()->source, "surf");
  EXPECT_EQ(copy.sid, "s");
  EXPECT_EQ(copy.valueCategory, 1);
}

TEST_F(FxParamTest, AssignmentOfASamplerParamReplacesTheValueWithACopy) {
  auto* p = ReadFragment<oxDAEFxNewParam>(
      R"(<newparam sid="s"><sampler2D><source>surf</source></sampler2D></newparam>)");
  auto* target =
      ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="t"><float3>1 2 3</float3></newparam>)");
  *target = *p;
  ASSERT_NE(target->GetSamplerValue(), nullptr);
  EXPECT_NE(target->GetSamplerValue(), p->GetSamplerValue());
  EXPECT_EQ(target->GetSamplerValue()->parent, target);
  EXPECT_EQ(target->GetSamplerValue()->source, "surf");
  EXPECT_TRUE(target->GetArrayOfFloatsValue().empty());
  EXPECT_EQ(target->GetValueType(), B::SAMPLER2D);
  EXPECT_EQ(target->sid, "s");
}

TEST_F(FxParamTest, CopiesOfAFloatArrayParamAreIndependent) {
  auto* p = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="c"><float3>1 2 3</float3></newparam>)");
  oxDAEFxNewParam copy(*p);
  oxDAEFxNewParam assigned;
  assigned = *p;
  EXPECT_NE(copy.GetArrayOfFloatsValue().data(), p->GetArrayOfFloatsValue().data());
  EXPECT_NE(assigned.GetArrayOfFloatsValue().data(), p->GetArrayOfFloatsValue().data());
  EXPECT_EQ(copy.GetVec3Value(), (OxMath::oxGenVec3<float>{1, 2, 3}));
  EXPECT_EQ(assigned.GetVec3Value(), (OxMath::oxGenVec3<float>{1, 2, 3}));
  EXPECT_EQ(assigned.GetStringValue(), "1 2 3");
  EXPECT_EQ(assigned.valueCategory, 2);
}

TEST_F(FxParamTest, AnnotationsHoldingSurfacesSurviveGrowingTheirList) {
  auto* p = ReadFragment<oxDAEFxNewParam>(R"(<newparam sid="c">
      <annotate name="a"><surface type="CUBE"/></annotate>
      <annotate name="b"><surface type="3D"/></annotate>
      <annotate name="c"><surface type="1D"/></annotate></newparam>)");
  ASSERT_EQ(p->annotations.size(), 3u);
  const EFxSurfaceType types[] = {EFxSurfaceType::CUBE, EFxSurfaceType::TYPE_3D,
                                  EFxSurfaceType::TYPE_1D};
  for (size_t i = 0; i < 3; ++i) {
    const oxDAEFxSurface* surface = p->annotations[i].GetSurfaceValue();
    ASSERT_NE(surface, nullptr);
    EXPECT_EQ(surface->type, types[i]);
    EXPECT_EQ(surface->parent, &p->annotations[i]);
  }
}

// --- Basic type information ----------------------------------------------------------

TEST(BasicTypeInfo, GivesKindAndShapeByType) {
  using K = SBasicTypeInfo::EKind;
  const SBasicTypeInfo* m = oxDAEEnumConverter::GetBasicTypeInfo(B::FLOAT3X2);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(m->type, B::FLOAT3X2);
  EXPECT_EQ(m->kind, K::FLOAT);
  EXPECT_EQ(m->rows, 3);
  EXPECT_EQ(m->columns, 2);
  EXPECT_EQ(m->GetComponentCount(), 6u);
  EXPECT_EQ(oxDAEEnumConverter::GetBasicTypeInfo(B::BOOL4)->GetComponentCount(), 4u);
  EXPECT_EQ(oxDAEEnumConverter::GetBasicTypeInfo(B::INT)->kind, K::INT);
  EXPECT_EQ(oxDAEEnumConverter::GetBasicTypeInfo(B::SURFACE)->kind, K::SURFACE);
  EXPECT_EQ(oxDAEEnumConverter::GetBasicTypeInfo(B::SAMPLERDEPTH)->kind, K::SAMPLER);
  EXPECT_EQ(oxDAEEnumConverter::GetBasicTypeInfo(B::ENUM)->kind, K::TEXT);
  EXPECT_EQ(oxDAEEnumConverter::GetBasicTypeInfo(B::STRING)->GetComponentCount(), 0u);
  EXPECT_EQ(&oxDAEEnumConverter::s_ArrayBasicTypeToTypeInfo[27],
            oxDAEEnumConverter::GetBasicTypeInfo(B::FLOAT4X4));
}

TEST(BasicTypeInfo, HasNoRowOutsideTheEnumeration) {
  EXPECT_EQ(oxDAEEnumConverter::GetBasicTypeInfo(B::UNKNOWN), nullptr);
  EXPECT_EQ(oxDAEEnumConverter::GetBasicTypeInfo(static_cast<B>(37)), nullptr);
}

// --- Data parameters of tool techniques ------------------------------------------------

TEST_F(FxParamTest, DynamicParamKeepsItsElementNameAndReadsItsData) {
  auto* p = ReadFragment<oxDAEDynamicParam>(
      R"(<bumpDepth shortName="bd" type="float3" sid="x">1 2 3</bumpDepth>)");
  EXPECT_EQ(p->elementName, "bumpDepth");
  EXPECT_EQ(p->shortName, "bd");
  EXPECT_EQ(p->type, "float3");
  EXPECT_EQ(p->valueType, oxDAEParameter::EType::Float3);
  EXPECT_EQ(p->floatData, (oxArray<float>{1, 2, 3}));
  EXPECT_EQ(Written([&] { document.WriteChild(p); }), "<w/>\n");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(FxParamTest, DynamicParamWithAnUnknownTypeKeepsNoValue) {
  auto* p = ReadFragment<oxDAEDynamicParam>(R"(<flag type="mystery">yes</flag>)");
  EXPECT_EQ(p->elementName, "flag");
  EXPECT_EQ(p->valueType, oxDAEParameter::EType::Unknown);
  EXPECT_TRUE(p->floatData.empty());
  EXPECT_EQ(p->stringValue, "");
}
