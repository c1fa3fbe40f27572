#include "VLib/src/data/Checksum.h"

#include <zlib.h>

namespace kestra {

uint32_t Checksum(std::string_view bytes, uint32_t start) {
  return static_cast<uint32_t>(
      crc32_z(start, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

}  // namespace kestra
