// GetReferencedFilePath: the local file an <image>'s init_from names, in
// the forms real exporters write.
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>

#include "oxDAEReadWrite/oxDAEReadWrite_FilePath.h"
#include "oxTestSupport.h"

using namespace OxDAEReader;
namespace fs = std::filesystem;

namespace {

// A fresh folder holding the document "doc.dae" (which need not exist) and
// the pictures a test creates; removed with the fixture.
class FilePath : public ::testing::Test {
 protected:
  void SetUp() override {
    static std::atomic<unsigned> counter{0};
    m_folder = (fs::temp_directory_path() /
                ("oxdae_path_" + std::to_string(getpid()) + "_" + std::to_string(counter++)))
                   .string();
    fs::create_directories(m_folder);
  }
  void TearDown() override { fs::remove_all(m_folder); }

  // Creates the file `relative` (and its folders) under the folder; its path.
  std::string Create(const std::string& relative) const {
    const fs::path path = fs::path(m_folder) / relative;
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "picture";
    return path.string();
  }
  std::string In(const std::string& relative) const { return m_folder + "/" + relative; }
  OxKernel::oxURI Document() const { return OxKernel::oxURI(In("doc.dae")); }
  std::string PathOf(const std::string& reference) const {
    return GetReferencedFilePath(Document(), oxString(reference));
  }

  std::string m_folder;
};

}  // namespace

TEST_F(FilePath, RelativePathIsTakenAgainstTheDocumentFolder) {
  Create("tex/a.png");
  EXPECT_EQ(PathOf("tex/a.png"), In("tex/a.png"));
  EXPECT_EQ(PathOf("./tex/a.png"), In("tex/a.png"));
}

TEST_F(FilePath, DotSegmentsAreRemoved) {
  Create("X/top.tga");
  const OxKernel::oxURI document(In("Collada/model.dae"));
  EXPECT_EQ(GetReferencedFilePath(document, "./../X/top.tga"), In("X/top.tga"));
}

TEST_F(FilePath, PercentEscapesAreDecoded) {
  Create("With Spaces/Pass Image.png");
  EXPECT_EQ(PathOf("./With%20Spaces/Pass%20Image.png"), In("With Spaces/Pass Image.png"));
}

TEST_F(FilePath, RawSpacesAreKept) {
  Create("With Spaces/Pass Image.png");
  EXPECT_EQ(PathOf("With Spaces/Pass Image.png"), In("With Spaces/Pass Image.png"));
}

TEST_F(FilePath, BlanksAroundTheReferenceAreDropped) {
  Create("a.png");
  EXPECT_EQ(PathOf("\n    a.png  \t"), In("a.png"));
}

TEST_F(FilePath, HashAndQuestionMarkArePartOfTheName) {
  Create("tex#1?.png");
  EXPECT_EQ(PathOf("tex#1?.png"), In("tex#1?.png"));
}

TEST_F(FilePath, BackslashesSeparateFolders) {
  Create("tex/a.png");
  EXPECT_EQ(PathOf("tex\\a.png"), In("tex/a.png"));
  EXPECT_EQ(PathOf(".\\tex\\a.png"), In("tex/a.png"));
}

TEST_F(FilePath, AbsoluteFileURIIsDecoded) {
  const std::string picture = Create("abs dir/a b.png");
  EXPECT_EQ(PathOf(OxKernel::oxURI::FromFilePath(picture).GetString()), picture);
  EXPECT_EQ(PathOf("file://localhost" + In("abs%20dir/a%20b.png")), picture);
  EXPECT_EQ(PathOf("FILE://" + In("abs%20dir/a%20b.png")), picture);
}

TEST_F(FilePath, AbsolutePathStandsAsItIs) {
  const std::string picture = Create("a.png");
  EXPECT_EQ(GetReferencedFilePath(OxKernel::oxURI("/elsewhere/doc.dae"), oxString(picture)),
            picture);
}

