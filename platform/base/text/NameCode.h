// Names of any bytes, written so that they can stand where few characters may: in a file name, in
// the name of a system object.
#pragma once

#include <string>
#include <string_view>

namespace kestra {

// Letters, digits, "-", "_" and "." stand for themselves, any other byte as "%" and two hexadecimal
// digits.
std::string EscapeName(std::string_view name);

// For what is too long to be escaped: 128 bits in hexadecimal digits, which a coincidence will not
// hit, though one who means to will.
std::string HashName(std::string_view name);

}  // namespace kestra
