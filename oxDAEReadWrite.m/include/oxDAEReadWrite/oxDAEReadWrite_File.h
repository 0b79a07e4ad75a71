// oxDAEFile: one COLLADA document.
//
// The document owns every element read from a file (one flat list; parent
// links, child lists and registries only point into it), keeps the registries
// through which "#id" references and sid paths resolve, and holds the XML
// reader while loading and the XML writer while saving. A document is used by
// one thread at a time. It cannot be copied: its elements have one owner.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include <oxKernel/oxArchive.h>
#include <oxKernel/oxContainers.h>
#include <oxKernel/oxModule.h>
#include <oxKernel/oxProgress.h>
#include <oxKernel/oxRefPtr.h>
#include <oxKernel/oxURI.h>
#include <oxKernel/oxXML.h>
#include <oxMath/oxColor.h>
#include <oxMath/oxMatrix44.h>

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEColladaElement;
class oxDAEChannelTarget;

// Results of document operations besides 0 (success) and the XML factory's
// codes (oxXMLResult), which Load and Save pass through unchanged.
enum oxDAEResult : int {
  kDAEUnresolved = -1,            // a reference does not resolve
  kDAENothingToDo = -3,           // the operation does not apply
  kDAENoValue = -4,               // no value to read or sample
  kDAENotCollada = -23,           // the root is not COLLADA (Load) or there is no root (Save)
  kDAEModuleNotStarted = -24,     // the module's lookup tables are not built
  kDAEOutOfMemory = -25,          // an allocation failed while loading; the document is left empty
  kDAENoDocumentInArchive = -26,  // an archive's manifest or entries name no document to read
};

class oxDAEFile {
 public:
  explicit oxDAEFile(unsigned int contextID = 0);
  ~oxDAEFile();
  oxDAEFile(const oxDAEFile&) = delete;
  oxDAEFile& operator=(const oxDAEFile&) = delete;

  // Loads a COLLADA document, replacing the current content. Returns 0 (also
  // for an unsupported version, which leaves an empty root and a logged
  // error), kDAENotCollada when the root tag is neither "COLLADA" nor "DAE",
  // kDAEModuleNotStarted when the module was not started, kDAEOutOfMemory
  // (with the error "out of memory"; the document is left empty and
  // usable) when memory runs out, or the XML reader's code (kXMLCannotOpen,
  // kXMLNotWellFormed). The time spent is recorded under the profiling scope
  // "DAE Parsing".
  // `progress` (optional, see oxProgress.h) hears the fraction of the parsed
  // text read so far: the offset of the element being read over the text's
  // size, checked every few elements and reported at most once per
  // its interval, then 1 once everything is read and resolved. The file is
  // read and parsed before the first report. A load that returns non-zero
  // never reports 1.
  //
  // A `.zae` archive (a URI ending in ".zae", any case, or a file that starts
  // with the zip signature) is opened as a zip archive and the document it
  // holds is read: the entry that the <dae_root> of its "manifest.xml" names
  // (%-escapes decoded, a "#fragment" ignored), else its one ".dae" file at
  // the archive's root. Besides the codes above this returns the archive's
  // codes (oxArchiveResult: not a zip, damaged, an encrypted or overly
  // compressed document entry) and kDAENoDocumentInArchive, each after one
  // error that names the archive. GetArchiveEntry() then names the entry
  // read; GetFileURI() stays the archive's URI.
  int Load(const OxKernel::oxURI& uri, OxKernel::oxProgress* progress = nullptr);
  // Loads the document held in the caller's `size` bytes at `data` (copied;
  // the caller may free them on return), with the same results, messages and
  // progress as Load of a file with those bytes whose URI is `baseURI`: the
  // base URI names the document in messages, becomes GetFileURI(), and is
  // what relative references (an image's init_from) resolve against. As for
  // a file, bytes that start with the zip signature, or any bytes under a
  // base URI ending in ".zae", are read as a `.zae` archive.
  int LoadFromMemory(const void* data, size_t size, const OxKernel::oxURI& baseURI,
                     OxKernel::oxProgress* progress = nullptr);
  // Writes the document. Returns 0, kDAENotCollada when there is no root, or
  // the XML writer's code (creation, readiness, or a failed final write).
  // `progress` hears the number of child elements written over the number
  // of elements in the document (a rough measure: not every element is
  // written as a child), then 1 when the file is written; a save that
  // returns non-zero never reports 1. A number list of 65,536 values or more
  // is turned into text on as many threads as the machine has cores (the
  // calling thread among them), each a piece of the list; the text is the
  // same as on one thread.
  int Save(const OxKernel::oxURI& uri, OxKernel::oxProgress* progress = nullptr);
  // Writes the document into `xml` instead of a file; same results as Save.
  // Save and SaveToString always write a plain document, also for one read
  // from an archive or from memory: LoadFromMemory reads back what
  // SaveToString writes.
  int SaveToString(oxString& xml);
  // Deletes every element, empties the id registry and the list of
  // unresolved elements, and drops the root. The
  // path registry, the animation-target table and the update list keep their
  // entries (which then point to deleted elements); Load empties them before
  // reading a new document.
  void Clear();

