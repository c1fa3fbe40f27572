#include "model/cache/ResultCache.h"
#include "model/plugins/Plugin.h"
#include "platform/os/HostEnvironment.h"

namespace kestra {

Ref<CfgNode> MakeCacheKey(const std::string& moduleName, const DiagParams& args) {
  auto key = MakeRef<CfgNode>();
  key->SetText("Module", moduleName);
  CfgNode& section = key->AddSection("Args");
  for (size_t i = 0; i < args.Count(); ++i) {
    const DiagParam& arg = *args.Get(i);
    const bool isText = arg.Def->Type == ParamType::String || arg.Def->Type == ParamType::Version;
    if (isText) {
      section.SetText(arg.Def->Name, arg.GetText());
    } else {
      section.SetNumber(arg.Def->Name, static_cast<int32_t>(arg.DWordValue));
    }
  }
  return key;
}

bool IsSameSection(const CfgNode& a, const CfgNode& b) {
  if (a.Values.size() != b.Values.size() || a.Children.size() != b.Children.size()) return false;
  for (const auto& value : a.Values) {
    const CfgValue* pOther = b.Find(value->Key);
    if (!pOther || pOther->Text != value->Text) return false;
  }
  for (const auto& child : a.Children) {
    const CfgNode* pOther = b.Section(child->Name);
    if (!pOther || !IsSameSection(*child, *pOther)) return false;
  }
  return true;
}

const std::string& OwnCode() {
  static const auto* pOwn = new std::string(DescribeCodeFile(os::LibraryPath()));
  return *pOwn;
}

}  // namespace kestra
