#include "query/rows/RegistryRowSource.h"

#include <optional>
#include <utility>

#include "Modules/PassOver.h"
#include "Modules/Registry/RegistryKeyItem.h"
#include "Modules/Registry/RegistryValueItem.h"
#include "Modules/Registry/RegistryWalk.h"
#include "VLib/src/text/Text.h"
#include "query/rows/report/SourceRun.h"

namespace kestra {

bool RegistryRowSource::ReadPath(RegistryOptions& options, std::string& keyPath) const {
  const size_t end = m_path.find('\\');
  std::optional<RegistryHive> hive = ReadHive(std::string_view(m_path).substr(0, end), Machine());
  if (!hive) return false;
  options.hive = std::move(*hive);
  if (end != std::string::npos) keyPath = m_path.substr(end + 1);
  if (m_valueLevels == 0) return true;
  if (end == std::string::npos) return false;
  const size_t last = keyPath.rfind('\\');
  options.valuePattern = keyPath.substr(last == std::string::npos ? 0 : last + 1);
  keyPath.resize(last == std::string::npos ? 0 : last);
  return true;
}

bool RegistryRowSource::IsOver(Value& error) {
  return m_isOver = m_isOver || Context().IsCancelled() || Context().CheckTimeOut(error);
}

bool RegistryRowSource::Fail(CSourceRun& run, SystemError error) const {
  Context().Message->Fail(error);
  run.SetFailed();
  return false;
}

bool RegistryRowSource::Find(CSourceRun& run, Value& error) {
  error.SetError();
  auto options = MakeRef<RegistryOptions>();
  std::string keyPath;
  run.BeginBuiltIn(m_valueLevels == 0 ? "REGISTRY.REGISTRYKEY" : "REGISTRY.REGISTRYVALUE", m_path,
                   Machine().Registry() ? ModuleState::Ready : ModuleState::NotHere);
  if (!ReadPath(*options, keyPath)) {
    run.SetFailed();
    return false;
  }
  m_poOptions = options;
  if (!Machine().Registry()) return true;
  bool isDone = true;
  QueryMessage& message = *Context().Message;
  CRegistryWalk walk(
      Machine(), options->hive, [&] { return IsOver(error); }, message);
  SystemError found = walk.OpenHive();
  if (found != kErrorSuccess) return Fail(run, found);
  found = walk.Run(keyPath, [&](const std::string& path, std::unique_ptr<CRegistryKey> key) {
    isDone = AddLeaf(path, std::move(key), error);
    return isDone && !IsFull();
  });
  if (found != kErrorSuccess && !MayPassOver(found)) return Fail(run, found);
  if (found != kErrorSuccess) {
    LogUnread(m_path, found);
    message.NoteProblem(m_path, found);
  }
  return isDone && !m_isOver;
}

// With the values below it, so that a join can ask for them.
bool RegistryKeyRowSource::AddLeaf(const std::string& path, std::unique_ptr<CRegistryKey> key,
                                   Value&) {
  QueryMessage& message = *Context().Message;
  auto item = MakeRef<CRegistryKeyItem>(Context().Root->Machine(), Options(), path, 0,
                                        KeyFoundBy::Walk, CFillDeadline(Options()->timeOutMs));
  return item->FillFrom(std::move(key), true, message) && AddRow(*item);
}

bool RegistryValueRowSource::AddLeaf(const std::string& path, std::unique_ptr<CRegistryKey> key,
                                     Value& error) {
  if (!HasWildcard(ValuePattern())) return AddValue(path, ValuePattern(), *key, error);
  const auto stop = [&] { return IsOver(error); };
  std::string name;
  for (uint32_t i = 0; !IsFull(); ++i) {
    if (IsOver(error)) return false;
    const SystemError status = key->EnumValue(i, name);
    if (status == kErrorNoMoreItems || IsGoneFromRegistry(status)) return true;
    if (status != kErrorSuccess) {
      if (!MayPassOver(status)) return Context().Message->Fail(status);
      LogUnread(HivePath(Options()->hive, path), status);
      Context().Message->NoteProblem(HivePath(Options()->hive, path), status);
      return true;
    }
    if (MatchesName(name, ValuePattern(), stop) && !AddValue(path, name, *key, error)) return false;
  }
  return true;
}

// A value that is not there (any more) is no row. One that cannot be read is, if the key has it.
bool RegistryValueRowSource::AddValue(const std::string& path, const std::string& name,
                                      CRegistryKey& key, Value& error) {
  auto item = MakeRef<CRegistryValueItem>(Context().Root->Machine(), Options(), path, name);
  if (!item->FillFrom(key, *Context().Message)) return item->HasVanished();
  const bool isListed = HasWildcard(ValuePattern()) || item->IsRead() || IsListed(key, error);
  if (IsOver(error)) return false;
  return !isListed || AddRow(*item);
}

// Whether the key has a value of the name that the path gives.
bool RegistryValueRowSource::IsListed(CRegistryKey& key, Value& error) {
  std::string name;
  for (uint32_t i = 0; !IsOver(error) && key.EnumValue(i, name) == kErrorSuccess; ++i) {
    if (EqualsNoCase(name, ValuePattern())) return true;
  }
  return false;
}

}  // namespace kestra
