#include "VLib/src/data/Scramble.h"

#include <utility>

namespace kestra {
namespace {

constexpr uint64_t kPrime = 4294967291;
constexpr uint64_t kMultiplier = 1835786643;

constexpr uint64_t Power(uint64_t base, uint64_t exponent) {
  uint64_t result = 1;
  for (base %= kPrime; exponent > 0; exponent >>= 1) {
    if (exponent & 1) result = result * base % kPrime;
    base = base * base % kPrime;
  }
  return result;
}

// By Fermat's theorem. With it the states come in backward order, and no table of them is needed.
constexpr uint64_t kInverse = Power(kMultiplier, kPrime - 2);
static_assert(kMultiplier * kInverse % kPrime == 1);

}  // namespace

bool Scramble(std::string& bytes, uint32_t key, CTerminationLook& termination) {
  uint64_t state = key;
  for (size_t i = 0; i < bytes.size(); ++i) {
    state = state * kMultiplier % kPrime;
    std::swap(bytes[i], bytes[state % bytes.size()]);
    if (termination.IsOver(1)) return false;
  }
  return true;
}

bool Unscramble(std::string& bytes, uint32_t key, CTerminationLook& termination) {
  uint64_t state = key % kPrime * Power(kMultiplier, bytes.size()) % kPrime;
  for (size_t i = bytes.size(); i-- > 0;) {
    std::swap(bytes[i], bytes[state % bytes.size()]);
    state = state * kInverse % kPrime;
    if (termination.IsOver(1)) return false;
  }
  return true;
}

}  // namespace kestra
