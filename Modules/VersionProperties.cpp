#include "Modules/VersionProperties.h"

#include <string_view>

namespace kestra {

SystemError SetVersionProperties(DiagParams& params, std::span<const VersionProperty> properties,
                                 CMachine& machine, const std::string& path,
                                 const os::CWaitable* pTermination) {
  FileVersionInfo info;
  const SystemError error = info.Load(machine, path, pTermination);
  if (error != kErrorSuccess) return error;
  for (const auto& [name, string] : properties) {
    if (std::string_view(string) == "FileVersion") {
      params.SetVersionIfAny(name, info.GetVersionText(FileVersionInfo::kFile));
    } else if (std::string_view(string) == "ProductVersion") {
      params.SetVersionIfAny(name, info.GetVersionText(FileVersionInfo::kProduct));
    } else {
      params.SetTextIfAny(name, info.GetString(string).value_or(std::string()));
    }
  }
  return kErrorSuccess;
}

}  // namespace kestra
