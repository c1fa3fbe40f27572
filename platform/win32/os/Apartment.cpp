#include "platform/os/Apartment.h"

#include "platform/win32/base/Windows.h"
//
#include <objbase.h>

namespace kestra::os {

CApartmentScope::CApartmentScope()
    : m_isReady(
          SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE))) {}

CApartmentScope::~CApartmentScope() {
  if (m_isReady) CoUninitialize();
}

}  // namespace kestra::os
