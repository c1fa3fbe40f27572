// The lines of Wine's registry files, and what is written in them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/os/CurrentTermination.h"

namespace kestra::image {

// Walks over the lines of a text, without their ends (LF or CR LF). When the thread's work is
// terminated the text counts as ended.
class CLineCursor {
 public:
  explicit CLineCursor(std::string_view text) : m_rest(text) {}
  // False behind the last line.
  bool Next(std::string_view& line);
  bool IsTerminated() const { return m_isTerminated; }

 private:
  std::string_view m_rest;
  os::CPacedTermination m_termination;
  bool m_isTerminated = false;
};

// The text from line[position] to the end character, with its escapes resolved, in UTF-8; position
// moves behind the end character. False if the line ends before, or the thread's work is
// terminated.
bool ReadEscaped(std::string_view line, size_t& position, char end, std::string& text);

// The hexadecimal digits from line[position] on, at most limit of them; position moves behind them.
// False if there is none.
bool ReadHex(std::string_view line, size_t& position, size_t limit, uint64_t& number);

// What stands behind "name"=: the type and the data as CRegistryKey gives them. Takes further lines
// from the cursor as the value goes on there. False if it makes no sense.
bool ReadWineValue(std::string_view rest, CLineCursor& lines, uint32_t& type, std::string& data);

}  // namespace kestra::image
