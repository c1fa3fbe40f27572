#include "front/com/session/TerminationEvent.h"

namespace kestra::com {
namespace {

// A VARIANT by value.
class CGivenVariant {
 public:
  explicit CGivenVariant(const VARIANT& given) {
    VariantInit(&m_value);
    VariantCopyInd(&m_value, const_cast<VARIANT*>(&given));
  }
  ~CGivenVariant() { VariantClear(&m_value); }
  CGivenVariant(const CGivenVariant&) = delete;
  CGivenVariant& operator=(const CGivenVariant&) = delete;
  const VARIANT& Value() const { return m_value; }

 private:
  VARIANT m_value;
};

// Handles of 64-bit Windows have 32 significant bits, and go through 32-bit numbers by sign
// extension. Source: the Win32 page "Interprocess Communication Between 32-bit and 64-bit
// Applications".
os::NativeHandle HandleOf(ULONG number) {
  return static_cast<os::NativeHandle>(static_cast<LONG>(number));
}

}  // namespace

CTerminationEvent::CTerminationEvent(const VARIANT& given) {
  const CGivenVariant variant(given);
  const VARIANT& value = variant.Value();
  if (value.vt == VT_UI4) {
    m_handle = HandleOf(value.ulVal);
  } else if (value.vt == VT_BSTR && SysStringLen(value.bstrVal) > 0) {
    m_opened = CUniqueHandle(OpenEventW(SYNCHRONIZE, FALSE, value.bstrVal));
    if (m_opened) m_handle = reinterpret_cast<os::NativeHandle>(m_opened.get());
  }
}

}  // namespace kestra::com
