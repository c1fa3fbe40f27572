// Parameters: the values of one item.
#pragma once

#include <atomic>
#include <bit>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/items/ParamDef.h"
#include "platform/base/FileTime.h"
#include "platform/base/Once.h"

namespace kestra {

class QueryMessage;

// One value. Written by its item's module while the item is being filled or changed; read without
// a lock afterwards.
class DiagParam : public CCounted<DiagParam> {
 public:
  DiagParam() = default;
  explicit DiagParam(const DiagParamDef* pDef) : Def(pDef) {}
  DiagParam(const DiagParamDef* pDef, uint32_t number) : DWordValue(number), Def(pDef) {}
  DiagParam(const DiagParamDef* pDef, std::string text) : Def(pDef), StringValue(std::move(text)) {}
  // The number stays 0 if the time does not convert.
  DiagParam(const DiagParamDef* pDef, FileTime time, bool isLocal);
  DiagParam(const DiagParamDef* pDef, const SystemTime& time, bool isLocal);

  uint32_t DWordValue = 0;
  Ref<const DiagParamDef> Def;  // null only in a fresh record
  std::string StringValue;

  // String and Version: the text. Dword: StringValue, that is normally empty. Enum: the option, or
  // the empty text if the number is outside. Bitmask: the options of all set bits, joined by "|".
  // Datime: local time.
  std::string GetText() const;
  // False, with the value as it was, for a text that the type does not take; Dword and Datime take
  // none.
  bool SetText(std::string_view text);
  bool SetNumber(uint32_t number);
  bool IsValid() const;
  bool Differs(const DiagParam& other) const;
};

class DiagParams;

// Values that are dear to read, such as what lies in a file's content. Whoever reads the parameters
// sees no difference but the time.
class CLateValues {
 public:
  virtual ~CLateValues() = default;
  // Whether one of that declaration may be among them. From any thread.
  virtual bool MayHold(const DiagParamDef& def) const = 0;
  // Sets them. Called once at most, on the thread that looks first; another one that looks
  // meanwhile waits for it.
  virtual void ReadLate(DiagParams& values) = 0;
};

// Values that their item knows without having a record of each: of the many thousands of items of a
// listing few are ever looked at, and of those few values. A record is made when somebody looks.
class CKnownValues {
 public:
  // How many there may be at most.
  static constexpr size_t kMost = 8;

  virtual ~CKnownValues() = default;
  // What they are, in the order in which they are shown. Always the same for one object. From any
  // thread, as the others.
  virtual std::span<const DiagParamDef* const> KnownDefs() const = 0;
  // Whether the one at index is set.
  virtual bool IsKnown(size_t index) const = 0;
  // The value at index, which is set. May be called more than once.
  virtual Ref<DiagParam> MakeKnown(size_t index) const = 0;
};

// The values of one item, in the order of setting; known ones stand before all others, and late
// ones behind them.
class DiagParams : public CCounted<DiagParams> {
 public:
  DiagParams() = default;
  explicit DiagParams(Ref<const DiagParamDefs> defs) : m_poDefs(std::move(defs)) {}
  ~DiagParams() { ForgetKnown(); }
  DiagParams(const DiagParams&) = delete;
  DiagParams& operator=(const DiagParams&) = delete;
  // With a record of each value: known and late ones belong to the item that holds the list.
  DiagParams(DiagParams&& other);

  const Ref<const DiagParamDefs>& Defs() const { return m_poDefs; }
  size_t Count() const {
    return KnownCount() + m_values.size() + (m_pLate ? LateValues().size() : 0);
  }
  // Null beyond the end.
  DiagParam* Get(size_t index) const;
  // The first of that name; null if there is none.
  DiagParam* Find(std::string_view name, bool ignoreCase) const;
  DiagParam* Find(const DiagParamDef& def) const {
    if (m_pKnown || m_pLate || m_places >> DiagParamDef::kNoPlace != 0 ||
        def.Place >= DiagParamDef::kNoPlace)
      return Search(def);
    const uint32_t place = 1u << def.Place, before = m_places & (place - 1);
    if ((m_places & place) == 0) return nullptr;
    const size_t index =
        before == place - 1 ? def.Place : static_cast<size_t>(std::popcount(before));
    DiagParam* pParam = m_values[index].get();
    return pParam->Def.get() == &def ? pParam : Search(def);
  }
  // With replace, a parameter of the same name gives up its place; otherwise it is appended. A null
  // reference adds nothing.
  void Set(Ref<DiagParam> param, bool replace);
  void Clear();
  // Leaves to source, which must live as long as these parameters, what nobody may ever look at. To
  // be called at the end of a filling.
  void Defer(CLateValues& source);
  // The same for what source knows. To be called at the beginning of a filling.
  void SetKnown(const CKnownValues& source);
  void Reserve(size_t count) { m_values.reserve(count); }
  void Bind(Ref<const DiagParamDefs> defs);
  // At the first value that is outside its declaration: raises 11002 and answers false.
  bool CheckValues(QueryMessage& message) const;

  // For filling an item. Each looks the declaration up by name, in any case, and appends a new
  // record; null when nothing was added. A name that is not declared adds nothing.
  DiagParam* SetText(std::string_view name, std::string text);
  // An empty text adds nothing: a property without content stays absent and reads as NULL.
  DiagParam* SetTextIfAny(std::string_view name, std::string text);
  // A version property is set only with a text that parses as a version.
  DiagParam* SetVersionIfAny(std::string_view name, std::string_view text);
  DiagParam* SetNumber(std::string_view name, uint32_t number);
  // A time that does not convert adds nothing.
  DiagParam* SetTime(std::string_view name, const SystemTime& time, bool isLocal);
  DiagParam* SetTime(std::string_view name, FileTime time);

 private:
  using Values = std::vector<Ref<DiagParam>>;
  struct Late {
    COnce reading;
    CLateValues* pSource;
    Values values;  // written by reading
  };
  Values& LateValues() const;  // read now, if they were not before; only if there are any
  // Has a record of each value in m_values.
  void TakeAll();
  // The records that were made of known values. A thread that makes one that another has made
  // meanwhile drops its own.
  struct Made {
    std::atomic<DiagParam*> params[CKnownValues::kMost]{};
  };
  DiagParam* Search(const DiagParamDef& def) const;
  // All that is appended goes through here.
  DiagParam* Append(Ref<DiagParam> param);
  void CountPlaces();
  size_t KnownCount() const;
  DiagParam* KnownAt(size_t index) const;
  // Null if it is not among them.
  DiagParam* FindKnown(const DiagParamDef& def) const;
  void ForgetKnown();

  // What each look reads stands together: the less of the processor's cache it takes.
  // Whose declarations have a value among m_values, by their place. The top bit says that they do
  // not tell where it stands: m_values is in another order, has one twice, or one without a place.
  uint32_t m_places = 0;
  Ref<const DiagParamDefs> m_poDefs;
  const CKnownValues* m_pKnown = nullptr;  // null for most items
  std::unique_ptr<Late> m_pLate;           // null for nearly every item
  Values m_values;
  mutable std::atomic<Made*> m_pMade{nullptr};  // null until somebody looks; owned
};

}  // namespace kestra
