// What an error means that a directory answers with when it is looked at.
#pragma once

#include <string>

#include "Modules/PassOver.h"
#include "VLib/src/log/Log.h"
#include "platform/base/SystemError.h"

namespace kestra {

inline bool IsGone(SystemError error) {
  return error == kErrorFileNotFound || error == kErrorPathNotFound;
}

inline void LogPassedOver(const std::string& directory, SystemError error) {
  g_Log.Error("Files: a directory could not be listed (system error %u): %s", error,
              directory.c_str());
}

}  // namespace kestra
