#include "cli/shell/commands/ClassTree.h"

#include <algorithm>

#include "cli/NearNames.h"
#include "cli/Terminal.h"

namespace kestra::cli {
namespace {

// The built-in source that bears another name than the module whose classes it shows.
constexpr const char* kIniSource = "inifiles";
constexpr const char* kIniModule = "inifile";

// All names below a class, each once.
void CollectNames(const CClassHandle& diagClass, std::vector<std::string>& names) {
  for (const CClassHandle& child : ChildrenOf(diagClass)) {
    const std::string name = NameOf(child);
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    CollectNames(child, names);
  }
}

CClassHandle FindBelow(const CClassHandle& diagClass, const std::string& folded) {
  for (CClassHandle& child : ChildrenOf(diagClass)) {
    if (FoldCase(NameOf(child)) == folded) return std::move(child);
    if (auto found = FindBelow(child, folded)) return found;
  }
  return nullptr;
}

}  // namespace

std::string NameOf(const CClassHandle& diagClass) {
  return Ask<const char*>(kestra_class_name, diagClass.get());
}

std::string DescriptionOf(const CClassHandle& diagClass) {
  return Ask<const char*>(kestra_class_description, diagClass.get());
}

std::vector<CClassHandle> ChildrenOf(const CClassHandle& diagClass) {
  std::vector<CClassHandle> children;
  const int32_t count = Ask<int32_t>(kestra_class_child_count, diagClass.get());
  for (int32_t i = 0; i < count; ++i) {
    children.push_back(Take<CClassHandle>(kestra_class_child, diagClass.get(), i));
  }
  return children;
}

std::vector<CClassHandle> ModulesOf(kestra_session* session) {
  return ChildrenOf(Take<CClassHandle>(kestra_session_root_class, session));
}

CClassHandle FindModule(kestra_session* session, const std::string& name) {
  std::string folded = FoldCase(name);
  if (folded == kIniSource) folded = kIniModule;
  std::vector<std::string> names;
  for (CClassHandle& module : ModulesOf(session)) {
    names.push_back(NameOf(module));
    if (FoldCase(names.back()) == folded) return std::move(module);
  }
  const std::string near = NearNamesSentence(name, names);
  throw CUnknownName("there is no module \"" + name + "\"" +
                     (near.empty() ? "; .modules names them" : near));
}

CClassHandle FindClass(const CClassHandle& module, const std::string& name) {
  if (auto found = FindBelow(module, FoldCase(name))) return found;
  std::vector<std::string> names;
  CollectNames(module, names);
  std::string rest = NearNamesSentence(name, names);
  if (rest.empty()) {
    for (const std::string& each : names) rest += (rest.empty() ? "; it has " : ", ") + each;
  }
  throw CUnknownName(NameOf(module) + " has no class \"" + name + "\"" + rest);
}

std::string StateOf(kestra_session* session, const std::string& module) {
  int32_t state = KESTRA_MODULE_READY;
  Check(kestra_session_module_state(session, module.c_str(), &state));
  if (state == KESTRA_MODULE_NOT_BUILT) return "not built yet";
  if (state == KESTRA_MODULE_NOT_HERE) return "not on this machine";
  return {};
}

}  // namespace kestra::cli
