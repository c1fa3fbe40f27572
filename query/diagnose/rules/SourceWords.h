// Sentences about sources, for texts that parse and for others.
#pragma once

#include <string>
#include <vector>

#include "query/diagnose/SourceScan.h"

namespace kestra {

// Each gives suggestions too, the nearest names.
std::string UnknownModuleText(const TokenList& tokens, const QuerySource& source,
                              DiagClass* pRootClass, std::vector<std::string>& suggestions);
// Of a source whose module is known.
std::string UnknownClassText(const TokenList& tokens, const QuerySource& source,
                             std::vector<std::string>& suggestions);

}  // namespace kestra
