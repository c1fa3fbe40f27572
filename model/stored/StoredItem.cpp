#include "model/stored/StoredItem.h"

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

// One value into the item; false if its class does not declare it.
bool LoadValue(CVDiagItem& item, const CfgValue& value) {
  const DiagParamDef* pDef = item.Params.Defs()->Find(value.Key, true);
  if (!pDef) return false;
  const bool isNumber = pDef->HoldsNumber() || pDef->Type == ParamType::Datime;
  size_t consumed = 0;  // a number may be written with a sign, as dumps have it, or without
  item.Params.Set(isNumber ? MakeRef<DiagParam>(pDef, ParseUInt32(value.Text, consumed))
                           : MakeRef<DiagParam>(pDef, value.Text),
                  false);
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
  return item.IsInitialized = isWhole;
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
