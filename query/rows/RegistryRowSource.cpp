#include "query/rows/RegistryRowSource.h"

#include "platform/machine/Machine.h"

namespace kestra {

bool RegistryRowSource::Run(Value& error) {
  error.SetError();
  if (m_path.find('\\') == std::string::npos && m_path.size() < 3) return false;
  return Context().Root->Machine()->Registry() == nullptr;
}

}  // namespace kestra
