// Nodes and their transforms: reading, matrices, local and world matrices,
// animated matrices, writing back, and deep hierarchies.
#include <algorithm>
#include <cmath>
#include <string>

#include <oxKernel/oxConstants.h>

#include "animation_markup.h"
#include "oxTestSupport.h"

using namespace OxDAEReader;
using OxMath::oxMatrix44;
using oxtest::Collada;
using oxtest::ElementText;
using oxtest::Error;
using oxtest::NestedNodes;
using oxtest::Warning;

namespace {

using Hierarchy = oxDAEHierarchyElement;

using oxtest::kNoLog;

// A document whose <library_nodes id="lib"> holds `nodes`.
std::string Nodes(std::string_view nodes) {
  return Collada(R"(<library_nodes id="lib">)" + std::string(nodes) + "</library_nodes>");
}

oxMatrix44 Matrix(std::initializer_list<float> values) {
  oxMatrix44 m;
  std::copy(values.begin(), values.end(), m.m);
  return m;
}

// The image of the point (x, y, z) as a row vector: p * m.
OxMath::oxVec3 Transform(const oxMatrix44& m, float x, float y, float z) {
  return {x * m.m[0] + y * m.m[4] + z * m.m[8] + m.m[12],
          x * m.m[1] + y * m.m[5] + z * m.m[9] + m.m[13],
          x * m.m[2] + y * m.m[6] + z * m.m[10] + m.m[14]};
}

void ExpectNear(const OxMath::oxVec3& actual, const OxMath::oxVec3& expected) {
  EXPECT_NEAR(actual.x, expected.x, 1e-6f);
  EXPECT_NEAR(actual.y, expected.y, 1e-6f);
  EXPECT_NEAR(actual.z, expected.z, 1e-6f);
}

void ExpectNear(const oxMatrix44& actual, const oxMatrix44& expected) {
  for (int i = 0; i < 16; ++i)
    EXPECT_NEAR(actual.m[i], expected.m[i], 1e-6f) << "element " << i;
}

// The rotation the host builds for `degrees` about the unit z axis.
oxMatrix44 RotationAboutZ(float degrees) {
  const float half = degrees * OxKernel::kPiOn180 * 0.5f;
  OxMath::oxTransformMatrix44 m;
  m.Create({0.0f, 0.0f, std::sin(half), std::cos(half)}, {0.0f, 0.0f, 0.0f}, {1.0f, 1.0f, 1.0f});
  return m;
}

size_t Occurrences(const std::string& text, std::string_view what) {
  size_t count = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
    ++count;
  return count;
}

}  // namespace

class NodeTest : public oxtest::DocumentTest {
 protected:
  oxDAENode* Node(const std::string& id) const { return Find<oxDAENode>("#" + id); }
  // The static matrix of transform `index` of node `id`.
  oxMatrix44 TransformMatrix(const std::string& id, size_t index = 0) const {
    return Node(id)->transforms.at(index)->GetTransformMatrix();
  }
};

// --- Transform matrices ----------------------------------------------------------

using TransformMatrices = NodeTest;

TEST_XML(TransformMatrices, RotateAboutZIsTheHostRotationOfTheUnitAxis,
         Nodes(R"(<node id="n"><rotate>0 0 1 90</rotate></node>)")) {
  ASSERT_EQ(rc, 0);
  const oxMatrix44 m = TransformMatrix("n");
  EXPECT_EQ(m, RotationAboutZ(90.0f));
  ExpectNear(m, Matrix({0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TransformMatrices, RotateAxisLengthDoesNotMatter,
         Nodes(R"(<node id="a"><rotate>0 0 1 90</rotate></node>
                  <node id="b"><rotate>0 0 2 90</rotate></node>)")) {
  EXPECT_EQ(TransformMatrix("b"), TransformMatrix("a"));
  const auto* rotate = Hierarchy::RotateElement::DynamicCast(Node("b")->transforms.at(0).get());
  ASSERT_NE(rotate, nullptr);
  EXPECT_EQ(rotate->GetRotateAxis(), (OxMath::oxVec3{0.0f, 0.0f, 2.0f}));
  EXPECT_EQ(rotate->GetRotateAngle(), 90.0f);
}

TEST_XML(TransformMatrices, TranslateFillsElements12To14,
         Nodes(R"(<node id="n"><translate>1 2 3</translate></node>)")) {
  EXPECT_EQ(TransformMatrix("n"), Matrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}));
}

TEST_XML(TransformMatrices, ScaleIsDiagonal, Nodes(R"(<node id="n"><scale>2 3 4</scale></node>)")) {
  EXPECT_EQ(TransformMatrix("n"), Matrix({2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}));
}

TEST_XML(TransformMatrices, MatrixTextIsStoredTransposed,
         Nodes(R"(<node id="n"><matrix>1 0 0 5  0 1 0 6  0 0 1 7  0 0 0 1</matrix></node>)")) {
  EXPECT_EQ(TransformMatrix("n"), Matrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1}));
}

