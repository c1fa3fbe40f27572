#include "Modules/Files/DirectoryItem.h"

#include <atomic>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

#include "Modules/Files/FileAttributes.h"
#include "Modules/Files/FileChanges.h"
#include "Modules/Files/FileClasses.h"
#include "Modules/Files/FileItem.h"
#include "Modules/Files/FilePaths.h"
#include "Modules/Files/ListingErrors.h"
#include "VLib/src/text/Text.h"
#include "VLib/src/threads/WorkTogether.h"
#include "platform/machine/SystemFacts.h"
#include "platform/os/CurrentTermination.h"

namespace kestra {
namespace {

// How many entries are looked at between two looks at the clock and the event.
constexpr uint32_t kEntriesPerLook = 16;

// With fewer directories the threads would cost more than they bring.
constexpr size_t kLeastDirectoriesTogether = 8;

// What was found until now stays.
bool CutShort(QueryMessage& message) {
  message.NoteCutShort();
  return true;
}

}  // namespace

CDirectoryItem::CDirectoryItem(Ref<CMachine> machine, Ref<const FilesOptions> options,
                               std::string path, uint32_t level, FoundBy foundBy,
                               const std::optional<FileInfo>& info, const CFillDeadline& deadline)
    : CVDiagItem(kDirectoryClass.Get()->Params),
      m_poClass(kDirectoryClass.Get()),
      m_poMachine(std::move(machine)),
      m_poOptions(std::move(options)),
      m_path(std::move(path)),
      m_poFolder(MakeRef<const CFolderPath>(m_path, m_poMachine->System().PathSeparator())),
      m_level(level),
      m_foundBy(foundBy),
      m_info(info),
      m_isInfoFresh(info.has_value()),
      m_deadline(deadline) {}

bool CDirectoryItem::Init(bool bInitChild, QueryMessage& message) {
  Children.Clear();
  Params.Clear();
  IsInitialized = false;
  const CFillDeadline deadline =
      std::exchange(m_deadline, std::nullopt).value_or(CFillDeadline(m_poOptions->timeOutMs));
  FileInfo info;
  if (!ReadInfo(info, message)) return false;
  SetProperties(info);
  const bool isDirectory = info.kind == FileKind::Directory;
  if ((isDirectory || m_foundBy == FoundBy::Name) && !List(deadline, message)) return false;
  return IsInitialized = !bInitChild || InitChildren(message);
}

bool CDirectoryItem::ReadInfo(FileInfo& info, QueryMessage& message) {
  if (std::exchange(m_isInfoFresh, false)) {
    info = *m_info;
    return true;
  }
  CFileSystem* pFiles = m_poMachine->Files();
  const SystemError error = pFiles ? pFiles->Info(m_path, info) : kErrorFileNotFound;
  m_info = error == kErrorSuccess ? std::optional(info) : std::nullopt;
  m_hasVanished = IsGone(error);
  if (error == kErrorSuccess || m_hasVanished) return error == kErrorSuccess;
  message.NoteProblem(m_path, error);
  return message.Fail(error);
}

void CDirectoryItem::SetProperties(const FileInfo& info) {
  static const DiagParamDefs& defs = *kDirectoryClass.Get()->Params;
  static const DiagParamDef* const pPath = defs.Find("Path", false);
  static const DiagParamDef* const pName = defs.Find("Name", false);
  static const DiagParamDef* const pCreationTime = defs.Find("CreationTime", false);
  static const DiagParamDef* const pAttributes = defs.Find("Attributes", false);
  Params.Set(MakeRef<DiagParam>(pPath, m_path), false);
  std::string name(LastPart(m_path, m_poMachine->System().PathSeparator()));
  if (!name.empty()) Params.Set(MakeRef<DiagParam>(pName, std::move(name)), false);
  SetTimeIfKnown(Params, pCreationTime, info.creationTime);
  Params.Set(MakeRef<DiagParam>(pAttributes, AttributeOptions(info.attributes)), false);
}

// The listing is closed before anything below is filled: however deep the walk goes, one is open.
bool CDirectoryItem::List(const CFillDeadline& deadline, QueryMessage& message) {
  if (message.IsTerminatedInLoop()) return false;
  if (deadline.IsOver()) return CutShort(message);
  std::unique_ptr<CDirectoryListing> listing;
  SystemError error = m_poMachine->Files()->OpenDirectory(m_path, listing);
  if (error == kErrorSuccess) error = CheckListing(*listing);
  if (IsGone(error)) {
    m_hasVanished = true;
    Params.Clear();
    return false;
  }
  std::string name;
  uint32_t i = 0;
  for (; error == kErrorSuccess; ++i) {
    if (i % kEntriesPerLook == 0) {
      if (message.IsTerminatedInLoop()) return false;
      if (deadline.IsOver()) return CutShort(message);
    }
    error = listing->Next(name);
    if (error == kErrorSuccess && !name.empty() && name.front() != '.')
      AddEntry(*listing, name, deadline, message);
  }
  message.TellPlace(m_path, i);
  // A directory that is removed while it is listed has no more names.
  if (error == kErrorNoMoreFiles || IsGone(error)) return true;
  // What was named and may not be listed is not the same as what is empty.
  const bool isPassedOver = m_foundBy == FoundBy::Name
                                ? error == kErrorDirectory
                                : error == kErrorAccessDenied || MayPassOver(error);
  message.NoteProblem(m_path, error);
  if (!isPassedOver && error != kErrorDirectory) return message.Fail(error);
  LogPassedOver(m_path, error);
  return true;
}

// What a walk found is a directory, and only that one is listed: not what has taken its name since,
// or the place of one above it, such as a link that leads elsewhere. It is then shown without
// anything below it, and so is what the system mounts at the first look into it.
SystemError CDirectoryItem::CheckListing(CDirectoryListing& listing) const {
  if (m_foundBy == FoundBy::Name || !m_info) return kErrorSuccess;
  FileInfo own;
  const SystemError error = listing.OwnInfo(own);
  if (error != kErrorSuccess) return error;
  return IsAnotherFile(*m_info, own) ? kErrorSharingViolation : kErrorSuccess;
}

void CDirectoryItem::AddEntry(CDirectoryListing& listing, const std::string& name,
                              const CFillDeadline& deadline, QueryMessage& message) {
  const bool isDeeper = m_level < m_poOptions->levels;
  const bool isWanted = m_poOptions->MatchesName(name);
  if (!isDeeper && !isWanted) return;  // whatever it is
  FileInfo info;
  SystemError known = listing.Info(info);
  const char separator = m_poMachine->System().PathSeparator();
  if (known != kErrorSuccess && !IsGone(known))
    known = m_poMachine->Files()->Info(JoinPath(m_path, name, separator), info);
  if (IsGone(known)) return;
  // What may not be looked at is a file that has a name and no more.
  const bool isKnown = known == kErrorSuccess;
  if (!isKnown) message.NoteProblem(JoinPath(m_path, name, separator), known);
  if (isKnown && (info.attributes & kFileAttributeDirectory)) {
    if (!isDeeper) return;
    Children.Add(
        MakeRef<CDirectoryItem>(m_poMachine, m_poOptions, JoinPath(m_path, name, separator),
                                m_level + 1, FoundBy::Walk, info, deadline),
        false);
    return;
  }
  if (!isWanted) return;
  auto file = MakeRef<CFileItem>(m_poMachine, m_poFolder, name,
                                 isKnown ? std::optional(info) : std::nullopt);
  if (m_poOptions->WantsText() || m_poOptions->WantsLines())
    file->ReadContent(m_poOptions, deadline);
  Children.Add(std::move(file), false);
}

// Nearly all the time of a walk goes into asking the system for each file, and two processors can
// ask at once. What a thread could not fill is left to the caller, who tries again and tells.
void CDirectoryItem::FillTogether(const DiagItems& listed, const QueryMessage& message) const {
  const uint32_t helpers = UsefulHelpers();
  if (helpers == 0) return;
  std::vector<CVDiagItem*> directories;
  for (size_t i = 0; i < listed.Count(); ++i) {
    CVDiagItem& child = *listed.Get(i);
    if (typeid(child) == typeid(CDirectoryItem)) directories.push_back(&child);
  }
  if (directories.size() < kLeastDirectoriesTogether ||
      m_poOptions->isFilledTogether.exchange(true))
    return;
  struct Together {
    std::atomic<bool>& isSet;
    ~Together() { isSet = false; }
  } const together{m_poOptions->isFilledTogether};
  std::atomic<size_t> next{0};
  WorkTogether(helpers, [&] {
    const Ref<QueryMessage> own = message.ForHelper();
    const os::CTerminationScope scope(own->TerminationEvent());
    for (size_t i = next++; i < directories.size() && !own->IsTerminatedInLoop(); i = next++)
      directories[i]->Init(true, false, *own);
  });
}

bool CDirectoryItem::InitChildren(QueryMessage& message) {
  bool isFilled = true;
  DiagItems listed;
  listed.Swap(Children);
  FillTogether(listed, message);
  Children.Reserve(listed.Count());
  for (size_t i = 0; i < listed.Count(); ++i) {
    if (i % kEntriesPerLook == 0 && message.IsTerminatedInLoop()) return false;
    CVDiagItem& child = *listed.Get(i);
    bool isChildFilled = false, hasVanished = false;
    if (typeid(child) == typeid(CFileItem)) {
      // Nobody else has it yet, so that its lock and a look at the event per file are saved.
      isChildFilled = child.Init(true, message);
      hasVanished = static_cast<CFileItem&>(child).HasVanished();
    } else {
      auto& directory = static_cast<CDirectoryItem&>(child);
      isChildFilled = !directory.HasVanished() && child.Init(true, false, message);
      hasVanished = directory.HasVanished();
    }
    if (!isChildFilled && hasVanished) continue;
    isFilled = isFilled && isChildFilled;
    Children.Add(Ref<CVDiagItem>(&child), false);
  }
  return isFilled;
}

bool CDirectoryItem::OnAddOfType(const std::string& newItemType, const DiagParams& params,
                                 QueryMessage& message) {
  if (EqualsNoCase(newItemType, kFileClass.name))
    return AddFile(*m_poMachine, m_path, params, message);
  if (EqualsNoCase(newItemType, kDirectoryClass.name))
    return AddDirectory(*m_poMachine, m_path, params, message);
  return message.Fail(kErrorCallNotImplemented);
}

bool CDirectoryItem::OnUpdate(const DiagParams& params, QueryMessage& message) {
  return UpdateFile(*m_poMachine, {m_path, m_info}, "Name", params, message);
}

bool CDirectoryItem::OnDelete(QueryMessage& message) {
  return DeleteListedDirectory(*m_poMachine, {m_path, m_info}, message);
}

}  // namespace kestra
