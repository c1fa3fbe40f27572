#include "VLib/src/text/Text.h"
#include "VLib/src/text/VersionNumber.h"
#include "VLib/src/time/Datime.h"
#include "model/items/Param.h"
#include "model/items/QueryMessage.h"

namespace kestra {

DiagParam* DiagParams::Get(size_t index) const {
  return index < m_values.size() ? m_values[index].get() : nullptr;
}

DiagParam* DiagParams::Find(std::string_view name, bool ignoreCase) const {
  for (const auto& value : m_values) {
    if (!value->Def) continue;
    const std::string& own = value->Def->Name;
    if (ignoreCase ? EqualsNoCase(own, name) : own == name) return value.get();
  }
  return nullptr;
}

DiagParam* DiagParams::Find(const DiagParamDef& def) const {
  for (const auto& value : m_values) {
    if (value->Def.get() == &def) return value.get();
  }
  return nullptr;
}

void DiagParams::Set(Ref<DiagParam> param, bool replace) {
  if (!param) return;
  if (replace && param->Def) {
    for (auto& value : m_values) {
      if (value->Def && EqualsNoCase(value->Def->Name, param->Def->Name)) {
        value = std::move(param);
        return;
      }
    }
  }
  m_values.push_back(std::move(param));
}

void DiagParams::Bind(Ref<const DiagParamDefs> defs) {
  m_values.clear();
  m_poDefs = std::move(defs);
}

bool DiagParams::CheckValues(QueryMessage& message) const {
  for (const auto& value : m_values) {
    if (value->IsValid()) continue;
    message.RaiseMessage(11002, {value->Def ? value->Def->Name : std::string(), std::string()});
    return false;
  }
  return true;
}

DiagParam* DiagParams::SetText(std::string_view name, std::string text) {
  const DiagParamDef* pDef = m_poDefs ? m_poDefs->Find(name, true) : nullptr;
  if (!pDef) return nullptr;
  m_values.push_back(MakeRef<DiagParam>(pDef, std::move(text)));
  return m_values.back().get();
}

DiagParam* DiagParams::SetTextIfAny(std::string_view name, std::string text) {
  return text.empty() ? nullptr : SetText(name, std::move(text));
}

DiagParam* DiagParams::SetVersionIfAny(std::string_view name, std::string_view text) {
  return IsVersion(text) ? SetText(name, std::string(text)) : nullptr;
}

DiagParam* DiagParams::SetNumber(std::string_view name, uint32_t number) {
  const DiagParamDef* pDef = m_poDefs ? m_poDefs->Find(name, true) : nullptr;
  if (!pDef) return nullptr;
  m_values.push_back(MakeRef<DiagParam>(pDef, number));
  return m_values.back().get();
}

DiagParam* DiagParams::SetTime(std::string_view name, const SystemTime& time, bool isLocal) {
  const auto datime = DatimeFromSystemTime(time, isLocal);
  return datime ? SetNumber(name, *datime) : nullptr;
}

DiagParam* DiagParams::SetTime(std::string_view name, FileTime time) {
  const auto datime = DatimeFromFileTime(time);
  return datime ? SetNumber(name, *datime) : nullptr;
}

}  // namespace kestra
