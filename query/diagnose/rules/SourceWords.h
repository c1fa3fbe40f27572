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

// Of a built-in source; empty for one that has the class, and for INIFILES, whose classes are those
// of a module. The classes that there are become the suggestions.
std::string UnknownBuiltInClassText(const TokenList& tokens, const QuerySource& source,
                                    std::vector<std::string>& classes);

}  // namespace kestra
