// The change of a data file, done to its text.
#pragma once

#include <string>

#include "VLib/src/data/edit/CfgEdit.h"

namespace kestra {

// The text has no mark at its beginning. It is as it was for any outcome but Done. That the format
// can hold what the edit names is not looked at, but for sections in sections of the Ini layout.
CfgOutcome EditCfgText(std::string& text, const CfgEdit& edit, const CfgForm& form,
                       CTerminationLook& termination);

}  // namespace kestra
