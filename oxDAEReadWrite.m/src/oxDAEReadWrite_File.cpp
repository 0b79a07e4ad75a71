#include "oxDAEReadWrite/oxDAEReadWrite_File.h"

#include <algorithm>
#include <new>
#include <type_traits>
#include <utility>

#include <oxKernel/oxCharacter.h>
#include <oxKernel/oxLog.h>
#include <oxKernel/oxProfiling.h>

#include "oxDAEReadWrite/oxDAEElements_Animation_Target.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Document.h"

namespace OxDAEReader {

using OxKernel::oxHashTools;
using OxKernel::oxURI;
using OxKernel::oxXMLFactory;

namespace {

constexpr unsigned int kInitialBuckets = 4;
// Elements read or written between two looks at the clock: rare enough to
// cost nothing next to reading them, often enough for a document of a few
// hundred large arrays to move a bar.
constexpr uint32_t kProgressStride = 16;

// The word-to-token table; present between _PrepareHashTable and
// _DestroyHashTable.
std::unique_ptr<oxHash<oxString, EToken>> g_tokenTable;

}  // namespace

const oxString oxDAEFile::s_Tokens[oxDAEBaseElement::kTokenCount] = {
    "",
    "COLOR",
    "POSITION",
    "NORMAL",
    "BINORMAL",
    "TANGENT",
    "TEXCOORD",
    "TEXTURE",
    "UV",
    "VERTEX",
    "IMAGE",
    "ANIMATION",
    "CAMERA",
    "CODE",
    "CONTROLLER",
    "GEOMETRY",
    "LIGHT",
    "MATERIAL",
    "PROGRAM",
    "JOINT",
    "NODE",
    "FRAGMENT_PROGRAM",
    "VERTEX_PROGRAM",
    "CONSTANT",
    "LINEAR",
    "QUADRATIC",
    "LAMBERT",
    "ORTHOGRAPHIC",
    "PERSPECTIVE",
    "PHONG",
    "AMBIENT",
    "ANGLE",
    "BOTTOM",
    "DIRECTIONAL",
    "POINT",
    "SPOT",
    "BIND_SHAPE_NORMAL",
    "BIND_SHAPE_POSITION",
    "INPUT",
    "OUTPUT",
    "INV_BIND_MATRIX",
    "WEIGHT",
    "UNIT",
    "VISUALSCENE",
    "TEXBINORMAL",
    "TEXTANGENT",
};

oxDAEFile::oxDAEFile(unsigned int contextID)
    : contextID(contextID),
      idRegistry(oxHashTools::ComputePreferredSize(kInitialBuckets)),
      pathRegistry(oxHashTools::ComputePreferredSize(kInitialBuckets)),
      animationTargets(oxHashTools::ComputePreferredSize(kInitialBuckets)) {}

oxDAEFile::~oxDAEFile() {
  Clear();
}

// --- Loading -------------------------------------------------------------------

int oxDAEFile::Load(const oxURI& location, OxKernel::oxProgress* progress) {
  return LoadWith(location, progress, [&] {
    const oxString path = location.GetFilePath();
    if (!IsArchiveFile(location, path))
      return oxXMLFactory::Instance(contextID).CreateReader(reader, location, progress, 1);
    std::unique_ptr<OxKernel::oxArchive> archive;
    const int rc = OxKernel::oxArchive::OpenFile(archive, path, location.GetString().View());
    return rc != 0 ? rc : OpenArchiveDocument(*archive);
  });
}

int oxDAEFile::LoadFromMemory(const void* data, size_t size, const oxURI& baseURI,
                              OxKernel::oxProgress* progress) {
  const std::string_view bytes(static_cast<const char*>(data), data ? size : 0);
  return LoadWith(baseURI, progress, [&] {
    const std::string_view name = baseURI.GetString().View();
    if (!IsArchive(name, bytes))
      return oxXMLFactory::Instance(contextID).CreateReader(reader, bytes, name, 1);
    std::unique_ptr<OxKernel::oxArchive> archive;
    const int rc = OxKernel::oxArchive::OpenMemory(archive, bytes, name);
    return rc != 0 ? rc : OpenArchiveDocument(*archive);
  });
}

// The whole body is guarded: an allocation that fails anywhere in reading
// (file bytes, parse tree, elements, their arrays) ends the load through the
// handler below instead of leaving the exception to the host.
int oxDAEFile::LoadWith(const oxURI& location, OxKernel::oxProgress* progress,
                        const std::function<int()>& open) try {
  OxKernel::oxProfileScope profile("DAE Parsing");
  ProgressScope progressScope(*this, progress);
  Clear();
  // Entries of a previous document would point to deleted elements: a new
  // document starts with empty tables.
  elementsToUpdate.clear();
  pathRegistry.clear();
  animationTargets.clear();
  archiveEntry.clear();
  archiveEntries.clear();
  uri = location;
  if (!_HasHashTable()) {
    OX_LOG(OxKernel::kLogError,
           "the oxDAEReadWrite module is not started: no document can be read");
    return kDAEModuleNotStarted;
  }
  int rc = open();
  if (rc == 0) rc = reader->MoveNext();
  if (rc == 0 && !reader->IsTag(oxDAEColladaElement::s_XMLTag) &&
      !reader->IsTag(oxDAEColladaElement::s_XMLTagVariant)) {
    OX_LOG(OxKernel::kLogError,
           OxKernel::oxConcat("the root element is <", reader->GetTag(), ">, not <COLLADA>"));
    rc = kDAENotCollada;
  }
  if (rc == 0) {
    // The root spans the rest of the text.
    progressTextSize = reader->GetOffset() + reader->GetElementSpan();
    root = new oxDAEColladaElement();
    _AddElement(root);
    root->Read(*this);
    UpdateAll(false);
  }
  progressScope.Finish(rc);
  // The parsed text is not needed once the elements hold their values.
  reader.Reset();
  return rc;
} catch (const std::bad_alloc&) {
  // Everything read so far is released first, so that the message and the
  // caller have memory to work with; the document is left empty and ready
  // for the next Load.
  reader.Reset();
  Clear();
  // Emptied lists keep their storage; fresh ones give all of it back.
  std::exchange(elements, {});
  std::exchange(elementsToUpdate, {});
  std::exchange(unresolved, {});
  std::exchange(pathRegistry, {});
  std::exchange(animationTargets, {});
  std::exchange(archiveEntries, {});
  OX_LOG(OxKernel::kLogError, "out of memory");
  return kDAEOutOfMemory;
}

void oxDAEFile::Clear() {
  elements.clear();
  unresolved.clear();
  idRegistry.clear();
  idRegistry.rehash(oxHashTools::ComputePreferredSize(kInitialBuckets));
  root = nullptr;
}

// --- Saving --------------------------------------------------------------------

int oxDAEFile::Save(const oxURI& location, OxKernel::oxProgress* progress) {
  if (!root) return kDAENotCollada;
  if (const int rc = oxXMLFactory::Instance(contextID).CreateWriter(writer, location, 1, progress))
    return rc;
  ProgressScope progressScope(*this, progress);
  const int rc = WriteDocument();
  progressScope.Finish(rc);
  return rc;
}

int oxDAEFile::SaveToString(oxString& xml) {
  if (!root) return kDAENotCollada;
  oxXMLFactory::Instance(contextID).CreateWriter(writer);
  OxKernel::oxRefPtr<OxKernel::oxXMLWriter> keep = writer;
  const int rc = WriteDocument();
  if (rc == 0) xml = oxString(keep->TakeBuffer());
  return rc;
}

int oxDAEFile::WriteDocument() {
  UpdateAll(true);
  int rc = writer->IsReady();
  if (rc == 0) {
    root->Write(*this);
    rc = writer->Close();
  }
  writer.Reset();
  return rc;
}

void oxDAEFile::UpdateAll(bool beforeWrite) {
  // By index: an update may queue further elements, which are updated too.
  for (size_t i = 0; i < elementsToUpdate.size(); ++i) {
    oxDAEBaseElement* e = elementsToUpdate[i];
    const int rc = e->UpdateDependencies(*this, beforeWrite);
    if (rc != 0 && !beforeWrite) unresolved.push_back({e, rc});
  }
}

void oxDAEFile::WriteChild(oxDAEBaseElement* child) {
  if (progressCountdown != 0 && --progressCountdown == 0) ReportWriteProgress();
  const unsigned int depth = writer->GetDepth();
  child->Write(*this);
  writer->CloseTo(depth);
}

// --- Progress ------------------------------------------------------------------

oxDAEFile::ProgressScope::ProgressScope(oxDAEFile& file, const OxKernel::oxProgress* progress)
    : m_file(file) {
  m_file.progressMeter = OxKernel::oxProgressMeter(progress);
  m_file.progressCountdown = m_file.progressMeter.IsActive() ? kProgressStride : 0;
  m_file.progressTextSize = 0;
  m_file.progressWritten = 0;
}

oxDAEFile::ProgressScope::~ProgressScope() {
  m_file.progressCountdown = 0;
  m_file.progressMeter = OxKernel::oxProgressMeter(nullptr);
}

void oxDAEFile::ProgressScope::Finish(int rc) {
  if (rc == 0) m_file.progressMeter.Finish();
}

void oxDAEFile::ReportReadProgress() {
  progressCountdown = kProgressStride;
  if (progressTextSize == 0) return;
  progressMeter.Report(OxKernel::oxProgressMeter::Fraction(reader->GetOffset(), progressTextSize));
}

void oxDAEFile::ReportWriteProgress() {
  progressCountdown = kProgressStride;
  progressWritten += kProgressStride;
  progressMeter.Report(OxKernel::oxProgressMeter::Fraction(progressWritten, elements.size()));
}

// --- Element list and registries -------------------------------------------------

oxDAEBaseElement* oxDAEFile::_AddElement(oxDAEBaseElement* e) {
  // Owned before the list grows: a growth that fails still deletes `e`.
  std::unique_ptr<oxDAEBaseElement> owned(e);
  elements.push_back(std::move(owned));
  return e;
}

void oxDAEFile::RegisterElement(oxDAEBaseElement* e, oxDAEBaseElement* parent) {
  if (!e) return;
  _AddElement(e);
  if (parent) e->parent = parent;
  oxDAEElement* element = oxDAEElement::DynamicCast(e);
  if (!element) return;
  if (!element->id.empty()) _RegisterElementID(element);
  if (!element->sid.empty()) _RegisterElementPath(element);
}

void oxDAEFile::_RegisterElementID(oxDAEElement* e) {
  if (!e->id.empty()) idRegistry.insert_or_assign("#" + e->id, e);
}

void oxDAEFile::_RegisterElementPath(oxDAEElement* e) {
  oxString path = e->GetPath();
  if (!path.empty()) pathRegistry.insert_or_assign(std::move(path), e);
}

oxDAEBaseElement* oxDAEFile::ResolveURI(const oxString& reference,
                                        oxDAEBaseElement* context) const {
  if (const auto it = idRegistry.find(reference); it != idRegistry.end()) return it->second;
  if (context) return ResolvePath(reference, context);
  if (reference.StartsWith("#")) return nullptr;
  return ResolveURI("#" + reference, nullptr);
}

oxDAEBaseElement* oxDAEFile::ResolvePath(const oxString& path, oxDAEBaseElement* context) const {
  if (const auto it = pathRegistry.find(path); it != pathRegistry.end()) return it->second;
  if (!context) return nullptr;
  return ResolvePath(OxKernel::oxConcat(context->GetParentingPath(), '/', path), nullptr);
}

void oxDAEFile::RegisterAnimationTarget(oxDAEChannelTarget* target) {
  animationTargets.try_emplace(target->GetPath(), target);
}

void oxDAEFile::UnregisterAnimationTarget(oxDAEChannelTarget* target) {
  const auto it = animationTargets.find(target->GetPath());
  if (it != animationTargets.end() && it->second == target) animationTargets.erase(it);
}

oxDAEChannelTarget* oxDAEFile::ResolveAnimationTargetPath(const oxString& path) const {
  if (oxDAEChannelTarget* target = FindAnimationTarget(path)) return target;
  const size_t open = path.rfind('(');
  if (path.empty() || path.back() != ')' || open == oxString::npos) return nullptr;
  // The text before the last "(" is resolved by this same rule. Only a
  // registered path can name a float array there: through a further "(j)"
  // it would name a float member, on which "(i)" is null. So one look-up
  // decides, however many selectors the path holds.
  oxDAEChannelTarget* target = FindAnimationTarget(path.View().substr(0, open));
  return target ? SelectMember(target, path.View().substr(open + 1)) : nullptr;
}

oxDAEChannelTarget* oxDAEFile::FindAnimationTarget(std::string_view path) const {
  const auto it = animationTargets.find(oxString(path));
  if (it != animationTargets.end()) return it->second;
  // Members are not in the table: "a.Q" is the member Q of the array "a".
  const size_t dot = path.rfind('.');
  if (dot == std::string_view::npos || dot + 1 == path.size()) return nullptr;
  const auto owner = animationTargets.find(oxString(path.substr(0, dot)));
  if (owner == animationTargets.end()) return nullptr;
  const auto* array = oxDAEChannelTargetArray::DynamicCast(owner->second);
  return array ? array->GetChannelTarget(oxString(path.substr(dot + 1))) : nullptr;
}

oxDAEChannelTarget* oxDAEFile::SelectMember(oxDAEChannelTarget* target, std::string_view index) {
  const auto* array = oxDAEChannelTargetFloatArray::DynamicCast(target);
  if (!array) return nullptr;
  // The text after "(" still holds the ")": it is read as an unsigned
  // number with that bracket dropped.
  uint32_t i = 0;
  if (!OxKernel::oxCharacter::Interpret(index.substr(0, index.size() - 1), i)) return nullptr;
  if (i > 127) return nullptr;
  return array->GetChannelTarget(0, static_cast<signed char>(i));
}

// --- Tokens ----------------------------------------------------------------------

EToken oxDAEFile::_GetToken(std::string_view word) {
  if (!g_tokenTable) return EToken::NONE;
  const auto it = g_tokenTable->find(oxString(word));
  return it == g_tokenTable->end() ? EToken::NONE : it->second;
}

const oxString& oxDAEFile::_GetTokenString(EToken token) {
  // A value cast from an integer outside the enumeration reads as the empty
  // word instead of indexing past the table.
  const int index = static_cast<int>(token);
  if (index < 0 || index >= oxDAEBaseElement::kTokenCount) return s_Tokens[0];
  return s_Tokens[index];
}

void oxDAEFile::_PrepareHashTable() {
  if (g_tokenTable) return;
  auto table = std::make_unique<oxHash<oxString, EToken>>(
      oxHashTools::ComputePreferredSize(kInitialBuckets));
  for (int i = 0; i < oxDAEBaseElement::kTokenCount; ++i)
    table->insert_or_assign(s_Tokens[i], static_cast<EToken>(i));
  g_tokenTable = std::move(table);
}

void oxDAEFile::_DestroyHashTable() {
  g_tokenTable.reset();
}

bool oxDAEFile::_HasHashTable() {
  return g_tokenTable != nullptr;
}

// --- Reading helpers --------------------------------------------------------------

bool oxDAEFile::_IsXMLNodeAParameter() const {
  return reader->IsTag("param") || reader->IsTag("parameter");
}

int oxDAEFile::ReadColor3Value(OxKernel::oxXMLReader* xml, OxMath::oxFColor& color) {
  const OxKernel::oxXMLTextValue* text = xml->GetTextValue();
  if (!text) return kDAENoValue;
  float rgb[3] = {color.r, color.g, color.b};
  unsigned int parsed = 0;
  text->ParseFloats(rgb, 3, parsed, 0);
  color.r = rgb[0];
  color.g = rgb[1];
  color.b = rgb[2];
  return 0;
}

int oxDAEFile::ReadMatrix44Value(OxKernel::oxXMLReader* xml, OxMath::oxMatrix44& matrix) {
  const OxKernel::oxXMLTextValue* text = xml->GetTextValue();
  if (!text) return kDAENoValue;
  OxMath::oxMatrix44 read = matrix;
  unsigned int parsed = 0;
  text->ParseFloats(read.m, 16, parsed, 0);
  matrix.ComputeTranspose(read);
  return 0;
}

namespace {

// Appends at most `limit` integers of `text` to `list`. Every integer takes
// a character and all but the last a separator, which bounds the room made
// by the text's length. Unsigned entries are parsed through their signed
// view (the two types may alias each other), so both kinds of list share
// the host's number loop.
template <class T>
void AppendIntsUpTo(const OxKernel::oxXMLTextValue& text, oxArray<T>& list, size_t limit) {
  if constexpr (std::is_same_v<T, int32_t>) {
    if (limit == SIZE_MAX) {
      text.AppendInts(list);
      return;
    }
  }
  const unsigned int room = OxKernel::oxXMLTextValue::ParseRoom(
      std::min<uint64_t>(limit, OxKernel::oxXMLTextValue::MostValues(text.GetText().size())));
  const size_t base = list.size();
  list.resize(base + room);
  unsigned int parsed = 0;
  text.ParseInts(reinterpret_cast<int32_t*>(list.data() + base), room, parsed);
  list.resize(base + parsed);
}

template <class T>
void AppendTextInts(OxKernel::oxXMLReader& reader, oxArray<T>& list, size_t limit) {
  if (reader.HasPlainText()) {
    AppendIntsUpTo(*reader.GetTextValue(), list, limit);
    return;
  }
  const size_t base = list.size();
  reader.ForEachTextChild([&list, base, limit](const OxKernel::oxXMLTextValue& text) {
    const size_t read = list.size() - base;
    if (read < limit) AppendIntsUpTo(text, list, limit == SIZE_MAX ? limit : limit - read);
  });
}

}  // namespace

void oxDAEFile::ReadIntList(oxArray<int32_t>& list, size_t limit) {
  AppendTextInts(*reader, list, limit);
}

void oxDAEFile::ReadIntList(oxArray<uint32_t>& list, size_t limit) {
  const size_t base = list.size();
  AppendTextInts(*reader, list, limit);
  // A negative number reads as an unsigned value above the signed range.
  const auto negative = std::find_if(list.begin() + static_cast<ptrdiff_t>(base), list.end(),
                                     [](uint32_t n) { return n > INT32_MAX; });
  if (negative == list.end()) return;
  OX_LOG(OxKernel::kLogWarning,
         OxKernel::oxConcat("<", reader->GetTag(), "> entry ", negative - list.begin(), " is ",
                            static_cast<int32_t>(*negative), "; the list ends before it"));
  list.erase(negative, list.end());
}

int oxDAEFile::WriteColor3Value(OxKernel::oxXMLWriter* xml, const OxMath::oxFColor& color) {
  const float rgb[3] = {color.r, color.g, color.b};
  return xml->GetTextWriter()->WriteFloats(rgb, 3, 0);
}

void oxDAEFile::XMLSafeToCommonString(oxString& text) {
  text.ReplaceAll("&quot;", "\"");
  text.ReplaceAll("&#13;", "");
  text.ReplaceAll("&lt;", "<");
  text.ReplaceAll("&gt;", ">");
}

void oxDAEFile::CommonToXMLSafeString(oxString&) {}

int oxDAEFile::CorrectURI(oxString& text) {
  if (text.Matches("file://?|*")) text.ReplaceAll("|", ":");
  if (text.Matches("file://?:*")) text.ReplaceAll("file://", "file:///");
  if (oxURI(text).IsProperURI()) return 0;
  if (text.Matches("file://*")) text.ReplaceAll("file://", "smb://");
  if (text.Matches("file://*")) text.ReplaceAll("\\", "/");
  return 0;
}

}  // namespace OxDAEReader
