#include "front/session/Sorrel.h"

#include <stdexcept>

namespace kestra {

bool CSorrel::Initialize() {
  m_isInitialized = false;
  m_poRoot = nullptr;
  m_poClass = nullptr;
  try {
    auto root = MakeRef<DiagRoot>("*", m_setup.modules, m_setup.machine);
    Ref<DiagClass> rootClass = root->GetTypeInfo();
    if (!rootClass) return false;
    m_poRoot = std::move(root);
    m_poClass = std::move(rootClass);
    m_isInitialized = true;
  } catch (...) {
    // No memory for the root, as a rule: the next query tries again.
  }
  return m_isInitialized;
}

Ref<DiagRoot> CSorrel::TakeRoot() {
  std::lock_guard lock(m_lock);
  if (!m_isInitialized && !Initialize()) return nullptr;
  return m_poRoot;
}

bool CSorrel::ReInitRoot() {
  std::lock_guard lock(m_lock);
  if (!m_isInitialized) return Initialize();
  m_poRoot->DropAll();
  return true;
}

void CSorrel::RebuildRoot() {
  std::lock_guard lock(m_lock);
  m_isInitialized = false;
  m_poRoot = nullptr;
  m_poClass = nullptr;
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
  std::lock_guard lock(m_lock);
  if (!m_isInitialized && !Initialize()) return nullptr;
  return m_poClass;
}

bool CSorrel::CheckSyntax(const std::string& text) {
  const Ref<DiagRoot> root = TakeRoot();
  if (!root) return false;
  Value result;
  EvaluateQuery(result, text, root, 0, nullptr);
  return !result.IsError();
}

bool CSorrel::ProcessQuery(const std::string& text, Value& result, uint32_t timeOut,
                           Ref<QueryMessage> message, QueryReport* pReport) {
  const Ref<DiagRoot> root = TakeRoot();
  if (!root) return false;
  EvaluateQuery(result, text, root, timeOut, std::move(message), pReport);
  return true;
}

}  // namespace kestra
