// The greatest number that an argument of a module may have.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "model/classes/Module.h"
#include "model/items/QueryMessage.h"

namespace kestra {

// False above the limit, with a note of it.
inline bool FitsLimit(DiagModule& module, std::string_view argument, uint32_t value, uint32_t most,
                      QueryMessage& message) {
  if (value <= most) return true;
  return message.RefuseArguments(
      module.GetName(), std::string(argument) + " is " + std::to_string(most) + " at the most");
}

}  // namespace kestra
