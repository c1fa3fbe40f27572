// What a statement gives for a property.
#pragma once

#include <string>

#include "model/items/Param.h"

namespace kestra {

// Null when the statement does not name the property. The text lives as long as params.
inline const std::string* GivenText(const DiagParams& params, const char* name) {
  const DiagParam* pParam = params.Find(name, true);
  return pParam ? &pParam->StringValue : nullptr;
}

}  // namespace kestra