  const OxKernel::oxURI& GetFileURI() const { return uri; }
  // For a document read from an archive, the archive entry it was read from
  // ("models/scene.dae") and the names of the entries of that archive, in
  // sorted order; both empty otherwise. Emptied by the next Load. An entry
  // whose name is absolute or has a ".." segment is left out of the list,
  // with a warning, so that no reference ever resolves to it.
  const oxString& GetArchiveEntry() const { return archiveEntry; }
  const oxArray<oxString>& GetArchiveEntries() const { return archiveEntries; }
  // True when the archive the document was read from holds an entry named
  // exactly `name`.
  bool HasArchiveEntry(std::string_view name) const;
  oxDAEColladaElement* GetRoot() const { return root; }
  unsigned int GetContextID() const { return contextID; }
  const oxArray<std::unique_ptr<oxDAEBaseElement>>& GetElements() const { return elements; }

  // --- Element list and registries ---------------------------------------

  // Passes ownership of `e` to the document; returns `e`.
  oxDAEBaseElement* _AddElement(oxDAEBaseElement* e);
  // Adds `e` (not null) to the document, sets its parent when `parent` is not
  // null, and registers its id and path when it has them.
  void RegisterElement(oxDAEBaseElement* e, oxDAEBaseElement* parent);
  // Registers `e` under "#" + id when its id is non-empty (last one wins).
  void _RegisterElementID(oxDAEElement* e);
  // Registers `e` under GetPath() when that is non-empty (last one wins).
  void _RegisterElementPath(oxDAEElement* e);
  // Queues `e` for UpdateDependencies after reading and before writing.
  void AddElementToUpdate(oxDAEBaseElement* e) { elementsToUpdate.push_back(e); }
  const oxArray<oxDAEBaseElement*>& GetElementsToUpdate() const { return elementsToUpdate; }

  // The element with id `uri` ("#id", or "id" without a context); with a
  // context, a miss is retried as a sid path relative to the context. A
  // reference into another file never resolves. Null when nothing matches.
  oxDAEBaseElement* ResolveURI(const oxString& uri, oxDAEBaseElement* context = nullptr) const;
  // The element registered under `path`; with a context, a miss is retried
  // once as context->GetParentingPath() + "/" + path.
  oxDAEBaseElement* ResolvePath(const oxString& path, oxDAEBaseElement* context = nullptr) const;

  // The animation-target table, keyed by each target's GetPath(): the first
  // target registered under a path keeps it; a later one is silently left
  // out. Unregistering removes the entry of the target's path only when it
  // is that target's.
  void RegisterAnimationTarget(oxDAEChannelTarget* target);
  void UnregisterAnimationTarget(oxDAEChannelTarget* target);
  // The target registered under `path`, or for "a.Q" the member named Q of
  // the array target registered under "a" (members are reached through
  // their array); else, for a path ending in "(i)",
  // member i of the float-array target that the text before the last "("
  // resolves to (by this same rule, so "a(1)(2)" tries "a(1)" before "a").
  // Null for an unknown path, an index on any other target, an index text
  // that is not an unsigned number, or an index past the members.
  oxDAEChannelTarget* ResolveAnimationTargetPath(const oxString& path) const;

  // --- What did not resolve ------------------------------------------------

  // An element whose UpdateDependencies returned `code` (non-zero) in the
  // dependency phase of the last Load.
  struct Unresolved {
    oxDAEBaseElement* element;
    int code;
  };
  // The elements whose references did not resolve when the document was
  // loaded, in the order they were updated. Loading goes on regardless; this
  // list is for callers that want to report them. Emptied by Clear (and so
  // by Load), since it points to the document's elements.
  const oxArray<Unresolved>& GetUnresolved() const { return unresolved; }

  // --- Tokens ------------------------------------------------------------

  static const oxString s_Tokens[oxDAEBaseElement::kTokenCount];
  // The token of an upper-case word; NONE for a word not in the table.
  static EToken _GetToken(std::string_view word);
  // The word of a token; the empty word for a value outside the enumeration.
  static const oxString& _GetTokenString(EToken token);
  // Builds the word-to-token table once; a second call does nothing.
  static void _PrepareHashTable();
  static void _DestroyHashTable();
  static bool _HasHashTable();

