#include "oxKernel/oxVariant.h"

#include <charconv>

#include "oxKernel/oxCharacter.h"

namespace OxKernel {

namespace {

constexpr oxType kTypes[] = {
    {"bool", oxType::EKind::Bool, 1},
    {"int32", oxType::EKind::Int32, 1},
    {"uint8", oxType::EKind::UInt8, 1},
    {"float", oxType::EKind::Float, 1},
    {"oxString", oxType::EKind::String, 1},
    {"oxVec2", oxType::EKind::FloatTuple, 2},
    {"oxVec3", oxType::EKind::FloatTuple, 3},
    {"oxVec4", oxType::EKind::FloatTuple, 4},
    {"oxMatrix44", oxType::EKind::FloatTuple, 16},
};

template <class T>
oxString NumberToString(T value) {
  char buf[64];
  const auto r = std::to_chars(buf, buf + sizeof buf, value);
  return oxString(std::string_view(buf, static_cast<size_t>(r.ptr - buf)));
}

bool ParseTuple(std::string_view text, unsigned int count, oxVariant::Tuple& out) {
  oxVariant::Tuple values{};
  oxStringTokenizer tokens(text, " \t\r\n");
  for (unsigned int i = 0; i < count; ++i) {
    if (!tokens.HasMoreTokens() || !oxCharacter::Interpret(tokens.NextToken(), values[i])) {
      return false;
    }
  }
  if (tokens.HasMoreTokens()) return false;
  out = values;
  return true;
}

template <class T>
bool ParseScalar(std::string_view text, oxVariant::Value& value) {
  T parsed{};
  if (!oxCharacter::Interpret(text, parsed)) return false;
  value = parsed;
  return true;
}

}  // namespace

const oxTypeManager& oxTypeManager::Instance(unsigned int) {
  static const oxTypeManager manager;
  return manager;
}

const oxType* oxTypeManager::FindType(std::string_view name) const {
  for (const oxType& type : kTypes) {
    if (type.GetName() == name) return &type;
  }
  return nullptr;
}

void oxVariant::SetValueType(const oxType* type) {
  m_type = type;
  if (!type) {
    m_value = std::monostate{};
    return;
  }
  switch (type->GetKind()) {
    case oxType::EKind::Bool:
      m_value = false;
      break;
    case oxType::EKind::Int32:
      m_value = int32_t{0};
      break;
    case oxType::EKind::UInt8:
      m_value = uint8_t{0};
      break;
    case oxType::EKind::Float:
      m_value = 0.0f;
      break;
    case oxType::EKind::String:
      m_value = oxString();
      break;
    case oxType::EKind::FloatTuple:
      m_value = Tuple{};
      break;
  }
}

bool oxVariant::SetStringValue(std::string_view text) {
  if (!m_type) return false;
  switch (m_type->GetKind()) {
    case oxType::EKind::Bool:
      return ParseScalar<bool>(text, m_value);
    case oxType::EKind::Int32:
      return ParseScalar<int32_t>(text, m_value);
    case oxType::EKind::UInt8:
      return ParseScalar<uint8_t>(text, m_value);
    case oxType::EKind::Float:
      return ParseScalar<float>(text, m_value);
    case oxType::EKind::String:
      m_value = oxString(text);
      return true;
    case oxType::EKind::FloatTuple: {
      Tuple tuple{};
      if (!ParseTuple(text, m_type->GetComponentCount(), tuple)) return false;
      m_value = tuple;
      return true;
    }
  }
  return false;
}

oxString oxVariant::GetStringValue() const {
  if (!m_type) return {};
  switch (m_type->GetKind()) {
    case oxType::EKind::Bool:
      return std::get<bool>(m_value) ? "true" : "false";
    case oxType::EKind::Int32:
      return NumberToString(std::get<int32_t>(m_value));
    case oxType::EKind::UInt8:
      return NumberToString(static_cast<unsigned>(std::get<uint8_t>(m_value)));
    case oxType::EKind::Float:
      return NumberToString(std::get<float>(m_value));
    case oxType::EKind::String:
      return std::get<oxString>(m_value);
    case oxType::EKind::FloatTuple: {
      const Tuple& t = std::get<Tuple>(m_value);
      oxString out;
      for (unsigned int i = 0; i < m_type->GetComponentCount(); ++i) {
        if (i) out += ' ';
        out += NumberToString(t[i]);
      }
      return out;
    }
  }
  return {};
}

}  // namespace OxKernel
