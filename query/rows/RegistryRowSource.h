// Rows of REGISTRY.REGISTRYKEY('path') and REGISTRY.REGISTRYVALUE('path'): keys, or values of keys,
// by a path that may have wildcards in every part but the first. The items are those of the module
// Registry.
#pragma once

#include <memory>
#include <string>

#include "Modules/Registry/RegistryOptions.h"
#include "query/rows/RowSource.h"

namespace kestra {

// What is not there gives no rows, and neither does a key that may not be read; the report and the
// log tell of that. The source fails for a path without a hive or, where values are wanted, without
// a value name; for a hive that cannot be opened as a whole; when the time is over; and when the
// query was cancelled.
class RegistryRowSource : public RowSource {
 protected:
  bool Find(CSourceRun& run, Value& error) override;
  // The rows are found valueLevels parts above the end of the path: 0 for keys, 1 for values.
  RegistryRowSource(ParseNode& node, const SourceDescriptor& descriptor, int32_t limit,
                    size_t valueLevels)
      : RowSource(node, descriptor, limit),
        m_path(descriptor.arguments.asString()),
        m_valueLevels(valueLevels) {}

  // Takes a key that was found. False when the source fails; error then says why.
  virtual bool AddLeaf(const std::string& path, std::unique_ptr<CRegistryKey> key,
                       Value& error) = 0;
  // Whether the walk has to end. The source fails then.
  bool IsOver(Value& error);

  CMachine& Machine() const { return *Context().Root->Machine(); }
  const Ref<const RegistryOptions>& Options() const { return m_poOptions; }
  const std::string& ValuePattern() const { return m_poOptions->valuePattern; }

 private:
  bool Fail(CSourceRun& run, SystemError error) const;
  bool ReadPath(RegistryOptions& options, std::string& keyPath) const;

  const std::string m_path;
  const size_t m_valueLevels;
  Ref<const RegistryOptions> m_poOptions;
  bool m_isOver = false;
};

class RegistryKeyRowSource : public RegistryRowSource {
 public:
  RegistryKeyRowSource(ParseNode& node, const SourceDescriptor& descriptor, int32_t limit)
      : RegistryRowSource(node, descriptor, limit, 0) {}

 protected:
  bool AddLeaf(const std::string& path, std::unique_ptr<CRegistryKey> key, Value& error) override;
};

class RegistryValueRowSource : public RegistryRowSource {
 public:
  RegistryValueRowSource(ParseNode& node, const SourceDescriptor& descriptor, int32_t limit)
      : RegistryRowSource(node, descriptor, limit, 1) {}

 protected:
  bool AddLeaf(const std::string& path, std::unique_ptr<CRegistryKey> key, Value& error) override;

 private:
  bool AddValue(const std::string& path, const std::string& name, CRegistryKey& key, Value& error);
  bool IsListed(CRegistryKey& key, Value& error);
};

}  // namespace kestra
