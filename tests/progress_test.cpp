// The progress callback of oxDAEFile::Load and Save, and the meter that
// throttles it.
#include <algorithm>
#include <chrono>
#include <limits>
#include <string>
#include <vector>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxProgress.h>

#include "oxTestSupport.h"

namespace {

using namespace OxDAEReader;
using OxKernel::oxProgress;
using OxKernel::oxProgressMeter;

// A visual scene of `count` empty nodes.
std::string ManyNodes(size_t count) {
  std::string body = "<library_visual_scenes><visual_scene id=\"vs\">";
  for (size_t i = 0; i < count; ++i)
    body += "<node id=\"n" + std::to_string(i) + "\"/>";
  body += "</visual_scene></library_visual_scenes>";
  return oxtest::Collada(body);
}

constexpr size_t kNodes = 100'000;

// Records every value handed to the callback.
struct Recorder {
  std::vector<double> values;
  oxProgress progress;
  explicit Recorder(std::chrono::steady_clock::duration interval) {
    progress.interval = interval;
    progress.onProgress = [this](double fraction) { values.push_back(fraction); };
  }
};

void ExpectRisingToOne(const std::vector<double>& values) {
  ASSERT_FALSE(values.empty());
  for (size_t i = 1; i < values.size(); ++i)
    EXPECT_LE(values[i - 1], values[i]) << "at call " << i;
  EXPECT_GE(values.front(), 0.0);
  EXPECT_EQ(values.back(), 1.0);
  EXPECT_EQ(std::count(values.begin(), values.end(), 1.0), 1);
}

}  // namespace

// --- Load ----------------------------------------------------------------------

TEST(Progress, LoadValuesRiseAndEndAtOne) {
  const oxtest::TempFile file(ManyNodes(kNodes));
  Recorder recorder(std::chrono::steady_clock::duration::zero());
  oxDAEFile document;
  ASSERT_EQ(document.Load(OxKernel::oxURI(file.Path()), &recorder.progress), 0);
  ExpectRisingToOne(recorder.values);
  // With no time between calls, every few hundred elements report: the
  // values pass through the middle of the document.
  EXPECT_GT(recorder.values.size(), 10u);
  EXPECT_LT(recorder.values.size(), kNodes / 10);
  EXPECT_LT(recorder.values[recorder.values.size() / 2], 1.0);
  EXPECT_GT(recorder.values[recorder.values.size() / 2], 0.1);
}

TEST(Progress, LoadCallsAreThrottledByTheInterval) {
  const oxtest::TempFile file(ManyNodes(kNodes));
  Recorder recorder(std::chrono::hours(1));
  oxDAEFile document;
  ASSERT_EQ(document.Load(OxKernel::oxURI(file.Path()), &recorder.progress), 0);
  // Nothing before the hour is up, then the final value.
  EXPECT_EQ(recorder.values, (std::vector<double>{1.0}));
}

TEST(Progress, DefaultIntervalGivesFarFewerCallsThanElements) {
  const oxtest::TempFile file(ManyNodes(kNodes));
  oxProgress progress;
  size_t calls = 0;
  progress.onProgress = [&calls](double) { ++calls; };
  oxDAEFile document;
  ASSERT_EQ(document.Load(OxKernel::oxURI(file.Path()), &progress), 0);
  EXPECT_GE(calls, 1u);
  EXPECT_LT(calls, 100u);
}

TEST(Progress, SmallDocumentReportsOnlyTheEnd) {
  const oxtest::TempFile file(oxtest::Collada("<library_visual_scenes/>"));
  Recorder recorder(std::chrono::steady_clock::duration::zero());
  oxDAEFile document;
  ASSERT_EQ(document.Load(OxKernel::oxURI(file.Path()), &recorder.progress), 0);
  EXPECT_EQ(recorder.values, (std::vector<double>{1.0}));
}

TEST(Progress, LoadWithoutCallbackReadsTheSameDocument) {
  const oxtest::TempFile file(ManyNodes(1000));
  oxDAEFile plain;
  ASSERT_EQ(plain.Load(OxKernel::oxURI(file.Path())), 0);
  oxProgress empty;  // no onProgress: nothing to call
  oxDAEFile withEmpty;
  ASSERT_EQ(withEmpty.Load(OxKernel::oxURI(file.Path()), &empty), 0);
  Recorder recorder(std::chrono::steady_clock::duration::zero());
  oxDAEFile reported;
  ASSERT_EQ(reported.Load(OxKernel::oxURI(file.Path()), &recorder.progress), 0);
  EXPECT_EQ(plain.GetElements().size(), 1003u);
  EXPECT_EQ(withEmpty.GetElements().size(), plain.GetElements().size());
  EXPECT_EQ(reported.GetElements().size(), plain.GetElements().size());
  EXPECT_NE(reported.ResolveURI("#n999"), nullptr);
}

