// A machine that forwards to another one and makes one call fail: the fault harness.
//
//   auto machine = MakeRef<CFailingMachine>(inner);
//   for (uint32_t n = 1;; ++n) {
//     machine->FailCall(n, kErrorAccessDenied);
//     ... run, and look that what comes out is right or an error ...
//     if (!machine->HasFailed()) break;  // there was no n-th call
//   }
//
// A call is one of any method that answers with an error number, of a facility or of an object that
// it gave out; the system facts do not fail. All methods may be called from any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/base/SystemError.h"
#include "platform/machine/Machine.h"
#include "tests/support/FaultPlan.h"

namespace kestra::test {

class CFailingMachine final : public CMachine {
 public:
  explicit CFailingMachine(Ref<CMachine> inner);
  ~CFailingMachine() override;

  // The number-th call from now on, counted from 1 over the facility's calls or all, fails with
  // error. 0 only counts.
  void FailCall(uint32_t number, SystemError error, Facility facility = Facility::Any);
  // Calls of the facility that FailCall named, since then.
  uint32_t Calls() const { return m_plan.Calls(); }
  // Whether the call came and failed.
  bool HasFailed() const { return m_plan.HasFailed(); }
  // Called when that call comes, for what else happens then; set before. With kErrorSuccess for an
  // error it is all that happens, and the call goes through.
  void OnFailure(std::function<void()> action) { m_plan.onFailure = std::move(action); }

  CSystemFacts& System() override { return m_inner->System(); }
  CFileSystem* Files() override;
  CRegistry* Registry() override;
  CProcesses* Processes() override;

 private:
  Ref<CMachine> m_inner;
  CFaultPlan m_plan;
  std::unique_ptr<CFileSystem> m_pFiles;
  std::unique_ptr<CRegistry> m_pRegistry;
  std::unique_ptr<CProcesses> m_pProcesses;
};

}  // namespace kestra::test
