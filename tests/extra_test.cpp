// <extra>, <technique>, the technique class chosen by owner and profile, and
// custom attributes.
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::kProlog;
using oxtest::Warning;

namespace {

class ExtraTest : public oxtest::DocumentTest {
 protected:
  // Reads `xml` (an <extra>) for `owner` as an element reader would.
  oxDAEExtraElement* ReadExtraOf(oxDAEBaseElement* owner, std::string_view xml) {
    OpenFragment(xml);
    oxDAEExtraElement* extra = nullptr;
    EXPECT_EQ(document.ReadExtra(owner, extra), 0);
    return extra;
  }
  // An owner of class T that the document owns.
  template <class T>
  T* Owner() {
    T* owner = new T();
    document._AddElement(owner);
    return owner;
  }
  // Loads an empty document whose asset names `tool` as authoring tool.
  void LoadWrittenBy(std::string_view tool) {
    ASSERT_EQ(LoadText(Collada("<asset><contributor><authoring_tool>" + std::string(tool) +
                               "</authoring_tool></contributor></asset>")),
              0);
  }
};

constexpr std::string_view kMayaTechnique =
    R"(<extra><technique profile="MAYA"><param name="p" type="float">1</param>
                                             </technique></extra>)";

}  // namespace

TEST_F(ExtraTest, ExtraUnderALightWithMayaProfileCreatesNoTechnique) {
  oxDAEExtraElement* extra = ReadExtraOf(Owner<oxDAELight>(), kMayaTechnique);
  ASSERT_NE(extra, nullptr);
  EXPECT_TRUE(extra->techniques.empty());
  EXPECT_EQ(log.Count(), 0u);
}

TEST_F(ExtraTest, MayaTextureTechniqueNeedsAMayaOrMaxDocument) {
  LoadWrittenBy("Blender 2.79");
  auto* texture = Owner<oxDAEFxColorOrTextureType>();
  EXPECT_TRUE(ReadExtraOf(texture, kMayaTechnique)->techniques.empty());

  LoadWrittenBy("Maya 7.0 | ColladaMaya v2.01");
  texture = Owner<oxDAEFxColorOrTextureType>();
  oxDAEExtraElement* extra = ReadExtraOf(texture, kMayaTechnique);
  ASSERT_EQ(extra->techniques.size(), 1u);
  EXPECT_NE(oxDAETechTexture_Maya::DynamicCast(extra->techniques[0]), nullptr);

  LoadWrittenBy("3dsmax 9 - Feeling ColladaMax v3.05B");
  texture = Owner<oxDAEFxColorOrTextureType>();
  EXPECT_EQ(ReadExtraOf(texture, kMayaTechnique)->techniques.size(), 1u);
}

