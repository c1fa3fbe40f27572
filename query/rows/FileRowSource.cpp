#include "query/rows/FileRowSource.h"

#include "Modules/Files/FileItem.h"
#include "Modules/Files/ListingErrors.h"
#include "VLib/src/paths/ExpandPath.h"
#include "VLib/src/text/Text.h"
#include "platform/machine/SystemFacts.h"
#include "query/rows/report/SourceRun.h"

namespace kestra {

// False for a path that does not expand, or that has no directory.
bool FileRowSource::ReadPath(std::string& directory, std::string& name) const {
  CMachine& machine = *Context().Root->Machine();
  std::string path;
  if (!ExpandPath(m_path, path, machine, PathTokens::FileRows)) return false;
  const size_t separator = path.rfind(machine.System().PathSeparator());
  if (separator == std::string::npos) return false;
  directory = path.substr(0, separator + 1);
  name = path.substr(separator + 1);
  return !HasWildcard(directory);
}

bool FileRowSource::Find(CSourceRun& run, Value& error) {
  error.SetError();
  CMachine& machine = *Context().Root->Machine();
  run.BeginBuiltIn("FILES.FILE", m_path,
                   machine.Files() ? ModuleState::Ready : ModuleState::NotHere);
  std::string directory, name;
  if (!ReadPath(directory, name)) {
    run.SetFailed();
    return false;
  }
  if (!machine.Files() || name.empty()) return true;
  Context().Message->TellPlace(directory, 0);
  if (!HasWildcard(name)) return AddOne(directory, name, error);
  // As the Windows functions take it: every name, also one without a dot.
  return AddMatching(directory, name == "*.*" ? "*" : name, error);
}

bool FileRowSource::AddOne(const std::string& directory, const std::string& name, Value& error) {
  FileInfo info;
  const SystemError known = Context().Root->Machine()->Files()->Info(directory + name, info);
  if (known != kErrorSuccess) {
    if (!IsGone(known)) Context().Message->NoteProblem(directory + name, known);
    return true;
  }
  if (name.front() == '.' || (info.attributes & kFileAttributeDirectory)) return true;
  if (Context().CheckTimeOut(error)) return false;
  const char separator = Context().Root->Machine()->System().PathSeparator();
  return AddLeaf(MakeRef<const CFolderPath>(directory, separator), name, info);
}

bool FileRowSource::AddMatching(const std::string& directory, const std::string& pattern,
                                Value& error) {
  std::unique_ptr<CDirectoryListing> listing;
  CFileSystem& files = *Context().Root->Machine()->Files();
  const SystemError opened = files.OpenDirectory(directory, listing);
  if (opened != kErrorSuccess) {
    if (!IsGone(opened)) Context().Message->NoteProblem(directory, opened);
    return true;
  }
  const char separator = Context().Root->Machine()->System().PathSeparator();
  const auto folder = MakeRef<const CFolderPath>(directory, separator);
  std::string name;
  for (uint64_t entries = 0;;) {
    const SystemError status = listing->Next(name);
    if (status == kErrorNoMoreFiles) return true;
    if (Context().IsCancelled()) return false;
    if (status != kErrorSuccess) {
      Context().Message->NoteProblem(directory, status);
      return false;
    }
    Context().Message->TellAmount(++entries, 0);
    if (name.empty() || name.front() == '.' || !Matches(name, pattern, true, false)) continue;
    FileInfo info;
    SystemError known = listing->Info(info);
    if (known != kErrorSuccess) known = files.Info(directory + name, info);
    if (known == kErrorFileNotFound) continue;  // gone since it was listed
    // What may not be looked at is a row that has a name and no more.
    const bool isKnown = known == kErrorSuccess;
    if (!isKnown) Context().Message->NoteProblem(directory + name, known);
    if (isKnown && (info.attributes & kFileAttributeDirectory)) continue;
    if (Context().CheckTimeOut(error)) return false;
    if (!AddLeaf(folder, name, isKnown ? std::optional(info) : std::nullopt)) return false;
    if (IsFull()) return true;
  }
}

bool FileRowSource::AddLeaf(const Ref<const CFolderPath>& folder, const std::string& name,
                            const std::optional<FileInfo>& info) {
  auto item = MakeRef<CFileItem>(Context().Root->Machine(), folder, name, info);
  CVDiagItem& base = *item;
  if (!base.Init(false, false, *Context().Message)) return item->HasVanished();
  return AddRow(base);
}

}  // namespace kestra
