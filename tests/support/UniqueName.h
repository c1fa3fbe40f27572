// A name for locks and shared records that no other test uses at the same time.
#pragma once

#include <string>

namespace kestra::test {

class CUniqueName {
 public:
  CUniqueName();
  // Removes what the system keeps under it.
  ~CUniqueName();
  CUniqueName(const CUniqueName&) = delete;
  CUniqueName& operator=(const CUniqueName&) = delete;
  operator const std::string&() const { return m_name; }

 private:
  std::string m_name;
};

}  // namespace kestra::test
