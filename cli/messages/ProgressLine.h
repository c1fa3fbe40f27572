// What a query is doing, on one line of a terminal that is written again and again, and erased at
// the end.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "cli/Handles.h"
#include "cli/Interrupt.h"

namespace kestra::cli {

// For the time of one query. Nothing is shown in the first half second, nor once the query is
// cancelled, nor where standard error is no terminal. Looks from a thread of its own, which has
// ended when the destructor returns.
class CProgressLine {
 public:
  CProgressLine(kestra_session* session, const CCancellation& cancellation);
  ~CProgressLine();
  CProgressLine(const CProgressLine&) = delete;
  CProgressLine& operator=(const CProgressLine&) = delete;

 private:
  void Run();
  // Waits; false at the end.
  bool Pause(uint32_t milliseconds);
  std::string Line(size_t columns) const;
  void Show(const std::string& line);

  kestra_session* const m_session;
  const CCancellation& m_cancellation;
  size_t m_shownWidth = 0;  // columns that are written on
  std::mutex m_lock;        // guards the next one
  bool m_isOver = false;
  std::condition_variable m_wakeUp;
  std::thread m_thread;
};

}  // namespace kestra::cli
