// Growable arrays and hash tables of the host: the standard containers under
// the host's names, plus the bucket-count rule the host uses for new tables.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace OxKernel {

// Blocks of at least this many bytes are mapped on their own and faulted in
// up front, and from 1 MB on backed by the kernel's large pages: a
// document's number arrays and its input text are that large, and on virtual
// machines a page fault per 4 kB costs more than reading the numbers.
constexpr size_t kLargeBlockBytes = size_t{64} << 10;

// A block of `bytes` (at least kLargeBlockBytes) in its own mapping; throws
// std::bad_alloc when the system refuses it.
void* oxAllocateLargeBlock(size_t bytes);
// Gives back a block of oxAllocateLargeBlock with the size it was asked for.
void oxFreeLargeBlock(void* block, size_t bytes) noexcept;

// Faults in the pages of [start, start + bytes) ahead of writing them, in one
// call and in large pages where the range covers whole ones, for memory that
// does not come from oxArray (a std::string about to take a large copy).
// Small ranges are left alone; advice the kernel does not take only costs
// speed.
void oxPrefault(void* start, size_t bytes) noexcept;
// Advises the whole large pages of [start, start + bytes) for large pages
// without faulting anything in: for a block filled piece by piece, each piece
// faulted in with oxPrefault just before it is written, so that the pages
// where two pieces meet are large too.
void oxAdviseLargePages(void* start, size_t bytes) noexcept;

// The allocator of oxArray: the standard allocator, except that large blocks
// come from oxAllocateLargeBlock, and that growing an array of numbers does
// not zero the new elements first (`resize(n)` leaves them unset; readers
// overwrite them next, and fill what they do not overwrite). Every other
// element type is value-initialised as usual.
template <class T>
struct oxArrayAllocator {
  using value_type = T;

  oxArrayAllocator() = default;
  template <class U>
  oxArrayAllocator(const oxArrayAllocator<U>&) noexcept {}

  T* allocate(size_t n) {
    if (n > SIZE_MAX / sizeof(T)) throw std::bad_array_new_length();
    const size_t bytes = n * sizeof(T);
    if (bytes >= kLargeBlockBytes) return static_cast<T*>(oxAllocateLargeBlock(bytes));
    return std::allocator<T>().allocate(n);
  }

  void deallocate(T* p, size_t n) noexcept {
    if (n * sizeof(T) >= kLargeBlockBytes) return oxFreeLargeBlock(p, n * sizeof(T));
    std::allocator<T>().deallocate(p, n);
  }

  template <class U, class... Args>
  void construct(U* p, Args&&... args) {
    if constexpr (sizeof...(Args) == 0 && std::is_arithmetic_v<U>) {
      ::new (static_cast<void*>(p)) U;
    } else {
      std::construct_at(p, std::forward<Args>(args)...);
    }
  }

  friend bool operator==(const oxArrayAllocator&, const oxArrayAllocator&) noexcept { return true; }
};

template <class T>
using oxArray = std::vector<T, oxArrayAllocator<T>>;

template <class Key, class Value, class Hash = std::hash<Key>, class Equal = std::equal_to<Key>>
using oxHash = std::unordered_map<Key, Value, Hash, Equal>;

struct oxHashTools {
  // The bucket count the host prefers for a table expected to hold `entries`
  // entries: the smallest power of two not below it (at least 1).
  static unsigned int ComputePreferredSize(unsigned int entries) {
    unsigned int size = 1;
    while (size < entries && size < (1u << 31))
      size <<= 1;
    return size;
  }
};

}  // namespace OxKernel
