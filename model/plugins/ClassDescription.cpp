#include "model/plugins/ClassDescription.h"

#include <fmt/format.h>

#include <optional>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

// A value that cannot come out of a text: what is read is trimmed.
constexpr std::string_view kMissing = " ";

// The options of an Enum or Bitmask, or the unit of a Dword. False if one of them is missing.
bool ReadOptions(const CfgNode& node, std::string& options) {
  const CfgNode* pOptions = node.Section("_Ops");
  if (!pOptions) return true;
  for (size_t i = 0; i < pOptions->Values.size(); ++i) {
    const CfgValue* pOption = pOptions->Find(fmt::to_string(i));
    if (!pOption || pOption->Text == kMissing) return false;
    if (i > 0) options += '|';
    options += pOption->Text;
  }
  return true;
}

// One property or argument into defs.
bool ReadDeclaration(const CfgNode& node, DiagParamDefs& defs) {
  const ParamType type = ParamTypeFromName(node.GetText("Type"));
  std::string options;
  if (type == ParamType::None || !ReadOptions(node, options)) return false;
  defs.Add(node.Name, type, options.empty() ? nullptr : options.c_str(),
           node.GetNumber("_CanBeChanged") == 1);
  return true;
}

Ref<DiagParamDefs> ReadProperties(const CfgNode& node) {
  auto defs = MakeRef<DiagParamDefs>();
  const CfgNode* pProperties = node.Section("_Params");
  if (!pProperties) return EmptyParamDefs();
  for (const auto& property : pProperties->Children) {
    if (!ReadDeclaration(*property, *defs)) return nullptr;
  }
  return defs;
}

bool ReadDefault(const CfgNode& node, const DiagParamDef& def, DiagParams& values) {
  if (def.HoldsNumber()) {
    constexpr int32_t kNoDefault = -2;
    const int32_t number = node.GetNumber("Default", kNoDefault);
    if (number == kNoDefault) return false;
    values.Set(MakeRef<DiagParam>(&def, static_cast<uint32_t>(number)), false);
    return true;
  }
  std::string text = node.GetText("Default", kMissing);
  if (text == kMissing) return false;
  values.Set(MakeRef<DiagParam>(&def, std::move(text)), false);
  return true;
}

// The arguments of a module or an action, with their defaults.
Ref<DiagParams> ReadArguments(const CfgNode& node) {
  const CfgNode* pArguments = node.Section("_Args");
  if (!pArguments) return EmptyParams();
  auto defs = MakeRef<DiagParamDefs>();
  for (const auto& argument : pArguments->Children) {
    if (!ReadDeclaration(*argument, *defs)) return nullptr;
  }
  auto values = MakeRef<DiagParams>(Ref<const DiagParamDefs>(defs));
  for (size_t i = 0; i < defs->Count(); ++i) {
    if (!ReadDefault(*pArguments->Children[i], *defs->Get(i), *values)) return nullptr;
  }
  return values;
}

// Nothing when one of them does not fit; a null list when there are none.
std::optional<Ref<DiagActions>> ReadActions(const CfgNode& node) {
  Ref<DiagActions> actions;
  const CfgNode* pActions = node.Section("_Actions");
  if (!pActions) return actions;
  for (const auto& action : pActions->Children) {
    if (action->Name.starts_with('_')) continue;
    Ref<DiagParams> args = ReadArguments(*action);
    if (!args) return std::nullopt;
    if (!actions) actions = MakeRef<DiagActions>();
    actions->Add(MakeRef<DiagAction>(action->Name, std::move(args)), false);
  }
  return actions;
}

Ref<DiagClass> ReadClass(const CfgNode& node, size_t depth) {
  if (depth > kDeepestReadTree) return nullptr;
  Ref<DiagParamDefs> properties = ReadProperties(node);
  Ref<DiagParams> args = ReadArguments(node);
  std::optional<Ref<DiagActions>> actions = ReadActions(node);
  if (!properties || !args || !actions) return nullptr;
  auto diagClass = MakeRef<DiagClass>(
      node.Name, std::move(properties), node.GetNumber("_CanBeAdded") == 1,
      node.GetNumber("_CanBeDeleted") == 1, std::move(*actions), std::move(args));
  for (const auto& section : node.Children) {
    const std::string& name = section->Name;
    if (name == "_Params" || name == "_Args" || name == "_Actions") continue;
    Ref<DiagClass> child = ReadClass(*section, depth + 1);
    if (!child) return nullptr;
    diagClass->AddChildClass(std::move(child));
  }
  return diagClass;
}

}  // namespace

Ref<DiagClass> ClassFromDescription(const CfgNode& node) {
  return ReadClass(node, 0);
}

const CfgNode& ModuleSection(CfgNode& text, std::string_view moduleName) {
  if (text.Values.empty() && text.Children.size() == 1 &&
      EqualsNoCase(text.Children.front()->Name, moduleName)) {
    return *text.Children.front();
  }
  text.Name = moduleName;
  return text;
}

}  // namespace kestra