TEST_F(FilePath, MissingRelativePathIsReturnedAbsolute) {
  EXPECT_EQ(PathOf("tex/missing.png"), In("tex/missing.png"));
  EXPECT_EQ(PathOf("../up/missing.png"),
            fs::path(m_folder).parent_path().string() + "/up/missing.png");
}

TEST_F(FilePath, MissingAbsolutePathIsFoundByItsTailBesideTheDocument) {
  Create("tex/a.png");
  EXPECT_EQ(PathOf("/home/artist/project/tex/a.png"), In("tex/a.png"));
  EXPECT_EQ(PathOf("/home/artist/project/tex/b.png"), "/home/artist/project/tex/b.png");
}

TEST_F(FilePath, DrivePathWithBackslashesIsFoundBesideTheDocument) {
  Create("tex/a.png");
  EXPECT_EQ(PathOf("C:\\work\\tex\\a.png"), In("tex/a.png"));
  EXPECT_EQ(PathOf("C:/work/tex/a.png"), In("tex/a.png"));
  EXPECT_EQ(PathOf("d|/work/tex/a.png"), In("tex/a.png"));
}

TEST_F(FilePath, LongestTailIsTriedFirst) {
  Create("a.png");
  Create("tex/a.png");
  EXPECT_EQ(PathOf("C:\\tex\\a.png"), In("tex/a.png"));
  EXPECT_EQ(PathOf("C:\\other\\a.png"), In("a.png"));
}

TEST_F(FilePath, DriveFileURIsInEveryForm) {
  Create("tex/a.png");
  for (const char* reference : {"file:///C:/tex/a.png", "file://C:/tex/a.png",
                                "file://C|/tex/a.png", "file:///C|/tex/a.png", "file:C:/tex/a.png",
                                "file:///C:\\tex\\a.png", "file:///C:/tex/a%2Epng"}) {
    EXPECT_EQ(PathOf(reference), In("tex/a.png")) << reference;
  }
}

TEST_F(FilePath, MissingDrivePathIsReturnedAsWritten) {
  EXPECT_EQ(PathOf("C:\\tex\\a%20b.png"), "C:/tex/a b.png");
  EXPECT_EQ(PathOf("file://C|/tex/a.png"), "C:/tex/a.png");
  EXPECT_EQ(PathOf("file:///C:/tex/a.png"), "C:/tex/a.png");
}

TEST_F(FilePath, DrivePathIsNeverOpenedAgainstTheCurrentFolder) {
  // "C:/a.png" is a valid relative name here; the exporter meant a drive.
  Create("C:/a.png");
  const fs::path current = fs::current_path();
  fs::current_path(m_folder);
  const std::string path = GetReferencedFilePath(OxKernel::oxURI("/elsewhere/doc.dae"), "C:/a.png");
  const bool exists = ReferencedFileExists(oxString(path));
  const bool relativeExists = ReferencedFileExists("./C:/a.png");
  fs::current_path(current);
  EXPECT_EQ(path, "C:/a.png");
  EXPECT_FALSE(exists);
  EXPECT_TRUE(relativeExists);
}

TEST_F(FilePath, ExistenceIsThatOfARegularFile) {
  const std::string picture = Create("a.png");
  EXPECT_TRUE(ReferencedFileExists(oxString(picture)));
  EXPECT_FALSE(ReferencedFileExists(oxString(m_folder)));
  EXPECT_FALSE(ReferencedFileExists(oxString(In("b.png"))));
  EXPECT_FALSE(ReferencedFileExists("//server/a.png"));
  EXPECT_FALSE(ReferencedFileExists(""));
}

TEST_F(FilePath, NetworkPathIsNotOpenedAsALocalPath) {
  // "//tmp/x" is "/tmp/x" to this system; the exporter meant host "tmp".
  const std::string picture = Create("a.png");
  const std::string network = "/" + picture;
  EXPECT_FALSE(ReferencedFileExists(oxString(network)));
  EXPECT_EQ(PathOf("file:/" + picture), picture);
}

