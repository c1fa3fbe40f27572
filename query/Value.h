// Value: the one runtime type of the query language. Every action, predicate and statement writes
// its result into a caller-owned Value, and a query as a whole ends as one. Failure travels as a
// Value too: an Error is an ordinary result, and nothing throws.
//
// Threads: a Value is written by one thread. The reference counts are atomic, so a finished result
// may be handed to another thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "model/items/Item.h"

namespace kestra {

// The numbers are fixed.
enum class ValueKind : uint32_t {
  Error = 0,
  Undefined = 1,  // the language's NULL
  Boolean = 2,
  Number = 3,
  String = 4,
  Datime = 5,  // seconds since 1970-01-01 00:00:00 UTC
  Parameter = 6,
  DiagItem = 7,
  Vector = 8,
  Any = 9,  // cannot be known yet: a column of a source that is not bound yet
};

class ValueVector;

// A text that several values share; never changed while shared.
struct CSharedText : CCounted<CSharedText> {
  explicit CSharedText(std::string value) : text(std::move(value)) {}
  std::string text;
};

class Value {
 public:
  Value() = default;
  Value(const Value& other);
  Value(Value&& other) noexcept;
  ~Value() { Clear(); }
  Value& operator=(const Value& other);
  Value& operator=(Value&& other) noexcept;

  ValueKind Kind() const { return m_kind; }

  // Every setter first clears.
  void Clear();
  void SetError();
  void SetError(std::string text);
  void SetBoolean(bool value);
  void SetNumber(int32_t value);
  void SetString(std::string text);
  void SetDatime(uint32_t value);
  void SetParameter(Ref<DiagParam> param);
  void SetDiagItem(Ref<CVDiagItem> item);
  void SetVector(Ref<ValueVector> vector);
  void SetAny();

  bool IsUndefined() const { return m_kind == ValueKind::Undefined; }
  bool IsAny() const { return m_kind == ValueKind::Any; }
  bool IsError() const { return m_kind == ValueKind::Error; }
  bool HasErrorText() const { return IsError() && m_payload.pText; }
  bool IsBoolean() const { return m_kind == ValueKind::Boolean; }
  bool IsNumber() const;  // an enumeration or flag parameter is a number and a string at once
  bool IsString() const;
  bool IsDatime() const;
  bool IsVDiagItem() const { return m_kind == ValueKind::DiagItem; }
  bool IsVector() const { return m_kind == ValueKind::Vector; }

  // Each gives 0, or what is empty, for a value of another kind.
  bool asBool() const { return m_kind == ValueKind::Boolean && m_payload.boolean; }
  int32_t asLong() const;
  uint32_t asDatime() const;
  // The text form, for every kind. Numbers are written unsigned: -1 is "4294967295".
  std::string asString() const;
  // The same without a copy where the value holds its text; buffer is used where it does not. Valid
  // until the value or the buffer changes.
  std::string_view asText(std::string& buffer) const;
  // Null for a value of another kind.
  CVDiagItem* asVDIagItem() const;
  // An empty vector, which is never written to, for a value of another kind.
  ValueVector& asVector() const;
  DiagParam* asParameter() const;

  // Appends to a String that nobody shares in place, to a shared one by a copy.
  void AppendText(std::string_view text);

 private:
  DiagParam* ParamOf(bool (DiagParamDef::*test)() const) const;
  void Take(Value& other) noexcept;

  ValueKind m_kind = ValueKind::Undefined;
  union Payload {
    void* pointer;
    bool boolean;
    int32_t number;
    uint32_t datime;
    CSharedText* pText;  // null for an Error without a message
    DiagParam* pParam;
    CVDiagItem* pItem;
    ValueVector* pVector;
  } m_payload{nullptr};
};

// An ordered sequence. Two values of kind Vector that were copied from each other show each other's
// appends.
class ValueVector : public CCounted<ValueVector> {
 public:
  size_t Count() const { return m_values.size(); }
  const Value& operator[](size_t index) const { return m_values[index]; }
  void Append(const Value& value) { m_values.push_back(value); }
  void Append(Value&& value) { m_values.push_back(std::move(value)); }
  void Reserve(size_t count) { m_values.reserve(count); }

 private:
  std::vector<Value> m_values;
};

// The equality of the language: always a yes or no, decided by the left operand's kind.
bool Equals(const Value& a, const Value& b);

}  // namespace kestra
