// What the process that we run in has around it: environment variables, ids, paths. None of this
// says anything about the diagnosed machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kestra {
class CRegistry;
}

namespace kestra::os {

std::optional<std::string> ReadEnvironment(const std::string& name);
uint32_t CurrentProcessId();
// Who runs this process, as "domain\\user"; on Linux the domain is the host's name, and a user
// without an account has his number. Nothing if the system does not tell.
std::optional<std::string> CurrentUserName();
// Full path of the host's executable; empty if the system does not tell.
std::string ExecutablePath();
// Full path of the file that this code was loaded from: the library, or the executable that the
// engine is linked into.
std::string LibraryPath();
// Where that file was mapped.
uintptr_t LibraryLoadAddress();
// Directory for short-lived files, without a trailing separator; empty if there is none. On Linux
// $TMPDIR if others cannot write there; else a directory of the user's own with mode 0700 below it,
// or below the system's one without $TMPDIR, which is made if missing and refused if it is not the
// user's own.
std::string TemporaryDirectory();
// The registry of the system we run on; null where there is none. Lives for ever.
CRegistry* HostRegistry();
// '\\' or '/'.
char PathSeparator();
// Index of the first character behind the root of an absolute path ("C:\" 3, "/" 1); 0 if the path
// is not absolute.
size_t RootLength(const std::string& path);

}  // namespace kestra::os
