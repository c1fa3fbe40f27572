// The calls of this Windows system.
#pragma once

#include <memory>

#include "platform/machine/WindowsProcesses.h"

namespace kestra {

std::unique_ptr<CWindowsProcesses> MakeWindowsProcessCalls();

}  // namespace kestra