  // --- Reading helpers ---------------------------------------------------

  // True when the reader stands on a "param" or "parameter" element.
  bool _IsXMLNodeAParameter() const;
  // Reads three floats (red, green, blue; alpha untouched). -4 without text.
  static int ReadColor3Value(OxKernel::oxXMLReader* reader, OxMath::oxFColor& color);
  // Reads 16 floats of a COLLADA (column-vector) matrix into the host's
  // row-vector convention, i.e. transposed. -4 without text.
  static int ReadMatrix44Value(OxKernel::oxXMLReader* reader, OxMath::oxMatrix44& matrix);
  // Appends the integers of the text of the element the reader stands on to
  // `list`, at most `limit` of them; text split by comments or child
  // elements is gathered from each of its pieces. The list grows by no more
  // than the text can hold, whatever the limit. A token that is not an
  // integer ends a piece with the XML reader's warning. The index lists of
  // primitives and vertex weights are read through here.
  void ReadIntList(oxArray<int32_t>& list, size_t limit = SIZE_MAX);
  // The same for counts: a negative number ends the list, with the warning
  // "<tag> entry i is n; the list ends before it" (i its position in the
  // list).
  void ReadIntList(oxArray<uint32_t>& list, size_t limit = SIZE_MAX);
  // Writes red, green and blue as the open element's text.
  static int WriteColor3Value(OxKernel::oxXMLWriter* writer, const OxMath::oxFColor& color);
  // Decodes "&quot;", "&#13;" (removed), "&lt;" and "&gt;", in that order.
  // "&amp;" and "&apos;" are left as they are.
  static void XMLSafeToCommonString(oxString& text);
  // The reverse direction needs no work: the XML writer escapes on output.
  static void CommonToXMLSafeString(oxString& text);
  // Normalises the file references of various exporters ("file://C|/x",
  // "file://C:/x", "file://server/share"). Returns 0.
  static int CorrectURI(oxString& text);
  // Reads the <extra> the reader stands on for `owner`: creates the extra,
  // and for each <technique> the technique class that the owner's class and
  // the "profile" choose (none for other combinations). Returns 0.
  int ReadExtra(oxDAEBaseElement* owner, oxDAEExtraElement*& extra);

  // Creates a `T`, hands it to the document with `parent` set, and reads it.
  template <class T, class... Args>
  T* ReadChild(oxDAEBaseElement* parent, Args&&... args) {
    T* e = new T(static_cast<Args&&>(args)...);
    e->parent = parent;
    _AddElement(e);
    e->Read(*this);
    return e;
  }

  // Like ReadChild, and queues the new element for UpdateDependencies
  // before reading it, so that what it queues while reading is updated
  // after it.
  template <class T, class... Args>
  T* ReadQueuedChild(oxDAEBaseElement* parent, Args&&... args) {
    T* e = new T(static_cast<Args&&>(args)...);
    e->parent = parent;
    _AddElement(e);
    AddElementToUpdate(e);
    e->Read(*this);
    return e;
  }

  // A child rule that reads an <extra> of `owner` through ReadExtra and
  // appends it to the owner's extras.
  template <class Owner>
  static void ReadExtraChild(Owner& owner, oxDAEFile& file) {
    oxDAEExtraElement* extra = nullptr;
    file.ReadExtra(&owner, extra);
    owner.extras.push_back(extra);
  }

  // The first rule of `rules` whose tag is `tag`, or null. A rule is any
  // row with a `tag` (oxDAEChildRule, or an owner's richer table).
  template <class Rule, size_t N>
  static const Rule* FindChildRule(const Rule (&rules)[N], std::string_view tag) {
    for (const auto& rule : rules) {
      if (rule.tag == tag) return &rule;
    }
    return nullptr;
  }

  // Walks the children of the element the reader stands on and dispatches
  // each by the first rule whose tag matches (a rule with a null `read`
  // steps over its child); an unmatched child draws
  // UnknownTagWarning(tag, parentTag). The reader ends on the element.
  template <class Owner, class Rule, size_t N>
  void ReadChildren(Owner& owner, const Rule (&rules)[N], std::string_view parentTag) {
    ReadChildrenOr(owner, rules, [parentTag](std::string_view tag) {
      oxDAEBaseElement::UnknownTagWarning(tag, parentTag);
    });
  }
  // As ReadChildren, for content whose other children are stepped over
  // without a message.
  template <class Owner, class Rule, size_t N>
  void ReadKnownChildren(Owner& owner, const Rule (&rules)[N]) {
    ReadChildrenOr(owner, rules, [](std::string_view) {});
  }
  // As ReadChildren, with `otherwise(tag)` called for each unmatched child
  // while the reader stands on it.
  template <class Owner, class Rule, size_t N, class Otherwise>
  void ReadChildrenOr(Owner& owner, const Rule (&rules)[N], Otherwise otherwise) {
    reader->EnterChildren();
    while (reader->MoveNext() == 0) {
      if (progressCountdown != 0 && --progressCountdown == 0) ReportReadProgress();
      const std::string_view tag = reader->GetTag();
      const Rule* rule = FindChildRule(rules, tag);
      if (!rule) {
        otherwise(tag);
      } else if (rule->read) {
        rule->read(owner, *this);
      }
    }
    reader->LeaveChildren();
  }

