// Calls that cannot be interrupted: into a plug-in, the system's loader, a file system that may be
// a dead network mount.
//
//   auto answer = std::make_shared<Answer>();
//   if (!CallOrLeave([=] { answer->text = plugin->Call(); }, pTermination)) return Cancelled();
//
// The call runs on a thread of its own. When the termination event comes first, that thread is left
// behind: it goes on by itself, so what the call uses must be owned by the function object (shared,
// not borrowed), and nobody may look at its answer any more.
#pragma once

#include <functional>

#include "platform/os/Wait.h"

namespace kestra {

// True when the call returned: its effects are then visible to the caller. False when it was left
// behind, and when the event was signalled already: the call is not begun then. An exception that
// leaves the call is thrown on to the caller. With a null pTermination there is nothing to wait for
// beside the call, which then runs on the caller's own thread; also when the system has no more
// threads.
bool CallOrLeave(std::function<void()> call, const os::CWaitable* pTermination);

}  // namespace kestra
