// A file that is written before it has its name.
#pragma once

#include <sys/types.h>

#include <string>

#include "platform/linux/UniqueFd.h"
#include "platform/machine/FileSystem.h"

namespace kestra {

// A new file in a directory. It has no name where the file system can do that (O_TMPFILE of
// open(2)); elsewhere it has one that cannot be guessed, ".kestra-" and 32 hexadecimal digits.
// Without a MoveTo that succeeded it goes with the object. What a process leaves that is killed: a
// file without a name leaves nothing, but that one which replaces another bears such a name for a
// moment in MoveTo; a file that has a name from the beginning stays under it.
class CTemporaryFile {
 public:
  // directory is borrowed and stays open for as long as this object. The umask applies to mode.
  explicit CTemporaryFile(int directory) : m_directory(directory) {}
  ~CTemporaryFile();
  CTemporaryFile(const CTemporaryFile&) = delete;
  CTemporaryFile& operator=(const CTemporaryFile&) = delete;

  SystemError Open(mode_t mode);
  int File() const { return m_fd.get(); }
  // Gives it the name, in one step. kErrorFileExists for Existing::Refuse if the name is taken.
  SystemError MoveTo(const std::string& name, Existing existing);

 private:
  bool OpenUnnamed(mode_t mode);
  SystemError OpenNamed(mode_t mode);
  SystemError NameUnnamed();
  SystemError Rename(const std::string& name, Existing existing);

  int m_directory;
  CUniqueFd m_fd;
  std::string m_name;  // empty while it has none
};

}  // namespace kestra
