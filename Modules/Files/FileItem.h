// An item of the class File: one file of the machine, known by its directory and its name.
//
//   auto file = MakeRef<CFileItem>(machine, "/etc/", "hosts", infoOfTheListing);
//   if (!file->Init(false, false, message)) { if (file->HasVanished()) ... }
//
// What it shows comes from the file system, and from the version resource of a file that has one;
// the file is opened when somebody looks at a property that may come out of that.
// The short name of a system that has none stays unset. Within the module Files, where a stretch of
// the text and lines can be asked for, the filling reads them too.
#pragma once

#include <optional>
#include <string>

#include "Modules/Files/FileContent.h"
#include "Modules/Files/FilePaths.h"
#include "Modules/Files/FilesOptions.h"
#include "model/classes/Class.h"
#include "model/items/Item.h"
#include "platform/machine/FileSystem.h"
#include "platform/machine/Machine.h"

namespace kestra {

// The directory of files, with a separator at its end; shared by the items of a listing.
class CFolderPath : public CCounted<CFolderPath> {
 public:
  CFolderPath(std::string path, char separator) : text(JoinPath(std::move(path), {}, separator)) {}
  const std::string text;
};

class CFileItem : public CVDiagItem, private CKnownValues, private CLateValues {
 public:
  // info is what a listing has said of the file already: the first filling takes it and does not
  // ask again.
  CFileItem(Ref<CMachine> machine, Ref<const CFolderPath> folder, std::string name,
            const std::optional<FileInfo>& info = std::nullopt);
  // For a single file. The directory may end in the machine's path separator or not.
  CFileItem(Ref<CMachine> machine, std::string directory, std::string name,
            const std::optional<FileInfo>& info = std::nullopt);
  // Has the fillings read what the options ask for. The first one ends with the deadline, a later
  // one has all the time that the options give.
  void ReadContent(Ref<const FilesOptions> options, const CFillDeadline& deadline);

  const std::string& GetName() override { return m_poClass->Name; }
  Ref<DiagClass> GetTypeInfo() override { return m_poClass; }

  // Fills from the file system. False, with nothing set, for a file that is not there (any more),
  // and then HasVanished() is true. A file that is there and may not be read has its path and its
  // name, and the answer is true. False too when the query was cancelled.
  using CVDiagItem::Init;
  bool Init(bool bInitChild, QueryMessage& message) override;

  // The last filling found no such file: no row, and no failure either.
  bool HasVanished() const { return m_hasVanished; }

 protected:
  // Path, FileName and Attributes. The item shows what it was until it is filled again.
  bool OnUpdate(const DiagParams& params, QueryMessage& message) override;
  bool OnDelete(QueryMessage& message) override;

 private:
  std::string Path() const { return m_poFolder->text + m_name; }
  bool FillContent(QueryMessage& message);
  SystemError FillText(const StopReading& stop, const QueryMessage& message);
  SystemError FillLines(const StopReading& stop);
  std::span<const DiagParamDef* const> KnownDefs() const override;
  bool IsKnown(size_t index) const override;
  Ref<DiagParam> MakeKnown(size_t index) const override;
  void AddLine(uint32_t number, std::string line);
  bool MayHold(const DiagParamDef& def) const override;
  void ReadLate(DiagParams& values) override;

  const Ref<DiagClass> m_poClass;
  const Ref<CMachine> m_poMachine;
  const Ref<const CFolderPath> m_poFolder;
  const std::string m_name;
  std::string m_shortPath;         // empty where there is none
  std::optional<FileInfo> m_info;  // nothing when the file may not be looked at
  bool m_isInfoFresh;              // it is the listing's, and no filling has used it
  bool m_hasVanished = false;
  std::optional<CFillDeadline> m_deadline;  // of the first filling
  Ref<const FilesOptions> m_poOptions;      // null when the content is not asked for
};

}  // namespace kestra