TEST_F(ExtraTest, EachOwnerAndProfileChoosesItsTechniqueClass) {
  struct Case {
    oxDAEBaseElement* owner;
    const char* profile;
    const OxKernel::oxRTTI* expected;
  };
  const Case cases[] = {
      {Owner<oxDAEEffect>(), "NV_import", &oxDAETechEffect_Nv::kRTTI},
      {Owner<oxDAEEffect>(), "MAX3D", &oxDAETechEffect_Max3D::kRTTI},
      {Owner<oxDAEFxColorOrTextureType>(), "MAX3D", &oxDAETechTexture_Max3D::kRTTI},
      {Owner<oxDAENode>(), "FCOLLADA", &oxDAETechNode_FCOLLADA::kRTTI},
      {Owner<oxDAEGeometry>(), "FCOLLADA", &oxDAETechGeometry_FCOLLADA::kRTTI},
      {Owner<oxDAEMaterial>(), "FCOLLADA", &oxDAETechMaterial_FCOLLADA::kRTTI},
      {Owner<oxDAELight>(), "FCOLLADA", &oxDAETechLight_FCOLLADA::kRTTI},
      {Owner<oxDAELight>(), "MAX3D", &oxDAETechLight_Max3D::kRTTI},
      {Owner<oxDAEEffect>(), "FCOLLADA", nullptr},
      {Owner<oxDAEGeometry>(), "fcollada", nullptr},
      {Owner<oxDAECamera>(), "FCOLLADA", nullptr},
  };
  for (const Case& c : cases) {
    const std::string xml =
        std::string(R"(<extra><technique profile=")") + c.profile + R"("/></extra>)";
    oxDAEExtraElement* extra = ReadExtraOf(c.owner, xml);
    if (!c.expected) {
      EXPECT_TRUE(extra->techniques.empty()) << c.owner->GetRTTI().GetName() << " " << c.profile;
      continue;
    }
    ASSERT_EQ(extra->techniques.size(), 1u) << c.owner->GetRTTI().GetName() << " " << c.profile;
    EXPECT_EQ(&extra->techniques[0]->GetRTTI(), c.expected);
    EXPECT_EQ(extra->techniques[0]->profile, c.profile);
    EXPECT_EQ(extra->techniques[0]->parent, extra);
    EXPECT_EQ(extra->parent, c.owner);
  }
}

TEST_F(ExtraTest, ReadExtraSkipsOtherChildrenAndKeepsTechniquesInOrder) {
  oxDAEExtraElement* extra = ReadExtraOf(
      Owner<oxDAELight>(), R"(<extra type="ignored" name="n"><technique profile="MAX3D"/><note/>
                                          <technique profile="FCOLLADA"/></extra>)");
  ASSERT_EQ(extra->techniques.size(), 2u);
  EXPECT_EQ(extra->techniques[0]->profile, "MAX3D");
  EXPECT_EQ(extra->techniques[1]->profile, "FCOLLADA");
  EXPECT_TRUE(extra->type.empty());
  EXPECT_TRUE(extra->name.empty());
  EXPECT_TRUE(extra->HasTechnique("FCOLLADA"));
  EXPECT_FALSE(extra->HasTechnique("MAYA"));
  EXPECT_EQ(extra->GetTechnique("FCOLLADA"), extra->techniques[1]);
  EXPECT_EQ(log.Count(), 0u);
}

OX_DOCUMENT_SUITE(GeometryExtra);

TEST_XML(
    GeometryExtra, FColladaTechniqueOfAGeometryIsKeptInItsExtras,
    Collada(R"(<library_geometries><geometry id="g"><mesh/><extra><technique profile="FCOLLADA">
                    <param name="p" type="int">4</param><asset><unit meter="2"/></asset><user/></technique>
                    <technique profile="MAYA"/></extra></geometry></library_geometries>)")) {
  const auto* geometry = Find<oxDAEGeometry>("#g");
  ASSERT_NE(geometry, nullptr);
  ASSERT_EQ(geometry->extras.size(), 1u);
  EXPECT_EQ(geometry->GetExtraByIndex(0), geometry->extras[0]);
  EXPECT_EQ(geometry->GetExtraByIndex(1), nullptr);
  const oxDAEExtraElement* extra = geometry->extras[0];
  ASSERT_EQ(extra->techniques.size(), 1u);
  const oxDAETechnique* technique = extra->techniques[0];
  EXPECT_NE(oxDAETechGeometry_FCOLLADA::DynamicCast(technique), nullptr);
  ASSERT_EQ(technique->parameters.size(), 1u);
  EXPECT_EQ(technique->parameters[0]->intValue, 4);
  ASSERT_NE(technique->asset, nullptr);
  EXPECT_EQ(technique->asset->unitMeter, 2.0f);
  EXPECT_EQ(log.Count(), 0u);
  // Extras are not written.
  EXPECT_EQ(SaveText().find("extra"), std::string::npos);
}

TEST_F(ExtraTest, GenericExtraReadsTypeAndPlainTechniques) {
  ASSERT_EQ(
      OxKernel::oxXMLFactory::Instance(0).CreateReader(
          document.reader,
          R"(<extra id="x" type="notes"><technique profile="A"/><bogus/><technique profile="B"/></extra>)",
          0),
      0);
  ASSERT_EQ(document.reader->MoveNext(), 0);
  auto* extra = document.ReadChild<oxDAEExtraElement>(nullptr);
  EXPECT_EQ(extra->type, "notes");
  EXPECT_EQ(document.ResolveURI("#x"), extra);
  ASSERT_EQ(extra->techniques.size(), 2u);
  EXPECT_EQ(&extra->techniques[1]->GetRTTI(), &oxDAETechnique::kRTTI);
  EXPECT_EQ(extra->techniques[1]->profile, "B");
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <bogus> in <extra>")}));
}

TEST_F(ExtraTest, TechniqueWritesItsProfile) {
  OxKernel::oxRefPtr<OxKernel::oxXMLWriter> writer;
  OxKernel::oxXMLFactory::Instance(0).CreateWriter(writer);
  document.writer = writer;
  oxDAETechnique technique;
  technique.profile = "MAYA";
  technique.StartWriting(document);
  writer->AddLeafElement("flag", "1");
  technique.EndWriting(document);
  writer->Close();
  EXPECT_EQ(writer->GetBuffer(),
            "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<technique profile=\"MAYA\">\n  "
            "<flag>1</flag>\n</technique>\n");
}

namespace {

struct AttributeCase {
  std::string name;
  std::string type;
  std::string value;
};

std::vector<AttributeCase> Entries(const oxDAEAttributes& attributes) {
  std::vector<AttributeCase> out;
  for (const auto& e : attributes.GetEntries()) {
    out.push_back({e.name, std::string(e.type->GetName()), e.value.GetStringValue()});
  }
  return out;
}

bool operator==(const AttributeCase& a, const AttributeCase& b) {
  return a.name == b.name && a.type == b.type && a.value == b.value;
}

}  // namespace

TEST(CustomAttributes, ItemsAreReadWithOrWithoutTheProlog) {
  const std::string body =
      R"(<Attributes><Item name="weight" type="float">0.5</Item><Item name="label" type="string">box</Item>
         <Item name="on" type="bool">true</Item><Other/></Attributes>)";
  for (const std::string& xml : {std::string(kProlog) + body, body}) {
    oxtest::LogCapture log;
    oxDAEAttributes attributes;
    EXPECT_EQ(attributes.ReadFromXMLString(0, xml), 0);
    EXPECT_EQ(Entries(attributes), (std::vector<AttributeCase>{{"weight", "float", "0.5"},
                                                               {"label", "oxString", "box"},
                                                               {"on", "bool", "true"}}));
    EXPECT_EQ(log.Count(), 0u);
  }
}

