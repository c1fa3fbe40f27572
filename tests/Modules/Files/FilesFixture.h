// The module Files over a machine, for the tests beside this file.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Modules/Files/FileClasses.h"
#include "Modules/Files/FilesModule.h"
#include "tests/Modules/Show.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {

inline Ref<CFilesModule> MakeFiles(const Ref<CMachine>& machine, const std::string& args) {
  auto module = MakeRef<CFilesModule>(kFilesModule.Get(), machine);
  return module->SetArgs(args) ? module : nullptr;
}

inline bool Fill(CVDiagItem& item, QueryMessage& message) {
  return item.Init(true, false, message);
}

// What stands below an item: a directory as "Name(...)", a file as its name, with its text behind
// "=", a line as "number:text".
inline std::string ShowTree(const CVDiagItem& item) {
  std::string out;
  for (size_t i = 0; i < item.Children.Count(); ++i) {
    CVDiagItem& child = *item.Children.Get(i);
    if (i > 0) out += ' ';
    if (child.GetName() == "FileLine") {
      out += std::to_string(child.Params.Find("Number", false)->DWordValue) + ":" +
             child.Params.Find("Text", false)->StringValue;
      continue;
    }
    const bool isFile = child.GetName() == "File";
    const DiagParam* pName = child.Params.Find(isFile ? "FileName" : "Name", false);
    out += pName ? pName->StringValue : "?";
    if (const DiagParam* pText = child.Params.Find("FileText", false))
      out += "=" + pText->StringValue;
    if (!isFile || child.Children.Count() > 0) out += "(" + ShowTree(child) + ")";
  }
  return out;
}

// The parameters of a statement: texts, and Attributes as the names of its options.
inline DiagParams Given(const ClassDecl& decl,
                        const std::vector<std::pair<std::string, std::string>>& values) {
  DiagParams params{Ref<const DiagParamDefs>(decl.Get()->Params)};
  for (const auto& [name, text] : values) {
    auto param = MakeRef<DiagParam>(decl.Get()->Params->Find(name, false));
    param->SetText(text);
    params.Set(std::move(param), false);
  }
  return params;
}

}  // namespace kestra::test
