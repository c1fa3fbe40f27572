// The path language: a token at the beginning of a path stands for a folder of the machine.
#pragma once

#include <string>

namespace kestra {

class CMachine;

// Which tokens a caller knows. The filter of file rows leaves out "%programfiles%" and
// "%programfiles32%".
enum class PathTokens { All, FileRows };

// Expands in into out:
// - a text that begins with "%" must begin with one of the tokens, in any case; the token's folder
//   and the rest of the text are the result, and any other "%" word gives false;
// - a text that begins with a single "\" stands on the system drive;
// - any other text is copied. A token in the middle of a path is an ordinary text.
// A token whose folder the machine does not have gives the empty text for "%programfiles64%", and
// false otherwise.
// On a Linux machine a text without any "/" has its backslashes taken for "/" first, so "\etc" is
// "/etc".
bool ExpandPath(const std::string& in, std::string& out, CMachine& machine,
                PathTokens tokens = PathTokens::All);

}  // namespace kestra
