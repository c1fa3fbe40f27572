// A program of Windows: its version resource, and what can be asked of it.
#include "VLib/src/version/PeFile.h"
#include "VLib/src/version/VersionBlock.h"

namespace {

void AskAll(std::string_view bytes) {
  const kestra::CVersionBlock block(bytes);
  block.Fixed();
  block.FirstTranslation();
  for (const char* path : {"\\", "StringFileInfo\\040904b0\\FileVersion", "a\\b\\c\\d"}) {
    block.FindText(path);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  kestra::CMemorySource source(bytes);
  std::string block;
  if (kestra::ReadVersionResource(source, block) == kestra::kErrorSuccess) AskAll(block);
  for (const char* name : {"#1", "name"}) kestra::ReadResource(source, "#16", name, block);
  AskAll(bytes);  // so that blocks need not be wrapped in a whole program
  return 0;
}
