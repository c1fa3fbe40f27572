// The module Files: a directory, or all that a path with wildcards matches, with what is below; or
// one file, which then stands under the module itself.
#pragma once

#include <optional>
#include <string>

#include "Modules/Files/DirectoryItem.h"
#include "Modules/Files/FilesOptions.h"
#include "model/classes/Module.h"

namespace kestra {

class CFilesModule : public DiagModule {
 public:
  using DiagModule::DiagModule;

  // False for arguments that do not fit, with message 11008 for wildcards where the content of a
  // file is asked for; when a path that is named may not be looked at; and when the query was
  // cancelled. A path that is not there is a filling without items. When the time is over what was
  // found stays.
  using DiagModule::Init;
  bool Init(bool bInitChild, QueryMessage& message) override;

 protected:
  // A Directory or a File by its Path, or by its name in DirPath.
  bool OnAddOfType(const std::string& newItemType, const DiagParams& params,
                   QueryMessage& message) override;

 private:
  struct Start;
  bool ReadPaths(const FilesOptions& options, std::string& directory, std::string& file,
                 QueryMessage& message);
  bool ReadStart(Start& start, QueryMessage& message);
  bool AddLoneFile(const Start& start, bool bInitChild, QueryMessage& message);
  bool AddDirectory(const Start& start, std::string path, FoundBy foundBy,
                    const std::optional<FileInfo>& info, bool bInitChild, QueryMessage& message);
  bool AddMatching(const Start& start, bool bInitChild, QueryMessage& message);
};

}  // namespace kestra
