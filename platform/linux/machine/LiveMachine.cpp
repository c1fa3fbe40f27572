#include "platform/linux/machine/Facilities.h"
#include "platform/machine/Machine.h"

namespace kestra {
namespace {

class CLinuxMachine final : public CMachine {
 public:
  CSystemFacts& System() override { return *m_pSystem; }
  CFileSystem* Files() override { return m_pFiles.get(); }
  CRegistry* Registry() override { return nullptr; }
  CProcesses* Processes() override { return m_pProcesses.get(); }

 private:
  std::unique_ptr<CSystemFacts> m_pSystem = MakeLinuxSystemFacts();
  std::unique_ptr<CFileSystem> m_pFiles = MakeLinuxFileSystem();
  std::unique_ptr<CProcesses> m_pProcesses = MakeLinuxProcesses();
};

}  // namespace

Ref<CMachine> LiveMachine() {
  // Never destroyed: a thread that was left behind may still use it while the process ends.
  static auto* const pMachine = new Ref<CMachine>(new CLinuxMachine);
  return *pMachine;
}

}  // namespace kestra
