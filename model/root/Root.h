// DiagRoot: the item named "Root". It knows which modules exist, makes them on request, and keeps
// those that were made, one per name and arguments.
//
// Threads: any. The root lock guards the class tree and the root's children; it is never held
// while a module is filled.
#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "model/classes/Module.h"
#include "model/root/ModuleTable.h"

namespace kestra {

class DiagRoot : public CVDiagItem {
 public:
  // modules is a module list: names separated by "|", each with arguments in parentheses and a
  // time to live behind "#"; "*" stands for all that are not named. The table must outlive the
  // root.
  DiagRoot(std::string_view modules, ModuleTable table, Ref<CMachine> machine);

  const std::string& GetName() override;
  Ref<DiagClass> GetTypeInfo() override;
  using CVDiagItem::Init;
  bool Init(bool bInitChild, QueryMessage& message) override;

  const Ref<CMachine>& Machine() const { return m_poMachine; }
  // The class of a module by its name in any case; null if there is none.
  Ref<DiagClass> GetModuleClass(std::string_view name);
  // A new module with default arguments; null if there is no such module.
  Ref<DiagModule> CreateModule(std::string_view name);
  // The module for a name and an argument text: the one that the root holds, or a new one. Null for
  // an unknown name and for a text that does not fit.
  Ref<DiagModule> GetDiagModule(std::string_view name, std::string_view args);
  // The same for arguments that are already typed; those that args does not name have their
  // defaults. Null too when the message is terminated.
  Ref<DiagModule> GetDiagModule(std::string_view name, const DiagParams& args,
                                QueryMessage& message);

  // Drops every module; answers how many there were.
  size_t DropAll();
  // Drops the modules of exactly that name; with args, those of that name in any case that have
  // these arguments. Answers how many.
  size_t DropModules(std::string_view name, const DiagParams* pArgs);

 protected:
  void DropContent() override { DropAll(); }

 private:
  struct ListEntry {
    std::string name;
    std::string args;
    int32_t timeToLive = -1;
    bool anyUser = false;
  };
  static bool ParseStar(std::string_view text, ListEntry& star);
  static bool ParseEntry(std::string_view text, ListEntry& entry);
  bool ParseModuleList(std::vector<ListEntry>& entries) const;
  bool InitEntry(const ListEntry& entry, bool bInitChild, QueryMessage& message, bool& filled);
  Ref<DiagModule> FindOrAdd(Ref<DiagModule> fresh, QueryMessage& message);

  const std::vector<std::string> m_names;
  const ModuleTable m_table;
  const Ref<CMachine> m_poMachine;
  std::mutex m_rootLock;  // guards m_poRootClass and Children
  Ref<DiagClass> m_poRootClass;
};

}  // namespace kestra
