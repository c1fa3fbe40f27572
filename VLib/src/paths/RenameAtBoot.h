// Replacing and removing what is in use: done by the system when it starts next.
#pragma once

#include <string>

#include "platform/base/SystemError.h"
#include "platform/machine/Machine.h"
#include "platform/os/Wait.h"

namespace kestra {

// Has a file or directory renamed at the machine's next start, over whatever has the name to by
// then; an empty to removes it. Of a directory all that is in it is put down too, but nothing
// behind a link. On success IsRestartNeeded answers true from then on.
//
// Windows of the NT family keeps the list itself. The 9x family reads it from WININIT.INI in the
// Windows folder, where the line is added to the section "rename" and all else stays as it is;
// kErrorInsufficientBuffer when that section would grow beyond what the system reads. Fails with
// kErrorCallNotImplemented on a machine that can do neither (Linux), with the error of the file
// facility when from cannot be read or the list not be written, and with kErrorCancelled when
// pTermination (may be null) is signalled. Nothing is put down then, unless the system refused, or
// the signal came, in the middle of a directory of the NT family: what is deepest in it is put down
// first, and the system has no means to take that back.
SystemError RenameAtBoot(CMachine& machine, const std::string& from, const std::string& to,
                         const os::CWaitable* pTermination);

// Whether a RenameAtBoot of this process has had success. Any thread.
bool IsRestartNeeded();

}  // namespace kestra
