// The scramble layer of data files: a shuffle of the bytes that a key decides. It hides text from
// a casual look and is no cipher.
//
// The state begins as the key and is multiplied by 1835786643 modulo the prime 2^32 - 5 for each
// byte i from the first on; byte i then changes places with the byte at the state modulo the
// length.
#pragma once

#include <cstdint>
#include <string>

#include "VLib/src/threads/TerminationLook.h"

namespace kestra {

// False if it was terminated, with the bytes in no useful order.
bool Scramble(std::string& bytes, uint32_t key, CTerminationLook& termination);
// Takes it back.
bool Unscramble(std::string& bytes, uint32_t key, CTerminationLook& termination);

}  // namespace kestra
