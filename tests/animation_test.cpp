// Animations, samplers, channels and animation clips.
#include <cmath>
#include <limits>

#include "animation_markup.h"
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::FloatSource;
using oxtest::Sampler;
using oxtest::Warning;

namespace {

// One interpolation entry, LINEAR, for all keys.
const std::string kInterpolation = oxtest::InterpolationSource(1);

// A document with one animation "anim" holding `body` after the
// interpolation source, followed by `rest`.
std::string Animation(std::string_view body, std::string_view rest = "") {
  return Collada("<library_animations><animation id=\"anim\">" + kInterpolation +
                 std::string(body) + "</animation></library_animations>" + std::string(rest));
}

// Times 0 1 2 and the values `values` of `stride` floats per key, sampled
// by "s".
std::string Keys(std::string_view values, unsigned int stride, std::string_view outputExtra = "") {
  return FloatSource("times", "0 1 2", 3, 1) +
         FloatSource("values", values, 3, stride, outputExtra) + Sampler("s", "times", "values");
}

// Key i of a controller: the value's floats, then the time.
std::vector<float> Key(const OxMath::oxKeyframeController& c, unsigned int i) {
  const float* key = c.GetKeyBase() + size_t{i} * c.GetKeySize();
  return std::vector<float>(key, key + c.GetKeySize());
}

constexpr std::string_view kNode =
    R"(<library_visual_scenes><visual_scene id="vs"><node id="n">
         <translate sid="t">1 2 3</translate></node></visual_scene></library_visual_scenes>)";

}  // namespace

// --- Reading animations ------------------------------------------------------------

OX_DOCUMENT_SUITE(AnimationReading);

TEST_XML(AnimationReading, ReadsChildrenInOrderAndQueuesSamplersAndChannels,
         Animation(Keys("5 6 7", 1) + R"(<channel source="#s" target="a/b"/>)")) {
  ASSERT_EQ(rc, 0);
  const auto* animation = Find<oxDAEAnimation>("#anim");
  ASSERT_NE(animation, nullptr);
  ASSERT_EQ(animation->sources.size(), 3u);
  EXPECT_EQ(animation->sources[0]->id, "interp");
  EXPECT_EQ(animation->sources[2]->id, "values");
  ASSERT_EQ(animation->samplers.size(), 1u);
  ASSERT_EQ(animation->channels.size(), 1u);
  EXPECT_EQ(animation->samplers[0]->parent, animation);
  EXPECT_EQ(animation->channels[0]->parent, animation);
  EXPECT_EQ(animation->channels[0]->source, "#s");
  EXPECT_EQ(animation->channels[0]->targetPath, "a/b");
  EXPECT_EQ(animation->parentAnimation, nullptr);
  EXPECT_FALSE(animation->IsContainerAnimation());
  const auto& queued = document.GetElementsToUpdate();
  EXPECT_NE(std::find(queued.begin(), queued.end(), animation->samplers[0]), queued.end());
  EXPECT_NE(std::find(queued.begin(), queued.end(), animation->channels[0]), queued.end());
  EXPECT_EQ(std::find(queued.begin(), queued.end(), animation), queued.end());
}

TEST_XML(AnimationReading, AnimationWithoutIdTakesItsNameAsId,
         Collada(R"(<library_animations><animation name="walk"/></library_animations>)")) {
  const auto* animation = Find<oxDAEAnimation>("#walk");
  ASSERT_NE(animation, nullptr);
  EXPECT_EQ(animation->id, "walk");
  EXPECT_EQ(animation->name, "walk");
}

TEST_XML(AnimationReading, AnimationWithNeitherIdNorNameKeepsAnEmptyId,
         Collada(R"(<library_animations><animation><animation id="inner"/></animation>
                    </library_animations>)")) {
  ASSERT_EQ(rc, 0);
  const auto animations = All<oxDAEAnimation>();
  ASSERT_EQ(animations.size(), 2u);
  EXPECT_TRUE(animations[0]->id.empty());
  EXPECT_EQ(animations[1]->parentAnimation, animations[0]);
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(AnimationReading, NestedAnimationsPointToTheirParent,
         Collada(R"(<library_animations><animation id="outer">
                      <animation id="middle"><animation id="inner"/></animation>
                      <animation id="second"/></animation></library_animations>)")) {
  auto* outer = Find<oxDAEAnimation>("#outer");
  auto* middle = Find<oxDAEAnimation>("#middle");
  auto* inner = Find<oxDAEAnimation>("#inner");
  auto* second = Find<oxDAEAnimation>("#second");
  ASSERT_TRUE(outer && middle && inner && second);
  EXPECT_EQ(outer->animations, (oxArray<oxDAEAnimation*>{middle, second}));
  EXPECT_EQ(middle->parentAnimation, outer);
  EXPECT_EQ(second->parentAnimation, outer);
  EXPECT_EQ(inner->parentAnimation, middle);
  EXPECT_EQ(inner->parent, middle);
  EXPECT_TRUE(outer->IsContainerAnimation());
  EXPECT_TRUE(middle->IsContainerAnimation());
  EXPECT_FALSE(inner->IsContainerAnimation());
  EXPECT_FALSE(second->IsContainerAnimation());
}

TEST_XML(AnimationReading, UnknownChildOfAnimationIsWarnedAndSkipped,
         Animation(R"(<asset/><channel source="#s" target="a/b"/><extra/>)")) {
  EXPECT_EQ(Find<oxDAEAnimation>("#anim")->channels.size(), 1u);
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning("unknown element <asset> in <animation>"),
                                           Warning("unknown element <extra> in <animation>")}));
}

