// Whether a filling has to end: its time is over, or the query was cancelled.
#pragma once

#include "Modules/FillDeadline.h"
#include "model/items/QueryMessage.h"

namespace kestra {

// For one filling, on its thread. Once over it stays over, and the message says why
// (kErrorCancelled, kErrorTimeout).
class CFillLimit {
 public:
  CFillLimit(const CFillDeadline& deadline, QueryMessage& message)
      : m_deadline(deadline), m_message(message) {}
  bool IsOver() {
    if (m_isOver) return true;
    m_isOver = m_message.IsTerminatedInLoop();
    if (m_isOver || !m_deadline.IsOver()) return m_isOver;
    m_message.NoteCutShort();
    m_message.Fail(kErrorTimeout);
    return m_isOver = true;
  }
  // Whether a look found it over: a filling that came to its end before is whole.
  bool HasEnded() const { return m_isOver; }

 private:
  const CFillDeadline m_deadline;
  QueryMessage& m_message;
  bool m_isOver = false;
};

}  // namespace kestra
