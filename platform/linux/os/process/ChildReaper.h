// Waits for the children that nobody waits for any more.
#pragma once

#include "platform/linux/UniqueFd.h"

namespace kestra::os {

// Takes over a child by its pidfd. When it ends it is reaped, so that no zombie stays; but where
// there is no memory to keep the pidfd in, one stays as long as this process.
void ReapWhenEnded(CUniqueFd pidFd) noexcept;

}  // namespace kestra::os
