// The descriptor that a handle of the host's stands for.
#pragma once

#include <limits>

#include "platform/os/Wait.h"

namespace kestra::os {

// None for a number that no descriptor can have; its lower bits would be somebody else's.
inline int DescriptorOf(NativeHandle handle) {
  return handle <= std::numeric_limits<int>::max() ? static_cast<int>(handle) : -1;
}

}  // namespace kestra::os
