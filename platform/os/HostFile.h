// Files of the host process's own: the log, and later data files and cache entries. UTF-8 paths.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/base/SystemError.h"

namespace kestra::os {

// An open file with a position. One thread at a time.
class CHostFile {
 public:
  virtual ~CHostFile() = default;
  // Writes all of data at the position, which moves behind it. written counts what reached the
  // file also when the answer is an error.
  virtual SystemError Write(std::string_view data, size_t& written) = 0;
  virtual SystemError Seek(uint64_t offset) = 0;
  // Sets the file's end at offset, growing or cutting it; the position moves there.
  virtual SystemError SetEnd(uint64_t offset) = 0;
  virtual SystemError Size(uint64_t& size) = 0;
};

// Opens a file for reading and writing, making it if it does not exist, and keeps every other
// writer out while it is open (readers are let in): a second open of this kind fails with
// kErrorSharingViolation, from this process too. A symbolic link in the last place is refused
// with kErrorAccessDenied, and so is what is no plain file, has a second name or belongs to another
// user. New files are readable by the user alone. (On Windows the access list of the directory says
// whose a file is and who may read it.)
SystemError OpenExclusive(const std::string& path, std::unique_ptr<CHostFile>& file);

// Reads at most limit bytes from the start of a plain file into content. A symbolic link in the
// last place is refused with kErrorAccessDenied.
SystemError ReadFileHead(const std::string& path, size_t limit, std::string& content);

// The same path from the root on; as it is if the system does not tell.
std::string FullPath(const std::string& path);
bool DirectoryExists(const std::string& path);
bool PathExists(const std::string& path);
// Makes one directory, for the user alone on Linux. kErrorAlreadyExists if the path exists.
SystemError MakeDirectory(const std::string& path);
// True when another user than this one and the system's own may make or replace files in the
// directory, so that a name there that can be guessed is not safe; also when that cannot be told.
// Always false on Windows, where access lists settle who may do what with a file.
bool OthersCanWrite(const std::string& path);

}  // namespace kestra::os
