// CSessionThread: a session on a thread of its own, so that a query that does not end can be left
// behind.
#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "cli/Handles.h"
#include "cli/Interrupt.h"
#include "cli/Options.h"

namespace kestra::cli {

// What belongs to the thread.
struct ShellSession {
  CSessionHandle handle;
  CValueHandle lastResult;  // of the last query that was no Error
};

// A job may outlive whoever gave it: it owns what it uses.
using ShellJob = std::function<void(ShellSession&, const CCancellation&)>;

// One thread.
class CSessionThread {
 public:
  // The session is made by the first job.
  explicit CSessionThread(const Options& options);
  // Waits for the session's end, unless a job was left behind.
  ~CSessionThread();
  CSessionThread(const CSessionThread&) = delete;
  CSessionThread& operator=(const CSessionThread&) = delete;

  // Waits for the end of the job; the interrupt key cancels it. False when it did not end in time
  // after that: it is given up then, and the object good for nothing more. Throws what the job
  // throws, and what the making of the session throws.
  bool Run(ShellJob job);

  // A thread of the process may still do what nobody waits for: the process is to end without
  // waiting for it.
  static bool IsAnyLeftBehind();

 private:
  struct State;
  void LeaveBehind();
  static void Work(const std::shared_ptr<State>& state);

  std::shared_ptr<State> m_state;
  std::thread m_thread;
};

}  // namespace kestra::cli
