// Value arrays, accessors, sources and parameters.
#include <cmath>

#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::ElementText;
using oxtest::Error;
using oxtest::Warning;

namespace {

// A geometry library holding `sources`, so that arrays and accessors are read
// where documents have them.
std::string WithSources(std::string_view sources) {
  return Collada("<library_geometries><geometry id=\"g\"><mesh>" + std::string(sources) +
                 "</mesh></geometry></library_geometries>");
}

}  // namespace

OX_DOCUMENT_SUITE(ArrayReading);

// The values of an array are not zeroed before they are read, so the padding
// must be written even where the memory held numbers before: the first
// document's arrays are freed and their memory reused by the second's.
TEST_F(ArrayReading, PaddingZerosAreWrittenOverReusedMemory) {
  std::string nines;
  for (int i = 0; i < 5000; ++i)
    nines += "9 ";
  const auto source = [](std::string_view type, std::string_view values) {
    return "<source id=\"s\"><" + std::string(type) + " id=\"a\" count=\"5000\">" +
           std::string(values) + "</" + std::string(type) + "></source>";
  };
  for (const char* type : {"float_array", "int_array"}) {
    ASSERT_EQ(LoadText(WithSources(source(type, nines))), 0);
    // Blanks make the text long enough to hold the count.
    ASSERT_EQ(LoadText(WithSources(source(type, "1 2" + std::string(10000, ' ')))), 0);
    const auto* a = Find<oxDAEArray>("#a");
    ASSERT_NE(a, nullptr);
    const bool isFloat = std::string_view(type) == "float_array";
    ASSERT_EQ(a->GetValueCount(), 5000u) << type;
    size_t nonZero = 0;
    for (size_t i = 2; i < 5000; ++i)
      nonZero += (isFloat ? a->floats[i] != 0.0f : a->ints[i] != 0) ? 1 : 0;
    EXPECT_EQ(nonZero, 0u) << type;
    EXPECT_EQ(isFloat ? a->floats[1] : static_cast<float>(a->ints[1]), 2.0f) << type;
  }
}

TEST_XML(
    ArrayReading, FloatArrayCountBeyondTextPadsWithZeros,
    WithSources(R"(<source id="s"><float_array id="a" count="4">1 2</float_array></source>)")) {
  ASSERT_EQ(rc, 0);
  const auto* a = Find<oxDAEFloatArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->floats, (oxArray<float>{1, 2, 0, 0}));
  EXPECT_EQ(a->GetValueCount(), 4u);
  EXPECT_EQ(a->count, 4u);
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(
    ArrayReading, FloatArraySurplusValuesAreIgnored,
    WithSources(R"(<source id="s"><float_array id="a" count="2">1 2 3</float_array></source>)")) {
  const auto* a = Find<oxDAEFloatArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->floats, (oxArray<float>{1, 2}));
  EXPECT_EQ(a->GetValueCount(), 2u);
}

TEST_XML(
    ArrayReading, FloatTextWithSignsExponentsAndMixedWhiteSpace,
    WithSources("<source id=\"s\"><float_array id=\"a\" count=\"8\">\n\t-1.5 +2.25e2\r\n 3E-3 -0 "
                "1e+1\t\t.5 -7. 6.02214076e23</float_array></source>")) {
  const auto* a = Find<oxDAEFloatArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->floats,
            (oxArray<float>{-1.5f, 225.0f, 0.003f, -0.0f, 10.0f, 0.5f, -7.0f, 6.02214076e23f}));
  EXPECT_TRUE(std::signbit(a->floats[3]));
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(
    ArrayReading, HugeCountOverShortTextIsBoundedWithAnError,
    WithSources(
        R"(<source id="s"><float_array id="a" count="4000000000">1 2 3</float_array></source>)")) {
  ASSERT_EQ(rc, 0);
  const auto* a = Find<oxDAEFloatArray>("#a");
  ASSERT_NE(a, nullptr);
  // Five characters hold at most three values; 16 more may be declared.
  EXPECT_EQ(a->count, 19u);
  EXPECT_EQ(a->floats.size(), 19u);
  EXPECT_EQ(a->floats[2], 3.0f);
  EXPECT_EQ(a->floats[18], 0.0f);
  EXPECT_EQ(
      log.entries,
      (std::vector{Error(
          "<float_array> count 4000000000 is larger than its text can hold; reading 19 values")}));
}

