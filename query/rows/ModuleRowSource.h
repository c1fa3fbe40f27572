// Rows of a module: finds or makes the module for its arguments, has it filled, and walks its tree.
#pragma once

#include "model/classes/Module.h"
#include "query/rows/RowSource.h"

namespace kestra {

class ModuleRowSource : public RowSource {
 public:
  ModuleRowSource(ParseNode& node, const SourceDescriptor& descriptor, int32_t limit)
      : RowSource(node, descriptor, limit), m_descriptor(descriptor) {}

 protected:
  bool Find(CSourceRun& run, Value& error) override;

 private:
  bool List(DiagModule& module, const CSourceRun& run, Value& error);

  const SourceDescriptor m_descriptor;
};

// The module that a descriptor names, found or made, not filled. Null with error set: an argument
// that does not fit, or no such module.
Ref<DiagModule> GetSourceModule(QueryContext& context, const SourceDescriptor& descriptor,
                                Value& error);

// Fills the module as the cache age and the statement around node ask for, as a run of its own or
// as the beginning of one.
bool PrepareModule(DiagModule& module, const ParseNode& node, const SourceDescriptor& descriptor);
bool PrepareModule(DiagModule& module, const ParseNode& node, const SourceDescriptor& descriptor,
                   CSourceRun& run);

}  // namespace kestra
