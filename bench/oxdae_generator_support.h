// The pieces the benchmark document generators share: a random sequence
// fixed by its seed and a text sink that writes numbers with std::to_chars,
// so that a generated document depends neither on the standard library's
// distributions nor on the locale.
#pragma once

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

namespace oxdae_bench {

// splitmix64: a small generator whose sequence is fixed by its seed.
class Random {
 public:
  explicit Random(uint64_t seed) : m_state(seed) {}

  uint64_t Next() {
    uint64_t z = (m_state += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
  }
  // Uniform in [0, 1), from the top 53 bits.
  double Unit() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }
  double Between(double low, double high) { return low + (high - low) * Unit(); }
  // Uniform in [0, n).
  uint32_t Below(uint32_t n) { return static_cast<uint32_t>(((Next() >> 32) * n) >> 32); }

 private:
  uint64_t m_state;
};

// Collects text and hands it to the file in large blocks; without a file the
// text stays in memory until Take.
class TextSink {
 public:
  explicit TextSink(std::FILE* file = nullptr) : m_file(file) {}

  void Put(std::string_view text) {
    m_buffer.append(text);
    if (m_file && m_buffer.size() >= kBlock) Flush();
  }
  void Put(char c) { Put(std::string_view(&c, 1)); }
  void PutUInt(uint64_t value) { PutChars(value); }
  void PutFixed(double value, int decimals) { PutChars(value, std::chars_format::fixed, decimals); }
  void PutScientific(double value, int precision) {
    PutChars(value, std::chars_format::scientific, precision);
  }

  uint64_t Size() const { return m_flushed + m_buffer.size(); }
  // Writes what is left; false when any write failed.
  bool Finish() {
    if (m_file) Flush();
    return m_ok;
  }
  std::string Take() { return std::move(m_buffer); }

 private:
  static constexpr size_t kBlock = size_t{1} << 20;

  template <class... Args>
  void PutChars(Args... args) {
    char text[64];
    const std::to_chars_result r = std::to_chars(text, text + sizeof text, args...);
    Put(std::string_view(text, static_cast<size_t>(r.ptr - text)));
  }
  void Flush() {
    m_ok = m_ok && std::fwrite(m_buffer.data(), 1, m_buffer.size(), m_file) == m_buffer.size();
    m_flushed += m_buffer.size();
    m_buffer.clear();
  }

  std::FILE* m_file;
  std::string m_buffer;
  uint64_t m_flushed = 0;
  bool m_ok = true;
};

// Writes ` name="value"` (the value is written as it is: callers give plain
// texts).
inline void PutAttribute(TextSink& out, std::string_view name, std::string_view value) {
  out.Put(' ');
  out.Put(name);
  out.Put("=\"");
  out.Put(value);
  out.Put('"');
}

}  // namespace oxdae_bench
