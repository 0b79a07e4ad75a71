// The host XML factory, reader and writer.
//
// oxXMLReader is a cursor over a parsed document (pugixml, parsed in place in
// the reader's own copy of the bytes). The cursor stands on one element at a
// time; MoveNext walks the elements of the current level, EnterChildren and
// LeaveChildren step down and up. Comments and processing instructions are
// not visible; text nodes are reached through the text operations.
//
// oxXMLWriter streams elements into a memory buffer and writes the buffer to
// its file when it is closed. Two rules make any sequence of calls produce
// well-formed XML:
//  - An element started with an empty name is transparent: it produces no
//    markup, its attributes are dropped, and its text and children are written
//    into the nearest enclosing named element. Its EndElement closes nothing.
//  - An element left open is closed when an enclosing element closes: the
//    writer's depth can be marked with GetDepth and restored with CloseTo, and
//    Close ends every element still open.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "oxKernel/oxContainers.h"
#include "oxKernel/oxModule.h"
#include "oxKernel/oxRefPtr.h"
#include "oxKernel/oxString.h"
#include "oxKernel/oxURI.h"

namespace OxKernel {

// Results of the XML factory, reader and writer (0 is success).
enum oxXMLResult : int {
  kXMLOk = 0,
  kXMLCannotOpen = -30,     // the file is missing or unreadable, or cannot be created
  kXMLNotWellFormed = -31,  // the bytes are not a well-formed XML document
  kXMLWriteFailed = -32,    // the output could not be written completely
  kXMLNoElement = -33,      // MoveNext: the current level has no further element
};

// The text of one element, parsed on demand straight from the document's
// characters. Tokens are separated by XML white space. A token that is not a
// number of the requested type ends the parse: the values before it are kept,
// a warning names the token, and the call returns -1.
class oxXMLTextValue {
 public:
  oxXMLTextValue() = default;
  oxXMLTextValue(const char* text, size_t length, const char* tag)
      : m_text(text), m_length(length), m_tag(tag) {}

  bool HasText() const { return m_length != 0; }

  // The most values a text of `bytes` bytes can hold (each takes a character
  // and, but for the last, a separator), and the part of it one parse call
  // takes: the Parse functions count in 32 bits, so a text past 8 GB is read
  // up to its first 4,294,967,295 values. Sizes and counts are 64-bit until
  // that last step.
  static constexpr uint64_t MostValues(uint64_t bytes) { return bytes / 2 + bytes % 2; }
  static constexpr unsigned int ParseRoom(uint64_t values) {
    return values < UINT32_MAX ? static_cast<unsigned int>(values) : UINT32_MAX;
  }
  std::string_view GetText() const { return {m_text, m_length}; }

  // Parse at most `wanted` values into `destination`; `parsed` receives how
  // many were stored. Values beyond `wanted` are ignored.
  int ParseFloats(float* destination, unsigned int wanted, unsigned int& parsed,
                  int flags = 0) const;
  int ParseInts(int32_t* destination, unsigned int wanted, unsigned int& parsed,
                int flags = 0) const;
  int ParseBools(bool* destination, unsigned int wanted, unsigned int& parsed, int flags = 0) const;
  int ParseStrings(oxString* destination, unsigned int wanted, unsigned int& parsed,
                   int flags = 0) const;
  // Appends every integer of the text to `destination`.
  int AppendInts(oxArray<int32_t>& destination) const;
  // The number of white-space separated tokens, counted without converting.
  size_t CountTokens() const;

 private:
  const char* m_text = nullptr;
  size_t m_length = 0;
  const char* m_tag = "";
};

class oxXMLReader : public oxRefPtrObject {
 public:
  // Elements nested deeper than this are not entered: EnterChildren presents
  // an empty level instead and, the first time child elements are skipped in
  // a document, logs one error.
  static constexpr unsigned int kMaxDepth = 1000;

  ~oxXMLReader() override;
  oxXMLReader(const oxXMLReader&) = delete;
  oxXMLReader& operator=(const oxXMLReader&) = delete;

  // 0 when the cursor stands on an element, kXMLNoElement at the end of the level.
  int MoveNext();
  void EnterChildren();
  void LeaveChildren();
  unsigned int GetDepth() const;

  // Number of child elements of the current element.
  size_t CountChildElements() const;
  // Bytes of the parsed text from the current element's start tag to the
  // next element after it (its whole content): an upper bound for how much
  // data the element can hold.
  size_t GetElementSpan() const;
  bool IsTag(std::string_view tag) const;
  std::string_view GetTag() const;
  oxString GetTagName() const { return oxString(GetTag()); }
  // Byte offset of the current element in the parsed text, for messages.
  size_t GetOffset() const;

  // Each attribute reader stores the attribute's value and returns true; the
  // target is left unchanged (false returned) when the attribute is absent,
  // and also when its text is not a valid value, which is logged as a warning.
  bool HasAttribute(std::string_view name) const;
  bool ReadAttributeString(std::string_view name, oxString& value) const;
  bool ReadAttributeUInt(std::string_view name, uint32_t& value) const;
  bool ReadAttributeInt(std::string_view name, int32_t& value) const;
  bool ReadAttributeShort(std::string_view name, int16_t& value) const;
  bool ReadAttributeUShort(std::string_view name, uint16_t& value) const;
  bool ReadAttributeFloat(std::string_view name, float& value) const;
  bool ReadAttributeDouble(std::string_view name, double& value) const;
  bool ReadAttributeBool(std::string_view name, bool& value) const;

