// Channel targets: paths, the document's target table, arrays of members and
// the values sampled under an animation.
#include "animation_markup.h"
#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::FloatSource;
using oxtest::LogEntry;
using oxtest::Sampler;

namespace {

// A channel "id" on sampler "s" with no target yet.
std::string Channel(const std::string& id, const std::string& sampler) {
  return "<channel id=\"" + id + "\" source=\"#" + sampler + "\" target=\"\"/>";
}

std::string Zeros(unsigned int n) {
  std::string text;
  for (unsigned int i = 0; i < n; ++i)
    text += "0 ";
  return text;
}

// Animation "a" with samplers of 1, 3, 4, 9 and 16 floats (each from 0 at
// time 0 to 10, 20, ... at time 1), a direct child "child" and a grandchild
// "grand"; a separate animation "other".
const std::string kAnimations = Collada(
    "<library_animations><animation id=\"a\">" + FloatSource("times", "0 1", 2, 1) +
    oxtest::InterpolationSource(2) + FloatSource("v1", "0 10", 2, 1) +
    FloatSource("v3", "0 0 0 10 20 30", 2, 3) + FloatSource("v4", "0 0 0 0 10 20 30 40", 2, 4) +
    FloatSource("v9", Zeros(9) + "1 2 3 4 5 6 7 8 9", 2, 9) +
    FloatSource("v16", Zeros(16) + "1 0 0 7 0 1 0 8 0 0 1 9 0 0 0 1", 2, 16) +
    FloatSource("vx", "3 4", 2, 1) + Sampler("s1", "times", "v1") + Sampler("s3", "times", "v3") +
    Sampler("s4", "times", "v4") + Sampler("s9", "times", "v9") + Sampler("s16", "times", "v16") +
    Sampler("sx", "times", "vx", false) + Channel("c1", "s1") + Channel("c1b", "s1") +
    Channel("c3", "s3") + Channel("c4", "s4") + Channel("c9", "s9") + Channel("c16", "s16") +
    Channel("cx", "sx") + "<animation id=\"child\">" + Sampler("sc", "times", "v1") +
    Channel("cc", "sc") + "<animation id=\"grand\">" + Sampler("sg", "times", "v1") +
    Channel("cg", "sg") + "</animation></animation></animation><animation id=\"other\">" +
    Sampler("so", "times", "v3") + Channel("co", "so") + "</animation></library_animations>");

}  // namespace

// A document whose only element of interest is the container "e", an
// element with id "e" that holds the targets of a test.
class TargetTest : public oxtest::DocumentTest {
 protected:
  void SetUp() override {
    oxtest::DocumentTest::SetUp();
    container.id = "e";
  }

  // Puts `target` into "e" under `qualifier`.
  void Hold(oxDAEChannelTarget& target, const char* qualifier) {
    target.SetContainerParent(&container);
    target.SetQualifier(qualifier);
  }

  oxDAEElement container;
};

// --- Paths -------------------------------------------------------------------------

using ChannelTargetPath = TargetTest;

TEST_F(ChannelTargetPath, MemberPathIsTheArrayPathADotAndTheQualifier) {
  container.id = "node1";
  oxDAEChannelTargetRotate rotation;
  Hold(rotation, "rot");
  EXPECT_EQ(rotation.GetPath(), "node1/rot");
  ASSERT_NE(rotation.GetChannelTarget("ANGLE"), nullptr);
  EXPECT_EQ(rotation.GetChannelTarget("ANGLE")->GetPath(), "node1/rot.ANGLE");
  EXPECT_EQ(rotation.GetChannelTarget("ANGLE")->GetTargetParent(), &rotation);
}

TEST_F(ChannelTargetPath, ContainerWhoseSidIsTheQualifierGivesTheContainerPath) {
  oxDAEElement transform;
  transform.sid = "t";
  transform.parent = &container;
  oxDAEChannelTargetFloatXYZ target;
  target.SetContainerParent(&transform);
  target.SetQualifier("t");
  EXPECT_EQ(target.GetPath(), "e/t");
  EXPECT_EQ(target.GetChannelTarget("X")->GetPath(), "e/t.X");
}

