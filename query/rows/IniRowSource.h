// Rows of INIFILES.<class>('path').
#pragma once

#include "query/rows/RowSource.h"

namespace kestra {

class IniRowSource : public RowSource {
 public:
  using RowSource::RowSource;
  // Reading an ini file is not built yet: it fails.
  bool Run(Value& error) override;
};

}  // namespace kestra
