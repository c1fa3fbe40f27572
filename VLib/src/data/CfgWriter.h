// Trees, written as the text of data files.
#pragma once

#include <string>

#include "VLib/src/data/CfgNode.h"
#include "VLib/src/threads/TerminationLook.h"

namespace kestra {

// Appends the text form. False if it was terminated, with a part of it appended.
bool WriteCfgText(const CfgNode& node, size_t indent, uint32_t quoteFlags, CfgLayout layout,
                  CTerminationLook& termination, std::string& out);

// CfgNode::ReadsBack.
bool CfgTextReadsBack(const CfgNode& node, uint32_t quoteFlags, CfgLayout layout);

}  // namespace kestra
