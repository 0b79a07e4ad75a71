// Documents read out of `.zae` archives: which entry is read, where picture
// references point, what a damaged or hostile archive gives. Every archive
// is made here with libzip; each bad archive is also loaded from memory,
// which must say the same.
#include <oxKernel/oxArchive.h>

#include "oxTestSupport.h"

using namespace OxDAEReader;
using oxtest::ArchiveEntry;
using oxtest::Error;
using oxtest::LogEntry;
using oxtest::MakeArchive;
using oxtest::Warning;

namespace {

std::string SceneWithGeometry(std::string_view id) {
  return oxtest::Collada(OxKernel::oxConcat(R"(<library_geometries><geometry id=")", id,
                                            R"("/></library_geometries>)"));
}

std::string SceneWithImages(std::initializer_list<std::string_view> references) {
  std::string images;
  int n = 0;
  for (std::string_view reference : references)
    images += OxKernel::oxConcat("<image id=\"i", n++, "\"><init_from>", reference,
                                 "</init_from></image>");
  return oxtest::Collada("<library_images>" + images + "</library_images>");
}

std::string Manifest(std::string_view root) {
  return OxKernel::oxConcat(R"(<?xml version="1.0" encoding="utf-8"?><dae_root>)", root,
                            "</dae_root>");
}

// An archive written to a `.zae` file and loaded into `document`; also
// checks that loading the same bytes from memory gives the same.
class Archive : public ::testing::Test {
 protected:
  int LoadArchive(const std::vector<ArchiveEntry>& entries, std::string_view suffix = ".zae") {
    return LoadBytes(MakeArchive(entries), suffix);
  }
  int LoadBytes(const std::string& bytes, std::string_view suffix = ".zae") {
    file = std::make_unique<oxtest::TempFile>(bytes, suffix);
    oxtest::ExpectMemoryLoadMatchesFile(bytes, file->URI());
    log.Clear();
    return document.Load(file->URI());
  }
  // The archive's name in messages: the URI given to Load.
  std::string Name() const { return file->Path(); }
  std::string PathOf(std::string_view reference) const {
    return std::string(GetReferencedFilePath(document, OxKernel::oxString(reference)));
  }

  std::unique_ptr<oxtest::TempFile> file;
  oxDAEFile document;
  oxtest::LogCapture log;
};

}  // namespace

TEST_F(Archive, ManifestNamesTheDocumentWithEscapesAndAFragment) {
  EXPECT_EQ(LoadArchive({{"decoy.dae", SceneWithGeometry("decoy")},
                         {"models/My Scene.dae", SceneWithGeometry("wanted")},
                         {"manifest.xml", Manifest(" ./models/My%20Scene.dae#scene ")}}),
            0);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  EXPECT_NE(document.ResolveURI("#wanted"), nullptr);
  EXPECT_EQ(document.ResolveURI("#decoy"), nullptr);
  EXPECT_EQ(document.GetArchiveEntry(), "models/My Scene.dae");
  EXPECT_EQ(document.GetFileURI().GetString(), Name());
  EXPECT_EQ(document.GetArchiveEntries(), (OxKernel::oxArray<OxKernel::oxString>{
                                              "decoy.dae", "manifest.xml", "models/My Scene.dae"}));
  EXPECT_TRUE(document.HasArchiveEntry("decoy.dae"));
  EXPECT_FALSE(document.HasArchiveEntry("models"));
}

TEST_F(Archive, ManifestMayWrapItsRootInAnotherElement) {
  EXPECT_EQ(LoadArchive({{"a.dae", SceneWithGeometry("a")},
                         {"b.dae", SceneWithGeometry("b")},
                         {"manifest.xml", "<manifest><dae_root>b.dae</dae_root></manifest>"}}),
            0);
  EXPECT_EQ(document.GetArchiveEntry(), "b.dae");
}

TEST_F(Archive, WithoutManifestTheOneDocumentAtTheRootIsRead) {
  EXPECT_EQ(LoadArchive({{"textures/a.png", "png"},
                         {"sub/other.dae", SceneWithGeometry("other")},
                         {"Scene.DAE", SceneWithGeometry("scene")}}),
            0);
  EXPECT_EQ(log.entries, oxtest::kNoLog);
  EXPECT_EQ(document.GetArchiveEntry(), "Scene.DAE");
  EXPECT_NE(document.ResolveURI("#scene"), nullptr);
}

