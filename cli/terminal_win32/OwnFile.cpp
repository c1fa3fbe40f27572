#include "cli/shell/input/OwnFile.h"

#include <windows.h>

#include "cli/terminal_win32/Text.h"

namespace kestra::cli {
namespace {

constexpr int kTries = 20;  // while another process has the file
constexpr DWORD kBetweenTries = 25;

std::string Sentence(DWORD error) {
  wchar_t text[512];
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                      nullptr, error, 0, text, 512, nullptr);
  std::string sentence = length > 0 ? Narrow(text) : "system error " + std::to_string(error);
  sentence.erase(sentence.find_last_not_of(" \r\n") + 1);
  return sentence;
}

class CFile {
 public:
  CFile() = default;
  ~CFile() {
    if (m_file != INVALID_HANDLE_VALUE) CloseHandle(m_file);
  }
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  // Alone: the others wait. The user's own folder gives the file its rights.
  DWORD Open(const std::string& path) {
    const std::wstring wide = Wide(path);
    const std::wstring directory = wide.substr(0, wide.find_last_of(L"\\/"));
    if (directory.size() < wide.size()) CreateDirectoryW(directory.c_str(), nullptr);
    for (int i = 0; i < kTries; ++i) {
      m_file = CreateFileW(wide.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
      if (m_file != INVALID_HANDLE_VALUE) return ERROR_SUCCESS;
      if (GetLastError() != ERROR_SHARING_VIOLATION) return GetLastError();
      Sleep(kBetweenTries);
    }
    return ERROR_SHARING_VIOLATION;
  }

  DWORD Read(std::string& content) {
    char buffer[size_t{16} << 10];
    for (;;) {
      DWORD count = 0;
      if (!ReadFile(m_file, buffer, sizeof(buffer), &count, nullptr)) return GetLastError();
      if (count == 0) return ERROR_SUCCESS;
      content.append(buffer, count);
      if (content.size() > kLongestOwnFile) return ERROR_FILE_TOO_LARGE;
    }
  }

  DWORD Write(const std::string& text, DWORD from) {
    SetFilePointer(m_file, 0, nullptr, from);
    DWORD count = 0;
    const bool isWritten =
        WriteFile(m_file, text.data(), static_cast<DWORD>(text.size()), &count, nullptr) != 0;
    return isWritten && count == text.size() ? ERROR_SUCCESS : GetLastError();
  }

  DWORD EndHere() { return SetEndOfFile(m_file) ? ERROR_SUCCESS : GetLastError(); }

 private:
  HANDLE m_file = INVALID_HANDLE_VALUE;
};

}  // namespace

std::string AppendToOwnFile(const std::string& path, const std::string& text) {
  CFile file;
  DWORD error = file.Open(path);
  if (error == ERROR_SUCCESS) error = file.Write(text, FILE_END);
  return error == ERROR_SUCCESS ? std::string() : Sentence(error);
}

std::string TrimOwnFile(const std::string& path,
                        const std::function<std::string(const std::string&)>& trim,
                        std::string& content) {
  CFile file;
  DWORD error = file.Open(path);
  if (error == ERROR_SUCCESS) error = file.Read(content);
  if (error != ERROR_SUCCESS) {
    content.clear();
    return Sentence(error);
  }
  std::string trimmed = trim(content);
  if (trimmed.size() < content.size()) {
    error = file.Write(trimmed, FILE_BEGIN);
    if (error == ERROR_SUCCESS) error = file.EndHere();
  }
  content = std::move(trimmed);
  return error == ERROR_SUCCESS ? std::string() : Sentence(error);
}

}  // namespace kestra::cli
