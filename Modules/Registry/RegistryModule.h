// The module Registry: the keys that a path with or without wildcards names, with their values and
// the keys below them.
#pragma once

#include <string>

#include "Modules/Registry/RegistryOptions.h"
#include "model/classes/Module.h"

namespace kestra {

class CRegistryModule : public DiagModule {
 public:
  using DiagModule::DiagModule;

  // False for arguments that do not fit, with a note but without a message; when the time is over
  // (kErrorTimeout), with what was found until then; when a key that is named without wildcards may
  // not be read; and when the query was cancelled. A key that is not there is a filling without
  // items, and so is a machine without a registry.
  using DiagModule::Init;
  bool Init(bool bInitChild, QueryMessage& message) override;

 protected:
  // A RegistryKey, by its Name, below the key that KeyPath names. That one has to be there
  // (kErrorFileNotFound), and KeyPath to be given (11000 with "KeyPath"), without wildcards
  // (kErrorInvalidName). A value is added to the item of its key.
  bool OnAddOfType(const std::string& newItemType, const DiagParams& params,
                   QueryMessage& message) override;

 private:
  bool ReadOptions(RegistryOptions& options, std::string& keyPath, QueryMessage& message);
  bool ReadKey(const std::string& text, RegistryHive& hive, std::string& path);
};

}  // namespace kestra
