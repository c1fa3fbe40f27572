// One piece of work on several threads at once.
//
//   std::atomic<size_t> next = 0;
//   WorkTogether(2, [&] {
//     for (size_t i; (i = next++) < parts.size();) Do(parts[i]);
//   });
//
// The work shares itself out, as above, and looks at the termination event by itself.
#pragma once

#include <cstdint>
#include <functional>

namespace kestra {

// Calls work on the calling thread and on up to helpers others, and returns when all these calls
// have. Work must be done by however many there are: the system may have no more threads. An
// exception that leaves a call is thrown on, the caller's own first, once all have ended.
void WorkTogether(uint32_t helpers, const std::function<void()>& work);

// How many helpers are of use on this machine: none with one processor, three at most.
uint32_t UsefulHelpers();

}  // namespace kestra
