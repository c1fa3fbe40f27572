// The system's header, as everything here includes it: without the macros min and max, and with the
// declarations of the oldest system that we run on. What came later is looked up at run time.
#pragma once

#include <windows.h>
