// The host keyframe controller: creation by key and value type, the key
// buffer, and linear evaluation inside, before, after and between unordered
// keys.
#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include <oxKernel/oxRefPtr.h>
#include <oxKernel/oxVariant.h>
#include <oxMath/oxKeyframeController.h>

#include "oxTestSupport.h"

using OxKernel::oxRefPtr;
using OxKernel::oxTypeManager;
using OxMath::oxKeyframeController;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

const OxKernel::oxType* TypeNamed(std::string_view name) {
  return oxTypeManager::Instance(0).FindType(name);
}

oxRefPtr<oxKeyframeController> Linear(std::string_view valueType) {
  return oxKeyframeController::CreateController(oxKeyframeController::LINEAR, TypeNamed(valueType),
                                                nullptr);
}

// A linear controller whose keys are `keys`, each its value's floats then its
// time, all keys one after the other.
oxRefPtr<oxKeyframeController> WithKeys(std::string_view valueType,
                                        const std::vector<float>& keys) {
  oxRefPtr<oxKeyframeController> c = Linear(valueType);
  const unsigned int count = static_cast<unsigned int>(keys.size()) / c->GetKeySize();
  c->SetKeysCount(count);
  std::copy(keys.begin(), keys.end(), c->GetKeyBase());
  return c;
}

std::vector<float> At(const oxKeyframeController& c, float time) {
  std::vector<float> out(c.GetValueSize(), -99.0f);
  c.Evaluate(time, out.data());
  return out;
}

}  // namespace

// --- Creation -------------------------------------------------------------------------

TEST(KeyframeController, EachValueTypeGivesItsValueAndKeySizes) {
  const std::pair<const char*, unsigned int> sizes[] = {
      {"float", 1}, {"oxVec2", 2}, {"oxVec3", 3}, {"oxVec4", 4}, {"oxMatrix44", 16}};
  for (const auto& [name, size] : sizes) {
    SCOPED_TRACE(name);
    const oxRefPtr<oxKeyframeController> c = Linear(name);
    ASSERT_TRUE(c);
    EXPECT_EQ(c->GetValueSize(), size);
    EXPECT_EQ(c->GetKeySize(), size + 1);
    EXPECT_EQ(c->GetKeysCount(), 0u);
    EXPECT_EQ(c->GetKeyType(), oxKeyframeController::LINEAR);
  }
}

TEST(KeyframeController, UnknownKeyTypeGivesNoController) {
  for (const int keyType : {0, 2, -1}) {
    SCOPED_TRACE(keyType);
    EXPECT_EQ(oxKeyframeController::CreateController(keyType, TypeNamed("float"), nullptr),
              nullptr);
  }
}

TEST(KeyframeController, UnknownValueTypeGivesNoController) {
  ASSERT_NE(TypeNamed("bool"), nullptr);
  ASSERT_NE(TypeNamed("oxString"), nullptr);
  EXPECT_EQ(Linear("bool").Get(), nullptr);
  EXPECT_EQ(Linear("oxString").Get(), nullptr);
  EXPECT_EQ(oxKeyframeController::CreateController(oxKeyframeController::LINEAR, nullptr, nullptr),
            nullptr);
}

// --- Key buffer -----------------------------------------------------------------------

TEST(KeyframeController, SetKeysCountZeroFillsValuesAndTimes) {
  oxRefPtr<oxKeyframeController> c = Linear("oxVec3");
  c->SetKeysCount(2);
  std::fill_n(c->GetKeyBase(), 8, 7.0f);
  c->SetKeysCount(3);
  EXPECT_EQ(c->GetKeysCount(), 3u);
  EXPECT_EQ(std::vector<float>(c->GetKeyBase(), c->GetKeyBase() + 12),
            std::vector<float>(12, 0.0f));
}

TEST(KeyframeController, KeyIStartsAtIKeySizesFromTheBase) {
  const oxRefPtr<oxKeyframeController> c = WithKeys("oxVec2", {1.0f, 2.0f, 0.0f, 3.0f, 4.0f, 1.0f});
  const float* key1 = c->GetKeyBase() + 1 * c->GetKeySize();
  EXPECT_EQ(std::vector<float>(key1, key1 + 3), (std::vector<float>{3.0f, 4.0f, 1.0f}));
}

// --- Linear evaluation ----------------------------------------------------------------

TEST(KeyframeController, FloatIsInterpolatedAtTheMidpoint) {
  const oxRefPtr<oxKeyframeController> c = WithKeys("float", {2.0f, 1.0f, 10.0f, 3.0f});
  EXPECT_EQ(At(*c, 2.0f), (std::vector<float>{6.0f}));
  EXPECT_EQ(At(*c, 1.5f), (std::vector<float>{4.0f}));
}

TEST(KeyframeController, Vec2IsInterpolatedWithStrideTwo) {
  const oxRefPtr<oxKeyframeController> c =
      WithKeys("oxVec2", {0.0f, 8.0f, 0.0f, 4.0f, 0.0f, 1.0f, 4.0f, 16.0f, 2.0f});
  EXPECT_EQ(At(*c, 0.5f), (std::vector<float>{2.0f, 4.0f}));
  EXPECT_EQ(At(*c, 1.5f), (std::vector<float>{4.0f, 8.0f}));
}

TEST(KeyframeController, Vec3IsInterpolatedComponentByComponent) {
  const oxRefPtr<oxKeyframeController> c =
      WithKeys("oxVec3", {0.0f, 10.0f, -4.0f, 0.0f, 2.0f, 20.0f, 4.0f, 2.0f});
  EXPECT_EQ(At(*c, 1.0f), (std::vector<float>{1.0f, 15.0f, 0.0f}));
}