  // The text of the current element is its first text or CDATA child. The
  // readers leave the target unchanged when there is none or it does not
  // convert.
  bool ReadTextString(oxString& value) const;
  bool ReadTextFloat(float& value) const;
  bool ReadTextInt(int32_t& value) const;
  // Null when the element has no text. The object stays valid until the
  // cursor moves.
  const oxXMLTextValue* GetTextValue();
  // True when the element's content is exactly one text or CDATA node (no
  // child elements, no text split by comments).
  bool HasPlainText() const;
  // Calls `visit` with every text and CDATA child of the element, in order.
  void ForEachTextChild(const std::function<void(const oxXMLTextValue&)>& visit) const;

  struct Impl;

 private:
  friend class oxXMLFactory;
  explicit oxXMLReader(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> m_impl;
  oxXMLTextValue m_text;
};

class oxXMLWriter;

// Writes the text content of the element open in its writer. Successive calls
// within one element are separated by one blank; a call with no values or an
// empty text writes nothing.
class oxXMLTextWriter {
 public:
  int WriteFloats(const float* values, unsigned int count, int flags = 0);
  int WriteInts(const int32_t* values, unsigned int count, int flags = 0);
  int WriteBools(const bool* values, unsigned int count, int flags = 0);
  int WriteStrings(const oxString* values, unsigned int count, int flags = 0);
  int WriteText(std::string_view text);

 private:
  friend class oxXMLWriter;
  explicit oxXMLTextWriter(oxXMLWriter& writer) : m_writer(writer) {}
  oxXMLWriter& m_writer;
};

class oxXMLWriter : public oxRefPtrObject {
 public:
  ~oxXMLWriter() override;
  oxXMLWriter(const oxXMLWriter&) = delete;
  oxXMLWriter& operator=(const oxXMLWriter&) = delete;

  // The tag must be a valid XML name, or empty for a transparent element.
  int StartElement(std::string_view tag);
  // Attributes are written on the element just started, before its content;
  // anywhere else they are dropped, and so is a name the element already has.
  int WriteAttributeString(std::string_view name, std::string_view value);
  int WriteAttributeUInt(std::string_view name, uint32_t value);
  int WriteAttributeInt(std::string_view name, int32_t value);
  int WriteAttributeShort(std::string_view name, int16_t value);
  int WriteAttributeUShort(std::string_view name, uint16_t value);
  int WriteAttributeFloat(std::string_view name, float value);
  int WriteAttributeDouble(std::string_view name, double value);
  int WriteAttributeBool(std::string_view name, bool value);
  // Ends the attribute list; content may follow. An element with no content
  // is written as an empty-element tag.
  int EndAttributes();
  int EndElement();
  oxXMLTextWriter* GetTextWriter() { return &m_textWriter; }
  // Writes <tag>text</tag>; writes nothing when `text` is empty and
  // `skipEmpty` is true.
  int AddLeafElement(std::string_view tag, std::string_view text, bool skipEmpty = true);

  // Number of elements open, transparent ones included.
  unsigned int GetDepth() const;
  // Ends open elements until `depth` remain.
  void CloseTo(unsigned int depth);

  // 0 when the output can receive the document (for a file: it was
  // created), else kXMLCannotOpen. A file that cannot be created is reported
  // once, however often this is asked.
  int IsReady();
  // Ends every open element, writes what is left of the buffer to the output
  // and closes it. Returns 0, kXMLCannotOpen, or kXMLWriteFailed when part of
  // the document could not be written. Called by the destructor if not
  // called.
  int Close();
  // The text not yet sent to the output: for a memory writer the whole
  // document (after Close, with its final line feed); a file writer sends
  // its buffer to the file whenever it passes 1 MB.
  std::string_view GetBuffer() const;
  // Hands the buffer over to the caller, leaving it empty.
  std::string TakeBuffer();

  struct Impl;

 private:
  friend class oxXMLFactory;
  friend class oxXMLTextWriter;
  explicit oxXMLWriter(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> m_impl;
  oxXMLTextWriter m_textWriter{*this};
};

class oxXMLFactory {
 public:
  static oxXMLFactory& Instance(unsigned int contextID);

  // Reads and parses the file named by `uri`. Errors are logged with the
  // parser's description and byte offset; the result is kXMLCannotOpen or
  // kXMLNotWellFormed. UTF-8 (with or without byte-order mark) and UTF-16/32
  // with a byte-order mark are accepted. Running out of memory while reading
  // or parsing throws std::bad_alloc, with nothing left allocated.
  int CreateReader(oxRefPtr<oxXMLReader>& reader, const oxURI& uri, oxProgress* progress,
                   int flags);
  // Parses an in-memory document (copied first), with the same results and
  // messages as a file; messages name it 'NAME' after `name` (a file's URI,
  // say), or "the in-memory document" without one.
  int CreateReader(oxRefPtr<oxXMLReader>& reader, std::string_view bytes, int flags);
  int CreateReader(oxRefPtr<oxXMLReader>& reader, std::string_view bytes, std::string_view name,
                   int flags);
  // Parses the first `size` bytes of `bytes` in place, taking the buffer
  // over; it must hold at least one byte more than `size`.
  int CreateReader(oxRefPtr<oxXMLReader>& reader, oxArray<char>&& bytes, size_t size,
                   std::string_view name, int flags);
  // A writer that writes the file named by `uri` when closed.
  int CreateWriter(oxRefPtr<oxXMLWriter>& writer, const oxURI& uri, int flags,
                   oxProgress* progress);
  // A writer that keeps the document in memory (read it with GetBuffer).
  int CreateWriter(oxRefPtr<oxXMLWriter>& writer);

 private:
  // Parses the first `size` bytes of `bytes` in place, in a reader that owns
  // them; `what` names the document in the error message.
  static int Parse(oxRefPtr<oxXMLReader>& reader, oxArray<char>&& bytes, size_t size,
                   std::string_view what);
};

}  // namespace OxKernel
