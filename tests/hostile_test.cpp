// Hostile documents: extreme nesting, huge attributes and texts, documents
// that are mostly comments, UTF-16 without a byte-order mark, invalid UTF-8,
// files cut short, and files the process may not read. Each gives a defined
// result and message; the large inputs are generated here, never stored.
#include "oxTestSupport.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;
using oxtest::kNoLog;

OX_DOCUMENT_SUITE(Hostile);

namespace {

// The error the XML reader logs for a file it cannot parse.
oxtest::LogEntry ParseError(const oxtest::TempFile& file, std::string_view why, size_t offset) {
  return Error("cannot parse '" + file.Path() + "': " + std::string(why) + " at byte offset " +
               std::to_string(offset));
}

// The bytes of an ASCII text as UTF-16 without a byte-order mark.
std::string ASCIIToUTF16(std::string_view ascii, bool bigEndian) {
  std::string bytes;
  for (char c : ascii) {
    bytes += bigEndian ? '\0' : c;
    bytes += bigEndian ? c : '\0';
  }
  return bytes;
}

// `xml` with its one "@" replaced by `size` copies of `filler`, built in one
// allocation: the large inputs are made at run time, and quickly.
std::string AroundFiller(std::string_view xml, size_t size, char filler) {
  const size_t at = xml.find('@');
  std::string out;
  out.reserve(xml.size() - 1 + size);
  out.append(xml.substr(0, at)).append(size, filler).append(xml.substr(at + 1));
  return out;
}

// A small document with a library, a scene and an asset, used by the
// comment, encoding, truncation and permission tests.
const std::string kSmallDocument =
    "<?xml version=\"1.0\"?>\n" + Collada(R"(<asset><unit meter="0.01"/></asset>
<library_visual_scenes><visual_scene id="vs" name="Scene"><node id="n" sid="s">
<translate>1 2 3</translate></node></visual_scene></library_visual_scenes>
<scene><instance_visual_scene url="#vs"/></scene>)");

}  // namespace

// --- Size and shape ----------------------------------------------------------------------

