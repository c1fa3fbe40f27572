#include "Modules/Files/FileItem.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "Modules/Files/FileAttributes.h"
#include "Modules/Files/FileChanges.h"
#include "Modules/Files/FileClasses.h"
#include "Modules/Files/FileContent.h"
#include "Modules/Files/FilePaths.h"
#include "Modules/Files/FilesLock.h"
#include "Modules/Files/ListingErrors.h"
#include "Modules/VersionProperties.h"
#include "VLib/src/version/PeFile.h"
#include "model/classes/Module.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {
namespace {

// What a listing tells of a file, in the order in which it is shown.
enum Known : size_t {
  kPath,
  kShortPathName,
  kFileName,
  kSize,
  kCreationTime,
  kLastAccessTime,
  kLastWriteTime,
  kAttributes,
  kKnownCount
};
constexpr const char* kKnownNames[kKnownCount] = {
    "Path",         "ShortPathName",  "FileName",      "Size",
    "CreationTime", "LastAccessTime", "LastWriteTime", "Attributes"};
static_assert(kKnownCount <= CKnownValues::kMost);

// Class objects are never given back, so the pointers stay good.
const std::array<const DiagParamDef*, kKnownCount>& Defs() {
  static const auto defs = [] {
    std::array<const DiagParamDef*, kKnownCount> found{};
    for (size_t i = 0; i < kKnownCount; ++i)
      found[i] = kFileClass.Get()->Params->Find(kKnownNames[i], false);
    return found;
  }();
  return defs;
}

FileTime TimeOf(const FileInfo& info, size_t index) {
  if (index == kCreationTime) return info.creationTime;
  return index == kLastAccessTime ? info.lastAccessTime : info.lastWriteTime;
}

constexpr VersionProperty kVersionProperties[] = {
    {"FileVersion", "FileVersion"},
    {"ProductVersion", "ProductVersion"},
    {"FileDescription", "FileDescription"},
    {"Copyright", "LegalCopyright"},
    {"Comments", "Comments"},
    {"CompanyName", "CompanyName"},
    {"InternalName", "InternalName"},
    {"OriginalFilename", "OriginalFilename"},
    {"ProductName", "ProductName"},
};

// Nothing else is opened for its version.
bool MayBeProgram(const FileInfo& info) {
  return info.kind == FileKind::File && info.isStored && info.size >= kLeastProgramSize;
}

}  // namespace

CFileItem::CFileItem(Ref<CMachine> machine, Ref<const CFolderPath> folder, std::string name,
                     const std::optional<FileInfo>& info)
    : CVDiagItem(kFileClass.Get()->Params),
      m_poClass(kFileClass.Get()),
      m_poMachine(std::move(machine)),
      m_poFolder(std::move(folder)),
      m_name(std::move(name)),
      m_info(info),
      m_isInfoFresh(info.has_value()) {}

CFileItem::CFileItem(Ref<CMachine> machine, std::string directory, std::string name,
                     const std::optional<FileInfo>& info)
    : CFileItem(machine,
                MakeRef<const CFolderPath>(std::move(directory), machine->System().PathSeparator()),
                std::move(name), info) {}

void CFileItem::ReadContent(Ref<const FilesOptions> options, const CFillDeadline& deadline) {
  m_poOptions = std::move(options);
  m_deadline = deadline;
}

bool CFileItem::Init(bool /*bInitChild*/, QueryMessage& message) {
  Children.Clear();
  Params.Clear();
  IsInitialized = false;

  CFileSystem* pFiles = m_poMachine->Files();
  m_hasVanished = !pFiles;
  if (pFiles && !std::exchange(m_isInfoFresh, false)) {
    FileInfo fresh;
    const SystemError error = pFiles->Info(Path(), fresh);
    m_info = error == kErrorSuccess ? std::optional(fresh) : std::nullopt;
    m_hasVanished = IsGone(error);
    if (!m_info && !m_hasVanished) message.NoteProblem(Path(), error);
  }
  if (m_hasVanished) return false;

  // Linux has none, and the path is not put together for that.
  if (m_poMachine->System().Family() == SystemFamily::Windows &&
      pFiles->ShortPath(Path(), m_shortPath) != kErrorSuccess)
    m_shortPath.clear();
  Params.SetKnown(*this);
  if (m_poOptions && (!m_info || m_info->kind == FileKind::File) && !FillContent(message))
    return false;
  if (m_info && MayBeProgram(*m_info)) Params.Defer(*this);
  return IsInitialized = true;
}

std::span<const DiagParamDef* const> CFileItem::KnownDefs() const {
  return Defs();
}