TEST_F(ChannelTargetPath, ContainerWithoutPathGivesTheQualifierAlone) {
  oxDAEElement anonymous;
  oxDAEChannelTargetFloat target;
  target.SetContainerParent(&anonymous);
  target.SetQualifier("x");
  EXPECT_EQ(target.GetPath(), "x");
  EXPECT_EQ(log.Count(), 0u);
}

TEST_F(ChannelTargetPath, ContainerWithAnotherSidAppendsTheQualifier) {
  oxDAEChannelTargetFloat target;
  Hold(target, "intensity");
  EXPECT_EQ(target.GetPath(), "e/intensity");
}

TEST_F(ChannelTargetPath, TargetWithNeitherParentNorContainerHasAnEmptyPath) {
  oxDAEChannelTargetFloat target;
  target.SetQualifier("x");
  EXPECT_EQ(target.GetPath(), "");
  EXPECT_EQ(log.entries, (std::vector<LogEntry>{Error("neither parent no container")}));
}

TEST_F(ChannelTargetPath, ContainerIsKeptOnlyWhenItIsAnElement) {
  oxDAEChannelTargetFloat target;
  oxDAEChannelTargetFloat notAnElement;
  target.SetContainerParent(&container);
  EXPECT_EQ(target.GetContainerParent(), &container);
  target.SetContainerParent(&notAnElement);
  EXPECT_EQ(target.GetContainerParent(), nullptr);
  oxDAEInputElement baseElement;
  target.SetContainerParent(&baseElement);
  EXPECT_EQ(target.GetContainerParent(), nullptr);
}

// --- The document's table ----------------------------------------------------------------

using ChannelTargetRegistry = TargetTest;

TEST_F(ChannelTargetRegistry, RegisterEntersThePathAndRemembersTheDocument) {
  oxDAEChannelTargetFloat target;
  Hold(target, "f");
  EXPECT_EQ(target.GetDocument(), nullptr);
  target.Register(document);
  EXPECT_EQ(target.GetDocument(), &document);
  EXPECT_EQ(document.ResolveAnimationTargetPath("e/f"), &target);
}

TEST_F(ChannelTargetRegistry, EmptyQualifierIsNeverRegistered) {
  oxDAEChannelTargetFloat target;
  Hold(target, "");
  target.Register(document);
  EXPECT_EQ(target.GetDocument(), nullptr);
  EXPECT_EQ(document.ResolveAnimationTargetPath("e"), nullptr);
}

TEST_F(ChannelTargetRegistry, ArrayRegistersItselfAndItsNamedMembers) {
  oxDAEChannelTargetFloatXYZ vector;
  Hold(vector, "t");
  oxDAEChannelTargetMatrix matrix;
  Hold(matrix, "m");
  vector.Register(document);
  matrix.Register(document);
  EXPECT_EQ(document.ResolveAnimationTargetPath("e/t"), &vector);
  EXPECT_EQ(document.ResolveAnimationTargetPath("e/t.X"), vector.GetChannelTarget("X"));
  EXPECT_EQ(document.ResolveAnimationTargetPath("e/t.Z"), vector.GetChannelTarget("Z"));
  EXPECT_EQ(document.ResolveAnimationTargetPath("e/m"), &matrix);
  // Matrix members have no names, so no path of their own.
  EXPECT_EQ(document.ResolveAnimationTargetPath("e/m."), nullptr);
  EXPECT_EQ(matrix.GetChannelTarget(0, 0)->GetDocument(), nullptr);
}

TEST_F(ChannelTargetRegistry, FirstTargetOfAPathKeepsIt) {
  oxDAEChannelTargetFloat first, second;
  Hold(first, "f");
  Hold(second, "f");
  first.Register(document);
  second.Register(document);
  EXPECT_EQ(document.ResolveAnimationTargetPath("e/f"), &first);
  // The second one leaving does not take the first one's entry.
  second.Unregister();
  EXPECT_EQ(document.ResolveAnimationTargetPath("e/f"), &first);
}

