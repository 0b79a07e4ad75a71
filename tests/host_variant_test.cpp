#include <chrono>
#include <cmath>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <oxKernel/oxLog.h>
#include <oxKernel/oxProfiling.h>
#include <oxKernel/oxVariant.h>

#include "oxTestSupport.h"

using namespace OxKernel;

namespace {

struct TypeCase {
  const char* name;
  oxType::EKind kind;
  unsigned int components;
  const char* zero;
};

const std::vector<TypeCase> kBuiltInTypes = {
    {"bool", oxType::EKind::Bool, 1, "false"},
    {"int32", oxType::EKind::Int32, 1, "0"},
    {"uint8", oxType::EKind::UInt8, 1, "0"},
    {"float", oxType::EKind::Float, 1, "0"},
    {"oxString", oxType::EKind::String, 1, ""},
    {"oxVec2", oxType::EKind::FloatTuple, 2, "0 0"},
    {"oxVec3", oxType::EKind::FloatTuple, 3, "0 0 0"},
    {"oxVec4", oxType::EKind::FloatTuple, 4, "0 0 0 0"},
};

oxVariant Typed(const char* name) {
  const oxType* type = oxTypeManager::Instance(0).FindType(name);
  EXPECT_NE(type, nullptr) << name;
  return oxVariant(type);
}

// Sets `text` on a variant of type `name` and returns the result and the
// value read back as text.
std::pair<bool, oxString> SetAndGet(const char* name, std::string_view text) {
  oxVariant variant = Typed(name);
  const bool ok = variant.SetStringValue(text);
  return {ok, variant.GetStringValue()};
}

struct Record {
  unsigned int context;
  int level;
  int line;
  std::string file;
  std::string text;
  bool operator==(const Record&) const = default;
};

// Collects whole records (LogCapture keeps only level and text).
class RecordSink {
 public:
  RecordSink()
      : m_sink([this](const oxLogRecord& r) {
          records.push_back({r.context, r.level, r.line, r.file, std::string(r.text)});
        }) {}
  std::vector<Record> records;

 private:
  oxScopedLogSink m_sink;
};

std::string DefaultSinkOutput(int level, std::string_view text) {
  const oxScopedLogSink defaultSink{oxLog::Sink()};
  testing::internal::CaptureStderr();
  oxLog::SetInformation(0, level, 1, "f.cpp");
  oxLog::Print(text);
  return testing::internal::GetCapturedStderr();
}

// Profile names are process-wide: each call gives a name no earlier run of
// the test has used, so that repeated runs start from a clean slate.
std::string FreshName(std::string_view base) {
  static int counter = 0;
  return std::string(base) + "#" + std::to_string(++counter);
}

}  // namespace

// ---------------------------------------------------------------- types

TEST(HostTypeManager, FindsEveryBuiltInType) {
  const oxTypeManager& manager = oxTypeManager::Instance(0);
  for (const TypeCase& c : kBuiltInTypes) {
    const oxType* type = manager.FindType(c.name);
    ASSERT_NE(type, nullptr) << c.name;
    EXPECT_EQ(type->GetName(), c.name);
    EXPECT_EQ(type->GetKind(), c.kind) << c.name;
    EXPECT_EQ(type->GetComponentCount(), c.components) << c.name;
  }
}

TEST(HostTypeManager, FindsNothingElseAndComparesCaseSensitively) {
  const oxTypeManager& manager = oxTypeManager::Instance(0);
  for (const char* name : {"", "Bool", "BOOL", "Int32", "int", "uint16", "Float", "double",
                           "oxstring", "string", "oxVec1", "oxVec5", "OxVec3", "oxVec3 ", "vec3"})
    EXPECT_EQ(manager.FindType(name), nullptr) << name;
}

TEST(HostTypeManager, EveryContextSeesTheSameTypes) {
  EXPECT_EQ(oxTypeManager::Instance(0).FindType("oxVec3"),
            oxTypeManager::Instance(42).FindType("oxVec3"));
}

// ---------------------------------------------------------------- variants

