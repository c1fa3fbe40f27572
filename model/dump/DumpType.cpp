#include <fmt/format.h>

#include "model/dump/Dump.h"

namespace kestra {
namespace {

bool HasChangeableProperty(const DiagClass& diagClass) {
  for (size_t i = 0; i < diagClass.Params->Count(); ++i) {
    if (diagClass.Params->Get(i)->CanBeChanged) return true;
  }
  return false;
}

void DumpOptions(const DiagParamDef& def, std::string& out) {
  for (size_t i = 0; i < def.Options.size(); ++i) {
    out += fmt::format("<O i=\"{}\">{}</O>\r\n", i, def.Options[i]);
  }
}

void DumpArgs(const DiagParams& args, const char* pTag, std::string& out) {
  for (size_t i = 0; i < args.Count(); ++i) {
    const DiagParam& arg = *args.Get(i);
    const std::string text =
        arg.Def->Type == ParamType::Dword ? fmt::to_string(arg.DWordValue) : arg.GetText();
    out += fmt::format("<{} n=\"{}\" t=\"{}\" d=\"{}\">\r\n", pTag, arg.Def->Name,
                       arg.Def->GetTypeName(), text);
    DumpOptions(*arg.Def, out);
    out += fmt::format("</{}>\r\n", pTag);
  }
}

void DumpActions(const DiagClass& diagClass, std::string& out) {
  for (size_t i = 0; diagClass.Actions && i < diagClass.Actions->Count(); ++i) {
    const DiagAction& action = *diagClass.Actions->Get(i);
    out += fmt::format("<C n=\"{}\">\r\n", action.Name);
    DumpArgs(*action.Args, "CA", out);
    out += "</C>";
  }
}

void DumpProperties(const DiagClass& diagClass, std::string& out) {
  for (size_t i = 0; i < diagClass.Params->Count(); ++i) {
    const DiagParamDef& def = *diagClass.Params->Get(i);
    out += fmt::format("<P n=\"{}\" t=\"{}\"{}>\r\n", def.Name, def.GetTypeName(),
                       def.CanBeChanged ? " canbechanged=\"yes\"" : "");
    DumpOptions(def, out);
    out += "</P>\r\n";
  }
}

}  // namespace

void DumpType(const DiagClass& diagClass, std::string& out) {
  out += fmt::format("<I n=\"{}\"", diagClass.Name);
  if (diagClass.CanBeAdded) out += " canbeadded=\"yes\"";
  if (HasChangeableProperty(diagClass)) out += " canbechanged=\"yes\"";
  if (diagClass.CanBeDeleted) out += " canbedeleted=\"yes\"";
  out += ">\r\n";
  DumpActions(diagClass, out);
  DumpArgs(*diagClass.Args, "A", out);
  DumpProperties(diagClass, out);
  for (const Ref<DiagClass>& child : diagClass.ChildClasses()) {
    if (child) DumpType(*child, out);
  }
  out += "</I>\r\n";
}

}  // namespace kestra
