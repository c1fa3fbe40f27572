// An item of the class Directory. Its filling lists the directory: the files whose names match, and
// the directories while there are levels left, each filled at once when children are asked for.
//
// Names with a leading dot are never listed. A link to a directory is an item without anything
// below it. What vanishes between the listing and the look at it makes no item and no failure.
#pragma once

#include <optional>
#include <string>

#include "Modules/Files/FileItem.h"
#include "Modules/Files/FilesOptions.h"
#include "model/classes/Class.h"
#include "model/items/Item.h"
#include "platform/machine/FileSystem.h"
#include "platform/machine/Machine.h"

namespace kestra {

// Whether a directory was named by the user, who may have named a link, or found by a walk, which
// follows none.
enum class FoundBy { Name, Walk };

class CDirectoryItem : public CVDiagItem {
 public:
  // level counts from 0 for the start of a walk. info is what has been said of the directory
  // already: the first filling takes it and does not ask again, and it ends with the deadline. A
  // later one has all the time that the options give.
  CDirectoryItem(Ref<CMachine> machine, Ref<const FilesOptions> options, std::string path,
                 uint32_t level, FoundBy foundBy, const std::optional<FileInfo>& info,
                 const CFillDeadline& deadline);

  const std::string& GetName() override { return m_poClass->Name; }
  Ref<DiagClass> GetTypeInfo() override { return m_poClass; }

  // True with what was found when the time is over. False
  // - with nothing set for a directory that is not there any more, and then HasVanished() is true;
  // - when the query was cancelled, or the listing of a directory that was named broke off.
  // One that may not be listed, or that a walk found and whose listing broke off, has the children
  // that were found until then; the log tells.
  using CVDiagItem::Init;
  bool Init(bool bInitChild, QueryMessage& message) override;

  bool HasVanished() const { return m_hasVanished; }

 protected:
  // A File or a Directory in this directory, or elsewhere by its Path.
  bool OnAddOfType(const std::string& newItemType, const DiagParams& params,
                   QueryMessage& message) override;
  // Path, Name and Attributes.
  bool OnUpdate(const DiagParams& params, QueryMessage& message) override;
  bool OnDelete(QueryMessage& message) override;

 private:
  bool ReadInfo(FileInfo& info, QueryMessage& message);
  void SetProperties(const FileInfo& info);
  bool List(const CFillDeadline& deadline, QueryMessage& message);
  SystemError CheckListing(CDirectoryListing& listing) const;
  void AddEntry(CDirectoryListing& listing, const std::string& name, const CFillDeadline& deadline,
                QueryMessage& message);
  bool InitChildren(QueryMessage& message);
  void FillTogether(const DiagItems& listed, const QueryMessage& message) const;

  const Ref<DiagClass> m_poClass;
  const Ref<CMachine> m_poMachine;
  const Ref<const FilesOptions> m_poOptions;
  const std::string m_path;
  const Ref<const CFolderPath> m_poFolder;  // the same, for its files
  const uint32_t m_level;
  const FoundBy m_foundBy;
  std::optional<FileInfo> m_info;
  bool m_isInfoFresh;                       // it is the listing's, and no filling has used it
  std::optional<CFillDeadline> m_deadline;  // of the first filling
  bool m_hasVanished = false;
};

}  // namespace kestra
