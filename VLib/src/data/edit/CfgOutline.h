// Where a change of a data file's text takes place.
#pragma once

#include <string_view>

#include "VLib/src/data/edit/CfgEdit.h"

namespace kestra {

// Offsets of whole lines, the line end included. end is 0 for none.
struct CfgSpan {
  size_t begin = 0;
  size_t end = 0;
};

struct CfgOutline {
  bool hasParent = false;
  CfgSpan header;             // the line that opens the parent; none for the top
  CfgSpan lastKey;            // of the parent's own keys
  CfgSpan anyKey;             // the first key of the text up to the parent's end
  size_t keysEnd = 0;         // where a key is added
  size_t parentEnd = 0;       // where a section is added: before the line that ends the parent
  size_t openBelow = 0;       // sections below the parent that only the text's end closes
  bool isTextClosed = false;  // the text ended at a "[]", and more follows; known for the top only
  size_t matches = 0;         // sections or keys of the target's name in the parent
  bool hasTarget = false;
  CfgSpan target;  // the line of the key, or all lines of the section
};

// False if it was terminated.
bool FindCfgOutline(std::string_view text, const CfgEdit& edit, const CfgForm& form,
                    CTerminationLook& termination, CfgOutline& outline);

}  // namespace kestra
