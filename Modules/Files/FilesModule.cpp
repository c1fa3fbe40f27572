#include "Modules/Files/FilesModule.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "Modules/Files/FileChanges.h"
#include "Modules/Files/FileClasses.h"
#include "Modules/Files/FileItem.h"
#include "Modules/Files/FilePaths.h"
#include "Modules/Files/ListingErrors.h"
#include "VLib/src/paths/ExpandPath.h"
#include "VLib/src/text/Text.h"
#include "platform/machine/FileSystem.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {

// Where a filling begins.
struct CFilesModule::Start {
  Ref<const FilesOptions> options;
  std::string directory;  // may have wildcards; empty for a path that is not looked at
  std::string loneFile;   // its name in the directory; empty for a walk
  std::optional<CFillDeadline> deadline;
};

namespace {

struct Branch {
  std::string path;  // a directory that is there
  std::string rest;  // what follows, with a wildcard in it
};

struct Match {
  std::string name;
  FileInfo info;
};

// What was named may not be looked at.
bool FailAt(const std::string& path, SystemError error, QueryMessage& message) {
  message.NoteProblem(path, error);
  return message.Fail(error);
}

// Cuts a text at the part that holds its first wildcard.
void CutAtWildcard(const std::string& text, char separator, std::string& before, std::string& part,
                   std::string& behind) {
  const size_t wildcard = text.find_first_of("*?");
  const size_t last = text.rfind(separator, wildcard);
  const size_t begin = last == std::string::npos ? 0 : last + 1;
  const size_t end = std::min(text.find(separator, wildcard), text.size());
  before = text.substr(0, begin);
  part = text.substr(begin, end - begin);
  behind = text.substr(std::min(end + 1, text.size()));
}

// The directories of one directory whose names match. Only what was found by then when the time is
// over. False when the query was cancelled.
bool ListMatches(CFileSystem& files, const std::string& directory, const std::string& pattern,
                 const CFillDeadline& deadline, QueryMessage& message,
                 std::vector<Match>& matches) {
  std::unique_ptr<CDirectoryListing> listing;
  SystemError error = files.OpenDirectory(directory, listing);
  std::string name;
  while (error == kErrorSuccess) {
    if (message.IsTerminatedInLoop()) return false;
    if (deadline.IsOver()) {
      message.NoteCutShort();
      return true;
    }
    error = listing->Next(name);
    if (error != kErrorSuccess || name.empty() || name.front() == '.') continue;
    if (!Matches(name, pattern, true, false)) continue;
    FileInfo info;
    if (listing->Info(info) != kErrorSuccess) continue;
    if (info.attributes & kFileAttributeDirectory) matches.push_back({name, info});
  }
  if (error == kErrorNoMoreFiles || IsGone(error)) return true;
  message.NoteProblem(directory, error);
  if (!MayPassOver(error)) return message.Fail(error);
  LogPassedOver(directory, error);
  return true;
}

}  // namespace

bool CFilesModule::Init(bool bInitChild, QueryMessage& message) {
  Children.Clear();
  Params.Clear();
  IsInitialized = false;
  Start start;
  if (!ReadStart(start, message)) return false;
  bool isFilled = true;
  if (start.directory.empty() || !Machine().Files()) {
    // Nothing to look at.
  } else if (!start.loneFile.empty()) {
    isFilled = AddLoneFile(start, bInitChild, message);
  } else if (HasWildcard(start.directory)) {
    isFilled = AddMatching(start, bInitChild, message);
  } else {
    isFilled =
        AddDirectory(start, start.directory, FoundBy::Name, std::nullopt, bInitChild, message);
  }
  return IsInitialized = isFilled;
}

// Exactly one of the two paths, and no wildcards where the content of a file is asked for.
bool CFilesModule::ReadPaths(const FilesOptions& options, std::string& directory, std::string& file,
                             QueryMessage& message) {
  if (!GetArg("DirPath", directory) || !GetArg("FilePath", file)) return false;
  const bool wantsContent = options.lineFrom != 0 || options.charFrom != 0;
  if (wantsContent && (HasWildcard(directory) || HasWildcard(file))) {
    message.RaiseMessage(11008, {"LineFrom, CharFrom", "wildcards in DirPath, FilePath"});
    return false;
  }
  if (directory.empty() == file.empty())
    return message.RefuseArguments(GetName(), "exactly one of DirPath and FilePath is to be given");
  if (!file.empty() && !HasSeparator(file, Machine().System().PathSeparator()))
    return message.RefuseArguments(GetName(), "FilePath names no directory");
  return true;
}

