#include "model/root/Root.h"

#include "VLib/src/text/Text.h"

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

Ref<DiagClass> DiagRoot::GetTypeInfo() {
  std::lock_guard lock(m_rootLock);
  if (!m_poRootClass) {
    auto root = MakeRef<DiagClass>("Root", nullptr, false, false, nullptr, nullptr);
    for (const ModuleRow& row : m_table) root->AddChildClass(row.pClass->Get());
    m_poRootClass = std::move(root);
  }
  return m_poRootClass;
}

Ref<DiagClass> DiagRoot::GetModuleClass(std::string_view name) {
  for (const ModuleRow& row : m_table) {
    if (EqualsNoCase(row.pClass->name, name)) return row.pClass->Get();
  }
  return nullptr;
}

Ref<DiagModule> DiagRoot::CreateModule(std::string_view name) {
  for (const ModuleRow& row : m_table) {
    if (!EqualsNoCase(row.pClass->name, name)) continue;
    if (row.create) return row.create(row.pClass->Get(), m_poMachine);
    return MakeRef<CDeclaredModule>(row.pClass->Get(), m_poMachine);
  }
  return nullptr;
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
  const Ref<DiagClass> diagClass = GetModuleClass(entry.name);
  if (!diagClass) return false;
  DiagParams args(diagClass->Args->Defs());
  if (!SetArgsFromText(args, entry.args)) return false;
  Ref<DiagModule> module = CreateModule(entry.name);
  if (!module || !module->CopyArgs(args)) return false;
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
