#include "oxKernel/oxContainers.h"

#include <sys/mman.h>

#include <cstdint>

namespace OxKernel {

namespace {

constexpr size_t kLargePage = size_t{2} << 20;
constexpr size_t kSmallPage = 4096;

constexpr size_t RoundUp(size_t bytes, size_t unit) {
  return (bytes + unit - 1) & ~(unit - 1);
}

// The length of the mapping that holds a block of `bytes`: its whole large
// pages, then its last, partial large page whole when at least half of it is
// used, else in small pages. On virtual machines setting up half a large
// page of small pages costs more than the whole large page (loads of 10 to
// 200 MB documents, whose arrays are mostly under 2 MB, take 10 to 15% less
// time); a less used page is not worth the memory.
constexpr size_t MappedLength(size_t bytes) {
  const size_t whole = bytes & ~(kLargePage - 1);
  const size_t rest = bytes - whole;
  return rest >= kLargePage / 2 ? whole + kLargePage : RoundUp(bytes, kSmallPage);
}

// A mapping of `length` bytes that starts on a large-page boundary: one large
// page more is mapped and the ends are trimmed, whatever alignment the kernel
// chose.
void* MapAligned(size_t length) {
  void* mapped = mmap(nullptr, length + kLargePage, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) return nullptr;
  const auto start = reinterpret_cast<uintptr_t>(mapped);
  const uintptr_t aligned = RoundUp(start, kLargePage);
  if (aligned > start) munmap(mapped, aligned - start);
  const uintptr_t end = start + length + kLargePage;
  if (end > aligned + length)
    munmap(reinterpret_cast<void*>(aligned + length), end - aligned - length);
  return reinterpret_cast<void*>(aligned);
}

}  // namespace

// The large pages of the block (see MappedLength) are aligned to and advised
// for large pages: a handful of faults instead of one per 4 kB. What is left
// in small pages (a block under half a large page, or the end of a larger
// one) is faulted in by one call up front rather than one trap per page,
// which is what page faults cost on virtual machines. Advice the kernel does
// not take (an older kernel, memory pressure) only costs speed.
void* oxAllocateLargeBlock(size_t bytes) {
  if (bytes > SIZE_MAX - 2 * kLargePage) throw std::bad_alloc();
  const size_t length = MappedLength(bytes);
  if (length < kLargePage) {
    void* block = mmap(nullptr, length, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (block == MAP_FAILED) throw std::bad_alloc();
    return block;
  }
  void* block = MapAligned(length);
  if (!block) throw std::bad_alloc();
  const size_t large = length & ~(kLargePage - 1);
  madvise(block, large, MADV_HUGEPAGE);
  if (length > large)
    madvise(static_cast<char*>(block) + large, length - large, MADV_POPULATE_WRITE);
  return block;
}

void oxAdviseLargePages(void* start, size_t bytes) noexcept {
  const auto first = reinterpret_cast<uintptr_t>(start);
  const uintptr_t largeFirst = RoundUp(first, kLargePage);
  const uintptr_t largeEnd = (first + bytes) & ~(kLargePage - 1);
  if (largeEnd > largeFirst)
    madvise(reinterpret_cast<void*>(largeFirst), largeEnd - largeFirst, MADV_HUGEPAGE);
}

void oxPrefault(void* start, size_t bytes) noexcept {
  if (bytes < kLargeBlockBytes) return;
  oxAdviseLargePages(start, bytes);
  const auto first = reinterpret_cast<uintptr_t>(start);
  const uintptr_t end = first + bytes;
  const uintptr_t pageFirst = first & ~(kSmallPage - 1);
  madvise(reinterpret_cast<void*>(pageFirst), RoundUp(end, kSmallPage) - pageFirst,
          MADV_POPULATE_WRITE);
}

void oxFreeLargeBlock(void* block, size_t bytes) noexcept {
  munmap(block, MappedLength(bytes));
}

}  // namespace OxKernel