TEST(HostVariant, UntypedVariantConvertsNothing) {
  oxVariant variant;
  EXPECT_EQ(variant.GetValueType(), nullptr);
  EXPECT_TRUE(std::holds_alternative<std::monostate>(variant.GetValue()));
  EXPECT_FALSE(variant.SetStringValue("1"));
  EXPECT_EQ(variant.GetStringValue(), "");
  EXPECT_TRUE(std::holds_alternative<std::monostate>(variant.GetValue()));
}

TEST(HostVariant, TypedVariantStartsWithTheZeroValue) {
  for (const TypeCase& c : kBuiltInTypes)
    EXPECT_EQ(Typed(c.name).GetStringValue(), c.zero) << c.name;
}

TEST(HostVariant, SettingATypeResetsTheValue) {
  oxVariant variant = Typed("int32");
  ASSERT_TRUE(variant.SetStringValue("12"));
  variant.SetValueType(oxTypeManager::Instance(0).FindType("float"));
  EXPECT_EQ(std::get<float>(variant.GetValue()), 0.0f);
  variant.SetValueType(nullptr);
  EXPECT_EQ(variant.GetValueType(), nullptr);
  EXPECT_TRUE(std::holds_alternative<std::monostate>(variant.GetValue()));
}

TEST(HostVariant, StringValuesRoundTrip) {
  const std::vector<std::tuple<const char*, std::string, std::string>> cases = {
      {"bool", "true", "true"},
      {"bool", " 1 ", "true"},
      {"bool", "0", "false"},
      {"int32", "-2147483648", "-2147483648"},
      {"int32", "+17", "17"},
      {"uint8", "255", "255"},
      {"uint8", "\t7\n", "7"},
      {"float", "0.1", "0.1"},
      {"float", "-2.5e3", "-2500"},
      {"float", "1e50", "inf"},
      {"float", "-INF", "-inf"},
      {"oxString", " any text\t", " any text\t"},
      {"oxString", "", ""},
      {"oxVec2", "1 2", "1 2"},
      {"oxVec3", " 1\t2.5\n-3 ", "1 2.5 -3"},
      {"oxVec4", "0.25 -0 1e-3 +4", "0.25 -0 0.001 4"},
  };
  for (const auto& [type, text, expected] : cases)
    EXPECT_EQ(SetAndGet(type, text), std::pair(true, oxString(expected))) << type << " " << text;
}

TEST(HostVariant, ValuesHoldTheirTypesAlternative) {
  oxVariant b = Typed("bool"), i = Typed("int32"), u = Typed("uint8"), f = Typed("float"),
            s = Typed("oxString"), v = Typed("oxVec3");
  ASSERT_TRUE(b.SetStringValue("true"));
  ASSERT_TRUE(i.SetStringValue("-5"));
  ASSERT_TRUE(u.SetStringValue("200"));
  ASSERT_TRUE(f.SetStringValue("1.5"));
  ASSERT_TRUE(s.SetStringValue("x"));
  ASSERT_TRUE(v.SetStringValue("1 2 3"));
  EXPECT_EQ(std::get<bool>(b.GetValue()), true);
  EXPECT_EQ(std::get<int32_t>(i.GetValue()), -5);
  EXPECT_EQ(std::get<uint8_t>(u.GetValue()), 200);
  EXPECT_EQ(std::get<float>(f.GetValue()), 1.5f);
  EXPECT_EQ(std::get<oxString>(s.GetValue()), "x");
  EXPECT_EQ(std::get<oxVariant::Tuple>(v.GetValue()), (oxVariant::Tuple{1, 2, 3, 0}));
}

TEST(HostVariant, NotANumberRoundTrips) {
  oxVariant variant = Typed("float");
  ASSERT_TRUE(variant.SetStringValue("NaN"));
  EXPECT_TRUE(std::isnan(std::get<float>(variant.GetValue())));
  EXPECT_EQ(variant.GetStringValue(), "nan");
  ASSERT_TRUE(variant.SetStringValue(variant.GetStringValue()));
  EXPECT_TRUE(std::isnan(std::get<float>(variant.GetValue())));
}

