#include "Modules/IniFile/IniFileModule.h"

#include <limits>
#include <utility>

#include "Modules/IniFile/IniFileClasses.h"
#include "Modules/IniFile/IniFileIo.h"
#include "Modules/IniFile/IniItems.h"
#include "VLib/src/log/Log.h"
#include "VLib/src/paths/AbsolutePath.h"
#include "VLib/src/paths/ExpandPath.h"
#include "VLib/src/paths/MachineFolder.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {
namespace {

constexpr uint32_t kNotGiven = std::numeric_limits<uint32_t>::max();

bool FailWithLog(const std::string& path, SystemError error, QueryMessage& message) {
  if (error == kErrorCancelled && message.IsTerminated()) return false;
  g_Log.Error("IniFile: a file could not be read (system error %u): %s", error, path.c_str());
  message.NoteProblem(path, error);
  return message.Fail(error);
}

}  // namespace

bool CIniFileModule::ReadPath(std::string& path, QueryMessage& message) {
  const CSystemFacts& system = Machine().System();
  const char separator = system.PathSeparator();
  std::string text;
  if (!GetArg("Path", text) || text.empty()) {
    message.RefuseArguments(GetName(), "Path is to be given");
    return message.Fail(kErrorInvalidName);
  }
  if (!ExpandPath(text, path, Machine())) return message.Fail(kErrorInvalidName);
  const bool isWindows = separator == '\\';
  if (isWindows && path.find_first_of("\\/:") == std::string::npos) {
    const std::optional<std::string> folder = MachineFolder(Folder::Windows, Machine());
    if (folder) path = *folder + (folder->ends_with(separator) ? "" : "\\") + path;
  }
  const bool isForeign = isWindows && path.find('/') != std::string::npos;
  if (isForeign || !IsAbsolutePath(path, separator) || path.ends_with(separator))
    return message.Fail(kErrorInvalidName);
  // The limit counts the end of the text.
  return path.size() < system.MaxPath() || message.Fail(kErrorFilenameExceedsRange);
}

Ref<CIniFile> CIniFileModule::ReadArguments(QueryMessage& message) {
  std::string path;
  uint32_t format = 0, compress = 0, api = 0;
  CfgForm form;
  if (!ReadPath(path, message)) return nullptr;
  if (!GetArg("Format", format) || !GetArg("ScrambleKey", form.key) ||
      !GetArg("Compress", compress) || !GetArg("API", api) || format > 1) {
    message.Fail(kErrorInvalidParameter);
    return nullptr;
  }
  form.layout = format == 0 ? CfgLayout::Cfg : CfgLayout::Ini;
  form.compress = compress != 0 && compress != kNotGiven;
  if (api != 0) {
    form = CfgForm{.layout = CfgLayout::Ini, .quoteFlags = kCfgQuotes, .ignoreCase = true};
  }
  const bool hasLf = form.key == 0 && Machine().System().Family() == SystemFamily::Linux;
  form.lineEnd = hasLf ? "\n" : "\r\n";
  return MakeRef<CIniFile>(MachineRef(), std::move(path), form, api == 0);
}

bool CIniFileModule::Load(const Ref<CIniFile>& file, CfgNode& top, QueryMessage& message) {
  std::string section;
  if (!GetArg("Section", section)) return message.Fail(kErrorInvalidParameter);
  CTerminationLook termination(message.TerminationEvent());
  IniContent content;
  const SystemError error = ReadIniFile(*Machine().Files(), file->Path(), termination, content);
  if (error != kErrorSuccess) return FailWithLog(file->Path(), error, message);
  const CfgMode mode = section.empty() ? CfgMode::All : CfgMode::OwnKeys;
  switch (ReadCfgBytes(top, std::move(content.bytes), section, mode, file->Form(), termination)) {
    case CfgOutcome::Done:
      return true;
    case CfgOutcome::Terminated:
      return FailWithLog(file->Path(), kErrorCancelled, message);
    case CfgOutcome::TooLarge:
      return FailWithLog(file->Path(), kErrorFileTooLarge, message);
    default:
      return file->RefuseFile(message);
  }
}

bool CIniFileModule::Init(bool /*bInitChild*/, QueryMessage& message) {
  Children.Clear();
  Params.Clear();
  IsInitialized = false;
  const Ref<CIniFile> file = ReadArguments(message);
  if (!file) return false;
  Params.SetText("Path", file->Path());
  CfgNode top;
  return IsInitialized =
             !Machine().Files() || (Load(file, top, message) &&
                                    FillFromNode(file, top, file->HasTopKeys(), Children, message));
}

bool CIniFileModule::OnAddOfType(const std::string& newItemType, const DiagParams& params,
                                 QueryMessage& message) {
  const Ref<CIniFile> file = ReadArguments(message);
  return file && AddIniItem(*file, nullptr, newItemType, params, message);
}

Ref<CIniFileModule> MakeIniFile(Ref<CMachine> machine, const std::string& path) {
  auto module = MakeRef<CIniFileModule>(kIniFileModule.Get(), std::move(machine));
  module->Args->Find("Path", false)->StringValue = path;
  return module;
}

}  // namespace kestra
