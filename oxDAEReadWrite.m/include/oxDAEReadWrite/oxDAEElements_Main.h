// Element base classes of the COLLADA document model.
//
// Every COLLADA element the module understands is one class of namespace
// OxDAEReader that descends from oxDAEBaseElement. Each class states its name,
// its base and its tag with the two macros below; the run-time class record,
// the casts and the tag come from them, and the compiler-generated copy
// constructor and assignment copy every field (pointer lists are copied, the
// elements they point to are shared).
#pragma once

#include <compare>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include <oxKernel/oxContainers.h>
#include <oxKernel/oxRTTI.h>
#include <oxKernel/oxString.h>

namespace OxDAEReader {

using OxKernel::oxArray;
using OxKernel::oxHash;
using OxKernel::oxString;

class oxDAEFile;
class oxDAEExtraElement;

// Inside a class body: the class record, GetRTTI, DynamicCast,
// WeakDynamicCast, the alias `Super` for the base and the COLLADA tag
// `s_XMLTag` (empty for classes that have no element of their own). The tag
// is a compile-time constant so that child tables can name it.
#define OX_DAE_ELEMENT(Class, Base, Tag)            \
  OX_DECLARE_RTTI(Class)                            \
 public:                                            \
  using Super = Base;                               \
  static constexpr std::string_view s_XMLTag = Tag; \
  std::string_view GetXMLTag() const override {     \
    return s_XMLTag;                                \
  }

// In the class's source file: defines the record, named after the class, with
// the base's record as parent.
#define OX_DAE_ELEMENT_DEFINE(Class)                     \
  static_assert(std::is_base_of_v<Class::Super, Class>); \
  const ::OxKernel::oxRTTI Class::kRTTI {                \
#Class, 0, &Class::Super::kRTTI                      \
  }

// A COLLADA version triple; 0.0.0 by default.
class oxDAEVersion {
 public:
  oxDAEVersion() = default;
  oxDAEVersion(uint32_t major, uint32_t minor, uint32_t revision)
      : majorNumber(major), minorNumber(minor), revision(revision) {}
  explicit oxDAEVersion(const oxString& text) { _FromString(text); }

  void Set(uint32_t major, uint32_t minor, uint32_t rev) {
    *this = oxDAEVersion(major, minor, rev);
  }
  // Reads "major.minor.revision". Each part that is not an unsigned number
  // logs "invalid version number" (error) and is skipped; a text that does not
  // give exactly three numbers logs it once more. Parts not read keep their
  // previous values.
  void _FromString(const oxString& text);
  oxString ToString() const;
  bool IsIncluded(const oxDAEVersion& low, const oxDAEVersion& high) const {
    return low <= *this && *this <= high;
  }
  auto operator<=>(const oxDAEVersion&) const = default;

  uint32_t majorNumber = 0;
  uint32_t minorNumber = 0;
  uint32_t revision = 0;
};

class oxDAEBaseElement : public OxKernel::oxRTTIObject {
  OX_DECLARE_RTTI(oxDAEBaseElement)

 public:
  using Super = OxKernel::oxRTTIObject;
  static constexpr std::string_view s_XMLTag = "";
  // The tag of the element's class (s_XMLTag of the most derived class).
  virtual std::string_view GetXMLTag() const { return s_XMLTag; }

  // The upper-case type and semantic words of COLLADA; the value indexes the
  // document's token table (oxDAEFile::s_Tokens). NONE is also "unknown".
  enum class EToken : int {
    NONE,
    COLOR,
    POSITION,
    NORMAL,
    BINORMAL,
    TANGENT,
    TEXCOORD,
    TEXTURE,
    UV,
    VERTEX,
    IMAGE,
    ANIMATION,
    CAMERA,
    CODE,
    CONTROLLER,
    GEOMETRY,
    LIGHT,
    MATERIAL,
    PROGRAM,
    JOINT,
    NODE,
    FRAGMENT_PROGRAM,
    VERTEX_PROGRAM,
    CONSTANT,
    LINEAR,
    QUADRATIC,
    LAMBERT,
    ORTHOGRAPHIC,
    PERSPECTIVE,
    PHONG,
    AMBIENT,
    ANGLE,
    BOTTOM,
    DIRECTIONAL,
    POINT,
    SPOT,
    BIND_SHAPE_NORMAL,
    BIND_SHAPE_POSITION,
    INPUT,
    OUTPUT,
    INV_BIND_MATRIX,
    WEIGHT,
    UNIT,
    VISUALSCENE,
    TEXBINORMAL,
    TEXTANGENT
  };
  static constexpr int kTokenCount = 46;