TEST_XML(
    AnimationReading, UnknownChildOfSamplerIsWarnedAndSkipped,
    Animation(R"(<sampler id="s"><input semantic="INPUT" source="#interp"/><param/></sampler>)")) {
  const auto* sampler = Find<oxDAESampler>("#s");
  ASSERT_NE(sampler, nullptr);
  EXPECT_EQ(sampler->inputs.size(), 1u);
  EXPECT_EQ(sampler->GetInput("INPUT"), sampler->inputs[0]);
  EXPECT_EQ(sampler->GetInput("OUTPUT"), nullptr);
  EXPECT_EQ(sampler->controller.Get(), nullptr);
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Warning("unknown element <param> in <sampler>")}));
}

// --- Sampler controllers -----------------------------------------------------------------

OX_DOCUMENT_SUITE(SamplerController);

TEST_XML(SamplerController, FloatKeysTakeTimesAndValuesFromTheAccessors,
         Animation(Keys("5 6 7", 1))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  ASSERT_NE(sampler, nullptr);
  ASSERT_NE(sampler->controller.Get(), nullptr);
  const auto& c = *sampler->controller;
  EXPECT_EQ(c.GetKeyType(), OxMath::oxKeyframeController::LINEAR);
  EXPECT_EQ(c.GetValueSize(), 1u);
  ASSERT_EQ(c.GetKeysCount(), 3u);
  EXPECT_EQ(Key(c, 0), (std::vector<float>{5, 0}));
  EXPECT_EQ(Key(c, 1), (std::vector<float>{6, 1}));
  EXPECT_EQ(Key(c, 2), (std::vector<float>{7, 2}));
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(SamplerController, LinearInterpolationAtTheMidpoint, Animation(Keys("10 20 40", 1))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  float value = -1;
  EXPECT_EQ(sampler->GetFloatValue(0.5f, 1, &value), 0);
  EXPECT_FLOAT_EQ(value, 15.0f);
  EXPECT_EQ(sampler->GetFloatValue(1.25f, 1, &value), 0);
  EXPECT_FLOAT_EQ(value, 25.0f);
}

TEST_XML(SamplerController, ClampsBeforeTheFirstAndAfterTheLastKey,
         Animation(Keys("10 20 40", 1))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  float value = -1;
  EXPECT_EQ(sampler->GetFloatValue(-3.0f, 1, &value), 0);
  EXPECT_EQ(value, 10.0f);
  EXPECT_EQ(sampler->GetFloatValue(9.0f, 1, &value), 0);
  EXPECT_EQ(value, 40.0f);
}

TEST_XML(SamplerController, InterpolationValuesAreNotRead,
         Collada(R"(<library_animations><animation>)" + FloatSource("times", "0 1", 2, 1) +
                 FloatSource("values", "0 10", 2, 1) +
                 R"(<source id="interp"><Name_array id="ia" count="2">STEP STEP</Name_array>
                    <technique_common><accessor source="#ia" count="2"/></technique_common>
                    </source>)" +
                 Sampler("s", "times", "values") + "</animation></library_animations>")) {
  const auto* sampler = Find<oxDAESampler>("#s");
  ASSERT_NE(sampler->controller.Get(), nullptr);
  float value = 0;
  EXPECT_EQ(sampler->GetFloatValue(0.5f, 1, &value), 0);
  EXPECT_FLOAT_EQ(value, 5.0f);
}

TEST_XML(SamplerController, Vector3KeysAreCopiedFromTheOutputArray,
         Animation(Keys("1 2 3 4 5 6 7 8 9", 3))) {
  const auto& c = *Find<oxDAESampler>("#s")->controller;
  EXPECT_EQ(c.GetValueSize(), 3u);
  EXPECT_EQ(Key(c, 0), (std::vector<float>{1, 2, 3, 0}));
  EXPECT_EQ(Key(c, 2), (std::vector<float>{7, 8, 9, 2}));
  float value[3] = {};
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(1.5f, 3, value), 0);
  EXPECT_EQ(std::vector<float>(value, value + 3), (std::vector<float>{5.5f, 6.5f, 7.5f}));
}

