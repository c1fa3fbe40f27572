#include <windows.h>
//
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "cli/Terminal.h"
#include "cli/render/Width.h"
#include "cli/terminal_win32/Text.h"

namespace kestra::cli {
namespace {

HANDLE HandleOf(Stream stream) {
  switch (stream) {
    case Stream::In:
      return GetStdHandle(STD_INPUT_HANDLE);
    case Stream::Out:
      return GetStdHandle(STD_OUTPUT_HANDLE);
    default:
      return GetStdHandle(STD_ERROR_HANDLE);
  }
}

}  // namespace

std::string Narrow(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 0) return {};
  std::string narrow(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr);
  narrow.pop_back();  // the end
  return narrow;
}

std::wstring Wide(const std::string& text) {
  const int length = static_cast<int>(text.size());
  const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
  std::wstring wide(static_cast<size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), size);
  return wide;
}

namespace {

UINT g_consoleCodePage = 0;

}  // namespace

// The runtime opens no file for a stream that the process was started without: using it fails then.
void ReserveStandardStreams() {
  for (std::FILE* pStream : {stdin, stdout, stderr}) _setmode(_fileno(pStream), _O_BINARY);
  g_consoleCodePage = GetConsoleOutputCP();
  if (g_consoleCodePage == 0 || !SetConsoleOutputCP(CP_UTF8)) return;
  std::atexit([] { SetConsoleOutputCP(g_consoleCodePage); });
}

// The heap of Windows is one for all threads, and grows in large steps by itself.
void PrepareHeap() {}

// What main got is in the system's code page, and may have had its wildcards expanded.
std::vector<std::string> CommandLine(int argc, char** argv) {
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  if (!words) return {argv, argv + argc};
  std::vector<std::string> result;
  for (int i = 0; i < count; ++i) result.push_back(Narrow(words[i]));
  LocalFree(words);
  return result;
}

std::FILE* OpenForReading(const std::string& path) {
  return _wfopen(Wide(path).c_str(), L"rb");
}

std::FILE* OpenForWriting(const std::string& path) {
  return _wfopen(Wide(path).c_str(), L"wb");
}

bool IsDirectory(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::vector<FoundPath> PathsBeginningWith(const std::string& begun) {
  constexpr size_t kMostEntries = 10000;
  const size_t end = begun.find_last_of("\\/:");
  const std::string directory = end == std::string::npos ? std::string() : begun.substr(0, end + 1);
  const std::string name = begun.substr(directory.size());
  std::vector<FoundPath> found;
  if (name.find_first_of("*?") != std::string::npos) return found;
  WIN32_FIND_DATAW data{};
  const HANDLE search = FindFirstFileW(Wide(begun + '*').c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) return found;
  const std::string folded = FoldCase(name);
  do {
    const std::string each = Narrow(data.cFileName);
    const bool isHidden = each.starts_with('.') && !name.starts_with('.');
    // A pattern finds files by their short names too.
    if (isHidden || !FoldCase(each).starts_with(folded) || Printable(each) != each) continue;
    const bool isDirectory = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    found.push_back({directory + each + (isDirectory ? "\\" : ""), isDirectory});
  } while (found.size() < kMostEntries && FindNextFileW(search, &data));
  FindClose(search);
  std::sort(found.begin(), found.end(), [](const auto& left, const auto& right) {
    return FoldCase(left.text) < FoldCase(right.text);
  });
  return found;
}

bool IsFullPath(const std::string& text) {
  const bool hasDrive = text.size() > 2 && text[1] == ':' && (text[2] == '\\' || text[2] == '/');
  return hasDrive || text.starts_with("\\\\");
}

std::string FullPath(const std::string& path) {
  const std::wstring wide = Wide(path);
  std::wstring full(GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), L'\0');
  const DWORD length =
      GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
  return length > 0 && length < full.size() ? Narrow(full.c_str()) : path;
}

bool IsTerminal(Stream stream) {
  DWORD mode = 0;
  return GetConsoleMode(HandleOf(stream), &mode) != 0;
}

size_t TerminalWidth(Stream stream) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(HandleOf(stream), &info)) return 0;
  return static_cast<size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

std::string FoldCase(const std::string& utf8) {
  std::wstring wide = Wide(utf8);
  CharLowerBuffW(wide.data(), static_cast<DWORD>(wide.size()));
  return Narrow(wide.c_str());
}

std::optional<std::string> EnvironmentText(const char* name) {
  const std::wstring wide = Wide(name);
  SetLastError(ERROR_SUCCESS);
  std::wstring text(GetEnvironmentVariableW(wide.c_str(), nullptr, 0), L'\0');
  if (text.empty()) {
    return GetLastError() == ERROR_ENVVAR_NOT_FOUND ? std::nullopt : std::optional<std::string>("");
  }
  const DWORD length =
      GetEnvironmentVariableW(wide.c_str(), text.data(), static_cast<DWORD>(text.size()));
  if (length >= text.size()) return std::nullopt;
  return Narrow(text.c_str());
}

std::string StateDirectory() {
  return EnvironmentText("LOCALAPPDATA").value_or(std::string());
}

}  // namespace kestra::cli