TEST_XML(ArrayReading, HugeCountOfNameArrayIsBoundedToo,
         WithSources(
             R"(<source id="s"><Name_array id="a" count="4294967295">A B</Name_array></source>)")) {
  const auto* a = Find<oxDAENameArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->strings.size(), 18u);
  EXPECT_EQ(a->strings[1], "B");
  EXPECT_EQ(
      log.Count(
          OxKernel::kLogError,
          "<Name_array> count 4294967295 is larger than its text can hold; reading 18 values"),
      1u);
}

TEST_XML(ArrayReading, ArrayWithoutTextKeepsEmptyBuffers,
         WithSources(R"(<source id="s"><float_array id="a" count="3"/></source>)")) {
  const auto* a = Find<oxDAEFloatArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->count, 3u);
  EXPECT_TRUE(a->floats.empty());
  EXPECT_EQ(a->GetValueCount(), 0u);
  EXPECT_EQ(a->GetData(), nullptr);
}

TEST_XML(
    ArrayReading, InvalidNumberStopsTheParseAndWarns,
    WithSources(R"(<source id="s"><float_array id="a" count="4">1 2 x 4</float_array></source>)")) {
  const auto* a = Find<oxDAEFloatArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->floats, (oxArray<float>{1, 2, 0, 0}));
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value 'x' in <float_array>")}));
}

TEST_XML(
    ArrayReading, BoolArrayKeepsOnlyItsCount,
    WithSources(
        R"(<source id="s"><bool_array id="a" count="3">true false true</bool_array></source>)")) {
  const auto* a = Find<oxDAEBoolArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->count, 3u);
  EXPECT_EQ(a->GetValueCount(), 0u);
  EXPECT_EQ(ElementText(SaveText(), "bool_array"), R"(<bool_array id="a" count="3"/>)");
}

TEST_XML(
    ArrayReading, IntArrayReadsIntegers,
    WithSources(
        R"(<source id="s"><int_array id="a" count="3">-4 0 2147483647</int_array></source>)")) {
  const auto* a = Find<oxDAEIntArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->ints, (oxArray<int32_t>{-4, 0, 2147483647}));
  EXPECT_EQ(a->type, oxDAEArray::EValueType::INT);
  EXPECT_EQ(ElementText(SaveText(), "int_array"),
            R"(<int_array id="a" count="3">-4 0 2147483647</int_array>)");
}

TEST_XML(ArrayReading, GenericArrayReadsEveryAttribute,
         WithSources(
             R"(<source id="s"><array id="a" count="2" type="int" minInclusive="-3" maxInclusive="9"
                          digits="6" magnitude="-2">5 7</array></source>)")) {
  const auto* a = Find<oxDAEArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->GetRTTI().GetName(), std::string_view("oxDAEArray"));
  EXPECT_EQ(a->type, oxDAEArray::EValueType::INT);
  EXPECT_EQ(a->minInclusive, -3);
  EXPECT_EQ(a->maxInclusive, 9);
  EXPECT_EQ(a->digits, 6);
  EXPECT_EQ(a->magnitude, -2);
  EXPECT_EQ(a->ints, (oxArray<int32_t>{5, 7}));
  EXPECT_EQ(
      ElementText(SaveText(), "array"),
      R"(<array id="a" count="2" type="int" minInclusive="-3" maxInclusive="9" digits="6" magnitude="-2">5 7</array>)");
}

TEST_XML(
    ArrayReading, GenericArrayOfUnknownTypeReadsNoValues,
    WithSources(R"(<source id="s"><array id="a" count="2" type="double">5 7</array></source>)")) {
  const auto* a = Find<oxDAEArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->type, oxDAEArray::EValueType::UNSET);
  EXPECT_EQ(a->GetValueCount(), 0u);
  EXPECT_EQ(ElementText(SaveText(), "array"), R"(<array id="a" count="2" digits="8"/>)");
}

TEST_XML(
    ArrayReading, GenericFloatArrayWritesDefaultDigitsBack,
    WithSources(R"(<source id="s"><array id="a" count="2" type="float">0.5 1</array></source>)")) {
  EXPECT_EQ(ElementText(SaveText(), "array"),
            R"(<array id="a" count="2" type="float" digits="8">0.5 1</array>)");
}

TEST_XML(
    ArrayReading, FloatArrayNeverWritesDigits,
    WithSources(
        R"(<source id="s"><float_array id="a" count="2" digits="6" magnitude="3">0.5 1</float_array></source>)")) {
  EXPECT_EQ(ElementText(SaveText(), "float_array"),
            R"(<float_array id="a" count="2">0.5 1</float_array>)");
}

