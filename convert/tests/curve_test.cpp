// The exact curve evaluator: each interpolation against values worked out by
// hand from its formula, a curve mixing them, and what is read as LINEAR.
#include <oxDAEConvert/oxDAECurve.h>

#include "oxTestSupport.h"

using namespace OxDAEReader;
using OxDAEConvert::oxDAECurve;
using OxDAEConvert::oxInterpolation;

namespace {

// The sources of one sampler: times, values of `stride` floats, one
// interpolation name per key, and optional tangents of `tangentStride`.
struct Curve {
  std::string times;
  std::string values;
  unsigned int stride = 1;
  std::string interpolations;
  std::string inTangents;
  std::string outTangents;
  unsigned int tangentStride = 1;
};

std::string Source(std::string_view id, std::string_view array, std::string_view text,
                   unsigned int stride) {
  const size_t count = text.empty() ? 0 : std::count(text.begin(), text.end(), ' ') + 1;
  return OxKernel::oxConcat(
      "<source id=\"", id, "\"><", array, " id=\"", id, "-array\" count=\"", count, "\">", text,
      "</", array, "><technique_common><accessor source=\"#", id, "-array\" count=\"",
      count / stride, "\" stride=\"", stride, "\"/></technique_common></source>");
}

std::string Document(const Curve& c) {
  std::string body = Source("in", "float_array", c.times, 1) +
                     Source("out", "float_array", c.values, c.stride) +
                     Source("interp", "Name_array", c.interpolations, 1);
  std::string inputs =
      R"(<input semantic="INPUT" source="#in"/><input semantic="OUTPUT" source="#out"/>)"
      R"(<input semantic="INTERPOLATION" source="#interp"/>)";
  if (!c.inTangents.empty()) {
    body += Source("intan", "float_array", c.inTangents, c.tangentStride) +
            Source("outtan", "float_array", c.outTangents, c.tangentStride);
    inputs += R"(<input semantic="IN_TANGENT" source="#intan"/>)"
              R"(<input semantic="OUT_TANGENT" source="#outtan"/>)";
  }
  return oxtest::Collada("<library_animations><animation id=\"a\">" + body + "<sampler id=\"s\">" +
                         inputs + "</sampler></animation></library_animations>");
}

class ExactCurve : public oxtest::DocumentTest {
 protected:
  // Loads the curve's document and builds the evaluator of its sampler.
  std::optional<oxDAECurve> Build(std::string times, std::string values, unsigned int stride,
                                  std::string interpolations, std::string inTangents = "",
                                  std::string outTangents = "", unsigned int tangentStride = 1) {
    const Curve c{
        std::move(times),      std::move(values),      stride,       std::move(interpolations),
        std::move(inTangents), std::move(outTangents), tangentStride};
    EXPECT_EQ(LoadText(Document(c)), 0);
    const auto* sampler = Find<oxDAESampler>("#s");
    EXPECT_NE(sampler, nullptr);
    log.Clear();
    return sampler ? oxDAECurve::FromSampler(*sampler) : std::nullopt;
  }
  static float At(const oxDAECurve& curve, float time) {
    float value = 0.0f;
    curve.Evaluate(time, &value);
    return value;
  }
};

}  // namespace

TEST(Interpolation, NamesReadBothWays) {
  for (const char* name : {"STEP", "LINEAR", "BEZIER", "HERMITE", "CARDINAL", "BSPLINE"})
    EXPECT_EQ(OxDAEConvert::InterpolationName(*OxDAEConvert::InterpolationFromName(name)), name);
  EXPECT_FALSE(OxDAEConvert::InterpolationFromName("linear"));
  EXPECT_FALSE(OxDAEConvert::InterpolationFromName("TCB"));
}

TEST_F(ExactCurve, StepHoldsEachKeyUntilTheNext) {
  const auto curve = Build("0 1 2", "10 20 30", 1, "STEP STEP STEP");
  ASSERT_TRUE(curve);
  EXPECT_EQ(At(*curve, 0.5f), 10.0f);
  EXPECT_EQ(At(*curve, 1.0f), 20.0f);
  EXPECT_EQ(At(*curve, 1.99f), 20.0f);
  EXPECT_EQ(curve->GetInterpolation(1), oxInterpolation::STEP);
}

TEST_F(ExactCurve, EndValuesHoldOutsideTheKeys) {
  const auto curve = Build("1 2", "10 30", 1, "LINEAR LINEAR");
  ASSERT_TRUE(curve);
  EXPECT_EQ(At(*curve, -5.0f), 10.0f);
  EXPECT_EQ(At(*curve, 1.0f), 10.0f);
  EXPECT_EQ(At(*curve, 2.0f), 30.0f);
  EXPECT_EQ(At(*curve, 100.0f), 30.0f);
  EXPECT_EQ(curve->GetStartTime(), 1.0f);
  EXPECT_EQ(curve->GetEndTime(), 2.0f);
}

