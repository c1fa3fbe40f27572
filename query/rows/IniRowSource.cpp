#include "query/rows/IniRowSource.h"

#include "Modules/IniFile/IniFileModule.h"
#include "VLib/src/paths/ExpandPath.h"
#include "platform/machine/FileSystem.h"
#include "query/rows/report/SourceRun.h"

namespace kestra {

// The query goes on without it. The module may have said why.
void IniRowSource::NoteFailure(bool isFilled, const std::string& path) {
  const QueryMessage& message = *Context().Message;
  if (isFilled || message.SystemError == kErrorCancelled || !message.Notes) return;
  if (!message.Notes->HasProblems()) message.Notes->NoteProblem(path, message.GetText());
}

bool IniRowSource::Find(CSourceRun& run, Value& error) {
  error.SetError();
  if (!Context().Root) return false;
  const Ref<CMachine>& machine = Context().Root->Machine();
  run.BeginBuiltIn("INIFILES." + m_className, m_path,
                   machine->Files() ? ModuleState::Ready : ModuleState::NotHere);
  std::string path;
  if (!ExpandPath(m_path, path, *machine)) {
    run.SetFailed();
    return false;
  }
  const auto file = MakeIniFile(machine, m_path);
  CVDiagItem& item = *file;
  NoteFailure(item.Init(true, false, *Context().Message), path);
  const DiagParam* const pPath = item.Params.Find("Path", false);
  FileInfo info;
  const bool isThere = pPath && machine->Files() &&
                       machine->Files()->Info(pPath->StringValue, info) == kErrorSuccess;
  if (isThere && !WalkItems(item, m_className)) {
    Value unused;
    if (Context().CheckTimeOut(unused)) run.SetCutShort();
  }
  return !Context().IsCancelled();
}

}  // namespace kestra