TEST_XML(TransformMatrices, MatrixIsWrittenBackInItsTextOrder,
         Nodes(R"(<node id="n"><matrix sid="m">1 0 0 5 0 1 0 6 0 0 1 7 0 0 0 1</matrix></node>)")) {
  EXPECT_EQ(TransformMatrix("n").m[12], 5.0f);
  EXPECT_EQ(ElementText(SaveText(), "library_nodes"), R"(<library_nodes id="lib">
    <node id="n" type="NODE">
      <matrix sid="m">1 0 0 5 0 1 0 6 0 0 1 7 0 0 0 1</matrix>
    </node>
  </library_nodes>)");
}

TEST_XML(TransformMatrices, SetTransformMatrixStoresTheMatrixAsGiven,
         Nodes(R"(<node id="n"><matrix/></node>)")) {
  auto* matrix = Hierarchy::MatrixElement::DynamicCast(Node("n")->transforms.at(0).get());
  ASSERT_NE(matrix, nullptr);
  const oxMatrix44 m = Matrix({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
  matrix->SetTransformMatrix(m);
  EXPECT_EQ(matrix->GetTransformMatrix(), m);
}

TEST_XML(TransformMatrices, LookAtRowsAreSideUpAndDirection,
         Nodes(R"(<node id="n"><lookat>0 0 0  0 0 -1  0 1 0</lookat></node>)")) {
  EXPECT_EQ(TransformMatrix("n"), Matrix({-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}));
}

TEST_XML(TransformMatrices, LookAtKeepsTheEyeInTheLastRowAndUpNotOrthogonalised,
         Nodes(R"(<node id="n"><lookat>1 2 3  1 2 7  0 2 2</lookat></node>)")) {
  // d = (0, 0, 1); u = (0, 1, 1) / sqrt 2; r = u x d = (1 / sqrt 2, 0, 0),
  // normalised to (1, 0, 0).
  const float h = 1.0f / std::sqrt(2.0f);
  ExpectNear(TransformMatrix("n"), Matrix({1, 0, 0, 0, 0, h, h, 0, 0, 0, 1, 0, 1, 2, 3, 1}));
}

TEST_XML(TransformMatrices, LookAtWithTheEyeOnTheInterestIsFinite,
         Nodes(R"(<node id="n"><lookat>1 1 1  1 1 1  0 1 0</lookat></node>)")) {
  // No view direction: d and r stay zero instead of being divided by 0.
  EXPECT_EQ(TransformMatrix("n"), Matrix({0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TransformMatrices, SkewIsTheIdentityIsNotAnimatedAndIsNotWritten,
         Nodes(R"(<node id="n"><skew sid="k">45 0 1 0 1 0 0</skew><translate>1 2 3</translate>
                  </node>)")) {
  const oxDAENode* node = Node("n");
  ASSERT_EQ(node->transforms.size(), 2u);
  const auto* skew = Hierarchy::SkewElement::DynamicCast(node->transforms[0].get());
  ASSERT_NE(skew, nullptr);
  EXPECT_EQ(skew->GetTransformMatrix(), oxMatrix44::kIdentity);
  EXPECT_EQ(skew->GetTransformMatrix(1.0f, nullptr), oxMatrix44::kIdentity);
  EXPECT_FALSE(skew->IsAnimated(nullptr));
  EXPECT_EQ(skew->GetChannelTarget(), nullptr);
  // Nothing of it is read, not even its sid.
  EXPECT_TRUE(skew->sid.empty());
  EXPECT_EQ(document.ResolvePath("n/k"), nullptr);
  EXPECT_EQ(node->ComputeLocalMatrix(), TransformMatrix("n", 1));
  EXPECT_EQ(ElementText(SaveText(), "library_nodes"), R"(<library_nodes id="lib">
    <node id="n" type="NODE">
      <translate>1 2 3</translate>
    </node>
  </library_nodes>)");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TransformMatrices, EmptyTransformsAreTheIdentity,
         Nodes(R"(<node id="n"><rotate/><scale/><translate/><lookat/><matrix/></node>)")) {
  const oxDAENode* node = Node("n");
  ASSERT_EQ(node->transforms.size(), 5u);
  for (const auto& transform : node->transforms)
    EXPECT_EQ(transform->GetTransformMatrix(), oxMatrix44::kIdentity) << transform->GetXMLTag();
  EXPECT_EQ(log.entries, kNoLog);
}

// --- Bad values ------------------------------------------------------------------

using TransformBadValues = NodeTest;

TEST_XML(TransformBadValues, MatrixWithThreeNumbersKeepsTheIdentityForTheRest,
         Nodes(R"(<node id="n"><matrix>1 2 3</matrix></node>)")) {
  ASSERT_EQ(rc, 0);
  // The text's first row is 1 2 3 1 (the identity's 1 kept), stored as the
  // first column.
  EXPECT_EQ(TransformMatrix("n"), Matrix({1, 0, 0, 0, 2, 1, 0, 0, 3, 0, 1, 0, 0, 0, 0, 1}));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TransformBadValues, RotateWithAZeroAxisHasNonFiniteRotationElements,
         Nodes(R"(<node id="n"><rotate>0 0 0 90</rotate></node>)")) {
  ASSERT_EQ(rc, 0);
  const oxMatrix44 m = TransformMatrix("n");
  for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10})
    EXPECT_TRUE(std::isnan(m.m[i])) << "element " << i << " is " << m.m[i];
  for (int i : {3, 7, 11, 12, 13, 14})
    EXPECT_EQ(m.m[i], 0.0f) << "element " << i;
  EXPECT_EQ(m.m[15], 1.0f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(TransformBadValues, TranslateWithAWordKeepsTheNumbersBeforeIt,
         Nodes(R"(<node id="n"><translate>4 x 6</translate></node>)")) {
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(TransformMatrix("n"), Matrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 4, 0, 0, 1}));
  EXPECT_EQ(log.entries, (std::vector{Warning("invalid value 'x' in <translate>")}));
}

TEST_XML(TransformBadValues, ScaleWithOneNumberKeepsTheOtherFactorsAtOne,
         Nodes(R"(<node id="n"><scale>5</scale></node>)")) {
  EXPECT_EQ(TransformMatrix("n"), Matrix({5, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
  EXPECT_EQ(log.entries, kNoLog);
}

// --- Local and world matrices ----------------------------------------------------

using LocalMatrix = NodeTest;

TEST_XML(LocalMatrix, TranslateThenRotateComposeInDocumentOrder,
         Nodes(R"(<node id="n"><translate>1 0 0</translate><rotate>0 0 1 90</rotate></node>)")) {
  const oxDAENode* node = Node("n");
  oxMatrix44 expected = oxMatrix44::kIdentity;
  expected.MultiplyAB(expected, TransformMatrix("n", 0));
  expected.MultiplyAB(expected, TransformMatrix("n", 1));
  EXPECT_EQ(node->ComputeLocalMatrix(), expected);
  // The rotation acts first, then the translation.
  ExpectNear(Transform(node->ComputeLocalMatrix(), 1, 0, 0), {1, 1, 0});
}

TEST_XML(LocalMatrix, ANodeWithoutTransformsIsTheIdentity, Nodes(R"(<node id="n"/>)")) {
  EXPECT_EQ(Node("n")->ComputeLocalMatrix(), oxMatrix44::kIdentity);
  EXPECT_EQ(Node("n")->ComputeLocalMatrix(2.0f, nullptr), oxMatrix44::kIdentity);
}

TEST_XML(LocalMatrix, ChildNodesAndInstancesDoNotContribute,
         Nodes(R"(<node id="n"><scale>2 2 2</scale><instance_light url="#l"/>
                  <node id="c"><translate>5 5 5</translate></node></node>)")) {
  EXPECT_EQ(Node("n")->ComputeLocalMatrix(),
            Matrix({2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1}));
}

TEST_XML(LocalMatrix, WorldMatricesComposeThroughThreeLevels,
         Nodes(R"(<node id="a"><translate>10 0 0</translate>
                    <node id="b"><rotate>0 0 1 90</rotate>
                      <node id="c"><scale>2 2 2</scale><translate>1 0 0</translate></node>
                    </node>
                  </node>)")) {
  oxMatrix44 world = Node("a")->ComputeLocalMatrix();
  for (const char* id : {"b", "c"})
    world.MultiplyAB(world, Node(id)->ComputeLocalMatrix());
  // (0, 0, 0) moves by 1 along x, is scaled to (2, 0, 0), rotated to
  // (0, 2, 0) and moved to (10, 2, 0).
  ExpectNear(Transform(world, 0, 0, 0), {10, 2, 0});
  ExpectNear(Transform(world, 0, 1, 0), {8, 2, 0});
}

// --- Animated matrices -----------------------------------------------------------

namespace {

// An animation "anim" whose sampler "s" goes linearly from the first to the
// second half of `keys` (`stride` floats each) between times 0 and 1, bound
// to `target`; a second animation "other" that drives nothing; and `nodes`
// in <library_nodes id="lib">.
std::string Animated(std::string_view target, unsigned int stride, std::string_view keys,
                     std::string_view nodes) {
  std::string xml = R"(<library_animations><animation id="anim">)";
  xml += oxtest::FloatSource("times", "0 1", 2, 1) + oxtest::InterpolationSource(2);
  xml += oxtest::FloatSource("values", keys, 2, stride);
  xml += oxtest::Sampler("s", "times", "values");
  xml += R"(<channel source="#s" target=")" + std::string(target) + R"("/>)";
  xml += R"(</animation><animation id="other"/></library_animations>)";
  return Collada(xml + R"(<library_nodes id="lib">)" + std::string(nodes) + "</library_nodes>");
}

}  // namespace

class AnimatedMatrix : public NodeTest {
 protected:
  const oxDAEAnimation* Animation(const std::string& id) const {
    return Find<oxDAEAnimation>("#" + id);
  }
};

TEST_XML(AnimatedMatrix, AnimatedTranslateComponentIsSampled,
         Animated("n/tr.X", 1, "0 10",
                  R"(<node id="n"><translate sid="tr">1 2 3</translate>
                       <rotate sid="r">0 0 1 0</rotate></node>)")) {
  ASSERT_EQ(rc, 0);
  const oxDAENode* node = Node("n");
  const oxDAEAnimation* anim = Animation("anim");
  ASSERT_NE(anim, nullptr);
  EXPECT_TRUE(node->transforms[0]->IsAnimated(anim));
  EXPECT_FALSE(node->transforms[1]->IsAnimated(anim));
  EXPECT_EQ(log.entries, kNoLog);
  EXPECT_EQ(node->ComputeLocalMatrix(0.5f, anim),
            Matrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 2, 3, 1}));
  // Y and Z are nobody's targets: they keep their stored values, each with
  // the target's complaint.
  EXPECT_EQ(log.entries, (std::vector{Error("value not targeted"), Error("value not targeted")}));
}

TEST_XML(AnimatedMatrix, WithoutTheDrivingAnimationTheStaticMatrixIsUsedSilently,
         Animated("n/tr.X", 1, "0 10", R"(<node id="n"><translate sid="tr">1 2 3</translate>
                                              </node>)")) {
  const oxDAENode* node = Node("n");
  const oxMatrix44 still = Matrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1});
  EXPECT_FALSE(node->transforms[0]->IsAnimated(nullptr));
  EXPECT_FALSE(node->transforms[0]->IsAnimated(Animation("other")));
  EXPECT_EQ(node->ComputeLocalMatrix(0.5f, nullptr), still);
  EXPECT_EQ(node->ComputeLocalMatrix(0.5f, Animation("other")), still);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(AnimatedMatrix, AnimatedRotateAngleIsSampled,
         Animated("n/r.ANGLE", 1, "0 180", R"(<node id="n"><rotate sid="r">0 0 1 0</rotate>
                                                 </node>)")) {
  const oxMatrix44 m = Node("n")->ComputeLocalMatrix(0.5f, Animation("anim"));
  EXPECT_EQ(m, RotationAboutZ(90.0f));
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_XML(AnimatedMatrix, AnimatedRotateTakesTheSampledAxisWithoutNormalisingItFirst,
         Animated("n/r", 4, "0 0 0 90  0 0 0 90",
                  R"(<node id="n"><rotate sid="r">0 0 0 90</rotate></node>)")) {
  // The static form divides the zero axis by its length; the animated form
  // only divides by a length above 0, so a zero axis is no rotation.
  const oxDAENode* node = Node("n");
  EXPECT_TRUE(std::isnan(node->ComputeLocalMatrix().m[0]));
  EXPECT_EQ(node->ComputeLocalMatrix(0.5f, Animation("anim")), oxMatrix44::kIdentity);
}

TEST_XML(AnimatedMatrix, AnimatedScaleVectorIsSampled,
         Animated("n/s", 3, "1 1 1  3 5 7", R"(<node id="n"><scale sid="s">1 1 1</scale>
                                                 </node>)")) {
  EXPECT_EQ(Node("n")->ComputeLocalMatrix(0.5f, Animation("anim")),
            Matrix({2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}));
}

TEST_XML(AnimatedMatrix, AnimatedMatrixIsSampledInTextOrder,
         Animated("n/m", 16, "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1  1 0 0 8 0 1 0 0 0 0 1 0 0 0 0 1",
                  R"(<node id="n"><matrix sid="m">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>
                     </node>)")) {
  EXPECT_EQ(Node("n")->ComputeLocalMatrix(0.5f, Animation("anim")),
            Matrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 4, 0, 0, 1}));
}

TEST_XML(AnimatedMatrix, AnimatedLookAtTakesTheKeyAtThatTime,
         Animated("n/l", 9, "0 0 0 0 0 -1 0 1 0  0 0 0 0 0 1 0 1 0",
                  R"(<node id="n"><lookat sid="l">0 0 0  0 0 -1  0 1 0</lookat></node>)")) {
  const oxDAENode* node = Node("n");
  EXPECT_TRUE(node->transforms[0]->IsAnimated(Animation("anim")));
  EXPECT_EQ(node->ComputeLocalMatrix(), Matrix({-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}));
  // Nine floats make no keyframe controller: the sampler answers key times
  // only, here the second key, which looks along +z.
  EXPECT_EQ(node->ComputeLocalMatrix(1.0f, Animation("anim")), oxMatrix44::kIdentity);
  EXPECT_EQ(log.entries, kNoLog);
}

// --- Reading nodes ---------------------------------------------------------------

using NodeReading = NodeTest;

TEST_XML(NodeReading, IdentityTypeAndSidAreRead,
         Nodes(R"(<node id="n" name="Node" sid="bone" type="JOINT"/>)")) {
  const oxDAENode* node = Node("n");
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->name, "Node");
  EXPECT_EQ(node->sid, "bone");
  EXPECT_EQ(node->type, EToken::JOINT);
  EXPECT_EQ(document.ResolvePath("n"), node);
}

TEST_XML(NodeReading, TypeDefaultsToNode, Nodes(R"(<node id="n"/>)")) {
  EXPECT_EQ(Node("n")->type, EToken::NODE);
}

TEST_XML(NodeReading, UnknownTypeWordKeepsNodeWithAWarning,
         Nodes(R"(<node id="n" type="BONE"/>)")) {
  EXPECT_EQ(Node("n")->type, EToken::NODE);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown node type 'BONE'")}));
}

TEST_XML(NodeReading, NameBecomesTheIdWhenTheIdIsMissing, Nodes(R"(<node name="named"/>)")) {
  const oxDAENode* node = Node("named");
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->id, "named");
}

