// What the query fuzzer asks: a root over a machine in memory, made anew for each text, so that one
// finding does not depend on the texts before it.
#pragma once

#include "model/root/Root.h"
#include "query/parse/Tokeniser.h"

namespace kestra::fuzz {

// Whether a text may call into a library. Such a one is asked of a machine that is only read, for
// which no library is loaded.
bool CallsLibrary(const TokenList& tokens);
// All modules but those whose content is as large, or takes as long, as an argument says.
Ref<DiagRoot> MakeQueryRoot(bool isReadOnly);
// Undoes what a query changed beyond its machine.
void RestoreModules();

}  // namespace kestra::fuzz