TEST_XML(SamplerController, OutputOffsetIsAddedBeforeTheStride,
         Animation(Keys("0 0 0 1 2 3 4 5 6 7 8 9", 3, R"(offset="1")"))) {
  const auto& c = *Find<oxDAESampler>("#s")->controller;
  // Key i starts at (1 + i) * 3.
  EXPECT_EQ(Key(c, 0), (std::vector<float>{1, 2, 3, 0}));
  EXPECT_EQ(Key(c, 1), (std::vector<float>{4, 5, 6, 1}));
  EXPECT_EQ(Key(c, 2), (std::vector<float>{7, 8, 9, 2}));
}

TEST_XML(SamplerController, Stride2KeysAreCountedButNeverFilled,
         Animation(Keys("1 2 3 4 5 6", 2))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  ASSERT_NE(sampler->controller.Get(), nullptr);
  const auto& c = *sampler->controller;
  EXPECT_EQ(c.GetValueSize(), 2u);
  ASSERT_EQ(c.GetKeysCount(), 3u);
  for (unsigned int i = 0; i < 3; ++i)
    EXPECT_EQ(Key(c, i), (std::vector<float>{0, 0, 0})) << "key " << i;
  float value[2] = {-1, -1};
  EXPECT_EQ(sampler->GetFloatValue(1.0f, 2, value), 0);
  EXPECT_EQ(value[0], 0.0f);
  EXPECT_EQ(value[1], 0.0f);
}

TEST_XML(SamplerController, MatrixKeysHoldSixteenFloats,
         Animation(FloatSource("times", "0 1", 2, 1) +
                   FloatSource("values",
                               "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 "
                               "1 0 0 8 0 1 0 0 0 0 1 0 0 0 0 1",
                               2, 16) +
                   Sampler("s", "times", "values"))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  const auto& c = *sampler->controller;
  EXPECT_EQ(c.GetValueSize(), 16u);
  EXPECT_EQ(Key(c, 1)[3], 8.0f);
  EXPECT_EQ(Key(c, 1)[16], 1.0f);
  float value[16] = {};
  EXPECT_EQ(sampler->GetFloatValue(0.25f, 16, value), 0);
  EXPECT_FLOAT_EQ(value[3], 2.0f);
  EXPECT_EQ(value[0], 1.0f);
}

TEST_XML(SamplerController, Stride12GetsNoControllerAndSamplesExactKeys,
         Animation(FloatSource("times", "0 1", 2, 1) +
                   FloatSource("values",
                               "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23", 2,
                               12) +
                   Sampler("s", "times", "values"))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  EXPECT_EQ(sampler->controller.Get(), nullptr);
  // Position k * count, whatever the stride: 2 floats from 1 * 2.
  float value[2] = {};
  EXPECT_EQ(sampler->GetFloatValue(1.0f, 2, value), 0);
  EXPECT_EQ(value[0], 2.0f);
  EXPECT_EQ(value[1], 3.0f);
  float wide[12] = {};
  EXPECT_EQ(sampler->GetFloatValue(1.0f, 12, wide), 0);
  EXPECT_EQ(wide[0], 12.0f);
  EXPECT_EQ(wide[11], 23.0f);
  EXPECT_EQ(log.Count(), 0u);
  EXPECT_EQ(sampler->GetFloatValue(0.5f, 2, value), kDAENoValue);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("sampling time not found")}));
  EXPECT_EQ(value[0], 2.0f);
}

TEST_XML(SamplerController, MissingInterpolationGivesNoController,
         Animation(FloatSource("times", "0 1", 2, 1) + FloatSource("values", "3 4", 2, 1) +
                   Sampler("s", "times", "values", false))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  EXPECT_EQ(sampler->controller.Get(), nullptr);
  float value = 0;
  EXPECT_EQ(sampler->GetFloatValue(1.0f, 1, &value), 0);
  EXPECT_EQ(value, 4.0f);
}

TEST_XML(SamplerController, OutputWithoutStrideCountsAsStrideOne,
         Animation(R"(<source id="times"><float_array id="ta" count="2">0 1</float_array>
                        <technique_common><accessor source="#ta" count="2"/></technique_common>
                      </source>
                      <source id="values"><float_array id="va" count="2">4 8</float_array>
                        <technique_common><accessor source="#va" count="2"/></technique_common>
                      </source>)" +
                   Sampler("s", "times", "values"))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  ASSERT_NE(sampler->controller.Get(), nullptr);
  EXPECT_EQ(sampler->controller->GetValueSize(), 1u);
  EXPECT_EQ(Key(*sampler->controller, 1), (std::vector<float>{8, 1}));
}

TEST_XML(SamplerController, ControllerWritesNoMoreThanTheCountAsked,
         Animation(Keys("1 2 3 4 5 6 7 8 9", 3))) {
  float value[3] = {-1, -1, -1};
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(2.0f, 1, value), 0);
  EXPECT_EQ(std::vector<float>(value, value + 3), (std::vector<float>{7, -1, -1}));
}

