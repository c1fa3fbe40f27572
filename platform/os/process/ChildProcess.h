// Starting other programs, and waiting for them.
//
//   std::unique_ptr<CChildProcess> child;
//   if (StartChild(QuotedProgram(path) + " --version", "", {}, child) == kErrorSuccess)
//     WaitAny({child.get(), pTermination}, 10'000);
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/base/SystemError.h"
#include "platform/os/Wait.h"

namespace kestra::os {

// A child. As a CWaitable it is signalled when it has ended. To drop the object leaves the child
// running; when it ends the system forgets it, with nothing left behind, while this process lives
// too (on Linux a thread waits for dropped children as long as there are any).
class CChildProcess : public CWaitable {
 public:
  virtual uint32_t Id() const = 0;
  // Once it is signalled; kErrorNotReady before. On Linux a child that was ended by a signal has
  // 128 and the signal's number. kErrorInvalidHandle when somebody else in this process has taken
  // the answer from the system, or ignores SIGCHLD. One thread at a time.
  virtual SystemError ExitCode(uint32_t& exitCode) = 0;
};

// How a child shows itself. On Linux nothing has a window: only isHidden means something there.
struct ChildWindow {
  uint32_t showWindow = 0;  // an SW_ number of the Win32 page ShowWindow, given to the program
  bool isHidden = false;    // no console of its own; on Linux its output goes nowhere
};

// A program's path or name as the first word of a command line, between double quotes.
std::string QuotedProgram(const std::string& program);

// Starts the program that the first word of commandLine names: a path, or a name that is looked
// for as the system does it (on Linux in the folders of PATH). directory is where it runs, and on
// Linux where a relative path is taken from; empty is the caller's own. The child inherits no
// handle, reads nothing from the caller's input, and writes where the caller writes. A program that
// the system cannot start is an error here, and no child: kErrorFileNotFound, kErrorAccessDenied,
// kErrorBadExeFormat.
//
// On Windows the program takes its command line apart itself; it shares the caller's console, and
// reads from it, unless it is hidden. kErrorBadArguments for no word at all, a NUL, or more than
// 32766 characters. A missing directory is kErrorDirectory.
//
// On Linux commandLine is taken apart by the quoting rules of the POSIX shell, without any
// expansion: blanks, tabs and line ends separate words; what is between single quotes stands for
// itself; between double quotes a backslash protects `"`, `\`, `$` and "`" and takes a line end
// away; outside quotes it protects any character. kErrorBadArguments for a quote that is not
// closed, a backslash at the end, no word at all, or a NUL.
SystemError StartChild(const std::string& commandLine, const std::string& directory,
                       const ChildWindow& window, std::unique_ptr<CChildProcess>& child);

// Has the desktop open a document, a folder or an address with the program that is meant for it.
// child may come back null with success where no new program was needed. shellMask is SEE_MASK_
// bits of the Win32 page SHELLEXECUTEINFO; those that promise a field which cannot be given here
// have no effect. On Linux xdg-open does it, and is the child; arguments and shellMask have no
// meaning there. kErrorCallNotImplemented without xdg-open; kErrorFileNotFound or
// kErrorPathNotFound for a missing file or directory.
SystemError OpenByShell(const std::string& file, const std::string& arguments,
                        const std::string& directory, uint32_t shellMask, uint32_t showWindow,
                        std::unique_ptr<CChildProcess>& child);

}  // namespace kestra::os
