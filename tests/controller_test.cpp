// Skin and morph controllers: reading, binding, the influence decoder, the
// morph weights target and writing.
#include <cstdint>
#include <string>
#include <type_traits>

#include "animation_markup.h"
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::FloatSource;
using oxtest::Warning;
using Influence = oxDAEVertexWeights::Influence;

namespace {

// `n` numbers "0 1 2 ..." as one text.
std::string Counting(unsigned int n) {
  std::string text;
  for (unsigned int i = 0; i < n; ++i) {
    if (i != 0) text += ' ';
    text += std::to_string(i);
  }
  return text;
}

std::string Geometries(std::string_view ids = "g") {
  std::string xml = "<library_geometries>";
  size_t start = 0;
  while (start < ids.size()) {
    const size_t end = std::min(ids.find(' ', start), ids.size());
    xml += "<geometry id=\"" + std::string(ids.substr(start, end - start)) + "\"/>";
    start = end + 1;
  }
  return xml + "</library_geometries>";
}

// The joints source "joints" (j0, j1, j2), the weights source "weights"
// (0.1, 0.25, 0.5, 1) and the inverse bind matrices "ibm" (two identities).
const std::string kSkinSources =
    R"(<source id="joints"><Name_array id="joints-a" count="3">j0 j1 j2</Name_array>
         <technique_common><accessor source="#joints-a" count="3">
           <param name="JOINT" type="name"/></accessor></technique_common></source>)" +
    FloatSource("weights", "0.1 0.25 0.5 1", 4, 1) +
    FloatSource("ibm", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", 2, 16);

constexpr std::string_view kJoints =
    R"(<joints><input semantic="JOINT" source="#joints"/>
               <input semantic="INV_BIND_MATRIX" source="#ibm"/></joints>)";

constexpr std::string_view kWeightInputs =
    R"(<input semantic="JOINT" source="#joints" offset="0"/>
       <input semantic="WEIGHT" source="#weights" offset="1"/>)";

// A controller "c" whose skin names `source` and holds the sources above,
// the joints and a <vertex_weights> with `weights` inside.
std::string SkinController(std::string_view source, std::string_view weights,
                           std::string_view controllerId = "c") {
  return "<controller id=\"" + std::string(controllerId) + "\"><skin source=\"" +
         std::string(source) + "\">" + kSkinSources + std::string(kJoints) + std::string(weights) +
         "</skin></controller>";
}

// A document with the geometry "g" and the controllers `controllers`.
std::string Controllers(std::string_view controllers, std::string_view geometries = "g") {
  return Collada(Geometries(geometries) + "<library_controllers>" + std::string(controllers) +
                 "</library_controllers>");
}

// A skin of "g" whose vertex weights hold `body`.
std::string SkinWeights(std::string_view count, std::string_view body) {
  return Controllers(SkinController("#g", "<vertex_weights count=\"" + std::string(count) + "\">" +
                                              std::string(kWeightInputs) + std::string(body) +
                                              "</vertex_weights>"));
}

// A morph "m" of `source` with the weights source "w" holding `weights`
// floats, and the MORPH_WEIGHT input naming `weightSource`.
std::string Morph(std::string_view source, unsigned int weights,
                  std::string_view weightSource = "#w", std::string_view extra = "") {
  return "<morph id=\"m\" source=\"" + std::string(source) + R"(" method="RELATIVE">)" +
         R"(<source id="targets"><IDREF_array id="targets-a" count="2">t1 t2</IDREF_array>
            <technique_common><accessor source="#targets-a" count="2">
            <param name="MORPH_TARGET" type="IDREF"/></accessor></technique_common></source>)" +
         FloatSource("w", Counting(weights), weights, 1) +
         R"(<targets><input semantic="MORPH_TARGET" source="#targets"/>)" +
         "<input semantic=\"MORPH_WEIGHT\" source=\"" + std::string(weightSource) + "\"/>" +
         std::string(extra) + "</targets></morph>";
}

// A document with the geometries g, t1, t2 and a controller "mc" holding
// the morph above.
std::string MorphDocument(unsigned int weights, std::string_view weightSource = "#w") {
  return Controllers(
      "<controller id=\"mc\">" + Morph("#g", weights, weightSource) + "</controller>", "g t1 t2");
}

const oxDAEVertexWeights* WeightsOf(const oxDAEFile& document) {
  const auto* controller = oxDAEController::DynamicCast(document.ResolveURI("#c"));
  if (!controller || !controller->skin) return nullptr;
  return controller->skin->vertexWeights;
}

}  // namespace

// --- <controller> and <skin> -----------------------------------------------------

OX_DOCUMENT_SUITE(SkinReading);