TEST(KeyframeController, MatrixIsInterpolatedComponentByComponent) {
  std::vector<float> keys;
  for (int i = 0; i < 16; ++i)
    keys.push_back(static_cast<float>(i));
  keys.push_back(0.0f);
  for (int i = 0; i < 16; ++i)
    keys.push_back(static_cast<float>(3 * i));
  keys.push_back(1.0f);
  const oxRefPtr<oxKeyframeController> c = WithKeys("oxMatrix44", keys);
  std::vector<float> expected;
  for (int i = 0; i < 16; ++i)
    expected.push_back(static_cast<float>(2 * i));
  EXPECT_EQ(At(*c, 0.5f), expected);
}

TEST(KeyframeController, TheMiddleKeyOfThreeIsUsedOnBothSides) {
  const oxRefPtr<oxKeyframeController> c =
      WithKeys("float", {0.0f, 0.0f, 10.0f, 1.0f, 30.0f, 2.0f});
  EXPECT_EQ(At(*c, 0.5f), (std::vector<float>{5.0f}));
  EXPECT_EQ(At(*c, 1.0f), (std::vector<float>{10.0f}));
  EXPECT_EQ(At(*c, 1.5f), (std::vector<float>{20.0f}));
}

TEST(KeyframeController, BeforeTheFirstKeyTheFirstValueHolds) {
  const oxRefPtr<oxKeyframeController> c = WithKeys("oxVec2", {1.0f, 2.0f, 1.0f, 5.0f, 6.0f, 2.0f});
  EXPECT_EQ(At(*c, 1.0f), (std::vector<float>{1.0f, 2.0f}));
  EXPECT_EQ(At(*c, 0.0f), (std::vector<float>{1.0f, 2.0f}));
  EXPECT_EQ(At(*c, -std::numeric_limits<float>::infinity()), (std::vector<float>{1.0f, 2.0f}));
}

TEST(KeyframeController, AfterTheLastKeyTheLastValueHolds) {
  const oxRefPtr<oxKeyframeController> c = WithKeys("oxVec2", {1.0f, 2.0f, 1.0f, 5.0f, 6.0f, 2.0f});
  EXPECT_EQ(At(*c, 2.0f), (std::vector<float>{5.0f, 6.0f}));
  EXPECT_EQ(At(*c, 100.0f), (std::vector<float>{5.0f, 6.0f}));
  EXPECT_EQ(At(*c, std::numeric_limits<float>::infinity()), (std::vector<float>{5.0f, 6.0f}));
}

TEST(KeyframeController, ASingleKeyHoldsAtEveryTime) {
  const oxRefPtr<oxKeyframeController> c = WithKeys("float", {7.0f, 3.0f});
  for (const float time : {-1.0f, 3.0f, 9.0f}) {
    SCOPED_TRACE(time);
    EXPECT_EQ(At(*c, time), (std::vector<float>{7.0f}));
  }
}

TEST(KeyframeController, NoKeyLeavesTheOutputUnchanged) {
  const oxRefPtr<oxKeyframeController> c = Linear("oxVec3");
  EXPECT_EQ(At(*c, 0.5f), (std::vector<float>{-99.0f, -99.0f, -99.0f}));
  c->SetKeysCount(0);
  EXPECT_EQ(At(*c, 0.5f), (std::vector<float>{-99.0f, -99.0f, -99.0f}));
}

TEST(KeyframeController, NaNTimeGivesTheFirstKeysValue) {
  const oxRefPtr<oxKeyframeController> c = WithKeys("float", {4.0f, 1.0f, 8.0f, 2.0f, 16.0f, 3.0f});
  EXPECT_EQ(At(*c, kNaN), (std::vector<float>{4.0f}));
}

TEST(KeyframeController, KeysOutOfOrderGiveAValueBetweenTwoKeys) {
  // Values 0, 10, 20, 30, 40 at times 3, 1, 4, 0, 2.
  const std::vector<float> keys = {0.0f, 3.0f, 10.0f, 1.0f, 20.0f, 4.0f, 30.0f, 0.0f, 40.0f, 2.0f};
  const oxRefPtr<oxKeyframeController> c = WithKeys("float", keys);
  for (float time = -1.0f; time <= 5.0f; time += 0.125f) {
    SCOPED_TRACE(time);
    const float value = At(*c, time)[0];
    EXPECT_GE(value, 0.0f);
    EXPECT_LE(value, 40.0f);
  }
}

TEST(KeyframeController, KeyTimesThatAreNotNumbersGiveAKeysValue) {
  // The middle key's time is not a number: every time still answers one of
  // the values around it, never a NaN.
  const oxRefPtr<oxKeyframeController> c = WithKeys("float", {1.0f, 0.0f, 2.0f, kNaN, 3.0f, 4.0f});
  for (const float time : {0.5f, 1.0f, 2.0f, 3.0f}) {
    SCOPED_TRACE(time);
    const float value = At(*c, time)[0];
    EXPECT_FALSE(std::isnan(value));
    EXPECT_GE(value, 1.0f);
    EXPECT_LE(value, 3.0f);
  }
}

TEST(KeyframeController, InfiniteKeyTimesGiveAKeysValue) {
  const float inf = std::numeric_limits<float>::infinity();
  const oxRefPtr<oxKeyframeController> c = WithKeys("float", {1.0f, -inf, 2.0f, 0.0f, 3.0f, inf});
  EXPECT_EQ(At(*c, -1.0f), (std::vector<float>{1.0f}));
  EXPECT_EQ(At(*c, 1.0f), (std::vector<float>{2.0f}));
}
