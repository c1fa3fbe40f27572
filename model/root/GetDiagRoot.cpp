#include "model/root/GetDiagRoot.h"

#include "VLib/src/log/Log.h"

namespace kestra {

Ref<DiagRoot> GetDiagRoot(std::string_view modules, const std::string& pluginsDir,
                          ModuleTable table, Ref<CMachine> machine) {
  auto root = MakeRef<DiagRoot>(modules, table, std::move(machine));
  if (pluginsDir.empty() || root->SetPluginsDir(pluginsDir)) return root;
  g_Log.Error("GetDiagRoot() - FAILED.");
  return nullptr;
}

}  // namespace kestra
