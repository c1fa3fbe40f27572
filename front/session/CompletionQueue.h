// How the end of an asynchronous query gets back onto the thread that owns the session, where there
// is no window: a queue with a handle that an event loop can poll.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

#include "platform/base/Ref.h"
#include "platform/os/Event.h"

namespace kestra {

// Any thread posts; the owner fetches.
class CCompletionQueue : public CCounted<CCompletionQueue> {
 public:
  // Announces the end of a query. Dropped once the queue is closed.
  void Post(uint32_t queryId);
  // The oldest announcement; nothing if there is none.
  std::optional<uint32_t> Fetch();
  // Drops what was announced and not fetched of queries up to that one.
  void RemoveUpTo(uint32_t lastQueryId);
  // Nothing is announced any more.
  void Close();
  // Readable while something is announced. Lives as long as the queue.
  os::NativeHandle Handle() const { return m_event.Native(); }

 private:
  std::mutex m_lock;  // guards everything below
  std::deque<uint32_t> m_queryIds;
  bool m_isClosed = false;
  os::CEvent m_event;  // set while m_queryIds is not empty
};

}  // namespace kestra