TEST_XML(NodeReading, ChildNodesKeepDocumentOrderAndTheirParent,
         Nodes(R"(<node id="p"><node id="c1"/><node id="c2"><node id="g"/></node></node>)")) {
  const oxDAENode* parent = Node("p");
  ASSERT_EQ(parent->nodes.size(), 2u);
  EXPECT_EQ(parent->nodes[0], Node("c1"));
  EXPECT_EQ(parent->nodes[1], Node("c2"));
  EXPECT_EQ(Node("c1")->parent, parent);
  EXPECT_EQ(Node("g")->parent, Node("c2"));
}

TEST_XML(NodeReading, HasChildLooksAtDescendantsOnlyWhenRecursive,
         Nodes(R"(<node id="p"><node id="c1"/><node id="c2"><node id="g"/></node></node>
                  <node id="other"/>)")) {
  const oxDAENode* parent = Node("p");
  EXPECT_TRUE(parent->HasChild(Node("c2"), false));
  EXPECT_FALSE(parent->HasChild(Node("g"), false));
  EXPECT_TRUE(parent->HasChild(Node("g"), true));
  EXPECT_FALSE(parent->HasChild(Node("other"), true));
  EXPECT_FALSE(parent->HasChild(parent, true));
  EXPECT_FALSE(parent->HasChild(nullptr, true));
}

