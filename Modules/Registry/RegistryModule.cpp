#include "Modules/Registry/RegistryModule.h"

#include <memory>
#include <optional>
#include <utility>

#include "Modules/ArgumentLimit.h"
#include "Modules/Registry/FillLimit.h"
#include "Modules/Registry/RegistryChanges.h"
#include "Modules/Registry/RegistryClasses.h"
#include "Modules/Registry/RegistryKeyItem.h"
#include "Modules/Registry/RegistryWalk.h"
#include "VLib/src/text/Text.h"

namespace kestra {

bool CRegistryModule::ReadKey(const std::string& text, RegistryHive& hive, std::string& path) {
  const size_t end = text.find('\\');
  std::optional<RegistryHive> found = ReadHive(std::string_view(text).substr(0, end), Machine());
  if (!found) return false;
  hive = std::move(*found);
  path = end == std::string::npos ? std::string() : text.substr(end + 1);
  return true;
}

// Exactly one of the two paths. A value's name begins behind the last backslash, even though names
// may have some.
bool CRegistryModule::ReadOptions(RegistryOptions& options, std::string& keyPath,
                                  QueryMessage& message) {
  std::string key, value;
  if (!GetArg("KeyPath", key) || !GetArg("ValuePath", value) ||
      !GetArg("ValueName", options.valuePattern) || !GetArg("Timeout", options.timeOutMs) ||
      !GetArg("Levels", options.levels) || !GetArg("MultiSZSeparator", options.multiSzSeparator) ||
      !FitsLimit(*this, "Timeout", options.timeOutMs, RegistryOptions::kMostTimeOutMs, message) ||
      !FitsLimit(*this, "Levels", options.levels, RegistryOptions::kMostLevels, message))
    return false;
  if (key.empty() == value.empty()) {
    return message.RefuseArguments(GetName(),
                                   "exactly one of KeyPath and ValuePath is to be given");
  }
  if (!value.empty()) {
    const size_t last = value.rfind('\\');
    if (last == std::string::npos)
      return message.RefuseArguments(GetName(), "ValuePath names no key");
    options.valuePattern = value.substr(last + 1);
    key = value.substr(0, last);
  }
  return ReadKey(key, options.hive, keyPath) ||
         message.RefuseArguments(GetName(), "the path does not begin with a hive, such as HKLM");
}

bool CRegistryModule::Init(bool bInitChild, QueryMessage& message) {
  Children.Clear();
  Params.Clear();
  IsInitialized = false;
  auto options = MakeRef<RegistryOptions>();
  std::string keyPath;
  if (!ReadOptions(*options, keyPath, message)) return false;
  if (!Machine().Registry()) return IsInitialized = true;
  const CFillDeadline deadline(options->timeOutMs);
  CFillLimit limit(deadline, message);
  bool isFilled = true;
  const KeyFoundBy foundBy = HasWildcard(keyPath) ? KeyFoundBy::Walk : KeyFoundBy::Name;
  const auto addKey = [&](const std::string& path, std::unique_ptr<CRegistryKey> key) {
    message.TellPlace(path, 1);
    auto item = MakeRef<CRegistryKeyItem>(MachineRef(), options, path, 0, foundBy, deadline);
    if (!bInitChild) {
      item->SetProperties(*key);
    } else if (!item->FillFrom(std::move(key), true, message)) {
      isFilled = false;
    }
    Children.Add(std::move(item), false);
    return true;
  };
  CRegistryWalk walk(
      Machine(), options->hive, [&] { return limit.IsOver(); }, message);
  SystemError error = walk.OpenHive();
  if (error == kErrorSuccess) error = walk.Run(keyPath, addKey);
  if (error != kErrorSuccess) {
    message.NoteProblem(HivePath(options->hive, keyPath), error);
    return message.Fail(error);
  }
  return IsInitialized = isFilled && !limit.HasEnded();
}

bool CRegistryModule::OnAddOfType(const std::string& newItemType, const DiagParams& params,
                                  QueryMessage& message) {
  if (!EqualsNoCase(newItemType, kRegistryKeyClass.name))
    return message.Fail(kErrorCallNotImplemented);
  std::string text, path;
  RegistryHive hive;
  GetArg("KeyPath", text);
  if (text.empty()) {
    message.RaiseMessage(11000, {"KeyPath"});
    return false;
  }
  if (HasWildcard(text) || !ReadKey(text, hive, path)) return message.Fail(kErrorInvalidName);
  path.resize(TrimRight(path, "\\").size());
  return AddRegistryKey(Machine(), hive, path, params, message);
}

}  // namespace kestra
