#include "model/items/FillNotes.h"

#include <algorithm>
#include <utility>

#include "platform/os/MessageText.h"

namespace kestra {

void CFillNotes::Count(Missing missing) {
  ++m_counts.all;
  if (missing == Missing::Items) ++m_counts.hidingItems;
}

void CFillNotes::NoteProblem(std::string_view subject, SystemError error, Missing missing) {
  {
    const std::lock_guard lock(m_lock);
    if (m_problems.size() >= kMostKept) return Count(missing);
  }
  const auto text = os::SystemErrorLine(error);
  NoteProblem(subject, text ? *text : "system error " + std::to_string(error), missing);
}

void CFillNotes::NoteProblem(std::string_view subject, std::string_view reason, Missing missing) {
  const std::lock_guard lock(m_lock);
  if (m_problems.size() < kMostKept) {
    const bool isKnown =
        std::any_of(m_problems.begin(), m_problems.end(), [&](const FillProblem& known) {
          return known.subject == subject && known.reason == reason;
        });
    if (isKnown) return;
    m_problems.push_back({std::string(subject), std::string(reason)});
  }
  Count(missing);
}

std::vector<FillProblem> CFillNotes::TakeProblems(Counts& counts) {
  const std::lock_guard lock(m_lock);
  counts = std::exchange(m_counts, {});
  return std::exchange(m_problems, {});
}

CFillNotes::Counts CFillNotes::CountsSoFar() const {
  const std::lock_guard lock(m_lock);
  return m_counts;
}

bool CFillNotes::HasProblems() const {
  return CountsSoFar().all > 0;
}

}  // namespace kestra
