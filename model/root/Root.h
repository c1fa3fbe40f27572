// DiagRoot: the item named "Root". It knows which modules exist, makes them on request, and keeps
// those that were made, one per name and arguments. Plug-ins add modules, and replace built-in ones
// of the same name.
//
// Threads: any. The root lock guards the class tree, the plug-ins and the root's children; it is
// never held while a module is filled. Above it stands the session's lock, below it the plug-in
// lock, then the class lock, then the items'.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/cache/ResultCache.h"
#include "model/classes/Module.h"
#include "model/plugins/Plugin.h"
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

  // Reads which plug-ins lie in a directory, in place of those known before; an empty name changes
  // nothing. False if it is no directory or cannot be read: there are no plug-ins then. Modules
  // that were made stay, so it is called on a root that has none yet.
  bool SetPluginsDir(const std::string& directory);
  // Keeps results in that directory from now on; see ResultCache. False, with everything as it was,
  // for a directory that cannot serve. Before the root is shared between threads.
  bool SetCacheDir(const std::string& directory);
  // Null without a directory.
  ResultCache* Cache() const { return m_poCache.get(); }
  // The file name and version of the code that makes the modules of that name; empty when that
  // cannot be told.
  std::string CodeOf(std::string_view moduleName);

  // The class of a module by its name in any case; null if there is none.
  Ref<DiagClass> GetModuleClass(std::string_view name);
  // Whether a module of that name in any case can show anything; nothing if there is none. A
  // plug-in's is ready.
  std::optional<ModuleState> StateOf(std::string_view name);
  // A new module with default arguments; null if there is no such module.
  Ref<DiagModule> CreateModule(std::string_view name);
  // The module for a name and an argument text: the one that the root holds, or a new one. Null for
  // an unknown name and for a text that does not fit.
  Ref<DiagModule> GetDiagModule(std::string_view name, std::string_view args);
  // The same for arguments that are already typed; those that args does not name have their
  // defaults. Null too when the message is terminated.
  Ref<DiagModule> GetDiagModule(std::string_view name, const DiagParams& args,
                                QueryMessage& message);

  // Drops every module; answers how many there were. What the cache holds stays.
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
    bool isFromStar = false;
    const ModuleRow* pRow = nullptr;  // of a built-in module out of the star
  };
  static bool ParseStar(std::string_view text, ListEntry& star);
  static bool ParseEntry(std::string_view text, ListEntry& entry);
  bool ParseModuleList(std::vector<ListEntry>& entries);
  // Who makes the modules of a name, and how it spells that; nothing for a built-in one.
  std::optional<DiagPluginMap::Entry> FindPlugin(std::string_view name);
  const ModuleRow* FindRow(std::string_view name) const;
  // A new module: a plug-in's if one has that name, else that of the row, which may be null.
  Ref<DiagModule> CreateModule(std::string_view name, const ModuleRow* pRow);
  std::vector<std::string> PluginNames();
  bool InitEntry(const ListEntry& entry, bool bInitChild, QueryMessage& message, bool& filled);
  Ref<DiagModule> FindOrAdd(Ref<DiagModule> fresh, QueryMessage& message);

  const std::vector<std::string> m_names;
  const ModuleTable m_table;
  const Ref<CMachine> m_poMachine;
  std::mutex m_rootLock;  // guards m_plugins, m_poRootClass and Children
  DiagPluginMap m_plugins;
  Ref<DiagClass> m_poRootClass;
  Ref<ResultCache> m_poCache;
};

}  // namespace kestra
