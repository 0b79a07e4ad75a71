#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <fmt/compile.h>
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
  void reserve(size_t size) { m_bytes.reserve(size); }
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

// Writes a finite, non-zero, positive float as std::to_chars writes it:
// Dragonbox's shortest digits in fixed or scientific notation, whichever is
// shorter, fixed when both are as long, the exponent signed and at least two
// digits long. A fixed form that ends in zeros before the point has the same
// length as the float's exact integer value, which std::to_chars prefers as
// the nearer of the two; that value is written instead. The digits go
// straight to their places, two at a time, the point among them: this layout
// costs less than the digits' search itself.
char* FormatPositiveFloat(char* out, float value) {
  namespace fd = fmt::detail;
  const auto decimal = fd::dragonbox::to_decimal(value);
  const uint32_t digits = decimal.significand;
  const int exponent = decimal.exponent;
  const int n = fd::count_digits(digits);
  const int scientific = exponent + n - 1;
  const int magnitude = std::abs(scientific);
  // A float's decimal exponent lies within -45 and 38: always two digits.
  const int scientificLength = n + (n > 1 ? 1 : 0) + 4;
  const int fixedLength = exponent >= 0 ? n + exponent : (n + exponent > 0 ? n + 1 : 2 - exponent);
  if (fixedLength <= scientificLength) {
    if (exponent > 0) return std::to_chars(out, out + 24, static_cast<uint64_t>(value)).ptr;
    const int whole = n + exponent;
    if (whole > 0) return fd::write_significand(out, digits, n, whole, exponent < 0 ? '.' : '\0');
    *out++ = '0';
    *out++ = '.';
    out = std::fill_n(out, -whole, '0');
    return fd::format_decimal(out, digits, n).end;
  }
  out = fd::write_significand(out, digits, n, 1, n > 1 ? '.' : '\0');
  *out++ = 'e';
  *out++ = scientific < 0 ? '-' : '+';
  fd::copy2(out, fd::digits2(static_cast<size_t>(magnitude)));
  return out + 2;
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
    // The sign is written whatever it is and kept only when negative: a
    // branch on it would be mispredicted for half the values of a mesh.
    *first = '-';
    first += std::signbit(value);
    return FormatPositiveFloat(first, std::abs(value));
  } else {
    return std::to_chars(first, last, value).ptr;
  }
}

