// <extra> and <technique>: the generic containers of tool data, the
// technique classes chosen by owner and profile, and custom attributes.
#pragma once

#include <oxKernel/oxVariant.h>

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEParameter;
class oxDAEAssetElement;
class oxDAETechnique;

// <extra>: its "type" text (empty) and its techniques in document order
// (owned by the document).
class oxDAEExtraElement : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEExtraElement, oxDAEElement, "extra")

 public:
  // The generic reader: identity attributes and "type", then every
  // <technique> as a plain oxDAETechnique; other children draw an
  // unknown-tag warning naming "extra".
  void Read(oxDAEFile& file) override;

  bool HasTechnique(const oxString& profile) const { return GetTechnique(profile) != nullptr; }
  // The first technique with that exact profile, or null.
  oxDAETechnique* GetTechnique(const oxString& profile) const;

  oxString type;
  oxArray<oxDAETechnique*> techniques;
};

// <technique profile="...">: its parameters and asset (owned by the document;
// asset null when absent) and its profile text (empty).
class oxDAETechnique : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAETechnique, oxDAEBaseElement, "technique")

 public:
  // Reads the profile, then the parameters and asset; other children are
  // tool data this class does not model and are stepped over silently.
  void Read(oxDAEFile& file) override;

  // Reads the "profile" attribute.
  void ReadAttributes(oxDAEFile& file);
  // Reads one child the subclass did not handle: a parameter or the asset.
  // False for anything else, which the caller reports or skips.
  bool ReadChild(oxDAEFile& file);
  // Starts "technique" with its "profile"; EndWriting closes it.
  void StartWriting(oxDAEFile& file);
  void EndWriting(oxDAEFile& file);

  oxArray<oxDAEParameter*> parameters;
  oxDAEAssetElement* asset = nullptr;
  oxString profile;
};

// A list of named, typed values (custom attributes of tools). Each entry
// holds a name, a host type and a value of that type; order is kept and
// names may repeat.
class oxDAEAttributes {
 public:
  struct Entry {
    oxString name;
    const OxKernel::oxType* type = nullptr;
    OxKernel::oxVariant value;
  };

  // Finds the first entry named `name`: true with its position in `index`,
  // or false with `index` equal to the entry count.
  bool _GetAttributeIndex(const oxString& name, unsigned int& index) const;
  bool HasAttribute(const oxString& name) const;
  void AddAttribute(const oxString& name, const OxKernel::oxType* type,
                    const OxKernel::oxVariant& value);
  // Reads <Attributes> or <QR_Attributes> elements of <Item name= type=>value
  // </Item> from an XML text (the XML prolog is added when missing). Rejected
  // items are logged and skipped. Returns 0 when at least one Item was met,
  // -1 when none was, or the XML factory's code when the text is not XML.
  int ReadFromXMLString(unsigned int context, const oxString& xml);

  const oxArray<Entry>& GetEntries() const { return entries; }
  unsigned int GetCount() const { return static_cast<unsigned int>(entries.size()); }

 private:
  oxArray<Entry> entries;
};

// Typed custom attributes of a tool technique (a "Custom_Attributes"
// container): every child element is one attribute named by its tag, typed
// by its "type" attribute and valued by its text.
class oxDAECustomAttributes : public oxDAETechnique {
  OX_DAE_ELEMENT(oxDAECustomAttributes, oxDAETechnique, "Custom_Attributes")

 public:
  // Translates the type names "int", "float2", "float3", "float4" and
  // "string" to the host's "int32", "oxVec2", "oxVec3", "oxVec4" and
  // "oxString", looks the type up and adds the attribute. A child without a
  // type, of an unknown type, or whose text does not convert is logged and
  // skipped.
  void Read(oxDAEFile& file) override;

  const oxDAEAttributes& GetAttributes() const { return attributes; }

  oxDAEAttributes attributes;
};

}  // namespace OxDAEReader