TEST_XML(NodeReading, TransformsKeepDocumentOrderWithTheNodeAsParent,
         Nodes(R"(<node id="n"><matrix/><lookat/><translate/><skew/><scale/><rotate/></node>)")) {
  const oxDAENode* node = Node("n");
  ASSERT_EQ(node->transforms.size(), 6u);
  const std::string_view tags[] = {"matrix", "lookat", "translate", "skew", "scale", "rotate"};
  for (size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(node->transforms[i]->GetXMLTag(), tags[i]);
    EXPECT_EQ(node->transforms[i]->parent, node);
  }
  EXPECT_NE(Hierarchy::LookAtElement::DynamicCast(node->transforms[1].get()), nullptr);
  EXPECT_NE(Hierarchy::TranslateElement::DynamicCast(node->transforms[2].get()), nullptr);
  EXPECT_NE(Hierarchy::ScaleElement::DynamicCast(node->transforms[4].get()), nullptr);
  // Transforms belong to the node, not to the document's element list.
  for (const auto& e : document.GetElements())
    EXPECT_EQ(Hierarchy::TransformElement::DynamicCast(e.get()), nullptr);
}

TEST_XML(NodeReading, InstancesOfEveryKindAreReadAndQueued,
         Nodes(R"(<node id="n"><instance_camera url="#cam"/><instance_controller url="#ctl"/>
                  <instance_geometry url="#geo"/><instance_light url="#lgt"/>
                  <instance_node url="#other"/></node><node id="other"/>)")) {
  const oxDAENode* node = Node("n");
  ASSERT_EQ(node->instances.size(), 5u);
  const EToken kinds[] = {EToken::CAMERA, EToken::CONTROLLER, EToken::GEOMETRY, EToken::LIGHT,
                          EToken::NODE};
  const char* urls[] = {"#cam", "#ctl", "#geo", "#lgt", "#other"};
  const auto& queued = document.GetElementsToUpdate();
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(node->instances[i]->kind, kinds[i]);
    EXPECT_EQ(node->instances[i]->url, urls[i]);
    EXPECT_EQ(node->instances[i]->parent, node);
    EXPECT_NE(std::find(queued.begin(), queued.end(), node->instances[i]), queued.end());
  }
  EXPECT_NE(oxDAEInstanceController::DynamicCast(node->instances[1]), nullptr);
  EXPECT_NE(oxDAEInstanceGeometry::DynamicCast(node->instances[2]), nullptr);
  EXPECT_EQ(node->instances[4]->target, Node("other"));
}

