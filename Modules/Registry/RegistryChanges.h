// What active statements do with keys and values, in the view in which they were listed. All of
// these answer false with the message set when they fail, and leave everything as it was at the
// moment of the call that failed; nothing is undone. kErrorCallNotImplemented on a machine without
// a registry.
#pragma once

#include <string>

#include "Modules/Registry/RegistryOptions.h"
#include "model/items/Param.h"
#include "model/items/QueryMessage.h"
#include "platform/machine/Machine.h"

namespace kestra {

// Makes a key out of Name, which may have backslashes: the keys on the way are made too. Refused:
// - no Name: 11000 with "Name"; another property, which nobody could store: 11007 with its name;
// - more than 255 characters, alone or behind the parent's path: kErrorFilenameExceedsRange; so too
//   a name of more than 32 keys on a workstation of NT 6.0 and newer, where one call makes as many
//   at most (the Win32 page "Registry Element Size Limits");
// - an empty part: kErrorInvalidName;
// - a key that is there: 16002 with the name.
bool AddRegistryKey(CMachine& machine, const RegistryHive& hive, const std::string& parentPath,
                    const DiagParams& params, QueryMessage& message);

// Makes a value out of Name (empty for the default value), Type, StringValue and DWORDValue, as
// WriteValue takes them. Refused: no Name or Type: 11000; a Path: 11007; a name of 256 characters
// and more: kErrorFilenameExceedsRange; a value that is there: 16002 with the name.
bool AddRegistryValue(CMachine& machine, const RegistryOptions& options, const std::string& keyPath,
                      const DiagParams& params, QueryMessage& message);

// Gives a value of that type new data. One that is not there any more is not made anew
// (kErrorFileNotFound).
bool UpdateRegistryValue(CMachine& machine, const RegistryOptions& options,
                         const std::string& keyPath, const std::string& name, uint32_t type,
                         const DiagParams& params, QueryMessage& message);

bool DeleteRegistryValue(CMachine& machine, const RegistryHive& hive, const std::string& keyPath,
                         const std::string& name, QueryMessage& message);

// Removes a key with all below it, from the bottom. A symbolic link among them, or in its place, is
// removed itself, and what it leads to stays. True for one that is gone already: a statement
// may have removed a key above it just before. A hive itself is never touched (kErrorAccessDenied).
bool DeleteRegistryKey(CMachine& machine, const RegistryHive& hive, const std::string& path,
                       QueryMessage& message);

}  // namespace kestra
