#include "Modules/Processes/ProcessesModule.h"

#include <memory>
#include <utility>

#include "Modules/Processes/ProcessItem.h"

namespace kestra {
namespace {

// Class objects are never given back, so the pointers stay good.
const ProcessDefs& Defs() {
  static const ProcessDefs defs(*kProcessClass.Get()->Params);
  return defs;
}

}  // namespace

// The items are full when they are made, whether or not children are asked for.
bool CProcessesModule::Init(bool /*bInitChild*/, QueryMessage& message) {
  Children.Clear();
  Params.Clear();
  IsInitialized = false;

  CProcesses* pProcesses = Machine().Processes();
  if (!pProcesses) return IsInitialized = true;

  uint32_t showUserAndCommandLine = 0;
  GetArg("ShowUserAndComLine", showUserAndCommandLine);
  const uint32_t wanted =
      showUserAndCommandLine > 0 ? kProcessWantUser | kProcessWantCommandLine : 0;

  std::unique_ptr<CProcessList> list;
  if (const SystemError error = pProcesses->Enumerate(wanted, list); error != kErrorSuccess) {
    return message.Fail(error);
  }
  const Ref<DiagClass> processClass = kProcessClass.Get();
  DiagItems items;  // what is cut off in the middle leaves nothing behind
  for (;;) {
    if (message.IsTerminated()) return false;
    ProcessRecord record;
    const SystemError error = list->Next(record);
    if (error == kErrorNoMoreItems) break;
    if (error != kErrorSuccess) return message.Fail(error);
    auto item = MakeRef<CProcessItem>(processClass, MachineRef(), m_closeTimeOutMs);
    item->Fill(std::move(record), wanted, Defs(), message.TerminationEvent());
    items.Add(std::move(item), false);
  }
  Children.Swap(items);
  return IsInitialized = true;
}

}  // namespace kestra
