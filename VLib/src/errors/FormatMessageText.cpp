#include "VLib/src/errors/DiagMessage.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

// What "%c" stands for where c is no digit; null for a character that has no meaning.
const char* PlainEscape(char c) {
  switch (c) {
    case '%':
      return "%";
    case 'n':
      return "\r\n";
    case 'r':
      return "\r";
    case 't':
      return "\t";
    case 'b':
      return " ";
    case ' ':
      return " ";
    case '.':
      return ".";
    case '!':
      return "!";
    default:
      return nullptr;
  }
}

// End of the insert that begins at text[start]: "%" and one or two digits, then perhaps a printf
// format between exclamation marks. number becomes the insert's number.
size_t EndOfInsert(const std::string& text, size_t start, size_t& number) {
  size_t end = start + 1;
  number = 0;
  for (; end < text.size() && end <= start + 2 && IsAsciiDigit(text[end]); ++end) {
    number = number * 10 + static_cast<size_t>(text[end] - '0');
  }
  if (end < text.size() && text[end] == '!') {
    const size_t close = text.find('!', end + 1);
    if (close != std::string::npos) return close + 1;
  }
  return end;
}

}  // namespace

std::string FormatMessageText(const std::string& text, const std::vector<std::string>& inserts) {
  std::string result;
  size_t i = 0;
  while (i < text.size()) {
    if (text[i] != '%' || i + 1 >= text.size()) {
      result += text[i++];
      continue;
    }
    const char next = text[i + 1];
    if (next == '0') break;  // ends the message without a line end
    if (IsAsciiDigit(next)) {
      size_t number = 0;
      const size_t end = EndOfInsert(text, i, number);
      result += number <= inserts.size() ? inserts[number - 1] : text.substr(i, end - i);
      i = end;
    } else if (const char* escape = PlainEscape(next)) {
      result += escape;
      i += 2;
    } else {
      result += text[i++];
    }
  }
  return result;
}

}  // namespace kestra
