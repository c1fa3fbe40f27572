// A file that is nowhere but in memory, and never changes once it is written. For libraries that
// take a name, and whose input must not change or shrink under them.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/base/SystemError.h"

namespace kestra::os {

// Write, then Seal once, then read. One thread at a time until it is sealed, any thread afterwards.
class CMemoryFile {
 public:
  virtual ~CMemoryFile() = default;
  virtual SystemError Write(std::string_view bytes) = 0;
  // Bytes written so far.
  virtual size_t Size() const = 0;
  // Ends the writing. Nothing, this process included, can change the content afterwards.
  virtual SystemError Seal() = 0;
  // Once it is sealed: what it holds, and a name under which this process can open it. Both are
  // good as long as the object lives.
  virtual std::string_view Bytes() const = 0;
  virtual std::string Path() const = 0;
};

SystemError MakeMemoryFile(std::unique_ptr<CMemoryFile>& file);

}  // namespace kestra::os
