// What a session's machine has to say beside its answers: a hive of a volume that is damaged, say.
#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>

#include "platform/base/Ref.h"

namespace kestra {

// Any thread.
class CNotices : public CCounted<CNotices> {
 public:
  // More than that wait for nobody: the log has them all.
  static constexpr size_t kMostWaiting = 1000;

  // Writes it into the log, and keeps it until it is taken.
  void Add(const std::string& text);
  // The oldest one, which is then no longer there. False when there is none.
  bool Take(std::string& text);

 private:
  std::mutex m_lock;  // guards the list
  std::deque<std::string> m_waiting;
};

}  // namespace kestra
