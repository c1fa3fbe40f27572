// WININIT.INI: the list of files that Windows of the 9x family renames when it starts.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/SystemError.h"

namespace kestra {

// Adds a line at the end of the section "rename", which is made if it is missing. Keys repeat in
// that section ("NUL=" for every removal), and the order counts. No other byte of content changes.
// kErrorInsufficientBuffer when the section would not fit into the 32767 bytes that are read of it.
SystemError AddRenameLine(std::string& content, std::string_view line);

}  // namespace kestra
