#include "platform/win32/machine/files/DirectoryListing.h"

#include <vector>

#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/files/FileStatus.h"
#include "platform/win32/machine/files/QuietErrors.h"

namespace kestra {
namespace {

struct Entry {
  std::string name;
  FileInfo info;
};

// Many entries at a time, each with its number and all its times: no file is opened for them.
class CEntriesByHandle {
 public:
  CEntriesByHandle(HANDLE directory, uint64_t volume)
      : m_directory(directory), m_volume(volume), m_buffer(kBufferBytes / sizeof(uint64_t)) {}

  bool HasBegun() const { return m_hasBegun; }
  SystemError Next(Entry& entry) {
    if (!m_pNext) {
      const SystemError error = Fetch();
      if (error != kErrorSuccess) return error;
    }
    const auto& found = *reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(m_pNext);
    entry.name = Narrow({found.FileName, found.FileNameLength / sizeof(wchar_t)});
    entry.info = InfoOf(found, m_volume);
    m_pNext = found.NextEntryOffset == 0 ? nullptr : m_pNext + found.NextEntryOffset;
    return kErrorSuccess;
  }

 private:
  static constexpr DWORD kBufferBytes = 64 * 1024;

  SystemError Fetch() {
    const bool isFetched = GetFileInformationByHandleEx(m_directory, FileIdBothDirectoryInfo,
                                                        m_buffer.data(), kBufferBytes);
    const SystemError error = isFetched ? kErrorSuccess : LastError();
    // The root of a drive lists not even itself.
    if (error == kErrorFileNotFound && !m_hasBegun) return kErrorNoMoreFiles;
    if (isFetched) {
      m_hasBegun = true;
      m_pNext = reinterpret_cast<const char*>(m_buffer.data());
    }
    return error;
  }

  HANDLE m_directory;
  uint64_t m_volume;
  std::vector<uint64_t> m_buffer;  // aligned as the entries are
  const char* m_pNext = nullptr;   // in the buffer; null when it is used up
  bool m_hasBegun = false;
};

class CEntriesByName {
 public:
  explicit CEntriesByName(const NativePath& path)
      : m_pattern(path.isRoot ? path.text + L'*' : path.text + L"\\*") {}

  SystemError Next(Entry& entry) {
    WIN32_FIND_DATAW found{};
    const SystemError error = m_find ? FindNext(found) : FindFirst(found);
    if (error != kErrorSuccess) return error;
    entry.name = Narrow(found.cFileName);
    entry.info = InfoOf(found);
    return kErrorSuccess;
  }

 private:
  SystemError FindFirst(WIN32_FIND_DATAW& found) {
    const CQuietErrors quiet;
    m_find = CUniqueFind(FindFirstFileW(m_pattern.c_str(), &found));
    if (m_find) return kErrorSuccess;
    const SystemError error = LastError();
    return error == kErrorFileNotFound ? kErrorNoMoreFiles : error;
  }
  SystemError FindNext(WIN32_FIND_DATAW& found) {
    return FindNextFileW(m_find.get(), &found) ? kErrorSuccess : LastError();
  }

  std::wstring m_pattern;
  CUniqueFind m_find;
};

class CWindowsDirectoryListing final : public CDirectoryListing {
 public:
  CWindowsDirectoryListing(const NativePath& path, CUniqueHandle directory, uint64_t volume,
                           bool isByName)
      : m_directory(std::move(directory)),
        m_byHandle(m_directory.get(), volume),
        m_byName(path),
        m_isByName(isByName) {}

  SystemError OwnInfo(FileInfo& info) override { return ReadFileInfo(m_directory.get(), info); }
  SystemError Next(std::string& name) override {
    SystemError error = m_isByName ? m_byName.Next(m_entry) : m_byHandle.Next(m_entry);
    if (!m_isByName && !m_byHandle.HasBegun() && IsUnsupported(error)) {
      m_isByName = true;
      error = m_byName.Next(m_entry);
    }
    if (error == kErrorSuccess) name = m_entry.name;
    return error;
  }
  // As it was when its block of entries was read.
  SystemError Info(FileInfo& info) override {
    if (m_entry.name.empty()) return kErrorInvalidParameter;
    info = m_entry.info;
    return kErrorSuccess;
  }

 private:
  CUniqueHandle m_directory;
  CEntriesByHandle m_byHandle;
  CEntriesByName m_byName;
  bool m_isByName;
  Entry m_entry;  // without a name before the first one
};

SystemError Open(const std::string& path, bool isByName,
                 std::unique_ptr<CDirectoryListing>& listing) {
  NativePath native;
  CUniqueHandle directory;
  FileInfo info;
  SystemError error = ReadNativePath(path, native);
  if (error == kErrorSuccess)
    error = OpenExisting(native, FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES, kShareAll,
                         FILE_FLAG_BACKUP_SEMANTICS, directory);
  if (error == kErrorSuccess) error = ReadFileInfo(directory.get(), info);
  if (error != kErrorSuccess) return error;
  if ((info.attributes & kFileAttributeDirectory) == 0) return kErrorDirectory;
  listing = std::make_unique<CWindowsDirectoryListing>(native, std::move(directory),
                                                       info.identity.volume, isByName);
  return kErrorSuccess;
}

}  // namespace

SystemError OpenWindowsDirectory(const std::string& path,
                                 std::unique_ptr<CDirectoryListing>& listing) {
  return Open(path, false, listing);
}

SystemError OpenWindowsDirectoryByName(const std::string& path,
                                       std::unique_ptr<CDirectoryListing>& listing) {
  return Open(path, true, listing);
}

}  // namespace kestra
