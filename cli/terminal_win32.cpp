#include <windows.h>
//
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "cli/Terminal.h"

namespace kestra::cli {
namespace {

// What the handler, which runs on a thread of the system's, may touch.
std::atomic<HANDLE> g_event{nullptr};
std::atomic<bool> g_wasInterrupted{false};

// The first interrupt is taken; for the second the next handler, the system's, ends the process.
BOOL WINAPI OnControl(DWORD control) {
  if (control != CTRL_C_EVENT && control != CTRL_BREAK_EVENT) return FALSE;
  if (g_wasInterrupted.exchange(true)) return FALSE;
  SetEvent(g_event);
  return TRUE;
}

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

UINT g_consoleCodePage = 0;

}  // namespace

// The runtime opens no file for a stream that the process was started without: using it fails then.
void ReserveStandardStreams() {
  for (std::FILE* pStream : {stdin, stdout, stderr}) _setmode(_fileno(pStream), _O_BINARY);
  g_consoleCodePage = GetConsoleOutputCP();
  if (g_consoleCodePage == 0 || !SetConsoleOutputCP(CP_UTF8)) return;
  std::atexit([] { SetConsoleOutputCP(g_consoleCodePage); });
}

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

bool IsDirectory(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
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

size_t TerminalWidth() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(HandleOf(Stream::Out), &info)) return 0;
  return static_cast<size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

CInterruptScope::CInterruptScope() {
  const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  if (!event) return;
  m_event = reinterpret_cast<intptr_t>(event);
  g_event = event;
  g_wasInterrupted = false;
  m_isInstalled = SetConsoleCtrlHandler(OnControl, TRUE) != 0;
}

CInterruptScope::~CInterruptScope() {
  if (m_isInstalled) SetConsoleCtrlHandler(OnControl, FALSE);
  const HANDLE event = g_event.exchange(nullptr);
  if (event) CloseHandle(event);
}

bool CInterruptScope::WasInterrupted() const {
  return g_wasInterrupted;
}

}  // namespace kestra::cli
