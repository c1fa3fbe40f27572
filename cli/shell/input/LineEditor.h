// CLineEditor: reads lines from the terminal. One implementation per system: terminal_linux/,
// terminal_win32/.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kestra::cli {

// What may be put at the cursor.
struct Completion {
  struct Candidate {
    std::string text;
    std::string description;  // one line; may be empty
  };
  size_t offset = 0;  // the bytes of the line that a candidate replaces
  size_t length = 0;
  std::vector<Candidate> candidates;
  std::string ending;  // what follows a candidate that is the only one, such as a blank
  // Whether candidates that differ in case alone are different things.
  bool isExact = false;
};

// For a line and the cursor, a byte of it.
using Completer = std::function<Completion(const std::string& line, size_t cursor)>;

struct LineInput {
  enum class End { Line, Interrupted, EndOfInput };
  End end = End::EndOfInput;
  std::string text;  // without the end of the line; what was typed, when it was interrupted
};

// One thread, and one object in the process: it has the terminal, which is as it was before when
// the object goes, and also when the process is ended or stopped by a signal.
//
// Between two lines what is typed waits, unseen, for the next one, and the interrupt key loses
// nothing of it.
class CLineEditor {
 public:
  virtual ~CLineEditor() = default;

  virtual LineInput Read(const std::string& prompt) = 0;
  // The youngest entry of what the arrow keys bring back. May have several lines.
  virtual void AddHistory(const std::string& entry) = 0;
  // Whether something was typed, or put in by the mouse, that is not read yet.
  virtual bool HasPendingInput() = 0;
};

// With everything the terminal can do; without editing where nothing is there for it.
std::unique_ptr<CLineEditor> MakeLineEditor(Completer completer);

}  // namespace kestra::cli