TEST_XML(SkinReading, ReadsEveryPartOfTheSkin,
         SkinWeights("2", "<vcount>1 2</vcount><v>0 3 1 1 2 2</v>")) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  const auto* controller = Find<oxDAEController>("#c");
  ASSERT_NE(controller, nullptr);
  EXPECT_EQ(controller->morph, nullptr);
  const oxDAESkin* skin = controller->skin;
  ASSERT_NE(skin, nullptr);
  EXPECT_EQ(skin->parent, controller);
  EXPECT_EQ(skin->source, "#g");
  EXPECT_EQ(skin->sourceGeometry, Find<oxDAEGeometry>("#g"));
  EXPECT_EQ(skin->sourceMorph, nullptr);
  ASSERT_EQ(skin->sources.size(), 3u);
  EXPECT_EQ(skin->sources[0], Find<oxDAESource>("#joints"));
  EXPECT_EQ(skin->sources[2], Find<oxDAESource>("#ibm"));
  ASSERT_NE(skin->joints, nullptr);
  ASSERT_EQ(skin->joints->inputs.size(), 2u);
  EXPECT_EQ(skin->joints->GetInput("INV_BIND_MATRIX"), skin->joints->inputs[1]);
  EXPECT_EQ(skin->joints->GetInput("JOINT")->source, Find<oxDAESource>("#joints"));
  EXPECT_EQ(skin->joints->GetInput("WEIGHT"), nullptr);
  const oxDAEVertexWeights* weights = skin->vertexWeights;
  ASSERT_NE(weights, nullptr);
  EXPECT_EQ(weights->count, 2u);
  ASSERT_EQ(weights->inputs.size(), 2u);
  EXPECT_EQ(weights->GetInput("WEIGHT")->offset, 1u);
  EXPECT_EQ(weights->GetInput("WEIGHT")->source, Find<oxDAESource>("#weights"));
  EXPECT_EQ(weights->vcount, (oxArray<uint32_t>{1, 2}));
  EXPECT_EQ(weights->v, (oxArray<int32_t>{0, 3, 1, 1, 2, 2}));
  EXPECT_EQ(weights->GetMaxInfluenceCount(), 2u);
}

TEST_XML(SkinReading, BindShapeMatrixIsReadTransposedAndDefaultsToTheIdentity,
         Controllers(R"(<controller id="c"><skin source="#g">
             <bind_shape_matrix>1 0 0 5 0 1 0 6 0 0 1 7 0 0 0 1</bind_shape_matrix></skin></controller>
           <controller id="d"><skin source="#g"/></controller>)")) {
  const oxDAESkin* skin = Find<oxDAEController>("#c")->skin;
  EXPECT_EQ(skin->bindShapeMatrix.m[12], 5.0f);
  EXPECT_EQ(skin->bindShapeMatrix.m[13], 6.0f);
  EXPECT_EQ(skin->bindShapeMatrix.m[14], 7.0f);
  EXPECT_EQ(skin->bindShapeMatrix.m[3], 0.0f);
  const oxDAESkin* plain = Find<oxDAEController>("#d")->skin;
  const OxMath::oxMatrix44 identity;
  EXPECT_EQ(std::vector<float>(plain->bindShapeMatrix.m, plain->bindShapeMatrix.m + 16),
            std::vector<float>(identity.m, identity.m + 16));
  EXPECT_EQ(plain->bindShapeMatrix.m[0], 1.0f);
  EXPECT_EQ(plain->joints, nullptr);
  EXPECT_EQ(plain->vertexWeights, nullptr);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST_XML(SkinReading, SkinIsAllocatedOnA16ByteBoundary,
         Controllers(R"(<controller id="c"><skin source="#g"/></controller>)")) {
  static_assert(alignof(oxDAESkin) >= 16);
  const oxDAESkin* skin = Find<oxDAEController>("#c")->skin;
  EXPECT_EQ(reinterpret_cast<uintptr_t>(skin) % 16, 0u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(&skin->bindShapeMatrix) % 16, 0u);
}

TEST_XML(SkinReading, SkinAndMorphAreQueuedForTheUpdatePass,
         Controllers(R"(<controller id="c"><skin source="#g"/></controller>
                        <controller id="mc"><morph source="#g"/></controller>)")) {
  const auto& queued = document.GetElementsToUpdate();
  ASSERT_EQ(queued.size(), 2u);
  EXPECT_EQ(queued[0], Find<oxDAEController>("#c")->skin);
  EXPECT_EQ(queued[1], Find<oxDAEController>("#mc")->morph);
  EXPECT_TRUE(document.GetUnresolved().empty());
}

TEST_XML(SkinReading, ASecondSkinReplacesTheFirst,
         Controllers(
             R"(<controller id="c"><skin source="#nowhere"/><skin source="#g"/></controller>)")) {
  const oxDAESkin* skin = Find<oxDAEController>("#c")->skin;
  EXPECT_EQ(skin->source, "#g");
  EXPECT_EQ(All<oxDAESkin>().size(), 2u);
  // The replaced skin is still read and bound, and still reports its source.
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Error("cannot find skin's source geometry")}));
}

