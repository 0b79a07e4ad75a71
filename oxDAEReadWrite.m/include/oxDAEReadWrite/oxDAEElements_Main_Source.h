// Data sources: value arrays, the accessor that cuts an array into records,
// the <source> that holds both, and <param>. In document order:
// <source> > <*_array>, <technique_common> > <accessor> > <param>.
#pragma once

#include <cstdint>

#include <oxKernel/oxXML.h>
#include <oxMath/oxMatrix44.h>
#include <oxMath/oxVec.h>

#include "oxDAEReadWrite/oxDAEElements_Main.h"

namespace OxDAEReader {

class oxDAEAccessor;
class oxDAEAssetElement;
class oxDAEParameter;
class oxDAESourceTechniqueCommon;
class oxDAETechnique;

// <array>, the generic value array, and base of the typed arrays. Holds the
// declared "count" (0), the value type (UNSET), "minInclusive" and
// "maxInclusive" (0), "digits" (8, written back even when absent),
// "magnitude" (0), and the values in the buffer of its type: `ints` for INT,
// `floats` for FLOAT, `strings` for NAME and TOKEN. Boolean values are not
// kept: a bool array keeps only its count.
class oxDAEArray : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEArray, oxDAEElement, "array")

 public:
  enum class EValueType : int32_t { BOOL = 0, INT = 1, FLOAT = 2, NAME = 3, TOKEN = 4, UNSET = 5 };

  // Identity (an array without an id takes its name as id), then "count",
  // "minInclusive", "maxInclusive", "digits", "magnitude" and "type", then
  // the values.
  void Read(oxDAEFile& file) override;
  // "array" with count, type, and the non-zero bounds, digits and magnitude.
  void Write(oxDAEFile& file) override;

  // The number of values held (not the count attribute): the size of the
  // buffer of the value type, 0 for BOOL and UNSET.
  unsigned int GetValueCount() const;
  // The buffer of the value type, null for BOOL, UNSET or an empty buffer.
  const void* GetData() const;
  // Fills the buffer of the value type from the element text: exactly
  // `count` entries, missing values 0 (or empty), surplus values ignored. A
  // count far beyond what the text could hold is lowered, with an error, to
  // the most values the text could hold plus kCountSlack, so that memory
  // stays proportional to the input. Without text the buffers stay as they
  // are.
  void InternalRead(oxDAEFile& file);

  // How many zero entries beyond its text's capacity an array may declare.
  static constexpr uint32_t kCountSlack = 16;

  uint32_t count = 0;
  EValueType type = EValueType::UNSET;
  int32_t minInclusive = 0;
  int32_t maxInclusive = 0;
  uint16_t digits = 8;
  int16_t magnitude = 0;
  oxArray<int32_t> ints;
  oxArray<float> floats;
  oxArray<oxString> strings;

 protected:
  // Identity, "count" and the values of a typed array of `valueType`.
  void ReadTyped(oxDAEFile& file, EValueType valueType);
  // Writes `tag` with the identity attributes, "count" and the values held
  // (none for a bool array).
  void WriteTyped(oxDAEFile& file, std::string_view tag);
};

// <float_array>: writes "count" as the number of floats held.
class oxDAEFloatArray : public oxDAEArray {
  OX_DAE_ELEMENT(oxDAEFloatArray, oxDAEArray, "float_array")

 public:
  oxDAEFloatArray() { type = EValueType::FLOAT; }
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;
};

// <int_array>
class oxDAEIntArray : public oxDAEArray {
  OX_DAE_ELEMENT(oxDAEIntArray, oxDAEArray, "int_array")

 public:
  oxDAEIntArray() { type = EValueType::INT; }
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;
};

// <bool_array>: keeps the count only and is written without values.
class oxDAEBoolArray : public oxDAEArray {
  OX_DAE_ELEMENT(oxDAEBoolArray, oxDAEArray, "bool_array")

 public:
  oxDAEBoolArray() { type = EValueType::BOOL; }
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;
};

// <Name_array>, also made for <IDREF_array> (and written as Name_array).
class oxDAENameArray : public oxDAEArray {
  OX_DAE_ELEMENT(oxDAENameArray, oxDAEArray, "Name_array")

 public:
  oxDAENameArray() { type = EValueType::NAME; }
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;
};

