// Hive files ("regf"), read by hivex.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "platform/image/registry/tree/KeyTree.h"
#include "platform/os/MemoryFile.h"

namespace kestra::image {

// The tree of a sealed file. kErrorRegistryCorrupt for what is no hive or cannot be read as one;
// kErrorCallNotImplemented without libhivex. onDamage is called, from any thread and any number of
// times, when something is found that is not as it must be: it is left out, and the rest is read.
// Takes a time in proportion to the file.
SystemError OpenHive(std::unique_ptr<os::CMemoryFile> file, std::function<void()> onDamage,
                     std::shared_ptr<CKeyTree>& tree);

// Whether the changes that the hive's transaction logs hold have not been brought into it.
bool IsDirtyHive(std::string_view bytes);

}  // namespace kestra::image
