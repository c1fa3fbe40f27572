// The text of data files, read into trees.
#pragma once

#include <string_view>

#include "VLib/src/data/CfgLine.h"
#include "VLib/src/data/CfgNode.h"
#include "VLib/src/threads/TerminationLook.h"

namespace kestra {

// Adds to node what sectionPath selects. False if it was terminated; the node is then as it was,
// and also after an exception (std::bad_alloc).
bool ReadCfgText(CfgNode& node, std::string_view text, std::string_view sectionPath, CfgMode mode,
                 uint32_t quoteFlags, CfgLayout layout, CTerminationLook& termination);

}  // namespace kestra