TEST_F(ExactCurve, LinearOfThreeFloatsPerKey) {
  const auto curve = Build("0 2", "0 0 0 2 4 -6", 3, "LINEAR LINEAR");
  ASSERT_TRUE(curve);
  ASSERT_EQ(curve->GetStride(), 3u);
  float value[3] = {};
  curve->Evaluate(0.5f, value);
  EXPECT_EQ(value[0], 0.5f);
  EXPECT_EQ(value[1], 1.0f);
  EXPECT_EQ(value[2], -1.5f);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

// One-dimensional tangents are offsets of the control values, at a third
// and two thirds of the segment: C0 = 0 + 2, C1 = 3 - (-1). At t = 1.5 of
// 0..3, s = 1/2 and the value is (0 + 3*2 + 3*4 + 3) / 8; at t = 1, s = 1/3
// and it is 8/9 + 8/9 + 1/9.
TEST_F(ExactCurve, BezierWithOneDimensionalTangents) {
  const auto curve = Build("0 3", "0 3", 1, "BEZIER BEZIER", "0 -1", "2 0");
  ASSERT_TRUE(curve);
  EXPECT_NEAR(At(*curve, 1.5f), 21.0 / 8.0, 1e-6);
  EXPECT_NEAR(At(*curve, 1.0f), 17.0 / 9.0, 1e-6);
  EXPECT_EQ(curve->GetOutControl(0, 0).time, 1.0);
  EXPECT_EQ(curve->GetOutControl(0, 0).value, 2.0);
  EXPECT_EQ(curve->GetInControl(1, 0).time, 2.0);
  EXPECT_EQ(curve->GetInControl(1, 0).value, 4.0);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

// Control points (0, 2) and (3, 6) between (0, 0) and (3, 8): the time is
// X(s) = 9s^2 - 6s^3, so t = 1.5 is s = 1/2, value (3*2 + 3*6 + 8) / 8 = 4;
// t = 0.46875 is s = 1/4, value 0.84375 + 0.84375 + 0.125.
TEST_F(ExactCurve, BezierWithTwoDimensionalTangentsSolvesForTime) {
  const auto curve = Build("0 3", "0 8", 1, "BEZIER BEZIER", "-1 0 3 6", "0 2 4 8", 2);
  ASSERT_TRUE(curve);
  EXPECT_NEAR(At(*curve, 1.5f), 4.0, 1e-6);
  EXPECT_NEAR(At(*curve, 0.46875f), 1.8125, 1e-6);
  EXPECT_EQ(curve->GetOutControl(0, 0).value, 2.0);
  EXPECT_EQ(curve->GetInControl(1, 0).time, 3.0);
}

// Two components with their own (time, value) pairs: the second is the
// first shifted by 10 in value.
TEST_F(ExactCurve, BezierSolvesEachComponentWithItsOwnControls) {
  const auto curve =
      Build("0 3", "0 10 8 18", 2, "BEZIER BEZIER", "0 0 0 0 3 6 3 16", "0 2 0 12 0 0 0 0", 4);
  ASSERT_TRUE(curve);
  float value[2] = {};
  curve->Evaluate(1.5f, value);
  EXPECT_NEAR(value[0], 4.0, 1e-6);
  EXPECT_NEAR(value[1], 14.0, 1e-6);
}

// h00 = 1/2, h10 = 1/8, h01 = 1/2, h11 = -1/8 at s = 1/2:
// 1/2 + 4/8 + 3/2 + 2/8.
TEST_F(ExactCurve, HermiteWithOneDimensionalTangents) {
  const auto curve = Build("0 2", "1 3", 1, "HERMITE HERMITE", "0 -2", "4 0");
  ASSERT_TRUE(curve);
  EXPECT_NEAR(At(*curve, 1.0f), 2.75, 1e-6);
  EXPECT_NEAR(At(*curve, 0.0f), 1.0, 1e-6);
}

// Tangents (3, 6) and (3, 6) of the time and value over s: the curve is
// the straight line from (0, 1) to (3, 7), so t = 1 gives 3.
TEST_F(ExactCurve, HermiteWithTwoDimensionalTangents) {
  const auto curve = Build("0 3", "1 7", 1, "HERMITE HERMITE", "0 0 3 6", "3 6 0 0", 2);
  ASSERT_TRUE(curve);
  EXPECT_NEAR(At(*curve, 1.0f), 3.0, 1e-6);
  EXPECT_NEAR(At(*curve, 2.5f), 6.0, 1e-6);
}

// Values 0 1 4 9: on 1..2 the tangents are (4 - 0)/2 and (9 - 1)/2, so
// t = 1.5 gives 1/2 + 2/8 + 4/2 - 4/8; on 0..1 the missing neighbour is the
// first key, tangents 1/2 and 2: 1/16 + 1/2 - 2/8.
TEST_F(ExactCurve, CardinalTakesItsTangentsFromTheNeighbours) {
  const auto curve = Build("0 1 2 3", "0 1 4 9", 1, "CARDINAL CARDINAL CARDINAL CARDINAL");
  ASSERT_TRUE(curve);
  EXPECT_NEAR(At(*curve, 1.5f), 2.25, 1e-6);
  EXPECT_NEAR(At(*curve, 0.5f), 0.3125, 1e-6);
  EXPECT_NEAR(At(*curve, 2.0f), 4.0, 1e-6);
}

// (1/6) [(1-s)^3 P0 + (3s^3 - 6s^2 + 4) P1 + (-3s^3 + 3s^2 + 3s + 1) P2 +
// s^3 P3]: at s = 1/2 of 1..2, (2.875 + 2.875 * 4 + 9/8) / 6; at the key
// t = 1, (0 + 4 + 4) / 6: the spline does not pass through its keys.
TEST_F(ExactCurve, BSplineApproximatesItsKeys) {
  const auto curve = Build("0 1 2 3", "0 1 4 9", 1, "BSPLINE BSPLINE BSPLINE BSPLINE");
  ASSERT_TRUE(curve);
  EXPECT_NEAR(At(*curve, 1.5f), 15.5 / 6.0, 1e-6);
  EXPECT_NEAR(At(*curve, 1.0f), 8.0 / 6.0, 1e-6);
}

TEST_F(ExactCurve, EachKeyTakesItsOwnInterpolation) {
  const auto curve = Build("0 1 2 3 4", "0 10 20 30 0", 1, "STEP LINEAR BEZIER HERMITE LINEAR",
                           "0 0 0 4 0", "0 0 8 12 0");
  ASSERT_TRUE(curve);
  EXPECT_EQ(At(*curve, 0.5f), 0.0f);
  EXPECT_EQ(At(*curve, 1.5f), 15.0f);
  // Bezier on 2..3 with control values 20 + 8 and 30 - 4:
  // (20 + 84 + 78 + 30) / 8.
  EXPECT_NEAR(At(*curve, 2.5f), 26.5, 1e-5);
  // Hermite on 3..4 from 30 to 0 with tangents 12 and 0: 15 + 1.5 + 0 - 0.
  EXPECT_NEAR(At(*curve, 3.5f), 16.5, 1e-5);
  EXPECT_EQ(curve->GetInterpolation(2), oxInterpolation::BEZIER);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST_F(ExactCurve, BezierWithoutTangentsIsLinearWithAWarning) {
  const auto curve = Build("0 2", "0 4", 1, "BEZIER BEZIER");
  ASSERT_TRUE(curve);
  EXPECT_EQ(At(*curve, 1.0f), 2.0f);
  EXPECT_EQ(curve->GetInterpolation(0), oxInterpolation::LINEAR);
  EXPECT_EQ(log.entries,
            std::vector{oxtest::Warning(
                "sampler 's': key 0 is BEZIER without IN_TANGENT and OUT_TANGENT records of the "
                "value's width or twice it; it is read as LINEAR")});
}

TEST_F(ExactCurve, TangentsOfAnotherWidthAreNotUsed) {
  const auto curve = Build("0 2", "0 4", 1, "HERMITE HERMITE", "0 0 0 0 0 0", "0 0 0 0 0 0", 3);
  ASSERT_TRUE(curve);
  EXPECT_EQ(At(*curve, 1.0f), 2.0f);
  EXPECT_EQ(log.Count(), 1u);
}

TEST_F(ExactCurve, UnknownInterpolationIsLinearWithOneWarning) {
  const auto curve = Build("0 1 2", "0 4 8", 1, "TCB TCB LINEAR");
  ASSERT_TRUE(curve);
  EXPECT_EQ(At(*curve, 0.5f), 2.0f);
  EXPECT_EQ(log.entries, std::vector{oxtest::Warning(
                             "sampler 's': key 0 has the interpolation 'TCB', which COLLADA does "
                             "not define; it is read as LINEAR")});
}

TEST_F(ExactCurve, TimesThatDoNotRiseHoldTheLaterValue) {
  const auto curve = Build("0 1 1 2", "0 10 20 30", 1, "LINEAR LINEAR LINEAR LINEAR");
  ASSERT_TRUE(curve);
  EXPECT_EQ(At(*curve, 0.5f), 5.0f);
  EXPECT_EQ(At(*curve, 1.0f), 20.0f);
  EXPECT_EQ(At(*curve, 1.5f), 25.0f);
}

TEST_F(ExactCurve, SamplerWithoutOutputHasNoCurve) {
  ASSERT_EQ(
      LoadText(oxtest::Collada(
          R"(<library_animations><animation><sampler id="s"><input semantic="INPUT" source="#nowhere"/>)"
          R"(</sampler></animation></library_animations>)")),
      0);
  log.Clear();
  EXPECT_FALSE(oxDAECurve::FromSampler(*Find<oxDAESampler>("#s")));
  EXPECT_EQ(log.entries,
            std::vector{oxtest::Error("sampler 's' has no INPUT or OUTPUT floats to evaluate")});
}
