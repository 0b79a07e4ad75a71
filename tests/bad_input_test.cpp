// Files that are not COLLADA documents, or are unusual ones: empty, truncated,
// not XML, binary, missing, other encodings, very deep, and reloading.
#include "oxTestSupport.h"

#include <filesystem>

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::NestedNodes;
using oxtest::Warning;

OX_DOCUMENT_SUITE(BadInput);

namespace {

using oxtest::kNoLog;

// The error the XML reader logs for a file it cannot parse.
oxtest::LogEntry ParseError(const oxtest::TempFile& file, std::string_view why, int offset) {
  return Error("cannot parse '" + file.Path() + "': " + std::string(why) + " at byte offset " +
               std::to_string(offset));
}

// A few hundred bytes that begin like a JPEG image.
std::string JpegLikeBytes() {
  std::string bytes = "\xFF\xD8\xFF\xE0";
  for (int i = 0; i < 300; ++i)
    bytes += static_cast<char>((i * 37) & 0xFF);
  return bytes;
}

// UTF-16 code units of a UTF-8 text made of one- and two-byte sequences.
std::u16string ToUTF16(std::string_view utf8) {
  std::u16string out;
  for (size_t i = 0; i < utf8.size(); ++i) {
    const auto c = static_cast<unsigned char>(utf8[i]);
    if (c < 0x80) {
      out += static_cast<char16_t>(c);
      continue;
    }
    const auto next = static_cast<unsigned char>(utf8[++i]);
    out += static_cast<char16_t>(((c & 0x1F) << 6) | (next & 0x3F));
  }
  return out;
}

// The bytes of `utf8` as UTF-16 with a byte-order mark.
std::string UTF16WithBOM(std::string_view utf8, bool bigEndian) {
  std::u16string units(1, u'\uFEFF');
  units += ToUTF16(utf8);
  std::string bytes;
  for (char16_t unit : units) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

// A small document with a non-ASCII text, an asset, a library and a scene.
const std::string kEncodedDocument = Collada(
    "<asset><contributor><author>Zo\xC3\xAB M\xC3\xBCller</author></contributor>"
    "<unit name=\"cm\" meter=\"0.01\"/></asset>"
    "<library_visual_scenes><visual_scene id=\"vs\" name=\"Sc\xC3\xA8ne\"/>"
    "</library_visual_scenes><scene><instance_visual_scene url=\"#vs\"/></scene>");

}  // namespace

// --- Files that are not documents -------------------------------------------------------

TEST_F(BadInput, EmptyFileIsNotWellFormed) {
  const oxtest::TempFile file("");
  EXPECT_EQ(document.Load(file.URI()), OxKernel::kXMLNotWellFormed);
  EXPECT_EQ(document.GetRoot(), nullptr);
  EXPECT_EQ(document.GetElements().size(), 0u);
  EXPECT_EQ(log.entries, std::vector{ParseError(file, "No document element found", 0)});
}

TEST_F(BadInput, TruncatedDocumentIsNotWellFormed) {
  const oxtest::TempFile file(R"(<COLLADA version="1.4.1"><asset><unit meter="1"/>)");
  EXPECT_EQ(document.Load(file.URI()), -31);
  EXPECT_EQ(document.GetRoot(), nullptr);
  EXPECT_EQ(log.entries, std::vector{ParseError(file, "Start-end tags mismatch", 48)});
}

TEST_F(BadInput, PlainTextIsNotWellFormed) {
  const oxtest::TempFile file("hello world, this is not xml\n", ".txt");
  EXPECT_EQ(document.Load(file.URI()), OxKernel::kXMLNotWellFormed);
  EXPECT_EQ(document.GetRoot(), nullptr);
  EXPECT_EQ(log.entries, std::vector{ParseError(file, "No document element found", 28)});
}

TEST_F(BadInput, BinaryBytesNamedDaeAreNotWellFormed) {
  const oxtest::TempFile file(JpegLikeBytes());
  EXPECT_EQ(document.Load(file.URI()), OxKernel::kXMLNotWellFormed);
  EXPECT_EQ(document.GetRoot(), nullptr);
  EXPECT_EQ(document.GetElements().size(), 0u);
  EXPECT_EQ(log.entries, std::vector{ParseError(file, "No document element found", 303)});
}

TEST_F(BadInput, MissingFileCannotBeOpened) {
  EXPECT_EQ(document.Load(OxKernel::oxURI("/nonexistent-folder/missing.dae")),
            OxKernel::kXMLCannotOpen);
  EXPECT_EQ(document.GetRoot(), nullptr);
  EXPECT_EQ(log.entries,
            (std::vector{Error("cannot open '/nonexistent-folder/missing.dae': No such file or "
                               "directory")}));
}

TEST_F(BadInput, FolderCannotBeReadAsADocument) {
  const std::string folder = std::filesystem::temp_directory_path().string();
  EXPECT_EQ(document.Load(OxKernel::oxURI(folder)), -30);
  EXPECT_EQ(log.entries, (std::vector{Error("cannot read '" + folder + "': Is a directory")}));
}

TEST_F(BadInput, FailedLoadLeavesThePreviousDocumentCleared) {
  ASSERT_EQ(LoadText(Collada(R"(<library_nodes id="lib"><node sid="s"/></library_nodes>)")), 0);
  const oxtest::TempFile file("not xml");
  EXPECT_EQ(document.Load(file.URI()), -31);
  EXPECT_EQ(document.GetRoot(), nullptr);
  EXPECT_EQ(document.GetElements().size(), 0u);
  EXPECT_EQ(document.ResolveURI("#lib"), nullptr);
  EXPECT_EQ(document.ResolvePath("lib/s"), nullptr);
}

// --- Encodings ---------------------------------------------------------------------------

TEST_F(BadInput, UTF8WithoutBOMIsTheReference) {
  ASSERT_EQ(LoadText(kEncodedDocument), 0);
  EXPECT_EQ(document.GetRoot()->asset->author, "Zo\xC3\xAB M\xC3\xBCller");
  EXPECT_EQ(Find<oxDAEVisualScene>("#vs")->name, "Sc\xC3\xA8ne");
  EXPECT_TRUE(document.GetRoot()->scene->instanceVisualScene->resolved);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(BadInput, UTF8WithBOMLoadsTheSameTree) {
  ASSERT_EQ(LoadText(kEncodedDocument), 0);
  const std::string expected = SaveText();
  ASSERT_EQ(LoadText("\xEF\xBB\xBF" + kEncodedDocument), 0);
  EXPECT_EQ(SaveText(), expected);
  EXPECT_EQ(document.GetRoot()->asset->author, "Zo\xC3\xAB M\xC3\xBCller");
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(BadInput, UTF16LittleEndianWithBOMLoadsTheSameTree) {
  ASSERT_EQ(LoadText(kEncodedDocument), 0);
  const std::string expected = SaveText();
  ASSERT_EQ(LoadText(UTF16WithBOM(kEncodedDocument, false)), 0);
  EXPECT_EQ(SaveText(), expected);
  EXPECT_EQ(Find<oxDAEVisualScene>("#vs")->name, "Sc\xC3\xA8ne");
  EXPECT_EQ(document.GetRoot()->asset->unitMeter, 0.01f);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(BadInput, UTF16BigEndianWithBOMLoadsTheSameTree) {
  ASSERT_EQ(LoadText(kEncodedDocument), 0);
  const std::string expected = SaveText();
  ASSERT_EQ(LoadText(UTF16WithBOM(kEncodedDocument, true)), 0);
  EXPECT_EQ(SaveText(), expected);
  EXPECT_EQ(document.GetRoot()->asset->author, "Zo\xC3\xAB M\xC3\xBCller");
  EXPECT_EQ(log.entries, kNoLog);
}

// --- Depth ---------------------------------------------------------------------------------

TEST_F(BadInput, HundredThousandNestedNodesLoadAndTheNextLibraryIsRead) {
  const std::string xml = Collada(
      R"(<library_nodes id="deep">)" + NestedNodes(100'000) +
      R"(</library_nodes><library_geometries id="after"><geometry id="g"/></library_geometries>)");
  ASSERT_EQ(LoadText(xml), 0);
  const auto& libraries = document.GetRoot()->libraries;
  ASSERT_EQ(libraries.size(), 2u);
  EXPECT_EQ(libraries[0]->id, "deep");
  // Nodes are read down to the reader's depth bound; below it nothing is
  // entered, which is said once.
  EXPECT_EQ(libraries[0]->children.size(), 1u);
  EXPECT_EQ(libraries[1]->id, "after");
  EXPECT_NE(Find<oxDAEGeometry>("#g"), nullptr);
  EXPECT_EQ(log.entries, (std::vector<oxtest::LogEntry>{
                             oxtest::Error("elements nested deeper than 1000 levels at <node> "
                                           "(byte offset 6091); their content is skipped")}));
}

TEST_F(BadInput, HundredThousandNestedUnknownElementsAreSkippedWithOneWarning) {
  std::string deep;
  for (int i = 0; i < 100'000; ++i)
    deep += "<x>";
  for (int i = 0; i < 100'000; ++i)
    deep += "</x>";
  ASSERT_EQ(LoadText(Collada(deep + R"(<library_nodes id="after"/>)")), 0);
  ASSERT_EQ(document.GetRoot()->libraries.size(), 1u);
  EXPECT_EQ(document.GetRoot()->libraries[0]->id, "after");
  EXPECT_EQ(log.entries, (std::vector{Warning("unknown element <x> in <COLLADA>")}));
}

// --- Reloading -------------------------------------------------------------------------------

TEST_F(BadInput, SecondDocumentReplacesTheFirstWithoutReachingItsElements) {
  ASSERT_EQ(LoadText(Collada(R"(
    <library_visual_scenes id="lib"><visual_scene id="first" sid="s"/></library_visual_scenes>
    <scene><instance_visual_scene url="#first"/></scene>)")),
            0);
  ASSERT_TRUE(document.GetRoot()->scene->instanceVisualScene->resolved);
  ASSERT_EQ(LoadText(Collada(R"(
    <scene><instance_visual_scene url="#second"/></scene>
    <library_visual_scenes><visual_scene id="second"/></library_visual_scenes>)")),
            0);
  EXPECT_EQ(log.entries, kNoLog);
  EXPECT_EQ(document.ResolveURI("#first"), nullptr);
  EXPECT_EQ(document.ResolvePath("first"), nullptr);
  ASSERT_EQ(document.GetElementsToUpdate().size(), 1u);
  const oxDAEInstance* instance = document.GetRoot()->scene->instanceVisualScene;
  EXPECT_EQ(document.GetElementsToUpdate()[0], instance);
  EXPECT_EQ(instance->target, Find<oxDAEVisualScene>("#second"));
  EXPECT_EQ(SaveText(),
            "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
            "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" "
            "version=\"1.4.1\">\n"
            "  <library_visual_scenes>\n"
            "    <visual_scene id=\"second\"/>\n"
            "  </library_visual_scenes>\n"
            "  <scene>\n"
            "    <instance_visual_scene url=\"#second\"/>\n"
            "  </scene>\n"
            "</COLLADA>\n");
}

TEST_F(BadInput, DocumentCanBeLoadedManyTimesInARow) {
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(LoadText(Collada(R"(<library_nodes id="n"><node sid="s"/></library_nodes>
      <scene><instance_visual_scene url="#n"/></scene>)")),
              0);
    EXPECT_EQ(document.GetElements().size(), 5u);
    EXPECT_EQ(document.GetElementsToUpdate().size(), 1u);
    EXPECT_NE(document.ResolvePath("n/s"), nullptr);
  }
}