TEST_XML(NodeReading, UnknownChildIsSkippedWithAWarning,
         Nodes(R"(<node id="n"><blob/><translate>1 2 3</translate></node>)")) {
  EXPECT_EQ(Node("n")->transforms.size(), 1u);
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <blob> in <node>")}));
}

TEST_XML(NodeReading, ExtrasAreReadWithTheNodeTechnique,
         Nodes(R"(<node id="n"><extra type="x"><technique profile="FCOLLADA"/></extra></node>)")) {
  const oxDAENode* node = Node("n");
  ASSERT_EQ(node->extras.size(), 1u);
  EXPECT_EQ(node->extras[0]->parent, node);
  ASSERT_EQ(node->extras[0]->techniques.size(), 1u);
  EXPECT_NE(oxDAETechNode_FCOLLADA::DynamicCast(node->extras[0]->techniques[0]), nullptr);
}

// --- Transform paths and targets -------------------------------------------------

using TransformTargets = NodeTest;

TEST_XML(TransformTargets, SidsGiveElementAndTargetPaths,
         Nodes(R"(<node id="n"><translate sid="tr">1 2 3</translate>
                  <rotate sid="r">0 0 1 45</rotate></node>)")) {
  const oxDAENode* node = Node("n");
  const auto& translate = node->transforms[0];
  EXPECT_EQ(translate->GetPath(), "n/tr");
  EXPECT_EQ(document.ResolvePath("n/tr"), translate.get());
  oxDAEChannelTarget* target = translate->GetChannelTarget();
  ASSERT_NE(target, nullptr);
  EXPECT_EQ(target->GetContainerParent(), translate.get());
  EXPECT_EQ(target->GetQualifier(), "tr");
  EXPECT_EQ(target->GetDocument(), &document);
  EXPECT_EQ(document.ResolveAnimationTargetPath("n/tr"), target);
  const auto* vector = oxDAEChannelTargetFloatXYZ::DynamicCast(target);
  ASSERT_NE(vector, nullptr);
  EXPECT_EQ(document.ResolveAnimationTargetPath("n/tr.Y"), vector->GetChannelTarget(0, 1));
  EXPECT_EQ(document.ResolveAnimationTargetPath("n/r.ANGLE"),
            oxDAEChannelTargetRotate::DynamicCast(node->transforms[1]->GetChannelTarget())
                ->GetChannelTarget("ANGLE"));
}

