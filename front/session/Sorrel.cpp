#include "front/session/Sorrel.h"

#include "platform/machine/Machine.h"
#include "platform/machine/SystemFacts.h"
#include "platform/os/HostEnvironment.h"
#include "platform/os/HostFile.h"
#include "query/explain/Explain.h"

namespace kestra {

// Null when a plug-in directory that is there cannot be read.
Ref<DiagRoot> CSorrel::MakeRoot() const {
  auto root = MakeRef<DiagRoot>("*", m_setup.modules, m_setup.machine);
  if (m_setup.machine->IsReadOnly()) return root;
  if (os::DirectoryExists(m_pluginsDirectory) && !root->SetPluginsDir(m_pluginsDirectory)) {
    return nullptr;
  }
  std::string cache = m_setup.cacheDirectory;
  if (cache.empty()) cache = os::ReadEnvironment("KESTRA_CacheDir").value_or(std::string());
  const size_t longest = m_setup.machine->System().MaxPath();
  // A cache that cannot be used is no reason to answer nothing.
  if (!cache.empty() && cache.size() <= longest) root->SetCacheDir(cache);
  return root;
}

bool CSorrel::Initialize(OldRoot& old) {
  m_isInitialized = false;
  m_isStale = false;
  old = {std::move(m_poRoot), std::move(m_poClass)};
  try {
    Ref<DiagRoot> root = MakeRoot();
    Ref<DiagClass> rootClass = root ? root->GetTypeInfo() : nullptr;
    if (!rootClass) return false;
    m_poRoot = std::move(root);
    m_poClass = std::move(rootClass);
    m_isInitialized = true;
  } catch (...) {
    // No memory for the root, as a rule: the next query tries again.
  }
  return m_isInitialized;
}

bool CSorrel::SetPluginsDir(const std::string& directory) {
  if (m_setup.machine->IsReadOnly() || !os::DirectoryExists(directory)) return false;
  std::string absolute = os::FullPath(directory);
  while (absolute.size() > os::RootLength(absolute) && absolute.back() == os::PathSeparator()) {
    absolute.pop_back();
  }
  OldRoot old;
  std::lock_guard lock(m_lock);
  m_pluginsDirectory = std::move(absolute);
  return Initialize(old);
}

void CSorrel::ClearPlugins() {
  OldRoot old;
  std::lock_guard lock(m_lock);
  if (m_pluginsDirectory.empty()) return;
  m_pluginsDirectory.clear();
  Initialize(old);
}

bool CSorrel::IsReady(OldRoot& old) {
  return (m_isInitialized && !m_isStale) || Initialize(old);
}

Ref<DiagRoot> CSorrel::TakeRoot() {
  OldRoot old;
  std::lock_guard lock(m_lock);
  return IsReady(old) ? m_poRoot : nullptr;
}

bool CSorrel::ReInitRoot() {
  Ref<DiagRoot> root;
  {
    OldRoot old;
    std::lock_guard lock(m_lock);
    if (!m_isInitialized || m_isStale) return Initialize(old);
    root = m_poRoot;
  }
  root->DropAll();
  return true;
}

void CSorrel::RebuildRoot() {
  m_isStale = true;
}

Ref<DiagModule> CSorrel::GetModule(const std::string& name, const std::string& args) {
  const Ref<DiagRoot> root = TakeRoot();
  return root ? root->GetDiagModule(name, args) : nullptr;
}

Ref<DiagModule> CSorrel::GetFreshModule(DiagModule& old, const std::string& args) {
  const Ref<DiagRoot> root = TakeRoot();
  if (!root) return nullptr;
  root->DropModules(old.GetName(), old.Args.get());
  return root->GetDiagModule(old.GetName(), args);
}

Ref<DiagClass> CSorrel::GetClass() {
  OldRoot old;
  std::lock_guard lock(m_lock);
  return IsReady(old) ? m_poClass : nullptr;
}

bool CSorrel::CheckSyntax(const std::string& text) {
  const Ref<DiagRoot> root = TakeRoot();
  if (!root) return false;
  Value result;
  EvaluateQuery(result, text, root, 0, nullptr);
  return !result.IsError();
}

bool CSorrel::Explain(const std::string& text, std::string& plan) {
  const Ref<DiagRoot> root = TakeRoot();
  return root && ExplainQuery(text, root, plan);
}

std::optional<ModuleState> CSorrel::StateOf(const std::string& moduleName) {
  const Ref<DiagRoot> root = TakeRoot();
  return root ? root->StateOf(moduleName) : std::nullopt;
}

bool CSorrel::DiagnoseText(const std::string& text, Ref<QueryMessage> message,
                           std::optional<Diagnosis>& diagnosis) {
  const Ref<DiagRoot> root = TakeRoot();
  if (!root) return false;
  diagnosis = Diagnose(text, root, std::move(message));
  return true;
}

bool CSorrel::CompleteText(const std::string& text, size_t cursor, Ref<QueryMessage> message,
                           Completions& completions) {
  const Ref<DiagRoot> root = TakeRoot();
  if (!root) return false;
  completions = Complete(text, cursor, root, std::move(message));
  return true;
}

bool CSorrel::ProcessQuery(const std::string& text, Value& result, uint32_t timeOut,
                           Ref<QueryMessage> message, QueryReport* pReport) {
  const Ref<DiagRoot> root = TakeRoot();
  if (!root) return false;
  EvaluateQuery(result, text, root, timeOut, std::move(message), pReport);
  return true;
}

}  // namespace kestra
