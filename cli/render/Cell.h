// Cell: one scalar of a result, read out of its handle.
#pragma once

#include <cstdint>
#include <string>

#include "cli/Handles.h"

namespace kestra::cli {

enum class CellKind {
  Null,
  Boolean,
  Number,
  Text,
  Version,
  Datime,
  Flags,    // the options that are set, joined by "|"
  Nothing,  // not a scalar: an item or a vector; or an Error
};

struct Cell {
  CellKind kind = CellKind::Null;
  int64_t number = 0;  // Number: signed for the language's numbers, unsigned for Dword properties.
                       // Boolean: 0 or 1. Datime: seconds since 1970 in UTC.
  std::string text;    // as the value's text form has it; for a Number as number says

  bool operator==(const Cell&) const = default;
};

Cell ReadCell(kestra_value* value);
Cell ReadCell(kestra_param* param);
// What `kestra_value_as_string` would say of a property: the number of a Dword, else its text.
std::string TextOf(kestra_param* param);

// "2024-02-29T12:30:00Z" (RFC 3339).
std::string UtcText(int64_t seconds);

}  // namespace kestra::cli