TEST_F(Archive, ZipBytesUnderAnotherNameAreReadAsAnArchive) {
  EXPECT_EQ(LoadArchive({{"scene.dae", SceneWithGeometry("g")}}, ".dae"), 0);
  EXPECT_EQ(document.GetArchiveEntry(), "scene.dae");
  EXPECT_NE(document.ResolveURI("#g"), nullptr);
}

TEST_F(Archive, PictureReferencesResolveInsideTheArchive) {
  EXPECT_EQ(LoadArchive({{"manifest.xml", Manifest("models/scene.dae")},
                         {"models/scene.dae",
                          SceneWithImages({"../textures/My%20Pic.png", "maps/b.png",
                                           "C:\\work\\models\\maps\\c.png", "missing.png",
                                           "http://example.com/x.png", "../../outside.png", ""})},
                         {"textures/My Pic.png", "png"},
                         {"models/maps/b.png", "png"},
                         {"models/maps/c.png", "png"}}),
            0);
  const std::string prefix = Name() + "!/";
  EXPECT_EQ(PathOf("../textures/My%20Pic.png"), prefix + "textures/My Pic.png");
  EXPECT_EQ(PathOf("maps/b.png"), prefix + "models/maps/b.png");
  EXPECT_EQ(PathOf("C:\\work\\models\\maps\\c.png"), prefix + "models/maps/c.png");
  EXPECT_EQ(PathOf("missing.png"), prefix + "models/missing.png");
  EXPECT_EQ(PathOf("http://example.com/x.png"), "");
  EXPECT_EQ(PathOf("../../outside.png"), prefix + "../outside.png");
  EXPECT_EQ(PathOf(""), "");
  EXPECT_TRUE(ReferencedFileExists(document, OxKernel::oxString(prefix + "textures/My Pic.png")));
  EXPECT_TRUE(ReferencedFileExists(document, OxKernel::oxString(prefix + "models/maps/c.png")));
  EXPECT_FALSE(ReferencedFileExists(document, OxKernel::oxString(prefix + "models/missing.png")));
  EXPECT_FALSE(ReferencedFileExists(document, OxKernel::oxString(prefix + "../outside.png")));
}

TEST_F(Archive, EntriesWhoseNamesLeaveTheArchiveAreNeverResolved) {
  EXPECT_EQ(LoadArchive({{"scene.dae", SceneWithImages({"../evil.png"})},
                         {"../evil.png", "png"},
                         {"/etc/passwd", "root"}}),
            0);
  EXPECT_EQ(log.entries,
            (std::vector{Warning("'" + Name() +
                                 "' holds the entry '../evil.png', whose name leaves the archive; "
                                 "it is never read"),
                         Warning("'" + Name() +
                                 "' holds the entry '/etc/passwd', whose name leaves the archive; "
                                 "it is never read")}));
  EXPECT_EQ(document.GetArchiveEntries(), (OxKernel::oxArray<OxKernel::oxString>{"scene.dae"}));
  EXPECT_EQ(PathOf("../evil.png"), Name() + "!/../evil.png");
  EXPECT_FALSE(ReferencedFileExists(document, OxKernel::oxString(Name() + "!/../evil.png")));
}

TEST_F(Archive, ManifestNamingAnEntryOutsideTheArchiveIsRefused) {
  EXPECT_EQ(LoadArchive({{"manifest.xml", Manifest("sub/../../evil.dae")},
                         {"../evil.dae", SceneWithGeometry("evil")}}),
            kDAENoDocumentInArchive);
  EXPECT_EQ(log.entries, std::vector{Error("the manifest.xml of '" + Name() +
                                           "' names 'sub/../../evil.dae', which is outside the "
                                           "archive")});
  EXPECT_EQ(document.GetRoot(), nullptr);
}

