// The bytes of an open file, for the decoders of binary files.
#pragma once

#include <algorithm>
#include <string>

#include "VLib/src/threads/TerminationLook.h"
#include "platform/base/ByteSource.h"
#include "platform/machine/FileSystem.h"

namespace kestra {

// What lies within the last read is not read again: the headers of a program come with one.
class CFileSource final : public CByteSource {
 public:
  CFileSource(CFileReader& reader, const os::CWaitable* pTermination)
      : m_reader(reader), m_termination(pTermination) {}

  SystemError ReadAt(uint64_t offset, size_t length, std::string& bytes) override {
    if (!Holds(offset, length)) {
      const SystemError error = Fetch(offset, length);
      if (error != kErrorSuccess) return error;
    }
    const uint64_t begin = std::min<uint64_t>(offset - m_offset, m_window.size());
    bytes = m_window.substr(static_cast<size_t>(begin), length);
    return kErrorSuccess;
  }

 private:
  static constexpr size_t kLeastRead = 1024;

  bool Holds(uint64_t offset, size_t length) const {
    if (offset < m_offset || offset - m_offset > m_window.size()) return false;
    return m_isAtEnd || m_window.size() - static_cast<size_t>(offset - m_offset) >= length;
  }

  SystemError Fetch(uint64_t offset, size_t length) {
    m_window.clear();
    m_isAtEnd = false;
    m_offset = offset;
    // A file is read from its start, so that the first read needs no seek.
    SystemError error = offset == m_position ? kErrorSuccess : m_reader.Seek(offset);
    while (error == kErrorSuccess && !m_isAtEnd && m_window.size() < length) {
      if (m_termination.IsOverNow()) {
        error = kErrorCancelled;
        break;
      }
      const size_t before = m_window.size();
      error = m_reader.Read(std::max(length, kLeastRead) - before, m_window);
      m_isAtEnd = m_window.size() == before;
    }
    m_position = offset + m_window.size();
    if (error != kErrorSuccess) m_window.clear();
    return error;
  }

  CFileReader& m_reader;
  CTerminationLook m_termination;
  std::string m_window;
  uint64_t m_offset = 0;    // of the window
  uint64_t m_position = 0;  // of the reader
  bool m_isAtEnd = false;   // the window reaches the file's end
};

}  // namespace kestra
