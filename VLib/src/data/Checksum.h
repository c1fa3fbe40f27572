// A checksum that finds accidental damage: CRC-32, as zlib has it.
#pragma once

#include <cstdint>
#include <string_view>

namespace kestra {

// start is the checksum of what stands before bytes.
uint32_t Checksum(std::string_view bytes, uint32_t start = 0);

}  // namespace kestra
