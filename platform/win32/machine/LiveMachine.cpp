#include "platform/machine/Machine.h"
#include "platform/win32/machine/Facilities.h"

namespace kestra {
namespace {

class CWindowsMachine final : public CMachine {
 public:
  CSystemFacts& System() override { return *m_pSystem; }
  CFileSystem* Files() override { return m_pFiles.get(); }
  CRegistry* Registry() override { return m_pRegistry.get(); }
  CProcesses* Processes() override { return m_pProcesses.get(); }

 private:
  std::unique_ptr<CSystemFacts> m_pSystem = MakeWindowsSystemFacts();
  std::unique_ptr<CFileSystem> m_pFiles = MakeWindowsFileSystem();
  std::unique_ptr<CRegistry> m_pRegistry = MakeWindowsRegistry();
  std::unique_ptr<CProcesses> m_pProcesses = MakeWindowsProcesses();
};

}  // namespace

Ref<CMachine> LiveMachine() {
  // Never destroyed: a thread that was left behind may still use it while the process ends.
  static auto* const pMachine = new Ref<CMachine>(new CWindowsMachine);
  return *pMachine;
}

}  // namespace kestra