TEST_XML(SkinReading, UnknownChildrenAreReportedAgainstTheirParent,
         Controllers(R"(<controller id="c"><asset/><skin source="#g"><extra/>
             <joints><param/></joints>
             <vertex_weights count="0"><p/></vertex_weights></skin>
           <morph source="#g"><foo/><targets><bar/></targets></morph></controller>)")) {
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{
                             Warning("unknown element <asset> in <controller>"),
                             Warning("unknown element <extra> in <skin>"),
                             Warning("unknown element <param> in <joints>"),
                             Warning("unknown element <p> in <vertex_weights>"),
                             Warning("unknown element <foo> in <morph>"),
                             Warning("unknown element <bar> in <morph>"),
                         }));
}

// --- Binding a skin --------------------------------------------------------------

OX_DOCUMENT_SUITE(SkinBinding);

TEST_XML(SkinBinding, SkinOnAMorphControllerBindsToItsMorph,
         Controllers("<controller id=\"mc\">" + Morph("#g", 2) + "</controller>" +
                         R"(<controller id="c"><skin source="#mc"/></controller>)",
                     "g t1 t2")) {
  const oxDAESkin* skin = Find<oxDAEController>("#c")->skin;
  EXPECT_EQ(skin->sourceMorph, Find<oxDAEController>("#mc")->morph);
  EXPECT_NE(skin->sourceMorph, nullptr);
  EXPECT_EQ(skin->sourceGeometry, nullptr);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  EXPECT_TRUE(document.GetUnresolved().empty());
}

TEST_XML(SkinBinding, SkinMayNameAControllerThatComesLater,
         Controllers(R"(<controller id="c"><skin source="#mc"/></controller>
                        <controller id="mc"><morph source="#g"/></controller>)")) {
  EXPECT_EQ(Find<oxDAEController>("#c")->skin->sourceMorph, Find<oxDAEController>("#mc")->morph);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST_XML(SkinBinding, SkinNamingNothingReportsItsSource,
         Controllers(R"(<controller id="c"><skin source="#nowhere"/></controller>)")) {
  oxDAESkin* skin = Find<oxDAEController>("#c")->skin;
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Error("cannot find skin's source geometry")}));
  ASSERT_EQ(document.GetUnresolved().size(), 1u);
  EXPECT_EQ(document.GetUnresolved()[0].element, skin);
  EXPECT_EQ(document.GetUnresolved()[0].code, kDAEUnresolved);
  EXPECT_EQ(skin->sourceGeometry, nullptr);
  EXPECT_EQ(skin->sourceMorph, nullptr);
}

TEST_XML(SkinBinding, SkinNamingAControllerWithoutMorphReportsItsSource,
         Controllers(R"(<controller id="c"><skin source="#d"/></controller>
                        <controller id="d"><skin source="#g"/></controller>)")) {
  EXPECT_EQ(Find<oxDAEController>("#c")->skin->sourceMorph, nullptr);
  EXPECT_EQ(Find<oxDAEController>("#d")->skin->sourceGeometry, Find<oxDAEGeometry>("#g"));
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Error("cannot find skin's source geometry")}));
}

TEST_XML(SkinBinding, SkinWhoseSourceIsItsOwnControllerReportsItsSource,
         Controllers(R"(<controller id="c"><skin source="#c"/></controller>)")) {
  const oxDAESkin* skin = Find<oxDAEController>("#c")->skin;
  EXPECT_EQ(skin->sourceMorph, nullptr);
  EXPECT_EQ(skin->sourceGeometry, nullptr);
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Error("cannot find skin's source geometry")}));
  EXPECT_EQ(document.GetUnresolved().size(), 1u);
}

TEST_XML(SkinBinding, SkinsThatNameEachOtherReportBothSourcesAndEnd,
         Controllers(R"(<controller id="a"><skin source="#b"/></controller>
                        <controller id="b"><skin source="#a"/></controller>)")) {
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Error("cannot find skin's source geometry"),
                                           Error("cannot find skin's source geometry")}));
  EXPECT_EQ(document.GetUnresolved().size(), 2u);
}