bool CFilesModule::ReadStart(Start& start, QueryMessage& message) {
  auto options = MakeRef<FilesOptions>();
  std::string directory, file, path;
  if (!ReadFilesOptions(*this, *options, message) || !ReadPaths(*options, directory, file, message))
    return false;
  if (!ExpandPath(file.empty() ? directory : file, path, Machine()))
    return message.RefuseArguments(
        GetName(), "the path begins with a %name% that is no folder of this machine");
  const char separator = Machine().System().PathSeparator();
  options->isLfLineEnd = Machine().System().Family() == SystemFamily::Linux;
  start.deadline.emplace(options->timeOutMs);
  if (separator == '\\' && path.find('/') != std::string::npos) {
    // No path of Windows has one, so there is nothing to look at.
  } else if (file.empty()) {
    start.directory = TrimSeparators(std::move(path), separator);
  } else {
    const std::string name(LastPart(path, separator));
    start.directory = name.empty() ? std::string() : ParentPath(path, separator);
    (HasWildcard(path) ? options->pathPattern : start.loneFile) = name;
  }
  start.options = std::move(options);
  return true;
}

bool CFilesModule::AddLoneFile(const Start& start, bool bInitChild, QueryMessage& message) {
  FileInfo info;
  const std::string path =
      JoinPath(start.directory, start.loneFile, Machine().System().PathSeparator());
  const SystemError error = Machine().Files()->Info(path, info);
  if (IsGone(error)) return true;
  if (error != kErrorSuccess) return FailAt(path, error, message);
  if (info.attributes & kFileAttributeDirectory) return true;
  auto file = MakeRef<CFileItem>(MachineRef(), start.directory, start.loneFile, info);
  if (start.options->WantsText() || start.options->WantsLines())
    file->ReadContent(start.options, *start.deadline);
  CVDiagItem& item = *file;
  if (bInitChild && !item.Init(true, false, message)) return file->HasVanished();
  Children.Add(std::move(file), false);
  return true;
}

bool CFilesModule::AddDirectory(const Start& start, std::string path, FoundBy foundBy,
                                const std::optional<FileInfo>& info, bool bInitChild,
                                QueryMessage& message) {
  FileInfo known;
  if (!info) {
    const SystemError error = Machine().Files()->Info(path, known);
    if (IsGone(error)) return true;
    if (error != kErrorSuccess) return FailAt(path, error, message);
    if (!(known.attributes & kFileAttributeDirectory)) return true;
  }
  auto directory = MakeRef<CDirectoryItem>(MachineRef(), start.options, std::move(path), 0, foundBy,
                                           info.value_or(known), *start.deadline);
  CVDiagItem& item = *directory;
  if (bInitChild && !item.Init(true, false, message) && directory->HasVanished()) return true;
  const bool isFilled = !bInitChild || item.IsInitialized;
  Children.Add(std::move(directory), false);
  return isFilled;
}

// Depth first, so that what is there when the time is over is whole; from a list, since a path has
// as many parts as a user likes.
bool CFilesModule::AddMatching(const Start& start, bool bInitChild, QueryMessage& message) {
  const char separator = Machine().System().PathSeparator();
  bool isFilled = true;
  std::vector<Branch> open{{std::string(), start.directory}};
  while (!open.empty() && !start.deadline->IsOver()) {
    if (message.IsTerminatedInLoop()) return false;
    const Branch branch = std::move(open.back());
    open.pop_back();
    if (!HasWildcard(branch.rest)) {
      const std::string path = JoinPath(branch.path, branch.rest, separator);
      isFilled &= AddDirectory(start, path, FoundBy::Name, std::nullopt, bInitChild, message);
      continue;
    }
    std::string before, part, behind;
    CutAtWildcard(branch.rest, separator, before, part, behind);
    const std::string directory =
        branch.path.empty() ? before
                            : TrimSeparators(JoinPath(branch.path, before, separator), separator);
    std::vector<Match> matches;
    if (directory.empty() ||
        !ListMatches(*Machine().Files(), directory, part, *start.deadline, message, matches))
      return false;
    std::vector<Branch> deeper;
    for (const Match& match : matches) {
      std::string path = JoinPath(directory, match.name, separator);
      if (!behind.empty()) {
        if (match.info.kind == FileKind::Directory) deeper.push_back({std::move(path), behind});
        continue;
      }
      isFilled &=
          AddDirectory(start, std::move(path), FoundBy::Walk, match.info, bInitChild, message);
    }
    open.insert(open.end(), std::make_move_iterator(deeper.rbegin()),
                std::make_move_iterator(deeper.rend()));
  }
  if (!open.empty()) message.NoteCutShort();
  return isFilled && !message.IsTerminated();
}

bool CFilesModule::OnAddOfType(const std::string& newItemType, const DiagParams& params,
                               QueryMessage& message) {
  std::string text, directory;
  GetArg("DirPath", text);
  if (text.empty() || HasWildcard(text) || !ExpandPath(text, directory, Machine()))
    directory.clear();
  directory = TrimSeparators(std::move(directory), Machine().System().PathSeparator());
  if (EqualsNoCase(newItemType, kFileClass.name))
    return kestra::AddFile(Machine(), directory, params, message);
  if (EqualsNoCase(newItemType, kDirectoryClass.name))
    return kestra::AddDirectory(Machine(), directory, params, message);
  return message.Fail(kErrorCallNotImplemented);
}

}  // namespace kestra
