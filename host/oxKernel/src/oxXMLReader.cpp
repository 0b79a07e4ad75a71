#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>
#include <pugixml.hpp>

#include "oxKernel/oxCharacter.h"
#include "oxKernel/oxLog.h"
#include "oxKernel/oxParallel.h"
#include "oxKernel/oxXML.h"
#include "oxNumberText.h"

namespace OxKernel {

namespace {

bool IsText(pugi::xml_node node) {
  return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

pugi::xml_node FirstText(pugi::xml_node element) {
  for (pugi::xml_node n = element.first_child(); n; n = n.next_sibling()) {
    if (IsText(n)) return n;
  }
  return {};
}

pugi::xml_node NextElement(pugi::xml_node node) {
  while (node && node.type() != pugi::node_element)
    node = node.next_sibling();
  return node;
}

// Byte offset of an element's "<": the parser records where its name starts,
// one byte further on.
size_t StartTagOffset(pugi::xml_node element) {
  const ptrdiff_t name = element.offset_debug();
  return name > 0 ? static_cast<size_t>(name - 1) : 0;
}

oxXMLTextValue MakeTextValue(pugi::xml_node text, const char* tag) {
  const char* value = text.value();
  return oxXMLTextValue(value, std::strlen(value), tag);
}

void WarnInvalidToken(std::string_view token, const char* tag) {
  OX_LOG(kLogWarning, oxConcat("invalid value '", token, "' in <", tag, ">"));
}

// Takes the token that starts at `p` (no leading white space) and moves `p`
// to the white space or end after it.
std::string_view TakeToken(const char*& p, const char* end) {
  const char* start = p;
  while (p != end && !oxCharacter::IsSpace(*p))
    ++p;
  return {start, static_cast<size_t>(p - start)};
}

// Walks the white-space separated tokens of a text. Each `convert(token)`
// returns false to stop at a token that does not convert.
template <class Convert>
int ForEachToken(std::string_view text, unsigned int wanted, unsigned int& parsed, const char* tag,
                 Convert&& convert) {
  parsed = 0;
  const char* p = text.data();
  const char* end = p + text.size();
  while (parsed < wanted) {
    while (p != end && oxCharacter::IsSpace(*p))
      ++p;
    if (p == end) break;
    const std::string_view token = TakeToken(p, end);
    if (!convert(token, parsed)) {
      WarnInvalidToken(token, tag);
      return -1;
    }
    ++parsed;
  }
  return 0;
}

// Reads a token of one to eight decimal digits that ends the text or is
// followed by white space, the common index, and moves `p` past it; false,
// with `p` unmoved, for any other token. Eight digits always fit an int32.
bool ReadShortDigits(const char*& p, const char* end, int32_t& value) {
  const char* q = p;
  uint32_t digits = 0;
  while (q != end && q - p < 9) {
    const unsigned digit = static_cast<unsigned char>(*q) - unsigned{'0'};
    if (digit > 9) break;
    digits = digits * 10 + digit;
    ++q;
  }
  if (q == p || q - p > 8 || (q != end && !oxCharacter::IsSpace(*q))) return false;
  value = static_cast<int32_t>(digits);
  p = q;
  return true;
}

// The number loop of the hot path: std::from_chars straight from the text,
// falling back to the token routine (signs, out-of-range values, errors).
// Integers of a few digits, the bulk of index lists, are read inline first.
template <class T>
int ParseNumbers(std::string_view text, T* out, unsigned int wanted, unsigned int& parsed,
                 const char* tag) {
  parsed = 0;
  const char* p = text.data();
  const char* end = p + text.size();
  while (parsed < wanted) {
    while (p != end && oxCharacter::IsSpace(*p))
      ++p;
    if (p == end) break;
    if constexpr (std::is_same_v<T, int32_t>) {
      if (ReadShortDigits(p, end, out[parsed])) {
        ++parsed;
        continue;
      }
    }
    // Converted into a local first: a token that turns out to be invalid
    // must leave its destination slot untouched.
    T value{};
    std::from_chars_result r;
    if constexpr (std::is_floating_point_v<T>) {
      r = std::from_chars(p, end, value, std::chars_format::general);
    } else {
      r = std::from_chars(p, end, value);
    }
    if (r.ec == std::errc() && (r.ptr == end || oxCharacter::IsSpace(*r.ptr))) {
      out[parsed++] = value;
      p = r.ptr;
      continue;
    }
    const std::string_view token = TakeToken(p, end);
    if (!NumberText::ParseToken(token, out[parsed])) {
      WarnInvalidToken(token, tag);
      return -1;
    }
    ++parsed;
  }
  return 0;
}

constexpr unsigned int kParseOptions =
    pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol | pugi::parse_wconv_attribute;

}  // namespace

int oxXMLTextValue::ParseFloats(float* d, unsigned int wanted, unsigned int& parsed, int) const {
  return ParseNumbers(GetText(), d, wanted, parsed, m_tag);
}

int oxXMLTextValue::ParseInts(int32_t* d, unsigned int wanted, unsigned int& parsed, int) const {
  return ParseNumbers(GetText(), d, wanted, parsed, m_tag);
}

int oxXMLTextValue::ParseBools(bool* d, unsigned int wanted, unsigned int& parsed, int) const {
  return ForEachToken(
      GetText(), wanted, parsed, m_tag,
      [d](std::string_view token, unsigned int i) { return NumberText::ParseToken(token, d[i]); });
}

int oxXMLTextValue::ParseStrings(oxString* d, unsigned int wanted, unsigned int& parsed,
                                 int) const {
  return ForEachToken(GetText(), wanted, parsed, m_tag,
                      [d](std::string_view token, unsigned int i) {
                        d[i].assign(token);
                        return true;
                      });
}

namespace {

// An upper bound for the tokens of a text, counted without a loop-carried
// state so that the compiler vectorises it (index lists are the largest
// texts of a document). Every byte up to the blank counts as a separator;
// tokens that begin with a control byte are not counted, but such a token
// stops the parse anyway, and the one extra slot lets the parse reach it.
size_t TokenCountBound(std::string_view text) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const size_t n = text.size();
  if (n == 0) return 0;
  size_t count = p[0] > ' ' ? 1 : 0;
  for (size_t i = 1; i < n; ++i)
    count += static_cast<size_t>((p[i - 1] <= ' ') & (p[i] > ' '));
  return count + 1;
}

}  // namespace

int oxXMLTextValue::AppendInts(oxArray<int32_t>& destination) const {
  // Counting first sizes the list once: no regrowth, at most one spare slot.
  const unsigned int tokens = ParseRoom(TokenCountBound(GetText()));
  const size_t base = destination.size();
  destination.resize(base + tokens);
  unsigned int parsed = 0;
  const int rc = ParseNumbers(GetText(), destination.data() + base, tokens, parsed, m_tag);
  destination.resize(base + parsed);
  return rc;
}

size_t oxXMLTextValue::CountTokens() const {
  size_t count = 0;
  bool inToken = false;
  for (char c : GetText()) {
    const bool space = oxCharacter::IsSpace(c);
    count += (!space && !inToken) ? 1 : 0;
    inToken = !space;
  }
  return count;
}

struct oxXMLReader::Impl {
  struct Level {
    pugi::xml_node parent;
    pugi::xml_node current;
    bool started = false;
    bool blocked = false;  // deeper than kMaxDepth: presents no elements
  };
  oxArray<char> bytes;
  size_t size = 0;
  pugi::xml_document document;
  std::vector<Level> levels;
  bool depthReported = false;

