#include "platform/os/Library.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <limits>

#include "include/kestra/plugin.h"

namespace kestra::os {

NativeLibrary OpenLibrary(const std::string& name) {
  return name.empty() ? nullptr : dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
}

void* FindExport(NativeLibrary library, const std::string& name) {
  return library ? dlsym(library, name.c_str()) : nullptr;
}

uint32_t ByteStringLength(ByteString text) {
  return SysStringByteLen(text);
}

void FreeByteString(ByteString text) {
  SysFreeString(text);
}

}  // namespace kestra::os

namespace {

// The length stands before the bytes. Two NULs stand behind them, as in OLE's strings.
constexpr size_t kHeadBytes = 8;  // keeps the bytes aligned

}  // namespace

extern "C" {

BSTR SysAllocStringByteLen(const char* bytes, unsigned int length) {
  if (length > std::numeric_limits<uint32_t>::max() - kHeadBytes - 2) return nullptr;
  auto* pBlock = static_cast<char*>(std::malloc(kHeadBytes + length + 2));
  if (!pBlock) return nullptr;
  const uint32_t stored = length;
  std::memcpy(pBlock, &stored, sizeof stored);
  char* pText = pBlock + kHeadBytes;
  if (bytes) {
    std::memcpy(pText, bytes, length);
  } else {
    std::memset(pText, 0, length);
  }
  pText[length] = pText[length + 1] = '\0';
  return pText;
}

unsigned int SysStringByteLen(BSTR text) {
  uint32_t stored = 0;
  if (text) std::memcpy(&stored, text - kHeadBytes, sizeof stored);
  return stored;
}

void SysFreeString(BSTR text) {
  if (text) std::free(text - kHeadBytes);
}
}