TEST_XML(SkinBinding, BeforeWritingNothingIsRefreshedAndTheResultIsUnresolved,
         Controllers(R"(<controller id="c"><skin source="#g"/></controller>)")) {
  oxDAESkin* skin = Find<oxDAEController>("#c")->skin;
  skin->source = "#elsewhere";
  EXPECT_EQ(skin->UpdateDependencies(document, true), kDAEUnresolved);
  EXPECT_EQ(skin->source, "#elsewhere");
  EXPECT_EQ(skin->sourceGeometry, Find<oxDAEGeometry>("#g"));
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST_XML(SkinBinding, BindingAgainFollowsTheSourceText,
         Controllers(R"(<controller id="c"><skin source="#g"/></controller>
                        <controller id="mc"><morph source="#g"/></controller>)")) {
  oxDAESkin* skin = Find<oxDAEController>("#c")->skin;
  skin->source = "#mc";
  EXPECT_EQ(skin->UpdateDependencies(document, false), 0);
  EXPECT_EQ(skin->sourceGeometry, nullptr);
  EXPECT_EQ(skin->sourceMorph, Find<oxDAEController>("#mc")->morph);
}

// --- <vertex_weights> ------------------------------------------------------------

OX_DOCUMENT_SUITE(VertexWeightsReading);

TEST_XML(VertexWeightsReading, VcountReadsExactlyCountNumbersEvenIfTheTextHoldsMore,
         SkinWeights("3", "<vcount>1 1 1 1 1</vcount><v>0 0 1 1 2 2 0 3 1 3</v>")) {
  const oxDAEVertexWeights* weights = WeightsOf(document);
  EXPECT_EQ(weights->vcount, (oxArray<uint32_t>{1, 1, 1}));
  EXPECT_EQ(weights->v.size(), 10u);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST_XML(VertexWeightsReading, VcountWithFewerNumbersThanCountKeepsWhatItHolds,
         SkinWeights("4", "<vcount>2 1</vcount><v>0 0 1 1 2 2</v>")) {
  const oxDAEVertexWeights* weights = WeightsOf(document);
  EXPECT_EQ(weights->count, 4u);
  EXPECT_EQ(weights->vcount, (oxArray<uint32_t>{2, 1}));
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST_XML(VertexWeightsReading, HugeCountOnASmallElementAllocatesOnlyWhatTheTextHolds,
         SkinWeights("4000000000", "<vcount>1 2</vcount><v>0 0 1 1 2 2</v>")) {
  const oxDAEVertexWeights* weights = WeightsOf(document);
  EXPECT_EQ(weights->count, 4000000000u);
  EXPECT_EQ(weights->vcount, (oxArray<uint32_t>{1, 2}));
  EXPECT_LE(weights->vcount.capacity(), 16u);
  EXPECT_EQ(weights->v.size(), 6u);
  oxArray<Influence> influences;
  oxArray<size_t> first;
  EXPECT_EQ(weights->GetInfluences(influences, first), 0);
  EXPECT_EQ(first, (oxArray<size_t>{0, 1, 3}));
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST_XML(VertexWeightsReading, NegativeVcountEntryEndsTheList,
         SkinWeights("4", "<vcount>1 2 -3 1</vcount><v/>")) {
  EXPECT_EQ(WeightsOf(document)->vcount, (oxArray<uint32_t>{1, 2}));
  EXPECT_EQ(
      log.entries,
      (std::vector<oxtest::LogEntry>{Warning("<vcount> entry 2 is -3; the list ends before it")}));
}

TEST_XML(VertexWeightsReading, TokenThatIsNoNumberEndsTheList,
         SkinWeights("3", "<vcount>1 x 1</vcount><v>0 0 1 oops 2</v>")) {
  const oxDAEVertexWeights* weights = WeightsOf(document);
  EXPECT_EQ(weights->vcount, (oxArray<uint32_t>{1}));
  EXPECT_EQ(weights->v, (oxArray<int32_t>{0, 0, 1}));
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Warning("invalid value 'x' in <vcount>"),
                                                        Warning("invalid value 'oops' in <v>")}));
}

TEST_XML(VertexWeightsReading, ListsSplitByACommentAreGathered,
         SkinWeights(
             "3", "<vcount>1 <!-- c -->1 1 1</vcount><v>0 0<!-- c --> 1 1 <![CDATA[2 2]]></v>")) {
  const oxDAEVertexWeights* weights = WeightsOf(document);
  EXPECT_EQ(weights->vcount, (oxArray<uint32_t>{1, 1, 1}));
  EXPECT_EQ(weights->v, (oxArray<int32_t>{0, 0, 1, 1, 2, 2}));
}

TEST_XML(VertexWeightsReading, ALaterListReplacesAnEarlierOne,
         SkinWeights("2", "<vcount>4 4</vcount><v>9 9</v><vcount>1 1</vcount><v>0 0 1 1</v>")) {
  const oxDAEVertexWeights* weights = WeightsOf(document);
  EXPECT_EQ(weights->vcount, (oxArray<uint32_t>{1, 1}));
  EXPECT_EQ(weights->v, (oxArray<int32_t>{0, 0, 1, 1}));
}

TEST_XML(VertexWeightsReading, MaxInfluenceCountIsZeroWithoutVcount, SkinWeights("0", "")) {
  const oxDAEVertexWeights* weights = WeightsOf(document);
  EXPECT_TRUE(weights->vcount.empty());
  EXPECT_EQ(weights->GetMaxInfluenceCount(), 0u);
}

// --- Decoding influences ---------------------------------------------------------

OX_DOCUMENT_SUITE(VertexInfluences);

TEST_XML(VertexInfluences, DecodesEachVertexsGroupsThroughTheInputOffsets,
         SkinWeights("3", "<vcount>1 2 0</vcount><v>2 3 0 1 -1 0</v>")) {
  oxArray<Influence> influences;
  oxArray<size_t> first;
  EXPECT_EQ(WeightsOf(document)->GetInfluences(influences, first), 0);
  EXPECT_EQ(influences, (oxArray<Influence>{{2, 1.0f}, {0, 0.25f}, {-1, 0.1f}}));
  EXPECT_EQ(first, (oxArray<size_t>{0, 1, 3, 3}));
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST_XML(VertexInfluences, UnusedOffsetsWidenTheGroups,
         Controllers(SkinController("#g", R"(<vertex_weights count="2">
             <input semantic="WEIGHT" source="#weights" offset="2"/>
             <input semantic="JOINT" source="#joints" offset="0"/>
             <vcount>1 1</vcount><v>1 9 2 0 9 3</v></vertex_weights>)"))) {
  oxArray<Influence> influences;
  oxArray<size_t> first;
  EXPECT_EQ(WeightsOf(document)->GetInfluences(influences, first), 0);
  EXPECT_EQ(influences, (oxArray<Influence>{{1, 0.5f}, {0, 1.0f}}));
}

TEST_XML(VertexInfluences, IndicesPastTheJointOrWeightSourceReadAsNoInfluence,
         SkinWeights("3", "<vcount>1 1 1</vcount><v>3 0 1 4 -2 0</v>")) {
  const oxDAEVertexWeights* weights = WeightsOf(document);
  // Stored as read.
  EXPECT_EQ(weights->v, (oxArray<int32_t>{3, 0, 1, 4, -2, 0}));
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  oxArray<Influence> influences;
  oxArray<size_t> first;
  EXPECT_EQ(weights->GetInfluences(influences, first), kDAEUnresolved);
  EXPECT_EQ(influences, (oxArray<Influence>{{-1, 0.0f}, {-1, 0.0f}, {-1, 0.0f}}));
  EXPECT_EQ(first, (oxArray<size_t>{0, 1, 2, 3}));
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning(
                "<vertex_weights> 3 influences index past the JOINT or WEIGHT source and read as "
                "joint -1, weight 0")}));
}

TEST_XML(VertexInfluences, VerticesRunningPastVAreLeftOut,
         SkinWeights("3", "<vcount>1 2 1</vcount><v>0 0 1 1 2</v>")) {
  oxArray<Influence> influences;
  oxArray<size_t> first;
  EXPECT_EQ(WeightsOf(document)->GetInfluences(influences, first), kDAEUnresolved);
  EXPECT_EQ(influences, (oxArray<Influence>{{0, 0.1f}}));
  EXPECT_EQ(first, (oxArray<size_t>{0, 1}));
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning(
                "<vertex_weights> vertex 1 runs past <v>; it and the vertices after it are left "
                "out")}));
}

