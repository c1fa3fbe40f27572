// Threads as the system has them. CVThread is the one thread class that the rest uses; only it
// includes this header.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "platform/base/Ref.h"
#include "platform/os/Wait.h"

namespace kestra::os {

// A running or ended thread. As a CWaitable it is signalled when the thread's function has
// returned. Dropping the object does not end or join the thread.
class CThreadHandle : public CWaitable {
 public:
  virtual uint32_t Id() const = 0;
  // Ends the thread by force with exit code 0 where the system can do that safely enough
  // (Windows), and answers true. Where it cannot (Linux) nothing happens and the answer is false:
  // the caller leaves the thread behind.
  virtual bool Terminate() = 0;
  // Waits for the system to be done with an ended thread, so that its stack and thread-local
  // objects are gone. Only after the object is signalled, or after Terminate; then for at most ten
  // seconds, since the system may not be able to end it yet.
  virtual void Join() = 0;
};

// Starts a thread that runs body. stackBytes 0 takes the system's default. Null when the system
// has no more threads. An exception that leaves body ends the process, so body must not throw.
std::unique_ptr<CThreadHandle> StartThread(std::function<void()> body, size_t stackBytes);

// The system's number of the calling thread.
uint32_t CurrentThreadId();

// How many processors of the machine are in use, whichever of them this process may run on; 0 when
// the system does not tell.
uint32_t OnlineProcessors();

// For a thread that is about to make many small objects beside others that do: its own part of the
// heap gets room in one step, where it would grow page by page, with a call of the system for each.
// The room is addresses, of which nothing is touched yet. Does nothing where heaps grow otherwise.
void WidenThreadHeap();

// How many bytes of the calling thread's stack are left below this call's frame. A very large
// number where the system cannot tell.
size_t RemainingStack();

}  // namespace kestra::os
