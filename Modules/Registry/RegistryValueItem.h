// An item of the class RegistryValue: one value, known by its key and its name, in the view that it
// was found in.
#pragma once

#include <string>

#include "Modules/Registry/RegistryOptions.h"
#include "model/classes/Class.h"
#include "model/items/Item.h"
#include "platform/machine/Machine.h"

namespace kestra {

class CRegistryValueItem : public CVDiagItem {
 public:
  // keyPath is the key's path behind the hive; name is empty for the key's default value.
  CRegistryValueItem(Ref<CMachine> machine, Ref<const RegistryOptions> options, std::string keyPath,
                     std::string name);

  const std::string& GetName() override { return m_poClass->Name; }
  Ref<DiagClass> GetTypeInfo() override { return m_poClass; }

  // Fills from the registry. False, with nothing set, for a value that is not there (any more), and
  // then HasVanished() is true. A value that is there and cannot be read has its name and its path,
  // and the answer is true; the log tells. False too when we have run out of something.
  using CVDiagItem::Init;
  bool Init(bool bInitChild, QueryMessage& message) override;
  // The same for who has the key open, on an item that nobody else has yet.
  bool FillFrom(CRegistryKey& key, QueryMessage& message);

  bool HasVanished() const { return m_hasVanished; }
  // Filled, and not with the name and the path alone.
  bool IsRead() const;

 protected:
  // StringValue and DWORDValue. The item shows what it was until it is filled again.
  bool OnUpdate(const DiagParams& params, QueryMessage& message) override;
  bool OnDelete(QueryMessage& message) override;

 private:
  bool FillFailed(SystemError error, QueryMessage& message);

  const Ref<DiagClass> m_poClass;
  const Ref<CMachine> m_poMachine;
  const Ref<const RegistryOptions> m_poOptions;
  const std::string m_keyPath;
  const std::string m_name;
  bool m_hasVanished = false;
};

}  // namespace kestra
