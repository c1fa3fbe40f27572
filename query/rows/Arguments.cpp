#include "query/rows/Arguments.h"

#include <optional>

#include "VLib/src/errors/DiagMessage.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

bool FailWith(Value& out, uint32_t id, std::string_view name) {
  out.SetError(DiagMessage(id, {std::string(name)}).GetText());
  return false;
}

std::optional<uint32_t> NumberFor(const DiagParamDef& def, const Value& value) {
  if (value.IsNumber()) return static_cast<uint32_t>(value.asLong());
  if (def.Type == ParamType::Dword || !value.IsString()) return std::nullopt;
  DiagParam parsed(&def);
  return parsed.SetText(value.asString()) ? std::optional(parsed.DWordValue) : std::nullopt;
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
