// Text at the COM surface: BSTRs outside, UTF-8 inside.
#pragma once

#include <new>
#include <string>
#include <string_view>

#include "front/com/base/Com.h"
#include "platform/win32/base/Wide.h"

namespace kestra::com {

// A null BSTR is an empty text.
inline std::string FromBstr(BSTR text) {
  return Narrow({text ? text : L"", SysStringLen(text)});
}

// The caller frees it. Throws std::bad_alloc.
inline BSTR ToBstr(std::string_view utf8) {
  const std::wstring wide = Wide(utf8);
  BSTR text = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  if (!text) throw std::bad_alloc();
  return text;
}

// Automation's true, which a script's Not turns into false.
inline long AutomationBool(bool is) {
  return is ? VARIANT_TRUE : VARIANT_FALSE;
}

}  // namespace kestra::com
