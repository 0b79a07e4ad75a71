// Every oxdae command on a `.zae` archive and on standard input ("-"): the
// report is the one of the plain document, pictures are looked up inside
// the archive, and a bad archive is one line and exit status 1.
#include "cli_test_support.h"

using clitest::Oxdae;
using clitest::Quote;

namespace {

// The sample scene packed with its picture, without a manifest.
class CliArchive : public ::testing::Test {
 protected:
  CliArchive()
      : archive(oxtest::MakeArchive({{"scene.dae", oxtest::ReadFile(clitest::kSample)},
                                     {"textures/ground checker.png",
                                      oxtest::ReadFile(std::string(OX_SOURCE_DIR) +
                                                       "/samples/textures/ground checker.png")}}),
                ".zae") {}

  oxtest::TempFile archive;
};

// The commands whose report does not name the file, with their options.
const std::vector<std::string> kReports = {
    "tree --json",  "tree --time 0.5",  "sample --time 0.5 --json",
    "check --json", "materials --json", "materials"};

}  // namespace

TEST_F(CliArchive, EveryReportOfAnArchiveIsThatOfThePlainDocument) {
  for (const std::string& command : kReports) {
    const clitest::ToolRun plain = Oxdae(command + " " + Quote(clitest::kSample));
    const clitest::ToolRun packed = Oxdae(command + " " + Quote(archive.Path()));
    EXPECT_EQ(packed.code, plain.code) << command;
    EXPECT_EQ(packed.out, plain.out) << command;
    EXPECT_EQ(packed.err, plain.err) << command;
  }
}

TEST_F(CliArchive, EveryReportOfStandardInputIsThatOfThePlainDocument) {
  for (const std::string& command : kReports) {
    const clitest::ToolRun plain = Oxdae(command + " " + Quote(clitest::kSample));
    const clitest::ToolRun piped = Oxdae(command + " - < " + Quote(clitest::kSample));
    EXPECT_EQ(piped.code, plain.code) << command;
    EXPECT_EQ(piped.out, plain.out) << command;
    EXPECT_EQ(piped.err, plain.err) << command;
  }
}

TEST_F(CliArchive, InfoNamesTheArchiveOrStandardInput) {
  const clitest::ToolRun packed = Oxdae("info --json " + Quote(archive.Path()));
  EXPECT_EQ(packed.code, 0);
  EXPECT_EQ(packed.Json()["file"], archive.Path());
  EXPECT_EQ(packed.Json()["archiveEntry"], "scene.dae");
  EXPECT_TRUE(Oxdae("info " + Quote(archive.Path()))
                  .out.starts_with("file: " + archive.Path() +
                                   "\narchive entry: scene.dae\nCOLLADA version: 1.4.1\n"));
  const clitest::ToolRun piped = Oxdae("info --json - < " + Quote(archive.Path()));
  EXPECT_EQ(piped.code, 0);
  EXPECT_EQ(piped.Json()["file"], "-");
  EXPECT_EQ(piped.Json()["archiveEntry"], "scene.dae");
  EXPECT_FALSE(Oxdae("info --json " + Quote(clitest::kSample)).Json().contains("archiveEntry"));
  EXPECT_EQ(piped.Json()["geometries"], packed.Json()["geometries"]);
}

TEST_F(CliArchive, TexturesAreLookedUpInsideTheArchive) {
  const clitest::ToolRun run = Oxdae("textures --json " + Quote(archive.Path()));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.Json(), clitest::json::parse(R"({"images":[{"id":"checker",
      "init_from":"textures/ground%20checker.png",
      "path":")" + archive.Path() + R"(!/textures/ground checker.png","exists":true}]})"));
}

TEST_F(CliArchive, TexturesOfStandardInputAreNamedAfterIt) {
  const clitest::ToolRun run = Oxdae("textures - < " + Quote(archive.Path()));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out,
            "image    init_from                      file          path\n"
            "checker  textures/ground%20checker.png  ok            -!/textures/ground checker.png\n"
            "1 image(s), 0 missing\n");
}

TEST_F(CliArchive, PictureMissingFromTheArchiveExitsThree) {
  const oxtest::TempFile bare(
      oxtest::MakeArchive({{"scene.dae", oxtest::ReadFile(clitest::kSample)}}), ".zae");
  const clitest::ToolRun run = Oxdae("textures --json " + Quote(bare.Path()));
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.Json()["images"][0]["path"], bare.Path() + "!/textures/ground checker.png");
  EXPECT_EQ(run.Json()["images"][0]["exists"], false);
}

TEST_F(CliArchive, ResaveWritesThePlainDocument) {
  const oxtest::TempFile fromArchive("", ".dae");
  const oxtest::TempFile fromPlain("", ".dae");
  ASSERT_EQ(Oxdae("resave " + Quote(archive.Path()) + " " + Quote(fromArchive.Path())).code, 0);
  ASSERT_EQ(Oxdae("resave " + Quote(clitest::kSample) + " " + Quote(fromPlain.Path())).code, 0);
  const std::string saved = oxtest::ReadFile(fromArchive.Path());
  EXPECT_TRUE(saved.starts_with("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<COLLADA "));
  EXPECT_TRUE(saved == oxtest::ReadFile(fromPlain.Path()));
}

TEST_F(CliArchive, ResaveFromStandardInputToStandardOutput) {
  const clitest::ToolRun run = Oxdae("resave - - < " + Quote(archive.Path()));
  EXPECT_EQ(run.code, 0);
  const oxtest::TempFile fromPlain("", ".dae");
  ASSERT_EQ(Oxdae("resave " + Quote(clitest::kSample) + " " + Quote(fromPlain.Path())).code, 0);
  EXPECT_TRUE(run.out == oxtest::ReadFile(fromPlain.Path()));
}

TEST_F(CliArchive, BadArchiveIsOneLineAndExitOne) {
  const oxtest::TempFile bad("not a zip", ".zae");
  const clitest::ToolRun run = Oxdae("info " + Quote(bad.Path()));
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "oxdae: '" + bad.Path() + "' is not a zip archive\n");
}

TEST_F(CliArchive, ArchiveWithoutADocumentIsOneLineAndExitOne) {
  const oxtest::TempFile two(
      oxtest::MakeArchive({{"a.dae", "<COLLADA/>"}, {"b.dae", "<COLLADA/>"}}), ".zae");
  const clitest::ToolRun run = Oxdae("check " + Quote(two.Path()));
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "oxdae: '" + two.Path() +
                         "' holds no manifest.xml and 2 .dae files at its root (a.dae, b.dae): "
                         "it does not say which one to read\n");
}

TEST_F(CliArchive, MalformedStandardInputIsOneLineAndExitOne) {
  const oxtest::TempFile bad("<COLLADA>", ".txt");
  const clitest::ToolRun run = Oxdae("tree - < " + Quote(bad.Path()));
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "oxdae: cannot parse '-': Start-end tags mismatch at byte offset 8\n");
}