// Writes an integer in decimal; [first, last) has room for the widest. fmt's
// compiled format writes two digits at a time from a digit count found with
// one instruction, faster than std::to_chars on index lists.
template <class T>
char* FormatInteger(char* first, char*, T value) {
  return fmt::format_to(first, FMT_COMPILE("{}"), value);
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

// Appends `count` values separated by blanks (see AppendRun). A short list
// goes into `out`; a long one is formatted into `texts`, one run each, which
// `emit` then takes in order. Each run's buffer is reserved for its widest
// text up front, so that it never grows by copying.
template <class T, class Format, class Emit>
void AppendValues(OutputBuffer& out, std::vector<OutputBuffer>& texts, const T* values,
                  size_t count, Format format, Emit emit) {
  // A run has at least half the threshold: a shorter list makes one run.
  const size_t runs = std::min<size_t>(std::max(1u, std::thread::hardware_concurrency()),
                                       count / (kValuesInParallel / 2));
  if (runs < 2) return AppendRun(out, values, count, true, format);
  if (texts.size() < runs) texts.resize(runs);
  oxParallelFor(runs, [&](size_t r) {
    const size_t begin = count * r / runs;
    const size_t end = count * (r + 1) / runs;
    OutputBuffer& text = texts[r];
    text.clear();
    text.reserve((end - begin) * kWidest<T>);
    AppendRun(text, values + begin, end - begin, r == 0, format);
  });
  for (size_t r = 0; r < runs; ++r)
    emit(texts[r]);
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
  // Whenever the buffer grows past this, a file writer sends it to the file,
  // so that memory does not grow with the document, and a memory writer sets
  // it aside as a finished piece, so that growing never copies what has been
  // written.
  static constexpr size_t kFlushSize = size_t{1} << 20;

  OutputBuffer buffer;
  std::vector<OutputBuffer> pieces;  // a memory writer's text before `buffer`
  std::vector<OutputBuffer> runs;    // see AppendValues
  std::vector<Frame> frames;
  unsigned int namedDepth = 0;
  oxString path;      // empty: memory writer
  int file = -1;      // the output file, once opened
  off_t written = 0;  // bytes sent to it
  bool closed = false;
  bool rootWritten = false;
  bool failed = false;  // the file could not be created or written

  // Opens or creates the output file once; false (logged once) when it
  // cannot be. An existing file is not emptied here but written over and cut
  // to the new length on closing: emptying a large file first frees every
  // page of it and makes the kernel find new ones, which costs more than
  // writing the whole document into the pages it has.
  bool Open() {
    if (file >= 0 || path.empty()) return true;
    if (failed) return false;
    file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (file >= 0) return true;
    failed = true;
    OX_LOG(kLogError, oxConcat("cannot create '", path, "': ", std::strerror(errno)));
    return false;
  }
  void Send(std::string_view text) {
    if (!Open()) return;
    while (!text.empty() && !failed) {
      const ssize_t sent = write(file, text.data(), text.size());
      if (sent < 0 && errno == EINTR) continue;
      failed = sent <= 0;
      if (failed) return;
      written += sent;
      text.remove_prefix(static_cast<size_t>(sent));
    }
  }
  // Cuts what is left of an earlier, longer file and closes; true when all
  // went well. A pipe or a device has no length to cut.
  bool CloseFile() {
    struct stat status {};
    const bool cut =
        fstat(file, &status) != 0 || !S_ISREG(status.st_mode) || ftruncate(file, written) == 0;
    const bool closedOk = close(file) == 0;
    file = -1;
    return cut && closedOk && !failed;
  }
  // Sends the buffer to the file, or sets it aside among the pieces.
  void Flush() {
    if (!path.empty()) {
      Send(buffer.view());
      buffer.clear();
      return;
    }
    if (buffer.size() == 0) return;
    pieces.push_back(std::move(buffer));
    buffer = OutputBuffer();
    buffer.reserve(2 * kFlushSize);
  }
  // Adds text made outside the buffer. A large piece is not copied: once
  // what is buffered has been flushed, the piece takes the buffer's place
  // and is flushed as the buffer is (the two trade their memory, which both
  // keep for later use).
  void Append(OutputBuffer& text) {
    if (text.size() < kFlushSize) return buffer.append(text.view());
    Flush();
    std::swap(buffer, text);
    Flush();
  }
  template <class T, class Format>
  void WriteNumbers(const T* values, unsigned int count, Format format) {
    if (count == 0 || !BeginText()) return;
    AppendValues(buffer, runs, values, count, format, [this](OutputBuffer& run) { Append(run); });
    FlushIfLarge();
  }
  // Moves a memory writer's whole text into `target`, reserved once in
  // large pages. Each piece is freed once copied, and the room it goes to is
  // faulted in just before in one call: a page fault per 4 kB would cost more
  // than the copy on virtual machines, and faulting in the whole text first
  // would hold it twice at the peak.
  template <class Text>
  void MoveTextInto(Text& target) {
    size_t total = buffer.size();
    for (const OutputBuffer& piece : pieces)
      total += piece.size();
    target.reserve(total);
    oxAdviseLargePages(target.data(), total);
    pieces.push_back(std::move(buffer));
    for (OutputBuffer& piece : pieces) {
      oxPrefault(target.data() + target.size(), piece.size());
      target.append(piece.view());
      piece = OutputBuffer();
    }
    pieces.clear();
    buffer = OutputBuffer();
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
  if (w.CloseFile()) return 0;
  OX_LOG(kLogError, oxConcat("cannot write '", w.path, "'"));
  return kXMLWriteFailed;
}

// A memory writer's pieces are joined here, once: the view is of one block.
std::string_view oxXMLWriter::GetBuffer() const {
  Impl& w = *m_impl;
  if (!w.pieces.empty()) {
    OutputBuffer joined;
    w.MoveTextInto(joined);
    w.buffer = std::move(joined);
  }
  return w.buffer.view();
}

std::string oxXMLWriter::TakeBuffer() {
  std::string taken;
  m_impl->MoveTextInto(taken);
  return taken;
}

int oxXMLTextWriter::WriteText(std::string_view text) {
  oxXMLWriter::Impl& w = *m_writer.m_impl;
  if (text.empty() || !w.BeginText()) return 0;
  AppendEscaped(w.buffer, text, false);
  return 0;
}

int oxXMLTextWriter::WriteFloats(const float* values, unsigned int count, int) {
  m_writer.m_impl->WriteNumbers(values, count, FormatFloat<float>);
  return 0;
}

int oxXMLTextWriter::WriteInts(const int32_t* values, unsigned int count, int) {
  m_writer.m_impl->WriteNumbers(values, count, FormatInteger<int32_t>);
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
