#include "platform/os/Library.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "include/kestra/plugin.h"
#include "platform/os/HostEnvironment.h"

namespace {

// Stands before the bytes. The mark tells a string of ours from any other pointer that a library
// may hand over by mistake, a literal say: that one then counts as an empty string, and is not
// freed. Two NULs stand behind the bytes, as in OLE's strings.
struct ByteStringHead {
  uint32_t mark;
  uint32_t length;
};
constexpr uint32_t kMark = 0x7274534B;

// Null for null and for a pointer that is none of ours. Both words lie in one aligned unit before
// the bytes, so that looking at them never touches a page that the pointer itself does not.
ByteStringHead* HeadOf(BSTR text) {
  if (reinterpret_cast<uintptr_t>(text) % (2 * sizeof(ByteStringHead)) != sizeof(ByteStringHead)) {
    return nullptr;
  }
  auto* pHead = reinterpret_cast<ByteStringHead*>(text - sizeof(ByteStringHead));
  return pHead->mark == kMark ? pHead : nullptr;
}

// What plugin.h declares must be found by what we load, also where the host has loaded us for
// itself alone, as the loaders of scripting languages do.
void ShareOwnSymbols() {
  static const bool isShared = [] {
    const std::string own = kestra::os::LibraryPath();
    return dlopen(own.c_str(), RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL) != nullptr;
  }();
  (void)isShared;  // a program that the engine is linked into shares what it exports anyway
}

}  // namespace

namespace kestra::os {

NativeLibrary OpenLibrary(const std::string& name, LibraryUse use) {
  ShareOwnSymbols();
  const int flags = RTLD_NOW | RTLD_LOCAL | (use == LibraryUse::ForEver ? RTLD_NODELETE : 0);
  return name.empty() ? nullptr : dlopen(name.c_str(), flags);
}

void CloseLibrary(NativeLibrary library) {
  if (library) dlclose(library);
}

void* FindExport(NativeLibrary library, const std::string& name) {
  return library ? dlsym(library, name.c_str()) : nullptr;
}

std::string LibraryText(std::string_view utf8) {
  return std::string(utf8);
}

CByteString::CByteString(std::string_view utf8) {
  const bool fits = utf8.size() <= std::numeric_limits<uint32_t>::max();
  if (fits) m_pText = SysAllocStringByteLen(utf8.data(), static_cast<uint32_t>(utf8.size()));
  if (!m_pText) throw std::bad_alloc();
}

CByteString::~CByteString() {
  SysFreeString(m_pText);
}

CByteString CByteString::Take(ByteString text) {
  CByteString taken;
  if (HeadOf(text)) taken.m_pText = text;
  return taken;
}

std::optional<std::string> CByteString::Text() const {
  if (!m_pText) return std::nullopt;
  return std::string(m_pText, SysStringByteLen(m_pText));
}

}  // namespace kestra::os

extern "C" {

BSTR SysAllocStringByteLen(const char* bytes, unsigned int length) {
  if (length > std::numeric_limits<uint32_t>::max() - sizeof(ByteStringHead) - 2) return nullptr;
  auto* pBlock = static_cast<char*>(std::malloc(sizeof(ByteStringHead) + length + 2));
  if (!pBlock) return nullptr;
  const ByteStringHead head{kMark, length};
  std::memcpy(pBlock, &head, sizeof head);
  char* pText = pBlock + sizeof head;
  if (bytes) {
    std::memcpy(pText, bytes, length);
  } else {
    std::memset(pText, 0, length);
  }
  pText[length] = pText[length + 1] = '\0';
  return pText;
}

unsigned int SysStringByteLen(BSTR text) {
  const ByteStringHead* pHead = HeadOf(text);
  return pHead ? pHead->length : 0;
}

void SysFreeString(BSTR text) {
  ByteStringHead* pHead = HeadOf(text);
  if (!pHead) return;
  pHead->mark = 0;
  std::free(pHead);
}
}
