// Where a log may be put.
#pragma once

#include <string>

#include "VLib/src/log/Log.h"

namespace kestra {

// Makes a directory and those above it; true if it exists in the end. On Windows a directory that
// stands directly under a drive's root is not made; on Linux there is no such limit.
bool MakeDirectories(const std::string& path);

// The directory of a log: the wanted one, that which the host named for this process, or the
// temporary one, without a trailing separator. Empty if none can be had.
std::string FindLogDirectory(const LogHost& host, const std::string& wanted);

// The name of a host's variable that is private to one process, such as "Marlo:CVLog:Dir:0x1a2b".
std::string LogVariableName(const char* what);

}  // namespace kestra
