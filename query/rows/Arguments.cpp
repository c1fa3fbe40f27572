#include "query/rows/Arguments.h"

#include "VLib/src/errors/DiagMessage.h"
#include "VLib/src/text/Text.h"

#include <optional>

namespace kestra {
namespace {

bool FailWith(Value& out, uint32_t id, std::string_view name) {
  out.SetError(DiagMessage(id, {std::string(name)}).GetText());
  return false;
}

// The bits of option names joined by "|".
std::optional<uint32_t> BitsOf(const DiagParamDef& def, std::string_view text) {
  uint32_t bits = 0;
  for (const std::string& piece : Split(text, '|')) {
    const uint32_t index = def.GetOptionIndex(piece);
    if (index == kNoOption) return std::nullopt;
    bits |= 1u << index % 32;
  }
  return bits;
}

std::optional<uint32_t> NumberFor(const DiagParamDef& def, const Value& value) {
  if (value.IsNumber()) return static_cast<uint32_t>(value.asLong());
  if (def.Type == ParamType::Dword || !value.IsString()) return std::nullopt;
  const std::string text = value.asString();
  if (def.Type == ParamType::Bitmask) return BitsOf(def, text);
  const uint32_t index = def.GetOptionIndex(text);
  return index == kNoOption ? std::nullopt : std::optional(index);
}

}  // namespace

bool ApplyArgument(Value& out, std::string_view name, const Value& value, DiagParams& params) {
  if (params.Find(name, true)) return FailWith(out, 10000, name);
  const DiagParamDef* pDef = params.Defs() ? params.Defs()->Find(name, true) : nullptr;
  if (!pDef) return FailWith(out, 10001, name);
  if (pDef->Type == ParamType::String || pDef->Type == ParamType::Version) {
    if (!value.IsString()) return FailWith(out, 10002, name);
    params.Set(MakeRef<DiagParam>(pDef, value.asString()), false);
    return true;
  }
  const auto number = pDef->HoldsNumber() ? NumberFor(*pDef, value) : std::nullopt;
  if (!number) return FailWith(out, 10002, name);
  params.Set(MakeRef<DiagParam>(pDef, *number), false);
  return true;
}

bool ApplyArguments(Value& out, const ValueVector& pairs, DiagParams& params) {
  for (size_t i = 0; i < pairs.Count(); ++i) {
    const ValueVector& pair = pairs[i].asVector();
    if (pair.Count() != 2) {
      out.SetError();
      return false;
    }
    if (!ApplyArgument(out, pair[0].asString(), pair[1], params)) return false;
  }
  return true;
}

}  // namespace kestra
