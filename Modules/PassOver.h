// What a walk may do about a place that it cannot look into.
#pragma once

#include "platform/base/SystemError.h"

namespace kestra {

// One place that cannot be listed is no reason to show nothing of all the others; but when we have
// run out of something ourselves, that would be wrong of all that follow, too, and so it is when
// nobody knows whose registry is meant.
inline bool MayPassOver(SystemError error) {
  return error != kErrorTooManyOpenFiles && error != kErrorNotEnoughMemory &&
         error != kErrorOutOfMemory && error != kErrorNoSuchUser;
}

}  // namespace kestra
