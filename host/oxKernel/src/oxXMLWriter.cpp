#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "oxKernel/oxLog.h"
#include "oxKernel/oxParallel.h"
#include "oxKernel/oxXML.h"

namespace OxKernel {

namespace {

// XML 1.0 admits no control characters but tab, line feed and carriage
// return, not even as character references: such bytes are dropped.
bool IsForbiddenControl(unsigned char c) {
  return c < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

// The writer's output: bytes in oxArray's memory, so that a large document
// lands in large pages and growing the buffer ahead of a block of numbers
// does not zero bytes that are written next; with the few string operations
// the writer needs.
class OutputBuffer {
 public:
  void operator+=(char c) { m_bytes.push_back(c); }
  void operator+=(std::string_view text) { append(text); }
  void append(std::string_view text) { m_bytes.insert(m_bytes.end(), text.begin(), text.end()); }
  void append(const char* text, size_t length) { append(std::string_view(text, length)); }
  void append(size_t count, char c) { m_bytes.insert(m_bytes.end(), count, c); }
  void resize(size_t size) { m_bytes.resize(size); }
  void clear() { m_bytes.clear(); }
  size_t size() const { return m_bytes.size(); }
  char* data() { return m_bytes.data(); }
  std::string_view view() const { return {m_bytes.data(), m_bytes.size()}; }

 private:
  oxArray<char> m_bytes;
};

void AppendEscaped(OutputBuffer& out, std::string_view text, bool attribute) {
  size_t plain = 0;
  auto flush = [&](size_t i) {
    out.append(text.data() + plain, i - plain);
    plain = i + 1;
  };
  for (size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    const char* escape = nullptr;
    switch (c) {
      case '&':
        escape = "&amp;";
        break;
      case '<':
        escape = "&lt;";
        break;
      case '>':
        escape = "&gt;";
        break;
      case '\r':
        escape = "&#13;";
        break;
      case '"':
        escape = attribute ? "&quot;" : nullptr;
        break;
      case '\n':
        escape = attribute ? "&#10;" : nullptr;
        break;
      case '\t':
        escape = attribute ? "&#9;" : nullptr;
        break;
      default:
        if (IsForbiddenControl(c)) escape = "";
        break;
    }
    if (!escape) continue;
    flush(i);
    out.append(escape);
  }
  out.append(text.data() + plain, text.size() - plain);
}

int DigitCount(uint32_t value) {
  int n = 1;
  for (uint64_t power = 10; power <= value; power *= 10)
    ++n;
  return n;
}

// Writes a finite, non-zero, positive float as std::to_chars writes it:
// Dragonbox's shortest digits in fixed or scientific notation, whichever is
// shorter, fixed when both are as long, the exponent signed and at least two
// digits long. A fixed form that ends in zeros before the point has the same
// length as the float's exact integer value, which std::to_chars prefers as
// the nearer of the two; that value is written instead.
char* FormatPositiveFloat(char* out, float value) {
  const auto decimal = fmt::detail::dragonbox::to_decimal(value);
  const uint32_t digits = decimal.significand;
  const int exponent = decimal.exponent;
  const int n = DigitCount(digits);
  const int scientific = exponent + n - 1;
  const int magnitude = std::abs(scientific);
  const int scientificLength = n + (n > 1 ? 1 : 0) + 2 + (magnitude >= 100 ? 3 : 2);
  const int fixedLength = exponent >= 0 ? n + exponent : (n + exponent > 0 ? n + 1 : 2 - exponent);
  if (fixedLength <= scientificLength) {
    if (exponent > 0) return std::to_chars(out, out + 24, static_cast<uint64_t>(value)).ptr;
    if (exponent == 0) {
      std::to_chars(out, out + n, digits);
      return out + n;
    }
    const int whole = n + exponent;
    if (whole > 0) {
      std::to_chars(out + 1, out + 1 + n, digits);
      std::memmove(out, out + 1, static_cast<size_t>(whole));
      out[whole] = '.';
      return out + n + 1;
    }
    *out++ = '0';
    *out++ = '.';
    out = std::fill_n(out, -whole, '0');
    std::to_chars(out, out + n, digits);
    return out + n;
  }
  std::to_chars(out + 1, out + 1 + n, digits);
  out[0] = out[1];
  if (n > 1) out[1] = '.';
  out += n > 1 ? n + 1 : 1;
  *out++ = 'e';
  *out++ = scientific < 0 ? '-' : '+';
  if (magnitude < 10) *out++ = '0';
  return std::to_chars(out, out + 4, magnitude).ptr;
}

// Writes the shortest text that reads back to the same float or double, or
// the XML Schema spelling of a non-finite value; returns the end of the text.
// Floats, which fill the number arrays, take the Dragonbox path above (faster
// than std::to_chars, and byte for byte the same text: a test compares the
// two on every 1001st bit pattern); doubles, written only in attributes, take
// std::to_chars.
template <class Real>
char* FormatFloat(char* first, char* last, Real value) {
  if (std::isnan(value)) return std::copy_n("NaN", 3, first);
  if (std::isinf(value))
    return value < 0 ? std::copy_n("-INF", 4, first) : std::copy_n("INF", 3, first);
  if constexpr (std::is_same_v<Real, float>) {
    if (value == 0) return std::to_chars(first, last, value).ptr;  // "0" or "-0"
    if (value < 0) *first++ = '-';
    return FormatPositiveFloat(first, std::abs(value));
  } else {
    return std::to_chars(first, last, value).ptr;
  }
}

template <class T>
char* FormatInteger(char* first, char* last, T value) {
  return std::to_chars(first, last, value).ptr;
}

template <class Real>
void AppendFloat(std::string& out, Real value) {
  char buf[32];
  out.append(buf, static_cast<size_t>(FormatFloat(buf, buf + sizeof buf, value) - buf));
}

template <class T>
void AppendInteger(std::string& out, T value) {
  char buf[24];
  out.append(buf, static_cast<size_t>(FormatInteger(buf, buf + sizeof buf, value) - buf));
}

// The longest text of a value and its blank: "-1.17549435e-38" for a float,
// "-2147483648" for an int.
template <class T>
constexpr size_t kWidest = std::is_floating_point_v<T> ? 16 : 12;

// Appends `count` values separated by blanks (and one before the first
// unless `first`), formatting each straight into the buffer: the buffer
// grows once per block of values instead of once per value. `format` writes
// one value into [first, last) and returns its end.
template <class T, class Format>
void AppendRun(OutputBuffer& out, const T* values, size_t count, bool first, Format format) {
  constexpr size_t kBlock = 4096;
  for (size_t begin = 0; begin < count; begin += kBlock) {
    const size_t end = std::min<size_t>(count, begin + kBlock);
    const size_t start = out.size();
    out.resize(start + (end - begin) * kWidest<T>);
    char* at = out.data() + start;
    char* const last = out.data() + out.size();
    for (size_t i = begin; i < end; ++i) {
      if (i || !first) *at++ = ' ';
      at = format(at, last, values[i]);
    }
    out.resize(static_cast<size_t>(at - out.data()));
  }
}

// Lists of at least this many values are formatted in as many runs as the
// machine has cores, side by side, and the runs appended in order: turning
// numbers into text is most of the time of writing a document, and a
// document's number lists are its bulk.
constexpr size_t kValuesInParallel = size_t{1} << 16;

// Appends `count` values separated by blanks (see AppendRun). The first run
// is formatted into `out`, the others into `texts`, kept by the writer from
// list to list so that their memory is faulted in once, not once per list.
template <class T, class Format>
void AppendValues(OutputBuffer& out, std::vector<OutputBuffer>& texts, const T* values,
                  size_t count, Format format) {
  // A run has at least half the threshold: a shorter list makes one run.
  const size_t runs = std::min<size_t>(std::max(1u, std::thread::hardware_concurrency()),
                                       count / (kValuesInParallel / 2));
  if (runs < 2) return AppendRun(out, values, count, true, format);
  if (texts.size() < runs) texts.resize(runs);
  oxParallelFor(runs, [&](size_t r) {
    const size_t begin = count * r / runs;
    const size_t end = count * (r + 1) / runs;
    OutputBuffer& text = r == 0 ? out : texts[r];
    if (r > 0) text.clear();
    AppendRun(text, values + begin, end - begin, r == 0, format);
  });
  for (size_t r = 1; r < runs; ++r)
    out.append(texts[r].view());
}

}  // namespace

struct oxXMLWriter::Impl {
  struct Frame {
    std::string tag;  // empty: transparent
    bool startTagOpen = false;
    bool attributesEnded = false;
    bool hasChildren = false;
    bool hasText = false;
    std::vector<std::string> attributeNames;  // written so far, to refuse repeats
  };
  // File writers send the buffer to the file whenever it grows past this,
  // so that memory does not grow with the document.
  static constexpr size_t kFlushSize = size_t{1} << 20;

