// Declarations of parameters: what a class of items can hold. Shared by all instances and never
// changed once a class is built, so they are read from any thread without a lock.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Ref.h"

namespace kestra {

enum class ParamType : uint32_t {
  None = 0,
  String = 1,
  Dword = 2,
  Enum = 3,
  Bitmask = 4,
  Datime = 5,
  Version = 6,
};

class DiagParamDef : public CCounted<DiagParamDef> {
 public:
  // For Dword, text is the unit; for Enum and Bitmask the option texts joined by "|", where empty
  // pieces stay, since the place of a piece is its number or its bit. For other types it is
  // ignored.
  DiagParamDef(std::string name, ParamType type, const char* text, bool canBeChanged,
               std::string description = {});

  const std::string Name;  // compared without regard to case
  const ParamType Type;
  const std::vector<std::string> Options;
  const bool CanBeChanged;        // an UPDATE may set this parameter
  const std::string Description;  // one line for the user; may be empty

  // Its place in the list of its class, if it is among the first; set by the list.
  static constexpr uint32_t kNoPlace = 31;
  uint32_t Place = kNoPlace;

  // "String", "Dword", "Enum", "Bitmask", "Datime", "Version"; "Unknown" for any other number.
  const char* GetTypeName() const;
  // Empty if index is outside.
  const std::string& GetOptionText(uint32_t index) const;
  // The first option that equals text in any case; kNoOption if there is none.
  uint32_t GetOptionIndex(std::string_view text) const;
  // Dword: the unit, else empty.
  const std::string& GetUnit() const;

  bool HoldsNumber() const {  // Enum and Bitmask are numbers and texts at once
    return Type == ParamType::Dword || Type == ParamType::Enum || Type == ParamType::Bitmask;
  }
  bool HoldsText() const {
    return Type == ParamType::String || Type == ParamType::Enum || Type == ParamType::Bitmask ||
           Type == ParamType::Version;
  }
};

inline constexpr uint32_t kNoOption = 0xFFFFFFFF;

// The type word back to its number; None for any other word. Case is ignored.
ParamType ParamTypeFromName(std::string_view name);
const char* ParamTypeName(ParamType type);

// The declarations of one class, in their order: that of dumps and of SELECT *.
class DiagParamDefs : public CCounted<DiagParamDefs> {
 public:
  // Only while the class is being built.
  void Add(std::string name, ParamType type, const char* text, bool canBeChanged,
           std::string description = {});

  // The first match; null if there is none.
  const DiagParamDef* Find(std::string_view name, bool ignoreCase) const;
  // Null beyond the end.
  const DiagParamDef* Get(size_t index) const;
  size_t Count() const { return m_defs.size(); }

 private:
  std::vector<Ref<DiagParamDef>> m_defs;
};

}  // namespace kestra
