#include "model/root/Root.h"

#include "VLib/src/text/Text.h"
#include "model/plugins/PluginModule.h"

namespace kestra {
namespace {

// A module that is declared and not built yet: there is nothing to show, and that is no failure.
class CDeclaredModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool) override {
    Children.Clear();
    Params.Clear();
    return IsInitialized = true;
  }
};

}  // namespace

DiagRoot::DiagRoot(std::string_view modules, ModuleTable table, Ref<CMachine> machine)
    : CVDiagItem(EmptyParamDefs()),
      m_names(modules.empty() ? std::vector<std::string>() : SplitQuoted(modules, '|', '\'')),
      m_table(table),
      m_poMachine(std::move(machine)) {}

const std::string& DiagRoot::GetName() {
  static const auto* pName = new std::string("Root");
  return *pName;
}

const ModuleRow* DiagRoot::FindRow(std::string_view name) const {
  for (const ModuleRow& row : m_table) {
    if (EqualsNoCase(row.pClass->name, name)) return &row;
  }
  return nullptr;
}

bool DiagRoot::SetPluginsDir(const std::string& directory) {
  std::lock_guard lock(m_rootLock);
  m_poRootClass = nullptr;
  return m_plugins.Scan(directory, *m_poMachine);
}

bool DiagRoot::SetCacheDir(const std::string& directory) {
  auto cache = MakeRef<ResultCache>(m_poMachine);
  if (!cache->Open(directory)) return false;
  m_poCache = std::move(cache);
  return true;
}

std::optional<DiagPluginMap::Entry> DiagRoot::FindPlugin(std::string_view name) {
  std::lock_guard lock(m_rootLock);
  const DiagPluginMap::Entry* pEntry = m_plugins.Find(name);
  return pEntry ? std::optional(*pEntry) : std::nullopt;
}

std::string DiagRoot::CodeOf(std::string_view moduleName) {
  const auto entry = FindPlugin(moduleName);
  return entry ? entry->plugin->Code() : OwnCode();
}

std::vector<std::string> DiagRoot::PluginNames() {
  std::lock_guard lock(m_rootLock);
  std::vector<std::string> names;
  for (const auto& entry : m_plugins.Entries()) names.push_back(entry.name);
  return names;
}

Ref<DiagClass> DiagRoot::GetTypeInfo() {
  std::lock_guard lock(m_rootLock);
  if (m_poRootClass) return m_poRootClass;
  auto root = MakeRef<DiagClass>("Root", nullptr, false, false, nullptr, nullptr);
  // A plug-in that does not tell its class has none to show.
  const auto add = [&root](Ref<DiagClass> diagClass) {
    if (diagClass) root->AddChildClass(std::move(diagClass));
  };
  for (const ModuleRow& row : m_table) {
    const DiagPluginMap::Entry* pEntry = m_plugins.Find(row.pClass->name);
    add(pEntry ? pEntry->plugin->GetClass(pEntry->name) : row.pClass->Get());
  }
  for (const auto& entry : m_plugins.Entries()) {
    if (!FindRow(entry.name)) add(entry.plugin->GetClass(entry.name));
  }
  m_poRootClass = std::move(root);
  return m_poRootClass;
}

Ref<DiagClass> DiagRoot::GetModuleClass(std::string_view name) {
  if (const auto entry = FindPlugin(name)) return entry->plugin->GetClass(entry->name);
  const ModuleRow* pRow = FindRow(name);
  return pRow ? pRow->pClass->Get() : nullptr;
}

std::optional<ModuleState> DiagRoot::StateOf(std::string_view name) {
  if (FindPlugin(name)) return ModuleState::Ready;
  const ModuleRow* pRow = FindRow(name);
  if (!pRow) return std::nullopt;
  if (!pRow->create) return ModuleState::NotBuilt;
  const bool isServed = !pRow->serves || !m_poMachine || pRow->serves(*m_poMachine);
  return isServed ? ModuleState::Ready : ModuleState::NotHere;
}

Ref<DiagModule> DiagRoot::CreateModule(std::string_view name) {
  return CreateModule(name, FindRow(name));
}

