#include "VLib/src/text/Text.h"
#include "VLib/src/text/VersionNumber.h"
#include "VLib/src/time/Datime.h"
#include "model/items/Param.h"
#include "model/items/QueryMessage.h"

namespace kestra {
namespace {

DiagParam* FindIn(const std::vector<Ref<DiagParam>>& values, std::string_view name,
                  bool ignoreCase) {
  for (const auto& value : values) {
    if (!value->Def) continue;
    const std::string& own = value->Def->Name;
    if (ignoreCase ? EqualsNoCase(own, name) : own == name) return value.get();
  }
  return nullptr;
}

DiagParam* FindIn(const std::vector<Ref<DiagParam>>& values, const DiagParamDef& def) {
  for (const auto& value : values) {
    if (value->Def.get() == &def) return value.get();
  }
  return nullptr;
}

}  // namespace

DiagParam* DiagParams::Get(size_t index) const {
  if (index < m_values.size()) return m_values[index].get();
  if (!m_pLate) return nullptr;
  const Values& late = LateValues();
  index -= m_values.size();
  return index < late.size() ? late[index].get() : nullptr;
}

DiagParam* DiagParams::Find(std::string_view name, bool ignoreCase) const {
  DiagParam* pFound = FindIn(m_values, name, ignoreCase);
  if (pFound || !m_pLate) return pFound;
  const DiagParamDef* pDef = m_poDefs ? m_poDefs->Find(name, ignoreCase) : nullptr;
  return pDef && m_pLate->pSource->MayHold(*pDef) ? FindIn(LateValues(), *pDef) : nullptr;
}

DiagParam* DiagParams::Find(const DiagParamDef& def) const {
  DiagParam* pFound = FindIn(m_values, def);
  if (pFound || !m_pLate || !m_pLate->pSource->MayHold(def)) return pFound;
  return FindIn(LateValues(), def);
}

void DiagParams::Clear() {
  m_values.clear();
  m_pLate.reset();
}

void DiagParams::Defer(CLateValues& source) {
  m_pLate = std::make_unique<Late>();
  m_pLate->pSource = &source;
}

DiagParams::Values& DiagParams::LateValues() const {
  std::call_once(m_pLate->isRead, [this] {
    DiagParams values(m_poDefs);
    m_pLate->pSource->ReadLate(values);
    m_pLate->values = std::move(values.m_values);
  });
  return m_pLate->values;
}

void DiagParams::TakeLate() {
  if (!m_pLate) return;
  for (auto& value : LateValues()) m_values.push_back(std::move(value));
  m_pLate.reset();
}

void DiagParams::Set(Ref<DiagParam> param, bool replace) {
  if (!param) return;
  if (replace) TakeLate();
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
  Clear();
  m_poDefs = std::move(defs);
}

bool DiagParams::CheckValues(QueryMessage& message) const {
  for (size_t i = 0; i < Count(); ++i) {
    const DiagParam& value = *Get(i);
    if (value.IsValid()) continue;
    message.RaiseMessage(11002, {value.Def ? value.Def->Name : std::string(), std::string()});
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