TEST_XML(SamplerController, ControllerWritesNoMoreThanItsValueSize,
         Animation(Keys("1 2 3 4 5 6 7 8 9", 3))) {
  float value[16];
  std::fill_n(value, 16, -1.0f);
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(0.0f, 16, value), 0);
  EXPECT_EQ(std::vector<float>(value, value + 5), (std::vector<float>{1, 2, 3, -1, -1}));
  EXPECT_EQ(value[15], -1.0f);
}

// --- Exact-key sampling ------------------------------------------------------------------

OX_DOCUMENT_SUITE(ExactKeySampling);

TEST_XML(ExactKeySampling, SamplerWithoutInputFailsAsInvalidSampler,
         Animation(FloatSource("values", "1 2", 2, 1) +
                   R"(<sampler id="s"><input semantic="OUTPUT" source="#values"/></sampler>)")) {
  float value = 7;
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(0.0f, 1, &value), kDAENoValue);
  EXPECT_EQ(value, 7.0f);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("invalid sampler")}));
}

TEST_XML(ExactKeySampling, UnresolvedOutputSourceFailsAsInvalidSampler,
         Animation(FloatSource("times", "0 1", 2, 1) + Sampler("s", "times", "missing"))) {
  float value = 7;
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(0.0f, 1, &value), kDAENoValue);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("invalid sampler")}));
}

TEST_XML(ExactKeySampling, InputArrayOfIntsFailsAsInvalidInputDataType,
         Animation(R"(<source id="times"><int_array id="ta" count="2">0 1</int_array>
                        <technique_common><accessor source="#ta" count="2"/></technique_common>
                      </source>
                      <source id="values"><int_array id="va" count="2">0 1</int_array>
                        <technique_common><accessor source="#va" count="2"/></technique_common>
                      </source>)" +
                   Sampler("s", "times", "values", false))) {
  float value = 7;
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(0.0f, 1, &value), kDAENoValue);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("invalid input data type")}));
}

TEST_XML(ExactKeySampling, OutputArrayOfIntsFailsAsInvalidOutputDataType,
         Animation(FloatSource("times", "0 1", 2, 1) +
                   R"(<source id="values"><int_array id="va" count="2">0 1</int_array>
                        <technique_common><accessor source="#va" count="2"/></technique_common>
                      </source>)" +
                   Sampler("s", "times", "values", false))) {
  float value = 7;
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(0.0f, 1, &value), kDAENoValue);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("invalid output data type")}));
}

TEST_XML(
    ExactKeySampling, InputWithoutAccessorFailsAsInvalidInputDataType,
    Animation(R"(<source id="times"><float_array id="ta" count="2">0 1</float_array></source>)" +
              FloatSource("values", "1 2", 2, 1) + Sampler("s", "times", "values", false))) {
  float value = 7;
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(0.0f, 1, &value), kDAENoValue);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("invalid input data type")}));
}

TEST_XML(ExactKeySampling, ValuePastTheOutputArrayFailsWithoutWriting,
         Animation(FloatSource("times", "0 1 2", 3, 1) + FloatSource("values", "1 2 3 4", 2, 2) +
                   Sampler("s", "times", "values", false))) {
  float value[2] = {7, 7};
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(1.0f, 2, value), 0);
  EXPECT_EQ(value[0], 3.0f);
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(2.0f, 2, value), kDAENoValue);
  EXPECT_EQ(value[0], 3.0f);
  EXPECT_EQ(value[1], 4.0f);
  EXPECT_EQ(log.entries,
            (std::vector<oxtest::LogEntry>{Error("sampled value lies past the OUTPUT array")}));
}

TEST_XML(ExactKeySampling, MatchesTheRawArrayIgnoringTheAccessor,
         Animation(FloatSource("times", "9 0 1", 2, 1, R"(offset="1")") +
                   FloatSource("values", "10 20 30", 3, 1) +
                   Sampler("s", "times", "values", false))) {
  float value = 0;
  // 0 is at array position 1, whatever the accessor's offset.
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(0.0f, 1, &value), 0);
  EXPECT_EQ(value, 20.0f);
  EXPECT_EQ(Find<oxDAESampler>("#s")->GetFloatValue(9.0f, 1, &value), 0);
  EXPECT_EQ(value, 10.0f);
}

// --- Bad sampler input -------------------------------------------------------------------

OX_DOCUMENT_SUITE(SamplerBadInput);