  OutputBuffer buffer;
  std::vector<OutputBuffer> runs;  // see AppendValues
  std::vector<Frame> frames;
  unsigned int namedDepth = 0;
  oxString path;  // empty: memory writer
  std::FILE* file = nullptr;
  bool closed = false;
  bool rootWritten = false;
  bool failed = false;  // the file could not be created or written

  // Creates the output file once; false (logged once) when it cannot be.
  bool Open() {
    if (file || path.empty()) return true;
    if (failed) return false;
    file = std::fopen(path.c_str(), "wb");
    if (file) return true;
    failed = true;
    OX_LOG(kLogError, oxConcat("cannot create '", path, "': ", std::strerror(errno)));
    return false;
  }
  // Sends the buffer to the file (file writers only).
  void Flush() {
    if (path.empty()) return;
    if (Open() && std::fwrite(buffer.data(), 1, buffer.size(), file) != buffer.size())
      failed = true;
    buffer.clear();
  }
  void FlushIfLarge() {
    if (buffer.size() >= kFlushSize) Flush();
  }

  Frame* NamedTop() {
    for (auto it = frames.rbegin(); it != frames.rend(); ++it) {
      if (!it->tag.empty()) return &*it;
    }
    return nullptr;
  }
  void CloseStartTag(Frame& f) {
    if (!f.startTagOpen) return;
    buffer += '>';
    f.startTagOpen = false;
  }
  // Indents by two blanks a level, up to kMaxIndentLevels: deeper elements
  // line up at that column, so output stays linear in the element count
  // however deep a document nests.
  static constexpr unsigned int kMaxIndentLevels = 32;
  void NewLine(unsigned int depth) {
    buffer += '\n';
    buffer.append(2 * std::min(depth, kMaxIndentLevels), ' ');
  }
  // Prepares the enclosing element to receive text; false when there is no
  // element to hold it (text outside the root is dropped).
  bool BeginText() {
    Frame* f = NamedTop();
    if (!f) return false;
    CloseStartTag(*f);
    if (f->hasText) buffer += ' ';
    f->hasText = true;
    return true;
  }
  void Pop() {
    Frame f = std::move(frames.back());
    frames.pop_back();
    if (f.tag.empty()) return;
    --namedDepth;
    if (f.startTagOpen) {
      buffer += "/>";
      return;
    }
    if (f.hasChildren) NewLine(namedDepth);
    buffer += "</";
    buffer += f.tag;
    buffer += '>';
    FlushIfLarge();
  }
};

oxXMLWriter::oxXMLWriter(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {
  m_impl->buffer.append("<?xml version=\"1.0\" encoding=\"utf-8\"?>");
}

oxXMLWriter::~oxXMLWriter() {
  Close();
}

int oxXMLWriter::StartElement(std::string_view tag) {
  Impl& w = *m_impl;
  // A document has one root: anything started after it has closed is
  // dropped like a transparent element's markup.
  if (tag.empty() || (w.namedDepth == 0 && w.rootWritten)) {
    w.frames.push_back({});
    return 0;
  }
  w.rootWritten = true;
  if (Impl::Frame* parent = w.NamedTop()) {
    w.CloseStartTag(*parent);
    parent->hasChildren = true;
  }
  w.NewLine(w.namedDepth);
  w.buffer += '<';
  w.buffer.append(tag);
  w.frames.push_back({std::string(tag), true, false, false, false, {}});
  ++w.namedDepth;
  return 0;
}

int oxXMLWriter::WriteAttributeString(std::string_view name, std::string_view value) {
  Impl& w = *m_impl;
  if (w.frames.empty()) return 0;
  Impl::Frame& f = w.frames.back();
  if (f.tag.empty() || !f.startTagOpen || f.attributesEnded) return 0;
  // A repeated name would make the element ill-formed: the first value stays.
  if (std::ranges::find(f.attributeNames, name) != f.attributeNames.end()) return 0;
  f.attributeNames.emplace_back(name);
  w.buffer += ' ';
  w.buffer.append(name);
  w.buffer += "=\"";
  AppendEscaped(w.buffer, value, true);
  w.buffer += '"';
  return 0;
}

namespace {
template <class T>
std::string IntegerText(T value) {
  std::string s;
  AppendInteger(s, value);
  return s;
}
}  // namespace

int oxXMLWriter::WriteAttributeUInt(std::string_view n, uint32_t v) {
  return WriteAttributeString(n, IntegerText(v));
}
int oxXMLWriter::WriteAttributeInt(std::string_view n, int32_t v) {
  return WriteAttributeString(n, IntegerText(v));
}
int oxXMLWriter::WriteAttributeShort(std::string_view n, int16_t v) {
  return WriteAttributeString(n, IntegerText(v));
}
int oxXMLWriter::WriteAttributeUShort(std::string_view n, uint16_t v) {
  return WriteAttributeString(n, IntegerText(v));
}
int oxXMLWriter::WriteAttributeFloat(std::string_view n, float v) {
  std::string s;
  AppendFloat(s, v);
  return WriteAttributeString(n, s);
}
int oxXMLWriter::WriteAttributeDouble(std::string_view n, double v) {
  std::string s;
  AppendFloat(s, v);
  return WriteAttributeString(n, s);
}
int oxXMLWriter::WriteAttributeBool(std::string_view n, bool v) {
  return WriteAttributeString(n, v ? "true" : "false");
}

int oxXMLWriter::EndAttributes() {
  if (!m_impl->frames.empty()) m_impl->frames.back().attributesEnded = true;
  return 0;
}

int oxXMLWriter::EndElement() {
  if (!m_impl->frames.empty()) m_impl->Pop();
  return 0;
}

int oxXMLWriter::AddLeafElement(std::string_view tag, std::string_view text, bool skipEmpty) {
  if (text.empty() && skipEmpty) return 0;
  StartElement(tag);
  EndAttributes();
  if (!text.empty()) m_textWriter.WriteText(text);
  return EndElement();
}

unsigned int oxXMLWriter::GetDepth() const {
  return static_cast<unsigned int>(m_impl->frames.size());
}

void oxXMLWriter::CloseTo(unsigned int depth) {
  while (m_impl->frames.size() > depth)
    m_impl->Pop();
}

int oxXMLWriter::IsReady() {
  return m_impl->Open() ? 0 : kXMLCannotOpen;
}

int oxXMLWriter::Close() {
  Impl& w = *m_impl;
  if (w.closed) return 0;
  w.closed = true;
  CloseTo(0);
  w.buffer += '\n';
  if (w.path.empty()) return 0;
  const bool opened = w.Open();
  w.Flush();
  if (!opened) return kXMLCannotOpen;
  const bool closedOk = std::fclose(w.file) == 0;
  w.file = nullptr;
  if (closedOk && !w.failed) return 0;
  OX_LOG(kLogError, oxConcat("cannot write '", w.path, "'"));
  return kXMLWriteFailed;
}

std::string_view oxXMLWriter::GetBuffer() const {
  return m_impl->buffer.view();
}

// The copy goes into memory faulted in ahead in one call (in large pages for
// a large document): a string growing page by page would pay a page fault per
// 4 kB, which on virtual machines costs more than the copy.
std::string oxXMLWriter::TakeBuffer() {
  const std::string_view text = m_impl->buffer.view();
  std::string taken;
  taken.reserve(text.size());
  oxPrefault(taken.data(), text.size());
  taken.append(text);
  m_impl->buffer = OutputBuffer();
  return taken;
}

int oxXMLTextWriter::WriteText(std::string_view text) {
  oxXMLWriter::Impl& w = *m_writer.m_impl;
  if (text.empty() || !w.BeginText()) return 0;
  AppendEscaped(w.buffer, text, false);
  return 0;
}

int oxXMLTextWriter::WriteFloats(const float* values, unsigned int count, int) {
  oxXMLWriter::Impl& w = *m_writer.m_impl;
  if (count == 0 || !w.BeginText()) return 0;
  AppendValues(w.buffer, w.runs, values, count, FormatFloat<float>);
  w.FlushIfLarge();
  return 0;
}

int oxXMLTextWriter::WriteInts(const int32_t* values, unsigned int count, int) {
  oxXMLWriter::Impl& w = *m_writer.m_impl;
  if (count == 0 || !w.BeginText()) return 0;
  AppendValues(w.buffer, w.runs, values, count, FormatInteger<int32_t>);
  w.FlushIfLarge();
  return 0;
}

int oxXMLTextWriter::WriteBools(const bool* values, unsigned int count, int) {
  oxXMLWriter::Impl& w = *m_writer.m_impl;
  if (count == 0 || !w.BeginText()) return 0;
  for (unsigned int i = 0; i < count; ++i) {
    if (i) w.buffer += ' ';
    w.buffer += values[i] ? "true" : "false";
  }
  return 0;
}

int oxXMLTextWriter::WriteStrings(const oxString* values, unsigned int count, int) {
  oxXMLWriter::Impl& w = *m_writer.m_impl;
  if (count == 0 || !w.BeginText()) return 0;
  for (unsigned int i = 0; i < count; ++i) {
    if (i) w.buffer += ' ';
    AppendEscaped(w.buffer, values[i], false);
  }
  return 0;
}

int oxXMLFactory::CreateWriter(oxRefPtr<oxXMLWriter>& writer, const oxURI& uri, int, oxProgress*) {
  const oxString path = uri.GetFilePath();
  if (path.empty()) {
    OX_LOG(kLogError, oxConcat("cannot write '", uri.GetString(), "': not a local file"));
    return kXMLCannotOpen;
  }
  auto impl = std::make_unique<oxXMLWriter::Impl>();
  impl->path = path;
  writer = oxRefPtr<oxXMLWriter>(new oxXMLWriter(std::move(impl)));
  return 0;
}

int oxXMLFactory::CreateWriter(oxRefPtr<oxXMLWriter>& writer) {
  writer = oxRefPtr<oxXMLWriter>(new oxXMLWriter(std::make_unique<oxXMLWriter::Impl>()));
  return 0;
}

}  // namespace OxKernel
