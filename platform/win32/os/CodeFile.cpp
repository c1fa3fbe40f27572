#include "platform/os/CodeFile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"

namespace kestra::os {
namespace {

constexpr DWORD kMostBlockBytes = 1 << 20;

using VersionBlock = std::vector<char>;

// Of a file that has no version resource: whether it is a library at all.
SystemError CheckLibrary(const std::wstring& path) {
  const CUniqueModule file(LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
  if (file) return kErrorSuccess;
  const SystemError error = LastError();
  const bool isNoLibrary = error == ERROR_BAD_EXE_FORMAT || error == ERROR_FILE_INVALID ||
                           error == ERROR_INVALID_PARAMETER || error == ERROR_BAD_FORMAT;
  return isNoLibrary ? kErrorInvalidData : error;
}

// Empty, with success, for a library that has none. The resource of the file itself is read, and
// not that of the file of texts in the user's language.
SystemError ReadVersionBlock(const std::string& path, VersionBlock& block) {
  block.clear();
  std::wstring name;
  if (const SystemError error = WideName(path, name)) return error;
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeExW(FILE_VER_GET_NEUTRAL, name.c_str(), &ignored);
  if (size == 0) return CheckLibrary(name);
  if (size > kMostBlockBytes) return kErrorInvalidData;
  block.resize(size);
  if (GetFileVersionInfoExW(FILE_VER_GET_NEUTRAL, name.c_str(), 0, size, block.data()))
    return kErrorSuccess;
  block.clear();
  return LastError();
}

// An entry: count elements as the block says, and not more than fit into what is left of it.
template <class Element>
std::basic_string_view<Element> Find(const VersionBlock& block, const std::wstring& name) {
  void* pFound = nullptr;
  UINT count = 0;
  if (block.empty() || !VerQueryValueW(block.data(), name.c_str(), &pFound, &count)) return {};
  const char* const pBegin = static_cast<const char*>(pFound);
  const char* const pEnd = block.data() + block.size();
  if (pBegin < block.data() || pBegin >= pEnd) return {};
  const auto most = static_cast<size_t>(pEnd - pBegin) / sizeof(Element);
  return {static_cast<const Element*>(pFound), std::min<size_t>(count, most)};
}

// Where the strings of the file's first language are; empty for none.
std::wstring FirstStringTable(const VersionBlock& block) {
  struct Translation {
    WORD language;
    WORD codePage;
  };
  const std::string_view found = Find<char>(block, L"\\VarFileInfo\\Translation");
  if (found.size() < sizeof(Translation)) return {};
  Translation first;
  std::memcpy(&first, found.data(), sizeof first);
  wchar_t path[64] = {};
  std::swprintf(path, std::size(path), L"\\StringFileInfo\\%04x%04x\\", first.language,
                first.codePage);
  return path;
}

// What tells one build from another where it has no number: the size and the time of last change.
SystemError DescribeFile(const std::string& path, std::string& text) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (!GetFileAttributesExW(Wide(path).c_str(), GetFileExInfoStandard, &data)) return LastError();
  const auto join = [](DWORD high, DWORD low) { return (static_cast<uint64_t>(high) << 32) | low; };
  text =
      std::to_string(join(data.nFileSizeHigh, data.nFileSizeLow)) + '-' +
      std::to_string(join(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime));
  return kErrorSuccess;
}

std::string DottedNumber(DWORD high, DWORD low) {
  return std::to_string(HIWORD(high)) + '.' + std::to_string(LOWORD(high)) + '.' +
         std::to_string(HIWORD(low)) + '.' + std::to_string(LOWORD(low));
}

}  // namespace

const char* LibraryEnding() {
  return ".dll";
}

SystemError ReadLibraryComments(const std::string& path, std::string& comments) {
  comments.clear();
  VersionBlock block;
  if (const SystemError error = ReadVersionBlock(path, block)) return error;
  const std::wstring table = FirstStringTable(block);
  if (table.empty()) return kErrorSuccess;
  comments = Narrow(Find<wchar_t>(block, table + L"Comments"));
  comments.resize(std::min(comments.size(), comments.find('\0')));
  return kErrorSuccess;
}

SystemError ReadLibraryVersion(const std::string& path, std::string& version) {
  version.clear();
  VersionBlock block;
  if (const SystemError error = ReadVersionBlock(path, block)) return error;
  VS_FIXEDFILEINFO fixed{};
  const std::string_view found = Find<char>(block, L"\\");
  if (found.size() < sizeof fixed) return DescribeFile(path, version);
  std::memcpy(&fixed, found.data(), sizeof fixed);
  version = DottedNumber(fixed.dwFileVersionMS, fixed.dwFileVersionLS);
  return kErrorSuccess;
}

}  // namespace kestra::os
