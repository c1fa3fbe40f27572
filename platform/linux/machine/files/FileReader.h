// Opening plain files for reading.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/UniqueFd.h"
#include "platform/machine/FileSystem.h"

namespace kestra {

// Opens for reading what is a plain file, and nothing else, without waiting.
SystemError OpenPlainFile(const std::string& path, LastLink lastLink, CUniqueFd& file);

SystemError OpenLinuxFile(const std::string& path, LastLink lastLink,
                          std::unique_ptr<CFileReader>& reader);

}  // namespace kestra
