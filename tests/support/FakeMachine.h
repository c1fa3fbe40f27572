// A machine in memory, for tests: set it up, then give it to a root.
//
//   auto machine = MakeRef<CFakeMachine>();               // a 32-bit Windows 5.1 with its folders
//   machine->files.Add("C:\\a.txt", {.size = 3});
//   auto linux = MakeRef<CFakeMachine>(SystemFamily::Linux);
#pragma once

#include <map>
#include <string>

#include "platform/machine/Machine.h"
#include "platform/machine/SystemFacts.h"
#include "tests/support/FakeFileSystem.h"
#include "tests/support/FakeProcesses.h"
#include "tests/support/FakeRegistry.h"

namespace kestra::test {

// A system that GetOsKind gives this number for.
WindowsVersion VersionOfKind(uint32_t kind);

// Plain members, set before the machine is used.
class CFakeSystemFacts final : public CSystemFacts {
 public:
  explicit CFakeSystemFacts(SystemFamily systemFamily);

  SystemFamily Family() const override { return family; }
  std::optional<WindowsVersion> Windows() const override { return windows; }
  SystemWidth Width() const override { return width; }
  std::string ComputerName() const override { return computerName; }
  std::optional<std::string> FolderPath(Folder folder) const override;
  char PathSeparator() const override { return family == SystemFamily::Windows ? '\\' : '/'; }
  size_t MaxPath() const override { return maxPath; }

  SystemFamily family;
  std::optional<WindowsVersion> windows;
  SystemWidth width{.isKnown = true, .isRedirected = false};
  std::string computerName = "FAKE";
  size_t maxPath = 260;
  std::map<Folder, std::string> folders;
};

class CFakeMachine final : public CMachine {
 public:
  explicit CFakeMachine(SystemFamily family = SystemFamily::Windows);

  CSystemFacts& System() override { return system; }
  CFileSystem* Files() override { return hasFiles ? &files : nullptr; }
  CRegistry* Registry() override { return hasRegistry ? &registry : nullptr; }
  CProcesses* Processes() override { return hasProcesses ? &processes : nullptr; }

  CFakeSystemFacts system;
  CFakeFileSystem files;
  CFakeRegistry registry;
  CFakeProcesses processes;
  bool hasFiles = true;
  bool hasRegistry;  // true for Windows
  bool hasProcesses = true;
};

}  // namespace kestra::test