// <accessor>: record i of the source array starts at value
// (offset + i) * stride, so "offset" counts records. Holds "count",
// "offset", "stride" (all 0 by default), the array "source" resolved to
// (null when it does not resolve to an array) and the <param> children.
class oxDAEAccessor : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAEAccessor, oxDAEBaseElement, "accessor")

 public:
  void Read(oxDAEFile& file) override;
  // Recomputes count as the source's value count / stride (a stride of 0
  // counts as 1), writes "offset" unless 0 and "stride" unless 1.
  void Write(oxDAEFile& file) override;

  // Typed reads of record i. The float and string getters treat a stride of
  // 0 as 1; the vector and matrix getters do not (stride 0 reads the first
  // value for every i). A record that lies outside the array, or an accessor
  // without an array, reads as zero (or the empty string).
  float GetFloatValue(unsigned int i) const;
  OxMath::oxGenVec3<float> GetVec3Value(unsigned int i) const;
  OxMath::oxGenVec4<float> GetVec4Value(unsigned int i) const;
  OxMath::oxMatrix44 GetMatrix44Value(unsigned int i) const;
  const oxString& GetStringValue(unsigned int i) const;

  uint32_t count = 0;
  uint32_t offset = 0;
  uint32_t stride = 0;
  oxDAEArray* source = nullptr;
  oxArray<oxDAEParameter*> params;

 private:
  // The index of the first float of record i when `width` floats from there
  // lie inside the float buffer, else -1.
  int64_t FloatIndex(unsigned int i, uint32_t recordStride, uint32_t width) const;
};

// <source>: the value array (null), the common technique (null) and the
// profile techniques (read, not written). A source without an id takes its
// name as id.
class oxDAESource : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAESource, oxDAEElement, "source")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;
  // The common technique's accessor, or null.
  oxDAEAccessor* GetAccessor() const;

  oxDAEArray* array = nullptr;
  oxDAESourceTechniqueCommon* techniqueCommon = nullptr;
  oxArray<oxDAETechnique*> techniques;
};

// <technique_common> of a source: its asset (read, not written) and accessor,
// both null by default.
class oxDAESourceTechniqueCommon : public oxDAEBaseElement {
  OX_DAE_ELEMENT(oxDAESourceTechniqueCommon, oxDAEBaseElement, "technique_common")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  oxDAEAssetElement* asset = nullptr;
  oxDAEAccessor* accessor = nullptr;
};

// <param> (also read from <parameter>): the "type" text and its value type
// (Unknown), "semantic" (empty), "flow" (IN; read, never written) and the
// value read from the text: one float, int or bool, a string, or for vector
// and matrix types a zero-filled buffer of components values of the base
// type. dataSize is the buffer's byte size, -1 when the element had no text.
class oxDAEParameter : public oxDAETypedElement {
  OX_DAE_ELEMENT(oxDAEParameter, oxDAETypedElement, "param")

 public:
  static constexpr std::string_view s_XMLTagVariant = "parameter";

  enum class EType : int32_t {
    Unknown,
    Float,
    Float2,
    Float3,
    Float4,
    Float7,
    Float2x2,
    Float3x3,
    Float4x4,
    Boolean,
    Bool,
    Bool2,
    Bool3,
    Bool4,
    Int,
    Int2,
    Int3,
    Int4,
    Int2x2,
    Int3x3,
    Int4x4,
    Name,
    DateTime,
    String,
    Token,
    ColorRGB,
    ColorRGBA
  };
  enum class EFlow : int32_t { IN = 1, OUT = 2, INOUT = 3 };

  struct TypeInfo {
    const char* name;
    EType type;
    EType baseType;
    uint32_t components;
  };
  static const TypeInfo s_TypeInfos[27];

  void Read(oxDAEFile& file) override;
  // Writes "param" (never "parameter") with "type", "semantic" when set, and
  // the value (not the flow).
  void Write(oxDAEFile& file) override;
  virtual void ReadData(OxKernel::oxXMLReader* reader);
  virtual void WriteData(OxKernel::oxXMLWriter* writer);

  // The value type of a type name (case-sensitive; a few names of older
  // exporters are aliases), Unknown for other names or before the table is
  // built.
  static EType _GetTypeFromString(const oxString& typeName);
  static const TypeInfo& GetTypeInfo(EType valueType);
  static void _PrepareHashTable();
  static void _DestroyHashTable();
  static bool _HasHashTable();

  bool hasData = false;
  EFlow flow = EFlow::IN;
  oxString semantic;
  EType valueType = EType::Unknown;
  oxString stringValue;
  float floatValue = 0.0f;
  int32_t intValue = 0;
  bool boolValue = false;
  // The vector or matrix value: floats for float-based types, ints (0 or 1
  // for booleans) for the others.
  oxArray<float> floatData;
  oxArray<int32_t> intData;
  int32_t dataSize = 0;
};

}  // namespace OxDAEReader
