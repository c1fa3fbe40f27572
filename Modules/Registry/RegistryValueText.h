// What the bytes of a registry value say, and back: the properties StringValue and DWORDValue.
#pragma once

#include <cstdint>
#include <string>

#include "model/items/Param.h"
#include "model/items/QueryMessage.h"
#include "platform/machine/Registry.h"

namespace kestra {

// Sets StringValue or DWORDValue, or neither:
// - texts, up to their first NUL if they have one; those of kRegExpandSz are not expanded, so that
//   they can be written back as they were;
// - the strings of kRegMultiSz with the separator between them, whatever terminators there are;
// - bytes as two digits each, in upper case, with a blank between: "0A FF";
// - a kRegDword of exactly four bytes; one of another length is no number and sets nothing.
// The other types set nothing.
void SetValueProperties(DiagParams& params, uint32_t type, const std::string& data,
                        const std::string& separator);

// Writes what a statement gives: one routine for making and for changing a value. False with the
// message set, and the value as it was:
//
//   type          needs                       refused
//   SZ, ExpandSZ  StringValue (11000)         both given: 11010
//   Binary        StringValue (11000)         both given: 11000 with "DWORDValue"; no pairs of
//                                             hexadecimal digits: 11000 with the text
//   DWORD         either one (11000)          a text that is no decimal number of 32 bits: 11002;
//                                             two that contradict each other: 11010
//   MultiSZ       StringValue (11000)         both given: 11010; an empty string in front of
//                                             another or between two: 16003
//   any other                                 11007 with "Type"
//
// A number may be written signed or unsigned ("-1" is 4294967295). Blanks in Binary text count for
// nothing. One separator behind the last string of a MultiSZ is its end. A text with a NUL in it,
// which would be cut there, is kErrorInvalidParameter.
bool WriteValue(CRegistryKey& key, const std::string& name, uint32_t type,
                const std::string& separator, const DiagParams& params, QueryMessage& message);

}  // namespace kestra