Ref<DiagModule> DiagRoot::CreateModule(std::string_view name, const ModuleRow* pRow) {
  if (const auto entry = FindPlugin(name)) {
    Ref<DiagClass> diagClass = entry->plugin->GetClass(entry->name);
    if (!diagClass) return nullptr;
    return MakeRef<PluginModule>(std::move(diagClass), m_poMachine, entry->plugin);
  }
  if (!pRow) return nullptr;
  if (pRow->create) return pRow->create(pRow->pClass->Get(), m_poMachine);
  return MakeRef<CDeclaredModule>(pRow->pClass->Get(), m_poMachine);
}

Ref<DiagModule> DiagRoot::GetDiagModule(std::string_view name, std::string_view args) {
  Ref<DiagModule> fresh = CreateModule(name);
  if (!fresh || !fresh->SetArgs(args)) return nullptr;
  QueryMessage message;
  return FindOrAdd(std::move(fresh), message);
}

Ref<DiagModule> DiagRoot::GetDiagModule(std::string_view name, const DiagParams& args,
                                        QueryMessage& message) {
  Ref<DiagModule> fresh = CreateModule(name);
  if (!fresh || !fresh->HasArgs() || !fresh->CopyArgs(args)) return nullptr;
  return FindOrAdd(std::move(fresh), message);
}

Ref<DiagModule> DiagRoot::FindOrAdd(Ref<DiagModule> fresh, QueryMessage& message) {
  if (!CVDiagItem::Init(false, false, message)) return nullptr;
  std::lock_guard lock(m_rootLock);
  for (size_t i = 0; i < Children.Count(); ++i) {
    auto* pModule = static_cast<DiagModule*>(Children.Get(i));  // a root holds nothing else
    if (EqualsNoCase(pModule->GetName(), fresh->GetName()) &&
        pModule->SameArgs(*fresh->Args, true)) {
      return Ref<DiagModule>(pModule);
    }
  }
  Children.Add(fresh, false);
  return fresh;
}

size_t DiagRoot::DropAll() {
  DiagItems dropped;  // their destructors run outside the lock
  std::lock_guard lock(m_rootLock);
  dropped.Swap(Children);
  return dropped.Count();
}

size_t DiagRoot::DropModules(std::string_view name, const DiagParams* pArgs) {
  std::vector<Ref<CVDiagItem>> dropped;
  std::lock_guard lock(m_rootLock);
  for (size_t i = 0; i < Children.Count();) {
    auto* pModule = static_cast<DiagModule*>(Children.Get(i));
    const bool fits =
        pArgs ? EqualsNoCase(pModule->GetName(), name) && pModule->SameArgs(*pArgs, false)
              : pModule->GetName() == name;
    if (!fits) {
      ++i;
      continue;
    }
    dropped.emplace_back(pModule);
    Children.RemoveAt(i);
  }
  return dropped.size();
}

bool DiagRoot::InitEntry(const ListEntry& entry, bool bInitChild, QueryMessage& message,
                         bool& filled) {
  if (message.IsTerminated()) return false;
  Ref<DiagModule> module = CreateModule(entry.name, entry.pRow ? entry.pRow : FindRow(entry.name));
  // A plug-in that fails takes no other module with it, but one that is asked for by name.
  if (!module) return entry.isFromStar;
  if (!module->SetArgs(entry.args)) return false;
  {
    std::lock_guard lock(m_rootLock);
    Children.Add(module, false);
  }
  if (bInitChild && !module->CachedInit(bInitChild, false, entry.timeToLive, entry.anyUser, false,
                                        *this, message)) {
    filled = false;
  }
  return true;
}

bool DiagRoot::Init(bool bInitChild, QueryMessage& message) {
  DropAll();
  if (m_names.empty()) return IsInitialized = true;
  IsInitialized = false;
  std::vector<ListEntry> entries;
  if (!ParseModuleList(entries)) return false;
  bool filled = true;
  for (const ListEntry& entry : entries) {
    if (!InitEntry(entry, bInitChild, message, filled)) return false;
  }
  IsInitialized = true;
  return filled;
}

}  // namespace kestra