TEST_XML(SamplerBadInput, InputCountZeroGivesAControllerWithoutKeys,
         Animation(FloatSource("times", "0 1", 0, 1) + FloatSource("values", "3 4", 2, 1) +
                   Sampler("s", "times", "values"))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  ASSERT_NE(sampler->controller.Get(), nullptr);
  EXPECT_EQ(sampler->controller->GetKeysCount(), 0u);
  // No key: the buffer keeps what it held.
  float value = 7;
  EXPECT_EQ(sampler->GetFloatValue(1.0f, 1, &value), 0);
  EXPECT_EQ(value, 7.0f);
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(SamplerBadInput, TimesNotIncreasingGiveTheFirstKeyUpToItsTime,
         Animation(FloatSource("times", "2 1 0", 3, 1) + FloatSource("values", "20 10 0", 3, 1) +
                   Sampler("s", "times", "values"))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  float value = -1;
  EXPECT_EQ(sampler->GetFloatValue(0.5f, 1, &value), 0);
  EXPECT_EQ(value, 20.0f);
  EXPECT_EQ(sampler->GetFloatValue(5.0f, 1, &value), 0);
  EXPECT_EQ(value, 0.0f);
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(SamplerBadInput, NaNKeyTimeGivesTheEarlierNeighbour,
         Animation(FloatSource("times", "0 nan 2", 3, 1) + FloatSource("values", "0 10 20", 3, 1) +
                   Sampler("s", "times", "values"))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  ASSERT_NE(sampler->controller.Get(), nullptr);
  float value = -1;
  EXPECT_EQ(sampler->GetFloatValue(1.0f, 1, &value), 0);
  EXPECT_TRUE(std::isnan(Key(*sampler->controller, 1)[1]));
  EXPECT_EQ(value, 0.0f);
  EXPECT_EQ(sampler->GetFloatValue(3.0f, 1, &value), 0);
  EXPECT_EQ(value, 20.0f);
}

TEST_XML(SamplerBadInput, NaNSampleTimeGivesTheFirstKey, Animation(Keys("5 6 7", 1))) {
  float value = -1;
  EXPECT_EQ(
      Find<oxDAESampler>("#s")->GetFloatValue(std::numeric_limits<float>::quiet_NaN(), 1, &value),
      0);
  EXPECT_EQ(value, 5.0f);
}

TEST_XML(SamplerBadInput, NaNTimeIsNeverAnExactKey,
         Animation(FloatSource("times", "0 nan", 2, 1) + FloatSource("values", "1 2", 2, 1) +
                   Sampler("s", "times", "values", false))) {
  float value = 7;
  EXPECT_EQ(
      Find<oxDAESampler>("#s")->GetFloatValue(std::numeric_limits<float>::quiet_NaN(), 1, &value),
      kDAENoValue);
  EXPECT_EQ(value, 7.0f);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{Error("sampling time not found")}));
}

TEST_XML(SamplerBadInput, OutputShorterThanCountTimesStrideLeavesZeroValues,
         Animation(Keys("1 2 3 4 5 6", 3))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  const auto& c = *sampler->controller;
  ASSERT_EQ(c.GetKeysCount(), 3u);
  EXPECT_EQ(Key(c, 1), (std::vector<float>{4, 5, 6, 1}));
  EXPECT_EQ(Key(c, 2), (std::vector<float>{0, 0, 0, 2}));
  float value[3] = {};
  EXPECT_EQ(sampler->GetFloatValue(1.5f, 3, value), 0);
  EXPECT_EQ(std::vector<float>(value, value + 3), (std::vector<float>{2, 2.5f, 3}));
}

TEST_XML(SamplerBadInput, ShortFloatOutputReadsZero, Animation(Keys("5 6", 1))) {
  const auto& c = *Find<oxDAESampler>("#s")->controller;
  EXPECT_EQ(Key(c, 2), (std::vector<float>{0, 2}));
}

TEST_XML(SamplerBadInput, HugeInputCountIsLoweredToTheArray,
         Animation(FloatSource("times", "0 1 2", 4000000000u, 1) +
                   FloatSource("values", "5 6 7", 3, 1) + Sampler("s", "times", "values"))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  ASSERT_NE(sampler->controller.Get(), nullptr);
  EXPECT_EQ(sampler->controller->GetKeysCount(), 3u);
  EXPECT_EQ(Key(*sampler->controller, 2), (std::vector<float>{7, 2}));
  EXPECT_EQ(
      log.entries,
      (std::vector<oxtest::LogEntry>{Error(
          "<sampler> INPUT count 4000000000 is larger than its array holds; keeping 3 keys")}));
}

TEST_XML(SamplerBadInput, HugeArrayAndAccessorCountsStayBounded,
         Animation(R"(<source id="times"><float_array id="ta" count="4000000000">0 1</float_array>
                        <technique_common><accessor source="#ta" count="4000000000"/>
                        </technique_common></source>)" +
                   FloatSource("values", "5 6", 2, 1) + Sampler("s", "times", "values"))) {
  const auto* sampler = Find<oxDAESampler>("#s");
  ASSERT_NE(sampler->controller.Get(), nullptr);
  const auto* times = Find<oxDAEFloatArray>("#ta");
  ASSERT_NE(times, nullptr);
  // The array holds what its text could hold; the keys do not exceed it.
  EXPECT_LT(times->floats.size(), 64u);
  EXPECT_EQ(sampler->controller->GetKeysCount(), times->floats.size());
  EXPECT_EQ(log.Count(OxKernel::kLogError,
                      "<sampler> INPUT count 4000000000 is larger than its array holds; keeping " +
                          std::to_string(times->floats.size()) + " keys"),
            1u);
}