  // Writes a child element; elements it leaves open are closed here.
  void WriteChild(oxDAEBaseElement* child);
  // Writes every element of `children` in order.
  template <class Range>
  void WriteChildren(const Range& children) {
    for (oxDAEBaseElement* child : children)
      WriteChild(child);
  }

  // --- State ---------------------------------------------------------------

  unsigned int contextID = 0;
  OxKernel::oxRefPtr<OxKernel::oxXMLWriter> writer;
  OxKernel::oxRefPtr<OxKernel::oxXMLReader> reader;

 private:
  int WriteDocument();
  // Load and LoadFromMemory: empties the document, runs `open` (which
  // creates the reader and returns 0 or an error code), reads the document
  // the reader holds, and turns running out of memory into kDAEOutOfMemory.
  int LoadWith(const OxKernel::oxURI& location, OxKernel::oxProgress* progress,
               const std::function<int()>& open);
  // True for a document named `name` whose bytes start with `lead` that is
  // read as an archive: the name ends in ".zae" or the bytes start with the
  // zip signature.
  static bool IsArchive(std::string_view name, std::string_view lead);
  // IsArchive for the file at `location` (local path `path`).
  static bool IsArchiveFile(const OxKernel::oxURI& location, const oxString& path);
  // Creates the reader on the document of a zip archive and lists the
  // archive's entries.
  int OpenArchiveDocument(const OxKernel::oxArchive& archive);
  // Sets `document` to the archive entry that holds the document: the one
  // the manifest names, else the one root ".dae" file. Returns 0, or an
  // error code after logging why.
  static int FindArchiveDocument(const OxKernel::oxArchive& archive,
                                 const OxKernel::oxArchive::Entry*& document);
  static int FindManifestDocument(const OxKernel::oxArchive& archive,
                                  const OxKernel::oxArchive::Entry& manifest,
                                  const OxKernel::oxArchive::Entry*& document);
  // The target registered under `path`, or the member Q of the array
  // registered under "a" for a path "a.Q"; null otherwise.
  oxDAEChannelTarget* FindAnimationTarget(std::string_view path) const;
  // Member `index` ("3)", the text after a "(") of a float-array target;
  // null for any other target or an index that does not read.
  static oxDAEChannelTarget* SelectMember(oxDAEChannelTarget* target, std::string_view index);
  // Runs UpdateDependencies on every queued element, in the order queued.
  void UpdateAll(bool beforeWrite);
  // Arms progress reporting for one Load or Save when `progress` has a
  // callback, and disarms it however the operation ends, so that no later
  // read or write calls a callback the caller may have destroyed.
  class ProgressScope {
   public:
    ProgressScope(oxDAEFile& file, const OxKernel::oxProgress* progress);
    ~ProgressScope();
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;
    // Reports 1 when `rc` is 0.
    void Finish(int rc);

   private:
    oxDAEFile& m_file;
  };
  // Rearm the countdown and report the reader's offset over the text size,
  // or the children written over the document's elements.
  void ReportReadProgress();
  void ReportWriteProgress();

  oxArray<std::unique_ptr<oxDAEBaseElement>> elements;
  oxArray<oxDAEBaseElement*> elementsToUpdate;
  oxHash<oxString, oxDAEBaseElement*> idRegistry;
  oxHash<oxString, oxDAEBaseElement*> pathRegistry;
  oxHash<oxString, oxDAEChannelTarget*> animationTargets;
  oxArray<Unresolved> unresolved;
  oxDAEColladaElement* root = nullptr;
  OxKernel::oxURI uri;
  oxString archiveEntry;
  oxArray<oxString> archiveEntries;
  // Progress of the running Load or Save: the countdown of elements until
  // the next check (0 when nobody listens), the size of the parsed text and
  // the children written so far.
  OxKernel::oxProgressMeter progressMeter{nullptr};
  uint32_t progressCountdown = 0;
  size_t progressTextSize = 0;
  size_t progressWritten = 0;
};

}  // namespace OxDAEReader
