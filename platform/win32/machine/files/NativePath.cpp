#include "platform/win32/machine/files/NativePath.h"

#include <algorithm>
#include <utility>

#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"

namespace kestra {
namespace {

constexpr std::wstring_view kPrefix = L"\\\\?\\";
constexpr std::wstring_view kSharePrefix = L"\\\\?\\UNC\\";
constexpr std::wstring_view kVolumePrefix = L"\\\\?\\Volume{";
constexpr std::wstring_view kDevicePrefix = L"\\\\.\\";
constexpr size_t kMostCharacters = 32767;

bool EqualsAscii(std::wstring_view a, std::wstring_view b) {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                              static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}
bool StartsWith(std::wstring_view text, std::wstring_view start) {
  return EqualsAscii(text.substr(0, start.size()), start);
}

bool StartsWithDrive(std::wstring_view text) {
  const wchar_t letter = text.empty() ? L'\0' : text[0] | 0x20;
  return letter >= L'a' && letter <= L'z' && text.substr(1, 2) == L":\\";
}

// So that the system's rules, and ours, hold for what came with the prefix already, too.
std::wstring WithoutPrefix(std::wstring text) {
  if (StartsWith(text, kSharePrefix)) return L"\\\\" + text.substr(kSharePrefix.size());
  if (StartsWith(text, kPrefix) && StartsWithDrive(std::wstring_view(text).substr(kPrefix.size())))
    return text.substr(kPrefix.size());
  return text;
}

// A part that the system makes another one of when it makes a path whole.
bool HasPartToStrip(std::string_view path) {
  while (!path.empty()) {
    const size_t end = std::min(path.find_first_of("\\/"), path.size());
    const std::string_view part = path.substr(0, end);
    if (part != "." && part != ".." && (part.ends_with('.') || part.ends_with(' '))) return true;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return false;
}

// Behind the server and the share of "\\server\share\x". 0 for what has no such root.
size_t ShareRoot(std::wstring_view text, SystemError& error) {
  const size_t behindServer = text.find(L'\\', 2);
  if (behindServer == std::wstring_view::npos || behindServer == 2) return 0;
  const size_t behindShare = std::min(text.find(L'\\', behindServer + 1), text.size());
  const std::wstring_view share = text.substr(behindServer + 1, behindShare - behindServer - 1);
  // What such a "share" holds is no file, and a pipe may keep us waiting.
  for (const std::wstring_view other : {L"pipe", L"mailslot", L"ipc$"})
    if (EqualsAscii(share, other)) error = kErrorAccessDenied;
  return share.empty() ? 0 : behindShare;
}

// How much of a whole path is its root, without a separator at the end.
SystemError RootLength(std::wstring_view text, size_t& length) {
  length = 0;
  SystemError error = kErrorSuccess;
  if (StartsWithDrive(text)) {
    length = 2;
  } else if (StartsWith(text, kVolumePrefix)) {
    const size_t end = text.find(L"}\\");
    if (end == std::wstring_view::npos) return kErrorAccessDenied;
    length = end + 1;
  } else if (StartsWith(text, kPrefix) || StartsWith(text, kDevicePrefix)) {
    return kErrorAccessDenied;
  } else if (StartsWith(text, L"\\\\")) {
    length = ShareRoot(text, error);
  }
  return error == kErrorSuccess && length == 0 ? kErrorPathNotFound : error;
}

}  // namespace

SystemError ReadNativePath(const std::string& path, NativePath& native) {
  if (path.empty()) return kErrorPathNotFound;
  if (path.find('\0') != std::string::npos) return kErrorInvalidName;
  // UTF-8 has up to three bytes for what is one character here.
  if (path.size() > 3 * kMostCharacters) return kErrorFilenameExceedsRange;
  if (path.starts_with("\\\\?\\") && HasPartToStrip(path)) return kErrorInvalidName;
  const std::wstring given = WithoutPrefix(Wide(path));
  std::wstring whole = FetchText([&](wchar_t* buffer, DWORD size) {
    return GetFullPathNameW(given.c_str(), size, buffer, nullptr);
  });
  if (whole.empty()) return LastError();
  if (whole.size() + kSharePrefix.size() > kMostCharacters) return kErrorFilenameExceedsRange;
  size_t root = 0;
  if (const SystemError error = RootLength(whole, root)) return error;
  // A stream is no file of its own: its attributes and its end are those of the file.
  if (whole.find(L':', root) != std::wstring::npos) return kErrorInvalidName;

  native = {};
  while (whole.size() > root + 1 && whole.ends_with(L'\\')) {
    whole.pop_back();
    native.isDirectoryOnly = true;
  }
  native.isRoot = whole.size() <= root + 1;
  if (native.isRoot && !whole.ends_with(L'\\')) whole += L'\\';
  const size_t behindRoot = whole.size() - root;
  if (StartsWith(whole, kPrefix))
    native.text = std::move(whole);
  else if (StartsWith(whole, L"\\\\"))
    native.text.assign(kSharePrefix).append(whole, 2);
  else
    native.text.assign(kPrefix).append(whole);
  native.rootLength = native.text.size() - behindRoot;
  return kErrorSuccess;
}

SystemError ReadPathToChange(const std::string& path, NativePath& native) {
  return HasPartToStrip(path) ? kErrorInvalidName : ReadNativePath(path, native);
}

std::string PlainPath(std::wstring_view native) {
  return Narrow(WithoutPrefix(std::wstring(native)));
}

}  // namespace kestra
