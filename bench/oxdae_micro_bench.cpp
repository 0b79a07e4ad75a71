// oxdae_micro_bench: Google Benchmark micro-benchmarks of the number texts
// (parsing and writing 1 MB of numbers) and of a whole load and save of a
// small generated document. Google Benchmark's own flags apply, for example
// --benchmark_filter=Parse or --benchmark_repetitions=5.
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>
#include <oxKernel/oxXML.h>

#include "oxdae_bench_report.h"
#include "oxdae_document_generator.h"
#include "oxdae_floor.h"

namespace {

using namespace OxDAEReader;
using OxKernel::oxXMLTextValue;

constexpr size_t kTextBytes = size_t{1} << 20;
constexpr uint64_t kSmallDocumentBytes = 1'000'000;

const std::string& FloatText() {
  static const std::string text = oxdae_bench::MakeFloatText(kTextBytes, 7);
  return text;
}

const std::string& IndexText() {
  static const std::string text = oxdae_bench::MakeIndexText(kTextBytes, 7);
  return text;
}

oxXMLTextValue TextValue(const std::string& text, const char* tag) {
  return oxXMLTextValue(text.data(), text.size(), tag);
}

// Bytes per second of `bytes` handled per iteration, and values per second.
void SetRates(benchmark::State& state, size_t bytes, size_t values) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.counters["values"] = benchmark::Counter(static_cast<double>(state.iterations() * values),
                                                benchmark::Counter::kIsRate);
}

OxKernel::oxArray<float> ParsedFloats() {
  const oxXMLTextValue value = TextValue(FloatText(), "float_array");
  OxKernel::oxArray<float> values(value.CountTokens());
  unsigned int parsed = 0;
  value.ParseFloats(values.data(), static_cast<unsigned int>(values.size()), parsed);
  return values;
}

OxKernel::oxArray<int32_t> ParsedInts() {
  OxKernel::oxArray<int32_t> values;
  TextValue(IndexText(), "p").AppendInts(values);
  return values;
}

// --- Number texts ------------------------------------------------------------------

void BM_ParseFloats(benchmark::State& state) {
  const oxXMLTextValue value = TextValue(FloatText(), "float_array");
  std::vector<float> out(value.CountTokens());
  const auto count = static_cast<unsigned int>(out.size());
  for (auto _ : state) {
    unsigned int parsed = 0;
    value.ParseFloats(out.data(), count, parsed);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  SetRates(state, FloatText().size(), count);
}
BENCHMARK(BM_ParseFloats);

void BM_ParseInts(benchmark::State& state) {
  const oxXMLTextValue value = TextValue(IndexText(), "p");
  std::vector<int32_t> out(value.CountTokens());
  const auto count = static_cast<unsigned int>(out.size());
  for (auto _ : state) {
    unsigned int parsed = 0;
    value.ParseInts(out.data(), count, parsed);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  SetRates(state, IndexText().size(), count);
}
BENCHMARK(BM_ParseInts);

// AppendInts into a new list each time, as a <p> is read: a counting pass,
// one allocation, then the conversion.
void BM_AppendInts(benchmark::State& state) {
  const oxXMLTextValue value = TextValue(IndexText(), "p");
  size_t count = 0;
  for (auto _ : state) {
    OxKernel::oxArray<int32_t> list;
    value.AppendInts(list);
    count = list.size();
    benchmark::DoNotOptimize(list.data());
  }
  SetRates(state, IndexText().size(), count);
}
BENCHMARK(BM_AppendInts);

// Writes one element holding `values` to a new memory writer; returns the
// document's size.
template <class T>
size_t WriteNumbers(const OxKernel::oxArray<T>& values) {
  OxKernel::oxRefPtr<OxKernel::oxXMLWriter> writer;
  OxKernel::oxXMLFactory::Instance(0).CreateWriter(writer);
  writer->StartElement("values");
  writer->EndAttributes();
  const auto count = static_cast<unsigned int>(values.size());
  if constexpr (std::is_same_v<T, float>) {
    writer->GetTextWriter()->WriteFloats(values.data(), count);
  } else {
    writer->GetTextWriter()->WriteInts(values.data(), count);
  }
  writer->Close();
  return writer->GetBuffer().size();
}

template <class T>
void WriteNumbersBenchmark(benchmark::State& state, const OxKernel::oxArray<T>& values) {
  size_t bytes = 0;
  for (auto _ : state) {
    bytes = WriteNumbers(values);
    benchmark::DoNotOptimize(bytes);
  }
  SetRates(state, bytes, values.size());
}

void BM_WriteFloats(benchmark::State& state) {
  WriteNumbersBenchmark(state, ParsedFloats());
}
BENCHMARK(BM_WriteFloats);

void BM_WriteInts(benchmark::State& state) {
  WriteNumbersBenchmark(state, ParsedInts());
}
BENCHMARK(BM_WriteInts);

// --- A small document ----------------------------------------------------------------

// A generated document in a temporary file, removed at the end.
struct SmallDocument {
  oxdae_bench::TempFile file{"oxdae_micro_bench", ".dae"};
  std::string path = file.Path();
  uint64_t bytes = oxdae_bench::WriteDocumentFile({kSmallDocumentBytes, 1}, path);
};

void Load(benchmark::State& state, const SmallDocument& document) {
  const OxKernel::oxURI uri(document.path);
  for (auto _ : state) {
    oxDAEFile file;
    if (file.Load(uri) != 0) state.SkipWithError("Load failed");
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * document.bytes));
}

void Floor(benchmark::State& state, const SmallDocument& document) {
  for (auto _ : state) {
    if (!oxdae_bench::LoadFloor(document.path).ok) state.SkipWithError("not XML");
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * document.bytes));
}

void SaveToString(benchmark::State& state, const SmallDocument& document) {
  oxDAEFile file;
  if (file.Load(OxKernel::oxURI(document.path)) != 0) state.SkipWithError("Load failed");
  size_t bytes = 0;
  for (auto _ : state) {
    oxString xml;
    file.SaveToString(xml);
    bytes = xml.size();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void RegisterDocumentBenchmarks(const SmallDocument& document) {
  using Body = void (*)(benchmark::State&, const SmallDocument&);
  const std::pair<const char*, Body> kBenchmarks[] = {
      {"BM_Load_1MB", Load}, {"BM_Floor_1MB", Floor}, {"BM_SaveToString_1MB", SaveToString}};
  for (const auto& [name, body] : kBenchmarks) {
    benchmark::RegisterBenchmark(name, [&document, body](benchmark::State& state) {
      body(state, document);
    })->Unit(benchmark::kMillisecond);
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  oxDAEReadWriteModule::Init(0);
  {
    // The generated document is clean; anything logged would only slow the
    // loop down and clutter the table.
    const OxKernel::oxScopedLogSink quiet([](const OxKernel::oxLogRecord&) {});
    const SmallDocument document;
    RegisterDocumentBenchmarks(document);
    benchmark::RunSpecifiedBenchmarks();
  }
  benchmark::Shutdown();
  oxDAEReadWriteModule::Uninit(0);
  return 0;
}
