// What an error means that a directory answers with when it is looked at.
#pragma once

#include <string>

#include "VLib/src/log/Log.h"
#include "platform/base/SystemError.h"

namespace kestra {

inline bool IsGone(SystemError error) {
  return error == kErrorFileNotFound || error == kErrorPathNotFound;
}

// One directory that cannot be listed is no reason to show nothing of all the others; but when we
// have run out of something ourselves, that would be wrong of all that follow, too.
inline bool MayPassOver(SystemError error) {
  return error != kErrorTooManyOpenFiles && error != kErrorNotEnoughMemory &&
         error != kErrorOutOfMemory;
}

inline void LogPassedOver(const std::string& directory, SystemError error) {
  g_Log.Warning("Files: a directory could not be listed (system error %u): %s", error,
                directory.c_str());
}

}  // namespace kestra