bool CFileItem::IsKnown(size_t index) const {
  switch (index) {
    case kPath:
    case kFileName:
      return true;
    case kShortPathName:
      return !m_shortPath.empty();
    case kSize:
      return m_info && m_info->size <= UINT32_MAX;
    case kAttributes:
      return m_info.has_value();
    default:
      return m_info && KnownTime(TimeOf(*m_info, index));
  }
}

Ref<DiagParam> CFileItem::MakeKnown(size_t index) const {
  const DiagParamDef* pDef = Defs()[index];
  switch (index) {
    case kPath:
      return MakeRef<DiagParam>(pDef, Path());
    case kFileName:
      return MakeRef<DiagParam>(pDef, m_name);
    case kShortPathName:
      return MakeRef<DiagParam>(pDef, m_shortPath);
    case kSize:
      return MakeRef<DiagParam>(pDef, static_cast<uint32_t>(m_info->size));
    case kAttributes:
      return MakeRef<DiagParam>(pDef, AttributeOptions(m_info->attributes));
    default:
      return MakeRef<DiagParam>(pDef, KnownTime(TimeOf(*m_info, index)).value_or(0));
  }
}

// A file that cannot be read has no text and no lines, and neither has one without the time.
bool CFileItem::FillContent(QueryMessage& message) {
  std::optional<CFillDeadline> first = std::exchange(m_deadline, std::nullopt);
  const CFillDeadline deadline = first.value_or(CFillDeadline(m_poOptions->timeOutMs));
  const StopReading stop = [&] { return message.IsTerminatedInLoop() || deadline.IsOver(); };
  const auto note = [&](SystemError error) {
    if (error == kErrorCancelled)
      message.NoteCutShort();
    else if (error != kErrorSuccess && !IsGone(error))
      message.NoteProblem(Path(), error);
  };
  if (m_poOptions->WantsText()) note(FillText(stop, message));
  if (m_poOptions->WantsLines()) note(FillLines(stop));
  return !message.IsTerminated();
}

SystemError CFileItem::FillText(const StopReading& stop, const QueryMessage& message) {
  std::unique_ptr<CFileReader> reader;
  SystemError error = m_poMachine->Files()->OpenFile(Path(), LastLink::Refuse, reader);
  if (error != kErrorSuccess) return error;
  const CFilesLock lock(message.TerminationEvent());
  std::string text;
  error = ReadCharacters(*reader, m_poOptions->charFrom, m_poOptions->charCount, stop, text);
  if (error == kErrorSuccess) Params.SetText("FileText", std::move(text));
  return error;
}

SystemError CFileItem::FillLines(const StopReading& stop) {
  std::unique_ptr<CFileReader> reader;
  SystemError error = m_poMachine->Files()->OpenFile(Path(), LastLink::Refuse, reader);
  if (error != kErrorSuccess) return error;
  error = ReadLines(*reader, *m_poOptions, stop, [this](uint32_t number, std::string line) {
    AddLine(number, std::move(line));
  });
  // A part would look like a shorter file.
  if (error != kErrorSuccess && !stop()) Children.Clear();
  return error;
}

void CFileItem::AddLine(uint32_t number, std::string line) {
  static const Ref<DiagClass> lineClass = kFileLineClass.Get();
  static const DiagParamDef* const pNumber = lineClass->Params->Find("Number", false);
  static const DiagParamDef* const pText = lineClass->Params->Find("Text", false);
  auto item = MakeRef<CFilledItem>(lineClass);
  item->Params.Set(MakeRef<DiagParam>(pNumber, number), false);
  item->Params.Set(MakeRef<DiagParam>(pText, std::move(line)), false);
  item->IsInitialized = true;
  Children.Add(std::move(item), false);
}

bool CFileItem::OnUpdate(const DiagParams& params, QueryMessage& message) {
  return UpdateFile(*m_poMachine, {Path(), m_info}, "FileName", params, message);
}

bool CFileItem::OnDelete(QueryMessage& message) {
  return DeleteListedFile(*m_poMachine, {Path(), m_info}, message);
}

bool CFileItem::MayHold(const DiagParamDef& def) const {
  return std::any_of(std::begin(kVersionProperties), std::end(kVersionProperties),
                     [&](const VersionProperty& property) { return def.Name == property.name; });
}

// A file that cannot be read shows the same as one that has no such resource.
void CFileItem::ReadLate(DiagParams& values) {
  SetVersionProperties(values, kVersionProperties, *m_poMachine, Path(), nullptr);
}

}  // namespace kestra
