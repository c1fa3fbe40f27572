// What a library's file says of itself, read without loading it.
#pragma once

#include <string>

#include "platform/base/SystemError.h"

namespace kestra::os {

// The ending of library files, with its dot: ".dll" or ".so".
const char* LibraryEnding();

// What the file's author wrote into it for us: the "Comments" string of the version resource on
// Windows, the content of the ELF section ".kestra.comments" elsewhere, up to its first NUL. Empty,
// with success, for a library that has none; kErrorInvalidData for a file that is no library.
SystemError ReadLibraryComments(const std::string& path, std::string& comments);

// A text that two different builds of a library do not share: the file version on Windows, the
// build id of the ELF file elsewhere in hexadecimal digits, or, without one, the file's size and
// time of last change.
SystemError ReadLibraryVersion(const std::string& path, std::string& version);

}  // namespace kestra::os
