// What the command needs of the terminal and of the process around it. One implementation per
// system: terminal_linux.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kestra::cli {

enum class Stream { In = 0, Out = 1, Error = 2 };

// Gives each of the three streams that the process was started without a place where reading and
// writing fail, so that no file opened later is taken for one of them. First thing in the process.
void ReserveStandardStreams();

bool IsTerminal(Stream stream);
// Columns of the terminal that standard output goes to; 0 if it goes elsewhere or none is told.
size_t TerminalWidth();

// The character that a text, which must not be empty, begins with, as a terminal shows it.
struct TerminalCharacter {
  size_t bytes;  // at least 1
  int width;     // in columns: 0, 1 or 2; -1 for what is not to be sent to a terminal
};
// Bytes that are not UTF-8 are characters of one byte and of width -1.
TerminalCharacter FirstCharacter(std::string_view text);

// While an object lives, the first interrupt key (Ctrl-C) sets its event instead of ending the
// process; the second ends it in the ordinary way. A process that was started with interrupts
// ignored goes on ignoring them. One object at a time.
class CInterruptScope {
 public:
  CInterruptScope();
  ~CInterruptScope();
  CInterruptScope(const CInterruptScope&) = delete;
  CInterruptScope& operator=(const CInterruptScope&) = delete;

  // A termination event for a query; null if the system had none to give.
  const intptr_t* Event() const { return m_event == -1 ? nullptr : &m_event; }
  bool WasInterrupted() const;

 private:
  intptr_t m_event = -1;
  bool m_isInstalled = false;
};

}  // namespace kestra::cli
