#include "oxdae_floor.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include <pugixml.hpp>

namespace oxdae_bench {

namespace {

using Clock = std::chrono::steady_clock;

// The options of the host's XML reader (oxXMLReader.cpp).
constexpr unsigned int kParseOptions =
    pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol | pugi::parse_wconv_attribute;

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// Reads the whole file into one buffer of its size (plus a terminator).
bool ReadFile(const std::string& path, std::unique_ptr<char[]>& bytes, size_t& size) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  long end = -1;
  if (std::fseek(file, 0, SEEK_END) == 0) end = std::ftell(file);
  std::rewind(file);
  size = end > 0 ? static_cast<size_t>(end) : 0;
  bytes = std::make_unique_for_overwrite<char[]>(size + 1);
  const bool ok = end >= 0 && std::fread(bytes.get(), 1, size, file) == size;
  std::fclose(file);
  return ok;
}

constexpr bool IsSpace(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

// Elements whose text holds integers; every other text is read as floats.
bool HoldsIntegers(const char* tag) {
  return std::strcmp(tag, "p") == 0 || std::strcmp(tag, "vcount") == 0 ||
         std::strcmp(tag, "v") == 0 || std::strcmp(tag, "int_array") == 0;
}

// Converts the numbers of [p, end) into `out`; returns how many were stored.
// A token that is not a number is stepped over and counted in `skipped`.
template <class T>
uint64_t Convert(const char* p, const char* end, T* out, uint64_t& skipped) {
  T* const first = out;
  for (;;) {
    while (p != end && IsSpace(*p))
      ++p;
    if (p == end) break;
    const std::from_chars_result r = std::from_chars(p, end, *out);
    if (r.ec == std::errc() && (r.ptr == end || IsSpace(*r.ptr))) {
      ++out;
      p = r.ptr;
      continue;
    }
    ++skipped;
    while (p != end && !IsSpace(*p))
      ++p;
  }
  return static_cast<uint64_t>(out - first);
}

// Room for every number of a text of `bytes` bytes: each takes at least one
// character and one separator. Pages that are never written cost no memory.
struct NumberBuffers {
  explicit NumberBuffers(size_t bytes)
      : floats(std::make_unique_for_overwrite<float[]>(bytes / 2 + 1)),
        ints(std::make_unique_for_overwrite<int32_t[]>(bytes / 2 + 1)) {}
  std::unique_ptr<float[]> floats;
  std::unique_ptr<int32_t[]> ints;
};

void ConvertText(pugi::xml_node text, NumberBuffers& buffers, FloorResult& result) {
  const char* value = text.value();
  const char* end = value + std::strlen(value);
  ++result.textNodes;
  if (HoldsIntegers(text.parent().name())) {
    result.ints += Convert(value, end, buffers.ints.get() + result.ints, result.otherTokens);
  } else {
    result.floats += Convert(value, end, buffers.floats.get() + result.floats, result.otherTokens);
  }
}

// Visits every node of the document in order and converts the text nodes.
void ConvertAll(const pugi::xml_document& document, NumberBuffers& buffers, FloorResult& result) {
  pugi::xml_node node = document.first_child();
  while (node) {
    if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata)
      ConvertText(node, buffers, result);
    if (node.first_child()) {
      node = node.first_child();
      continue;
    }
    while (node && !node.next_sibling())
      node = node.parent();
    if (node) node = node.next_sibling();
  }
}

}  // namespace

double ProcessCpuSeconds() {
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

FloorResult LoadFloor(const std::string& path) {
  FloorResult result;
  const double cpuStart = ProcessCpuSeconds();
  Clock::time_point start = Clock::now();
  std::unique_ptr<char[]> bytes;
  size_t size = 0;
  if (!ReadFile(path, bytes, size)) return result;
  result.bytes = size;
  result.readSeconds = SecondsSince(start);

  start = Clock::now();
  pugi::xml_document document;
  if (!document.load_buffer_inplace(bytes.get(), size, kParseOptions, pugi::encoding_auto))
    return result;
  result.parseSeconds = SecondsSince(start);

  start = Clock::now();
  NumberBuffers buffers(size);
  ConvertAll(document, buffers, result);
  result.convertSeconds = SecondsSince(start);

  // A loader frees the text and the DOM once the values are out; only the
  // values (here the number buffers) outlive it.
  start = Clock::now();
  document.reset();
  bytes.reset();
  result.releaseSeconds = SecondsSince(start);
  result.cpuSeconds = ProcessCpuSeconds() - cpuStart;
  result.ok = true;
  return result;
}

}  // namespace oxdae_bench
