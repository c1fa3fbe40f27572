// Rows of INIFILES.<class>('path'): the module IniFile with default arguments, its sections or its
// keys.
#pragma once

#include <string>

#include "query/rows/RowSource.h"

namespace kestra {

// A file that is not there gives no rows, one that cannot be read none but its own; the report, the
// query's message and the log tell why. When the time is over the rows found by then stay. The
// source fails for a path that does not expand, and when the query was cancelled.
class IniRowSource : public RowSource {
 public:
  IniRowSource(ParseNode& node, const SourceDescriptor& descriptor, int32_t limit)
      : RowSource(node, descriptor, limit),
        m_className(descriptor.className),
        m_path(descriptor.arguments.asString()) {}

 protected:
  bool Find(CSourceRun& run, Value& error) override;

 private:
  void NoteFailure(bool isFilled, const std::string& path);

  const std::string m_className;
  const std::string m_path;
};

}  // namespace kestra
