// The interrupt key (Ctrl-C), and what it ends. One implementation per system, as of Terminal.h.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>

namespace kestra::cli {

// Ends one query, with all that is done for it. Any thread; Cancel may be called by what handles a
// signal.
class CCancellation {
 public:
  CCancellation();
  ~CCancellation();
  CCancellation(const CCancellation&) = delete;
  CCancellation& operator=(const CCancellation&) = delete;

  // A termination event for a query; null if the system had none to give.
  const intptr_t* Event() const { return m_event == kNone ? nullptr : &m_event; }
  void Cancel();
  bool WasCancelled() const { return m_wasCancelled; }
  // Nobody waits for the query any longer: nothing of it is to be shown.
  void GiveUp() { m_isGivenUp = true; }
  bool IsGivenUp() const { return m_isGivenUp; }

 private:
  static constexpr intptr_t kNone = -1;
  intptr_t m_event = kNone;
  std::atomic<bool> m_wasCancelled{false};
  std::atomic<bool> m_isGivenUp{false};
};

// What breaks off the showing of a result.
class CCancelled : public std::exception {
 public:
  const char* what() const noexcept override { return "cancelled"; }
};

// While an object lives, the interrupt key cancels instead of ending the process. A process that
// was started with interrupts ignored goes on ignoring them. One object at a time.
class CInterruptScope {
 public:
  enum class Second {
    EndsTheProcess,  // in the ordinary way
    CancelsAgain,
  };
  CInterruptScope(CCancellation& cancellation, Second second);
  ~CInterruptScope();
  CInterruptScope(const CInterruptScope&) = delete;
  CInterruptScope& operator=(const CInterruptScope&) = delete;

 private:
  struct State;
  State* m_pState;
};

// While an object lives, threads that are started get no signals: those are for the thread that
// reads the terminal.
class CSignalShield {
 public:
  CSignalShield();
  ~CSignalShield();
  CSignalShield(const CSignalShield&) = delete;
  CSignalShield& operator=(const CSignalShield&) = delete;

 private:
  struct State;
  State* m_pState;
};

}  // namespace kestra::cli