TEST_F(FilePath, NetworkSharesAreSearchedBesideTheDocument) {
  Create("share/a.png");
  EXPECT_EQ(PathOf("smb://server/share/a.png"), In("share/a.png"));
  EXPECT_EQ(PathOf("file://server/share/a.png"), In("share/a.png"));
  EXPECT_EQ(PathOf("\\\\server\\share\\a.png"), In("share/a.png"));
  EXPECT_EQ(PathOf("smb://server/other/b.png"), "//server/other/b.png");
}

TEST_F(FilePath, FileURIWithAFolderAsHostFindsTheFolder) {
  // Some exporters write "file://textures/x.png" for a relative path.
  Create("textures/x.png");
  EXPECT_EQ(PathOf("file://textures/x.png"), In("textures/x.png"));
}

TEST_F(FilePath, RelativeFileURIIsTakenAgainstTheDocumentFolder) {
  Create("tex/a.png");
  EXPECT_EQ(PathOf("file:tex/a.png"), In("tex/a.png"));
}

TEST_F(FilePath, TailsStartAfterTheLastParentStep) {
  Create("a.png");
  // The decoded ".." is not removed by the URI rules; no tail climbs it.
  EXPECT_EQ(PathOf("C:/x/%2E%2E/a.png"), In("a.png"));
  // A file above the document's folder is not reached through "..".
  const fs::path outside = fs::path(m_folder + "_outside.png");
  std::ofstream(outside) << "picture";
  const std::string reference = "C:/%2E%2E/" + outside.filename().string();
  const std::string path = PathOf(reference);
  fs::remove(outside);
  EXPECT_EQ(path, "C:/../" + outside.filename().string());
}

TEST_F(FilePath, FoldersAreNotFiles) {
  fs::create_directories(In("tex"));
  EXPECT_EQ(PathOf("C:/tex"), "C:/tex");
}

TEST_F(FilePath, OtherSchemesAndEmptyReferencesNameNoLocalFile) {
  EXPECT_EQ(PathOf("http://example.com/a.png"), "");
  EXPECT_EQ(PathOf(""), "");
  EXPECT_EQ(PathOf("  \n "), "");
}

TEST_F(FilePath, DocumentGivenAsFileURIOrWithBlanksInItsFolder) {
  const std::string picture = Create("My Models 100%/tex/a.png");
  const std::string document = In("My Models 100%/doc.dae");
  EXPECT_EQ(GetReferencedFilePath(OxKernel::oxURI(document), "tex/a.png"), picture);
  EXPECT_EQ(GetReferencedFilePath(OxKernel::oxURI::FromFilePath(document), "tex/a.png"), picture);
}

TEST_F(FilePath, DocumentOfAnotherSchemeGivesNoLocalFile) {
  EXPECT_EQ(GetReferencedFilePath(OxKernel::oxURI("http://example.com/doc.dae"), "a.png"), "");
}

TEST_F(FilePath, HugeReferenceIsSearchedInBoundedTime) {
  Create("x.png");
  std::string reference;
  for (int i = 0; i < 200000; ++i)
    reference += "C:/";
  reference += "x.png";
  // Every tail longer than a file path can be is skipped without a look.
  EXPECT_EQ(PathOf(reference), In("x.png"));
}

TEST_F(FilePath, ReaderCorrectionOfTheReferenceIsUnderstood) {
  Create("tex/a.png");
  for (const char* written :
       {"file://C|/tex/a.png", "file://C:\\tex\\a.png", "file://server/tex/a.png", "./tex/a.png"}) {
    oxString corrected(written);
    oxDAEFile::CorrectURI(corrected);
    EXPECT_EQ(PathOf(corrected), In("tex/a.png")) << written << " read as " << corrected;
  }
}
