// Value: the one runtime type of the query language. Every action, predicate and statement writes
// its result into a caller-owned Value, and a query as a whole ends as one. Failure travels as a
// Value too: an Error is an ordinary result, and nothing throws.
//
// Threads: a Value is written by one thread. The reference counts are atomic, so a finished result
// may be handed to another thread.
#pragma once

#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <utility>
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
  Value(const Value& other) : m_kind(other.m_kind), m_payload(other.m_payload) {
    if (IsCounted()) AddRef();
  }
  Value(Value&& other) noexcept { Take(other); }
  ~Value() { Clear(); }
  Value& operator=(const Value& other);
  Value& operator=(Value&& other) noexcept;

  ValueKind Kind() const { return m_kind; }

  // Every setter first clears.
  void Clear() {
    if (IsCounted()) return Release();
    m_kind = ValueKind::Undefined;
    m_payload = Payload{nullptr};
  }
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
  void Take(Value& other) noexcept {
    m_kind = std::exchange(other.m_kind, ValueKind::Undefined);
    m_payload = std::exchange(other.m_payload, Payload{nullptr});
  }
  // Whether the payload is a counted reference.
  bool IsCounted() const {
    constexpr uint32_t kCounted = 1u << 0 | 1u << 4 | 1u << 6 | 1u << 7 | 1u << 8;
    return (kCounted >> static_cast<uint32_t>(m_kind) & 1) != 0 && m_payload.pointer;
  }
  void AddRef() const;
  void Release();

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
// appends. One that is made with room for a few has it in its own memory: a result of a million
// rows is a million of those.
class ValueVector : public CCounted<ValueVector> {
 public:
  ValueVector() = default;
  ~ValueVector();
  ValueVector(const ValueVector&) = delete;
  ValueVector& operator=(const ValueVector&) = delete;
  static Ref<ValueVector> WithRoomFor(uint32_t count);

  size_t Count() const { return m_count; }
  const Value& operator[](size_t index) const { return m_pValues[index]; }
  void Append(const Value& value) { Append(Value(value)); }
  void Append(Value&& value) {
    if (m_count == m_room) Grow(size_t{m_count} + 1);
    new (m_pValues + m_count) Value(std::move(value));
    ++m_count;
  }
  // Throws std::bad_alloc, also for more than there can be.
  void Reserve(size_t count) {
    if (count > m_room) MoveTo(count);
  }

  static void* operator new(size_t bytes) { return ::operator new(bytes); }
  static void* operator new(size_t bytes, size_t room) { return ::operator new(bytes + room); }
  static void operator delete(void* pMemory) { ::operator delete(pMemory); }
  static void operator delete(void* pMemory, size_t) { ::operator delete(pMemory); }

 private:
  Value* OwnRoom() { return reinterpret_cast<Value*>(this + 1); }
  void Grow(size_t count);
  void MoveTo(size_t room);

  uint32_t m_count = 0;
  uint32_t m_room = 0;
  bool m_hasOwnRoom = false;  // behind the object
  Value* m_pValues = nullptr;
};

// The equality of the language: always a yes or no, decided by the left operand's kind.
bool Equals(const Value& a, const Value& b);

}  // namespace kestra
