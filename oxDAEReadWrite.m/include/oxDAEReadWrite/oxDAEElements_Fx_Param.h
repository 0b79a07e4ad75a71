// Effect parameters: <newparam> declares a typed value under a sid,
// <setparam> assigns one to the parameter named by "ref", <annotate> attaches
// a named one to an effect, parameter or pass. All three hold their value the
// same way (oxDAEFxParam): the value element is a child named after the
// value's type ("float3", "sampler2D", "surface", ...) whose content is the
// value. oxDAEDynamicParam is the data parameter of tool techniques, whose
// element name is free.
#pragma once

#include <memory>
#include <variant>

#include <oxMath/oxVec.h>

#include "oxDAEReadWrite/oxDAEElements_Fx.h"
#include "oxDAEReadWrite/oxDAEElements_Main.h"
#include "oxDAEReadWrite/oxDAEElements_Main_Source.h"
#include "oxDAEReadWrite/oxDAEReadWrite_Enum.h"

namespace OxDAEReader {

// A typed effect value: the value type (UNKNOWN), the raw text of the value
// element (empty; kept for every type, and what is written back for every
// type but bool, int and float), the value category (kText) and the value,
// which the parameter owns: a bool, int or float (kScalar), a bool or float
// array (kArray), a surface or sampler (kElement), or for kText the text
// itself. Copies are deep: a copy owns its own arrays, surface or sampler.
//
// Each getter answers its own kind of value and a defined empty value for
// any other kind (false, 0, 0.0, an empty array, null): test GetValueType
// first. Integer vectors are not read, so GetArrayOfIntsValue is always
// empty.
class oxDAEFxParam : public oxDAEElement {
  OX_DAE_ELEMENT(oxDAEFxParam, oxDAEElement, "")

 public:
  static constexpr int kScalar = 0;
  static constexpr int kElement = 1;
  static constexpr int kArray = 2;
  static constexpr int kText = 3;

  oxDAEFxParam() = default;
  oxDAEFxParam(const oxDAEFxParam& other);
  oxDAEFxParam& operator=(const oxDAEFxParam& other);
  ~oxDAEFxParam() override;

  EFxBasicType GetValueType() const { return valueType; }
  // The element name of the value type; empty for UNKNOWN and ENUM.
  const oxString& GetStringType() const;
  // The text of the value element.
  const oxString& GetStringValue() const { return text; }
  bool GetBoolValue() const;
  int GetIntValue() const;
  float GetFloatValue() const;
  // The first two, three or four floats of the float array; components the
  // array does not hold are 0.
  OxMath::oxGenVec2<float> GetVec2Value() const;
  OxMath::oxGenVec3<float> GetVec3Value() const;
  OxMath::oxGenVec4<float> GetVec4Value() const;
  const oxArray<bool>& GetArrayOfBoolsValue() const;
  const oxArray<float>& GetArrayOfFloatsValue() const;
  const oxArray<int>& GetArrayOfIntsValue() const;
  // The surface or sampler, owned by the parameter; null for other values.
  oxDAEBaseElement* GetElementValue() const;
  oxDAEFxSurface* GetSurfaceValue() const;
  oxDAEFxSampler* GetSamplerValue() const;

  // Reads the value element the reader stands on, replacing the value (the
  // text only when the element has text). bool, int and float read one
  // scalar (false / 0 when the text does not give one); bool2..bool4 and
  // float2..float4x4 read an array of exactly rows times columns values,
  // missing values 0, surplus values ignored; a surface or sampler is
  // created and reads itself; string and enum keep the text. An integer
  // vector reports "value type not supported yet" and an unknown element
  // name "undefined value type" (errors); both keep the previous value and
  // category (the unknown name sets kText).
  void ReadBasicTypeElement(oxDAEFile& file);
  // Starts an element named after the value type (an empty name, for
  // UNKNOWN and ENUM, leaves the text inside the enclosing element) holding
  // the scalar for bool, int and float and the stored text otherwise; a
  // surface or sampler is therefore written empty. The element is left open
  // for the enclosing element to close.
  void WriteBasicTypeElement(oxDAEFile& file);
  // Reads the element the reader stands on as the value element.
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile& file) override;

