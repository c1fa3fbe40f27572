// Opening plain files for reading.
#pragma once

#include <memory>
#include <string>

#include "platform/machine/FileSystem.h"

namespace kestra {

SystemError OpenLinuxFile(const std::string& path, LastLink lastLink,
                          std::unique_ptr<CFileReader>& reader);

}  // namespace kestra
