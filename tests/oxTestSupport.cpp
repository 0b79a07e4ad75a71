#include "oxTestSupport.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include <unistd.h>
#include <zip.h>

namespace oxtest {

namespace {

std::map<std::string, std::function<std::string()>>& XmlByTest() {
  static std::map<std::string, std::function<std::string()>> registry;
  return registry;
}

// Starts the module once for the whole test program.
class ModuleEnvironment : public ::testing::Environment {
 public:
  void SetUp() override { OxDAEReader::oxDAEReadWriteModule::Init(0); }
  void TearDown() override { OxDAEReader::oxDAEReadWriteModule::Uninit(0); }
};

const auto* const g_environment = ::testing::AddGlobalTestEnvironment(new ModuleEnvironment);

}  // namespace

size_t LogCapture::Count(int level, std::string_view text) const {
  size_t n = 0;
  for (const LogEntry& e : entries)
    n += (e.level == level && e.text == text) ? 1 : 0;
  return n;
}

TempFile::TempFile(std::string_view contents, std::string_view suffix) {
  static std::atomic<unsigned> counter{0};
  m_path =
      (std::filesystem::temp_directory_path() / ("oxdae_test_" + std::to_string(getpid()) + "_" +
                                                 std::to_string(counter++) + std::string(suffix)))
          .string();
  std::ofstream out(m_path, std::ios::binary);
  out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
}

TempFile::~TempFile() {
  std::remove(m_path.c_str());
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string Collada(std::string_view body, std::string_view version) {
  return "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"" +
         std::string(version) + "\">" + std::string(body) + "</COLLADA>";
}

std::string NestedNodes(int levels) {
  std::string xml;
  xml.reserve(static_cast<size_t>(levels) * 13);
  for (int i = 0; i < levels; ++i)
    xml += "<node>";
  for (int i = 0; i < levels; ++i)
    xml += "</node>";
  return xml;
}

std::string Saved(std::string_view body) {
  return std::string(kProlog) + std::string(kRootStart) + std::string(body) + "</COLLADA>\n";
}

std::string ElementText(const std::string& xml, const std::string& tag) {
  const size_t start = xml.find("<" + tag);
  if (start == std::string::npos) return {};
  const size_t selfClose = xml.find("/>", start);
  const size_t open = xml.find('>', start);
  if (selfClose != std::string::npos && selfClose + 1 == open)
    return xml.substr(start, open + 1 - start);
  const std::string close = "</" + tag + ">";
  const size_t end = xml.find(close, start);
  return end == std::string::npos ? std::string() : xml.substr(start, end + close.size() - start);
}

XmlRegistrar::XmlRegistrar(const char* testName, std::function<std::string()> xml) {
  XmlByTest()[testName] = std::move(xml);
}

void DocumentTest::SetUp() {
  const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
  const auto it = XmlByTest().find(std::string(info->test_suite_name()) + "." + info->name());
  if (it != XmlByTest().end()) rc = LoadText(it->second());
}

LoadOutcome LoadAndSave(const std::function<int(OxDAEReader::oxDAEFile&)>& load) {
  LogCapture capture;
  OxDAEReader::oxDAEFile document;
  LoadOutcome outcome;
  outcome.loaded = load(document);
  OxKernel::oxString text;
  outcome.saved = document.SaveToString(text);
  outcome.text = text;
  outcome.log = capture.entries;
  return outcome;
}

void ExpectMemoryLoadMatchesFile(std::string_view bytes, const OxKernel::oxURI& uri) {
  const LoadOutcome file = LoadAndSave([&](OxDAEReader::oxDAEFile& d) { return d.Load(uri); });
  const LoadOutcome memory = LoadAndSave(
      [&](OxDAEReader::oxDAEFile& d) { return d.LoadFromMemory(bytes.data(), bytes.size(), uri); });
  EXPECT_EQ(memory.loaded, file.loaded) << uri.GetString();
  EXPECT_EQ(memory.log, file.log) << uri.GetString();
  EXPECT_EQ(memory.saved, file.saved) << uri.GetString();
  EXPECT_TRUE(memory.text == file.text) << uri.GetString() << ": saved texts differ";
}

std::string MakeArchive(const std::vector<ArchiveEntry>& entries) {
  const TempFile file("", ".zae");
  int error = 0;
  zip_t* zip = zip_open(file.Path().c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
  EXPECT_NE(zip, nullptr) << "libzip error " << error;
  if (!zip) return {};
  for (const ArchiveEntry& entry : entries) {
    zip_source_t* source = zip_source_buffer(zip, entry.bytes.data(), entry.bytes.size(), 0);
    const zip_int64_t index = zip_file_add(zip, entry.name.c_str(), source, ZIP_FL_ENC_UTF_8);
    EXPECT_GE(index, 0) << zip_strerror(zip);
    if (entry.encrypted) {
      EXPECT_EQ(
          zip_file_set_encryption(zip, static_cast<zip_uint64_t>(index), ZIP_EM_AES_256, "secret"),
          0)
          << zip_strerror(zip);
    }
  }
  EXPECT_EQ(zip_close(zip), 0) << zip_strerror(zip);
  return ReadFile(file.Path());
}

namespace {

uint32_t ReadLE32(const std::string& bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i)
    value |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
  return value;
}

uint16_t ReadLE16(const std::string& bytes, size_t at) {
  return static_cast<uint16_t>(static_cast<unsigned char>(bytes[at]) |
                               static_cast<unsigned char>(bytes[at + 1]) << 8);
}

void WriteLE32(std::string& bytes, size_t at, uint32_t value) {
  for (size_t i = 0; i < 4; ++i)
    bytes[at + i] = static_cast<char>(value >> (8 * i));
}

}  // namespace

void SetClaimedSize(std::string& zip, std::string_view name, uint32_t size) {
  // Central directory headers: signature, then the uncompressed size at 24,
  // the name's length at 28, the local header's offset at 42, the name at 46.
  const std::string_view central("PK\1\2", 4);
  for (size_t at = zip.find(central); at != std::string::npos; at = zip.find(central, at + 4)) {
    if (std::string_view(zip).substr(at + 46, ReadLE16(zip, at + 28)) != name) continue;
    WriteLE32(zip, at + 24, size);
    WriteLE32(zip, ReadLE32(zip, at + 42) + 22, size);
    return;
  }
  ADD_FAILURE() << "no entry " << name << " in the archive";
}

int DocumentTest::LoadText(std::string_view xml) {
  TempFile file(xml);
  ExpectMemoryLoadMatchesFile(xml, file.URI());
  log.Clear();
  rc = document.Load(file.URI());
  return rc;
}

void DocumentTest::OpenFragment(std::string_view xml) {
  log.Clear();
  EXPECT_EQ(OxKernel::oxXMLFactory::Instance(0).CreateReader(document.reader, xml, 0), 0);
  EXPECT_EQ(document.reader->MoveNext(), 0);
}

void DocumentTest::StartWriter() {
  EXPECT_EQ(OxKernel::oxXMLFactory::Instance(0).CreateWriter(document.writer), 0);
  document.writer->StartElement("w");
  document.writer->EndAttributes();
}

std::string DocumentTest::FinishWriter() {
  document.writer->Close();
  const std::string text(document.writer->GetBuffer());
  const size_t start = text.find("<w");
  return start == std::string::npos ? text : text.substr(start);
}

std::string DocumentTest::SaveText() {
  OxKernel::oxString xml;
  EXPECT_EQ(document.SaveToString(xml), 0);
  return xml;
}

}  // namespace oxtest
