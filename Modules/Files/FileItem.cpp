#include "Modules/Files/FileItem.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Modules/Files/FileAttributes.h"
#include "Modules/Files/FileChanges.h"
#include "Modules/Files/FileClasses.h"
#include "Modules/Files/FileContent.h"
#include "Modules/Files/FilePaths.h"
#include "Modules/Files/FilesLock.h"
#include "Modules/VersionProperties.h"
#include "VLib/src/version/PeFile.h"
#include "model/classes/Module.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {
namespace {

// The declarations that a filling sets, looked up once: a listing has thousands of files. Class
// objects are never given back, so the pointers stay good.
struct FileDefs {
  explicit FileDefs(const DiagParamDefs& defs)
      : pPath(defs.Find("Path", false)),
        pShortPathName(defs.Find("ShortPathName", false)),
        pFileName(defs.Find("FileName", false)),
        pSize(defs.Find("Size", false)),
        pCreationTime(defs.Find("CreationTime", false)),
        pLastAccessTime(defs.Find("LastAccessTime", false)),
        pLastWriteTime(defs.Find("LastWriteTime", false)),
        pAttributes(defs.Find("Attributes", false)) {}
  static constexpr size_t kCount = 8;

  const DiagParamDef* pPath;
  const DiagParamDef* pShortPathName;
  const DiagParamDef* pFileName;
  const DiagParamDef* pSize;
  const DiagParamDef* pCreationTime;
  const DiagParamDef* pLastAccessTime;
  const DiagParamDef* pLastWriteTime;
  const DiagParamDef* pAttributes;
};

const FileDefs& Defs() {
  static const FileDefs defs(*kFileClass.Get()->Params);
  return defs;
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

CFileItem::CFileItem(Ref<CMachine> machine, std::string directory, std::string name,
                     std::optional<FileInfo> info)
    : CVDiagItem(kFileClass.Get()->Params),
      m_poClass(kFileClass.Get()),
      m_poMachine(std::move(machine)),
      m_path(JoinPath(std::move(directory), name, m_poMachine->System().PathSeparator())),
      m_name(std::move(name)),
      m_info(std::move(info)) {}

void CFileItem::ReadContent(Ref<const FilesOptions> options, const CFillDeadline& deadline) {
  m_poOptions = std::move(options);
  m_deadline = deadline;
}

bool CFileItem::Init(bool /*bInitChild*/, QueryMessage& message) {
  Children.Clear();
  Params.Clear();
  IsInitialized = false;

  CFileSystem* pFiles = m_poMachine->Files();
  std::optional<FileInfo> info = std::exchange(m_info, std::nullopt);
  m_hasVanished = !pFiles;
  if (pFiles && !info) {
    FileInfo fresh;
    const SystemError error = pFiles->Info(m_path, fresh);
    if (error == kErrorSuccess) info = fresh;
    m_hasVanished = error == kErrorFileNotFound || error == kErrorPathNotFound;
  }
  if (m_hasVanished) return false;

  const FileDefs& defs = Defs();
  Params.Reserve(FileDefs::kCount);
  Params.Set(MakeRef<DiagParam>(defs.pPath, m_path), false);
  std::string shortPath;
  if (pFiles->ShortPath(m_path, shortPath) == kErrorSuccess && !shortPath.empty()) {
    Params.Set(MakeRef<DiagParam>(defs.pShortPathName, std::move(shortPath)), false);
  }
  Params.Set(MakeRef<DiagParam>(defs.pFileName, m_name), false);
  if (info) FillFrom(*info);
  if (m_poOptions && (!info || info->kind == FileKind::File) && !FillContent(message)) return false;
  if (info && MayBeProgram(*info)) Params.Defer(*this);
  return IsInitialized = true;
}

void CFileItem::FillFrom(const FileInfo& info) {
  const FileDefs& defs = Defs();
  if (info.size <= UINT32_MAX) {
    Params.Set(MakeRef<DiagParam>(defs.pSize, static_cast<uint32_t>(info.size)), false);
  }
  SetTimeIfKnown(Params, defs.pCreationTime, info.creationTime);
  SetTimeIfKnown(Params, defs.pLastAccessTime, info.lastAccessTime);
  SetTimeIfKnown(Params, defs.pLastWriteTime, info.lastWriteTime);
  Params.Set(MakeRef<DiagParam>(defs.pAttributes, AttributeOptions(info.attributes)), false);
}

// A file that cannot be read has no text and no lines, and neither has one without the time.
bool CFileItem::FillContent(QueryMessage& message) {
  std::optional<CFillDeadline> first = std::exchange(m_deadline, std::nullopt);
  const CFillDeadline deadline = first.value_or(CFillDeadline(m_poOptions->timeOutMs));
  const auto stop = [&] { return message.IsTerminatedInLoop() || deadline.IsOver(); };
  const FilesOptions& options = *m_poOptions;
  CFileSystem& files = *m_poMachine->Files();
  std::unique_ptr<CFileReader> reader;
  if (options.WantsText() && files.OpenFile(m_path, LastLink::Refuse, reader) == kErrorSuccess) {
    const CFilesLock lock(message.TerminationEvent());
    std::string text;
    if (ReadCharacters(*reader, options.charFrom, options.charCount, stop, text) == kErrorSuccess)
      Params.SetText("FileText", std::move(text));
  }
  if (options.WantsLines() && files.OpenFile(m_path, LastLink::Refuse, reader) == kErrorSuccess) {
    const SystemError error =
        ReadLines(*reader, options, stop,
                  [this](uint32_t number, std::string line) { AddLine(number, std::move(line)); });
    // A part would look like a shorter file.
    if (error != kErrorSuccess && !stop()) Children.Clear();
  }
  return !message.IsTerminated();
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
  return UpdateFile(*m_poMachine, m_path, "FileName", params, message);
}

bool CFileItem::OnDelete(QueryMessage& message) {
  return DeleteFileAt(*m_poMachine, m_path, message);
}

bool CFileItem::MayHold(const DiagParamDef& def) const {
  return std::any_of(std::begin(kVersionProperties), std::end(kVersionProperties),
                     [&](const VersionProperty& property) { return def.Name == property.name; });
}

// A file that cannot be read shows the same as one that has no such resource.
void CFileItem::ReadLate(DiagParams& values) {
  SetVersionProperties(values, kVersionProperties, *m_poMachine, m_path, nullptr);
}

}  // namespace kestra
