// Running other programs: the two ways that modules use.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/machine/Machine.h"
#include "platform/os/process/ChildProcess.h"

namespace kestra {

// Starts a program, and waits for it.
//
//   file       the program, or with the shell anything that it can open; empty fails
//   directory  where it runs; empty is the caller's own
//   arguments  one text, which the system takes apart by its own rules (ChildProcess.h)
//   useShell   goes to the shell at once; otherwise only when file does not start as a program
//   shellMask  SEE_MASK_ bits for the shell; showWindow an SW_ number. Nothing on Linux.
//   waitMs     longest wait for the end in milliseconds; 0 does not wait, os::kInfinite has no
//              limit. The calling thread's windows go on meanwhile; each time one of them has
//              input, the wait begins anew
//   stopEvent  ends the wait; may be null
//   exitCode   gets the exit code after a wait; may be null. Stays as it was if that is not known.
//   processOut gets the process; may be null
//
// False when the program did not start, and when the wait ended otherwise than by the end of the
// process, which goes on then and is not given out.
bool RunProcess(const std::string& file, const std::string& directory, const std::string& arguments,
                bool useShell, uint32_t shellMask, uint32_t showWindow, uint32_t waitMs,
                const os::CWaitable* stopEvent, uint32_t* exitCode,
                std::unique_ptr<os::CChildProcess>* processOut);

inline constexpr uint32_t kSystem32TimeOutMs = 40'000;

// Runs a program of the machine's system folder without a console, and waits for it. The folder,
// program and arguments are joined as they are: program begins with a separator, and arguments with
// a blank. Answers the exit code, or an error number, which cannot be told from it: that of the
// start, kErrorPathNotFound without a system folder, kErrorWaitTimeout when it did not end in time,
// kErrorCancelled when stopEvent (may be null) was signalled. Logs what it does. machine is the one
// that we run on.
uint32_t runFromSystem32NoConsole(CMachine& machine, const std::string& program,
                                  const std::string& arguments, const os::CWaitable* stopEvent,
                                  uint32_t timeOutMs = kSystem32TimeOutMs);

}  // namespace kestra
