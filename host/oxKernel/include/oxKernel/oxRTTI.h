// Run-time class records. Every run-time-typed class owns one static oxRTTI
// holding its name and its parent's record; IsKindOf walks the parent chain.
#pragma once

#include <string_view>

namespace OxKernel {

class oxRTTI {
 public:
  constexpr oxRTTI(const char* name, unsigned int flags, const oxRTTI* parent)
      : m_name(name), m_flags(flags), m_parent(parent) {}

  const char* GetName() const { return m_name; }
  unsigned int GetFlags() const { return m_flags; }
  const oxRTTI* GetParent() const { return m_parent; }

  // True when `type` is `base` or descends from it.
  static bool IsKindOf(const oxRTTI& type, const oxRTTI& base);
  // The same test by class name, for callers that only know the name (for
  // example across module boundaries, where records are not shared).
  static bool IsKindOf(const oxRTTI& type, std::string_view baseName);

 private:
  const char* m_name;
  unsigned int m_flags;
  const oxRTTI* m_parent;
};

// Root of every run-time-typed host object.
class oxRTTIObject {
 public:
  static const oxRTTI kRTTI;

  oxRTTIObject() = default;
  oxRTTIObject(const oxRTTIObject&) = default;
  oxRTTIObject& operator=(const oxRTTIObject&) = default;
  virtual ~oxRTTIObject() = default;

  virtual const oxRTTI& GetRTTI() const { return kRTTI; }
  bool IsKindOf(const oxRTTI& base) const { return oxRTTI::IsKindOf(GetRTTI(), base); }
  bool IsKindOf(std::string_view baseName) const { return oxRTTI::IsKindOf(GetRTTI(), baseName); }
  // Second-phase construction hook; nothing to do by default.
  virtual void _Construct() {}
};

// Declares the run-time class members of `Class` inside its body: the record,
// GetRTTI and the two checked casts (by record and, "weak", by name).
#define OX_DECLARE_RTTI(Class)                                                                  \
 public:                                                                                        \
  static const ::OxKernel::oxRTTI kRTTI;                                                        \
  const ::OxKernel::oxRTTI& GetRTTI() const override {                                          \
    return kRTTI;                                                                               \
  }                                                                                             \
  static Class* DynamicCast(::OxKernel::oxRTTIObject* object) {                                 \
    return object && object->IsKindOf(kRTTI) ? static_cast<Class*>(object) : nullptr;           \
  }                                                                                             \
  static const Class* DynamicCast(const ::OxKernel::oxRTTIObject* object) {                     \
    return object && object->IsKindOf(kRTTI) ? static_cast<const Class*>(object) : nullptr;     \
  }                                                                                             \
  static Class* WeakDynamicCast(::OxKernel::oxRTTIObject* object) {                             \
    return object && object->IsKindOf(kRTTI.GetName()) ? static_cast<Class*>(object) : nullptr; \
  }                                                                                             \
  static const Class* WeakDynamicCast(const ::OxKernel::oxRTTIObject* object) {                 \
    return object && object->IsKindOf(kRTTI.GetName()) ? static_cast<const Class*>(object)      \
                                                       : nullptr;                               \
  }

// Defines the record of `Class`, named by its (qualified) C++ name.
#define OX_DEFINE_RTTI(Class, Base)       \
  const ::OxKernel::oxRTTI Class::kRTTI { \
#Class, 0, &Base::kRTTI               \
  }

}  // namespace OxKernel
