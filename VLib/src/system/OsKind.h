// What kind of system a machine runs, as numbers: computed out of what the machine says of itself.
#pragma once

#include <cstdint>

#include "platform/machine/Machine.h"

namespace kestra {

// The system class:
//    0  not known, or no Windows        7  NT 4
//    1  on top of DOS                   8  NT 5.0
//    2  9x, any other minor version     9  NT 5.1, and 5.2 as a workstation of 64 bits
//    3  9x, minor 10                   10  NT 5.2
//    4  9x, minor 10, letter A or B    11  NT 6.0 and newer, workstation
//    5  9x, minor 90                   12  NT 6.0 and newer, otherwise
//    6  NT 3                           13  NT 5.2 R2
uint32_t GetOsKind(CMachine& machine);
inline constexpr uint32_t kFirst9xKind = 2;
inline constexpr uint32_t kFirstNtKind = 6;

// The edition of an NT system; 0 where it is not known, and for every other system.
//    1  home                           13  compute cluster
//    2  workstation                    14  embedded
//    3  server                         15  single-user terminal server
//    4  advanced server                16  small business
//    5  datacenter                     17  small business, restricted
//    6  web                            20  tablet
//    7, 8, 9, 12  media center, by its generation: before 2, 2, 3, 4
//    10, 11       as 3 and 4 on NT 5.2
//    33 and above: the product that GetProductInfo tells, from NT 6.0 on
uint32_t GetOsEdition(CMachine& machine);

// 2 for a system of 64 bits, 1 for one of 32, 0 where that cannot be told.
uint32_t GetBitness(CMachine& machine);

}  // namespace kestra
