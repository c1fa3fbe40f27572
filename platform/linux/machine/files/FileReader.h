// Opening plain files for reading.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/UniqueFd.h"
#include "platform/machine/FileSystem.h"

namespace kestra {

// Opens for reading what is a plain file, and nothing else, without waiting.
SystemError OpenPlainFile(const std::string& path, LastLink lastLink, CUniqueFd& file);

// The same for a name in a directory that is open; a link is refused.
SystemError OpenNamedFile(int directory, const std::string& name, CUniqueFd& file);
// isHidden is what the reader's Info says of the file.
std::unique_ptr<CFileReader> MakeFileReader(CUniqueFd file, bool isHidden);

SystemError OpenLinuxFile(const std::string& path, LastLink lastLink,
                          std::unique_ptr<CFileReader>& reader);

}  // namespace kestra
