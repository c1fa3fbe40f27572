#include "platform/linux/os/process/CommandLine.h"

#include <algorithm>

// Source of the rules: POSIX.1-2017, "Shell Command Language", 2.2 "Quoting".

namespace kestra::os {
namespace {

constexpr std::string_view kBlanks = " \t\n";
constexpr std::string_view kProtectedInDoubleQuotes = "\"\\$`";

class CSplitter {
 public:
  explicit CSplitter(std::string_view text) : m_text(text) {}

  bool Split(std::vector<std::string>& words) {
    for (;;) {
      m_position = std::min(m_text.find_first_not_of(kBlanks, m_position), m_text.size());
      if (m_position == m_text.size()) return true;
      std::string word;
      if (!ReadWord(word)) return false;
      words.push_back(std::move(word));
    }
  }

 private:
  bool ReadWord(std::string& word) {
    while (m_position < m_text.size()) {
      const char c = m_text[m_position++];
      if (kBlanks.find(c) != std::string_view::npos) return true;
      bool isGood = true;
      if (c == '\'') {
        isGood = ReadSingleQuoted(word);
      } else if (c == '"') {
        isGood = ReadDoubleQuoted(word);
      } else if (c == '\\') {
        isGood = ReadProtected(word);
      } else {
        word += c;
      }
      if (!isGood) return false;
    }
    return true;
  }

  bool ReadSingleQuoted(std::string& word) {
    const size_t end = m_text.find('\'', m_position);
    if (end == std::string_view::npos) return false;
    word += m_text.substr(m_position, end - m_position);
    m_position = end + 1;
    return true;
  }

  bool ReadDoubleQuoted(std::string& word) {
    while (m_position < m_text.size()) {
      const char c = m_text[m_position++];
      if (c == '"') return true;
      const char next = m_position < m_text.size() ? m_text[m_position] : '\0';
      const bool isProtecting =
          next == '\n' || (next != '\0' && kProtectedInDoubleQuotes.find(next) != kNone);
      if (c != '\\' || !isProtecting) {
        word += c;
      } else if (!ReadProtected(word)) {
        return false;
      }
    }
    return false;
  }

  // Behind a backslash that means something. With a line end it is taken away.
  bool ReadProtected(std::string& word) {
    if (m_position == m_text.size()) return false;
    const char c = m_text[m_position++];
    if (c != '\n') word += c;
    return true;
  }

  static constexpr size_t kNone = std::string_view::npos;
  std::string_view m_text;
  size_t m_position = 0;
};

}  // namespace

bool SplitCommandLine(std::string_view commandLine, std::vector<std::string>& words) {
  words.clear();
  return commandLine.find('\0') == std::string_view::npos && CSplitter(commandLine).Split(words);
}

}  // namespace kestra::os