TEST_XML(VertexInfluences, HugeVcountEntryDoesNotRunPastV,
         SkinWeights("2", "<vcount>2147483647 1</vcount><v>0 0</v>")) {
  oxArray<Influence> influences;
  oxArray<size_t> first;
  EXPECT_EQ(WeightsOf(document)->GetInfluences(influences, first), kDAEUnresolved);
  EXPECT_TRUE(influences.empty());
  EXPECT_EQ(first, (oxArray<size_t>{0}));
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning(
                "<vertex_weights> vertex 0 runs past <v>; it and the vertices after it are left "
                "out")}));
}

TEST_XML(
    VertexInfluences, WeightIndexFollowsTheAccessorOffsetAndStride,
    Controllers(R"(<controller id="c"><skin source="#g">
             <source id="joints"><Name_array id="ja" count="1">j0</Name_array></source>
             <source id="weights"><float_array id="wa" count="6">9 9 0.5 9 0.75 9</float_array>
               <technique_common><accessor source="#wa" count="2" offset="1" stride="2"/>
               </technique_common></source>
             <vertex_weights count="2">)" +
                std::string(kWeightInputs) +
                R"(<vcount>1 1</vcount><v>0 0 0 1</v></vertex_weights></skin></controller>)")) {
  oxArray<Influence> influences;
  oxArray<size_t> first;
  EXPECT_EQ(WeightsOf(document)->GetInfluences(influences, first), 0);
  EXPECT_EQ(influences, (oxArray<Influence>{{0, 0.5f}, {0, 0.75f}}));
}

