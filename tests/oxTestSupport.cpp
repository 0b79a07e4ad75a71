#include "oxTestSupport.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include <unistd.h>

namespace oxtest {

namespace {

std::map<std::string, std::string>& XmlByTest() {
  static std::map<std::string, std::string> registry;
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

XmlRegistrar::XmlRegistrar(const char* testName, std::string xml) {
  XmlByTest()[testName] = std::move(xml);
}

void DocumentTest::SetUp() {
  const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
  const auto it = XmlByTest().find(std::string(info->test_suite_name()) + "." + info->name());
  if (it != XmlByTest().end()) rc = LoadText(it->second);
}

int DocumentTest::LoadText(std::string_view xml) {
  TempFile file(xml);
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
