#include "Modules/Files/FileItem.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Modules/Files/FileClasses.h"
#include "Modules/VersionProperties.h"
#include "VLib/src/time/Datime.h"
#include "VLib/src/version/PeFile.h"
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

std::string JoinPath(std::string directory, const std::string& name, char separator) {
  if (!directory.empty() && directory.back() != separator) directory += separator;
  return directory += name;
}

void SetTime(DiagParams& params, const DiagParamDef* pDef, FileTime time) {
  if (time.ticks == 0) return;
  if (const auto datime = DatimeFromFileTime(time)) {
    params.Set(MakeRef<DiagParam>(pDef, *datime), false);
  }
}

// From the system's attribute word to the options of Attributes; all else is left out.
uint32_t AttributeOptions(uint32_t attributes) {
  uint32_t options = 0;
  if (attributes & kFileAttributeReadOnly) options |= 1u << 0;
  if (attributes & kFileAttributeHidden) options |= 1u << 1;
  if (attributes & kFileAttributeSystem) options |= 1u << 2;
  if (attributes & kFileAttributeCompressed) options |= 1u << 3;
  return options;
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

bool CFileItem::Init(bool /*bInitChild*/) {
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
  if (info && MayBeProgram(*info)) Params.Defer(*this);
  return IsInitialized = true;
}

void CFileItem::FillFrom(const FileInfo& info) {
  const FileDefs& defs = Defs();
  if (info.size <= UINT32_MAX) {
    Params.Set(MakeRef<DiagParam>(defs.pSize, static_cast<uint32_t>(info.size)), false);
  }
  SetTime(Params, defs.pCreationTime, info.creationTime);
  SetTime(Params, defs.pLastAccessTime, info.lastAccessTime);
  SetTime(Params, defs.pLastWriteTime, info.lastWriteTime);
  Params.Set(MakeRef<DiagParam>(defs.pAttributes, AttributeOptions(info.attributes)), false);
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
