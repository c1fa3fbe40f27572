#include "model/cache/ResultCache.h"
#include "platform/os/CodeFile.h"
#include "platform/os/HostEnvironment.h"

namespace kestra {
namespace {

std::string FileName(const std::string& path) {
  return path.substr(path.find_last_of(os::PathSeparator()) + 1);
}

std::string DescribeFile(const std::string& path) {
  std::string version;
  if (os::ReadLibraryVersion(path, version) != kErrorSuccess) return {};
  return FileName(path) + " " + version;
}

}  // namespace

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

std::string DescribeCode(const std::string& codeFile) {
  if (!codeFile.empty()) return DescribeFile(codeFile);
  // What runs is what was loaded, also when a newer file lies in its place by now.
  static const auto* pOwn = new std::string(DescribeFile(os::LibraryPath()));
  return *pOwn;
}

}  // namespace kestra
