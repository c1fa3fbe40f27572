#include "platform/image/registry/wine/WineText.h"

#include "platform/base/text/Utf16.h"
#include "platform/image/registry/tree/KeyTree.h"
#include "platform/machine/Registry.h"

namespace kestra::image {
namespace {

int HexDigit(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  return -1;
}

bool IsOctalDigit(char character) {
  return character >= '0' && character <= '7';
}

char ControlCharacter(char letter) {
  constexpr std::string_view kLetters = "abefnrtv";
  constexpr std::string_view kCharacters = "\a\b\x1B\f\n\r\t\v";
  const size_t place = kLetters.find(letter);
  return place == std::string_view::npos ? letter : kCharacters[place];
}

// Text that comes as characters and as units of UTF-16, two of which may be one character.
class CMixedText {
 public:
  explicit CMixedText(std::string& text) : m_text(text) {}
  void Append(std::string_view characters) {
    Flush();
    m_text += characters;
  }
  void AppendUnit(uint32_t unit) {
    m_units += static_cast<char>(unit & 0xFF);
    m_units += static_cast<char>(unit >> 8 & 0xFF);
  }
  void Flush() {
    if (m_units.empty()) return;
    m_text += Utf8FromUtf16(m_units);
    m_units.clear();
  }

 private:
  std::string& m_text;
  std::string m_units;
};

uint32_t ReadOctal(std::string_view line, size_t& position) {
  uint32_t number = 0;
  for (int i = 0; i < 3 && position < line.size() && IsOctalDigit(line[position]); ++i) {
    number = number * 8 + static_cast<uint32_t>(line[position++] - '0');
  }
  return number;
}

// position stands behind the backslash, and within the line.
void ReadEscape(std::string_view line, size_t& position, CMixedText& text) {
  const char letter = line[position];
  if (IsOctalDigit(letter)) {
    text.AppendUnit(ReadOctal(line, position));
    return;
  }
  ++position;
  uint64_t unit = 0;
  if (letter == 'x' && ReadHex(line, position, 4, unit)) {
    text.AppendUnit(static_cast<uint32_t>(unit));
    return;
  }
  const char character = ControlCharacter(letter);
  text.Append({&character, 1});
}

void SkipBlanks(std::string_view line, size_t& position) {
  while (position < line.size() && (line[position] == ' ' || line[position] == '\t')) ++position;
}

// Pairs of digits with commas between; a backslash at the end of a line goes on in the next one.
bool ReadBytes(std::string_view line, size_t position, CLineCursor& lines, std::string& bytes) {
  os::CPacedTermination termination;
  for (SkipBlanks(line, position); position < line.size(); SkipBlanks(line, position)) {
    if (termination.IsOver()) return false;
    if (line[position] == '\\') {
      if (position + 1 != line.size() || !lines.Next(line)) return false;
      position = 0;
      continue;
    }
    uint64_t byte = 0;
    if (!ReadHex(line, position, 2, byte)) return false;
    bytes += static_cast<char>(byte);
    if (position < line.size() && line[position] != ',') return false;
    ++position;
  }
  return true;
}

bool ReadString(std::string_view rest, size_t position, std::string& data) {
  if (position >= rest.size() || rest[position] != '"') return false;
  if (!ReadEscaped(rest, ++position, '"', data)) return false;
  data += '\0';
  SkipBlanks(rest, position);
  return position == rest.size();
}

// "word(n):" with the number in hexadecimal digits; position moves behind the colon.
bool ReadTyped(std::string_view rest, std::string_view word, size_t& position, uint32_t& type) {
  if (rest.substr(0, word.size()) != word) return false;
  position = word.size();
  uint64_t number = 0;
  if (!ReadHex(rest, position, 8, number) || rest.substr(position, 2) != "):") return false;
  position += 2;
  type = static_cast<uint32_t>(number);
  return true;
}

bool ReadDword(std::string_view rest, size_t position, std::string& data) {
  uint64_t number = 0;
  if (!ReadHex(rest, position, 8, number) || position != rest.size()) return false;
  for (int i = 0; i < 4; ++i, number >>= 8) data += static_cast<char>(number & 0xFF);
  return true;
}

}  // namespace

bool CLineCursor::Next(std::string_view& line) {
  m_isTerminated = m_isTerminated || m_termination.IsOver();
  if (m_rest.empty() || m_isTerminated) return false;
  const size_t end = m_rest.find('\n');
  line = m_rest.substr(0, end);
  m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + 1);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return true;
}

bool ReadHex(std::string_view line, size_t& position, size_t limit, uint64_t& number) {
  const size_t begin = position;
  number = 0;
  while (position < line.size() && position - begin < limit && HexDigit(line[position]) >= 0) {
    number = number << 4 | static_cast<uint64_t>(HexDigit(line[position++]));
  }
  return position != begin;
}

bool ReadEscaped(std::string_view line, size_t& position, char end, std::string& text) {
  text.clear();
  CMixedText mixed(text);
  const char stops[] = {'\\', end};
  os::CPacedTermination termination;
  while (position < line.size() && !termination.IsOver()) {
    const size_t stop = line.find_first_of({stops, 2}, position);
    if (stop == std::string_view::npos) return false;
    if (stop != position) mixed.Append(line.substr(position, stop - position));
    position = stop + 1;
    if (line[stop] == end) {
      mixed.Flush();
      return true;
    }
    if (position == line.size()) return false;
    ReadEscape(line, position, mixed);
  }
  return false;
}

bool ReadWineValue(std::string_view rest, CLineCursor& lines, uint32_t& type, std::string& data) {
  constexpr std::string_view kDword = "dword:";
  constexpr std::string_view kHex = "hex:";
  size_t position = 0;
  data.clear();
  type = kRegSz;
  if (rest.substr(0, 1) == "\"") return ReadString(rest, 0, data);
  if (ReadTyped(rest, "str(", position, type)) {
    // Only types that hold text are written so; of any other the bytes would not be known.
    const bool isText = type == kRegSz || type == kRegExpandSz || type == kRegMultiSz;
    return isText && ReadString(rest, position, data);
  }
  if (rest.substr(0, kDword.size()) == kDword) {
    type = kRegDword;
    return ReadDword(rest, kDword.size(), data);
  }
  if (rest.substr(0, kHex.size()) == kHex) {
    type = kRegBinary;
    position = kHex.size();
  } else if (!ReadTyped(rest, "hex(", position, type)) {
    return false;
  }
  std::string bytes;
  if (!ReadBytes(rest, position, lines, bytes)) return false;
  data = DataFromStored(type, bytes);
  return true;
}

}  // namespace kestra::image
