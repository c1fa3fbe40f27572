// Text at the edge of the system: UTF-8 inside, UTF-16 outside.
#pragma once

#include <string>

namespace kestra::cli {

// Empty for text that does not convert.
std::string Narrow(const wchar_t* text);
std::wstring Wide(const std::string& text);

}  // namespace kestra::cli
