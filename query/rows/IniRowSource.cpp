#include "query/rows/IniRowSource.h"

#include "Modules/IniFile/IniFileModule.h"
#include "VLib/src/paths/ExpandPath.h"
#include "platform/machine/FileSystem.h"

namespace kestra {

bool IniRowSource::Run(Value& error) {
  error.SetError();
  if (!Context().Root) return false;
  const Ref<CMachine>& machine = Context().Root->Machine();
  std::string path;
  if (!ExpandPath(m_path, path, *machine)) return false;
  const auto file = MakeIniFile(machine, m_path);
  CVDiagItem& item = *file;
  item.Init(true, false, *Context().Message);
  const DiagParam* const pPath = item.Params.Find("Path", false);
  FileInfo info;
  const bool isThere = pPath && machine->Files() &&
                       machine->Files()->Info(pPath->StringValue, info) == kErrorSuccess;
  if (isThere) WalkItems(item, m_className);
  return !Context().IsCancelled();
}

}  // namespace kestra
