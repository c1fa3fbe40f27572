// A name in a form in which names that differ in case alone are equal bytes.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/text/Characters.h"

namespace kestra::image {

// Two names have the same folded form exactly if EqualsNoCase holds for them.
inline std::string FoldedName(std::string_view name) {
  std::string folded;
  folded.reserve(name.size());
  for (size_t position = 0; position < name.size();) {
    uint32_t character = FoldCharacter(NextCharacter(name, position));
    if (character < 0x80) {
      folded += static_cast<char>(character);
      continue;
    }
    folded += '\xFF';
    for (int i = 0; i < 3; ++i, character >>= 8) folded += static_cast<char>(character & 0xFF);
  }
  return folded;
}

}  // namespace kestra::image