TEST_F(Archive, ADocumentFromAnArchiveSavesAsAPlainDocument) {
  ASSERT_EQ(LoadArchive({{"scene.dae", SceneWithGeometry("g")}}), 0);
  const oxtest::TempFile saved("", ".dae");
  ASSERT_EQ(document.Save(saved.URI()), 0);
  const std::string text = oxtest::ReadFile(saved.Path());
  EXPECT_EQ(text, oxtest::Saved(R"(  <library_geometries>
    <geometry id="g"/>
  </library_geometries>
)"));
}

TEST_F(Archive, SavedDocumentOfAnArchiveEqualsThatOfThePlainFile) {
  const std::string scene = SceneWithImages({"a.png"});
  ASSERT_EQ(LoadArchive({{"scene.dae", scene}, {"a.png", "png"}}), 0);
  OxKernel::oxString fromArchive;
  ASSERT_EQ(document.SaveToString(fromArchive), 0);
  oxDAEFile plain;
  const oxtest::TempFile file(scene);
  ASSERT_EQ(plain.Load(file.URI()), 0);
  OxKernel::oxString fromFile;
  ASSERT_EQ(plain.SaveToString(fromFile), 0);
  EXPECT_EQ(fromArchive, fromFile);
  EXPECT_EQ(plain.GetArchiveEntry(), "");
  EXPECT_TRUE(plain.GetArchiveEntries().empty());
}

TEST_F(Archive, TheNextLoadForgetsTheArchive) {
  ASSERT_EQ(LoadArchive({{"scene.dae", SceneWithGeometry("g")}}), 0);
  const oxtest::TempFile plain(SceneWithGeometry("h"));
  ASSERT_EQ(document.Load(plain.URI()), 0);
  EXPECT_EQ(document.GetArchiveEntry(), "");
  EXPECT_TRUE(document.GetArchiveEntries().empty());
}

// --- Bad archives ---------------------------------------------------------------

TEST_F(Archive, NotAZip) {
  EXPECT_EQ(LoadBytes("<COLLADA version=\"1.4.1\"/>"), OxKernel::kArchiveNotZip);
  EXPECT_EQ(log.entries, std::vector{Error("'" + Name() + "' is not a zip archive")});
  EXPECT_EQ(document.GetRoot(), nullptr);
}

TEST_F(Archive, TruncatedZip) {
  const std::string zip = MakeArchive({{"scene.dae", SceneWithGeometry("g")}});
  EXPECT_EQ(LoadBytes(zip.substr(0, zip.size() - 10)), OxKernel::kArchiveDamaged);
  EXPECT_EQ(log.entries, std::vector{Error("'" + Name() +
                                           "' is a damaged or truncated zip archive: its "
                                           "central directory is missing")});
}

TEST_F(Archive, ManifestNamingAMissingEntry) {
  EXPECT_EQ(LoadArchive({{"manifest.xml", Manifest("gone%20away.dae")},
                         {"scene.dae", SceneWithGeometry("g")}}),
            kDAENoDocumentInArchive);
  EXPECT_EQ(log.entries, std::vector{Error("the manifest.xml of '" + Name() +
                                           "' names 'gone%20away.dae', which the archive does "
                                           "not hold")});
}

TEST_F(Archive, ManifestThatIsNotXML) {
  EXPECT_EQ(LoadArchive({{"manifest.xml", "scene.dae"}, {"scene.dae", SceneWithGeometry("g")}}),
            kDAENoDocumentInArchive);
  EXPECT_EQ(log.entries,
            (std::vector{Error("cannot parse '" + Name() +
                               "!/manifest.xml': No document element found at byte offset 8"),
                         Error("the manifest.xml of '" + Name() + "' is not well-formed XML")}));
}

TEST_F(Archive, ManifestWithoutARoot) {
  EXPECT_EQ(LoadArchive({{"manifest.xml", "<manifest><root>scene.dae</root></manifest>"},
                         {"scene.dae", SceneWithGeometry("g")}}),
            kDAENoDocumentInArchive);
  EXPECT_EQ(log.entries,
            std::vector{Error("the manifest.xml of '" + Name() + "' has no <dae_root>")});
}

TEST_F(Archive, ManifestWithAnEmptyRoot) {
  EXPECT_EQ(LoadArchive({{"manifest.xml", Manifest(" #x ")}, {"scene.dae", "<COLLADA/>"}}),
            kDAENoDocumentInArchive);
  EXPECT_EQ(log.entries,
            std::vector{Error("the manifest.xml of '" + Name() + "' has an empty <dae_root>")});
}

TEST_F(Archive, TwoDocumentsAndNoManifest) {
  EXPECT_EQ(LoadArchive({{"a.dae", SceneWithGeometry("a")}, {"b.dae", SceneWithGeometry("b")}}),
            kDAENoDocumentInArchive);
  EXPECT_EQ(log.entries, std::vector{Error("'" + Name() +
                                           "' holds no manifest.xml and 2 .dae files at its root "
                                           "(a.dae, b.dae): it does not say which one to read")});
}

TEST_F(Archive, SevenDocumentsAndNoManifestNameTheFirstFive) {
  std::vector<ArchiveEntry> entries;
  for (char c = 'a'; c <= 'g'; ++c)
    entries.push_back({std::string(1, c) + ".dae", "<COLLADA/>"});
  EXPECT_EQ(LoadArchive(entries), kDAENoDocumentInArchive);
  EXPECT_EQ(log.entries,
            std::vector{Error("'" + Name() +
                              "' holds no manifest.xml and 7 .dae files at its root (a.dae, "
                              "b.dae, c.dae, d.dae, e.dae, ...): it does not say which one to "
                              "read")});
}

TEST_F(Archive, NoDocumentAtAll) {
  EXPECT_EQ(LoadArchive({{"sub/scene.dae", "<COLLADA/>"}, {"readme.txt", "hi"}}),
            kDAENoDocumentInArchive);
  EXPECT_EQ(
      log.entries,
      std::vector{Error("'" + Name() + "' holds no manifest.xml and no .dae file at its root")});
}

TEST_F(Archive, EmptyArchive) {
  // libzip does not write an archive without entries: its end record alone.
  EXPECT_EQ(LoadBytes(std::string("PK\5\6", 4) + std::string(18, '\0')), kDAENoDocumentInArchive);
  EXPECT_EQ(
      log.entries,
      std::vector{Error("'" + Name() + "' holds no manifest.xml and no .dae file at its root")});
}

TEST_F(Archive, EntryInflatingAThousandTimesBeyondOneGigabyte) {
  std::string zip = MakeArchive({{"scene.dae", SceneWithGeometry("g")}});
  oxtest::SetClaimedSize(zip, "scene.dae", 3'000'000'000u);
  std::unique_ptr<OxKernel::oxArchive> listed;
  ASSERT_EQ(OxKernel::oxArchive::OpenMemory(listed, zip, "listed"), 0);
  const uint64_t stored = listed->GetEntries()[0].compressedSize;
  EXPECT_EQ(LoadBytes(zip), OxKernel::kArchiveTooCompressed);
  EXPECT_EQ(log.entries, std::vector{Error(OxKernel::oxConcat(
                             "'", Name(), "!/scene.dae' would inflate ", stored,
                             " bytes to 3000000000, more than 1000 times as many; it is not "
                             "read"))});
}

TEST_F(Archive, ManifestInflatingAThousandTimesBeyondOneGigabyte) {
  std::string zip =
      MakeArchive({{"manifest.xml", Manifest("scene.dae")}, {"scene.dae", "<COLLADA/>"}});
  oxtest::SetClaimedSize(zip, "manifest.xml", 4'000'000'000u);
  EXPECT_EQ(LoadBytes(zip), OxKernel::kArchiveTooCompressed);
  ASSERT_EQ(log.Count(), 1u);
  EXPECT_TRUE(log.entries[0].text.starts_with("'" + Name() + "!/manifest.xml' would inflate "));
}

TEST_F(Archive, EncryptedDocument) {
  EXPECT_EQ(LoadArchive({{"scene.dae", SceneWithGeometry("g"), true}}),
            OxKernel::kArchiveEncrypted);
  EXPECT_EQ(log.entries, std::vector{Error("'" + Name() +
                                           "!/scene.dae' is encrypted; encrypted entries are not "
                                           "read")});
}

TEST_F(Archive, DocumentThatIsNotWellFormedNamesItsEntry) {
  EXPECT_EQ(LoadArchive({{"scene.dae", "<COLLADA><asset>"}}), OxKernel::kXMLNotWellFormed);
  EXPECT_EQ(log.entries,
            std::vector{Error("cannot parse '" + Name() +
                              "!/scene.dae': Start-end tags mismatch at byte offset 15")});
}

TEST_F(Archive, MissingArchive) {
  oxtest::LogCapture capture;
  EXPECT_EQ(document.Load(OxKernel::oxURI("/nonexistent/scene.zae")), OxKernel::kXMLCannotOpen);
  EXPECT_EQ(capture.entries,
            std::vector{Error("cannot open '/nonexistent/scene.zae': No such file or directory")});
}
