// The names of the system's named objects.
#pragma once

#include <string>
#include <string_view>

namespace kestra::os {

// A name as the system has it, without any prefix. It is the name itself where that can be one:
// UTF-8 without a backslash, which divides name spaces, or a NUL, and at most 200 characters. Any
// other one begins with "%" and is escaped, as is a name that begins so itself; two names share one
// only if they are the same bytes, but long ones are told apart by their length, their beginning
// and a 128-bit hash.
std::wstring ObjectName(std::string_view name);

}  // namespace kestra::os