TEST_XML(
    ArrayReading, FloatArrayWritesTheNumberOfValuesHeldAsCount,
    WithSources(R"(<source id="s"><float_array id="a" count="3">1 2 3</float_array></source>)")) {
  auto* a = Find<oxDAEFloatArray>("#a");
  ASSERT_NE(a, nullptr);
  a->floats.push_back(4.0f);
  EXPECT_EQ(ElementText(SaveText(), "float_array"),
            R"(<float_array id="a" count="4">1 2 3 4</float_array>)");
  EXPECT_EQ(a->count, 4u);
}

TEST_XML(
    ArrayReading, IDREFArrayIsWrittenBackAsNameArray,
    WithSources(
        R"(<source id="s"><IDREF_array id="a" count="2">joint1 joint2</IDREF_array></source>)")) {
  const auto* a = Find<oxDAENameArray>("#a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->strings, (oxArray<oxString>{"joint1", "joint2"}));
  const std::string xml = SaveText();
  EXPECT_EQ(xml.find("IDREF_array"), std::string::npos);
  EXPECT_EQ(ElementText(xml, "Name_array"),
            R"(<Name_array id="a" count="2">joint1 joint2</Name_array>)");
}

TEST_XML(ArrayReading, ArrayWithNameAndNoIdIsFoundByName,
         WithSources(
             R"(<source id="s"><array name="values" count="1" type="float">7</array></source>)")) {
  const auto* a = Find<oxDAEArray>("#values");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->id, "values");
  EXPECT_EQ(a->floats, (oxArray<float>{7}));
}

TEST_XML(ArrayReading, TypedArrayWithNameAndNoIdIsNotRenamed,
         WithSources(
             R"(<source id="s"><float_array name="values" count="1">7</float_array></source>)")) {
  EXPECT_EQ(document.ResolveURI("#values"), nullptr);
  ASSERT_EQ(All<oxDAEFloatArray>().size(), 1u);
  EXPECT_TRUE(All<oxDAEFloatArray>()[0]->id.empty());
}

OX_DOCUMENT_SUITE(AccessorReading);

namespace {
std::string AccessorOver(std::string_view values, std::string_view accessorAttributes,
                         std::string_view params = "") {
  return WithSources("<source id=\"s\"><float_array id=\"a\" count=\"9\">" + std::string(values) +
                     "</float_array><technique_common><accessor source=\"#a\" " +
                     std::string(accessorAttributes) + ">" + std::string(params) +
                     "</accessor></technique_common></source>");
}
constexpr std::string_view kNine = "0 1 2 3 4 5 6 7 8";
}  // namespace

TEST_XML(AccessorReading, OffsetCountsRecordsNotValues,
         AccessorOver(kNine, R"(count="2" offset="1" stride="3")")) {
  const oxDAESource* s = Find<oxDAESource>("#s");
  ASSERT_NE(s, nullptr);
  const oxDAEAccessor* accessor = s->GetAccessor();
  ASSERT_NE(accessor, nullptr);
  EXPECT_EQ(accessor->source, Find<oxDAEArray>("#a"));
  EXPECT_EQ(accessor->GetFloatValue(0), 3.0f);
  EXPECT_EQ(accessor->GetVec3Value(0), (OxMath::oxGenVec3<float>{3, 4, 5}));
  EXPECT_EQ(accessor->GetVec3Value(1), (OxMath::oxGenVec3<float>{6, 7, 8}));
}

TEST_XML(AccessorReading, ZeroStrideReadsConsecutiveFloatsButTheFirstVector,
         AccessorOver(kNine, R"(count="9" offset="2" stride="0")")) {
  const oxDAEAccessor* accessor = Find<oxDAESource>("#s")->GetAccessor();
  ASSERT_NE(accessor, nullptr);
  EXPECT_EQ(accessor->GetFloatValue(0), 2.0f);
  EXPECT_EQ(accessor->GetFloatValue(3), 5.0f);
  EXPECT_EQ(accessor->GetVec3Value(0), (OxMath::oxGenVec3<float>{0, 1, 2}));
  EXPECT_EQ(accessor->GetVec3Value(5), (OxMath::oxGenVec3<float>{0, 1, 2}));
  EXPECT_EQ(accessor->GetVec4Value(3), (OxMath::oxGenVec4<float>{0, 1, 2, 3}));
}

