#include "tests/support/FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace kestra::test {
namespace {

struct Plan {
  bool isCounting = false;
  MemoryFault fault = MemoryFault::None;
  uint64_t number = 0;
  uint64_t allocations = 0;
  bool hasFailed = false;
};
thread_local constinit Plan t_plan;
std::atomic<int64_t> g_blocks{0};

bool Fails() {
  if (!t_plan.isCounting) return false;
  ++t_plan.allocations;
  const bool isDue = (t_plan.fault == MemoryFault::Once && t_plan.allocations == t_plan.number) ||
                     (t_plan.fault == MemoryFault::FromThen && t_plan.allocations >= t_plan.number);
  if (isDue) t_plan.hasFailed = true;
  return isDue;
}

}  // namespace

void* TakeBlock(size_t size) {
  void* const pBlock = Fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (pBlock) g_blocks.fetch_add(1, std::memory_order_relaxed);
  return pBlock;
}

void GiveBack(void* pBlock) noexcept {
  if (pBlock) g_blocks.fetch_sub(1, std::memory_order_relaxed);
  std::free(pBlock);
}

CFailingMemory::CFailingMemory(uint64_t number, MemoryFault fault) {
  t_plan = {.isCounting = true, .fault = fault, .number = number};
}

CFailingMemory::~CFailingMemory() {
  t_plan.isCounting = false;
}

uint64_t CFailingMemory::Allocations() const {
  return t_plan.allocations;
}

bool CFailingMemory::HasFailed() const {
  return t_plan.hasFailed;
}

int64_t OutstandingBlocks() {
  return g_blocks.load(std::memory_order_relaxed);
}

}  // namespace kestra::test

// The array forms of the library call these. Over-aligned blocks are not used, and stay with it.

void* operator new(std::size_t size) {
  void* const pBlock = kestra::test::TakeBlock(size);
  if (!pBlock) throw std::bad_alloc();
  return pBlock;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return kestra::test::TakeBlock(size);
}

void operator delete(void* pBlock) noexcept {
  kestra::test::GiveBack(pBlock);
}

void operator delete(void* pBlock, std::size_t) noexcept {
  kestra::test::GiveBack(pBlock);
}

void operator delete(void* pBlock, const std::nothrow_t&) noexcept {
  kestra::test::GiveBack(pBlock);
}
