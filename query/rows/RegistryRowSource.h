// Rows of REGISTRY.REGISTRYKEY and REGISTRY.REGISTRYVALUE.
#pragma once

#include "query/rows/RowSource.h"

namespace kestra {

class RegistryRowSource : public RowSource {
 public:
  RegistryRowSource(ParseNode& node, const SourceDescriptor& descriptor, int32_t limit)
      : RowSource(node, descriptor, limit), m_path(descriptor.arguments.asString()) {}
  // A machine without a registry has no rows. Reading one is not built yet: it fails.
  bool Run(Value& error) override;

 private:
  const std::string m_path;
};

}  // namespace kestra
