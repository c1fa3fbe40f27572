// Memory that runs out at a chosen moment. A program that links FailingMemory.cpp has the operators
// new and delete of that file in place of the library's.
//
//   for (uint64_t n = 1;; ++n) {
//     CFailingMemory memory(n, MemoryFault::Once);
//     ... run, and look that what comes out is right or an error ...
//     if (!memory.HasFailed()) break;  // there was no n-th allocation
//   }
//
// What C libraries take with malloc is not counted and does not fail.
#pragma once

#include <cstdint>

namespace kestra::test {

enum class MemoryFault {
  None,     // only counts
  Once,     // the n-th allocation alone
  FromThen  // the n-th and every later one
};

// While it lives, allocations of the thread that made it are counted from 1 and fail with
// std::bad_alloc as it says. One at a time on a thread.
class CFailingMemory {
 public:
  CFailingMemory(uint64_t number, MemoryFault fault);
  ~CFailingMemory();
  CFailingMemory(const CFailingMemory&) = delete;
  CFailingMemory& operator=(const CFailingMemory&) = delete;

  // So far, those that failed among them.
  uint64_t Allocations() const;
  bool HasFailed() const;
};

// Blocks that all threads have taken and not given back.
int64_t OutstandingBlocks();

}  // namespace kestra::test
