// What Linux tells of a process as text. The first byte says which file it is.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/support/Require.h"
#include "platform/linux/machine/ProcDecode.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace kestra;
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  ProcStat stat;
  switch (data[0] % 4) {
    case 0:
      DecodeStat(bytes, stat);
      stat.IsKernelThread();
      break;
    case 1:
      DecodeEffectiveUid(bytes);
      break;
    case 2: {
      const auto line = DecodeCommandLine(bytes);
      fuzz::Require(!line || line->size() <= kMaxCommandLine);
      break;
    }
    default: {
      const size_t half = bytes.size() / 2;
      stat.name = std::string(bytes.substr(0, half < 15 ? half : 15));
      DecodeElfWidth(bytes);
      DecodeImageName(DecodeExecutableLink(bytes.substr(0, half)), stat, bytes.substr(half));
    }
  }
  return 0;
}
