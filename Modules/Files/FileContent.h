// What stands in a text file: a stretch of its characters, and its lines. Both read the file piece
// by piece and no further than they have to. Characters are those of UTF-8; a byte that is none
// counts as one and survives.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "Modules/Files/FilesOptions.h"
#include "platform/base/SystemError.h"
#include "platform/machine/FileSystem.h"

namespace kestra {

// Asked before each piece and each line. Its true ends the reading.
using StopReading = std::function<bool()>;

// The stretch of count characters that begins with the from-th, counted from 1, or what the file
// has of it: none where it ends before. kErrorCancelled when it was stopped, else the reader's
// error.
SystemError ReadCharacters(CFileReader& reader, uint32_t from, uint32_t count,
                           const StopReading& stop, std::string& text);

// Calls take(number, line) for the lines that the options ask for, in order, with the number
// counted from 1 over all lines. A line ends at CR LF, and on Linux at LF too; what stands behind
// the last end is a line unless it is empty. Lines come cut to their greatest length, and are
// matched so. kErrorCancelled when it was stopped, else the reader's error: what was taken until
// then is right.
SystemError ReadLines(CFileReader& reader, const FilesOptions& options, const StopReading& stop,
                      const std::function<void(uint32_t, std::string)>& take);

}  // namespace kestra
