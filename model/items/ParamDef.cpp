#include "model/items/ParamDef.h"

#include <array>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

constexpr std::array<const char*, 7> kTypeNames = {"Unknown", "String", "Dword",  "Enum",
                                                   "Bitmask", "Datime", "Version"};

const std::string kNoText;

std::vector<std::string> OptionsFromText(ParamType type, const char* pText) {
  if (!pText) return {};
  if (type == ParamType::Dword) return {pText};
  if (type == ParamType::Enum || type == ParamType::Bitmask) return Split(pText, '|');
  return {};
}

}  // namespace

const char* ParamTypeName(ParamType type) {
  const auto index = static_cast<size_t>(type);
  return kTypeNames[index < kTypeNames.size() ? index : 0];
}

ParamType ParamTypeFromName(std::string_view name) {
  for (size_t i = 1; i < kTypeNames.size(); ++i) {
    if (EqualsNoCase(name, kTypeNames[i])) return static_cast<ParamType>(i);
  }
  return ParamType::None;
}

DiagParamDef::DiagParamDef(std::string name, ParamType type, const char* text, bool canBeChanged,
                           std::string description)
    : Name(std::move(name)),
      Type(type),
      Options(OptionsFromText(type, text)),
      CanBeChanged(canBeChanged),
      Description(std::move(description)) {}

const char* DiagParamDef::GetTypeName() const {
  return ParamTypeName(Type);
}

const std::string& DiagParamDef::GetOptionText(uint32_t index) const {
  return index < Options.size() ? Options[index] : kNoText;
}

uint32_t DiagParamDef::GetOptionIndex(std::string_view text) const {
  for (size_t i = 0; i < Options.size(); ++i) {
    if (EqualsNoCase(Options[i], text)) return static_cast<uint32_t>(i);
  }
  return kNoOption;
}

const std::string& DiagParamDef::GetUnit() const {
  return Type == ParamType::Dword ? GetOptionText(0) : kNoText;
}

void DiagParamDefs::Add(std::string name, ParamType type, const char* text, bool canBeChanged,
                        std::string description) {
  m_defs.push_back(
      MakeRef<DiagParamDef>(std::move(name), type, text, canBeChanged, std::move(description)));
  if (m_defs.size() <= DiagParamDef::kNoPlace)
    m_defs.back()->Place = static_cast<uint32_t>(m_defs.size() - 1);
}

const DiagParamDef* DiagParamDefs::Find(std::string_view name, bool ignoreCase) const {
  for (const auto& def : m_defs) {
    if (ignoreCase ? EqualsNoCase(def->Name, name) : def->Name == name) return def.get();
  }
  return nullptr;
}

const DiagParamDef* DiagParamDefs::Get(size_t index) const {
  return index < m_defs.size() ? m_defs[index].get() : nullptr;
}

}  // namespace kestra
