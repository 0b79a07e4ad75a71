// Real documents written by real exporters, listed in the shared corpus's
// MANIFEST.tsv. Runs only when the corpus folder exists. For every COLLADA
// 1.4.x file: it loads, its saved form is well-formed XML that loads again,
// saving converges (the third save equals the second byte for byte), and
// every animation channel that binds when the file is read binds again
// after a resave. Other versions load as an empty root with one version
// error. Each file loads from memory exactly as from the file, and from an
// archive holding it with the same result and saved text. Every picture
// TEXTURES.tsv lists is the file that one image of the
// document using it names.
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <pugixml.hpp>

#include "oxTestSupport.h"

using namespace OxDAEReader;

namespace {

struct CorpusFile {
  std::string path;      // relative to the corpus folder
  std::string version;   // the root's "version", empty when none
  std::string features;  // comma-separated hints; "broken" marks damaged files
};

void PrintTo(const CorpusFile& file, std::ostream* os) {
  *os << file.path;
}

// The rows of the corpus table `name` (tab-separated, after its header
// line), each as its columns.
std::vector<std::vector<std::string>> ReadTable(const std::string& name) {
  std::ifstream in(std::string(OX_CORPUS_DIR) + "/" + name);
  std::vector<std::vector<std::string>> rows;
  std::string line;
  std::getline(in, line);  // header
  while (std::getline(in, line)) {
    std::vector<std::string>& columns = rows.emplace_back();
    std::stringstream row(line);
    for (std::string column; std::getline(row, column, '\t');)
      columns.push_back(column);
  }
  return rows;
}

std::vector<CorpusFile> ReadManifest() {
  std::vector<CorpusFile> files;
  for (const auto& columns : ReadTable("MANIFEST.tsv")) {
    if (columns.size() >= 9) files.push_back({columns[0], columns[6], columns[8]});
  }
  return files;
}

std::string TestName(const ::testing::TestParamInfo<CorpusFile>& info) {
  std::string name;
  for (char c : info.param.path)
    name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return name;
}

bool IsBroken(const CorpusFile& file) {
  return file.features.find("broken") != std::string::npos;
}

// Loads `path` into `document` and, when it loads, saves it as text; the
// load's result goes to `rc`.
std::string LoadAndSave(oxDAEFile& document, const std::string& path, int& rc) {
  rc = document.Load(OxKernel::oxURI(path));
  OxKernel::oxString xml;
  if (rc == 0) {
    EXPECT_EQ(document.SaveToString(xml), 0) << path;
  }
  return xml;
}

std::string LoadAndSave(const std::string& path, int& rc) {
  oxDAEFile document;
  return LoadAndSave(document, path, rc);
}

// Loads `xml`, as a file, into `document`; Load's result.
int LoadText(oxDAEFile& document, const std::string& xml) {
  const oxtest::TempFile file(xml);
  return document.Load(file.URI());
}

std::string SaveOfText(const std::string& xml, int& rc) {
  oxtest::TempFile file(xml);
  return LoadAndSave(file.Path(), rc);
}

class Corpus : public ::testing::TestWithParam<CorpusFile> {
 protected:
  std::string Path() const { return std::string(OX_CORPUS_DIR) + "/" + GetParam().path; }
};

TEST_P(Corpus, LoadsSavesAndConverges) {
  const CorpusFile& file = GetParam();
  oxtest::LogCapture log;
  int rc = 0;
  const std::string save1 = LoadAndSave(Path(), rc);
  if (!file.version.starts_with("1.4.")) {
    if (file.version.empty()) {
      EXPECT_EQ(rc, OxKernel::kXMLNotWellFormed);
      return;
    }
    ASSERT_EQ(rc, 0);
    EXPECT_EQ(log.Count(OxKernel::kLogError, "Unsupported version of DAE File"), 1u);
    EXPECT_EQ(save1, "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<COLLADA xmlns=\"" +
                         std::string(oxDAEColladaElement::kNamespace) + "\" version=\"" +
                         file.version + "\"/>\n");
    return;
  }
  if (rc == OxKernel::kXMLNotWellFormed && IsBroken(file))
    GTEST_SKIP() << "damaged on purpose: not well-formed XML";
  ASSERT_EQ(rc, 0);
  pugi::xml_document parsed;
  ASSERT_TRUE(parsed.load_string(save1.c_str()))
      << "save of " << file.path << " is not well-formed";
  const std::string save2 = SaveOfText(save1, rc);
  ASSERT_EQ(rc, 0);
  const std::string save3 = SaveOfText(save2, rc);
  ASSERT_EQ(rc, 0);
  EXPECT_TRUE(save3 == save2) << file.path << ": saving does not reach a fixed point";
  RecordProperty("fixed_at_first_save", save1 == save2 ? "yes" : "no");
}

struct ChannelCount {
  size_t bound = 0;
  size_t total = 0;
  bool operator==(const ChannelCount&) const = default;
};

// True when `target` is a morph's weight (or the weights): morphs are not
// saved, so these channels have nothing to bind to in a saved document.
bool IsMorphWeight(const oxDAEChannelTarget* target) {
  const oxDAEChannelTarget* owner = target->GetTargetParent() ? target->GetTargetParent() : target;
  return oxDAEMorph::DynamicCast(owner->GetContainerParent()) != nullptr;
}

// The channels of `document`, and how many of them are bound to something a
// saved document keeps (a morph weight does not count).
ChannelCount CountChannels(const oxDAEFile& document) {
  ChannelCount count;
  for (const auto& element : document.GetElements()) {
    const oxDAEChannel* channel = oxDAEChannel::DynamicCast(element.get());
    if (!channel) continue;
    ++count.total;
    if (channel->sampler && channel->target && !IsMorphWeight(channel->target)) ++count.bound;
  }
  return count;
}

TEST_P(Corpus, ChannelsBindAgainAfterResave) {
  if (!GetParam().version.starts_with("1.4.")) GTEST_SKIP() << "not read beyond the root";
  oxtest::LogCapture log;
  oxDAEFile document;
  int rc = 0;
  const std::string xml = LoadAndSave(document, Path(), rc);
  if (rc == OxKernel::kXMLNotWellFormed && IsBroken(GetParam()))
    GTEST_SKIP() << "damaged on purpose: not well-formed XML";
  ASSERT_EQ(rc, 0);
  ASSERT_FALSE(HasFailure()) << "the document does not save";
  const ChannelCount read = CountChannels(document);
  oxDAEFile reloaded;
  ASSERT_EQ(LoadText(reloaded, xml), 0);
  EXPECT_EQ(CountChannels(reloaded), read) << GetParam().path;
  RecordProperty("channels_bound", static_cast<int>(read.bound));
  RecordProperty("channels_total", static_cast<int>(read.total));
}

TEST_P(Corpus, LoadsFromMemoryAsFromTheFile) {
  oxtest::ExpectMemoryLoadMatchesFile(oxtest::ReadFile(Path()), OxKernel::oxURI(Path()));
}

// The file packed alone into an archive loads with the same result and
// saves the same text as the file itself.
TEST_P(Corpus, LoadsFromAnArchiveAsFromTheFile) {
  const std::string name = std::filesystem::path(GetParam().path).filename().string();
  const oxtest::TempFile archive(oxtest::MakeArchive({{name, oxtest::ReadFile(Path())}}), ".zae");
  const oxtest::LoadOutcome file =
      oxtest::LoadAndSave([&](oxDAEFile& d) { return d.Load(OxKernel::oxURI(Path())); });
  const oxtest::LoadOutcome packed =
      oxtest::LoadAndSave([&](oxDAEFile& d) { return d.Load(archive.URI()); });
  EXPECT_EQ(packed.loaded, file.loaded);
  EXPECT_EQ(packed.log.size(), file.log.size());
  EXPECT_EQ(packed.saved, file.saved);
  EXPECT_TRUE(packed.text == file.text) << GetParam().path << ": saved texts differ";
}

// Runs `oxdae info FILE`: exit 0, or 1 with one "oxdae: " line saying why.
TEST_P(Corpus, ToolSummarisesOrExplains) {
  const std::string command = std::string(OX_OXDAE_PATH) + " info '" + Path() + "' 2>&1 >/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string errors;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    errors.append(buffer, n);
  const int status = pclose(pipe);
  ASSERT_TRUE(WIFEXITED(status)) << "oxdae did not exit normally";
  const int code = WEXITSTATUS(status);
  if (code == 0) return;
  EXPECT_EQ(code, 1);
  size_t reasons = 0;
  for (size_t at = errors.find("oxdae: "); at != std::string::npos;
       at = errors.find("oxdae: ", at + 1))
    ++reasons;
  EXPECT_EQ(reasons, 1u) << errors;
  EXPECT_TRUE(IsBroken(GetParam())) << GetParam().path << " should load: " << errors;
}

INSTANTIATE_TEST_SUITE_P(Files, Corpus, ::testing::ValuesIn(ReadManifest()), TestName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Corpus);

// A picture of the corpus and the document that refers to it.
struct CorpusPicture {
  std::string file;    // relative to the corpus folder
  std::string usedBy;  // the document, relative to the corpus folder
};

void PrintTo(const CorpusPicture& picture, std::ostream* os) {
  *os << picture.file;
}

std::vector<CorpusPicture> ReadPictures() {
  std::vector<CorpusPicture> pictures;
  for (const auto& columns : ReadTable("TEXTURES.tsv")) {
    if (columns.size() >= 7) pictures.push_back({columns[0], columns[6]});
  }
  return pictures;
}

std::string PictureName(const ::testing::TestParamInfo<CorpusPicture>& info) {
  std::string name;
  for (char c : info.param.file)
    name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return name;
}

class CorpusPictures : public ::testing::TestWithParam<CorpusPicture> {};

std::vector<const oxDAEImage*> AllImages(const oxDAEFile& document) {
  std::vector<const oxDAEImage*> images;
  for (const auto& element : document.GetElements()) {
    if (const oxDAEImage* image = oxDAEImage::DynamicCast(element.get())) images.push_back(image);
  }
  return images;
}

TEST_P(CorpusPictures, OneImageOfTheDocumentNamesThePicture) {
  const std::string corpus(OX_CORPUS_DIR);
  const std::string picture = corpus + "/" + GetParam().file;
  oxtest::LogCapture log;
  oxDAEFile document;
  ASSERT_EQ(document.Load(OxKernel::oxURI(corpus + "/" + GetParam().usedBy)), 0);
  std::vector<std::string> named;
  for (const oxDAEImage* image : AllImages(document)) {
    const oxString path = GetReferencedFilePath(document.GetFileURI(), image->initFrom);
    std::error_code ec;
    if (ReferencedFileExists(path) && std::filesystem::equivalent(path.View(), picture, ec)) return;
    named.emplace_back(path);
  }
  ADD_FAILURE() << "no image names " << picture << "; the images name:\n"
                << ::testing::PrintToString(named);
}

// The document and the picture packed into an archive at their places in
// the corpus, with a manifest naming the document: one image names the
// picture's entry, and that entry exists.
TEST_P(CorpusPictures, OneImageOfTheArchivedDocumentNamesThePictureEntry) {
  const std::string corpus(OX_CORPUS_DIR);
  const oxtest::TempFile archive(
      oxtest::MakeArchive({{"manifest.xml", "<dae_root>" + GetParam().usedBy + "</dae_root>"},
                           {GetParam().usedBy, oxtest::ReadFile(corpus + "/" + GetParam().usedBy)},
                           {GetParam().file, oxtest::ReadFile(corpus + "/" + GetParam().file)}}),
      ".zae");
  oxtest::LogCapture log;
  oxDAEFile document;
  ASSERT_EQ(document.Load(archive.URI()), 0);
  const std::string wanted = archive.Path() + "!/" + GetParam().file;
  std::vector<std::string> named;
  for (const oxDAEImage* image : AllImages(document)) {
    const oxString path = GetReferencedFilePath(document, image->initFrom);
    if (path == wanted && ReferencedFileExists(document, path)) return;
    named.emplace_back(path);
  }
  ADD_FAILURE() << "no image names " << wanted << "; the images name:\n"
                << ::testing::PrintToString(named);
}

INSTANTIATE_TEST_SUITE_P(Files, CorpusPictures, ::testing::ValuesIn(ReadPictures()), PictureName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CorpusPictures);

TEST(CorpusFolder, ManifestListsTheFilesWhenPresent) {
  if (!std::filesystem::exists(OX_CORPUS_DIR))
    GTEST_SKIP() << "no corpus folder at " << OX_CORPUS_DIR;
  const std::vector<CorpusFile> files = ReadManifest();
  ASSERT_FALSE(files.empty());
  for (const CorpusFile& f : files)
    EXPECT_TRUE(std::filesystem::exists(std::string(OX_CORPUS_DIR) + "/" + f.path));
  EXPECT_FALSE(ReadPictures().empty());
}

}  // namespace
