#include "Modules/Processes/ProcessesModule.h"

#include <utility>
#include <vector>

#include "Modules/Processes/ProcessItem.h"
#include "Modules/Processes/ProcessList.h"

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

  uint32_t showUserAndCommandLine = 0;
  GetArg("ShowUserAndComLine", showUserAndCommandLine);
  const uint32_t wanted =
      showUserAndCommandLine > 0 ? kProcessWantUser | kProcessWantCommandLine : 0;

  std::vector<ProcessRecord> records;
  if (!EnumProcessList(Machine(), records, wanted != 0, true, message)) return false;
  const Ref<DiagClass> processClass = kProcessClass.Get();
  DiagItems items;  // what is cut off in the middle leaves nothing behind
  for (ProcessRecord& record : records) {
    if (message.IsTerminatedInLoop()) return false;
    message.TellAmount(items.Count(), records.size());
    auto item = MakeRef<CProcessItem>(processClass, MachineRef(), m_closeTimeOutMs);
    item->Fill(std::move(record), wanted, Defs(), message.TerminationEvent());
    items.Add(std::move(item), false);
  }
  // The last one's filling may have been cut short.
  if (message.IsTerminated()) return false;
  Children.Swap(items);
  return IsInitialized = true;
}

}  // namespace kestra
