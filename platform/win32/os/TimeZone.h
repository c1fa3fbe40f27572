// The time zone that Clock.h converts with: the one that the machine is set to.
#pragma once

#include <cstdint>

#include "platform/base/FileTime.h"
#include "platform/win32/base/Windows.h"

namespace kestra::os {

// Seconds east of UTC at a moment; false when the system does not convert it. The machine's setting
// is looked at once a second.
bool ZoneOffset(FileTime moment, int64_t& offset);

// Has this process convert with another zone; null goes back to the machine's. Windows has one zone
// for all processes, so that whoever needs a certain one, as tests do, says so here. Not while
// another thread converts.
void UseTimeZone(const DYNAMIC_TIME_ZONE_INFORMATION* pZone);

}  // namespace kestra::os