TEST(HostVariant, FailedConversionLeavesTheValueUnchanged) {
  const std::vector<std::tuple<const char*, std::string, std::string>> cases = {
      {"bool", "true", "yes"},        {"bool", "true", "TRUE"},
      {"int32", "5", "abc"},          {"int32", "5", "2147483648"},
      {"int32", "5", "1.5"},          {"uint8", "9", "256"},
      {"uint8", "9", "-1"},           {"float", "2.5", "1;5"},
      {"float", "2.5", ""},           {"oxVec2", "1 2", "3"},
      {"oxVec2", "1 2", "3 4 5"},     {"oxVec3", "1 2 3", "4 5"},
      {"oxVec3", "1 2 3", "4 x 6"},   {"oxVec3", "1 2 3", ""},
      {"oxVec4", "1 2 3 4", "5 6 7"}, {"oxVec4", "1 2 3 4", "5 6 7 8 9"}};
  for (const auto& [type, good, bad] : cases) {
    oxVariant variant = Typed(type);
    ASSERT_TRUE(variant.SetStringValue(good)) << type;
    const oxVariant::Value before = variant.GetValue();
    EXPECT_FALSE(variant.SetStringValue(bad)) << type << " " << bad;
    EXPECT_EQ(variant.GetValue(), before) << type << " " << bad;
    EXPECT_EQ(variant.GetStringValue(), good) << type << " " << bad;
  }
}

// ---------------------------------------------------------------- log

TEST(HostLog, PrintSendsTheDescribedRecordToTheSink) {
  RecordSink sink;
  oxLog::SetInformation(3, kLogWarning, 120, "file.cpp");
  oxLog::Print("first");
  EXPECT_EQ(sink.records, (std::vector<Record>{{3, kLogWarning, 120, "file.cpp", "first"}}));
}

TEST(HostLog, PrintWithoutInformationSendsAnInfoRecord) {
  RecordSink sink;
  oxLog::SetInformation(1, kLogError, 5, "a.cpp");
  oxLog::Print("described");
  oxLog::Print("plain");
  oxLog::SetInformation(2, kLogWarning, 6, nullptr);
  oxLog::Print("no file");
  EXPECT_EQ(sink.records, (std::vector<Record>{{1, kLogError, 5, "a.cpp", "described"},
                                               {0, kLogInfo, 0, "", "plain"},
                                               {2, kLogWarning, 6, "", "no file"}}));
}

TEST(HostLog, LogMacroRecordsTheCallersLocation) {
  RecordSink sink;
  const int line = __LINE__ + 1;
  OX_LOG(kLogError, oxConcat("value ", 3));
  EXPECT_EQ(sink.records, (std::vector<Record>{{0, kLogError, line, __FILE__, "value 3"}}));
}

TEST(HostLog, ScopedSinksNestAndRestoreThePreviousSink) {
  RecordSink outer;
  {
    RecordSink inner;
    oxLog::Print("to inner");
    EXPECT_EQ(inner.records.size(), 1u);
  }
  oxLog::Print("to outer");
  EXPECT_EQ(outer.records, (std::vector<Record>{{0, kLogInfo, 0, "", "to outer"}}));
}

TEST(HostLog, SetSinkReturnsThePreviousSink) {
  RecordSink outer;
  std::vector<std::string> texts;
  oxLog::Sink previous =
      oxLog::SetSink([&texts](const oxLogRecord& r) { texts.emplace_back(r.text); });
  oxLog::Print("one");
  ASSERT_TRUE(previous);
  previous(oxLogRecord{0, kLogInfo, 0, "", "through previous"});
  oxLog::Sink mine = oxLog::SetSink(std::move(previous));
  ASSERT_TRUE(mine);
  oxLog::Print("two");
  mine(oxLogRecord{0, kLogInfo, 0, "", "direct"});
  EXPECT_EQ(texts, (std::vector<std::string>{"one", "direct"}));
  EXPECT_EQ(outer.records, (std::vector<Record>{{0, kLogInfo, 0, "", "through previous"},
                                                {0, kLogInfo, 0, "", "two"}}));
}

