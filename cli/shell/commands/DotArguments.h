// The arguments of a dot command.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kestra::cli {

struct DotArguments {
  std::vector<std::string> words;  // without quotes
  std::string text;                // all of them as they were typed
  bool isWhole = true;             // every quote is closed
};

// Parts a text at its blanks; a part may be quoted by ' or ". A ";" at the end is left out.
DotArguments ParseArguments(const std::string& text);
// Where the last of these parts begins, its quote included; the text's length if none is begun.
size_t LastArgument(const std::string& text);

}  // namespace kestra::cli
