// How many bytes of registry files a volume may have in memory at a time, all together.
#pragma once

#include <atomic>
#include <cstdint>

namespace kestra::image {

// All methods may be called from any thread.
class CLoadBudget {
 public:
  static constexpr uint64_t kMostBytes = uint64_t{2} << 30;

  // False, and nothing is taken, if that many are not left.
  bool Take(uint64_t bytes) {
    uint64_t taken = m_taken.load(std::memory_order_relaxed);
    do {
      if (bytes > kMostBytes - taken) return false;
    } while (!m_taken.compare_exchange_weak(taken, taken + bytes, std::memory_order_relaxed));
    return true;
  }
  void GiveBack(uint64_t bytes) { m_taken.fetch_sub(bytes, std::memory_order_relaxed); }

 private:
  std::atomic<uint64_t> m_taken = 0;
};

}  // namespace kestra::image