TEST_F(ChannelTargetRegistry, UnregisterRemovesTheArrayAndItsMembers) {
  oxDAEChannelTargetColor color;
  Hold(color, "c");
  color.Register(document);
  ASSERT_EQ(document.ResolveAnimationTargetPath("e/c.G"), color.GetChannelTarget("G"));
  color.Unregister();
  EXPECT_EQ(color.GetDocument(), nullptr);
  EXPECT_EQ(document.ResolveAnimationTargetPath("e/c"), nullptr);
  EXPECT_EQ(document.ResolveAnimationTargetPath("e/c.G"), nullptr);
  EXPECT_EQ(color.GetChannelTarget("G")->GetDocument(), nullptr);
}

TEST_F(ChannelTargetRegistry, IndexSelectsAFloatArrayMember) {
  oxDAEElement geometry;
  geometry.id = "geom";
  oxDAEChannelTargetFloatArray values;
  values.SetContainerParent(&geometry);
  values.SetQualifier("values");
  values.SetChannelCount(5);
  values.Register(document);
  EXPECT_EQ(document.ResolveAnimationTargetPath("geom/values(3)"), values.GetChannelTarget(0, 3));
  EXPECT_NE(values.GetChannelTarget(0, 3), nullptr);
  EXPECT_EQ(document.ResolveAnimationTargetPath("geom/values(x)"), nullptr);
}

TEST_F(ChannelTargetRegistry, IndexPastTheMembersResolvesToNull) {
  oxDAEElement geometry;
  geometry.id = "geom";
  oxDAEChannelTargetFloatArray values;
  values.SetContainerParent(&geometry);
  values.SetQualifier("values");
  values.SetChannelCount(3);
  values.Register(document);
  EXPECT_NE(document.ResolveAnimationTargetPath("geom/values(2)"), nullptr);
  EXPECT_EQ(document.ResolveAnimationTargetPath("geom/values(3)"), nullptr);
}

TEST_F(ChannelTargetRegistry, IndicesOnAMatrixResolveToNullUnlessTheirPrefixIsAFloatArray) {
  oxDAEElement holder;
  holder.id = "m";
  holder.sid = "m";
  oxDAEChannelTargetMatrix matrix;
  matrix.SetContainerParent(&holder);
  matrix.SetQualifier("m");
  matrix.Register(document);
  ASSERT_EQ(document.ResolveAnimationTargetPath("m"), &matrix);
  EXPECT_EQ(document.ResolveAnimationTargetPath("m(1)(2)"), nullptr);
  EXPECT_EQ(document.ResolveAnimationTargetPath("m(1)"), nullptr);
  // A float array registered as "m(1)" answers "m(1)(2)".
  oxDAEElement row;
  row.id = "m(1)";
  row.sid = "r";
  oxDAEChannelTargetFloatArray values;
  values.SetContainerParent(&row);
  values.SetQualifier("r");
  values.SetChannelCount(4);
  values.Register(document);
  EXPECT_EQ(document.ResolveAnimationTargetPath("m(1)(2)"), values.GetChannelTarget(0, 2));
}

TEST_F(ChannelTargetRegistry, IndexedPathRegisteredAsItIsResolvesExactly) {
  oxDAEElement holder;
  holder.id = "m";
  holder.sid = "m";
  oxDAEChannelTargetMatrix matrix;
  matrix.SetContainerParent(&holder);
  matrix.SetQualifier("m");
  matrix.Register(document);
  oxDAEElement cellHolder;
  cellHolder.id = "m(1)(2)";
  cellHolder.sid = "c";
  oxDAEChannelTargetFloat cell;
  cell.SetContainerParent(&cellHolder);
  cell.SetQualifier("c");
  cell.Register(document);
  EXPECT_EQ(document.ResolveAnimationTargetPath("m(1)(2)"), &cell);
}

