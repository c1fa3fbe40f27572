// A root for those who ask once and have no session.
#pragma once

#include <string>
#include <string_view>

#include "model/root/Root.h"

namespace kestra {

// A root over a module list, and over the plug-ins of a directory if one is named. Null, with a
// line in the log, for a directory that cannot be read.
Ref<DiagRoot> GetDiagRoot(std::string_view modules, const std::string& pluginsDir,
                          ModuleTable table, Ref<CMachine> machine);

}  // namespace kestra
