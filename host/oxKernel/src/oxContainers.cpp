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

// The length of the mapping that holds a block of `bytes`: whole large pages
// from one large page on, whole small pages below.
constexpr size_t MappedLength(size_t bytes) {
  return RoundUp(bytes, bytes >= kLargePage ? kLargePage : kSmallPage);
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

// From one large page on, the whole large pages of the block are aligned to
// and advised for large pages: a handful of faults instead of one per 4 kB.
// What is left (a smaller block, or the last, partial large page of a larger
// one) is faulted in by one call up front rather than one trap per page,
// which is what page faults cost on virtual machines; it stays in small pages
// and so costs no more memory than the block asks for. Advice the kernel does
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
  const size_t whole = bytes & ~(kLargePage - 1);
  madvise(block, whole, MADV_HUGEPAGE);
  const size_t tail = RoundUp(bytes, kSmallPage) - whole;
  if (tail > 0) madvise(static_cast<char*>(block) + whole, tail, MADV_POPULATE_WRITE);
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
