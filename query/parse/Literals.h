// The literals of the language. Each reads a whole token; false, with out untouched, for a token
// that is no such literal.
#pragma once

#include <string_view>

#include "query/Value.h"

namespace kestra {

// Decimal, from 0 to 2147483646.
bool ReadIntegerLiteral(std::string_view token, Value& out);
// 'text', with inner quotes doubled. A String.
bool ReadStringLiteral(std::string_view token, Value& out);
// A string literal that is a version, giving a String, or an integer literal, giving a Number.
bool ReadVersionLiteral(std::string_view token, Value& out);
// The same without the value.
bool IsStringLiteral(std::string_view token);
bool IsVersionLiteral(std::string_view token);
// 'yyyy-mm-dd' or 'yyyy-mm-dd hh:mm:ss', in local time. A Datime.
bool ReadDatimeLiteral(std::string_view token, Value& out);

}  // namespace kestra
