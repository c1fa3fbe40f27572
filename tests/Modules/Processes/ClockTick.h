#pragma once

#include <cstdint>

namespace kestra::test {

// How much a wait and a clock of the system may differ by, in milliseconds.
constexpr uint32_t kClockTickMs = 16;

}  // namespace kestra::test