TEST(CustomAttributes, QRAttributesAreReadAndOtherRootsAreNot) {
  oxDAEAttributes attributes;
  EXPECT_EQ(attributes.ReadFromXMLString(
                0, R"(<QR_Attributes><Item name="n" type="int32">-3</Item></QR_Attributes>)"),
            0);
  EXPECT_EQ(Entries(attributes), (std::vector<AttributeCase>{{"n", "int32", "-3"}}));
  oxDAEAttributes none;
  EXPECT_EQ(
      none.ReadFromXMLString(0, R"(<Properties><Item name="n" type="int32">1</Item></Properties>)"),
      -1);
  EXPECT_EQ(none.GetCount(), 0u);
}

TEST(CustomAttributes, EmptyStringIsAcceptedAndEmptyFloatIsRejected) {
  oxtest::LogCapture log;
  oxDAEAttributes attributes;
  EXPECT_EQ(
      attributes.ReadFromXMLString(
          0,
          R"(<Attributes><Item name="s" type="string"></Item><Item name="f" type="float"></Item></Attributes>)"),
      0);
  EXPECT_EQ(Entries(attributes), (std::vector<AttributeCase>{{"s", "oxString", ""}}));
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid property item")}));
}

TEST(CustomAttributes, RejectedItemsAreLoggedAndSkipped) {
  oxtest::LogCapture log;
  oxDAEAttributes attributes;
  EXPECT_EQ(attributes.ReadFromXMLString(0, R"(<Attributes>
      <Item type="float">1</Item>
      <Item name="a">1</Item>
      <Item name="b" type="double">1</Item>
      <Item name="c" type="oxVec3">1 2</Item>
      <Item name="d" type="oxVec3">1 2 3</Item></Attributes>)"),
            0);
  EXPECT_EQ(Entries(attributes), (std::vector<AttributeCase>{{"d", "oxVec3", "1 2 3"}}));
  EXPECT_EQ(
      log.entries,
      (std::vector{Warning("invalid property item"), Warning("invalid property item"),
                   Warning("invalid property item type"), Warning("invalid property item value")}));
}

