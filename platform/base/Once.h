// What is done once, by whoever needs it first; others who come meanwhile wait. As std::call_once,
// but also where an attempt that throws must leave the way free for the next one: with the C++
// library of MinGW-w64 the next one would wait for ever.
//
//   COnce once;
//   once.Do([&] { ... });
#pragma once

#include <atomic>

namespace kestra {

// Any thread. The work must not come back to the same object.
class COnce {
 public:
  template <class Work>
  void Do(Work&& work) {
    while (m_state.load(std::memory_order_acquire) != kDone) {
      int expected = kOpen;
      if (m_state.compare_exchange_strong(expected, kBusy, std::memory_order_acquire)) {
        Attempt attempt(m_state);
        work();
        attempt.outcome = kDone;
        return;
      }
      if (expected == kBusy) m_state.wait(kBusy, std::memory_order_acquire);
    }
  }

 private:
  static constexpr int kOpen = 0, kBusy = 1, kDone = 2;

  // Also ends an attempt that throws.
  struct Attempt {
    explicit Attempt(std::atomic<int>& theState) : state(theState) {}
    ~Attempt() {
      state.store(outcome, std::memory_order_release);
      state.notify_all();
    }
    std::atomic<int>& state;
    int outcome = kOpen;
  };

  std::atomic<int> m_state{kOpen};
};

}  // namespace kestra
