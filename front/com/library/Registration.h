// What the registry says of this library: its classes and its type library, for the machine, or for
// the user alone where there is no right to that.
#pragma once

#include "front/com/base/Com.h"

namespace kestra::com {

// Leaves nothing behind when it fails, another copy's registration at the same place included.
HRESULT RegisterLibrary();

// Takes away what RegisterLibrary wrote, wherever it did. Success when there was nothing.
HRESULT UnregisterLibrary();

}  // namespace kestra::com
