// Numbers for a reader.
#pragma once

#include <cstdint>
#include <string>

namespace kestra::cli {

// "12,304".
inline std::string Grouped(uint64_t number) {
  std::string text = std::to_string(number);
  for (size_t i = text.size(); i > 3; i -= 3) text.insert(i - 3, 1, ',');
  return text;
}

}  // namespace kestra::cli
