// Texts that the system has for numbers: error messages and the string tables of loaded modules.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/SystemError.h"

namespace kestra::os {

// The system's text for an error number, line end included; nothing when it has none. Source of the
// wording where the system is not Windows: the public "System Error Codes" pages of Win32.
std::optional<std::string> SystemErrorText(SystemError code);
// The same on one line, without a line end.
std::optional<std::string> SystemErrorLine(SystemError code);
// Out of the message file of the network functions, and of the remote access service.
std::optional<std::string> NetworkErrorText(SystemError code);
std::optional<std::string> RemoteAccessErrorText(SystemError code);

// The text with that id in a loaded module's string table, at most 255 bytes. module is an address
// that the module was mapped at; 0 is the module that this code is in.
std::optional<std::string> LoadModuleString(uintptr_t module, uint32_t id);
// Full path of a loaded module's file.
std::optional<std::string> ModuleFileName(uintptr_t module);

}  // namespace kestra::os