TEST_XML(AccessorReading, RecordsPastTheArrayReadAsZero,
         AccessorOver(kNine, R"(count="3" stride="3")")) {
  const oxDAEAccessor* accessor = Find<oxDAESource>("#s")->GetAccessor();
  ASSERT_NE(accessor, nullptr);
  EXPECT_EQ(accessor->GetVec3Value(2), (OxMath::oxGenVec3<float>{6, 7, 8}));
  EXPECT_EQ(accessor->GetVec3Value(3), (OxMath::oxGenVec3<float>{}));
  EXPECT_EQ(accessor->GetVec4Value(2), (OxMath::oxGenVec4<float>{}));
  EXPECT_EQ(accessor->GetFloatValue(3), 0.0f);
  EXPECT_EQ(accessor->GetFloatValue(4000000000u), 0.0f);
  EXPECT_EQ(accessor->GetMatrix44Value(0).m[0], 0.0f);
  EXPECT_EQ(accessor->GetStringValue(0), "");
}

TEST_XML(
    AccessorReading, MatrixRecordIsTakenInTextOrder,
    WithSources(
        R"(<source id="s"><float_array id="a" count="16">1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16</float_array>
                          <technique_common><accessor source="#a" count="1" stride="16"/></technique_common></source>)")) {
  const OxMath::oxMatrix44 m = Find<oxDAESource>("#s")->GetAccessor()->GetMatrix44Value(0);
  for (int k = 0; k < 16; ++k)
    EXPECT_EQ(m.m[k], static_cast<float>(k + 1));
}

TEST_XML(AccessorReading, StringValuesFollowTheRecordArithmetic,
         WithSources(R"(<source id="s"><Name_array id="a" count="4">A B C D</Name_array>
                          <technique_common><accessor source="#a" count="2" offset="1" stride="2"/></technique_common></source>)")) {
  const oxDAEAccessor* accessor = Find<oxDAESource>("#s")->GetAccessor();
  EXPECT_EQ(accessor->GetStringValue(0), "C");
  EXPECT_EQ(accessor->GetStringValue(1), "");
}

TEST_XML(AccessorReading, MissingSourceLeavesNoArrayAndReadsZero,
         WithSources(
             R"(<source id="s"><technique_common><accessor source="#nowhere" count="3" stride="3"/>
                          </technique_common></source>)")) {
  ASSERT_EQ(rc, 0);
  oxDAEAccessor* accessor = Find<oxDAESource>("#s")->GetAccessor();
  ASSERT_NE(accessor, nullptr);
  EXPECT_EQ(accessor->source, nullptr);
  EXPECT_EQ(accessor->GetFloatValue(0), 0.0f);
  EXPECT_EQ(accessor->GetVec3Value(0), (OxMath::oxGenVec3<float>{}));
  EXPECT_EQ(ElementText(SaveText(), "accessor"), R"(<accessor count="0" stride="3"/>)");
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(
    AccessorReading, SourceNamingANonArrayIsNotTaken,
    WithSources(R"(<source id="s"><technique_common><accessor source="#s" count="3" stride="3"/>
                          </technique_common></source>)")) {
  EXPECT_EQ(Find<oxDAESource>("#s")->GetAccessor()->source, nullptr);
}

TEST_XML(AccessorReading, WriteRecountsRecordsAndOmitsDefaults,
         AccessorOver(kNine, R"(count="7" stride="3")", R"(<param name="X" type="float"/>)")) {
  EXPECT_EQ(ElementText(SaveText(), "accessor"),
            "<accessor count=\"3\" stride=\"3\" source=\"#a\">\n"
            "              <param name=\"X\" type=\"float\"/>\n"
            "            </accessor>");
}

TEST_XML(AccessorReading, StrideOneAndOffsetZeroAreNotWritten,
         AccessorOver(kNine, R"(count="9" stride="1")")) {
  EXPECT_EQ(ElementText(SaveText(), "accessor"), R"(<accessor count="9" source="#a"/>)");
}

TEST_XML(AccessorReading, ZeroStrideIsWrittenWithoutDividingByZero,
         AccessorOver(kNine, R"(count="9" offset="2" stride="0")")) {
  EXPECT_EQ(ElementText(SaveText(), "accessor"),
            R"(<accessor count="9" offset="2" stride="0" source="#a"/>)");
}

TEST_XML(AccessorReading, UnknownChildWarnsNamingAccessor,
         AccessorOver(kNine, R"(count="3" stride="3")",
                      R"(<param name="X" type="float"/><bogus/><parameter name="Y"/>)")) {
  const oxDAEAccessor* accessor = Find<oxDAESource>("#s")->GetAccessor();
  ASSERT_EQ(accessor->params.size(), 2u);
  EXPECT_EQ(accessor->params[0]->name, "X");
  EXPECT_EQ(accessor->params[1]->name, "Y");
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <bogus> in <accessor>")}));
}

OX_DOCUMENT_SUITE(SourceReading);

TEST_XML(SourceReading, ChildrenAreKeptInTheirSlots,
         WithSources(R"(<source name="named"><asset/><float_array id="a1" count="1">1</float_array>
                          <int_array id="a2" count="1">2</int_array>
                          <technique_common><accessor source="#a2" count="1"/><extra/><bogus/></technique_common>
                          <technique profile="MAYA"><param name="p" type="int">3</param></technique>
                          <mystery/></source>)")) {
  oxDAESource* s = Find<oxDAESource>("#named");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->id, "named");
  EXPECT_EQ(s->array, Find<oxDAEArray>("#a2"));
  ASSERT_NE(s->GetAccessor(), nullptr);
  EXPECT_EQ(s->GetAccessor()->source, Find<oxDAEArray>("#a2"));
  ASSERT_EQ(s->techniques.size(), 1u);
  EXPECT_EQ(s->techniques[0]->profile, "MAYA");
  ASSERT_EQ(s->techniques[0]->parameters.size(), 1u);
  EXPECT_EQ(s->techniques[0]->parameters[0]->intValue, 3);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <asset> in <source>"),
                                      Warning("unknown element <bogus> in <technique_common>"),
                                      Warning("unknown element <mystery> in <source>")}));
}