  EFxBasicType valueType = EFxBasicType::UNKNOWN;
  oxString text;
  int valueCategory = kText;

 private:
  // Owns a T and copies it deeply.
  template <class T>
  struct Owned {
    Owned() = default;
    explicit Owned(T* p) : ptr(p) {}
    Owned(const Owned& other) : ptr(Clone(other)) {}
    Owned& operator=(const Owned& other) {
      ptr = Clone(other);
      return *this;
    }
    Owned(Owned&&) noexcept = default;
    Owned& operator=(Owned&&) noexcept = default;
    static std::unique_ptr<T> Clone(const Owned& other) {
      return other.ptr ? std::make_unique<T>(*other.ptr) : nullptr;
    }
    std::unique_ptr<T> ptr;
  };
  using Value = std::variant<std::monostate, bool, int, float, oxArray<bool>, oxArray<float>,
                             Owned<oxDAEFxSurface>, Owned<oxDAEFxSampler>>;

  // Makes this parameter the parent of the surface or sampler it owns.
  void AdoptElementValue();
  // Reads the first number of the element text (0 when there is none) as
  // a scalar value.
  template <class T>
  void ReadScalarValue(oxDAEFile& file);
  // Reads exactly `count` numbers of the element text (missing ones 0) as
  // an array value.
  template <class T>
  void ReadArrayValue(oxDAEFile& file, uint32_t count);
  // Takes `element` (a new surface or sampler) as the value and reads it.
  template <class T>
  void ReadElementValue(oxDAEFile& file, T* element);

  Value value;
};

// <annotate>: a named value; "name" is the inherited name field. The first
// child is the value element.
class oxDAEFxAnnotate : public oxDAEFxParam {
  OX_DAE_ELEMENT(oxDAEFxAnnotate, oxDAEFxParam, "annotate")

 public:
  void Read(oxDAEFile& file) override;
  // Writes <annotate> and its value element. The name is written after the
  // attribute list is ended, where the writer drops it: an annotation is
  // written back without its name.
  void Write(oxDAEFile& file) override;

  // A child rule for the owners that keep annotations by value: reads the
  // <annotate> the reader stands on and appends a copy to owner.annotations.
  template <class Owner>
  static void ReadInto(Owner& owner, oxDAEFile& file) {
    oxDAEFxAnnotate annotation;
    annotation.parent = &owner;
    annotation.Read(file);
    owner.annotations.push_back(annotation);
  }
};

// <newparam>: "sid" (the inherited sid field; name and id are not read), the
// <annotate> children (copies, in document order), <semantic> (empty), and the
// value: any other child, including <modifier>, is read as the value element,
// and a later one replaces an earlier one. Once read it is registered with
// the document under its path, parenting path + "/" + sid. Not written.
class oxDAEFxNewParam : public oxDAEFxParam {
  OX_DAE_ELEMENT(oxDAEFxNewParam, oxDAEFxParam, "newparam")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile&) override {}

  oxArray<oxDAEFxAnnotate> annotations;
  oxString semantic;
};

// <setparam>: "ref" (empty; no message when missing), the <annotate>
// children (copies) and the value: any other child is the value element. Not
// written.
class oxDAEFxSetParam : public oxDAEFxParam {
  OX_DAE_ELEMENT(oxDAEFxSetParam, oxDAEFxParam, "setparam")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile&) override {}

  oxArray<oxDAEFxAnnotate> annotations;
  oxString ref;
};

// A data parameter of tool techniques read from an element of any name: the
// tag it was read from (empty), "shortName" (empty), and "type" with the
// value, read as oxDAEParameter reads them. Not written.
class oxDAEDynamicParam : public oxDAEParameter {
  OX_DAE_ELEMENT(oxDAEDynamicParam, oxDAEParameter, "")

 public:
  void Read(oxDAEFile& file) override;
  void Write(oxDAEFile&) override {}

  oxString elementName;
  oxString shortName;
};

}  // namespace OxDAEReader
