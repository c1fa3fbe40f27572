// What a hive's cells say of a key or value that hivex does not give, or gives up at: class names,
// the mark of a link, and names that hold a NUL or half a surrogate pair. The layout is that of the
// "Windows registry file format specification" by M. Suhanov.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/image/registry/tree/KeyTree.h"

namespace kestra::image {

// The bytes are those of the whole file and cell is the offset of a cell's size in it, as hivex's
// handles are. All functions look at every limit; false for a cell that is not what it must be.
bool ReadKeyName(std::string_view hive, uint64_t cell, std::string& name);
// isWhole: nothing was left out since it is damaged.
bool ReadKeyFacts(std::string_view hive, uint64_t cell, KeyFacts& facts, bool& isWhole);
bool IsLinkCell(std::string_view hive, uint64_t cell);
bool ReadValueName(std::string_view hive, uint64_t cell, std::string& name);
// How long the value says that its data are: a number that the file may or may not have room for.
bool ReadValueLength(std::string_view hive, uint64_t cell, uint32_t& length);

}  // namespace kestra::image
