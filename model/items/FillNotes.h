// What a filling has to say beside its content: what could not be read, and whether it ended before
// its end. The one who asks for the filling makes the object and hangs it into the message.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Ref.h"
#include "platform/base/SystemError.h"

namespace kestra {

// What is missing for it.
enum class Missing {
  Items,       // there may be items that are not seen
  Properties,  // every item is there, with a property that is not set
};

struct FillProblem {
  std::string subject;  // a path, a process, or whatever else was asked
  std::string reason;   // a sentence
};

// Any thread: a filling may have helpers.
class CFillNotes : public CCounted<CFillNotes> {
 public:
  // So many problems are kept; the others are only counted.
  static constexpr size_t kMostKept = 100;

  // Something could not be read, and the filling went on without it. The same subject and reason
  // are one problem, as long as problems are kept.
  void NoteProblem(std::string_view subject, SystemError error, Missing missing = Missing::Items);
  void NoteProblem(std::string_view subject, std::string_view reason,
                   Missing missing = Missing::Items);
  // A limit ended the filling: there may be more than it shows.
  void NoteCutShort() { m_isCutShort = true; }

  bool IsCutShort() const { return m_isCutShort; }
  struct Counts {
    uint64_t all = 0;
    uint64_t hidingItems = 0;
  };
  // The problems kept, and how many there were in all; they are taken out.
  std::vector<FillProblem> TakeProblems(Counts& counts);
  Counts CountsSoFar() const;
  bool HasProblems() const;

 private:
  void Count(Missing missing);

  std::atomic<bool> m_isCutShort{false};
  mutable std::mutex m_lock;  // guards what follows
  Counts m_counts;
  std::vector<FillProblem> m_problems;
};

}  // namespace kestra
