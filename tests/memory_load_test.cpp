// oxDAEFile::LoadFromMemory: the caller's bytes under a base URI give what
// a file with those bytes at that URI gives. (Every document the suite
// loads through DocumentTest::LoadText is also compared this way.)
#include <chrono>

#include <oxKernel/oxArchive.h>
#include <oxKernel/oxProgress.h>

#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::Error;

namespace {

int LoadString(oxDAEFile& document, std::string_view bytes, std::string_view base) {
  return document.LoadFromMemory(bytes.data(), bytes.size(), OxKernel::oxURI(base));
}

std::string PathOf(const oxDAEFile& document, std::string_view reference) {
  return std::string(GetReferencedFilePath(document, OxKernel::oxString(reference)));
}

const std::string kImage = oxtest::Collada(
    R"(<library_images><image id="i"><init_from>tex/a%20b.png</init_from></image></library_images>)");

}  // namespace

TEST(MemoryLoad, MessagesNameTheBaseURI) {
  oxtest::LogCapture log;
  oxDAEFile document;
  EXPECT_EQ(LoadString(document, "<COLLADA><asset></COLLADA>", "downloads/scene.dae"),
            OxKernel::kXMLNotWellFormed);
  EXPECT_EQ(log.entries, std::vector{Error("cannot parse 'downloads/scene.dae': Start-end tags "
                                           "mismatch at byte offset 18")});
  EXPECT_EQ(document.GetRoot(), nullptr);
}

// A null pointer is read as no bytes, whatever size comes with it.
TEST(MemoryLoad, NullPointerIsAnEmptyDocument) {
  for (const size_t size : {size_t{0}, size_t{100}}) {
    oxtest::LogCapture log;
    oxDAEFile document;
    EXPECT_EQ(document.LoadFromMemory(nullptr, size, OxKernel::oxURI("empty.dae")),
              OxKernel::kXMLNotWellFormed);
    EXPECT_EQ(log.entries, std::vector{Error("cannot parse 'empty.dae': No document element "
                                             "found at byte offset 0")});
  }
  const oxtest::TempFile empty("");
  oxtest::ExpectMemoryLoadMatchesFile("", empty.URI());
}

TEST(MemoryLoad, RelativeReferencesResolveAgainstTheBaseURI) {
  oxtest::LogCapture log;
  oxDAEFile document;
  ASSERT_EQ(LoadString(document, kImage, "/data/scenes/s.dae"), 0);
  EXPECT_EQ(document.GetFileURI().GetString(), "/data/scenes/s.dae");
  EXPECT_EQ(PathOf(document, "tex/a%20b.png"), "/data/scenes/tex/a b.png");
  ASSERT_EQ(LoadString(document, kImage, "file:///srv/models/s.dae"), 0);
  EXPECT_EQ(PathOf(document, "tex/a%20b.png"), "/srv/models/tex/a b.png");
  ASSERT_EQ(LoadString(document, kImage, "http://example.com/s.dae"), 0);
  EXPECT_EQ(PathOf(document, "tex/a%20b.png"), "");
  EXPECT_EQ(log.entries, oxtest::kNoLog);
}

TEST(MemoryLoad, TheCallerMayFreeTheBytesOnReturn) {
  auto bytes = std::make_unique<std::string>(oxtest::Collada(
      R"(<library_geometries><geometry id="g" name="kept"/></library_geometries>)"));
  oxDAEFile document;
  ASSERT_EQ(LoadString(document, *bytes, "s.dae"), 0);
  bytes->assign(bytes->size(), 'x');
  bytes.reset();
  const auto* geometry = oxDAEGeometry::DynamicCast(document.ResolveURI("#g"));
  ASSERT_NE(geometry, nullptr);
  EXPECT_EQ(geometry->name, "kept");
}

TEST(MemoryLoad, SavedTextReadsBackToTheSameText) {
  oxDAEFile document;
  ASSERT_EQ(LoadString(document, kImage, "a.dae"), 0);
  OxKernel::oxString saved;
  ASSERT_EQ(document.SaveToString(saved), 0);
  oxDAEFile again;
  ASSERT_EQ(again.LoadFromMemory(saved.data(), saved.size(), OxKernel::oxURI("b.dae")), 0);
  OxKernel::oxString resaved;
  ASSERT_EQ(again.SaveToString(resaved), 0);
  EXPECT_EQ(resaved, saved);
}

TEST(MemoryLoad, ProgressReportsTheSameValuesAsTheFile) {
  std::string body = "<library_visual_scenes><visual_scene id=\"vs\">";
  for (int i = 0; i < 5000; ++i)
    body += "<node id=\"n" + std::to_string(i) + "\"/>";
  const std::string xml = oxtest::Collada(body + "</visual_scene></library_visual_scenes>");
  const oxtest::TempFile file(xml);
  const auto reports = [&](bool fromMemory) {
    std::vector<double> values;
    OxKernel::oxProgress progress;
    progress.interval = std::chrono::steady_clock::duration::zero();
    progress.onProgress = [&values](double fraction) { values.push_back(fraction); };
    oxDAEFile document;
    const int rc = fromMemory
                       ? document.LoadFromMemory(xml.data(), xml.size(), file.URI(), &progress)
                       : document.Load(file.URI(), &progress);
    EXPECT_EQ(rc, 0);
    return values;
  };
  const std::vector<double> fromFile = reports(false);
  EXPECT_GT(fromFile.size(), 100u);
  EXPECT_EQ(fromFile.back(), 1.0);
  EXPECT_EQ(reports(true), fromFile);
}

TEST(MemoryLoad, BaseURIEndingInZaeReadsTheBytesAsAnArchive) {
  oxtest::LogCapture log;
  oxDAEFile document;
  EXPECT_EQ(LoadString(document, "<COLLADA version=\"1.4.1\"/>", "pack.ZAE"),
            OxKernel::kArchiveNotZip);
  EXPECT_EQ(log.entries, std::vector{Error("'pack.ZAE' is not a zip archive")});
}

TEST(MemoryLoad, ZipBytesAreAnArchiveUnderAnyBaseURI) {
  const std::string zip = oxtest::MakeArchive({{"scene.dae", kImage}, {"tex/a b.png", "png"}});
  oxtest::LogCapture log;
  oxDAEFile document;
  ASSERT_EQ(LoadString(document, zip, "http://example.com/download?id=7"), 0);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  EXPECT_EQ(document.GetArchiveEntry(), "scene.dae");
  const std::string path = PathOf(document, "tex/a%20b.png");
  EXPECT_EQ(path, "http://example.com/download?id=7!/tex/a b.png");
  EXPECT_TRUE(ReferencedFileExists(document, OxKernel::oxString(path)));
}
