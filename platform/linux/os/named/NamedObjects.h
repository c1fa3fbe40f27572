// Where the things live that a name stands for: files in a directory that is the user's alone.
//
// The directory is /dev/shm/kestra-<effective user id>, or /tmp/kestra-locks-<effective user id> on
// a system without /dev/shm. It depends on nothing else, no environment variable in particular, so
// all processes of a user find the same one. Nothing is opened through a link.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/base/SystemError.h"
#include "platform/linux/UniqueFd.h"
#include "platform/os/Wait.h"

namespace kestra::os {

// Opens the directory, which is made if it is missing. kErrorAccessDenied when what is there is no
// directory, is another user's, gives others any right, or lies where others could replace it.
SystemError OpenNamedObjectDirectory(CUniqueFd& directory);
// The same for any name in any base directory.
SystemError OpenOwnDirectory(const std::string& base, const std::string& name,
                             CUniqueFd& directory);

// The file name of an object. Two names share one only if they are the same bytes; a long name
// stands there by its length and a 128-bit hash, which a coincidence will not hit.
std::string NamedObjectFileName(std::string_view kind, std::string_view name);

// Opens a plain file of the directory for reading and writing, making it if it is missing.
// kErrorAccessDenied for what is no plain file of the user's.
SystemError OpenNamedFile(int directory, const std::string& fileName, CUniqueFd& file);

// flock(2) with LOCK_EX, as a wait that ends: kErrorTimeout after timeOutMs, kErrorCancelled when
// one of stops (any may be null) is signalled. flock cannot be polled, and a blocking one ends only
// by a signal; so it is tried in steps that grow up to maximumStepMs, and the time between the
// tries is spent waiting for the stops.
SystemError LockWithin(int file, std::span<const CWaitable* const> stops, uint32_t timeOutMs,
                       uint32_t maximumStepMs);

}  // namespace kestra::os
