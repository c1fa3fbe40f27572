#include "VLib/src/paths/RenameAtBoot.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>
#include <vector>

#include "VLib/src/paths/WininitFile.h"
#include "VLib/src/system/OsKind.h"
#include "VLib/src/threads/TerminationLook.h"
#include "platform/machine/FileSystem.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {
namespace {

// Deeper than any path that the functions of Windows take has folders.
constexpr int kMaximumDepth = 512;
constexpr size_t kMaximumIniBytes = 1 << 20;

std::atomic<bool> g_isRestartNeeded{false};

std::string Join(const std::string& folder, const std::string& name) {
  return folder.ends_with('\\') ? folder + name : folder + "\\" + name;
}

// All that a directory's own move needs before it: its content, the deepest first.
class CMoveCollector {
 public:
  CMoveCollector(CFileSystem& files, CTerminationLook& termination)
      : m_files(files), m_termination(termination) {}

  std::vector<std::pair<std::string, std::string>> Moves;

  SystemError Add(const std::string& from, const std::string& to, FileKind kind, int depth) {
    if (depth > kMaximumDepth) return kErrorFilenameExceedsRange;
    if (kind == FileKind::Directory) {
      const SystemError error = AddContent(from, to, depth);
      if (error != kErrorSuccess) return error;
    }
    Moves.emplace_back(from, to);
    return kErrorSuccess;
  }

 private:
  SystemError AddContent(const std::string& from, const std::string& to, int depth) {
    std::unique_ptr<CDirectoryListing> listing;
    SystemError error = m_files.OpenDirectory(from, listing);
    std::string name;
    while (error == kErrorSuccess) {
      if (m_termination.IsOverNow()) return kErrorCancelled;
      error = listing->Next(name);
      if (error == kErrorSuccess && name != "." && name != "..")
        error = AddEntry(*listing, Join(from, name), to.empty() ? to : Join(to, name), depth + 1);
    }
    return error == kErrorNoMoreFiles ? kErrorSuccess : error;
  }

  SystemError AddEntry(CDirectoryListing& listing, const std::string& from, const std::string& to,
                       int depth) {
    FileInfo info;
    const SystemError error = listing.Info(info);
    if (error == kErrorFileNotFound) return kErrorSuccess;  // gone meanwhile
    return error == kErrorSuccess ? Add(from, to, info.kind, depth) : error;
  }

  CFileSystem& m_files;
  CTerminationLook& m_termination;
};

SystemError RenameOnNt(CFileSystem& files, const std::string& from, const std::string& to,
                       FileKind kind, const os::CWaitable* pTermination) {
  CTerminationLook termination(pTermination);
  CMoveCollector collector(files, termination);
  SystemError error = collector.Add(from, to, kind, 0);
  for (size_t i = 0; error == kErrorSuccess && i < collector.Moves.size(); ++i) {
    if (termination.IsOverNow()) return kErrorCancelled;
    error = files.MoveAtBoot(collector.Moves[i].first, collector.Moves[i].second);
  }
  return error;
}

// The short form of a path whose last part need not exist.
SystemError ShortTarget(CFileSystem& files, const std::string& path, std::string& shortPath) {
  const SystemError error = files.ShortPath(path, shortPath);
  const size_t last = path.rfind('\\');
  if (error != kErrorFileNotFound || last == std::string::npos) return error;
  // The folder with its separator, which the root of a drive needs.
  const SystemError folderError = files.ShortPath(path.substr(0, last + 1), shortPath);
  if (folderError == kErrorSuccess) shortPath = Join(shortPath, path.substr(last + 1));
  return folderError;
}

// The start of the system reads the file in the system's 8-bit characters, line by line, and takes
// a line apart at its "=".
bool CanStandInIni(const std::string& path) {
  return std::all_of(path.begin(), path.end(),
                     [](char c) { return c >= ' ' && c <= '~' && c != '='; });
}

// The reader stays open until the new content is in place, so that the file keeps its identity.
SystemError ReadIni(CFileSystem& files, const std::string& path,
                    std::unique_ptr<CFileReader>& reader, FileInfo& info, std::string& content) {
  SystemError error = files.OpenFile(path, LastLink::Refuse, reader);
  if (error == kErrorSuccess) error = reader->Info(info);
  size_t before = 0;
  while (error == kErrorSuccess) {
    before = content.size();
    error = reader->Read(kMaximumIniBytes, content);
    if (content.size() > kMaximumIniBytes) return kErrorFileTooLarge;
    if (content.size() == before) break;
  }
  return error;
}

SystemError RenameOn9x(CMachine& machine, CFileSystem& files, const std::string& from,
                       const std::string& to, bool isDirectory) {
  const std::optional<std::string> folder = machine.System().FolderPath(Folder::Windows);
  if (!folder) return kErrorPathNotFound;
  std::string source;
  std::string target = isDirectory ? "DIRNUL" : "NUL";
  SystemError error = files.ShortPath(from, source);
  if (error == kErrorSuccess && !to.empty()) error = ShortTarget(files, to, target);
  if (error != kErrorSuccess) return error;
  if (!CanStandInIni(source) || !CanStandInIni(target)) return kErrorInvalidName;

  const std::string iniPath = Join(*folder, "WININIT.INI");
  std::string content;
  std::unique_ptr<CFileReader> reader;
  FileInfo info;
  error = ReadIni(files, iniPath, reader, info, content);
  const bool isNew = error == kErrorFileNotFound;
  if (error == kErrorSuccess || isNew) error = AddRenameLine(content, target + "=" + source);
  std::unique_ptr<CFileWriter> writer;
  if (error == kErrorSuccess)
    error =
        files.BeginWrite(iniPath, LastLink::Refuse, isNew ? Existing::Refuse : Existing::Replace,
                         NewRights::Usual, writer);
  if (error == kErrorSuccess && !isNew) writer->ExpectUnchanged(info);
  if (error == kErrorSuccess) error = writer->Write(content);
  return error == kErrorSuccess ? writer->Commit() : error;
}

}  // namespace

SystemError RenameAtBoot(CMachine& machine, const std::string& from, const std::string& to,
                         const os::CWaitable* pTermination) {
  CFileSystem* const pFiles = machine.Files();
  const uint32_t systemClass = GetOsKind(machine);
  if (!pFiles || systemClass < kFirst9xKind) return kErrorCallNotImplemented;
  FileInfo info;
  SystemError error = pFiles->Info(from, info);
  if (error != kErrorSuccess) return error;
  if (systemClass < kFirstNtKind) {
    const bool isDirectory = (info.attributes & kFileAttributeDirectory) != 0;
    error = RenameOn9x(machine, *pFiles, from, to, isDirectory);
  } else {
    error = RenameOnNt(*pFiles, from, to, info.kind, pTermination);
  }
  if (error == kErrorSuccess) g_isRestartNeeded = true;
  return error;
}

bool IsRestartNeeded() {
  return g_isRestartNeeded;
}

}  // namespace kestra
