#include "model/items/FillNotes.h"

#include <algorithm>
#include <utility>

#include "platform/os/MessageText.h"

namespace kestra {

void CFillNotes::NoteProblem(std::string_view subject, SystemError error) {
  {
    const std::lock_guard lock(m_lock);
    if (m_problems.size() >= kMostKept) {
      ++m_count;
      return;
    }
  }
  const auto text = os::SystemErrorLine(error);
  NoteProblem(subject, text ? *text : "system error " + std::to_string(error));
}

void CFillNotes::NoteProblem(std::string_view subject, std::string_view reason) {
  const std::lock_guard lock(m_lock);
  if (m_problems.size() < kMostKept) {
    const bool isKnown =
        std::any_of(m_problems.begin(), m_problems.end(), [&](const FillProblem& known) {
          return known.subject == subject && known.reason == reason;
        });
    if (isKnown) return;
    m_problems.push_back({std::string(subject), std::string(reason)});
  }
  ++m_count;
}

std::vector<FillProblem> CFillNotes::TakeProblems(uint64_t& count) {
  const std::lock_guard lock(m_lock);
  count = std::exchange(m_count, 0);
  return std::exchange(m_problems, {});
}

bool CFillNotes::HasProblems() const {
  const std::lock_guard lock(m_lock);
  return m_count > 0;
}

}  // namespace kestra
