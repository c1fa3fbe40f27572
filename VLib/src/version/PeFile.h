// Finds resources in a program file of Windows (PE32 and PE32+). Follows Microsoft's
// page "PE Format": the headers, the section table and the resource directory.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/ByteSource.h"

namespace kestra {

// No shorter file is a program.
inline constexpr size_t kLeastProgramSize = 64;
// A version block's own length is a number of 16 bits.
inline constexpr size_t kMostVersionBlock = 0xFFFF;

// Puts the bytes of the version resource into block: of those under the type 16 the one with the
// first name in its first language. Where the file ends early, what is there.
// - kErrorResourceTypeNotFound for a file that has none, or is no such program;
// - the source's error if the bytes could not be read.
// The bytes may be anything. A file that is no program costs one read of a few bytes, any other
// some ten reads, and the memory stays below one MiB.
SystemError ReadVersionResource(CByteSource& source, std::string& block);

// No larger resource is read.
inline constexpr size_t kMostResource = size_t{256} << 20;

// Puts the bytes of a resource into bytes, of its first language. A type or name is a text, in any
// case, or a number behind "#" ("#16"), as FindResource takes it.
// - kErrorResourceTypeNotFound for a file that has none of that type, or is no such program;
//   kErrorResourceNameNotFound for one that has others of the type;
// - kErrorBadExeFormat for one that is not whole in the file, kErrorFileTooLarge above the limit;
// - the source's error if the bytes could not be read.
SystemError ReadResource(CByteSource& source, std::string_view type, std::string_view name,
                         std::string& bytes);

}  // namespace kestra
