// Loading under an address-space limit: a document that needs more memory
// than the process may have ends with kDAEOutOfMemory and one error, releases
// what it had allocated, and leaves the document ready for the next load.
// Each case runs in a child process so that the limit never reaches the test
// runner. Sanitizer runtimes reserve far more address space than any limit
// worth testing, so these cases are skipped in sanitized builds.
#include "oxTestSupport.h"

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

using namespace OxDAEReader;
using oxtest::Collada;
using oxtest::Error;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define OX_SANITIZED_BUILD 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define OX_SANITIZED_BUILD 1
#endif
#endif

OX_DOCUMENT_SUITE(MemoryLimit);

namespace {

// What the child found, as its exit status.
enum ChildResult : int {
  kChildOk = 0,
  kChildNoLimit = 20,     // the limit could not be set
  kChildWrongCode = 21,   // Load did not return kDAEOutOfMemory
  kChildWrongLog = 22,    // the log is not the one "out of memory" error
  kChildNotCleared = 23,  // elements or a root were left behind
  kChildLeaked = 24,      // the heap did not shrink back after the load
  kChildNoReload = 25,    // a small document could not be loaded afterwards
};

// Bytes of address space the process uses now.
size_t AddressSpaceInUse() {
  unsigned long pages = 0;
  std::FILE* statm = std::fopen("/proc/self/statm", "r");
  if (!statm) return 0;
  if (std::fscanf(statm, "%lu", &pages) != 1) pages = 0;
  std::fclose(statm);
  return pages * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

size_t HeapInUse() {
  return mallinfo2().uordblks;
}

// In the child: limits the address space to what is in use plus `headroom`.
bool LimitAddressSpace(size_t headroom) {
  // Free heap pages are handed back first, so that the headroom is close to
  // all that a load can get.
  malloc_trim(0);
  const size_t cap = AddressSpaceInUse() + headroom;
  const rlimit limit{cap, cap};
  return setrlimit(RLIMIT_AS, &limit) == 0;
}

// In the child: loads `file` twice under the limit (a repeated failure must
// behave the same), then a small document, and reports what it found.
int FailsUnderLimit(oxDAEFile& document, oxtest::LogCapture& log, const oxtest::TempFile& file,
                    size_t headroom) {
  const oxtest::TempFile small(Collada(R"(<library_nodes id="n"/>)"));
  if (!LimitAddressSpace(headroom)) return kChildNoLimit;
  const size_t heapBefore = HeapInUse();
  for (int attempt = 0; attempt < 2; ++attempt) {
    log.Clear();
    if (document.Load(file.URI()) != kDAEOutOfMemory) return kChildWrongCode;
    if (log.entries != std::vector{Error("out of memory")}) return kChildWrongLog;
    if (document.GetRoot() || !document.GetElements().empty()) return kChildNotCleared;
  }
  // A little slack for what the log sink and the allocator keep.
  if (HeapInUse() > heapBefore + (64u << 10)) return kChildLeaked;
  log.Clear();
  if (document.Load(small.URI()) != 0 || !document.GetRoot()) return kChildNoReload;
  return kChildOk;
}

// In the child: loads `file` under the limit, which must succeed.
int LoadsUnderLimit(oxDAEFile& document, const oxtest::TempFile& file, size_t headroom) {
  if (!LimitAddressSpace(headroom)) return kChildNoLimit;
  return document.Load(file.URI()) == 0 ? kChildOk : kChildWrongCode;
}

// Runs `body` in a child with its output sent to a pipe; returns the child's
// exit status (128 + the signal when it was killed) and what it printed.
int RunInChild(const std::function<int()>& body, std::string& printed) {
  int pipeEnds[2];
  if (pipe(pipeEnds) != 0) return -1;
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    close(pipeEnds[0]);
    dup2(pipeEnds[1], STDOUT_FILENO);
    dup2(pipeEnds[1], STDERR_FILENO);
    const int result = body();
    std::fflush(nullptr);
    _exit(result);
  }
  close(pipeEnds[1]);
  char buffer[512];
  ssize_t got = 0;
  while ((got = read(pipeEnds[0], buffer, sizeof buffer)) > 0)
    printed.append(buffer, static_cast<size_t>(got));
  close(pipeEnds[0]);
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

#ifdef OX_SANITIZED_BUILD
#define OX_SKIP_WHEN_SANITIZED() \
  GTEST_SKIP() << "address-space limits cannot be tested under a sanitizer runtime"
#else
#define OX_SKIP_WHEN_SANITIZED() (void)0
#endif

}  // namespace

TEST_F(MemoryLimit, FileLargerThanTheLimitGivesOutOfMemory) {
  OX_SKIP_WHEN_SANITIZED();
  // 64 MB of text with 16 MB to spare: the file's bytes alone do not fit.
  const oxtest::TempFile file(Collada("<asset><contributor><author>" + std::string(64u << 20, 'x') +
                                      "</author></contributor></asset>"));
  std::string printed;
  EXPECT_EQ(RunInChild([&] { return FailsUnderLimit(document, log, file, 16u << 20); }, printed),
            kChildOk);
  EXPECT_EQ(printed, "");
}

TEST_F(MemoryLimit, ParseTreeLargerThanTheLimitGivesOutOfMemory) {
  OX_SKIP_WHEN_SANITIZED();
  // 3.5 MB of empty nodes: the bytes fit, their parse tree does not.
  std::string body;
  for (int i = 0; i < 500'000; ++i)
    body += "<node/>";
  const oxtest::TempFile file(Collada("<library_nodes>" + body + "</library_nodes>"));
  std::string printed;
  EXPECT_EQ(RunInChild([&] { return FailsUnderLimit(document, log, file, 16u << 20); }, printed),
            kChildOk);
  EXPECT_EQ(printed, "");
}

TEST_F(MemoryLimit, ElementsLargerThanTheLimitGiveOutOfMemory) {
  OX_SKIP_WHEN_SANITIZED();
  // A million empty nodes: 7 MB of text whose parse tree (about 60 MB) fits
  // in the limit, while the elements made from them (over 200 MB) do not,
  // even with what the heap already holds free.
  std::string body;
  for (int i = 0; i < 1'000'000; ++i)
    body += "<node/>";
  const oxtest::TempFile file(Collada("<library_nodes>" + body + "</library_nodes>"));
  std::string printed;
  EXPECT_EQ(RunInChild([&] { return FailsUnderLimit(document, log, file, 100u << 20); }, printed),
            kChildOk);
  EXPECT_EQ(printed, "");
}

// --- Hostile documents need memory in proportion to their size --------------------------

TEST_F(MemoryLimit, HundredMegabyteTextLoadsInTwoAndAHalfTimesItsSize) {
  OX_SKIP_WHEN_SANITIZED();
  // The file's bytes are held once while parsing, and the text once more in
  // its element.
  const size_t size = 100u << 20;
  std::string xml = Collada("<asset><contributor><author>@</author></contributor></asset>");
  xml.replace(xml.find('@'), 1, size, 'x');
  const oxtest::TempFile file(xml);
  xml = {};
  std::string printed;
  EXPECT_EQ(RunInChild([&] { return LoadsUnderLimit(document, file, size * 5 / 2); }, printed),
            kChildOk);
  EXPECT_EQ(printed, "");
}

TEST_F(MemoryLimit, ThreeHundredThousandNestedNodesLoadInTenTimesTheirSize) {
  OX_SKIP_WHEN_SANITIZED();
  const std::string xml =
      Collada("<library_nodes>" + oxtest::NestedNodes(300'000) + "</library_nodes>");
  const oxtest::TempFile file(xml);
  std::string printed;
  EXPECT_EQ(RunInChild([&] { return LoadsUnderLimit(document, file, xml.size() * 10); }, printed),
            kChildOk);
  EXPECT_EQ(printed, "");
}
