// The sources that a text names, found among its tokens alone, so that they are found in a text
// that does not parse too.
#pragma once

#include <cstddef>
#include <vector>

#include "model/classes/Class.h"
#include "query/parse/Tokeniser.h"

namespace kestra {

inline constexpr size_t kNoToken = static_cast<size_t>(-1);

// Places are those of tokens; kNoToken for what is not there.
struct QuerySource {
  size_t keyword = kNoToken;  // FROM, JOIN, UPDATE, DELETE, INSERT or MODULE
  size_t module = kNoToken;   // the name behind it
  size_t argumentsOpen = kNoToken;
  size_t argumentsClose = kNoToken;
  bool hasForce = false;        // Module*.Class, without an age, which takes no columns
  size_t className = kNoToken;  // behind the dot
  size_t pathOpen = kNoToken;   // the parenthesis behind the class of a built-in source
  size_t alias = kNoToken;
  bool isBuiltIn = false;        // FILES, REGISTRY or INIFILES with a path
  DiagClass* pModule = nullptr;  // by its name in any case; null for one that there is not
  DiagClass* pClass = nullptr;   // likewise; a module of that name is no class of its own
};

// In the order of the text. Pointers live as long as pRootClass, which may be null.
std::vector<QuerySource> ScanSources(const TokenList& tokens, DiagClass* pRootClass);

// The module that stands directly under the root; null if there is none.
DiagClass* FindModule(DiagClass* pRootClass, std::string_view name, bool ignoreCase);
// Whether a name is one of FILES, REGISTRY and INIFILES.
bool IsBuiltInName(std::string_view name);
// The module that has the classes of a built-in source; null for another name.
DiagClass* BuiltInModule(std::string_view name);

}  // namespace kestra
