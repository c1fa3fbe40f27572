// The arguments of a module: reading, setting from a text, comparing, and writing them as a text.
#include <fmt/format.h>

#include "VLib/src/text/Text.h"
#include "model/classes/Module.h"

namespace kestra {
namespace {

// What stands behind the "=" of one piece, into the value record.
bool SetArgValue(DiagParam& param, std::string_view value) {
  if (value.empty()) return false;
  if (value.front() != '\'') {
    size_t consumed = 0;
    const uint32_t number = ParseUInt32(value, consumed);
    if (consumed != value.size()) return false;
    if (number == 0xFFFFFFFF && value != "4294967295") return false;
    return param.SetNumber(number);
  }
  if (value.size() < 2 || value.back() != '\'') return false;
  std::string text;
  value = value.substr(1, value.size() - 2);
  for (size_t i = 0; i < value.size(); ++i) {
    text += value[i];
    if (value.substr(i, 2) == "''") ++i;
  }
  return param.SetText(text);
}

// The record of that name, made from its declaration if the list does not have it yet.
DiagParam* FindOrDeclare(DiagParams& args, std::string_view name) {
  if (DiagParam* pParam = args.Find(name, true)) return pParam;
  const DiagParamDef* pDef = args.Defs() ? args.Defs()->Find(name, true) : nullptr;
  if (!pDef) return nullptr;
  auto fresh = MakeRef<DiagParam>(pDef);
  args.Set(fresh, false);
  return fresh.get();
}

}  // namespace

bool SetArgsFromText(DiagParams& args, std::string_view text) {
  text = TrimBlanks(text);
  if (text.empty()) return true;
  for (const std::string& whole : SplitQuoted(text, ',', '\'')) {
    const std::string_view piece = TrimBlanks(whole);
    const size_t equals = piece.find('=');
    if (equals == std::string_view::npos) return false;
    DiagParam* pParam = FindOrDeclare(args, piece.substr(0, equals));
    if (!pParam || !SetArgValue(*pParam, piece.substr(equals + 1))) return false;
  }
  return true;
}

bool DiagModule::GetArg(std::string_view name, uint32_t& value) {
  const DiagParam* pParam = Args ? Args->Find(name, true) : nullptr;
  if (pParam) value = pParam->DWordValue;
  return pParam != nullptr;
}

bool DiagModule::GetArg(std::string_view name, std::string& value) {
  const DiagParam* pParam = Args ? Args->Find(name, true) : nullptr;
  if (pParam) value = pParam->GetText();
  return pParam != nullptr;
}

bool DiagModule::SetArgs(std::string_view text) {
  return HasArgs() && SetArgsFromText(*Args, text);
}

bool DiagModule::CopyArgs(const DiagParams& params) {
  for (size_t i = 0; i < params.Count(); ++i) {
    const DiagParam& source = *params.Get(i);
    DiagParam* pOwn = Args && source.Def ? Args->Find(source.Def->Name, true) : nullptr;
    if (!pOwn) return false;
    pOwn->DWordValue = source.DWordValue;
    pOwn->StringValue = source.StringValue;
  }
  return true;
}

bool DiagModule::SameArgs(const DiagParams& otherParams, bool useDefaults) {
  if (!HasArgs() || !(Args->Defs() == otherParams.Defs())) return false;
  const Ref<DiagParams> defaults = GetDefaultArgs();
  for (size_t i = 0; i < defaults->Count(); ++i) {
    const DiagParam& fallback = *defaults->Get(i);
    const DiagParam* pOther = otherParams.Find(*fallback.Def);
    if (!pOther && !useDefaults) continue;
    if (!pOther) pOther = &fallback;
    const DiagParam* pOwn = Args->Find(*fallback.Def);
    if (!pOwn || pOwn->Differs(*pOther)) return false;
  }
  return true;
}

std::string DiagModule::FormatArgs(std::string_view prefix, std::string_view suffix) {
  std::string text;
  if (!HasArgs()) return text;
  const Ref<DiagParams> defaults = GetDefaultArgs();
  for (size_t i = 0; i < defaults->Count(); ++i) {
    const DiagParam& fallback = *defaults->Get(i);
    const DiagParam* pOwn = Args->Find(*fallback.Def);
    if (!pOwn || !pOwn->Differs(fallback)) continue;
    if (fallback.Def->HoldsNumber()) {
      text += fmt::format("{}{}={}{}", prefix, fallback.Def->Name, pOwn->DWordValue, suffix);
    } else {
      text += fmt::format("{}{}='{}'{}", prefix, fallback.Def->Name, pOwn->GetText(), suffix);
    }
  }
  return std::string(TrimRight(text, suffix));
}

}  // namespace kestra
