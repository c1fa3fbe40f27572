// The facilities of the live Linux machine, for the machine object and for tests.
#pragma once

#include <memory>
#include <string>

#include "platform/machine/FileSystem.h"
#include "platform/machine/Processes.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {

std::unique_ptr<CSystemFacts> MakeLinuxSystemFacts();
std::unique_ptr<CFileSystem> MakeLinuxFileSystem();
// procRoot is where the proc file system is mounted; tests give a tree of their own.
std::unique_ptr<CProcesses> MakeLinuxProcesses(const std::string& procRoot = "/proc");

}  // namespace kestra