TEST_XML(TransformTargets, SidUnderANodeWithoutIdIsAnchoredAtTheNearestId,
         Nodes(R"(<node id="top"><node><scale sid="s">2 2 2</scale></node></node>)")) {
  const auto& scale = Node("top")->nodes.at(0)->transforms.at(0);
  EXPECT_EQ(document.ResolveAnimationTargetPath("top/s"), scale->GetChannelTarget());
}

TEST_XML(TransformTargets, TransformWithoutSidIsNotRegistered,
         Nodes(R"(<node id="n"><translate>1 2 3</translate></node>)")) {
  const oxDAEChannelTarget* target = Node("n")->transforms[0]->GetChannelTarget();
  ASSERT_NE(target, nullptr);
  EXPECT_EQ(target->GetDocument(), nullptr);
  EXPECT_EQ(document.ResolveAnimationTargetPath("n/"), nullptr);
}

TEST_XML(TransformTargets, EveryValuedTransformHasItsTargetClass,
         Nodes(R"(<node id="n"><rotate sid="a"/><scale sid="b"/><translate sid="c"/>
                  <lookat sid="d"/><matrix sid="e"/></node>)")) {
  const oxDAENode* node = Node("n");
  EXPECT_NE(oxDAEChannelTargetRotate::DynamicCast(node->transforms[0]->GetChannelTarget()),
            nullptr);
  EXPECT_NE(oxDAEChannelTargetFloatXYZ::DynamicCast(node->transforms[1]->GetChannelTarget()),
            nullptr);
  EXPECT_NE(oxDAEChannelTargetFloatXYZ::DynamicCast(node->transforms[2]->GetChannelTarget()),
            nullptr);
  EXPECT_NE(oxDAEChannelTargetLookat::DynamicCast(node->transforms[3]->GetChannelTarget()),
            nullptr);
  EXPECT_NE(oxDAEChannelTargetMatrix::DynamicCast(node->transforms[4]->GetChannelTarget()),
            nullptr);
  for (const char* path : {"n/a", "n/b", "n/c", "n/d", "n/e"})
    EXPECT_NE(document.ResolveAnimationTargetPath(path), nullptr) << path;
}

