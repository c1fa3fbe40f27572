// The windows that a program shows on the desktop.
#pragma once

#include <cstdint>

namespace kestra {

// Post WM_CLOSE to every top-level window of a process, or of one thread. Without any, and where
// there is no desktop, they do nothing: whoever asks waits and looks what came of it.
void CloseWindowsOfProcess(uint32_t pid);
void CloseWindowsOfThread(uint32_t threadId);

}  // namespace kestra
