// Text at the edge: UTF-8 inside, UTF-16 in the system's functions.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/SystemError.h"
#include "platform/win32/base/Windows.h"

namespace kestra {

// Bytes that are no UTF-8 become U+FFFD. A surrogate without its other half, which names of files
// and keys may have, is kept as its three bytes (WTF-8, as in Utf16.h), and they become it again.
// Text with a NUL inside keeps it; a function that takes a terminated string would see its
// beginning only, so names from outside go through WideName.
std::wstring Wide(std::string_view utf8);
std::string Narrow(std::wstring_view wide);

// A name for a function that takes a terminated string; kErrorInvalidName for one with a NUL.
SystemError WideName(std::string_view utf8, std::wstring& wide);

// Asks again with more room until it fits. fetch(buffer, size) gets the room in characters, the end
// included, and answers as GetWindowsDirectory does: the length without the end if it fitted, the
// room that is needed with the end, or 0 for a failure. A function that answers the room itself for
// a text that was cut (GetModuleFileName) is asked again too. Empty after a failure.
template <class Fetch>
std::wstring FetchText(Fetch&& fetch) {
  constexpr size_t kMostCharacters = 1 << 20;
  std::wstring text(MAX_PATH, L'\0');
  while (text.size() <= kMostCharacters) {
    const auto length = static_cast<size_t>(fetch(text.data(), static_cast<DWORD>(text.size())));
    if (length < text.size()) {
      text.resize(length);
      return text;
    }
    text.resize(length > text.size() ? length : text.size() * 2);
  }
  return {};
}

}  // namespace kestra
