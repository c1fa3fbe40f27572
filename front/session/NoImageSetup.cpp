// Where Windows volumes cannot be read: see ImageSetup.cpp.
#include "front/session/Sorrel.h"

namespace kestra {

bool ImageSetup(const std::string& /*directory*/, const std::string& /*userName*/,
                SessionSetup& /*setup*/, std::string& refusal) {
  refusal = "volumes on a disk can be read by Kestra for Linux only";
  return false;
}

}  // namespace kestra
