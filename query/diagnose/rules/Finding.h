// What a rule has to say of a text.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace kestra {

struct Finding {
  size_t offset = 0;  // in bytes of the text
  size_t length = 0;
  std::string message;
  std::vector<std::string> suggestions;
  bool isError = true;
};

}  // namespace kestra
