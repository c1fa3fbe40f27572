#include "query/rows/IniRowSource.h"

namespace kestra {

bool IniRowSource::Run(Value& error) {
  error.SetError();
  return false;
}

}  // namespace kestra