  oxDAEBaseElement() = default;
  ~oxDAEBaseElement() override = default;

  // True for elements that carry name, id and sid (oxDAEElement and below).
  virtual bool HasID() const { return false; }
  // Reads the element; the document's reader stands on its start tag and is
  // left there.
  virtual void Read(oxDAEFile& file) = 0;
  // Writes the element through the document's writer. Elements that are
  // never written keep this empty default.
  virtual void Write(oxDAEFile& file);
  // Binds references that can only be resolved once the whole document is
  // read (beforeWrite false), or refreshes the stored reference texts from the
  // bound elements before saving (beforeWrite true). Returns 0, or a negative
  // code when a reference does not resolve.
  virtual int UpdateDependencies(oxDAEFile& file, bool beforeWrite);

  // The id of the nearest element, starting with this one, that has a
  // non-empty id; empty when none has.
  oxString GetParentingPath() const;

  // Reader diagnostics: "unsupported" for valid COLLADA the module ignores,
  // "unknown" for tags it does not recognise. None of them stops reading.
  static void UnsupportedTagWarning(std::string_view tag, std::string_view parentTag);
  static void UnsupportedExtraWarning(std::string_view parentTag);
  static void UnknownTagError(std::string_view tag, std::string_view parentTag);
  static void UnknownTagWarning(std::string_view tag, std::string_view parentTag);

  // The enclosing element; null for the root and detached elements. Not owned.
  oxDAEBaseElement* parent = nullptr;
};

using EToken = oxDAEBaseElement::EToken;

// An element with the identity attributes "name", "id" and "sid" (all empty
// by default) and its <extra> children (not owned; shared by copies).
class oxDAEElement : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEElement, oxDAEBaseElement, "")

 public:
  bool HasID() const override { return true; }
  // Reads "name", "id" and "sid", then registers the element under "#" + id
  // and, when it has a sid, under its path. Subclasses call it first.
  void Read(oxDAEFile& file) override;
  // Writes "name" and "id" when non-empty (never "sid"). Subclasses call it
  // right after starting their element.
  void Write(oxDAEFile& file) override;
  // The URI by which the element is referenced: "#" + id.
  virtual oxString ComputeURL(oxDAEFile& file) const;

  // The registry key of the element: its id; else, for a sid under an
  // element parent, the parent's parenting path + "/" + sid; else empty.
  oxString GetPath() const;

  // The first extra whose type, name or id equals the argument, or null.
  oxDAEExtraElement* GetExtraByType(const oxString& type) const;
  oxDAEExtraElement* GetExtraByName(const oxString& name) const;
  oxDAEExtraElement* GetExtraByID(const oxString& id) const;
  // Null when `index` is not below the number of extras.
  oxDAEExtraElement* GetExtraByIndex(unsigned int index) const;

  oxString name;
  oxString id;
  oxString sid;
  oxArray<oxDAEExtraElement*> extras;

 protected:
  // Starts `tag` and writes the identity attributes; the caller adds its own
  // attributes and content and ends the element.
  void WriteStart(oxDAEFile& file, std::string_view tag);
  // For documents that name elements without giving them an id: an element
  // with a name and no id takes the name as id and is registered under it.
  void AdoptNameAsID(oxDAEFile& file);
  // Writes the element as `tag` with its identity attributes and no content.
  void WriteIdentityOnly(oxDAEFile& file, std::string_view tag);
};

// An element with a "type" text (empty by default).
class oxDAETypedElement : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAETypedElement, oxDAEElement, "")

 public:
  oxString type;
};

// One row of an element's child table: the tag and what reading it does.
// A null `read` steps over the child without a message.
template <class Owner>
struct oxDAEChildRule {
  std::string_view tag;
  void (*read)(Owner& owner, oxDAEFile& file);
};

}  // namespace OxDAEReader
