#include "platform/os/Apartment.h"

namespace kestra::os {

CApartmentScope::CApartmentScope() : m_isReady(true) {}
CApartmentScope::~CApartmentScope() = default;

}  // namespace kestra::os
