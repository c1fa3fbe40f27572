#include "fuzz/support/Require.h"

#include <cstdlib>

namespace kestra::fuzz {

void Require(bool holds) {
  if (!holds) abort();
}

}  // namespace kestra::fuzz
