// What the text of a data file looks like as a whole, before anything is made of it.
#pragma once

#include <cstddef>
#include <string_view>

#include "VLib/src/threads/TerminationLook.h"

namespace kestra {

struct CfgSurvey {
  size_t entries = 0;        // lines that open a section or hold a key; behind the text's end, too
  size_t understood = 0;     // lines that mean something, comments included
  size_t rubbish = 0;        // lines that mean nothing, and values without a key
  size_t wellFormed = 0;     // headers with nothing behind them, and keys without brackets
  bool hasControls = false;  // bytes that no text has
  bool hasLoneCr = false;
};

// False if it was terminated. A line that begins with "#" counts as a comment: the format does not
// know it as one, and many who write such files do.
bool SurveyCfgText(std::string_view text, CTerminationLook& termination, CfgSurvey& survey);

// Bytes below the blank but TAB, LF, VT and CR.
bool HasControls(std::string_view text);

// A CR that no LF follows. To a program that takes it for a line end, one line of ours is several.
bool HasLoneCr(std::string_view text);

}  // namespace kestra
