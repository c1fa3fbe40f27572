#include <utility>

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

// The places of a list when one more value is appended to it.
uint32_t PlacesWith(uint32_t places, const DiagParam& param) {
  constexpr uint32_t kNotInOrder = 1u << DiagParamDef::kNoPlace;
  const uint32_t bit = 1u << (param.Def ? param.Def->Place : DiagParamDef::kNoPlace);
  return places | (places < bit ? bit : kNotInOrder);
}

}  // namespace

DiagParams::DiagParams(DiagParams&& other) {
  other.TakeAll();
  m_values.swap(other.m_values);
  m_places = std::exchange(other.m_places, 0);
  m_poDefs = std::move(other.m_poDefs);
}

DiagParam* DiagParams::Get(size_t index) const {
  if (m_pKnown) {
    for (size_t known = 0; known < m_pKnown->KnownDefs().size(); ++known) {
      if (m_pKnown->IsKnown(known) && index-- == 0) return KnownAt(known);
    }
  }
  if (index < m_values.size()) return m_values[index].get();
  if (!m_pLate) return nullptr;
  const Values& late = LateValues();
  index -= m_values.size();
  return index < late.size() ? late[index].get() : nullptr;
}

DiagParam* DiagParams::Find(std::string_view name, bool ignoreCase) const {
  const DiagParamDef* pDef = nullptr;
  if (m_pKnown || m_pLate) pDef = m_poDefs ? m_poDefs->Find(name, ignoreCase) : nullptr;
  DiagParam* pFound = pDef ? FindKnown(*pDef) : nullptr;
  if (!pFound) pFound = FindIn(m_values, name, ignoreCase);
  if (pFound || !pDef || !m_pLate) return pFound;
  return m_pLate->pSource->MayHold(*pDef) ? FindIn(LateValues(), *pDef) : nullptr;
}

DiagParam* DiagParams::Search(const DiagParamDef& def) const {
  DiagParam* pFound = FindKnown(def);
  if (!pFound) pFound = FindIn(m_values, def);
  if (pFound || !m_pLate || !m_pLate->pSource->MayHold(def)) return pFound;
  return FindIn(LateValues(), def);
}

void DiagParams::Clear() {
  ForgetKnown();
  m_values.clear();
  m_places = 0;
  m_pLate.reset();
}

void DiagParams::SetKnown(const CKnownValues& source) {
  ForgetKnown();
  m_pKnown = &source;
}

size_t DiagParams::KnownCount() const {
  size_t count = 0;
  const size_t most = m_pKnown ? m_pKnown->KnownDefs().size() : 0;
  for (size_t i = 0; i < most; ++i) count += m_pKnown->IsKnown(i) ? 1 : 0;
  return count;
}

DiagParam* DiagParams::KnownAt(size_t index) const {
  Made* pMade = m_pMade.load(std::memory_order_acquire);
  if (!pMade) {
    auto fresh = std::make_unique<Made>();
    if (m_pMade.compare_exchange_strong(pMade, fresh.get(), std::memory_order_acq_rel))
      pMade = fresh.release();
  }
  std::atomic<DiagParam*>& place = pMade->params[index];
  DiagParam* pParam = place.load(std::memory_order_acquire);
  if (pParam) return pParam;
  Ref<DiagParam> fresh = m_pKnown->MakeKnown(index);
  if (place.compare_exchange_strong(pParam, fresh.get(), std::memory_order_acq_rel))
    pParam = fresh.Detach();  // the count is the place's
  return pParam;
}

DiagParam* DiagParams::FindKnown(const DiagParamDef& def) const {
  if (!m_pKnown) return nullptr;
  const auto defs = m_pKnown->KnownDefs();
  for (size_t i = 0; i < defs.size(); ++i) {
    if (defs[i] == &def) return m_pKnown->IsKnown(i) ? KnownAt(i) : nullptr;
  }
  return nullptr;
}

void DiagParams::ForgetKnown() {
  m_pKnown = nullptr;
  const std::unique_ptr<Made> made(m_pMade.exchange(nullptr));
  if (!made) return;
  for (const auto& param : made->params) {
    if (const DiagParam* pParam = param.load(std::memory_order_relaxed)) pParam->Release();
  }
}

void DiagParams::Defer(CLateValues& source) {
  m_pLate = std::make_unique<Late>();
  m_pLate->pSource = &source;
}

DiagParams::Values& DiagParams::LateValues() const {
  m_pLate->reading.Do([this] {
    DiagParams values(m_poDefs);
    m_pLate->pSource->ReadLate(values);
    m_pLate->values = std::move(values.m_values);
  });
  return m_pLate->values;
}

void DiagParams::TakeAll() {
  if (!m_pKnown && !m_pLate) return;
  Values all;
  for (size_t i = 0; i < Count(); ++i) all.emplace_back(Get(i));
  Clear();
  m_values = std::move(all);
  CountPlaces();
}

DiagParam* DiagParams::Append(Ref<DiagParam> param) {
  const uint32_t places = PlacesWith(m_places, *param);
  m_values.push_back(std::move(param));
  m_places = places;
  return m_values.back().get();
}

// Nothing is moved or allocated: the values stay whatever happens.
void DiagParams::CountPlaces() {
  uint32_t places = 0;
  for (const auto& value : m_values) places = PlacesWith(places, *value);
  m_places = places;
}

void DiagParams::Set(Ref<DiagParam> param, bool replace) {
  if (!param) return;
  if (replace) TakeAll();
  if (replace && param->Def) {
    for (auto& value : m_values) {
      if (value->Def && EqualsNoCase(value->Def->Name, param->Def->Name)) {
        value = std::move(param);
        CountPlaces();
        return;
      }
    }
  }
  Append(std::move(param));
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
  return Append(MakeRef<DiagParam>(pDef, std::move(text)));
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
  return Append(MakeRef<DiagParam>(pDef, number));
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
