// The facilities of the live Windows machine, for the machine object and for tests.
#pragma once

#include <memory>

#include "platform/machine/FileSystem.h"
#include "platform/machine/Processes.h"
#include "platform/machine/Registry.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {

std::unique_ptr<CSystemFacts> MakeWindowsSystemFacts();
std::unique_ptr<CFileSystem> MakeWindowsFileSystem();
std::unique_ptr<CRegistry> MakeWindowsRegistry();
std::unique_ptr<CProcesses> MakeWindowsProcesses();

}  // namespace kestra