TEST_F(Hostile, ThreeHundredThousandNestedNodesStopAtTheDepthBound) {
  const std::string xml =
      Collada(R"(<library_visual_scenes><visual_scene id="deep">)" + oxtest::NestedNodes(300'000) +
              R"(</visual_scene><visual_scene id="after"/></library_visual_scenes>)");
  ASSERT_EQ(LoadText(xml), 0);
  const auto scenes = All<oxDAEVisualScene>();
  ASSERT_EQ(scenes.size(), 2u);
  EXPECT_EQ(scenes[1]->id, "after");
  // Nodes down to the bound are read; everything below it is not.
  EXPECT_EQ(All<oxDAENode>().size(), 998u);
  EXPECT_EQ(log.entries, (std::vector{Error("elements nested deeper than 1000 levels at <node> "
                                            "(byte offset 6107); their content is skipped")}));
}

TEST_F(Hostile, TwentyMegabyteAttributeIsKeptWhole) {
  const size_t size = 20u << 20;
  const oxtest::TempFile file(
      AroundFiller(Collada(R"(<library_nodes id="lib"><node id="big" name="@"/></library_nodes>)"
                           R"(<library_nodes id="after"/>)"),
                   size, 'a'));
  ASSERT_EQ(document.Load(file.URI()), 0);
  const oxDAENode* node = Find<oxDAENode>("#big");
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->name.size(), size);
  EXPECT_EQ(node->name.find_first_not_of('a'), std::string::npos);
  EXPECT_NE(document.ResolveURI("#after"), nullptr);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(Hostile, HundredMegabyteTextNodeIsKeptWhole) {
  const size_t size = 100u << 20;
  const oxtest::TempFile file(
      AroundFiller(Collada("<asset><contributor><author>@</author></contributor></asset>"
                           R"(<library_nodes id="after"/>)"),
                   size, 'x'));
  ASSERT_EQ(document.Load(file.URI()), 0);
  const oxString& author = document.GetRoot()->asset->author;
  EXPECT_EQ(author.size(), size);
  EXPECT_EQ(author.find_first_not_of('x'), std::string::npos);
  EXPECT_NE(document.ResolveURI("#after"), nullptr);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(Hostile, DocumentThatIsMostlyCommentsGivesTheSameTree) {
  ASSERT_EQ(LoadText(kSmallDocument), 0);
  const std::string expected = SaveText();
  // One comment after every tag end, sized so that the comments make 95% of
  // the bytes: 19 bytes of comment for every byte of document.
  const size_t tagEnds = std::ranges::count(kSmallDocument, '>');
  const size_t commentSize = 19 * kSmallDocument.size() / tagEnds;
  const std::string comment = "<!--" + std::string(commentSize - 7, '.') + "-->";
  std::string xml;
  for (char c : kSmallDocument) {
    xml += c;
    if (c == '>') xml += comment;
  }
  ASSERT_GE(xml.size() - kSmallDocument.size(), xml.size() * 95 / 100);
  ASSERT_EQ(LoadText(xml), 0);
  EXPECT_EQ(SaveText(), expected);
  EXPECT_EQ(log.entries, kNoLog);
}

// --- Encodings ------------------------------------------------------------------------

TEST_F(Hostile, UTF16LittleEndianWithoutBOMIsRecognisedFromTheDeclaration) {
  ASSERT_EQ(LoadText(kSmallDocument), 0);
  const std::string expected = SaveText();
  ASSERT_EQ(LoadText(ASCIIToUTF16(kSmallDocument, false)), 0);
  EXPECT_EQ(SaveText(), expected);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(Hostile, UTF16BigEndianWithoutBOMIsRecognisedFromTheDeclaration) {
  ASSERT_EQ(LoadText(kSmallDocument), 0);
  const std::string expected = SaveText();
  ASSERT_EQ(LoadText(ASCIIToUTF16(kSmallDocument, true)), 0);
  EXPECT_EQ(SaveText(), expected);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(Hostile, UTF16LittleEndianWithoutBOMOrDeclarationIsRecognisedFromTheFirstTag) {
  const std::string xml = Collada(R"(<library_nodes id="n"/>)");
  ASSERT_EQ(LoadText(xml), 0);
  const std::string expected = SaveText();
  ASSERT_EQ(LoadText(ASCIIToUTF16(xml, false)), 0);
  EXPECT_EQ(SaveText(), expected);
  EXPECT_NE(document.ResolveURI("#n"), nullptr);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(Hostile, UTF16BigEndianWithoutBOMOrDeclarationIsRecognisedFromTheFirstTag) {
  const std::string xml = Collada(R"(<library_nodes id="n"/>)");
  ASSERT_EQ(LoadText(xml), 0);
  const std::string expected = SaveText();
  ASSERT_EQ(LoadText(ASCIIToUTF16(xml, true)), 0);
  EXPECT_EQ(SaveText(), expected);
  EXPECT_NE(document.ResolveURI("#n"), nullptr);
  EXPECT_EQ(log.entries, kNoLog);
}

TEST_F(Hostile, InvalidUTF8BytesArePassedThroughUnchanged) {
  // A lone continuation byte, a truncated sequence and a byte never used in UTF-8.
  const std::string bad = "a\x80z\xC3 \xFF";
  ASSERT_EQ(
      LoadText(Collada(R"(<library_nodes><node id="n" name=")" + bad + R"("/></library_nodes>)")),
      0);
  EXPECT_EQ(Find<oxDAENode>("#n")->name, bad);
  EXPECT_EQ(log.entries, kNoLog);
}

// --- Files cut short and unreadable files ----------------------------------------------------

TEST_F(Hostile, FileCutAtEveryTenthOfItsLengthIsNotWellFormed) {
  // What the parser says for the document cut at 10%, 20%, ... 90%.
  const std::array<std::pair<std::string_view, size_t>, 9> expected{{
      {"Error parsing element attribute", 35},
      {"Error parsing element attribute", 38},
      {"Error parsing start element tag", 104},
      {"Error parsing start element tag", 139},
      {"Error parsing element attribute", 175},
      {"Error parsing element attribute", 210},
      {"Start-end tags mismatch", 244},
      {"Start-end tags mismatch", 268},
      {"Error parsing start element tag", 314},
  }};
  for (size_t tenth = 1; tenth <= 9; ++tenth) {
    SCOPED_TRACE(tenth);
    ASSERT_EQ(LoadText(kSmallDocument), 0);
    const oxtest::TempFile file(kSmallDocument.substr(0, kSmallDocument.size() * tenth / 10));
    log.Clear();
    EXPECT_EQ(document.Load(file.URI()), OxKernel::kXMLNotWellFormed);
    EXPECT_EQ(document.GetRoot(), nullptr);
    EXPECT_EQ(document.GetElements().size(), 0u);
    const auto& [why, offset] = expected[tenth - 1];
    EXPECT_EQ(log.entries, std::vector{ParseError(file, why, offset)});
  }
}

TEST_F(Hostile, FileWithoutReadPermissionCannotBeOpened) {
  const oxtest::TempFile file(kSmallDocument);
  ASSERT_EQ(chmod(file.Path().c_str(), 0), 0);
  // The super-user reads any file: the load then runs in a child that has
  // given up that right.
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(10);
    const int rc = document.Load(file.URI());
    const bool logged =
        log.entries == std::vector{Error("cannot open '" + file.Path() + "': Permission denied")};
    _exit(rc != OxKernel::kXMLCannotOpen ? 11 : !logged ? 12 : document.GetRoot() ? 13 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}
