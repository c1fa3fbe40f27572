// An item of the class RegistryKey. Its filling lists the key: the values whose names match, and
// the keys below it while there are levels left, each filled at once when children are asked for.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Modules/FillDeadline.h"
#include "Modules/Registry/RegistryOptions.h"
#include "model/classes/Class.h"
#include "model/items/Item.h"
#include "platform/machine/Machine.h"

namespace kestra {

class CFillLimit;

// Whether a path named the key, or a walk found it.
enum class KeyFoundBy { Name, Walk };

class CRegistryKeyItem : public CVDiagItem {
 public:
  // path is the key's behind the hive, empty for the hive itself. level counts from 0 for the keys
  // that the module found by its path. The first filling ends with the deadline, a later one has
  // all the time that the options give.
  CRegistryKeyItem(Ref<CMachine> machine, Ref<const RegistryOptions> options, std::string path,
                   uint32_t level, KeyFoundBy foundBy, const CFillDeadline& deadline);

  const std::string& GetName() override { return m_poClass->Name; }
  Ref<DiagClass> GetTypeInfo() override { return m_poClass; }

  // False
  // - with nothing set for a key that is not there (any more), and then HasVanished() is true;
  // - with what was found until then when the time is over;
  // - when the query was cancelled, or a key that was named may not be opened or listed.
  // One that a walk found and that may not be opened or listed has what was found until then, its
  // name and path at least; the log tells.
  using CVDiagItem::Init;
  bool Init(bool bInitChild, QueryMessage& message) override;
  // The same for who has the key open, on an item that nobody else has yet.
  bool FillFrom(std::unique_ptr<CRegistryKey> key, bool bInitChild, QueryMessage& message);
  // Name, Path, Class and LastWriteTime alone.
  void SetProperties(CRegistryKey& key);

  bool HasVanished() const { return m_hasVanished; }

 protected:
  // A RegistryValue of this key, or a RegistryKey below it.
  bool OnAddOfType(const std::string& newItemType, const DiagParams& params,
                   QueryMessage& message) override;
  bool OnDelete(QueryMessage& message) override;

 private:
  void SetNames();
  bool AddValues(CRegistryKey& key, bool bInitChild, CFillLimit& limit, QueryMessage& message);
  bool AddSubKeys(CRegistryKey& key, const CFillDeadline& deadline, CFillLimit& limit,
                  QueryMessage& message);
  bool InitSubKeys(size_t first, CFillLimit& limit, QueryMessage& message);
  bool PassesOver(SystemError error, QueryMessage& message);

  const Ref<DiagClass> m_poClass;
  const Ref<CMachine> m_poMachine;
  const Ref<const RegistryOptions> m_poOptions;
  const std::string m_path;
  const uint32_t m_level;
  const KeyFoundBy m_foundBy;
  std::optional<CFillDeadline> m_deadline;  // of the first filling
  bool m_hasVanished = false;
};

}  // namespace kestra
