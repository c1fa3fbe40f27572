// The registry of a Wine prefix.
#include "platform/image/registry/wine/WineRegistry.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace kestra::image;
  WineRegistry registry;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (DecodeWineRegistry(text, registry) != kestra::kErrorSuccess) return 0;
  std::vector<TreeEntry> values;
  std::vector<TreeEntry> keys{{"", registry.tree->Root()}};
  for (size_t next = 0; next < keys.size(); ++next) {
    std::vector<TreeEntry> found;
    registry.tree->SubKeys(keys[next].id, found);
    keys.insert(keys.end(), found.begin(), found.end());
    registry.tree->Values(keys[next].id, values);
    for (const TreeEntry& value : values) {
      uint32_t type = 0;
      std::string bytes;
      registry.tree->ReadValue(value.id, type, bytes);
    }
  }
  return 0;
}
