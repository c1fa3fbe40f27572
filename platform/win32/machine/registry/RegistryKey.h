// An open key of the system's registry.
#pragma once

#include <memory>

#include "platform/machine/Registry.h"
#include "platform/win32/base/UniqueHandle.h"

namespace kestra {

// A predefined key, which is never closed.
std::unique_ptr<CRegistryKey> MakePredefinedKey(HKEY key);

}  // namespace kestra
