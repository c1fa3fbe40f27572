// Text that files and tables of Windows hold in UTF-16.
#pragma once

#include <string>
#include <string_view>

namespace kestra {

// UTF-8 of little-endian UTF-16. A surrogate without its other half, which names of files and keys
// may have, becomes the three bytes that it would have if it were a character (the form that is
// called WTF-8), so that the name is told from others and leads back to the same file or key. An
// odd byte at the end is left out.
std::string Utf8FromUtf16(std::string_view bytes);

}  // namespace kestra
