// The rows of a module's class, as one source of a FROM clause has listed them, for the next one.
#pragma once

#include <string>
#include <utility>

#include "model/classes/Module.h"
#include "query/Value.h"

namespace kestra {

class CListing {
 public:
  bool IsOf(const DiagModule& module, const std::string& className) const {
    return m_poModule.get() == &module && m_className == className;
  }
  // Of what IsOf says.
  ValueVector& Rows() const { return *m_poRows; }
  // The rows are shared, and must not change any more.
  void Keep(DiagModule& module, const std::string& className, ValueVector& rows) {
    m_className = className;
    m_poRows = Ref<ValueVector>(&rows);
    m_poModule = Ref<DiagModule>(&module);
  }

 private:
  Ref<DiagModule> m_poModule;  // null for none
  std::string m_className;
  Ref<ValueVector> m_poRows;
};

// A FROM clause begins without one. It is forgotten at the clause's end, since what stands behind
// the clause may change the module.
class CListingScope {
 public:
  explicit CListingScope(CListing& listing) : m_listing(listing) { std::swap(m_outer, m_listing); }
  ~CListingScope() { std::swap(m_outer, m_listing); }
  CListingScope(const CListingScope&) = delete;
  CListingScope& operator=(const CListingScope&) = delete;

 private:
  CListing& m_listing;
  CListing m_outer;
};

}  // namespace kestra