TEST_XML(VertexInfluences, MissingOrUnusableSourcesGiveNoValue,
         Controllers(R"(<controller id="c"><skin source="#g">
             <source id="names"><Name_array id="na" count="1">j0</Name_array></source>
             <vertex_weights count="1"><input semantic="JOINT" source="#names" offset="0"/>
               <input semantic="WEIGHT" source="#names" offset="1"/>
               <vcount>1</vcount><v>0 0</v></vertex_weights></skin></controller>
           <controller id="d"><skin source="#g"><vertex_weights count="1">
               <input semantic="JOINT" source="#nowhere" offset="0"/>
               <vcount>1</vcount><v>0 0</v></vertex_weights></skin></controller>)")) {
  oxArray<Influence> influences{{1, 1.0f}};
  oxArray<size_t> first{7};
  EXPECT_EQ(WeightsOf(document)->GetInfluences(influences, first), kDAENoValue);
  EXPECT_TRUE(influences.empty());
  EXPECT_TRUE(first.empty());
  const oxDAEVertexWeights* other = Find<oxDAEController>("#d")->skin->vertexWeights;
  EXPECT_EQ(other->GetInfluences(influences, first), kDAENoValue);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

// --- <morph> ---------------------------------------------------------------------

OX_DOCUMENT_SUITE(MorphReading);

TEST_XML(MorphReading, ReadsSourcesTargetsAndTheBaseGeometry, MorphDocument(2)) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  const auto* controller = Find<oxDAEController>("#mc");
  EXPECT_EQ(controller->skin, nullptr);
  const oxDAEMorph* morph = controller->morph;
  ASSERT_NE(morph, nullptr);
  EXPECT_EQ(morph->parent, controller);
  EXPECT_EQ(morph->sourceGeometry, Find<oxDAEGeometry>("#g"));
  EXPECT_EQ(morph->method, "RELATIVE");
  ASSERT_EQ(morph->sources.size(), 2u);
  EXPECT_EQ(morph->sources[1], Find<oxDAESource>("#w"));
  ASSERT_EQ(morph->targetInputs.size(), 2u);
  EXPECT_EQ(morph->GetInput("MORPH_TARGET"), morph->targetInputs[0]);
  EXPECT_EQ(morph->GetInput("MORPH_WEIGHT")->source, Find<oxDAESource>("#w"));
  EXPECT_EQ(morph->GetInput("WEIGHT"), nullptr);
}

TEST_XML(MorphReading, MorphWhoseBaseGeometryComesLaterKeepsANullSource,
         Collada("<library_controllers><controller id=\"mc\">" + Morph("#g", 2) +
                 "</controller></library_controllers>" + Geometries("g t1 t2"))) {
  const oxDAEMorph* morph = Find<oxDAEController>("#mc")->morph;
  EXPECT_EQ(morph->sourceGeometry, nullptr);
  EXPECT_NE(Find<oxDAEGeometry>("#g"), nullptr);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  EXPECT_TRUE(document.GetUnresolved().empty());
}

