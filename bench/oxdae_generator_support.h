// The pieces the benchmark document generators share: a random sequence
// fixed by its seed, a text sink that writes numbers with std::to_chars, so
// that a generated document depends neither on the standard library's
// distributions nor on the locale, and the markup both generators write.
#pragma once

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

// Writes ` name="value"` for a whole number.
inline void PutUIntAttribute(TextSink& out, std::string_view name, uint64_t value) {
  out.Put(' ');
  out.Put(name);
  out.Put("=\"");
  out.PutUInt(value);
  out.Put('"');
}

inline void PutIndent(TextSink& out, uint32_t spaces) {
  out.Put(std::string(spaces, ' '));
}

// --- Markup of both generators ---------------------------------------------------

// The materials of a generated document, and the records of an array's line.
constexpr uint32_t kMaterials = 3;
constexpr uint32_t kRecordsPerLine = 8;

inline std::string MeshID(uint32_t index) {
  return "mesh-" + std::to_string(index);
}

// The XML declaration and the start of the root element.
inline void PutDocumentStart(TextSink& out) {
  out.Put(
      "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
      "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\">\n");
}

inline void PutDocumentEnd(TextSink& out) {
  out.Put("</COLLADA>\n");
}

// The start of the one visual scene, "scene", and of its library.
inline void PutVisualSceneStart(TextSink& out) {
  out.Put("  <library_visual_scenes>\n    <visual_scene id=\"scene\" name=\"Generated scene\">\n");
}

// The end of the visual scene and of its library, and the <scene> that
// instantiates it.
inline void PutVisualSceneEnd(TextSink& out) {
  out.Put(
      "    </visual_scene>\n  </library_visual_scenes>\n  <scene>\n"
      "    <instance_visual_scene url=\"#scene\"/>\n  </scene>\n");
}

// The <vertices> of the mesh `meshID`, at `indent` spaces, whose POSITION
// is the source "<meshID>-positions".
inline void WriteVertices(TextSink& out, uint32_t indent, const std::string& meshID) {
  PutIndent(out, indent);
  out.Put("<vertices");
  PutAttribute(out, "id", meshID + "-vertices");
  out.Put(">\n");
  PutIndent(out, indent + 2);
  out.Put("<input semantic=\"POSITION\"");
  PutAttribute(out, "source", "#" + meshID + "-positions");
  out.Put("/>\n");
  PutIndent(out, indent);
  out.Put("</vertices>\n");
}

// What a <source> holds apart from its values.
struct SourceMarkup {
  uint32_t indent;                       // of <source>
  std::string id;                        // its array is "<id>-array"
  std::string_view arrayTag;             // "float_array", "Name_array"
  std::string_view paramType;            // "float", "Name"
  std::vector<std::string_view> params;  // a name for each value of a record
  uint32_t records;
  std::string_view between;  // between the records of a line
};

// A source of `source.records` records: the array with `records *
// params.size()` values that `putRecord(i)` writes one record at a time,
// kRecordsPerLine records a line, and an accessor with one parameter per
// name.
template <class PutRecord>
void WriteArraySource(TextSink& out, const SourceMarkup& source, PutRecord&& putRecord) {
  PutIndent(out, source.indent);
  out.Put("<source");
  PutAttribute(out, "id", source.id);
  out.Put(">\n");
  PutIndent(out, source.indent + 2);
  out.Put('<');
  out.Put(source.arrayTag);
  PutAttribute(out, "id", source.id + "-array");
  PutUIntAttribute(out, "count", uint64_t{source.records} * source.params.size());
  out.Put(">");
  for (uint32_t i = 0; i < source.records; ++i) {
    if (i % kRecordsPerLine == 0) {
      out.Put('\n');
    } else {
      out.Put(source.between);
    }
    putRecord(i);
  }
  out.Put('\n');
  PutIndent(out, source.indent + 2);
  out.Put("</");
  out.Put(source.arrayTag);
  out.Put(">\n");
  PutIndent(out, source.indent + 2);
  out.Put("<technique_common>\n");
  PutIndent(out, source.indent + 4);
  out.Put("<accessor");
  PutAttribute(out, "source", "#" + source.id + "-array");
  PutUIntAttribute(out, "count", source.records);
  PutUIntAttribute(out, "stride", source.params.size());
  out.Put(">\n");
  for (std::string_view name : source.params) {
    PutIndent(out, source.indent + 6);
    out.Put("<param");
    PutAttribute(out, "name", name);
    PutAttribute(out, "type", source.paramType);
    out.Put("/>\n");
  }
  PutIndent(out, source.indent + 4);
  out.Put("</accessor>\n");
  PutIndent(out, source.indent + 2);
  out.Put("</technique_common>\n");
  PutIndent(out, source.indent);
  out.Put("</source>\n");
}

}  // namespace oxdae_bench
