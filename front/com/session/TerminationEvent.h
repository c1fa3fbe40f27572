// What a host may give RunQuerySync to end the query with: the name of an event, or the handle of
// one of its own.
#pragma once

#include <optional>

#include "front/com/base/Com.h"
#include "platform/os/Wait.h"
#include "platform/win32/base/UniqueHandle.h"

namespace kestra::com {

class CTerminationEvent {
 public:
  // Of VT_BSTR the event of that name is opened, and of VT_UI4 the number is taken for a handle of
  // the host's, which stays the host's to close. Everything else, an empty name and a name that
  // cannot be opened give none: the session's own event serves then. A variable of a script's,
  // which comes by reference, counts as what it holds.
  explicit CTerminationEvent(const VARIANT& given);

  // Good as long as this object and the host's handle are.
  const std::optional<os::NativeHandle>& Handle() const { return m_handle; }

 private:
  CUniqueHandle m_opened;
  std::optional<os::NativeHandle> m_handle;
};

}  // namespace kestra::com
