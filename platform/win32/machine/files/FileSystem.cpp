#include "platform/machine/FileSystem.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/Facilities.h"
#include "platform/win32/machine/files/AccessList.h"
#include "platform/win32/machine/files/DirectoryListing.h"
#include "platform/win32/machine/files/FileChange.h"
#include "platform/win32/machine/files/FileReader.h"
#include "platform/win32/machine/files/FileStatus.h"
#include "platform/win32/machine/files/FileWriter.h"
#include "platform/win32/machine/files/QuietErrors.h"

namespace kestra {
namespace {

// Whether every part of what stands behind a path's root is an 8.3 name. A volume that makes none
// gives the path back as it is, with success.
bool IsShort(std::wstring_view path) {
  while (!path.empty()) {
    const size_t end = std::min(path.find(L'\\'), path.size());
    const std::wstring part(path.substr(0, end));
    BOOL isLegal = FALSE, hasBlanks = FALSE;
    if (!part.empty() &&
        (!CheckNameLegalDOS8Dot3W(part.c_str(), nullptr, 0, &hasBlanks, &isLegal) || !isLegal ||
         hasBlanks))
      return false;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return true;
}

class CWindowsFileSystem final : public CFileSystem {
 public:
  SystemError OpenDirectory(const std::string& path,
                            std::unique_ptr<CDirectoryListing>& listing) override {
    return OpenWindowsDirectory(path, listing);
  }
  SystemError Info(const std::string& path, FileInfo& info) override {
    NativePath native;
    const SystemError error = ReadNativePath(path, native);
    return error == kErrorSuccess ? ReadFileInfo(native, info) : error;
  }
  SystemError ShortPath(const std::string& path, std::string& shortPath) override {
    NativePath native;
    if (const SystemError error = ReadNativePath(path, native)) return error;
    const CQuietErrors quiet;
    const std::wstring text = FetchText([&](wchar_t* buffer, DWORD size) {
      return GetShortPathNameW(native.text.c_str(), buffer, size);
    });
    if (text.empty()) return LastError();
    if (text == native.text && !IsShort(std::wstring_view(text).substr(native.rootLength)))
      return kErrorNotSupported;
    shortPath = PlainPath(text);
    return kErrorSuccess;
  }
  SystemError OpenFile(const std::string& path, LastLink lastLink,
                       std::unique_ptr<CFileReader>& reader) override {
    return OpenWindowsFile(path, lastLink, reader);
  }
  // What is new has the rights that its directory gives.
  SystemError BeginWrite(const std::string& path, LastLink lastLink, Existing existing, NewRights,
                         std::unique_ptr<CFileWriter>& writer) override {
    return BeginWindowsWrite(path, lastLink, existing, writer);
  }
  SystemError RemoveFile(const std::string& path) override { return RemoveWindowsFile(path); }
  SystemError MakeDirectory(const std::string& path, NewRights) override {
    NativePath native;
    if (const SystemError error = ReadPathToChange(path, native)) return error;
    const CQuietErrors quiet;
    if (native.isRoot) return kErrorAlreadyExists;
    return CreateDirectoryW(native.text.c_str(), nullptr) ? kErrorSuccess : LastError();
  }
  SystemError RemoveEmptyDirectory(const std::string& path) override {
    return RemoveWindowsDirectory(path);
  }
  SystemError Rename(const std::string& from, const std::string& to) override {
    return RenameWindowsPath(from, to);
  }
  SystemError CopyPlainFile(const std::string& from, const std::string& to,
                            const os::CWaitable* pTermination) override {
    return CopyWindowsFile(from, to, pTermination);
  }
  SystemError SetAttributes(const std::string& path, uint32_t attributes) override {
    return SetWindowsAttributes(path, attributes);
  }
  SystemError VolumeFlags(const std::string& path, uint32_t& flags) override {
    NativePath native;
    if (const SystemError error = ReadNativePath(path, native)) return error;
    const CQuietErrors quiet;
    std::wstring root(native.text.size() + MAX_PATH, L'\0');
    if (!GetVolumePathNameW(native.text.c_str(), root.data(), static_cast<DWORD>(root.size())))
      return LastError();
    DWORD found = 0;
    if (!GetVolumeInformationW(root.c_str(), nullptr, 0, nullptr, nullptr, &found, nullptr, 0))
      return LastError();
    flags = found;
    return kErrorSuccess;
  }
  SystemError GrantEveryone(const std::string& path) override { return GrantEveryoneAccess(path); }
  SystemError MoveAtBoot(const std::string& from, const std::string& to) override {
    return MoveWindowsPathAtBoot(from, to);
  }
};

}  // namespace

std::unique_ptr<CFileSystem> MakeWindowsFileSystem() {
  return std::make_unique<CWindowsFileSystem>();
}

}  // namespace kestra
