// What the command needs of the terminal and of the process around it. One implementation per
// system: terminal_linux.cpp, terminal_win32.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace kestra::cli {

enum class Stream { In = 0, Out = 1, Error = 2 };

// Gives each of the three streams that the process was started without a place where reading and
// writing fail, so that no file opened later is taken for one of them; and sees to it that what is
// written arrives as it is, in UTF-8. First thing in the process.
void ReserveStandardStreams();

// The command line's words, the program's name first, in UTF-8. Called with what main got.
std::vector<std::string> CommandLine(int argc, char** argv);

// A file by its path in UTF-8, as it is; null, with errno, if it cannot be opened.
std::FILE* OpenForReading(const std::string& path);

bool IsDirectory(const std::string& path);
// From the root on; as it is if the system does not tell.
std::string FullPath(const std::string& path);

bool IsTerminal(Stream stream);
// Columns of the terminal that standard output goes to; 0 if it goes elsewhere or none is told.
size_t TerminalWidth();

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
