// What the drivers of Windows file systems keep of a file's attribute word.
#pragma once

#include <cstdint>
#include <string>

namespace kestra::image {

// Of an entry of an open directory; a link is not followed. 0 where nothing is kept.
uint32_t ReadDosAttributes(int directory, const std::string& name);

}  // namespace kestra::image
