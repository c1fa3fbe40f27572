// A library of Linux: its comments and its build id.
#include "platform/linux/os/ElfFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kestra::CMemorySource source(std::string_view(reinterpret_cast<const char*>(data), size));
  kestra::os::CElfFile file(source);
  if (file.Open() != kestra::kErrorSuccess) return 0;
  std::string text;
  file.ReadSection(".kestra.comments", 4096, text);
  file.ReadBuildId(text);
  return 0;
}