TEST_XML(SourceReading, ProfileTechniquesAreNotWritten,
         WithSources(R"(<source id="s"><float_array id="a" count="1">1</float_array>
                          <technique profile="MAYA"/></source>)")) {
  EXPECT_EQ(ElementText(SaveText(), "source"),
            "<source id=\"s\">\n"
            "          <float_array id=\"a\" count=\"1\">1</float_array>\n"
            "        </source>");
}

OX_DOCUMENT_SUITE(ParameterReading);

namespace {
std::string Param(std::string_view param) {
  return WithSources("<source id=\"s\"><technique_common><accessor count=\"1\">" +
                     std::string(param) + "</accessor></technique_common></source>");
}
}  // namespace

TEST_XML(ParameterReading, AliasFloatMapsToFloat, Param(R"(<param type="Float">2.5</param>)")) {
  const oxDAEParameter* p = All<oxDAEParameter>().at(0);
  EXPECT_EQ(p->valueType, oxDAEParameter::EType::Float);
  EXPECT_EQ(p->floatValue, 2.5f);
  EXPECT_TRUE(p->hasData);
}

TEST_XML(ParameterReading, TypeNamesAreCaseSensitive, Param(R"(<param type="FLOAT">2.5</param>)")) {
  const oxDAEParameter* p = All<oxDAEParameter>().at(0);
  EXPECT_EQ(p->valueType, oxDAEParameter::EType::Unknown);
  EXPECT_EQ(p->floatValue, 0.0f);
  EXPECT_TRUE(p->hasData);
  EXPECT_NE(SaveText().find(R"(<param type="FLOAT">undefined</param>)"), std::string::npos);
}

TEST_XML(
    ParameterReading, EveryAliasHasItsType,
    Param(
        R"(<param type="Time"/><param type="BooleanClass"/><param type="Integer"/><param type="BitMap"/>)")) {
  const auto params = All<oxDAEParameter>();
  ASSERT_EQ(params.size(), 4u);
  EXPECT_EQ(params[0]->valueType, oxDAEParameter::EType::Float);
  EXPECT_EQ(params[1]->valueType, oxDAEParameter::EType::Bool);
  EXPECT_EQ(params[2]->valueType, oxDAEParameter::EType::Int);
  EXPECT_EQ(params[3]->valueType, oxDAEParameter::EType::String);
}