  pugi::xml_node Current() const { return levels.back().current; }
};

oxXMLReader::oxXMLReader(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {}

oxXMLReader::~oxXMLReader() = default;

int oxXMLReader::MoveNext() {
  Impl::Level& level = m_impl->levels.back();
  if (level.blocked) return kXMLNoElement;
  if (!level.started) {
    level.started = true;
    level.current = NextElement(level.parent.first_child());
  } else if (level.current) {
    level.current = NextElement(level.current.next_sibling());
  }
  return level.current ? kXMLOk : kXMLNoElement;
}

void oxXMLReader::EnterChildren() {
  const pugi::xml_node current = m_impl->Current();
  const bool tooDeep = m_impl->levels.size() > kMaxDepth;
  // Only a level that really holds elements loses content worth reporting.
  if (tooDeep && !m_impl->depthReported && NextElement(current.first_child())) {
    m_impl->depthReported = true;
    OX_LOG(kLogError,
           oxConcat("elements nested deeper than ", kMaxDepth, " levels at <", current.name(),
                    "> (byte offset ", StartTagOffset(current), "); their content is skipped"));
  }
  m_impl->levels.push_back({current, {}, false, tooDeep || !current});
}

void oxXMLReader::LeaveChildren() {
  if (m_impl->levels.size() > 1) m_impl->levels.pop_back();
}

unsigned int oxXMLReader::GetDepth() const {
  return static_cast<unsigned int>(m_impl->levels.size() - 1);
}

size_t oxXMLReader::CountChildElements() const {
  size_t count = 0;
  for (pugi::xml_node n = NextElement(m_impl->Current().first_child()); n;
       n = NextElement(n.next_sibling())) {
    ++count;
  }
  return count;
}

size_t oxXMLReader::GetElementSpan() const {
  const pugi::xml_node current = m_impl->Current();
  const ptrdiff_t start = current.offset_debug();
  ptrdiff_t end = -1;
  for (pugi::xml_node n = current; n && end < 0; n = n.parent()) {
    if (const pugi::xml_node next = n.next_sibling()) end = next.offset_debug();
  }
  if (start < 0) return m_impl->size;
  return end < start ? m_impl->size - static_cast<size_t>(start) : static_cast<size_t>(end - start);
}

bool oxXMLReader::IsTag(std::string_view tag) const {
  return GetTag() == tag;
}

std::string_view oxXMLReader::GetTag() const {
  return m_impl->Current().name();
}

size_t oxXMLReader::GetOffset() const {
  return StartTagOffset(m_impl->Current());
}

namespace {

pugi::xml_attribute FindAttribute(pugi::xml_node node, std::string_view name) {
  for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute()) {
    if (name == a.name()) return a;
  }
  return {};
}

template <class T>
bool ReadAttributeNumber(pugi::xml_node node, std::string_view name, T& value) {
  const pugi::xml_attribute a = FindAttribute(node, name);
  if (!a) return false;
  if (oxCharacter::Interpret(a.value(), value)) return true;
  OX_LOG(kLogWarning, oxConcat("invalid value '", a.value(), "' of attribute '", name, "' in <",
                               node.name(), ">"));
  return false;
}

}  // namespace

bool oxXMLReader::HasAttribute(std::string_view name) const {
  return static_cast<bool>(FindAttribute(m_impl->Current(), name));
}

bool oxXMLReader::ReadAttributeString(std::string_view name, oxString& value) const {
  const pugi::xml_attribute a = FindAttribute(m_impl->Current(), name);
  if (!a) return false;
  value.assign(a.value());
  return true;
}

bool oxXMLReader::ReadAttributeUInt(std::string_view n, uint32_t& v) const {
  return ReadAttributeNumber(m_impl->Current(), n, v);
}
bool oxXMLReader::ReadAttributeInt(std::string_view n, int32_t& v) const {
  return ReadAttributeNumber(m_impl->Current(), n, v);
}
bool oxXMLReader::ReadAttributeShort(std::string_view n, int16_t& v) const {
  return ReadAttributeNumber(m_impl->Current(), n, v);
}
bool oxXMLReader::ReadAttributeUShort(std::string_view n, uint16_t& v) const {
  return ReadAttributeNumber(m_impl->Current(), n, v);
}
bool oxXMLReader::ReadAttributeFloat(std::string_view n, float& v) const {
  return ReadAttributeNumber(m_impl->Current(), n, v);
}
bool oxXMLReader::ReadAttributeDouble(std::string_view n, double& v) const {
  return ReadAttributeNumber(m_impl->Current(), n, v);
}
bool oxXMLReader::ReadAttributeBool(std::string_view n, bool& v) const {
  return ReadAttributeNumber(m_impl->Current(), n, v);
}

bool oxXMLReader::ReadTextString(oxString& value) const {
  const pugi::xml_node text = FirstText(m_impl->Current());
  if (!text) return false;
  value.assign(text.value());
  return true;
}

namespace {
template <class T>
bool ReadTextNumber(pugi::xml_node element, T& value) {
  const pugi::xml_node text = FirstText(element);
  if (!text) return false;
  if (oxCharacter::Interpret(text.value(), value)) return true;
  WarnInvalidToken(oxCharacter::Trim(text.value()), element.name());
  return false;
}
}  // namespace

bool oxXMLReader::ReadTextFloat(float& value) const {
  return ReadTextNumber(m_impl->Current(), value);
}

bool oxXMLReader::ReadTextInt(int32_t& value) const {
  return ReadTextNumber(m_impl->Current(), value);
}

const oxXMLTextValue* oxXMLReader::GetTextValue() {
  const pugi::xml_node element = m_impl->Current();
  const pugi::xml_node text = FirstText(element);
  if (!text) return nullptr;
  m_text = MakeTextValue(text, element.name());
  return &m_text;
}

bool oxXMLReader::HasPlainText() const {
  const pugi::xml_node first = m_impl->Current().first_child();
  return first && IsText(first) && !first.next_sibling();
}

void oxXMLReader::ForEachTextChild(const std::function<void(const oxXMLTextValue&)>& visit) const {
  const pugi::xml_node element = m_impl->Current();
  for (pugi::xml_node n = element.first_child(); n; n = n.next_sibling()) {
    if (IsText(n)) visit(MakeTextValue(n, element.name()));
  }
}

oxXMLFactory& oxXMLFactory::Instance(unsigned int) {
  static oxXMLFactory factory;
  return factory;
}

namespace {

// Files from this size on are read in pieces side by side (see ReadPieces),
// at most this many.
constexpr size_t kPiecewiseBytes = size_t{4} << 20;
constexpr size_t kMostPieces = 8;
// The pieces start on large-page boundaries, so that no page is faulted in
// by two threads at once.
constexpr size_t kPieceAlignment = size_t{2} << 20;
// The stack of a reading thread: it only calls pread.
constexpr size_t kReaderStack = size_t{256} << 10;

// Reads the first `size` bytes of the file `fd` into `into`, in one piece
// per core read side by side when the file is large: most of the time of
// reading a large file goes into the kernel clearing the fresh pages it
// lands in, which the cores can share (a 500 MB document loads 5% faster
// on two cores). Returns how many bytes from the start were read without a
// gap: fewer than `size` when the file shrank while it was read, or a read
// failed (`error` then holds its errno value).
size_t ReadPieces(int fd, char* into, size_t size, int& error) {
  const size_t cores = std::clamp<size_t>(std::thread::hardware_concurrency(), 1, kMostPieces);
  const size_t wanted = size < kPiecewiseBytes ? 1 : cores;
  const size_t piece = (size / wanted + kPieceAlignment - 1) & ~(kPieceAlignment - 1);
  const size_t pieces = piece == 0 ? 0 : (size + piece - 1) / piece;
  std::vector<size_t> read(pieces, 0);
  std::vector<int> errors(pieces, 0);
  const auto readPiece = [&](size_t i) {
    const size_t begin = i * piece;
    const size_t end = std::min(size, begin + piece);
    while (begin + read[i] < end) {
      const ssize_t n = pread(fd, into + begin + read[i], end - begin - read[i],
                              static_cast<off_t>(begin + read[i]));
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) {
        errors[i] = n < 0 ? errno : 0;
        return;
      }
      read[i] += static_cast<size_t>(n);
    }
  };
  oxParallelFor(pieces, readPiece, kReaderStack);
  size_t done = 0;
  for (size_t i = 0; i < pieces; ++i) {
    done += read[i];
    if (done < std::min(size, (i + 1) * piece)) {
      error = errors[i];
      break;
    }
  }
  return done;
}

// Reads a whole file into one buffer of exactly its size (plus one spare
// byte), so that the bytes are held once while the parser works on them in
// place; a large file lands in large pages (oxArray's allocator), which the
// kernel fills with a fraction of the page faults. Files whose size is not
// known up front (pipes) or that grow while being read are read into a
// doubling buffer. Returns 0 or the errno value of a failed read.
int ReadWholeFile(std::FILE* file, oxArray<char>& bytes, size_t& size) {
  struct stat info {};
  size_t capacity = 0;
  if (fstat(fileno(file), &info) == 0 && S_ISREG(info.st_mode))
    capacity = static_cast<size_t>(info.st_size);
  bytes.resize(capacity + 1);
  int error = 0;
  size = ReadPieces(fileno(file), bytes.data(), capacity, error);
  if (size < capacity) return error;
  // The rest, if the file grew, is read through `file`, which has read
  // nothing yet; a pipe (size 0) cannot seek and needs not.
  if (size > 0 && fseeko(file, static_cast<off_t>(size), SEEK_SET) != 0) return errno;
  for (;;) {
    size += std::fread(bytes.data() + size, 1, capacity - size, file);
    if (size < capacity) break;  // end of file or read error
    const int next = std::fgetc(file);
    if (next == EOF) break;
    capacity = capacity ? capacity * 2 : (1 << 16);
    bytes.resize(capacity + 1);
    bytes[size++] = static_cast<char>(next);
  }
  return std::ferror(file) ? errno : 0;
}

// `bytes` and one spare byte, for parsing in place.
oxArray<char> CopyForParsing(std::string_view bytes) {
  oxArray<char> copy(bytes.size() + 1);
  std::copy(bytes.begin(), bytes.end(), copy.begin());
  return copy;
}

std::string Quoted(std::string_view name) {
  return oxConcat("'", name, "'");
}

}  // namespace

