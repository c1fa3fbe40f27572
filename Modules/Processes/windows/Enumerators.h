// The ways in which a Windows system lists its processes. Each appends what it finds to records,
// and fails when the list cannot be taken or is cut off; with kErrorCancelled when the query is
// cancelled. Which one a system is asked with is decided in WindowsProcessList.h.
#pragma once

#include <cstdint>
#include <vector>

#include "Modules/Processes/windows/inspect/ProcessEnumContext.h"
#include "model/items/QueryMessage.h"
#include "platform/machine/Processes.h"

namespace kestra {

// Out of a snapshot, with all that the processes tell themselves, and with tasks of 16 bits.
SystemError EnumByToolhelp(ProcessEnumContext& context, uint32_t flags,
                           std::vector<ProcessRecord>& records, QueryMessage& message);

// Out of a snapshot alone: names, paths and parents.
SystemError EnumByToolhelpOnly(ProcessEnumContext& context, std::vector<ProcessRecord>& records,
                               QueryMessage& message);

// By their numbers, with what each process tells of itself.
SystemError EnumByPsapi(ProcessEnumContext& context, uint32_t flags,
                        std::vector<ProcessRecord>& records, QueryMessage& message);

// Out of the kernel's own list, with what each process tells of itself.
SystemError EnumBySystemInformation(ProcessEnumContext& context, uint32_t flags,
                                    std::vector<ProcessRecord>& records, QueryMessage& message);

}  // namespace kestra
