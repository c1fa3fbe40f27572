#include "platform/os/MessageText.h"

#include "platform/os/HostEnvironment.h"
#include "platform/win32/base/Optional.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"

namespace kestra::os {
namespace {

// The inserts that some texts have are not ours to give: they stay as they stand. Line ends become
// blanks with the mask of the line width, the one at the end too.
constexpr DWORD kCommonFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS;
constexpr DWORD kOneLine = FORMAT_MESSAGE_MAX_WIDTH_MASK;

std::optional<std::string> Format(DWORD flags, HMODULE source, SystemError code, DWORD language) {
  wchar_t* pText = nullptr;
  // With a buffer that the system makes, the place for the text is one for its address.
  const DWORD length = FormatMessageW(kCommonFlags | flags, source, code, language,
                                      reinterpret_cast<wchar_t*>(&pText), 0, nullptr);
  const CUniqueLocal owner(pText);
  if (length == 0) return std::nullopt;
  return Narrow({pText, length});
}

std::optional<std::string> FormatLine(DWORD flags, HMODULE source, SystemError code) {
  std::optional<std::string> line = Format(flags | kOneLine, source, code, 0);
  if (line) line->resize(line->find_last_not_of(' ') + 1);
  return line;
}

// The greatest head of at most limit bytes that does not end inside a character.
void CutToBytes(std::string& text, size_t limit) {
  if (text.size() <= limit) return;
  while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0) == 0x80) --limit;
  text.resize(limit);
}

// The module that is mapped at an address, kept until the owner lets go; none for any other number,
// which may come from outside.
CUniqueModule ModuleAt(uintptr_t address) {
  if (address == 0) address = LibraryLoadAddress();
  HMODULE module = nullptr;
  const auto place = reinterpret_cast<LPCWSTR>(address);
  if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, place, &module))
    return CUniqueModule();
  CUniqueModule owner(module);
  return reinterpret_cast<uintptr_t>(module) == address ? std::move(owner) : CUniqueModule();
}

}  // namespace

std::optional<std::string> SystemErrorText(SystemError code) {
  return Format(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code,
                MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT));
}

std::optional<std::string> SystemErrorLine(SystemError code) {
  return FormatLine(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code);
}

// By its full path, so that no other file of that name is taken for it.
std::optional<std::string> NetworkErrorText(SystemError code) {
  const std::wstring folder = FetchText(GetSystemDirectoryW);
  if (folder.empty()) return std::nullopt;
  const std::wstring path = folder + L"\\NetMsg.dll";
  const CUniqueModule texts(LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
  if (!texts) return std::nullopt;
  return FormatLine(FORMAT_MESSAGE_FROM_HMODULE, texts.get(), code);
}

std::optional<std::string> RemoteAccessErrorText(SystemError code) {
  static const auto pGetText =
      Optional<DWORD WINAPI(UINT, LPWSTR, DWORD)>(L"rasapi32.dll", "RasGetErrorStringW");
  constexpr DWORD kRoom = 256;
  wchar_t text[kRoom] = {};
  if (!pGetText || pGetText(code, text, kRoom) != ERROR_SUCCESS || text[0] == L'\0')
    return std::nullopt;
  text[kRoom - 1] = L'\0';
  return Narrow(text);
}

std::optional<std::string> LoadModuleString(uintptr_t module, uint32_t id) {
  constexpr uint32_t kGreatestId = 0xFFFF;  // a greater one would be taken for its lower half
  constexpr int kRoom = 256;
  const CUniqueModule owner = ModuleAt(module);
  wchar_t text[kRoom];
  if (!owner || id > kGreatestId) return std::nullopt;
  const int length = LoadStringW(owner.get(), id, text, kRoom);
  if (length <= 0) return std::nullopt;
  std::string narrow = Narrow({text, static_cast<size_t>(length)});
  CutToBytes(narrow, 255);
  return narrow;
}

std::optional<std::string> ModuleFileName(uintptr_t module) {
  const CUniqueModule owner = ModuleAt(module);
  if (!owner) return std::nullopt;
  const std::wstring path = FetchText(
      [&](wchar_t* buffer, DWORD size) { return GetModuleFileNameW(owner.get(), buffer, size); });
  if (path.empty()) return std::nullopt;
  return Narrow(path);
}

}  // namespace kestra::os
