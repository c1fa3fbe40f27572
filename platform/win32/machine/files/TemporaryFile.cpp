#include "platform/win32/machine/files/TemporaryFile.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

#include "platform/os/NamedLock.h"
#include "platform/win32/base/Optional.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/files/FileStatus.h"

namespace kestra {
namespace {

// A name that nobody can foresee; empty if the system gives no random bytes.
std::wstring NewName(const NativePath& target) {
  // Source: the Win32 page of RtlGenRandom, which this is the export of.
  const auto pGenRandom =
      Optional<BOOLEAN WINAPI(void*, ULONG)>(L"advapi32.dll", "SystemFunction036");
  std::array<unsigned char, 16> random{};
  if (!pGenRandom || !pGenRandom(random.data(), static_cast<ULONG>(random.size()))) return {};
  std::wstring name = target.Directory() + L".kestra-";
  for (const unsigned char byte : random) {
    name += L"0123456789abcdef"[byte >> 4];
    name += L"0123456789abcdef"[byte & 15];
  }
  return name;
}

// Held while a name gets its file in steps: in the moment of an exchange the name seems to be free,
// and a writer of ours that took it then would have the old file lost. Two spellings of a path are
// two names here; for those the exchange is taken back.
SystemError AcquireTurn(const NativePath& target, std::unique_ptr<os::CNamedLock>& turn) {
  constexpr uint32_t kMostWaitMs = 200;  // no cancel is at hand
  std::wstring name = target.text;
  CharUpperBuffW(name.data(), static_cast<DWORD>(name.size()));
  const auto result =
      os::AcquireNamedLock("kestra.file." + Narrow(name), nullptr, kMostWaitMs, turn);
  return result == os::NamedLockResult::Held ? kErrorSuccess : kErrorSharingViolation;
}

// A read-only file does not go otherwise.
void Remove(const std::wstring& name) {
  if (DeleteFileW(name.c_str()) || GetLastError() != ERROR_ACCESS_DENIED) return;
  SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL);
  DeleteFileW(name.c_str());
}

}  // namespace

CTemporaryFile::~CTemporaryFile() {
  if (m_name.empty()) return;
  m_file = CUniqueHandle();
  Remove(m_name);
}

SystemError CTemporaryFile::Choose() {
  m_name = NewName(m_target);
  return m_name.empty() ? kErrorGenFailure : kErrorSuccess;
}

SystemError CTemporaryFile::Open(DWORD attributes) {
  constexpr DWORD kAccess = GENERIC_READ | GENERIC_WRITE | DELETE | READ_CONTROL | WRITE_DAC;
  std::wstring name = NewName(m_target);
  if (name.empty()) return kErrorGenFailure;
  m_file = CUniqueHandle(CreateFileW(name.c_str(), kAccess, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                     nullptr, CREATE_NEW, attributes, nullptr));
  if (!m_file) return LastError();
  m_name = std::move(name);
  return kErrorSuccess;
}

SystemError CTemporaryFile::MoveTo(Existing existing) {
  const SystemError error = existing == Existing::Refuse ? MoveToFreeName() : MoveOver();
  if (error == kErrorSuccess) Keep();
  return error;
}

void CTemporaryFile::Keep() {
  m_file = CUniqueHandle();
  m_name.clear();
}

SystemError CTemporaryFile::MoveToFreeName() {
  m_file = CUniqueHandle();
  std::unique_ptr<os::CNamedLock> turn;
  SystemError error = AcquireTurn(m_target, turn);
  if (error != kErrorSuccess) return error;
  if (MoveFileExW(m_name.c_str(), m_target.text.c_str(), MOVEFILE_WRITE_THROUGH))
    return kErrorSuccess;
  error = LastError();
  return error == kErrorAlreadyExists ? kErrorFileExists : error;
}

// The rename of Windows 10 replaces a file that others have open; that of older systems, and of
// Wine, only one that nobody has. There the two have to change places.
SystemError CTemporaryFile::MoveOver() {
  SystemError error = RenameOpenFile();
  if (!IsUnsupported(error)) return error;
  m_file = CUniqueHandle();
  std::unique_ptr<os::CNamedLock> turn;
  error = AcquireTurn(m_target, turn);
  if (error != kErrorSuccess) return error;
  constexpr DWORD kFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  if (MoveFileExW(m_name.c_str(), m_target.text.c_str(), kFlags)) return kErrorSuccess;
  error = LastError();
  return error == kErrorAccessDenied || error == kErrorSharingViolation ? Exchange() : error;
}

// FILE_RENAME_INFO as it is since Windows 10, with flags. Source: the page of FileRenameInfoEx.
SystemError CTemporaryFile::RenameOpenFile() {
  constexpr auto kFileRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
  constexpr DWORD kReplace = 1, kPosixSemantics = 2;
  const std::wstring& name = m_target.text;
  const size_t nameBytes = name.size() * sizeof(wchar_t);
  std::vector<uint64_t> buffer((sizeof(FILE_RENAME_INFO) + nameBytes) / sizeof(uint64_t) + 1);
  auto* const pInfo = reinterpret_cast<FILE_RENAME_INFO*>(buffer.data());
  const DWORD flags = kReplace | kPosixSemantics;
  std::memcpy(pInfo, &flags, sizeof flags);  // where ReplaceIfExists was
  pInfo->FileNameLength = static_cast<DWORD>(nameBytes);
  std::memcpy(pInfo->FileName, name.data(), nameBytes);
  const auto size = static_cast<DWORD>(buffer.size() * sizeof(uint64_t));
  if (!SetFileInformationByHandle(m_file.get(), kFileRenameInfoEx, pInfo, size)) return LastError();
  // It is in place by now and whole; a failure decides only what a crash of the system would show.
  FlushFileBuffers(m_file.get());
  return kErrorSuccess;
}

// With a name for the old file, so that it can be put back: without one it would be lost if the new
// one could not get its name any more. For a moment nothing has the target's name.
SystemError CTemporaryFile::Exchange() {
  const std::wstring old = NewName(m_target);
  if (old.empty()) return kErrorGenFailure;
  constexpr DWORD kFlags = REPLACEFILE_IGNORE_MERGE_ERRORS;
  if (ReplaceFileW(m_target.text.c_str(), m_name.c_str(), old.c_str(), kFlags, nullptr, nullptr)) {
    Remove(old);
    return kErrorSuccess;
  }
  const SystemError error = LastError();
  // Somebody came into that moment.
  if (error == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2 &&
      MoveFileExW(old.c_str(), m_target.text.c_str(), MOVEFILE_WRITE_THROUGH))
    return kErrorSharingViolation;
  return error;
}

}  // namespace kestra
