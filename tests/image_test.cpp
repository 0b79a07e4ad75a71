// Images, surfaces with their format hints, and samplers.
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::kNoLog;
using oxtest::Warning;

namespace {

using EInitType = oxDAEFxSurface::EInitType;
using EInitMode = oxDAEFxSurface::EInitMode;
using Log = std::vector<oxtest::LogEntry>;

const oxtest::LogEntry kNoImage = Error("cannot get the image referenced by this surface");
const oxtest::LogEntry kInvalidCube = Error("invalid <init_cube> element");

// Two images and a node, for surfaces to refer to.
const std::string kImages = Collada(R"(<library_images>
    <image id="img0"><init_from>zero.png</init_from></image>
    <image id="img"><init_from>one.png</init_from></image>
  </library_images>
  <library_nodes><node id="n"/></library_nodes>)");

class SurfaceTest : public oxtest::DocumentTest {
 protected:
  oxDAEFxSurface* Surface(std::string_view xml) { return ReadFragment<oxDAEFxSurface>(xml); }
  oxDAEFxSampler* Sampler(std::string_view xml) { return ReadFragment<oxDAEFxSampler>(xml); }
};

// The saved text of the first <image> of a document.
std::string SavedImage(const std::string& saved) {
  return oxtest::ElementText(saved, "image");
}

}  // namespace

// --- <image> ----------------------------------------------------------------------

OX_DOCUMENT_SUITE(ImageReading);

TEST_XML(ImageReading, KeepsItsIdOverItsName,
         Collada(R"(<library_images><image id="a" name="b"/></library_images>)")) {
  auto* image = Find<oxDAEImage>("#a");
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->id, "a");
  EXPECT_EQ(image->name, "b");
  EXPECT_EQ(Find<oxDAEImage>("#b"), nullptr);
}

TEST_XML(ImageReading, TakesItsNameAsIdWhenItHasNone,
         Collada(R"(<library_images><image name="b"/></library_images>)")) {
  auto* image = Find<oxDAEImage>("#b");
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->id, "b");
}

