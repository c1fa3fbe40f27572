// The module IniFile over a machine, for the tests beside this file.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Modules/IniFile/IniFileClasses.h"
#include "Modules/IniFile/IniFileModule.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {

inline Ref<CIniFileModule> MakeIni(const Ref<CMachine>& machine, const std::string& args) {
  auto module = MakeRef<CIniFileModule>(kIniFileModule.Get(), machine);
  return module->SetArgs(args) ? module : nullptr;
}

// "key=text" or "key=text#number" for each key, then "[name ...]" for each section.
inline std::string ShowIni(const CVDiagItem& item) {
  std::string out;
  for (size_t i = 0; i < item.Children.Count(); ++i) {
    CVDiagItem& child = *item.Children.Get(i);
    if (i > 0) out += ' ';
    const std::string name = child.Params.Find("Name", false)->StringValue;
    if (child.GetName() == "IniSection") {
      const std::string content = ShowIni(child);
      out += '[' + name + (content.empty() ? "" : " ") + content + ']';
      continue;
    }
    out += name + '=' + child.Params.Find("StringValue", false)->StringValue;
    if (const DiagParam* pNumber = child.Params.Find("DWORDValue", false))
      out += '#' + std::to_string(pNumber->DWordValue);
  }
  return out;
}

// The outcome of an operation in one line: "ok", or message, inserts and system error.
inline std::string ShowOutcome(bool isDone, const QueryMessage& message) {
  if (isDone) return "ok";
  std::string out = message.MessageId == 0 ? "" : std::to_string(message.MessageId);
  for (const std::string& insert : message.Args) out += ' ' + insert;
  if (message.SystemError != 0) out += " error " + std::to_string(message.SystemError);
  return out;
}

using Texts = std::vector<std::pair<std::string, std::string>>;

// Parameters of a statement; a text for DWORDValue is a number.
inline DiagParams GivenTo(const ClassDecl& decl, const Texts& values) {
  DiagParams params{Ref<const DiagParamDefs>(decl.Get()->Params)};
  for (const auto& [name, text] : values) {
    auto param = MakeRef<DiagParam>(decl.Get()->Params->Find(name, false));
    if (name == "DWORDValue") {
      param->SetNumber(static_cast<uint32_t>(std::stoul(text)));
    } else {
      param->SetText(text);
    }
    params.Set(std::move(param), false);
  }
  return params;
}

}  // namespace kestra::test