// --- Arrays ------------------------------------------------------------------------

using ChannelTargetArray = TargetTest;

TEST_F(ChannelTargetArray, ChannelCountIsKeptAsEightBits) {
  oxDAEChannelTargetFloatArray values;
  values.SetChannelCount(300);
  EXPECT_EQ(values.GetRowCount(), 1);
  EXPECT_EQ(values.GetColumnCount(), 44);
  EXPECT_EQ(values.GetMemberCount(), 44u);
}

TEST_F(ChannelTargetArray, SetChannelCountReplacesTheMembers) {
  oxDAEChannelTargetFloatArray values;
  values.SetChannelCount(2);
  values.SetChannelCount(3);
  ASSERT_EQ(values.GetMemberCount(), 3u);
  for (signed char i = 0; i < 3; ++i) {
    const oxDAEChannelTarget* member = values.GetChannelTarget(0, i);
    ASSERT_NE(member, nullptr);
    EXPECT_EQ(member->GetTargetParent(), &values);
    EXPECT_TRUE(oxDAEChannelTargetFloat::DynamicCast(member));
    EXPECT_EQ(values.GetChannelIndex(member), i);
  }
}

TEST_F(ChannelTargetArray, MemberOutsideTheGridIsNull) {
  oxDAEChannelTargetLookat lookat;
  EXPECT_EQ(lookat.GetRowCount(), 3);
  EXPECT_EQ(lookat.GetColumnCount(), 3);
  EXPECT_NE(lookat.GetChannelTarget(2, 2), nullptr);
  EXPECT_EQ(lookat.GetChannelTarget(3, 0), nullptr);
  EXPECT_EQ(lookat.GetChannelTarget(0, 3), nullptr);
  EXPECT_EQ(lookat.GetChannelTarget(-1, 0), nullptr);
  EXPECT_EQ(lookat.GetChannelTarget(0, -1), nullptr);
}

TEST_F(ChannelTargetArray, MemberByName) {
  oxDAEChannelTargetColor color;
  EXPECT_EQ(color.GetChannelTarget("B"), color.GetChannelTarget(0, 2));
  EXPECT_EQ(color.GetChannelTarget("W"), nullptr);
  oxDAEChannelTargetRotate rotation;
  EXPECT_EQ(rotation.GetChannelTarget("ANGLE"), rotation.GetChannelTarget(0, 3));
}

TEST_F(ChannelTargetArray, IndexOfAStrangerIsMinusOne) {
  oxDAEChannelTargetFloatArray values;
  oxDAEChannelTargetFloat stranger;
  EXPECT_EQ(values.GetChannelIndex(&stranger), -1);
  values.SetChannelCount(2);
  EXPECT_EQ(values.GetChannelIndex(&stranger), -1);
  EXPECT_EQ(values.GetChannelIndex(nullptr), -1);
}

TEST_F(ChannelTargetArray, MatrixMembersHoldTheWrittenOrder) {
  oxDAEChannelTargetMatrix target;
  OxMath::oxMatrix44 matrix;
  matrix.m[12] = 5;  // the host's translation x
  matrix.m[1] = 2;
  target.SetValue(matrix);
  const auto* member = oxDAEChannelTargetFloat::DynamicCast(target.GetChannelTarget(0, 3));
  ASSERT_NE(member, nullptr);
  EXPECT_EQ(member->GetValue(), 5.0f);
  EXPECT_EQ(oxDAEChannelTargetFloat::DynamicCast(target.GetChannelTarget(1, 0))->GetValue(), 2.0f);
  EXPECT_EQ(target.GetValue(), matrix);
}

