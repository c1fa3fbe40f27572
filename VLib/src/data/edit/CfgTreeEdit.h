// The change of a data file, done to its tree.
#pragma once

#include "VLib/src/data/edit/CfgEdit.h"

namespace kestra {

// Done, Exists or Missing; the tree is as it was but for Done.
CfgOutcome EditCfgTree(CfgNode& tree, const CfgEdit& edit, bool ignoreCase);

// The same sections and keys in the same order. False if it was terminated.
bool IsSameCfgTree(const CfgNode& a, const CfgNode& b, CTerminationLook& termination);

bool IsSameCfgName(std::string_view a, std::string_view b, bool ignoreCase);

}  // namespace kestra