TEST_XML(ImageReading, ReadsAttributesAndInitFrom, Collada(R"(<library_images>
    <image id="i" format="A8R8G8B8" width="64" height="32" depth="2">
      <init_from>textures/wood.png</init_from></image></library_images>)")) {
  auto* image = Find<oxDAEImage>("#i");
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->format, "A8R8G8B8");
  EXPECT_EQ(image->width, 64u);
  EXPECT_EQ(image->height, 32u);
  EXPECT_EQ(image->depth, 2u);
  EXPECT_EQ(image->initFrom, "textures/wood.png");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(ImageReading, CorrectsTheInitFromReference, Collada(R"(<library_images>
    <image id="i"><init_from>file://C|/textures/wood.png</init_from></image></library_images>)")) {
  EXPECT_EQ(Find<oxDAEImage>("#i")->initFrom, "file:///C:/textures/wood.png");
}

TEST_XML(ImageReading, ALaterInitFromReplacesAnEarlierOne, Collada(R"(<library_images>
    <image id="i"><init_from>a.png</init_from><init_from>b.png</init_from></image>
  </library_images>)")) {
  EXPECT_EQ(Find<oxDAEImage>("#i")->initFrom, "b.png");
}

TEST_XML(ImageReading, SkipsExtrasQuietlyAndWarnsOfUnknownChildren, Collada(R"(<library_images>
    <image id="i"><extra><technique profile="X"/></extra><data>00</data>
      <init_from>a.png</init_from></image></library_images>)")) {
  EXPECT_EQ(Find<oxDAEImage>("#i")->initFrom, "a.png");
  EXPECT_EQ(log.entries, (Log{Warning("unknown element <data> in <image>")}));
}

TEST_XML(ImageReading, WithoutHeightOrWithZeroWidthWritesNeither, Collada(R"(<library_images>
    <image id="i" width="0" depth="3"><init_from>a.png</init_from></image></library_images>)")) {
  EXPECT_EQ(SavedImage(SaveText()),
            "<image id=\"i\" depth=\"3\">\n      <init_from>a.png</init_from>\n    </image>");
}

TEST_XML(ImageReading, WritesFormatThenHeightWidthDepth, Collada(R"(<library_images>
    <image depth="1" width="4" height="2" format="RGB" name="n"><init_from>a.png</init_from>
    </image></library_images>)")) {
  EXPECT_EQ(SavedImage(SaveText()),
            "<image name=\"n\" id=\"n\" format=\"RGB\" height=\"2\" width=\"4\" depth=\"1\">\n"
            "      <init_from>a.png</init_from>\n    </image>");
}

TEST_XML(ImageReading, WritesAnEmptyInitFromWhenItHasNone,
         Collada(R"(<library_images><image id="i"/></library_images>)")) {
  EXPECT_EQ(SavedImage(SaveText()), "<image id=\"i\">\n      <init_from/>\n    </image>");
}

// --- <surface> ----------------------------------------------------------------------

TEST_F(SurfaceTest, ReadsSizeAsThreeFloats) {
  oxDAEFxSurface* s = Surface(R"(<surface type="2D"><size>512 256 1</size></surface>)");
  EXPECT_EQ(s->size[0], 512.0f);
  EXPECT_EQ(s->size[1], 256.0f);
  EXPECT_EQ(s->size[2], 1.0f);
  EXPECT_TRUE(s->sizeGiven);
  EXPECT_FALSE(s->viewportRatioGiven);
  EXPECT_EQ(s->type, EFxSurfaceType::TYPE_2D);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(SurfaceTest, ClampsSizesToSixteenBits) {
  oxDAEFxSurface* s = Surface(R"(<surface><size>70000 -70000</size></surface>)");
  EXPECT_EQ(s->size[0], 32767.0f);
  EXPECT_EQ(s->size[1], -32768.0f);
  EXPECT_EQ(s->size[2], 0.0f);
  EXPECT_TRUE(s->sizeGiven);
}

TEST_F(SurfaceTest, ReadsFormatViewportRatioAndMipSettings) {
  oxDAEFxSurface* s = Surface(R"(<surface type="CUBE"><format>R8G8B8</format>
      <viewport_ratio>0.5 0.25</viewport_ratio><mip_levels>9</mip_levels>
      <mipmap_generate>true</mipmap_generate></surface>)");
  EXPECT_EQ(s->type, EFxSurfaceType::CUBE);
  EXPECT_EQ(s->format, "R8G8B8");
  EXPECT_EQ(s->viewportRatio[0], 0.5f);
  EXPECT_EQ(s->viewportRatio[1], 0.25f);
  EXPECT_TRUE(s->viewportRatioGiven);
  EXPECT_FALSE(s->sizeGiven);
  EXPECT_EQ(s->mipLevels, 9);
  EXPECT_TRUE(s->mipmapGenerate);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(SurfaceTest, KeepsMipLevelsThatDoNotRead) {
  oxDAEFxSurface* s = Surface(R"(<surface><mip_levels>-1</mip_levels></surface>)");
  EXPECT_EQ(s->mipLevels, 0);
}

TEST_F(SurfaceTest, UnknownTypeWordsReadAsUnknown) {
  EXPECT_EQ(Surface(R"(<surface type="UNTYPED"/>)")->type, EFxSurfaceType::UNKNOWN);
  EXPECT_EQ(Surface(R"(<surface/>)")->type, EFxSurfaceType::UNTYPED);
}

TEST_F(SurfaceTest, ReadsTheFormatHint) {
  oxDAEFxSurface* s = Surface(R"(<surface><format_hint>
      <channels>RGBA</channels><range>UNORM</range><precision>HIGH</precision>
      <option>SRGB_GAMMA</option><option>COMPRESSABLE</option><option>bad</option>
      <range>FLOAT</range><colour/></format_hint></surface>)");
  const oxDAEFxSurfaceFormatHint& h = s->formatHint;
  EXPECT_EQ(h.channels, EFxSurfaceFormatHintChannels::RGBA);
  EXPECT_EQ(h.range, EFxSurfaceFormatHintRange::FLOAT);
  EXPECT_EQ(h.precision, EFxSurfaceFormatHintPrecision::HIGH);
  EXPECT_EQ(h.options, (oxArray<EFxSurfaceFormatHintOption>{EFxSurfaceFormatHintOption::SRGB_GAMMA,
                                                            EFxSurfaceFormatHintOption::NORMALIZED4,
                                                            EFxSurfaceFormatHintOption::UNKNOWN}));
  EXPECT_EQ(log.entries, (Log{Warning("unknown element <colour> in <format_hint>")}));
}

TEST_F(SurfaceTest, FormatHintDefaultsToTheFirstWords) {
  const oxDAEFxSurfaceFormatHint& h = Surface("<surface/>")->formatHint;
  EXPECT_EQ(h.channels, EFxSurfaceFormatHintChannels::RGB);
  EXPECT_EQ(h.precision, EFxSurfaceFormatHintPrecision::LOW);
  EXPECT_EQ(h.range, EFxSurfaceFormatHintRange::SNORM);
  EXPECT_TRUE(h.options.empty());
}

TEST_F(SurfaceTest, WarnsOfUnknownChildren) {
  Surface(R"(<surface><generator/></surface>)");
  EXPECT_EQ(log.entries, (Log{Warning("unknown element <generator> in <surface>")}));
}

TEST_F(SurfaceTest, InitAsTargetSetsItsTypeAndHasNoImage) {
  oxDAEFxSurface* s = Surface(R"(<surface><init_from>img</init_from><init_as_target/></surface>)");
  EXPECT_EQ(s->initType, EInitType::AS_TARGET);
  log.Clear();
  EXPECT_EQ(s->GetImage(document, 0), nullptr);
  EXPECT_EQ(log.entries, (Log{Error("'init as target' surfaces are not yet supported"), kNoImage}));
}

// --- <init_from> and GetImage -------------------------------------------------------

TEST_F(SurfaceTest, InitFromElementsBuildAList) {
  ASSERT_EQ(LoadText(kImages), 0);
  oxDAEFxSurface* s = Surface(R"(<surface type="2D"><init_from>img0</init_from>
      <init_from mip="1" face="NEGATIVE_Y">img</init_from></surface>)");
  EXPECT_EQ(s->initType, EInitType::FROM);
  ASSERT_EQ(s->initFrom.size(), 2u);
  EXPECT_EQ(s->initFrom[0].ref, "img0");
  EXPECT_EQ(s->initFrom[0].mip, 0);
  EXPECT_EQ(s->initFrom[0].face, EFxSurfaceFace::POSITIVE_X);
  EXPECT_EQ(s->initFrom[1].ref, "img");
  EXPECT_EQ(s->initFrom[1].mip, 1);
  EXPECT_EQ(s->initFrom[1].slice, 0);
  EXPECT_EQ(s->initFrom[1].face, EFxSurfaceFace::NEGATIVE_Y);
  EXPECT_EQ(s->GetImage(document, 0), Find<oxDAEImage>("#img0"));
  EXPECT_EQ(s->GetImage(document, 1), Find<oxDAEImage>("#img"));
  EXPECT_EQ(log.entries, kNoLog);
  EXPECT_EQ(s->GetImage(document, 2), nullptr);
  EXPECT_EQ(log.entries, (Log{Error("invalid initfrom index"), kNoImage}));
}

TEST_F(SurfaceTest, InitFromReadsSliceAndIgnoresAnEmptyFace) {
  oxDAEFxSurface* s = Surface(R"(<surface><init_from slice="4" face="">a</init_from>
      <init_from face="SIDEWAYS">b</init_from></surface>)");
  ASSERT_EQ(s->initFrom.size(), 2u);
  EXPECT_EQ(s->initFrom[0].slice, 4);
  EXPECT_EQ(s->initFrom[0].face, EFxSurfaceFace::POSITIVE_X);
  EXPECT_EQ(s->initFrom[1].face, EFxSurfaceFace::UNKNOWN);
}

TEST_F(SurfaceTest, InitFromWithAHashReferenceResolves) {
  ASSERT_EQ(LoadText(kImages), 0);
  oxDAEFxSurface* s = Surface(R"(<surface><init_from>#img</init_from></surface>)");
  EXPECT_EQ(s->GetImage(document, 0), Find<oxDAEImage>("#img"));
}

TEST_F(SurfaceTest, InitFromNamingANodeGivesNoImage) {
  ASSERT_EQ(LoadText(kImages), 0);
  oxDAEFxSurface* s = Surface(R"(<surface><init_from>n</init_from></surface>)");
  ASSERT_NE(document.ResolveURI("#n"), nullptr);
  EXPECT_EQ(s->GetImage(document, 0), nullptr);
  EXPECT_EQ(log.entries, (Log{kNoImage}));
}

TEST_F(SurfaceTest, InitFromNamingNothingGivesNoImage) {
  ASSERT_EQ(LoadText(kImages), 0);
  oxDAEFxSurface* s = Surface(R"(<surface><init_from>missing</init_from></surface>)");
  EXPECT_EQ(s->GetImage(document, 0), nullptr);
  EXPECT_EQ(log.entries, (Log{kNoImage}));
}

TEST_F(SurfaceTest, WithoutInitElementItIsInitAsNull) {
  oxDAEFxSurface* s = Surface(R"(<surface type="2D"><format>A8</format></surface>)");
  EXPECT_EQ(s->initType, EInitType::AS_NULL);
  EXPECT_EQ(s->GetImage(document, 0), nullptr);
  EXPECT_EQ(log.entries, (Log{Error("'init as null' surfaces are not yet supported"), kNoImage}));
}

TEST_F(SurfaceTest, AnInitTypeOutsideTheEnumerationIsUnsupported) {
  oxDAEFxSurface* s = Surface(R"(<surface/>)");
  s->initType = static_cast<EInitType>(-2);
  EXPECT_EQ(s->GetImage(document, 0), nullptr);
  EXPECT_EQ(log.entries, (Log{Error("unsupported surface init type"), kNoImage}));
}

// --- <init_cube>, <init_volume>, <init_planar> -------------------------------------------

TEST_F(SurfaceTest, CubeWithAllResolvesItsImage) {
  ASSERT_EQ(LoadText(kImages), 0);
  oxDAEFxSurface* s = Surface(R"(<surface type="CUBE"><init_cube><all ref="img"/></init_cube>
      </surface>)");
  EXPECT_EQ(s->initType, EInitType::CUBE);
  EXPECT_EQ(s->init.mode, EInitMode::ALL);
  EXPECT_EQ(s->init.ref, "img");
  EXPECT_EQ(s->GetImage(document, 7), Find<oxDAEImage>("#img"));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(SurfaceTest, CubeWithPrimaryIsNotSupportedByGetImage) {
  ASSERT_EQ(LoadText(kImages), 0);
  oxDAEFxSurface* s = Surface(R"(<surface><init_cube><primary ref="img"/></init_cube></surface>)");
  EXPECT_EQ(s->init.mode, EInitMode::PRIMARY);
  EXPECT_EQ(s->init.ref, "img");
  EXPECT_EQ(log.entries, kNoLog);
  EXPECT_EQ(s->GetImage(document, 0), nullptr);
  EXPECT_EQ(log.entries, (Log{Error("non 'all init' surfaces are not supported yet"), kNoImage}));
}

TEST_F(SurfaceTest, PrimaryWithSixOrdersIsOrdered) {
  oxDAEFxSurface* s = Surface(R"(<surface><init_cube><primary ref="img">
      <order>POSITIVE_X</order><order>NEGATIVE_X</order><order>POSITIVE_Y</order><note/>
      <order>NEGATIVE_Y</order><order>POSITIVE_Z</order><order>NEGATIVE_Z</order>
      <order>POSITIVE_X</order></primary></init_cube></surface>)");
  EXPECT_EQ(s->init.mode, EInitMode::PRIMARY_ORDERED);
  using F = EFxSurfaceFace;
  EXPECT_EQ(s->init.faceOrder, (oxArray<F>{F::POSITIVE_X, F::NEGATIVE_X, F::POSITIVE_Y,
                                           F::NEGATIVE_Y, F::POSITIVE_Z, F::NEGATIVE_Z}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(SurfaceTest, PrimaryWithSomeOrdersIsReportedAndStaysPrimary) {
  oxDAEFxSurface* s = Surface(R"(<surface><init_cube><primary ref="img">
      <order>NEGATIVE_Z</order><order>POSITIVE_Y</order></primary></init_cube></surface>)");
  EXPECT_EQ(s->init.mode, EInitMode::PRIMARY);
  EXPECT_EQ(s->init.faceOrder,
            (oxArray<EFxSurfaceFace>{EFxSurfaceFace::NEGATIVE_Z, EFxSurfaceFace::POSITIVE_Y}));
  EXPECT_EQ(log.entries, (Log{kInvalidCube}));
}

TEST_F(SurfaceTest, SixFacesAreReportedAfterEachOfTheFirstFive) {
  oxDAEFxSurface* s = Surface(R"(<surface><init_cube>
      <face ref="px"/><face ref="nx"/><face ref="py"/><face ref="ny"/><face ref="pz"/>
      <face ref="nz"/></init_cube></surface>)");
  EXPECT_EQ(s->init.mode, EInitMode::FACES);
  EXPECT_EQ(s->init.faceRefs, (std::array<oxString, 6>{"px", "nx", "py", "ny", "pz", "nz"}));
  EXPECT_EQ(log.entries, Log(5, kInvalidCube));
}

TEST_F(SurfaceTest, ASeventhFaceIsReported) {
  oxDAEFxSurface* s = Surface(R"(<surface><init_cube>
      <face ref="px"/><face ref="nx"/><face ref="py"/><face ref="ny"/><face ref="pz"/>
      <face ref="nz"/><face ref="extra"/></init_cube></surface>)");
  EXPECT_EQ(s->init.mode, EInitMode::FACES);
  EXPECT_EQ(s->init.faceRefs[0], "px");
  EXPECT_EQ(s->init.faceRefs[5], "nz");
  EXPECT_EQ(log.entries, Log(6, kInvalidCube));
}

TEST_F(SurfaceTest, UnknownCubeChildIsReported) {
  oxDAEFxSurface* s = Surface(R"(<surface><init_cube><side ref="a"/></init_cube></surface>)");
  EXPECT_EQ(s->initType, EInitType::CUBE);
  EXPECT_EQ(s->init.mode, EInitMode::ALL);
  EXPECT_EQ(log.entries, (Log{kInvalidCube}));
}

TEST_F(SurfaceTest, VolumeReadsItsFirstChildOnly) {
  ASSERT_EQ(LoadText(kImages), 0);
  oxDAEFxSurface* all = Surface(R"(<surface><init_volume><all ref="img"/><primary ref="x"/>
      </init_volume></surface>)");
  EXPECT_EQ(all->initType, EInitType::VOLUME);
  EXPECT_EQ(all->init.mode, EInitMode::ALL);
  EXPECT_EQ(all->init.ref, "img");
  EXPECT_EQ(all->GetImage(document, 0), Find<oxDAEImage>("#img"));
  oxDAEFxSurface* primary = Surface(R"(<surface><init_volume><primary ref="img"/>
      </init_volume></surface>)");
  EXPECT_EQ(primary->init.mode, EInitMode::PRIMARY);
  EXPECT_EQ(primary->init.ref, "img");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(SurfaceTest, VolumeWithoutAUsableChildIsReported) {
  oxDAEFxSurface* empty = Surface(R"(<surface><init_volume/></surface>)");
  EXPECT_EQ(empty->initType, EInitType::VOLUME);
  EXPECT_EQ(log.entries, (Log{Error("invalid <init_volume> element")}));
  Surface(R"(<surface><init_volume><face ref="a"/></init_volume></surface>)");
  EXPECT_EQ(log.entries, (Log{Error("invalid <init_volume> element")}));
}

TEST_F(SurfaceTest, PlanarReadsTheRefOfItsFirstChildWhateverItsName) {
  ASSERT_EQ(LoadText(kImages), 0);
  oxDAEFxSurface* s =
      Surface(R"(<surface><init_planar><any ref="img"/><all ref="x"/></init_planar></surface>)");
  EXPECT_EQ(s->initType, EInitType::PLANAR);
  EXPECT_EQ(s->init.mode, EInitMode::ALL);
  EXPECT_EQ(s->init.ref, "img");
  EXPECT_EQ(s->GetImage(document, 0), Find<oxDAEImage>("#img"));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(SurfaceTest, PlanarWithoutChildIsAccepted) {
  oxDAEFxSurface* s = Surface(R"(<surface><init_planar/></surface>)");
  EXPECT_EQ(s->initType, EInitType::PLANAR);
  EXPECT_EQ(s->init.mode, EInitMode::ALL);
  EXPECT_EQ(s->init.ref, "");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(SurfaceTest, CopiesOwnTheirListsAndHint) {
  oxDAEFxSurface* s = Surface(R"(<surface><format_hint><option>SRGB_GAMMA</option></format_hint>
      <init_from>a</init_from></surface>)");
  oxDAEFxSurface copy(*s);
  s->initFrom[0].ref = "changed";
  s->formatHint.options.clear();
  ASSERT_EQ(copy.initFrom.size(), 1u);
  EXPECT_EQ(copy.initFrom[0].ref, "a");
  EXPECT_EQ(copy.formatHint.options.size(), 1u);
}

// --- Samplers ---------------------------------------------------------------------

TEST_F(SurfaceTest, SamplerWithoutMipmapMaxLevelKeeps255) {
  oxDAEFxSampler* s = Sampler(R"(<sampler2D><source>surf</source></sampler2D>)");
  EXPECT_EQ(s->mipmapMaxLevel, 255);
  EXPECT_EQ(s->mipmapBias, 0.0f);
  EXPECT_EQ(s->wrapS, EFxSamplerWrap::NONE);
  EXPECT_EQ(s->minFilter, EFxSamplerFilter::NONE);
  EXPECT_EQ(s->borderColor[3], 0.0f);
  EXPECT_EQ(s->GetSamplerType(), oxDAEFxSampler::EFxSamplerType::SAMPLER_1D);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(SurfaceTest, SamplerReadsEveryChild) {
  oxDAEFxSampler* s = Sampler(R"(<sampler2D>
      <mipmap_bias>-0.5</mipmap_bias><source>first</source><source>surf</source>
      <wrap_s>WRAP</wrap_s><wrap_t>MIRROR</wrap_t><wrap_p>BORDER</wrap_p>
      <minfilter>LINEAR_MIPMAP_LINEAR</minfilter><magfilter>NEAREST</magfilter>
      <mipfilter>LINEAR</mipfilter><border_color>0.1 0.2 0.3 0.4 0.5</border_color>
      <mipmap_maxlevel>8</mipmap_maxlevel></sampler2D>)");
  EXPECT_EQ(s->source, "surf");
  EXPECT_EQ(s->wrapS, EFxSamplerWrap::WRAP);
  EXPECT_EQ(s->wrapT, EFxSamplerWrap::MIRROR);
  EXPECT_EQ(s->wrapP, EFxSamplerWrap::BORDER);
  EXPECT_EQ(s->minFilter, EFxSamplerFilter::LINEAR_MIPMAP_LINEAR);
  EXPECT_EQ(s->magFilter, EFxSamplerFilter::NEAREST);
  EXPECT_EQ(s->mipFilter, EFxSamplerFilter::LINEAR);
  EXPECT_EQ(s->borderColor[0], 0.1f);
  EXPECT_EQ(s->borderColor[3], 0.4f);
  EXPECT_EQ(s->mipmapMaxLevel, 8);
  EXPECT_EQ(s->mipmapBias, -0.5f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(SurfaceTest, SamplerUnknownWordsReadAsUnknown) {
  oxDAEFxSampler* s = Sampler(R"(<sampler2D><wrap_s>wrap</wrap_s><wrap_t>NONE</wrap_t>
      <minfilter>NONE</minfilter><magfilter>BILINEAR</magfilter></sampler2D>)");
  EXPECT_EQ(s->wrapS, EFxSamplerWrap::UNKNOWN);
  EXPECT_EQ(s->wrapT, EFxSamplerWrap::NONE);
  EXPECT_EQ(s->minFilter, EFxSamplerFilter::UNKNOWN);
  EXPECT_EQ(s->magFilter, EFxSamplerFilter::UNKNOWN);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(SurfaceTest, SamplerShortBorderColourAndBadLevelsKeepTheRest) {
  oxDAEFxSampler* s = Sampler(R"(<sampler2D><border_color>1 0.5</border_color>
      <mipmap_maxlevel>300</mipmap_maxlevel></sampler2D>)");
  EXPECT_EQ(s->borderColor[0], 1.0f);
  EXPECT_EQ(s->borderColor[1], 0.5f);
  EXPECT_EQ(s->borderColor[2], 0.0f);
  EXPECT_EQ(s->mipmapMaxLevel, 255);
}

TEST_F(SurfaceTest, SamplerWarnsOfUnknownChildrenAsSampler) {
  Sampler(R"(<samplerCUBE><texture/></samplerCUBE>)");
  EXPECT_EQ(log.entries, (Log{Warning("unknown element <texture> in <sampler>")}));
}

TEST(SamplerType, ATypeOutsideTheEnumerationHasNoTag) {
  const oxDAEFxSampler outside(static_cast<oxDAEFxSampler::EFxSamplerType>(6));
  EXPECT_EQ(outside.GetTypeTag(), "");
  const oxDAEFxSampler negative(static_cast<oxDAEFxSampler::EFxSamplerType>(-1));
  EXPECT_EQ(negative.GetTypeTag(), "");
  EXPECT_EQ(oxDAEFxSampler().GetTypeTag(), "sampler1D");
}