TEST_F(ChannelTargetArray, StoredValuesReadBack) {
  oxDAEChannelTargetRotate rotation;
  rotation.SetValue({0, 1, 0}, 90);
  EXPECT_EQ(rotation.GetAxis(), (OxMath::oxVec3{0, 1, 0}));
  EXPECT_EQ(rotation.GetAngle(), 90.0f);
  oxDAEChannelTargetColor color;
  const float rgba[4] = {0.1f, 0.2f, 0.3f, 0.4f};
  color.SetValue(rgba);
  float out[4] = {};
  color.GetValue(out);
  EXPECT_EQ(std::vector<float>(out, out + 4), std::vector<float>(rgba, rgba + 4));
  oxDAEChannelTargetFloatXYZ vector;
  const float xyz[3] = {1, 2, 3};
  vector.SetValue(xyz);
  EXPECT_EQ(vector.GetValue()[2], 3.0f);
  EXPECT_EQ(oxDAEChannelTargetFloat::DynamicCast(vector.GetChannelTarget("Y"))->GetValue(), 2.0f);
  oxDAEChannelTargetLookat lookat;
  const float nine[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  lookat.SetValue(nine);
  float back[9] = {};
  lookat.GetValue(back);
  EXPECT_EQ(back[8], 9.0f);
}

// --- Sampling ----------------------------------------------------------------------

class ChannelTargetSampling : public TargetTest {
 protected:
  // Registers `target` and binds the channel `channelId` to it.
  void Bind(const char* channelId, oxDAEChannelTarget& target) {
    target.Register(document);
    oxDAEChannel* channel = Find<oxDAEChannel>(std::string("#") + channelId);
    ASSERT_NE(channel, nullptr);
    channel->targetPath = target.GetPath();
    ASSERT_EQ(channel->UpdateDependencies(document, false), 0);
  }
  oxDAEAnimation* Animation(const char* id) { return Find<oxDAEAnimation>(std::string("#") + id); }
};

TEST_XML(ChannelTargetSampling, FloatWithoutChannelIsTheStoredValueAndLogs, kAnimations) {
  ASSERT_EQ(rc, 0);
  log.Clear();
  oxDAEChannelTargetFloat target;
  target.SetValue(3);
  EXPECT_EQ(target.GetValue(0.5f, Animation("a")), 3.0f);
  EXPECT_EQ(log.entries, (std::vector<LogEntry>{Error("value not targeted")}));
}

TEST_XML(ChannelTargetSampling, FloatIsSampledByItsAnimation, kAnimations) {
  oxDAEChannelTargetFloat target;
  Hold(target, "f");
  target.SetValue(3);
  Bind("c1", target);
  log.Clear();
  EXPECT_TRUE(target.IsTargeted());
  EXPECT_FLOAT_EQ(target.GetValue(0.5f, Animation("a")), 5.0f);
  EXPECT_EQ(target.GetValue(), 3.0f);
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(ChannelTargetSampling, FloatUnderAnotherAnimationIsTheStoredValueSilently, kAnimations) {
  oxDAEChannelTargetFloat target;
  Hold(target, "f");
  target.SetValue(3);
  Bind("c1", target);
  log.Clear();
  EXPECT_EQ(target.GetValue(0.5f, Animation("other")), 3.0f);
  EXPECT_EQ(target.GetValue(0.5f, nullptr), 3.0f);
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(ChannelTargetSampling, FloatSamplingFailureIsTheStoredValueAndLogs, kAnimations) {
  oxDAEChannelTargetFloat target;
  Hold(target, "f");
  target.SetValue(3);
  Bind("cx", target);
  log.Clear();
  EXPECT_EQ(target.GetValue(1.0f, Animation("a")), 4.0f);
  EXPECT_EQ(target.GetValue(0.5f, Animation("a")), 3.0f);
  EXPECT_EQ(log.entries, (std::vector<LogEntry>{Error("sampling time not found"),
                                                Error("cannot retrieve sampled value")}));
}

TEST_XML(ChannelTargetSampling, ChannelOfADirectChildAnimationBelongsToTheParent, kAnimations) {
  oxDAEChannelTargetFloat viaChild, viaGrandchild;
  Hold(viaChild, "child");
  Hold(viaGrandchild, "grand");
  Bind("cc", viaChild);
  Bind("cg", viaGrandchild);
  EXPECT_TRUE(viaChild.IsTargeted(Animation("a"), true));
  EXPECT_TRUE(viaChild.IsTargeted(Animation("child"), false));
  EXPECT_FALSE(viaChild.IsTargeted(Animation("grand"), true));
  EXPECT_NE(viaChild.GetChannel(Animation("a")), nullptr);
  // Deeper nesting does not count.
  EXPECT_FALSE(viaGrandchild.IsTargeted(Animation("a"), true));
  EXPECT_TRUE(viaGrandchild.IsTargeted(Animation("child"), true));
  EXPECT_EQ(viaGrandchild.GetChannel(Animation("a")), nullptr);
}

TEST_XML(ChannelTargetSampling, NullAnimationTargetsNothing, kAnimations) {
  oxDAEChannelTargetFloat target;
  Hold(target, "f");
  Bind("c1", target);
  EXPECT_TRUE(target.IsTargeted());
  EXPECT_FALSE(target.IsTargeted(nullptr, true));
  EXPECT_EQ(target.GetChannel(nullptr), nullptr);
}

TEST_XML(ChannelTargetSampling, FirstChannelOfTheAnimationIsUsed, kAnimations) {
  oxDAEChannelTargetFloat target;
  Hold(target, "f");
  Bind("co", target);
  Bind("c1", target);
  Bind("c1b", target);
  ASSERT_EQ(target.GetChannels().size(), 3u);
  EXPECT_EQ(target.GetChannel(Animation("a")), Find<oxDAEChannel>("#c1"));
  EXPECT_EQ(target.GetChannel(Animation("other")), Find<oxDAEChannel>("#co"));
}

TEST_XML(ChannelTargetSampling, VectorBoundAsAWholeIsSampled, kAnimations) {
  oxDAEChannelTargetFloatXYZ target;
  Hold(target, "t");
  const float stored[3] = {1, 2, 3};
  target.SetValue(stored);
  Bind("c3", target);
  log.Clear();
  float out[3] = {};
  target.GetValue(out, 0.5f, Animation("a"));
  EXPECT_EQ(std::vector<float>(out, out + 3), (std::vector<float>{5, 10, 15}));
  target.GetValue(out, 0.5f, Animation("other"));
  EXPECT_EQ(std::vector<float>(out, out + 3), (std::vector<float>{1, 2, 3}));
  EXPECT_TRUE(target.IsTargetedEx(Animation("a")));
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(ChannelTargetSampling, VectorMembersAreSampledOneByOne, kAnimations) {
  oxDAEChannelTargetFloatXYZ target;
  Hold(target, "t");
  const float stored[3] = {1, 2, 3};
  target.SetValue(stored);
  target.Register(document);
  Bind("c1", *target.GetChannelTarget("Y"));
  log.Clear();
  EXPECT_FALSE(target.IsTargeted());
  EXPECT_TRUE(target.IsTargetedEx());
  EXPECT_TRUE(target.IsTargetedEx(Animation("a")));
  EXPECT_FALSE(target.IsTargetedEx(Animation("other")));
  float out[3] = {};
  target.GetValue(out, 0.5f, Animation("a"));
  EXPECT_EQ(std::vector<float>(out, out + 3), (std::vector<float>{1, 5, 3}));
  EXPECT_EQ(log.entries,
            (std::vector<LogEntry>{Error("value not targeted"), Error("value not targeted")}));
}

TEST_XML(ChannelTargetSampling, UntargetedVectorIsTheStoredValueSilently, kAnimations) {
  oxDAEChannelTargetFloatXYZ target;
  const float stored[3] = {1, 2, 3};
  target.SetValue(stored);
  log.Clear();
  float out[3] = {};
  target.GetValue(out, 0.5f, Animation("a"));
  EXPECT_EQ(std::vector<float>(out, out + 3), (std::vector<float>{1, 2, 3}));
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(ChannelTargetSampling, RotationBoundAsAWholeGivesTheFourthFloat, kAnimations) {
  oxDAEChannelTargetRotate target;
  Hold(target, "r");
  target.SetValue({0, 0, 1}, 90);
  Bind("c4", target);
  log.Clear();
  EXPECT_FLOAT_EQ(target.GetAngle(0.5f, Animation("a")), 20.0f);
  EXPECT_EQ(target.GetAxis(0.5f, Animation("a")), (OxMath::oxVec3{5, 10, 15}));
  EXPECT_EQ(target.GetAngle(), 90.0f);
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(ChannelTargetSampling, RotationWithoutAChannelOfTheAnimationLogsInvalidChannel,
         kAnimations) {
  oxDAEChannelTargetRotate target;
  Hold(target, "r");
  target.SetValue({0, 0, 1}, 90);
  Bind("c4", target);
  log.Clear();
  EXPECT_EQ(target.GetAngle(0.5f, Animation("other")), 90.0f);
  EXPECT_EQ(target.GetAxis(0.5f, Animation("other")), (OxMath::oxVec3{0, 0, 1}));
  EXPECT_EQ(log.entries, (std::vector<LogEntry>{Error("invalid channel")}));
}

TEST_XML(ChannelTargetSampling, RotationSamplingFailureLogsCannotGetSampledValue, kAnimations) {
  oxDAEChannelTargetRotate target;
  Hold(target, "r");
  target.SetValue({0, 0, 1}, 90);
  Bind("cx", target);
  log.Clear();
  EXPECT_EQ(target.GetAngle(0.5f, Animation("a")), 90.0f);
  EXPECT_EQ(log.entries, (std::vector<LogEntry>{Error("sampling time not found"),
                                                Error("cannot get sampled value")}));
}

TEST_XML(ChannelTargetSampling, UntargetedRotationLogsNotATargetedValue, kAnimations) {
  oxDAEChannelTargetRotate target;
  target.SetValue({0, 0, 1}, 90);
  log.Clear();
  EXPECT_EQ(target.GetAngle(0.5f, Animation("a")), 90.0f);
  EXPECT_EQ(target.GetAxis(0.5f, Animation("a")), (OxMath::oxVec3{0, 0, 1}));
  EXPECT_EQ(log.entries, (std::vector<LogEntry>{Error("not a targeted value")}));
}

TEST_XML(ChannelTargetSampling, RotationMembersAreSampledOneByOne, kAnimations) {
  oxDAEChannelTargetRotate target;
  Hold(target, "r");
  target.SetValue({0, 0, 1}, 90);
  target.Register(document);
  Bind("c1", *target.GetChannelTarget("ANGLE"));
  Bind("c1b", *target.GetChannelTarget("X"));
  log.Clear();
  EXPECT_FLOAT_EQ(target.GetAngle(0.5f, Animation("a")), 5.0f);
  EXPECT_EQ(target.GetAxis(0.5f, Animation("a")), (OxMath::oxVec3{5, 0, 1}));
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(ChannelTargetSampling, ColorBoundAsAWholeIsSampled, kAnimations) {
  oxDAEChannelTargetColor target;
  Hold(target, "color");
  Bind("c4", target);
  float out[4] = {};
  target.GetValue(out, 1.0f, Animation("a"));
  EXPECT_EQ(std::vector<float>(out, out + 4), (std::vector<float>{10, 20, 30, 40}));
}

TEST_XML(ChannelTargetSampling, ColorMemberIsSampledAndTheOthersLog, kAnimations) {
  oxDAEChannelTargetColor target;
  Hold(target, "color");
  const float stored[4] = {0.5f, 0.5f, 0.5f, 1};
  target.SetValue(stored);
  target.Register(document);
  Bind("c1", *target.GetChannelTarget("G"));
  log.Clear();
  float out[4] = {};
  target.GetValue(out, 1.0f, Animation("a"));
  EXPECT_EQ(std::vector<float>(out, out + 4), (std::vector<float>{0.5f, 10, 0.5f, 1}));
  EXPECT_EQ(log.Count(OxKernel::kLogError, "value not targeted"), 3u);
}

TEST_XML(ChannelTargetSampling, UntargetedColorLogsNotATargetedValue, kAnimations) {
  oxDAEChannelTargetColor target;
  const float stored[4] = {0.1f, 0.2f, 0.3f, 0.4f};
  target.SetValue(stored);
  log.Clear();
  float out[4] = {};
  target.GetValue(out, 1.0f, Animation("a"));
  EXPECT_EQ(std::vector<float>(out, out + 4), std::vector<float>(stored, stored + 4));
  EXPECT_EQ(log.entries, (std::vector<LogEntry>{Error("not a targeted value")}));
}

TEST_XML(ChannelTargetSampling, ColorSamplingFailureKeepsTheStoredValue, kAnimations) {
  oxDAEChannelTargetColor target;
  Hold(target, "color");
  const float stored[4] = {0.1f, 0.2f, 0.3f, 0.4f};
  target.SetValue(stored);
  Bind("cx", target);
  log.Clear();
  float out[4] = {};
  target.GetValue(out, 0.5f, Animation("a"));
  EXPECT_EQ(std::vector<float>(out, out + 4), std::vector<float>(stored, stored + 4));
  EXPECT_EQ(log.entries, (std::vector<LogEntry>{Error("sampling time not found"),
                                                Error("cannot get sampled value")}));
}

TEST_XML(ChannelTargetSampling, LookatBoundAsAWholeIsSampledByExactKey, kAnimations) {
  oxDAEChannelTargetLookat target;
  Hold(target, "look");
  Bind("c9", target);
  ASSERT_EQ(Find<oxDAESampler>("#s9")->controller.Get(), nullptr);
  log.Clear();
  float out[9] = {};
  target.GetValue(out, 1.0f, Animation("a"));
  EXPECT_EQ(std::vector<float>(out, out + 9), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(log.Count(), 0u);
}

TEST_XML(ChannelTargetSampling, MatrixBoundAsAWholeIsTransposedIntoTheHostConvention, kAnimations) {
  oxDAEChannelTargetMatrix target;
  Hold(target, "m");
  Bind("c16", target);
  const OxMath::oxMatrix44 sampled = target.GetValue(1.0f, Animation("a"));
  // The written translation column (7, 8, 9) lands in the host's last row.
  EXPECT_EQ(sampled.m[12], 7.0f);
  EXPECT_EQ(sampled.m[13], 8.0f);
  EXPECT_EQ(sampled.m[14], 9.0f);
  EXPECT_EQ(sampled.m[3], 0.0f);
  EXPECT_EQ(sampled.m[0], 1.0f);
  EXPECT_EQ(target.GetValue(), OxMath::oxMatrix44::kIdentity);
  EXPECT_EQ(target.GetValue(1.0f, Animation("other")), OxMath::oxMatrix44::kIdentity);
}

TEST_XML(ChannelTargetSampling, FloatArrayMemberIsWrittenByIndex, kAnimations) {
  oxDAEChannelTargetFloatArray values;
  Hold(values, "vals");
  values.SetChannelCount(3);
  values.Register(document);
  oxDAEChannel* channel = Find<oxDAEChannel>("#c1");
  channel->targetPath = "e/vals(1)";
  ASSERT_EQ(channel->UpdateDependencies(document, false), 0);
  EXPECT_EQ(channel->target, values.GetChannelTarget(0, 1));
  channel->targetPath = "changed";
  EXPECT_EQ(channel->GetWrittenTargetPath(), "e/vals(1)");
  const std::string saved = SaveText();
  EXPECT_NE(saved.find(R"x(<channel id="c1" source="#s1" target="e/vals(1)"/>)x"),
            std::string::npos)
      << saved;
  EXPECT_NE(saved.find(R"(<channel id="c3" source="#s3"/>)"), std::string::npos) << saved;
}
