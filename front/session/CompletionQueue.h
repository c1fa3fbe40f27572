// How the end of an asynchronous query gets back onto the thread that owns the session: a queue
// with a handle that an event loop can poll, and, for owners who have another way to be called (a
// window), a function that is told of each announcement.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/base/Ref.h"
#include "platform/os/Event.h"

namespace kestra {

// Any thread posts; the owner fetches.
class CCompletionQueue : public CCounted<CCompletionQueue> {
 public:
  // Called with the id of a query whose end was announced, on the thread that announced it, under
  // the queue's lock: it must be quick, must not throw and must not call the queue. Never called
  // once the queue is closed.
  using Announce = std::function<void(uint32_t queryId)>;

  explicit CCompletionQueue(Announce announce = {}) : m_announce(std::move(announce)) {
    m_queryIds.reserve(kMostWaiting);
  }

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
  // One for the query that runs, and some of threads that were left behind.
  static constexpr size_t kMostWaiting = 16;

  const Announce m_announce;
  std::mutex m_lock;                 // guards everything below
  std::vector<uint32_t> m_queryIds;  // has room, so that no announcement fails for want of memory
  bool m_isClosed = false;
  os::CEvent m_event;  // set while m_queryIds is not empty
};

}  // namespace kestra
