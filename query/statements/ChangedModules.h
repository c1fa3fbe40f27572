// What an active statement may have changed is shown as it is by the next statement that asks for
// it: the root lets go of the modules that hold items of the kind, and the cache of their entries,
// so that they are filled anew. Results that hold such a module, or items of it, keep what they
// have.
//
//   CChangedModules changed(context);
//   changed.Add(item);      // before the operation: one that fails may have changed a part
//   item.Delete(message);
//
// The modules are let go of at the end of the statement, however it ends. A file may be shown by
// Files as well as by IniFile, so a change of what one shows is one of the other's, too.
#pragma once

#include <vector>

#include "query/QueryContext.h"

namespace kestra {

class CChangedModules {
 public:
  explicit CChangedModules(QueryContext& context) : m_context(context) {}
  ~CChangedModules();
  CChangedModules(const CChangedModules&) = delete;
  CChangedModules& operator=(const CChangedModules&) = delete;

  // Nothing happens while the query may not change anything.
  void Add(CVDiagItem& item) { Add(item.GetTypeInfo()); }
  // The class of an item that is to be made.
  void Add(const Ref<DiagClass>& diagClass);

 private:
  void ForgetAll() const;
  void Forget(const DiagClass& module) const;

  QueryContext& m_context;
  std::vector<Ref<DiagClass>> m_classes;  // each once
};

}  // namespace kestra
