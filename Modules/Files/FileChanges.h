// What active statements do with files and directories. All of these answer false with the message
// set when they fail, and leave everything as it was then.
#pragma once

#include <optional>
#include <string>

#include "model/items/Param.h"
#include "model/items/QueryMessage.h"
#include "platform/machine/FileSystem.h"
#include "platform/machine/Machine.h"

namespace kestra {

// Makes a file out of the properties of an INSERT: FileName in the directory given (empty: none is
// known), or Path; Attributes; Source for a copy, or for the resource ResName of type ResType of
// that program (texts, or numbers behind "#"). 11000 with "FileName or Path" without a name, 11002
// when the two name different files.
bool AddFile(CMachine& machine, const std::string& directory, const DiagParams& params,
             QueryMessage& message);
// The same for a directory, with Name and Path. One out of a Source is not to be had
// (kErrorCallNotImplemented).
bool AddDirectory(CMachine& machine, const std::string& directory, const DiagParams& params,
                  QueryMessage& message);

// A file or directory that was shown to a user, and is to be changed for him: by its path, and only
// if it is still the one that was shown. kErrorFileNotFound if another one has its name by now, as
// far as that can be told; the look and the change are two steps of the system.
struct ListedFile {
  std::string path;
  std::optional<FileInfo> info;  // nothing when it could not be looked at
};

// What an UPDATE gives: another path or last part (nameProperty) of the path, and Attributes.
bool UpdateFile(CMachine& machine, const ListedFile& file, const char* nameProperty,
                const DiagParams& params, QueryMessage& message);

// Removes a file, or a link. One that is in use goes when the machine starts next, where it can do
// that.
bool DeleteListedFile(CMachine& machine, const ListedFile& file, QueryMessage& message);
// Removes a directory that is empty: what is in one is not lost by the way. Of a link to a
// directory the link goes.
bool DeleteListedDirectory(CMachine& machine, const ListedFile& directory, QueryMessage& message);

}  // namespace kestra
