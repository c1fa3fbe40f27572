// Loading libraries at run time, and the byte strings that they hand over.
#pragma once

#include <cstdint>
#include <string>

namespace kestra::os {

using NativeLibrary = void*;

// Loads a library by the system's rules for names and paths; null if that fails. It is never
// unloaded: code of it may still run on a thread that was left behind.
NativeLibrary OpenLibrary(const std::string& name);
// The address of an exported function; null if there is none.
void* FindExport(NativeLibrary library, const std::string& name);

// Byte strings that a library makes and the caller releases: BSTRs of 8-bit text. On Windows they
// are OLE's; elsewhere they are made by the functions that include/kestra/plugin.h declares.
using ByteString = char*;
uint32_t ByteStringLength(ByteString text);  // bytes; 0 for null
void FreeByteString(ByteString text);

}  // namespace kestra::os