TEST_XML(TransformTargets, TargetsOfAReplacedDocumentAreGone,
         Nodes(R"(<node id="n"><translate sid="tr">1 2 3</translate></node>
                  <node id="top"><node><rotate sid="r">0 0 1 0</rotate></node></node>)")) {
  ASSERT_NE(document.ResolveAnimationTargetPath("n/tr"), nullptr);
  ASSERT_NE(document.ResolveAnimationTargetPath("top/r.ANGLE"), nullptr);
  ASSERT_EQ(LoadText(Nodes(R"(<node id="m"/>)")), 0);
  for (const char* path : {"n/tr", "n/tr.X", "top/r", "top/r.ANGLE"})
    EXPECT_EQ(document.ResolveAnimationTargetPath(path), nullptr) << path;
}

// --- Writing nodes ---------------------------------------------------------------

using NodeWriting = NodeTest;

TEST_XML(NodeWriting, InstancesAreWrittenBeforeTransformsAndChildNodesLast,
         Nodes(R"(<node id="n" name="N" sid="root" type="JOINT"><translate sid="t">1 2 3</translate>
                    <node id="c"><scale>2 2 2</scale></node>
                    <rotate>0 0 1 45</rotate><instance_light url="#l"/><lookat>1 2 3 4 5 6 7 8 9</lookat>
                  </node>)")) {
  EXPECT_EQ(ElementText(SaveText(), "library_nodes"), R"(<library_nodes id="lib">
    <node name="N" id="n" sid="root" type="JOINT">
      <instance_light url="#l"/>
      <translate sid="t">1 2 3</translate>
      <rotate>0 0 1 45</rotate>
      <lookat>1 2 3 4 5 6 7 8 9</lookat>
      <node id="c" type="NODE">
        <scale>2 2 2</scale>
      </node>
    </node>
  </library_nodes>)");
}

