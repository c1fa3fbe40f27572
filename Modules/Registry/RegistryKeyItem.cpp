#include "Modules/Registry/RegistryKeyItem.h"

#include <utility>

#include "Modules/PassOver.h"
#include "Modules/Registry/FillLimit.h"
#include "Modules/Registry/RegistryChanges.h"
#include "Modules/Registry/RegistryClasses.h"
#include "Modules/Registry/RegistryValueItem.h"
#include "Modules/Registry/RegistryWalk.h"
#include "VLib/src/text/Text.h"

namespace kestra {

CRegistryKeyItem::CRegistryKeyItem(Ref<CMachine> machine, Ref<const RegistryOptions> options,
                                   std::string path, uint32_t level, KeyFoundBy foundBy,
                                   const CFillDeadline& deadline)
    : CVDiagItem(kRegistryKeyClass.Get()->Params),
      m_poClass(kRegistryKeyClass.Get()),
      m_poMachine(std::move(machine)),
      m_poOptions(std::move(options)),
      m_path(std::move(path)),
      m_level(level),
      m_foundBy(foundBy),
      m_deadline(deadline) {}

bool CRegistryKeyItem::Init(bool bInitChild, QueryMessage& message) {
  std::unique_ptr<CRegistryKey> key;
  const SystemError error = OpenRegistryKey(*m_poMachine, m_poOptions->hive, m_path,
                                            kKeyQueryValue | kKeyEnumerateSubKeys, key);
  if (error == kErrorSuccess) {
    message.TellPlace(m_path, 1);
    return FillFrom(std::move(key), bInitChild, message);
  }
  Children.Clear();
  Params.Clear();
  IsInitialized = false;
  m_hasVanished = IsGoneFromRegistry(error);
  if (m_hasVanished || !PassesOver(error, message)) return false;
  SetNames();
  return IsInitialized = true;
}

// The key is closed before those below it are filled: however deep the filling goes, one is open.
bool CRegistryKeyItem::FillFrom(std::unique_ptr<CRegistryKey> key, bool bInitChild,
                                QueryMessage& message) {
  Children.Clear();
  Params.Clear();
  IsInitialized = m_hasVanished = false;
  const CFillDeadline deadline =
      std::exchange(m_deadline, std::nullopt).value_or(CFillDeadline(m_poOptions->timeOutMs));
  CFillLimit limit(deadline, message);
  SetProperties(*key);
  bool isFilled = AddValues(*key, bInitChild, limit, message);
  const size_t firstSubKey = Children.Count();
  if (m_level < m_poOptions->levels)
    isFilled = AddSubKeys(*key, deadline, limit, message) && isFilled;
  key.reset();
  if (bInitChild) isFilled = InitSubKeys(firstSubKey, limit, message) && isFilled;
  return IsInitialized = isFilled;
}

void CRegistryKeyItem::SetNames() {
  const std::string path = HivePath(m_poOptions->hive, m_path);
  Params.SetText("Name", path.substr(path.rfind('\\') + 1));
  Params.SetText("Path", path);
}

void CRegistryKeyItem::SetProperties(CRegistryKey& key) {
  Params.Clear();
  SetNames();
  RegistryKeyInfo info;
  if (key.QueryInfo(info) != kErrorSuccess) return;
  Params.SetTextIfAny("Class", info.className);
  if (info.lastWriteTime.ticks != 0) Params.SetTime("LastWriteTime", info.lastWriteTime);
}

bool CRegistryKeyItem::AddValues(CRegistryKey& key, bool bInitChild, CFillLimit& limit,
                                 QueryMessage& message) {
  const auto stop = [&] { return limit.IsOver(); };
  bool isFilled = true;
  std::string name;
  for (uint32_t i = 0;; ++i) {
    if (limit.IsOver()) return false;
    const SystemError error = key.EnumValue(i, name);
    if (error != kErrorSuccess) return PassesOver(error, message) && isFilled;
    if (!MatchesName(name, m_poOptions->valuePattern, stop)) continue;
    auto value = MakeRef<CRegistryValueItem>(m_poMachine, m_poOptions, m_path, name);
    if (bInitChild && !value->FillFrom(key, message)) {
      if (value->HasVanished()) continue;
      isFilled = false;
    }
    Children.Add(std::move(value), false);
  }
}

bool CRegistryKeyItem::AddSubKeys(CRegistryKey& key, const CFillDeadline& deadline,
                                  CFillLimit& limit, QueryMessage& message) {
  std::string name;
  for (uint32_t i = 0;; ++i) {
    if (limit.IsOver()) return false;
    const SystemError error = key.EnumSubKey(i, name);
    if (error != kErrorSuccess) return PassesOver(error, message);
    std::string path = m_path.empty() ? name : m_path + "\\" + name;
    Children.Add(MakeRef<CRegistryKeyItem>(m_poMachine, m_poOptions, std::move(path), m_level + 1,
                                           KeyFoundBy::Walk, deadline),
                 false);
  }
}

bool CRegistryKeyItem::InitSubKeys(size_t first, CFillLimit& limit, QueryMessage& message) {
  bool isFilled = true;
  DiagItems listed;
  listed.Swap(Children);
  Children.Reserve(listed.Count());
  for (size_t i = 0; i < listed.Count(); ++i) {
    if (i >= first && limit.IsOver()) return false;
    CVDiagItem* pItem = listed.Get(i);
    if (i >= first) {
      auto* pSubKey = static_cast<CRegistryKeyItem*>(pItem);
      const bool isSubKeyFilled = pItem->Init(true, false, message);
      if (!isSubKeyFilled && pSubKey->HasVanished()) continue;
      isFilled = isFilled && isSubKeyFilled;
    }
    Children.Add(Ref<CVDiagItem>(pItem), false);
  }
  return isFilled;
}

// Whether the filling may go on after that error of the key itself. False with the message set.
bool CRegistryKeyItem::PassesOver(SystemError error, QueryMessage& message) {
  if (error == kErrorNoMoreItems || IsGoneFromRegistry(error)) return true;
  // What was named and cannot be read is not the same as what is empty.
  const std::string path = HivePath(m_poOptions->hive, m_path);
  message.NoteProblem(path, error);
  if (m_foundBy == KeyFoundBy::Name || !MayPassOver(error)) return message.Fail(error);
  LogUnread(path, error);
  return true;
}

bool CRegistryKeyItem::OnAddOfType(const std::string& newItemType, const DiagParams& params,
                                   QueryMessage& message) {
  if (EqualsNoCase(newItemType, kRegistryValueClass.name))
    return AddRegistryValue(*m_poMachine, *m_poOptions, m_path, params, message);
  if (EqualsNoCase(newItemType, kRegistryKeyClass.name))
    return AddRegistryKey(*m_poMachine, m_poOptions->hive, m_path, params, message);
  return message.Fail(kErrorCallNotImplemented);
}

bool CRegistryKeyItem::OnDelete(QueryMessage& message) {
  return DeleteRegistryKey(*m_poMachine, m_poOptions->hive, m_path, message);
}

}  // namespace kestra
