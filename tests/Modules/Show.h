// The values of an item in one line, "name=value" in the order of setting, for comparing.
#pragma once

#include <string>

#include "model/items/Item.h"

namespace kestra {

inline std::string Show(const CVDiagItem& item) {
  std::string text;
  for (size_t i = 0; i < item.Params.Count(); ++i) {
    const DiagParam& param = *item.Params.Get(i);
    const bool isText =
        param.Def->Type == ParamType::String || param.Def->Type == ParamType::Version;
    text += (text.empty() ? "" : " ") + param.Def->Name + "=";
    text += isText ? param.StringValue : std::to_string(param.DWordValue);
  }
  return text;
}

}  // namespace kestra