TEST(CustomAttributes, OnlyRejectedItemsStillCountAsItems) {
  oxDAEAttributes attributes;
  EXPECT_EQ(attributes.ReadFromXMLString(0, R"(<Attributes><Item/></Attributes>)"), 0);
  EXPECT_EQ(attributes.GetCount(), 0u);
}

TEST(CustomAttributes, TextThatIsNotXMLGivesTheReaderCode) {
  oxtest::LogCapture log;
  oxDAEAttributes attributes;
  EXPECT_EQ(attributes.ReadFromXMLString(0, "<Attributes><Item"), OxKernel::kXMLNotWellFormed);
  ASSERT_EQ(log.Count(), 1u);
  EXPECT_EQ(log.entries[0].level, OxKernel::kLogError);
}

TEST(CustomAttributes, DuplicatedNameFindsTheFirst) {
  oxDAEAttributes attributes;
  ASSERT_EQ(attributes.ReadFromXMLString(0, R"(<Attributes><Item name="a" type="int32">1</Item>
                                                <Item name="b" type="int32">2</Item>
                                                <Item name="a" type="int32">3</Item></Attributes>)"),
            0);
  unsigned int index = 99;
  EXPECT_TRUE(attributes._GetAttributeIndex("a", index));
  EXPECT_EQ(index, 0u);
  EXPECT_TRUE(attributes._GetAttributeIndex("b", index));
  EXPECT_EQ(index, 1u);
  EXPECT_FALSE(attributes._GetAttributeIndex("z", index));
  EXPECT_EQ(index, 3u);
  EXPECT_TRUE(attributes.HasAttribute("b"));
  EXPECT_FALSE(attributes.HasAttribute("B"));
}

TEST_F(ExtraTest, TypedCustomAttributesTranslateTypeNames) {
  ASSERT_EQ(OxKernel::oxXMLFactory::Instance(0).CreateReader(document.reader, R"(<Custom_Attributes>
      <count type="int">7</count>
      <uv type="float2">0.5 1</uv>
      <pos type="float3">1 2 3</pos>
      <rgba type="float4">1 0 0 1</rgba>
      <label type="string">hello world</label>
      <scale type="float">2</scale>
      <flag type="bool">false</flag>
      <untyped>1</untyped>
      <odd type="matrix">1</odd>
      <bad type="int">x</bad>
    </Custom_Attributes>)",
                                                             0),
            0);
  ASSERT_EQ(document.reader->MoveNext(), 0);
  auto* custom = document.ReadChild<oxDAECustomAttributes>(nullptr);
  EXPECT_EQ(Entries(custom->GetAttributes()),
            (std::vector<AttributeCase>{{"count", "int32", "7"},
                                        {"uv", "oxVec2", "0.5 1"},
                                        {"pos", "oxVec3", "1 2 3"},
                                        {"rgba", "oxVec4", "1 0 0 1"},
                                        {"label", "oxString", "hello world"},
                                        {"scale", "float", "2"},
                                        {"flag", "bool", "false"}}));
  EXPECT_EQ(log.entries, (std::vector{Warning("Custom Attributes : no attribute type"),
                                      Warning("Custom Attributes : unknown attribute type"),
                                      Warning("Custom Attributes : invalid attribute value")}));
}
