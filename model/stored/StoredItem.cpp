#include "model/stored/StoredItem.h"

#include <optional>

#include "VLib/src/text/Text.h"
#include "VLib/src/text/VersionNumber.h"

namespace kestra {
namespace {

// A number as dumps have it, with a sign, or without; what 32 bits do not hold is none.
std::optional<uint32_t> ParseNumber(const std::string& text) {
  size_t consumed = 0;
  const uint32_t number = ParseUInt32(text, consumed);
  if (consumed == 0 || consumed != text.size()) return std::nullopt;
  if (number == 0xFFFFFFFF && text != "-1" && text != "4294967295") return std::nullopt;
  return number;
}

// One value into the item; false if its class does not declare it. What is no value of the declared
// type leaves the property unset.
bool LoadValue(CVDiagItem& item, const CfgValue& value) {
  const DiagParamDef* pDef = item.Params.Defs()->Find(value.Key, true);
  if (!pDef) return false;
  if (pDef->HoldsNumber() || pDef->Type == ParamType::Datime) {
    const auto number = ParseNumber(value.Text);
    if (number) item.Params.Set(MakeRef<DiagParam>(pDef, *number), false);
  } else if (pDef->Type != ParamType::Version || IsVersion(value.Text)) {
    item.Params.Set(MakeRef<DiagParam>(pDef, value.Text), false);
  }
  return true;
}

bool LoadValues(CVDiagItem& item, const CfgNode& node) {
  for (const auto& value : node.Values) {
    if (value->Key.starts_with('_')) continue;
    if (!LoadValue(item, *value)) return false;
  }
  return true;
}

bool LoadItem(CVDiagItem& item, const CfgNode& node, const MakeChildItem& makeChild,
              QueryMessage& message, size_t depth) {
  item.Params.Clear();
  item.Children.Clear();
  item.IsInitialized = false;
  if (depth > kDeepestReadTree || !LoadValues(item, node)) return false;
  const Ref<DiagClass> diagClass = item.GetTypeInfo();
  bool isWhole = true;
  item.Children.Reserve(node.Children.size());
  for (size_t i = 0; i < node.Children.size(); ++i) {
    const CfgNode& section = *node.Children[i];
    DiagClass* pChildClass = FindClass(diagClass.get(), section.Name);
    if (!pChildClass || message.IsTerminatedInLoop()) return false;
    Ref<CVDiagItem> child = makeChild(item, Ref<DiagClass>(pChildClass), i);
    if (!LoadItem(*child, section, makeChild, message, depth + 1)) isWhole = false;
    item.Children.Add(std::move(child), false);
  }
  return item.IsInitialized = isWhole && node.GetNumber("_IsInitialized", 1) == 1;
}

}  // namespace

bool LoadFromNode(CVDiagItem& item, const CfgNode& node, const MakeChildItem& makeChild,
                  QueryMessage& message) {
  return LoadItem(item, node, makeChild, message, 0);
}

bool LoadFromNode(CVDiagItem& item, const CfgNode& node, int level, QueryMessage& message) {
  const auto makeStored = [level](CVDiagItem&, Ref<DiagClass> diagClass, size_t) {
    return Ref<CVDiagItem>(MakeRef<StoredItem>(std::move(diagClass), level));
  };
  return LoadFromNode(item, node, makeStored, message);
}

}  // namespace kestra
