// The properties that the classes File and Process take out of the version resource of a program.
#pragma once

#include <span>
#include <string>

#include "VLib/src/version/FileVersionInfo.h"
#include "model/items/Param.h"

namespace kestra {

// A property, and the string of the version resource that it shows. "FileVersion" and
// "ProductVersion" stand for the fixed version, with the string where that says nothing.
struct VersionProperty {
  const char* name;
  const char* string;
};

// Reads the file's version resource and sets those properties that it has something for, in the
// order given; a text that is no version sets no version. What cannot be read sets none, and the
// answer is the error, as FileVersionInfo::Load tells it.
SystemError SetVersionProperties(DiagParams& params, std::span<const VersionProperty> properties,
                                 CMachine& machine, const std::string& path,
                                 const os::CWaitable* pTermination);

}  // namespace kestra
