#include <cstdint>
#include <new>

#include <oxKernel/oxContainers.h>
#include <oxKernel/oxProgress.h>
#include <oxKernel/oxXML.h>

#include <gtest/gtest.h>

using namespace OxKernel;

namespace {

constexpr uint64_t k2To32 = uint64_t{1} << 32;
constexpr uintptr_t kLargePage = uintptr_t{2} << 20;

TEST(HostContainers, ArrayOfSeveralLargePagesStartsOnALargePage) {
  oxArray<float> values(3 * kLargePage / sizeof(float) + 5);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(values.data()) % kLargePage, 0u);
}

TEST(HostContainers, ValuesSurviveGrowthThroughEveryKindOfBlock) {
  // From the heap, through small-page mappings, to large pages.
  oxArray<int32_t> values;
  constexpr int32_t kCount = 3'000'000;
  for (int32_t i = 0; i < kCount; ++i)
    values.push_back(i * 7);
  int32_t wrong = 0;
  for (int32_t i = 0; i < kCount; ++i)
    wrong += values[static_cast<size_t>(i)] == i * 7 ? 0 : 1;
  EXPECT_EQ(wrong, 0);
}

// Only numbers are left unset by resize; other elements are value-initialised
// even where the memory held something before.
TEST(HostContainers, ResizeValueInitialisesWhatIsNotANumber) {
  struct Plain {
    int value;
    const char* name;
  };
  oxArray<Plain> plain(1000, Plain{7, "seven"});
  oxArray<const char*> pointers(1000, "seven");
  plain.clear();
  pointers.clear();
  plain.resize(1000);
  pointers.resize(1000);
  size_t set = 0;
  for (size_t i = 0; i < 1000; ++i)
    set += (plain[i].value != 0 || plain[i].name != nullptr || pointers[i] != nullptr) ? 1 : 0;
  EXPECT_EQ(set, 0u);
}

TEST(HostContainers, ABlockLargerThanMemoryIsRefusedWithBadAlloc) {
  EXPECT_THROW(oxAllocateLargeBlock(SIZE_MAX - 1), std::bad_alloc);
  EXPECT_THROW(oxAllocateLargeBlock(uint64_t{1} << 60), std::bad_alloc);
}

TEST(HostContainers, PrefaultKeepsWhatTheMemoryHolds) {
  std::string text(5 * kLargePage, 'x');
  oxPrefault(text.data(), text.size());
  EXPECT_EQ(text.find_first_not_of('x'), std::string::npos);
  oxPrefault(nullptr, 0);  // too small to act on
}

TEST(HostContainers, AdvisedMemoryKeepsWhatItHolds) {
  std::string text(5 * kLargePage, 'x');
  oxAdviseLargePages(text.data(), text.size());
  EXPECT_EQ(text.find_first_not_of('x'), std::string::npos);
  oxAdviseLargePages(text.data(), kLargePage / 2);  // no whole large page: nothing to advise
  EXPECT_EQ(text.find_first_not_of('x'), std::string::npos);
}

// Offsets and counts past 4 GB: the arithmetic is 64-bit up to the last,
// 32-bit, step of a parse call.
TEST(HostSizes, ProgressFractionsOfOffsetsAroundFourGigabytes) {
  EXPECT_EQ(oxProgressMeter::Fraction(k2To32, 2 * k2To32), 0.5);
  EXPECT_EQ(oxProgressMeter::Fraction(k2To32 + 1, k2To32 + 1), 1.0);
  EXPECT_LT(oxProgressMeter::Fraction(k2To32 - 1, k2To32), 1.0);
  EXPECT_GT(oxProgressMeter::Fraction(k2To32 - 1, k2To32), 0.9999999997);
  EXPECT_GT(oxProgressMeter::Fraction(k2To32 + 1, 3 * k2To32),
            oxProgressMeter::Fraction(k2To32 - 1, 3 * k2To32));
  EXPECT_EQ(oxProgressMeter::Fraction(k2To32, 0), 0.0);
}

TEST(HostSizes, MostValuesOfTextsAroundEightGigabytes) {
  EXPECT_EQ(oxXMLTextValue::MostValues(0), 0u);
  EXPECT_EQ(oxXMLTextValue::MostValues(1), 1u);
  EXPECT_EQ(oxXMLTextValue::MostValues(3), 2u);
  EXPECT_EQ(oxXMLTextValue::MostValues(2 * k2To32 - 2), k2To32 - 1);
  EXPECT_EQ(oxXMLTextValue::MostValues(2 * k2To32 - 1), k2To32);
  EXPECT_EQ(oxXMLTextValue::MostValues(2 * k2To32 + 1), k2To32 + 1);
  EXPECT_EQ(oxXMLTextValue::MostValues(k2To32 + 1), k2To32 / 2 + 1);
}

TEST(HostSizes, ParseRoomStopsAtTheLargest32BitCount) {
  EXPECT_EQ(oxXMLTextValue::ParseRoom(k2To32 - 2), 4'294'967'294u);
  EXPECT_EQ(oxXMLTextValue::ParseRoom(k2To32 - 1), 4'294'967'295u);
  EXPECT_EQ(oxXMLTextValue::ParseRoom(k2To32), 4'294'967'295u);
  EXPECT_EQ(oxXMLTextValue::ParseRoom(k2To32 + 1), 4'294'967'295u);
  EXPECT_EQ(oxXMLTextValue::ParseRoom(5), 5u);
}

}  // namespace