TEST_XML(MorphReading, MorphWhoseSourceIsNoGeometryKeepsANullSource,
         Controllers("<controller id=\"mc\">" + Morph("#w", 2) + "</controller>", "g t1 t2")) {
  EXPECT_EQ(Find<oxDAEController>("#mc")->morph->sourceGeometry, nullptr);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST(MorphModel, MorphCannotBeCopied) {
  static_assert(!std::is_copy_constructible_v<oxDAEMorph>);
  static_assert(!std::is_copy_assignable_v<oxDAEMorph>);
  static_assert(std::is_copy_constructible_v<oxDAESkin>);
  static_assert(std::is_copy_constructible_v<oxDAEVertexWeights>);
  oxDAEMorph morph;
  EXPECT_EQ(morph.sourceGeometry, nullptr);
  EXPECT_EQ(morph.weightsTarget.GetMemberCount(), 0u);
}

// --- The morph weights target ----------------------------------------------------

OX_DOCUMENT_SUITE(MorphWeights);

TEST_XML(MorphWeights, WeightSourceSetsUpTheTarget, MorphDocument(2)) {
  const oxDAEMorph* morph = Find<oxDAEController>("#mc")->morph;
  const oxDAEChannelTargetFloatArray& target = morph->weightsTarget;
  EXPECT_EQ(target.GetQualifier(), "w");
  EXPECT_EQ(target.GetContainerParent(), morph);
  EXPECT_EQ(target.GetMemberCount(), 2u);
  EXPECT_EQ(target.GetDocument(), &document);
  EXPECT_EQ(target.GetPath(), "m/w");
  EXPECT_EQ(document.ResolveAnimationTargetPath("m/w"), &target);
  EXPECT_EQ(document.ResolveAnimationTargetPath("m/w(1)"), target.GetChannelTarget(0, 1));
  EXPECT_EQ(document.ResolveAnimationTargetPath("m/w(2)"), nullptr);
}

TEST_XML(MorphWeights, MorphWithoutIdIsReachedByTheWeightSourceId,
         Controllers(R"(<controller id="mc"><morph source="#g">)" +
                     FloatSource("w", "0.5 0.5", 2, 1) +
                     R"(<targets><input semantic="MORPH_WEIGHT" source="#w"/></targets>
                        </morph></controller>)")) {
  const oxDAEMorph* morph = Find<oxDAEController>("#mc")->morph;
  EXPECT_EQ(morph->weightsTarget.GetPath(), "w");
  EXPECT_EQ(document.ResolveAnimationTargetPath("w(0)"),
            morph->weightsTarget.GetChannelTarget(0, 0));
}

TEST_XML(MorphWeights, MorphWith300WeightsGetsATargetOf44Members, MorphDocument(300)) {
  const oxDAEMorph* morph = Find<oxDAEController>("#mc")->morph;
  EXPECT_EQ(morph->weightsTarget.GetMemberCount(), 44u);
  EXPECT_NE(document.ResolveAnimationTargetPath("m/w(43)"), nullptr);
  EXPECT_EQ(document.ResolveAnimationTargetPath("m/w(44)"), nullptr);
}

TEST_XML(MorphWeights, MorphWith10000WeightsGetsATargetOf16Members, MorphDocument(10000)) {
  const oxDAEMorph* morph = Find<oxDAEController>("#mc")->morph;
  EXPECT_EQ(morph->weightsTarget.GetMemberCount(), 10000u & 255u);
  EXPECT_EQ(morph->weightsTarget.GetMemberCount(), 16u);
  EXPECT_EQ(document.ResolveAnimationTargetPath("m/w(15)"),
            morph->weightsTarget.GetChannelTarget(0, 15));
  EXPECT_EQ(document.ResolveAnimationTargetPath("m/w(16)"), nullptr);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST_XML(MorphWeights, MorphWithoutWeightInputRegistersNoTarget,
         Controllers(R"(<controller id="mc"><morph id="m" source="#g">)" +
                     FloatSource("w", "0.5 0.5", 2, 1) +
                     R"(<targets><input semantic="MORPH_TARGET" source="#w"/></targets>
                        </morph></controller>)")) {
  const oxDAEMorph* morph = Find<oxDAEController>("#mc")->morph;
  EXPECT_EQ(morph->weightsTarget.GetDocument(), nullptr);
  EXPECT_EQ(morph->weightsTarget.GetMemberCount(), 0u);
  EXPECT_EQ(document.ResolveAnimationTargetPath("m/w"), nullptr);
}

TEST_XML(MorphWeights, UnresolvedWeightSourceRegistersNoTarget, MorphDocument(2, "#later")) {
  const oxDAEMorph* morph = Find<oxDAEController>("#mc")->morph;
  EXPECT_EQ(morph->weightsTarget.GetDocument(), nullptr);
  EXPECT_EQ(morph->weightsTarget.GetQualifier(), "");
  EXPECT_EQ(document.ResolveAnimationTargetPath("m/w"), nullptr);
  EXPECT_EQ(document.ResolveAnimationTargetPath("m/later"), nullptr);
}

// A geometry, a morph controller, a skin controller on the morph, and an
// animation driving weight 1 of the morph from 0 to 1 over one second.
TEST_XML(MorphWeights, SkinOnAMorphAnimatedThroughAWeightMember,
         Collada(Geometries("g t1 t2") + "<library_controllers><controller id=\"mc\">" +
                 Morph("#g", 2) + "</controller>" +
                 SkinController("#mc", R"(<vertex_weights count="1">)" +
                                           std::string(kWeightInputs) +
                                           "<vcount>1</vcount><v>0 3</v></vertex_weights>") +
                 "</library_controllers><library_animations><animation id=\"anim\">" +
                 FloatSource("times", "0 1", 2, 1) + FloatSource("values", "0 1", 2, 1) +
                 oxtest::InterpolationSource(2) + oxtest::Sampler("s", "times", "values") +
                 R"x(<channel source="#s" target="m/w(1)"/></animation></library_animations>)x")) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  EXPECT_TRUE(document.GetUnresolved().empty());
  const oxDAEMorph* morph = Find<oxDAEController>("#mc")->morph;
  const oxDAESkin* skin = Find<oxDAEController>("#c")->skin;
  EXPECT_EQ(skin->sourceMorph, morph);
  const oxDAEChannel* channel = All<oxDAEChannel>().at(0);
  ASSERT_NE(channel->target, nullptr);
  EXPECT_EQ(channel->target, morph->weightsTarget.GetChannelTarget(0, 1));
  EXPECT_EQ(morph->weightsTarget.GetChannelIndex(channel->target), 1);
  const auto* weight = oxDAEChannelTargetFloat::DynamicCast(channel->target);
  ASSERT_NE(weight, nullptr);
  const auto* animation = Find<oxDAEAnimation>("#anim");
  EXPECT_FLOAT_EQ(weight->GetValue(0.25f, animation), 0.25f);
  EXPECT_FLOAT_EQ(weight->GetValue(2.0f, animation), 1.0f);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

// --- Writing ---------------------------------------------------------------------

OX_DOCUMENT_SUITE(ControllerWriting);

TEST_XML(ControllerWriting, ControllerWritesItsSkinAndNotItsMorph,
         Controllers(R"(<controller id="c" name="Skin"><skin source="#g"/>
                        <morph source="#g"/></controller>)")) {
  const std::string saved = SaveText();
  EXPECT_EQ(oxtest::ElementText(saved, "library_controllers"),
            "<library_controllers>\n"
            "    <controller name=\"Skin\" id=\"c\">\n"
            "      <skin source=\"#g\"/>\n"
            "    </controller>\n"
            "  </library_controllers>")
      << saved;
}

TEST_XML(ControllerWriting, SkinWithoutGeometryIsWrittenWithTheProblemSource,
         Controllers(R"(<controller id="c"><skin source="#mc"/></controller>
                        <controller id="mc"><morph source="#g"/></controller>
                        <controller id="d"><skin source="#nowhere"/></controller>)")) {
  const std::string saved = SaveText();
  EXPECT_NE(saved.find(R"(<controller id="c">)"
                       "\n"
                       R"(      <skin source="#problem"/>)"),
            std::string::npos)
      << saved;
  EXPECT_NE(saved.find(R"(<controller id="d">)"
                       "\n"
                       R"(      <skin source="#problem"/>)"),
            std::string::npos)
      << saved;
  EXPECT_NE(saved.find(R"(<controller id="mc"/>)"), std::string::npos) << saved;
}

TEST_XML(ControllerWriting, VertexWeightsWriteCountInputsVcountAndV,
         SkinWeights("2", "<vcount>1 2</vcount><v>0 3 1 1 -1 2</v>")) {
  const std::string saved = SaveText();
  EXPECT_EQ(oxtest::ElementText(saved, "vertex_weights"),
            "<vertex_weights count=\"2\">\n"
            "          <input offset=\"0\" semantic=\"JOINT\" source=\"#joints\"/>\n"
            "          <input offset=\"1\" semantic=\"WEIGHT\" source=\"#weights\"/>\n"
            "          <vcount>1 2</vcount>\n"
            "          <v>0 3 1 1 -1 2</v>\n"
            "        </vertex_weights>")
      << saved;
  EXPECT_EQ(oxtest::ElementText(saved, "joints"),
            "<joints>\n"
            "          <input offset=\"0\" semantic=\"JOINT\" source=\"#joints\"/>\n"
            "          <input offset=\"0\" semantic=\"INV_BIND_MATRIX\" source=\"#ibm\"/>\n"
            "        </joints>")
      << saved;
  EXPECT_EQ(saved.find("bind_shape_matrix"), std::string::npos);
}

TEST_XML(ControllerWriting, SkinSurvivesAResaveAndReload,
         SkinWeights("3", "<vcount>1 2 0</vcount><v>2 3 0 1 -1 0</v>")) {
  const std::string saved = SaveText();
  ASSERT_EQ(LoadText(saved), 0) << saved;
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  const oxDAESkin* skin = Find<oxDAEController>("#c")->skin;
  ASSERT_NE(skin, nullptr);
  EXPECT_EQ(skin->sourceGeometry, Find<oxDAEGeometry>("#g"));
  ASSERT_EQ(skin->sources.size(), 3u);
  ASSERT_NE(skin->joints, nullptr);
  EXPECT_EQ(skin->joints->inputs.size(), 2u);
  const oxDAEVertexWeights* weights = skin->vertexWeights;
  ASSERT_NE(weights, nullptr);
  EXPECT_EQ(weights->count, 3u);
  EXPECT_EQ(weights->vcount, (oxArray<uint32_t>{1, 2, 0}));
  EXPECT_EQ(weights->v, (oxArray<int32_t>{2, 3, 0, 1, -1, 0}));
  oxArray<Influence> influences;
  oxArray<size_t> first;
  EXPECT_EQ(weights->GetInfluences(influences, first), 0);
  EXPECT_EQ(influences, (oxArray<Influence>{{2, 1.0f}, {0, 0.25f}, {-1, 0.1f}}));
}

TEST(ControllerWritingModel, LargeVcountValuesAreWrittenUnsigned) {
  oxtest::LogCapture log;
  oxDAEFile document;
  OxKernel::oxXMLFactory::Instance(0).CreateWriter(document.writer);
  oxDAEVertexWeights weights;
  weights.count = 4000000000u;
  weights.vcount = {0, 4000000000u};
  document.WriteChild(&weights);
  document.writer->Close();
  EXPECT_EQ(std::string(document.writer->GetBuffer()),
            std::string(oxtest::kProlog) +
                "<vertex_weights count=\"4000000000\">\n  <vcount>0 4000000000</vcount>\n  <v/>\n"
                "</vertex_weights>\n");
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}
