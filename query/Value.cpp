#include "query/Value.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "VLib/src/text/Text.h"
#include "VLib/src/time/Datime.h"

namespace kestra {
namespace {

bool IsDatimeParam(const DiagParamDef& def) {
  return def.Type == ParamType::Datime;
}

std::string ParameterText(const DiagParam* pParam) {
  if (!pParam) return {};
  if (pParam->Def && pParam->Def->Type == ParamType::Dword)
    return fmt::to_string(pParam->DWordValue);
  return pParam->GetText();
}

bool ParametersEqual(const DiagParam* pA, const DiagParam* pB) {
  return pA && pB && pA->Def.get() == pB->Def.get() && pA->DWordValue == pB->DWordValue &&
         EqualsNoCase(pA->StringValue, pB->StringValue);
}

}  // namespace

static_assert(sizeof(Value) == 16, "a value is two words");

void Value::AddRef() const {
  switch (m_kind) {
    case ValueKind::DiagItem:
      return m_payload.pItem->AddRef();
    case ValueKind::Parameter:
      return m_payload.pParam->AddRef();
    case ValueKind::Vector:
      return m_payload.pVector->AddRef();
    default:
      return m_payload.pText->AddRef();
  }
}

Value& Value::operator=(const Value& other) {
  if (this != &other) *this = Value(other);
  return *this;
}

Value& Value::operator=(Value&& other) noexcept {
  if (this == &other) return *this;
  Value old(std::move(*this));  // released last: it may own other
  Take(other);
  return *this;
}

// What goes may own this value's memory, so the value is empty before.
void Value::Release() {
  const ValueKind kind = std::exchange(m_kind, ValueKind::Undefined);
  const Payload payload = std::exchange(m_payload, Payload{nullptr});
  switch (kind) {
    case ValueKind::DiagItem:
      return payload.pItem->Release();
    case ValueKind::Parameter:
      return payload.pParam->Release();
    case ValueKind::Vector:
      return payload.pVector->Release();
    default:
      return payload.pText->Release();
  }
}

void Value::SetError() {
  Clear();
  m_kind = ValueKind::Error;
}

void Value::SetError(std::string text) {
  auto shared = MakeRef<CSharedText>(std::move(text));
  SetError();
  m_payload.pText = shared.Detach();
}

void Value::SetBoolean(bool value) {
  Clear();
  m_kind = ValueKind::Boolean;
  m_payload.boolean = value;
}

void Value::SetNumber(int32_t value) {
  Clear();
  m_kind = ValueKind::Number;
  m_payload.number = value;
}

void Value::SetString(std::string text) {
  auto shared = MakeRef<CSharedText>(std::move(text));
  Clear();
  m_kind = ValueKind::String;
  m_payload.pText = shared.Detach();
}

void Value::SetDatime(uint32_t value) {
  Clear();
  m_kind = ValueKind::Datime;
  m_payload.datime = value;
}

void Value::SetParameter(Ref<DiagParam> param) {
  Clear();
  m_kind = ValueKind::Parameter;
  m_payload.pParam = param.Detach();
}

void Value::SetDiagItem(Ref<CVDiagItem> item) {
  Clear();
  m_kind = ValueKind::DiagItem;
  m_payload.pItem = item.Detach();
}

void Value::SetVector(Ref<ValueVector> vector) {
  Clear();
  m_kind = ValueKind::Vector;
  m_payload.pVector = vector.Detach();
}

void Value::SetAny() {
  Clear();
  m_kind = ValueKind::Any;
}

DiagParam* Value::asParameter() const {
  return m_kind == ValueKind::Parameter ? m_payload.pParam : nullptr;
}

DiagParam* Value::ParamOf(bool (DiagParamDef::*test)() const) const {
  DiagParam* pParam = asParameter();
  return pParam && pParam->Def && (pParam->Def.get()->*test)() ? pParam : nullptr;
}

bool Value::IsNumber() const {
  return m_kind == ValueKind::Number || ParamOf(&DiagParamDef::HoldsNumber);
}

bool Value::IsString() const {
  return m_kind == ValueKind::String || ParamOf(&DiagParamDef::HoldsText);
}

bool Value::IsDatime() const {
  if (m_kind == ValueKind::Datime) return true;
  const DiagParam* pParam = asParameter();
  return pParam && pParam->Def && IsDatimeParam(*pParam->Def);
}

int32_t Value::asLong() const {
  if (m_kind == ValueKind::Number) return m_payload.number;
  const DiagParam* pParam = ParamOf(&DiagParamDef::HoldsNumber);
  return pParam ? static_cast<int32_t>(pParam->DWordValue) : 0;
}

uint32_t Value::asDatime() const {
  if (m_kind == ValueKind::Datime) return m_payload.datime;
  return IsDatime() ? m_payload.pParam->DWordValue : 0;
}

std::string Value::asString() const {
  switch (m_kind) {
    case ValueKind::Error:
      return m_payload.pText ? fmt::format("<ERROR: {}>", m_payload.pText->text) : "<ERROR>";
    case ValueKind::Undefined:
      return "<NULL>";
    case ValueKind::Boolean:
      return m_payload.boolean ? "True" : "False";
    case ValueKind::Number:
      return fmt::to_string(static_cast<uint32_t>(m_payload.number));
    case ValueKind::String:
      return m_payload.pText->text;
    case ValueKind::Datime:
      return DatimeText(m_payload.datime);
    case ValueKind::Parameter:
      return ParameterText(m_payload.pParam);
    case ValueKind::DiagItem:
      return "<Diagnostics Item>";
    case ValueKind::Vector:
      return "<Vector>";
    case ValueKind::Any:
      return "<Any value>";
  }
  return {};
}

std::string_view Value::asText(std::string& buffer) const {
  if (m_kind == ValueKind::String) return m_payload.pText->text;
  const DiagParam* pParam = asParameter();
  if (pParam && pParam->Def &&
      (pParam->Def->Type == ParamType::String || pParam->Def->Type == ParamType::Version)) {
    return pParam->StringValue;
  }
  buffer = asString();
  return buffer;
}

CVDiagItem* Value::asVDIagItem() const {
  return IsVDiagItem() ? m_payload.pItem : nullptr;
}

ValueVector& Value::asVector() const {
  static auto* pEmpty = MakeRef<ValueVector>().Detach();  // shared for ever
  return IsVector() && m_payload.pVector ? *m_payload.pVector : *pEmpty;
}

void Value::AppendText(std::string_view text) {
  if (m_kind != ValueKind::String) return;
  if (!m_payload.pText->IsShared()) {
    m_payload.pText->text.append(text);
    return;
  }
  std::string joined;
  joined.reserve(m_payload.pText->text.size() + text.size());
  joined.append(m_payload.pText->text).append(text);
  SetString(std::move(joined));
}

Ref<ValueVector> ValueVector::WithRoomFor(uint32_t count) {
  static_assert(sizeof(ValueVector) % alignof(Value) == 0);
  Ref<ValueVector> values(new (count * sizeof(Value)) ValueVector());
  values->m_hasOwnRoom = true;
  values->m_pValues = values->OwnRoom();
  values->m_room = count;
  return values;
}

ValueVector::~ValueVector() {
  for (uint32_t i = 0; i < m_count; ++i) m_pValues[i].~Value();
  if (!m_hasOwnRoom) ::operator delete(m_pValues);
}

void ValueVector::Grow(size_t count) {
  constexpr size_t kLeast = 4;
  MoveTo(std::max(kLeast, std::max(count, std::min(size_t{m_room} * 2, size_t{UINT32_MAX}))));
}

void ValueVector::MoveTo(size_t room) {
  if (room > UINT32_MAX) throw std::bad_alloc();
  auto* pValues = static_cast<Value*>(::operator new(room * sizeof(Value)));
  for (uint32_t i = 0; i < m_count; ++i) {
    new (pValues + i) Value(std::move(m_pValues[i]));
    m_pValues[i].~Value();
  }
  if (!m_hasOwnRoom) ::operator delete(m_pValues);
  m_hasOwnRoom = false;
  m_pValues = pValues;
  m_room = static_cast<uint32_t>(room);
}

bool Equals(const Value& a, const Value& b) {
  switch (a.Kind()) {
    case ValueKind::Boolean:
      return b.IsBoolean() && a.asBool() == b.asBool();
    case ValueKind::Number:
      return b.IsNumber() && a.asLong() == b.asLong();
    case ValueKind::String: {
      std::string bufferA, bufferB;
      return b.IsString() && EqualsNoCase(a.asText(bufferA), b.asText(bufferB));
    }
    case ValueKind::Datime:
      return b.IsDatime() && a.asDatime() == b.asDatime();
    case ValueKind::Parameter:
      if (b.Kind() != ValueKind::Parameter) return Equals(b, a);
      return ParametersEqual(a.asParameter(), b.asParameter());
    default:
      return false;
  }
}

}  // namespace kestra
