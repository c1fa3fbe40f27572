#include "Modules/Registry/RegistryValueItem.h"

#include <memory>
#include <utility>

#include "Modules/PassOver.h"
#include "Modules/Registry/RegistryChanges.h"
#include "Modules/Registry/RegistryClasses.h"
#include "Modules/Registry/RegistryValueText.h"

namespace kestra {
namespace {

// The declarations that every value has set, looked up once.
struct ValueDefs {
  explicit ValueDefs(const DiagParamDefs& defs)
      : pName(defs.Find("Name", false)),
        pPath(defs.Find("Path", false)),
        pType(defs.Find("Type", false)) {}
  const DiagParamDef* pName;
  const DiagParamDef* pPath;
  const DiagParamDef* pType;
};

const ValueDefs& Defs() {
  static const ValueDefs defs(*kRegistryValueClass.Get()->Params);
  return defs;
}

}  // namespace

CRegistryValueItem::CRegistryValueItem(Ref<CMachine> machine, Ref<const RegistryOptions> options,
                                       std::string keyPath, std::string name)
    : CVDiagItem(kRegistryValueClass.Get()->Params),
      m_poClass(kRegistryValueClass.Get()),
      m_poMachine(std::move(machine)),
      m_poOptions(std::move(options)),
      m_keyPath(std::move(keyPath)),
      m_name(std::move(name)) {}

bool CRegistryValueItem::Init(bool /*bInitChild*/, QueryMessage& message) {
  std::unique_ptr<CRegistryKey> key;
  const SystemError error =
      OpenRegistryKey(*m_poMachine, m_poOptions->hive, m_keyPath, kKeyQueryValue, key);
  return error == kErrorSuccess ? FillFrom(*key, message) : FillFailed(error, message);
}

bool CRegistryValueItem::FillFrom(CRegistryKey& key, QueryMessage& message) {
  uint32_t type = 0;
  std::string data;
  const SystemError error = key.QueryValue(m_name, type, data);
  if (error != kErrorSuccess) return FillFailed(error, message);
  Params.Clear();
  m_hasVanished = false;
  Params.Set(MakeRef<DiagParam>(Defs().pName, m_name), false);
  Params.Set(
      MakeRef<DiagParam>(Defs().pPath, HivePath(m_poOptions->hive, m_keyPath) + "\\" + m_name),
      false);
  // A type beyond the options keeps its number, and has no text.
  Params.Set(MakeRef<DiagParam>(Defs().pType, type), false);
  SetValueProperties(Params, type, data, m_poOptions->multiSzSeparator);
  return IsInitialized = true;
}

bool CRegistryValueItem::IsRead() const {
  return IsInitialized && Params.Find(*Defs().pType) != nullptr;
}

bool CRegistryValueItem::FillFailed(SystemError error, QueryMessage& message) {
  Params.Clear();
  IsInitialized = false;
  m_hasVanished = IsGoneFromRegistry(error);
  if (m_hasVanished) return false;
  const std::string path = HivePath(m_poOptions->hive, m_keyPath) + "\\" + m_name;
  message.NoteProblem(path, error);
  if (!MayPassOver(error)) return message.Fail(error);
  LogUnread(path, error);
  Params.Set(MakeRef<DiagParam>(Defs().pName, m_name), false);
  Params.Set(MakeRef<DiagParam>(Defs().pPath, path), false);
  return IsInitialized = true;
}

// A value that could not be read has no type to write it with.
bool CRegistryValueItem::OnUpdate(const DiagParams& params, QueryMessage& message) {
  const DiagParam* pType = Params.Find(*Defs().pType);
  return UpdateRegistryValue(*m_poMachine, *m_poOptions, m_keyPath, m_name,
                             pType ? pType->DWordValue : kRegNone, params, message);
}

bool CRegistryValueItem::OnDelete(QueryMessage& message) {
  return DeleteRegistryValue(*m_poMachine, m_poOptions->hive, m_keyPath, m_name, message);
}

}  // namespace kestra
