#include "platform/win32/base/Wide.h"

#include "platform/base/text/Utf16.h"

namespace kestra {
namespace {

constexpr size_t kSurrogateBytes = 3;

// Whether the three bytes at a place are those of a surrogate.
bool IsSurrogateAt(std::string_view utf8, size_t at) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(utf8[at + i]); };
  return utf8.size() - at >= kSurrogateBytes && byte(0) == 0xED && byte(1) >= 0xA0 &&
         byte(1) < 0xC0 && (byte(2) & 0xC0) == 0x80;
}

wchar_t SurrogateAt(std::string_view utf8, size_t at) {
  const auto bits = [&](size_t i) { return static_cast<unsigned>(utf8[at + i]) & 0x3F; };
  return static_cast<wchar_t>(0xD000 | bits(1) << 6 | bits(2));
}

void AppendWide(std::string_view utf8, std::wstring& wide) {
  const int length = static_cast<int>(utf8.size());
  const int needed = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
  const size_t before = wide.size();
  wide.resize(before + static_cast<size_t>(needed));
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data() + before, needed);
}

}  // namespace

std::wstring Wide(std::string_view utf8) {
  std::wstring wide;
  size_t begin = 0;
  for (size_t at = utf8.find('\xED'); at != std::string_view::npos;
       at = utf8.find('\xED', at + 1)) {
    if (!IsSurrogateAt(utf8, at)) continue;
    AppendWide(utf8.substr(begin, at - begin), wide);
    wide += SurrogateAt(utf8, at);
    begin = at + kSurrogateBytes;
  }
  AppendWide(utf8.substr(begin), wide);
  return wide;
}

// The system's own function gives up surrogates that stand alone.
std::string Narrow(std::wstring_view wide) {
  return Utf8FromUtf16({reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t)});
}

SystemError WideName(std::string_view utf8, std::wstring& wide) {
  if (utf8.find('\0') != std::string_view::npos) return kErrorInvalidName;
  wide = Wide(utf8);
  return kErrorSuccess;
}

}  // namespace kestra
