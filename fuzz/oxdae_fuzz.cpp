// Fuzz target: any bytes are loaded as a document or `.zae` archive, and a
// loaded document is saved and loaded again. Nothing may crash, hang, leak or read out of bounds.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include <oxDAEReadWrite/oxDAEReadWrite.h>
#include <oxKernel/oxLog.h>

namespace {

// An in-memory file that the document can open by path.
class MemoryFile {
 public:
  MemoryFile() : m_fd(memfd_create("oxdae_fuzz", 0)) {}
  ~MemoryFile() { close(m_fd); }
  std::string Write(const uint8_t* data, size_t size) {
    if (ftruncate(m_fd, 0) != 0 || pwrite(m_fd, data, size, 0) != static_cast<ssize_t>(size))
      return {};
    return "/proc/self/fd/" + std::to_string(m_fd);
  }

 private:
  int m_fd;
};

// The input is read from a file (as a document, or as a `.zae` archive when
// it starts with the zip signature); what it saves is read back from memory.
void LoadAndSave(const uint8_t* data, size_t size, int depth) {
  static MemoryFile file;
  OxDAEReader::oxDAEFile document;
  const int rc = depth == 0 ? document.Load(OxKernel::oxURI(file.Write(data, size)))
                            : document.LoadFromMemory(data, size, OxKernel::oxURI("saved.dae"));
  if (rc != 0) return;
  OxKernel::oxString xml;
  if (document.SaveToString(xml) != 0 || depth > 0) return;
  LoadAndSave(reinterpret_cast<const uint8_t*>(xml.data()), xml.size(), depth + 1);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  OxKernel::oxLog::SetSink([](const OxKernel::oxLogRecord&) {});
  OxDAEReader::oxDAEReadWriteModule::Init(0);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  LoadAndSave(data, size, 0);
  return 0;
}
