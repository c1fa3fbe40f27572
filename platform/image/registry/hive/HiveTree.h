// Hive files ("regf"), read by hivex.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "platform/image/registry/tree/KeyTree.h"
#include "platform/os/MemoryFile.h"

namespace kestra::image {

enum class HiveFault {
  Damage,  // something is not as it must be
  Limit,   // a key or value has more in it than the library reads
};
using HiveFaultHandler = std::function<void(HiveFault)>;

// The tree of a sealed file. kErrorRegistryCorrupt for what is no hive or cannot be read as one;
// kErrorCallNotImplemented without libhivex; kErrorCancelled when the thread's work is terminated,
// which is not looked at while the library opens the file. onFault is called, from any thread and
// any number of times, when something cannot be read: it is left out, and the rest is read. Takes a
// time in proportion to the file.
SystemError OpenHive(std::unique_ptr<os::CMemoryFile> file, HiveFaultHandler onFault,
                     std::shared_ptr<CKeyTree>& tree);

// Whether the changes that the hive's transaction logs hold have not been brought into it.
bool IsDirtyHive(std::string_view bytes);

}  // namespace kestra::image