// --- Channel binding ---------------------------------------------------------------------

OX_DOCUMENT_SUITE(ChannelBinding);

TEST_XML(ChannelBinding, ChannelReadsSourceAndTargetTextsAndIdentity,
         Animation(R"(<channel id="c" name="move" source="#s" target="n/t.X"/>)")) {
  const auto* channel = Find<oxDAEChannel>("#c");
  ASSERT_NE(channel, nullptr);
  EXPECT_EQ(channel->name, "move");
  EXPECT_EQ(channel->source, "#s");
  EXPECT_EQ(channel->targetPath, "n/t.X");
  EXPECT_EQ(channel->sampler, nullptr);
  EXPECT_EQ(channel->target, nullptr);
}

TEST_XML(ChannelBinding, ChannelTargetLaterInTheFileIsBound,
         Animation(Keys("1 2 3 4 5 6 7 8 9", 3) + R"(<channel id="c" source="#s" target="n/t"/>)",
                   kNode)) {
  ASSERT_EQ(rc, 0);
  auto* channel = Find<oxDAEChannel>("#c");
  ASSERT_NE(channel, nullptr);
  EXPECT_EQ(channel->sampler, Find<oxDAESampler>("#s"));
  ASSERT_NE(channel->target, nullptr);
  EXPECT_EQ(channel->target, document.ResolveAnimationTargetPath("n/t"));
  EXPECT_EQ(channel->target->GetChannels(), (oxArray<oxDAEChannel*>{channel}));
  EXPECT_TRUE(document.GetUnresolved().empty());
}

TEST_XML(ChannelBinding, ChannelBindsToAMemberTarget,
         Animation(Keys("1 2 3", 1) + R"(<channel id="c" source="#s" target="n/t.Y"/>)", kNode)) {
  const auto* channel = Find<oxDAEChannel>("#c");
  ASSERT_NE(channel->target, nullptr);
  EXPECT_EQ(channel->target->GetQualifier(), "Y");
  EXPECT_TRUE(channel->target->IsTargeted());
}

TEST_XML(ChannelBinding, ChannelWithAnUnknownSamplerStaysUnbound,
         Animation(R"(<channel id="c" source="#nothing" target="n/t"/>)", kNode)) {
  const auto* channel = Find<oxDAEChannel>("#c");
  EXPECT_EQ(channel->sampler, nullptr);
  // What did resolve is kept, but the target does not list the channel.
  ASSERT_NE(channel->target, nullptr);
  EXPECT_FALSE(channel->target->IsTargeted());
  ASSERT_EQ(document.GetUnresolved().size(), 1u);
  EXPECT_EQ(document.GetUnresolved()[0].element, channel);
  EXPECT_EQ(document.GetUnresolved()[0].code, kDAEUnresolved);
}

TEST_XML(ChannelBinding, ChannelWithAnUnknownTargetStaysUnbound,
         Animation(Keys("1 2 3", 1) + R"(<channel id="c" source="#s" target="n/missing"/>)",
                   kNode)) {
  const auto* channel = Find<oxDAEChannel>("#c");
  EXPECT_EQ(channel->sampler, Find<oxDAESampler>("#s"));
  EXPECT_EQ(channel->target, nullptr);
  ASSERT_EQ(document.GetUnresolved().size(), 1u);
  EXPECT_EQ(document.GetUnresolved()[0].code, kDAEUnresolved);
}

TEST_XML(ChannelBinding, SourceThatIsNotASamplerDoesNotBind,
         Animation(Keys("1 2 3", 1) + R"(<channel id="c" source="#values" target="n/t"/>)",
                   kNode)) {
  const auto* channel = Find<oxDAEChannel>("#c");
  EXPECT_EQ(channel->sampler, nullptr);
  EXPECT_EQ(document.GetUnresolved().size(), 1u);
}

TEST_XML(ChannelBinding, ChannelUpdatedTwiceIsListedOnce,
         Animation(Keys("1 2 3", 1) + R"(<channel id="c" source="#s" target="n/t"/>)", kNode)) {
  auto* channel = Find<oxDAEChannel>("#c");
  ASSERT_NE(channel->target, nullptr);
  EXPECT_EQ(channel->UpdateDependencies(document, false), 0);
  EXPECT_EQ(channel->target->GetChannels().size(), 1u);
}

TEST_F(ChannelBinding, TargetPathOfManyOpenBracketsBindsNothing) {
  const std::string brackets(100000, '(');
  ASSERT_EQ(LoadText(Animation(Keys("1 2 3", 1) + "<channel id=\"c1\" source=\"#s\" target=\"" +
                                   brackets + "\"/><channel id=\"c2\" source=\"#s\" target=\"n/t" +
                                   brackets + ")\"/>",
                               kNode)),
            0);
  for (const char* id : {"#c1", "#c2"}) {
    const auto* channel = Find<oxDAEChannel>(id);
    ASSERT_NE(channel, nullptr);
    EXPECT_EQ(channel->target, nullptr) << id;
  }
  EXPECT_EQ(document.GetUnresolved().size(), 2u);
}

TEST_F(ChannelBinding, TargetPathOfManyIndicesBindsNothing) {
  std::string path = "n/t";
  for (int i = 0; i < 50000; ++i)
    path += "(1)";
  ASSERT_EQ(
      LoadText(Animation(
          Keys("1 2 3", 1) + "<channel id=\"c\" source=\"#s\" target=\"" + path + "\"/>", kNode)),
      0);
  EXPECT_EQ(Find<oxDAEChannel>("#c")->target, nullptr);
}

TEST_XML(
    ChannelBinding, TargetPathWithAThirtyDigitIndexBindsNothing,
    Animation(Keys("1 2 3", 1) +
                  R"x(<channel id="c" source="#s" target="n/t(123456789012345678901234567890)"/>)x",
              kNode)) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(Find<oxDAEChannel>("#c")->target, nullptr);
  EXPECT_EQ(document.GetUnresolved().size(), 1u);
}

// --- Writing -------------------------------------------------------------------------

OX_DOCUMENT_SUITE(AnimationWriting);

TEST_XML(AnimationWriting, EveryChannelIsBoundAgainAfterAResaveAndReload,
         Animation(Keys("1 2 3 4 5 6 7 8 9", 3) + FloatSource("z", "4 5 6", 3, 1) +
                       Sampler("sz", "times", "z") +
                       R"(<channel id="c1" source="#s" target="n/t"/>
                          <channel id="c2" source="#sz" target="n/t.Z"/>)",
                   kNode)) {
  ASSERT_EQ(rc, 0);
  ASSERT_TRUE(document.GetUnresolved().empty());
  const std::string saved = SaveText();
  ASSERT_EQ(LoadText(saved), 0) << saved;
  const auto channels = All<oxDAEChannel>();
  ASSERT_EQ(channels.size(), 2u) << saved;
  EXPECT_EQ(channels[0]->sampler, Find<oxDAESampler>("#s")) << saved;
  EXPECT_EQ(channels[1]->sampler, Find<oxDAESampler>("#sz")) << saved;
  for (const oxDAEChannel* channel : channels)
    EXPECT_NE(channel->target, nullptr) << saved;
  EXPECT_EQ(channels[0]->targetPath, "n/t");
  EXPECT_EQ(channels[1]->targetPath, "n/t.Z");
  EXPECT_TRUE(document.GetUnresolved().empty());
}

TEST_XML(AnimationWriting, BoundChannelWritesTheSamplerReferenceAndTheTargetPath,
         Animation(Keys("1 2 3", 1) + R"(<channel source="s" target="n/t.X"/>)", kNode)) {
  const std::string saved = SaveText();
  EXPECT_NE(saved.find(R"(<channel source="#s" target="n/t.X")"), std::string::npos) << saved;
  EXPECT_EQ(All<oxDAEChannel>()[0]->source, "#s");
}

TEST_XML(AnimationWriting, UnboundChannelWritesTheTextsItRead,
         Animation(R"x(<channel source="#nowhere" target="a/b(2)"/>)x")) {
  const std::string saved = SaveText();
  EXPECT_NE(saved.find(R"x(<channel source="#nowhere" target="a/b(2)")x"), std::string::npos)
      << saved;
  ASSERT_EQ(LoadText(saved), 0);
  const auto channels = All<oxDAEChannel>();
  ASSERT_EQ(channels.size(), 1u);
  EXPECT_EQ(channels[0]->source, "#nowhere");
  EXPECT_EQ(channels[0]->targetPath, "a/b(2)");
}

TEST_XML(AnimationWriting, NestedAnimationsSurviveAResave,
         Collada(R"(<library_animations><animation id="outer">
                      <animation id="inner">)" +
                 kInterpolation + Keys("1 2 3", 1) +
                 R"(</animation></animation></library_animations>)")) {
  ASSERT_EQ(LoadText(SaveText()), 0);
  const auto* inner = Find<oxDAEAnimation>("#inner");
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->parentAnimation, Find<oxDAEAnimation>("#outer"));
  ASSERT_EQ(inner->samplers.size(), 1u);
  EXPECT_NE(inner->samplers[0]->controller.Get(), nullptr);
}

TEST_XML(AnimationWriting, SamplerAndSourcesSurviveAResave, Animation(Keys("10 20 40", 1))) {
  const std::string saved = SaveText();
  ASSERT_EQ(LoadText(saved), 0) << saved;
  const auto* sampler = Find<oxDAESampler>("#s");
  ASSERT_NE(sampler, nullptr);
  ASSERT_EQ(sampler->inputs.size(), 3u);
  EXPECT_EQ(sampler->inputs[2]->semantic, "INTERPOLATION");
  float value = 0;
  EXPECT_EQ(sampler->GetFloatValue(0.5f, 1, &value), 0);
  EXPECT_FLOAT_EQ(value, 15.0f) << saved;
}

TEST_XML(
    AnimationWriting, SamplerInputsAreWrittenAsLocalInputs,
    Animation(Keys("10 20 40", 1) +
              R"(<sampler id="t"><input semantic="IN_TANGENT" source="#nowhere"/></sampler>)")) {
  const std::string saved = SaveText();
  EXPECT_NE(saved.find(R"(<input semantic="INTERPOLATION" source="#interp"/>)"), std::string::npos)
      << saved;
  EXPECT_NE(saved.find(R"(<input semantic="INPUT" source="#times"/>)"), std::string::npos) << saved;
  EXPECT_NE(saved.find(R"(<input semantic="IN_TANGENT" source="#nowhere"/>)"), std::string::npos)
      << saved;
}

// --- Animation clips -----------------------------------------------------------------

OX_DOCUMENT_SUITE(AnimationClip);

constexpr std::string_view kClip = R"(
  <library_animations><animation id="a1"/><animation id="a2"/></library_animations>
  <library_animation_clips>
    <animation_clip id="clip" name="run" start="0.5" end="2.25">
      <asset/><instance_animation url="#a1"/><instance_animation url="#a2"/>
    </animation_clip>
  </library_animation_clips>)";

TEST_XML(AnimationClip, ReadsStartEndAndInstances, Collada(kClip)) {
  ASSERT_EQ(rc, 0);
  const auto* clip = Find<oxDAEAnimationClip>("#clip");
  ASSERT_NE(clip, nullptr);
  EXPECT_EQ(clip->name, "run");
  EXPECT_EQ(clip->start, 0.5);
  EXPECT_EQ(clip->end, 2.25);
  ASSERT_EQ(clip->instances.size(), 2u);
  EXPECT_EQ(clip->instances[0]->kind, EToken::ANIMATION);
  EXPECT_EQ(clip->instances[0]->url, "#a1");
  EXPECT_EQ(clip->instances[0]->parent, clip);
  EXPECT_EQ(clip->instances[1]->target, Find<oxDAEAnimation>("#a2"));
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(AnimationClip, DefaultsAreZero,
         Collada(R"(<library_animation_clips><animation_clip id="clip"/>
                    </library_animation_clips>)")) {
  const auto* clip = Find<oxDAEAnimationClip>("#clip");
  EXPECT_EQ(clip->start, 0.0);
  EXPECT_EQ(clip->end, 0.0);
  EXPECT_TRUE(clip->instances.empty());
}

TEST_XML(AnimationClip, ExtraIsUnsupportedAndUnknownChildrenAreWarned,
         Collada(R"(<library_animation_clips><animation_clip id="clip">
                      <extra/><instance_node url="#x"/></animation_clip>
                    </library_animation_clips>)")) {
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{
                             Warning("unsupported <extra> in <animation_clip>"),
                             Warning("unknown element <instance_node> in <animation_clip>")}));
  EXPECT_TRUE(Find<oxDAEAnimationClip>("#clip")->instances.empty());
}

TEST_XML(AnimationClip, ClipSurvivesAResave, Collada(kClip)) {
  const std::string saved = SaveText();
  ASSERT_EQ(LoadText(saved), 0);
  const auto* clip = Find<oxDAEAnimationClip>("#clip");
  ASSERT_NE(clip, nullptr) << saved;
  EXPECT_EQ(clip->name, "run");
  EXPECT_EQ(clip->start, 0.5);
  EXPECT_EQ(clip->end, 2.25);
  ASSERT_EQ(clip->instances.size(), 2u) << saved;
  EXPECT_EQ(clip->instances[0]->target, Find<oxDAEAnimation>("#a1"));
  EXPECT_EQ(clip->instances[1]->url, "#a2");
}

TEST_XML(AnimationClip, ZeroStartAndEndAreNotWritten,
         Collada(R"(<library_animation_clips><animation_clip id="clip"/>
                    </library_animation_clips>)")) {
  const std::string saved = SaveText();
  EXPECT_NE(saved.find(R"(<animation_clip id="clip")"), std::string::npos) << saved;
  EXPECT_EQ(saved.find("start="), std::string::npos) << saved;
  EXPECT_EQ(saved.find("end="), std::string::npos) << saved;
}

TEST_XML(ChannelBinding, TargetOfANodeWithoutIdIsReachedThroughTheNearestId,
         Animation(Keys("1 2 3 4 5 6 7 8 9", 3) + R"(<channel id="c" source="#s" target="vs/t"/>)",
                   R"(<library_visual_scenes><visual_scene id="vs"><node>
                        <translate sid="t">1 2 3</translate></node></visual_scene>
                      </library_visual_scenes>)")) {
  ASSERT_EQ(rc, 0);
  EXPECT_NE(Find<oxDAEChannel>("#c")->target, nullptr);
  EXPECT_TRUE(document.GetUnresolved().empty());
}