TEST(Progress, FailedLoadNeverReportsOne) {
  oxtest::LogCapture log;
  const oxtest::TempFile notCollada("<scene/>");
  const oxtest::TempFile broken("<COLLADA version=\"1.4.1\"><asset>");
  Recorder recorder(std::chrono::steady_clock::duration::zero());
  oxDAEFile document;
  EXPECT_EQ(document.Load(OxKernel::oxURI(notCollada.Path()), &recorder.progress), kDAENotCollada);
  EXPECT_EQ(document.Load(OxKernel::oxURI(broken.Path()), &recorder.progress),
            OxKernel::kXMLNotWellFormed);
  EXPECT_EQ(document.Load(OxKernel::oxURI(notCollada.Path() + ".missing"), &recorder.progress),
            OxKernel::kXMLCannotOpen);
  EXPECT_EQ(recorder.values, std::vector<double>{});
  EXPECT_EQ(log.entries.size(), 3u);
}

TEST(Progress, LaterLoadWithoutCallbackDoesNotCallTheEarlierOne) {
  const oxtest::TempFile file(ManyNodes(5000));
  oxDAEFile document;
  {
    Recorder recorder(std::chrono::steady_clock::duration::zero());
    ASSERT_EQ(document.Load(OxKernel::oxURI(file.Path()), &recorder.progress), 0);
    EXPECT_EQ(recorder.values.back(), 1.0);
  }
  // The recorder is gone: a call into it would be a use after free, which
  // the sanitizer build reports.
  EXPECT_EQ(document.Load(OxKernel::oxURI(file.Path())), 0);
  oxString xml;
  EXPECT_EQ(document.SaveToString(xml), 0);
}

// --- Save ----------------------------------------------------------------------

TEST(Progress, SaveValuesRiseAndEndAtOne) {
  const oxtest::TempFile in(ManyNodes(kNodes));
  const oxtest::TempFile out("");
  oxDAEFile document;
  ASSERT_EQ(document.Load(OxKernel::oxURI(in.Path())), 0);
  Recorder recorder(std::chrono::steady_clock::duration::zero());
  ASSERT_EQ(document.Save(OxKernel::oxURI(out.Path()), &recorder.progress), 0);
  ExpectRisingToOne(recorder.values);
  EXPECT_GT(recorder.values.size(), 10u);
  EXPECT_LT(recorder.values.size(), kNodes / 10);
}

TEST(Progress, FailedSaveNeverReportsOne) {
  oxtest::LogCapture log;
  oxDAEFile empty;
  Recorder recorder(std::chrono::steady_clock::duration::zero());
  EXPECT_EQ(empty.Save(OxKernel::oxURI("/nonexistent-folder/x.dae"), &recorder.progress),
            kDAENotCollada);
  const oxtest::TempFile in(ManyNodes(10));
  oxDAEFile document;
  ASSERT_EQ(document.Load(OxKernel::oxURI(in.Path())), 0);
  EXPECT_NE(document.Save(OxKernel::oxURI("/nonexistent-folder/x.dae"), &recorder.progress), 0);
  EXPECT_EQ(recorder.values, std::vector<double>{});
}

// --- The meter -----------------------------------------------------------------

TEST(ProgressMeter, DropsFallingAndNotANumberAndKeepsOneForTheEnd) {
  Recorder recorder(std::chrono::steady_clock::duration::zero());
  oxProgressMeter meter(&recorder.progress);
  EXPECT_TRUE(meter.IsActive());
  meter.Report(0.5);
  meter.Report(0.25);
  meter.Report(std::numeric_limits<double>::quiet_NaN());
  meter.Report(0.0);
  meter.Report(7.0);
  meter.Report(1.0);
  meter.Finish();
  meter.Finish();
  EXPECT_EQ(recorder.values, (std::vector<double>{0.5, 0.999, 1.0}));
}

TEST(ProgressMeter, NullOrEmptyProgressDoesNothing) {
  oxProgressMeter none(nullptr);
  EXPECT_FALSE(none.IsActive());
  none.Report(0.5);
  none.Finish();
  const oxProgress empty;
  oxProgressMeter silent(&empty);
  EXPECT_FALSE(silent.IsActive());
  silent.Report(0.5);
  silent.Finish();
}
