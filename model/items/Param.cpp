#include "model/items/Param.h"

#include "VLib/src/text/Text.h"
#include "VLib/src/time/Datime.h"
#include "platform/os/Clock.h"

namespace kestra {
namespace {

std::string BitmaskText(const DiagParamDef& def, uint32_t bits) {
  std::string text;
  for (uint32_t i = 0; i < 32 && bits >> i != 0; ++i) {
    if ((bits >> i & 1) == 0 || i >= def.Options.size()) continue;
    text += def.Options[i];
    text += '|';
  }
  if (!text.empty()) text.pop_back();
  return text;
}

// Bits of the option names in text; nothing if one of them is no option.
bool BitsFromText(const DiagParamDef& def, std::string_view text, uint32_t& bits) {
  bits = 0;
  for (const std::string& piece : Split(text, '|')) {
    const uint32_t index = def.GetOptionIndex(piece);
    if (index == kNoOption) return false;
    bits |= 1u << index % 32;
  }
  return true;
}

bool IsNumberInside(const DiagParamDef& def, uint32_t number) {
  if (def.Type == ParamType::Enum) return number < def.Options.size();
  return def.Options.size() >= 32 || number < 1u << def.Options.size();
}

}  // namespace

DiagParam::DiagParam(const DiagParamDef* pDef, FileTime time, bool isLocal) : Def(pDef) {
  if (isLocal && !os::LocalFileTimeToFileTime(time, time)) return;
  DWordValue = DatimeFromFileTime(time).value_or(0);
}

DiagParam::DiagParam(const DiagParamDef* pDef, const SystemTime& time, bool isLocal)
    : DWordValue(DatimeFromSystemTime(time, isLocal).value_or(0)), Def(pDef) {}

std::string DiagParam::GetText() const {
  if (!Def) return StringValue;
  switch (Def->Type) {
    case ParamType::Enum:
      return Def->GetOptionText(DWordValue);
    case ParamType::Bitmask:
      return BitmaskText(*Def, DWordValue);
    case ParamType::Datime:
      return DatimeText(DWordValue);
    default:
      return StringValue;
  }
}

bool DiagParam::SetText(std::string_view text) {
  if (!Def) return false;
  uint32_t number = 0;
  switch (Def->Type) {
    case ParamType::String:
    case ParamType::Version:
      StringValue = text;
      return true;
    case ParamType::Enum:
      number = Def->GetOptionIndex(text);
      if (number == kNoOption) return false;
      break;
    case ParamType::Bitmask:
      if (!BitsFromText(*Def, text, number)) return false;
      break;
    default:
      return false;
  }
  DWordValue = number;
  return true;
}

bool DiagParam::SetNumber(uint32_t number) {
  if (!Def || !Def->HoldsNumber()) return false;
  if (Def->Type != ParamType::Dword && !IsNumberInside(*Def, number)) return false;
  DWordValue = number;
  return true;
}

bool DiagParam::IsValid() const {
  if (!Def || Def->Type == ParamType::None || Def->Type > ParamType::Version) return false;
  if (Def->Type != ParamType::Enum && Def->Type != ParamType::Bitmask) return true;
  return IsNumberInside(*Def, DWordValue);
}

bool DiagParam::Differs(const DiagParam& other) const {
  return Def.get() != other.Def.get() || DWordValue != other.DWordValue ||
         StringValue != other.StringValue;
}

}  // namespace kestra
