// What the items of one filling have in common: where they stand, and what was asked for.
#pragma once

#include <cstdint>
#include <string>

#include "Modules/Registry/RegistryHive.h"
#include "platform/base/Ref.h"

namespace kestra {

// Not changed any more once items have it. The defaults are those of a row source, which has no
// arguments.
struct RegistryOptions : CCounted<RegistryOptions> {
  static constexpr uint32_t kMostTimeOutMs = 3600000;
  static constexpr uint32_t kMostLevels = 100;

  RegistryHive hive;
  std::string valuePattern = "*";
  uint32_t levels = 0;
  uint32_t timeOutMs = kMostTimeOutMs;
  std::string multiSzSeparator = "\n";
};

}  // namespace kestra