TEST_XML(NodeWriting, ATypeWithoutAWordIsNotWritten, Nodes(R"(<node id="n"/>)")) {
  Node("n")->type = EToken::NONE;
  EXPECT_EQ(ElementText(SaveText(), "library_nodes"), R"(<library_nodes id="lib">
    <node id="n"/>
  </library_nodes>)");
}

TEST_XML(NodeWriting, AWrittenNodeReadsBackTheSame,
         Nodes(R"(<node id="n" sid="s"><translate sid="t">1 2 3</translate>
                  <rotate sid="r">1 0 0 30</rotate><scale sid="k">1 2 3</scale>
                  <matrix sid="m">1 0 0 4 0 1 0 5 0 0 1 6 0 0 0 1</matrix>
                  <lookat sid="l">0 0 0 0 0 -1 0 1 0</lookat></node>)")) {
  const oxMatrix44 before = Node("n")->ComputeLocalMatrix();
  const std::string saved = SaveText();
  ASSERT_EQ(LoadText(saved), 0);
  EXPECT_EQ(Node("n")->ComputeLocalMatrix(), before);
  EXPECT_EQ(Node("n")->sid, "s");
  EXPECT_EQ(SaveText(), saved);
  EXPECT_EQ(log.entries, kNoLog);
}

// --- Deep hierarchies ------------------------------------------------------------

using DeepNodes = NodeTest;

TEST_F(DeepNodes, HundredThousandNestedNodesLoadAndSave) {
  const std::string xml = Collada(R"(<library_nodes id="deep">)" + NestedNodes(100'000) +
                                  R"(</library_nodes><library_nodes id="after"/>)");
  ASSERT_EQ(LoadText(xml), 0);
  // The reader stops entering elements at its depth limit: COLLADA and the
  // library take two levels, so nodes 1 to 998 are read and node 999 is the
  // one whose children are skipped.
  const size_t firstNode = xml.find("<node>");
  const size_t skippedAt = firstNode + 998 * std::string_view("<node>").size();
  EXPECT_EQ(log.entries,
            (std::vector{Error("elements nested deeper than 1000 levels at <node> (byte offset " +
                               std::to_string(skippedAt) + "); their content is skipped")}));
  EXPECT_EQ(All<oxDAENode>().size(), 999u);
  ASSERT_EQ(document.GetRoot()->libraries.size(), 2u);
  EXPECT_EQ(document.GetRoot()->libraries[1]->id, "after");
  log.Clear();
  const std::string saved = SaveText();
  EXPECT_EQ(Occurrences(saved, "<node"), 999u);
  EXPECT_EQ(log.entries, kNoLog);
  ASSERT_EQ(LoadText(saved), 0);
  EXPECT_EQ(All<oxDAENode>().size(), 999u);
  EXPECT_EQ(log.entries, kNoLog);
}

class BuiltNodes : public NodeTest {
 protected:
  // Hangs a chain of `levels` new nodes below `top`; returns the deepest.
  oxDAENode* Chain(oxDAENode* top, int levels) {
    oxDAENode* last = top;
    for (int i = 0; i < levels; ++i) {
      auto* child = new oxDAENode();
      document.RegisterElement(child, last);
      last->nodes.push_back(child);
      last = child;
    }
    return last;
  }
};

TEST_XML(BuiltNodes, HasChildWalksAHundredThousandLevels, Nodes(R"(<node id="top"/>)")) {
  oxDAENode* top = Node("top");
  const oxDAENode* deepest = Chain(top, 100'000);
  EXPECT_TRUE(top->HasChild(deepest, true));
  EXPECT_FALSE(top->HasChild(deepest, false));
  EXPECT_FALSE(deepest->HasChild(top, true));
}

TEST_XML(BuiltNodes, HierarchiesDeeperThanTheReaderEntersAreWritten, Nodes(R"(<node id="top"/>)")) {
  // 2,000 levels pass the reader's limit of 1,000; the writer indents no
  // deeper than 32 levels, so the text stays small.
  Chain(Node("top"), 2'000);
  const std::string saved = SaveText();
  EXPECT_EQ(Occurrences(saved, "<node"), 2'001u);
  EXPECT_EQ(Occurrences(saved, "</node>"), 2'000u);
  EXPECT_EQ(log.entries, kNoLog);
}