TEST(ParameterTypes, TableMapsEveryNameToItsOwnType) {
  for (const oxDAEParameter::TypeInfo& info : oxDAEParameter::s_TypeInfos) {
    EXPECT_EQ(oxDAEParameter::_GetTypeFromString(info.name), info.type) << info.name;
    EXPECT_EQ(&oxDAEParameter::GetTypeInfo(info.type), &info);
  }
  EXPECT_EQ(oxDAEParameter::_GetTypeFromString("float5"), oxDAEParameter::EType::Unknown);
  EXPECT_EQ(oxDAEParameter::GetTypeInfo(oxDAEParameter::EType::Float4x4).components, 16u);
  EXPECT_EQ(oxDAEParameter::GetTypeInfo(oxDAEParameter::EType::ColorRGBA).baseType,
            oxDAEParameter::EType::Float);
}

TEST_XML(ParameterReading, Float3StoresATwelveByteBufferAndWritesItBack,
         Param(R"(<param name="P" type="float3" semantic="POS">1 2 3</param>)")) {
  const oxDAEParameter* p = All<oxDAEParameter>().at(0);
  EXPECT_EQ(p->dataSize, 12);
  EXPECT_EQ(p->floatData, (oxArray<float>{1, 2, 3}));
  EXPECT_EQ(ElementText(SaveText(), "param"),
            R"(<param name="P" type="float3" semantic="POS">1 2 3</param>)");
}

TEST_XML(ParameterReading, ShortVectorTextIsZeroFilled,
         Param(R"(<param type="int4">7 8</param>)")) {
  const oxDAEParameter* p = All<oxDAEParameter>().at(0);
  EXPECT_EQ(p->dataSize, 16);
  EXPECT_EQ(p->intData, (oxArray<int32_t>{7, 8, 0, 0}));
}

TEST_XML(ParameterReading, BoolVectorIsStoredAsZeroOrOne,
         Param(R"(<param type="bool3">true false 1</param>)")) {
  const oxDAEParameter* p = All<oxDAEParameter>().at(0);
  EXPECT_EQ(p->intData, (oxArray<int32_t>{1, 0, 1}));
  EXPECT_EQ(ElementText(SaveText(), "param"), R"(<param type="bool3">true false true</param>)");
}

TEST_XML(
    ParameterReading, ScalarsAndTextsRoundTrip,
    Param(
        R"(<param type="int">-12</param><param type="bool">true</param><param type="Name">joint 1</param>
                  <param type="dateTime">2006-01-01</param>)")) {
  const auto params = All<oxDAEParameter>();
  ASSERT_EQ(params.size(), 4u);
  EXPECT_EQ(params[0]->intValue, -12);
  EXPECT_TRUE(params[1]->boolValue);
  EXPECT_EQ(params[2]->stringValue, "joint 1");
  EXPECT_TRUE(params[3]->stringValue.empty());
  const std::string xml = SaveText();
  EXPECT_NE(xml.find(R"(<param type="int">-12</param>)"), std::string::npos);
  EXPECT_NE(xml.find(R"(<param type="bool">true</param>)"), std::string::npos);
  EXPECT_NE(xml.find(R"(<param type="Name">joint 1</param>)"), std::string::npos);
  EXPECT_NE(xml.find(R"(<param type="dateTime"/>)"), std::string::npos);
}

TEST_XML(ParameterReading, ParameterWithoutTextHasNoData, Param(R"(<param type="float3"/>)")) {
  const oxDAEParameter* p = All<oxDAEParameter>().at(0);
  EXPECT_FALSE(p->hasData);
  EXPECT_EQ(p->dataSize, -1);
  EXPECT_EQ(ElementText(SaveText(), "param"), R"(<param type="float3"/>)");
}

TEST_XML(
    ParameterReading, FlowIsReadButNeverWritten,
    Param(
        R"(<param type="float" flow="OUT">1</param><param type="float" flow="INOUT"/><param type="float" flow="x"/>)")) {
  const auto params = All<oxDAEParameter>();
  EXPECT_EQ(params[0]->flow, oxDAEParameter::EFlow::OUT);
  EXPECT_EQ(params[1]->flow, oxDAEParameter::EFlow::INOUT);
  EXPECT_EQ(params[2]->flow, oxDAEParameter::EFlow::IN);
  EXPECT_EQ(SaveText().find("flow"), std::string::npos);
}

TEST_XML(ParameterReading, ParameterTagIsWrittenAsParam,
         Param(R"(<parameter name="p" type="float">1</parameter>)")) {
  const std::string xml = SaveText();
  EXPECT_EQ(xml.find("<parameter"), std::string::npos);
  EXPECT_NE(xml.find(R"(<param name="p" type="float">1</param>)"), std::string::npos);
}
