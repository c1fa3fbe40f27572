#include "query/statements/ChangedModules.h"

#include <algorithm>

#include "Modules/Files/FileClasses.h"
#include "Modules/IniFile/IniFileClasses.h"
#include "VLib/src/log/Log.h"

namespace kestra {
namespace {

bool HoldsClass(const DiagClass& top, const std::vector<Ref<DiagClass>>& wanted) {
  const auto isTop = [&](const Ref<DiagClass>& diagClass) { return diagClass.get() == &top; };
  if (std::any_of(wanted.begin(), wanted.end(), isTop)) return true;
  const auto children = top.ChildClasses();
  return std::any_of(children.begin(), children.end(), [&](const Ref<DiagClass>& child) {
    return child && HoldsClass(*child, wanted);
  });
}

bool ShowsFiles(const DiagClass& module) {
  return module.Name == kFilesModule.name || module.Name == kIniFileModule.name;
}

}  // namespace

CChangedModules::~CChangedModules() {
  try {
    ForgetAll();
  } catch (...) {
    // No memory for letting go: what is there is shown once more as it was.
  }
}

void CChangedModules::ForgetAll() const {
  if (m_classes.empty() || !m_context.RootClass) return;
  bool areFilesChanged = false;
  for (const Ref<DiagClass>& module : m_context.RootClass->ChildClasses()) {
    if (!module || !HoldsClass(*module, m_classes)) continue;
    Forget(*module);
    areFilesChanged = areFilesChanged || ShowsFiles(*module);
  }
  for (const Ref<DiagClass>& module : m_context.RootClass->ChildClasses()) {
    if (areFilesChanged && module && ShowsFiles(*module)) Forget(*module);
  }
}

void CChangedModules::Add(const Ref<DiagClass>& diagClass) {
  if (!diagClass || !m_context.Message->MayChange()) return;
  if (std::find(m_classes.begin(), m_classes.end(), diagClass) == m_classes.end())
    m_classes.push_back(diagClass);
}

void CChangedModules::Forget(const DiagClass& module) const {
  m_context.Root->DropModules(module.Name, nullptr);
  ResultCache* pCache = m_context.Root->Cache();
  if (!pCache) return;
  // The statement has done its work; an entry that stays, because the query was cancelled in the
  // wait for another process, say, is for the log.
  const Ref<QueryMessage> own = m_context.Message->ForHelper();
  QueryMessage& message = *own;
  if (!pCache->ClearEntries(module.Name, nullptr, message)) {
    g_Log.Error("Cache entries of %s could not be removed: %s", module.Name.c_str(),
                message.GetText().c_str());
  }
}

}  // namespace kestra
