// A file that is written before it has its name.
#pragma once

#include <string>

#include "platform/machine/FileSystem.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/machine/files/NativePath.h"

namespace kestra {

// A new file in the directory of the one that it shall become, with a name that cannot be guessed:
// ".kestra-" and 32 hexadecimal digits. Without a MoveTo that succeeded it goes with the object;
// what a process leaves that is killed stays under that name.
class CTemporaryFile {
 public:
  explicit CTemporaryFile(const NativePath& target) : m_target(target) {}
  ~CTemporaryFile();
  CTemporaryFile(const CTemporaryFile&) = delete;
  CTemporaryFile& operator=(const CTemporaryFile&) = delete;

  // Makes the file, open for writing. attributes are those of CreateFile.
  SystemError Open(DWORD attributes);
  // Only chooses the name, for somebody else to make the file.
  SystemError Choose();
  HANDLE File() const { return m_file.get(); }
  const std::wstring& Name() const { return m_name; }

  // Gives it the target's name, in one step where the system can. kErrorFileExists for
  // Existing::Refuse if the name is taken. After a failure the name stands for what it stood for.
  SystemError MoveTo(Existing existing);

 private:
  SystemError MoveToFreeName();
  SystemError MoveOver();
  SystemError RenameOpenFile();
  SystemError Exchange();
  void Keep();

  const NativePath& m_target;
  std::wstring m_name;  // empty while it has none, and when it is the target
  CUniqueHandle m_file;
};

}  // namespace kestra
