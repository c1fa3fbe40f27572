// Text that files and tables of Windows hold in UTF-16.
#pragma once

#include <string>
#include <string_view>

namespace kestra {

// UTF-8 of little-endian UTF-16. A surrogate without its other half becomes U+FFFD, and an odd byte
// at the end is left out.
std::string Utf8FromUtf16(std::string_view bytes);

}  // namespace kestra