int oxXMLFactory::Parse(oxRefPtr<oxXMLReader>& reader, oxArray<char>&& bytes, size_t size,
                        std::string_view what) {
  auto owned = std::make_unique<oxXMLReader::Impl>();
  oxXMLReader::Impl& impl = *owned;
  impl.bytes = std::move(bytes);
  reader = oxRefPtr<oxXMLReader>(new oxXMLReader(std::move(owned)));
  const pugi::xml_parse_result result = impl.document.load_buffer_inplace(
      impl.bytes.data(), size, kParseOptions, pugi::encoding_auto);
  if (result) {
    impl.size = size;
    impl.levels.push_back({impl.document, {}, false, false});
    return kXMLOk;
  }
  reader.Reset();
  // The parser reports a failed allocation as a result rather than an
  // exception; it is raised like any other so that callers handle running
  // out of memory in one place, not as a malformed document.
  if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
  OX_LOG(kLogError, oxConcat("cannot parse ", what, ": ", result.description(), " at byte offset ",
                             result.offset));
  return kXMLNotWellFormed;
}

int oxXMLFactory::CreateReader(oxRefPtr<oxXMLReader>& reader, const oxURI& uri, oxProgress*, int) {
  reader.Reset();
  const oxString path = uri.GetFilePath();
  std::FILE* file = path.empty() ? nullptr : std::fopen(path.c_str(), "rb");
  if (!file) {
    OX_LOG(kLogError, oxConcat("cannot open '", uri.GetString(),
                               "': ", path.empty() ? "not a local file" : std::strerror(errno)));
    return kXMLCannotOpen;
  }
  oxArray<char> bytes;
  size_t size = 0;
  const int readError = ReadWholeFile(file, bytes, size);
  std::fclose(file);
  if (readError != 0) {
    OX_LOG(kLogError, oxConcat("cannot read '", uri.GetString(), "': ", std::strerror(readError)));
    return kXMLCannotOpen;
  }
  return Parse(reader, std::move(bytes), size, Quoted(uri.GetString().View()));
}

int oxXMLFactory::CreateReader(oxRefPtr<oxXMLReader>& reader, std::string_view bytes, int) {
  return Parse(reader, CopyForParsing(bytes), bytes.size(), "the in-memory document");
}

int oxXMLFactory::CreateReader(oxRefPtr<oxXMLReader>& reader, std::string_view bytes,
                               std::string_view name, int) {
  return Parse(reader, CopyForParsing(bytes), bytes.size(), Quoted(name));
}

int oxXMLFactory::CreateReader(oxRefPtr<oxXMLReader>& reader, oxArray<char>&& bytes, size_t size,
                               std::string_view name, int) {
  return Parse(reader, std::move(bytes), size, Quoted(name));
}

}  // namespace OxKernel
