#include "VLib/src/registry/RegistryText.h"

#include "VLib/src/registry/RegKey.h"

namespace kestra {

std::optional<std::string> ReadRegistryText(CMachine& machine, RegistryRoot root,
                                            const std::string& path, const std::string& name,
                                            uint32_t view) {
  CRegistry* pRegistry = machine.Registry();
  if (!pRegistry) return std::nullopt;
  try {
    const CVRegKey key = CVRegKey(*pRegistry, root).OpenSubKey(path, kKeyQueryValue | view);
    if (key.ValueType(name) == kRegDword) return std::to_string(key.ReadNumber(name, 0));
    const std::string text = key.ReadString(name, std::string());
    if (!text.empty()) return text;
  } catch (const CVException&) {
    // What cannot be read is missing to these callers.
  }
  return std::nullopt;
}

}  // namespace kestra