TEST(HostLog, DefaultSinkWritesOneLinePerRecordOnStandardError) {
  EXPECT_EQ(DefaultSinkOutput(kLogError, "bad thing"), "error: bad thing\n");
  EXPECT_EQ(DefaultSinkOutput(kLogWarning, "odd thing"), "warning: odd thing\n");
  EXPECT_EQ(DefaultSinkOutput(kLogInfo, "news"), "info: news\n");
  EXPECT_EQ(DefaultSinkOutput(99, "other level"), "info: other level\n");
}

TEST(HostLog, EmptySinkRestoresTheDefaultSink) {
  RecordSink sink;
  {
    const oxScopedLogSink defaultSink{oxLog::Sink()};
    testing::internal::CaptureStderr();
    oxLog::SetInformation(0, kLogWarning, 1, "f.cpp");
    oxLog::Print("to stderr");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "warning: to stderr\n");
  }
  oxLog::Print("to sink");
  EXPECT_EQ(sink.records, (std::vector<Record>{{0, kLogInfo, 0, "", "to sink"}}));
}

TEST(HostLog, LevelNames) {
  EXPECT_EQ(oxLog::LevelName(4), "error");
  EXPECT_EQ(oxLog::LevelName(8), "warning");
  EXPECT_EQ(oxLog::LevelName(16), "info");
  EXPECT_EQ(oxLog::LevelName(0), "info");
}

// ---------------------------------------------------------------- profiling

TEST(HostProfiling, ElapsedTimeIsNegativeBeforeAnyRunCompletes) {
  const std::string never = FreshName("HostProfiling.never");
  const std::string running = FreshName("HostProfiling.running");
  const std::string stoppedOnly = FreshName("HostProfiling.stoppedOnly");
  EXPECT_EQ(oxProfilingManager::GetElapsedSeconds(never), -1.0);
  oxProfilingManager::StartProfile(running);
  EXPECT_EQ(oxProfilingManager::GetElapsedSeconds(running), -1.0);
  oxProfilingManager::StopProfile(stoppedOnly);
  EXPECT_EQ(oxProfilingManager::GetElapsedSeconds(stoppedOnly), -1.0);
}

TEST(HostProfiling, ElapsedTimeIsReadableAfterStop) {
  const std::string sleep = FreshName("HostProfiling.sleep");
  oxProfilingManager::StartProfile(sleep);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  oxProfilingManager::StopProfile(sleep);
  const double seconds = oxProfilingManager::GetElapsedSeconds(sleep);
  EXPECT_GE(seconds, 0.020);
  EXPECT_LT(seconds, 5.0);
  EXPECT_EQ(oxProfilingManager::GetElapsedSeconds(sleep), seconds);
}

TEST(HostProfiling, ANewRunKeepsTheLastCompletedTimeUntilItStops) {
  const std::string rerun = FreshName("HostProfiling.rerun");
  oxProfilingManager::StartProfile(rerun);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  oxProfilingManager::StopProfile(rerun);
  const double first = oxProfilingManager::GetElapsedSeconds(rerun);
  oxProfilingManager::StartProfile(rerun);
  EXPECT_EQ(oxProfilingManager::GetElapsedSeconds(rerun), first);
  oxProfilingManager::StopProfile(rerun);
  const double second = oxProfilingManager::GetElapsedSeconds(rerun);
  EXPECT_GE(first, 0.020);
  EXPECT_GE(second, 0.0);
  EXPECT_LT(second, first);
}

TEST(HostProfiling, ScopeMeasuresItsLifetime) {
  const std::string name = FreshName("HostProfiling.scope");
  {
    const oxProfileScope scope(name);
    EXPECT_EQ(oxProfilingManager::GetElapsedSeconds(name), -1.0);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_GE(oxProfilingManager::GetElapsedSeconds(name), 0.010);
}
