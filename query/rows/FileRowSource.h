// Rows of FILES.FILE('path'): the files of one directory whose names match the last part.
#pragma once

#include <optional>
#include <string>

#include "Modules/Files/FileItem.h"
#include "platform/machine/FileSystem.h"
#include "query/rows/RowSource.h"

namespace kestra {

// A path that is not there gives no rows, and neither does a directory that may not be listed,
// which is a problem of the source. A wildcard stands in the last part only.
class FileRowSource : public RowSource {
 public:
  FileRowSource(ParseNode& node, const SourceDescriptor& descriptor, int32_t limit)
      : RowSource(node, descriptor, limit), m_path(descriptor.arguments.asString()) {}

 protected:
  bool Find(CSourceRun& run, Value& error) override;

 private:
  bool ReadPath(std::string& directory, std::string& name) const;
  bool AddOne(const std::string& directory, const std::string& name, Value& error);
  bool AddMatching(const std::string& directory, const std::string& pattern, Value& error);
  // info is nothing for a file that may not be looked at.
  bool AddLeaf(const Ref<const CFolderPath>& folder, const std::string& name,
               const std::optional<FileInfo>& info);

  const std::string m_path;
};

}  // namespace kestra
