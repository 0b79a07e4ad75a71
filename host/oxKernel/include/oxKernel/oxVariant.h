// Host type records, the per-context type manager that finds them by name,
// and oxVariant, a value of one of those types that converts from and to text.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <variant>

#include "oxKernel/oxString.h"

namespace OxKernel {

// A host value type: a name and the shape of its values.
class oxType {
 public:
  enum class EKind { Bool, Int32, UInt8, Float, String, FloatTuple };
  constexpr oxType(const char* name, EKind kind, unsigned int components)
      : m_name(name), m_kind(kind), m_components(components) {}
  std::string_view GetName() const { return m_name; }
  EKind GetKind() const { return m_kind; }
  // Number of scalar components: 2 to 4 for the vectors, 16 for the
  // matrix, else 1.
  unsigned int GetComponentCount() const { return m_components; }

 private:
  const char* m_name;
  EKind m_kind;
  unsigned int m_components;
};

// Finds value types by name. Knows "bool", "int32", "uint8", "float",
// "oxString", "oxVec2", "oxVec3", "oxVec4" and "oxMatrix44" (16 floats);
// names are case-sensitive.
class oxTypeManager {
 public:
  // The manager of a host context; every context sees the same built-in types.
  static const oxTypeManager& Instance(unsigned int context);
  const oxType* FindType(std::string_view name) const;
};

class oxVariant {
 public:
  using Tuple = std::array<float, 16>;
  using Value = std::variant<std::monostate, bool, int32_t, uint8_t, float, oxString, Tuple>;

  oxVariant() = default;
  explicit oxVariant(const oxType* type) { SetValueType(type); }

  // Gives the variant a type and that type's zero value (null: no value).
  void SetValueType(const oxType* type);
  const oxType* GetValueType() const { return m_type; }
  const Value& GetValue() const { return m_value; }

  // Converts the text into a value of the variant's type: numbers with the
  // host number interpreter, vectors as exactly N white-space separated
  // floats, strings as they stand. Returns false (value unchanged) when the
  // text does not convert or the variant has no type.
  bool SetStringValue(std::string_view text);
  // The value as text, in the form SetStringValue reads back.
  oxString GetStringValue() const;

 private:
  const oxType* m_type = nullptr;
  Value m_value;
};

}  // namespace OxKernel
