// Loading libraries at run time, and the byte strings that they hand over.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kestra::os {

using NativeLibrary = void*;

enum class LibraryUse {
  ForEver,  // never unloaded: code of it may still run on a thread that was left behind
  ForNow,   // until CloseLibrary
};

// Loads a library by the system's rules for names and paths; null if that fails. Loading runs the
// library's own start-up code.
NativeLibrary OpenLibrary(const std::string& name, LibraryUse use = LibraryUse::ForEver);
// Lets go of what OpenLibrary gave. A library that was also loaded for ever stays. Null is allowed.
void CloseLibrary(NativeLibrary library);
// The address of an exported function; null if there is none, and for no library.
void* FindExport(NativeLibrary library, const std::string& name);

// Libraries speak 8-bit text: on Windows in the system's code page, elsewhere in UTF-8. It is
// converted here, in both directions; a character that the code page does not have becomes what
// the system puts in its place.

// Text for a function that takes a plain pointer; NULs inside stay. Throws std::bad_alloc.
std::string LibraryText(std::string_view utf8);

// Byte strings that libraries and this one hand each other: BSTRs of 8-bit text. On Windows they
// are OLE's; elsewhere they are made by the functions that include/kestra/plugin.h declares.
using ByteString = char*;

// Owns one. The library that a call gives it to reads it and leaves it alone.
class CByteString {
 public:
  CByteString() = default;
  // Throws std::bad_alloc.
  explicit CByteString(std::string_view utf8);
  // Takes over what a library made. Where the system can tell (not on Windows), a pointer that is
  // no such string, a literal say, counts as null and is left alone.
  static CByteString Take(ByteString text);
  CByteString(CByteString&& other) noexcept : m_pText(std::exchange(other.m_pText, nullptr)) {}
  CByteString& operator=(CByteString&& other) noexcept {
    std::swap(m_pText, other.m_pText);
    return *this;
  }
  ~CByteString();

  ByteString get() const { return m_pText; }
  // All of it, as UTF-8; nothing for null.
  std::optional<std::string> Text() const;

 private:
  ByteString m_pText = nullptr;
};

}  // namespace kestra::os
