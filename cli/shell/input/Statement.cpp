#include "cli/shell/input/Statement.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "cli/Terminal.h"

namespace kestra::cli {
namespace {

bool IsBlankByte(char c) {
  return static_cast<unsigned char>(c) <= ' ' || c == '\x7F';
}

// The words of a text that stand outside its strings, in their small form.
std::vector<std::string> WordsOf(const std::string& text) {
  std::vector<std::string> words;
  bool isInString = false;
  bool isInWord = false;
  for (const char c : text) {
    if (c == '\'') isInString = !isInString;
    const bool isLetter = !isInString && std::isalpha(static_cast<unsigned char>(c)) != 0;
    if (isLetter && !isInWord) words.emplace_back();
    if (isLetter) words.back() += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    isInWord = isLetter;
  }
  return words;
}

}  // namespace

void CStatement::AddLine(const std::string& line) {
  if (m_lineCount++ != 0) m_text += '\n';
  const size_t start = m_text.size();
  m_text += line;
  Scan(start);
}

void CStatement::Scan(size_t start) {
  for (size_t i = start; i < m_text.size(); ++i) {
    const std::string_view here = std::string_view(m_text).substr(i, 2);
    if (m_inside == Inside::Text) {
      if (here.front() == '\'') m_inside = Inside::Nothing;
    } else if (m_inside == Inside::Comment) {
      if (here == "*/") {
        m_inside = Inside::Nothing;
        ++i;
      }
    } else if (here == "/*") {
      m_inside = Inside::Comment;
      ++i;
    } else if (!IsBlankByte(here.front())) {
      if (here.front() == '\'') m_inside = Inside::Text;
      m_endsWithSemicolon = here.front() == ';';
      if (!m_endsWithSemicolon) m_hasContent = true;
    }
  }
}

bool CStatement::WaitsForMore() const {
  const std::vector<std::string> words = WordsOf(m_text);
  if (words.empty() || words.front() != "select") return false;
  // The language would take a last WHERE for an alias, and give all rows.
  return words.back() == "where" || std::find(words.begin(), words.end(), "from") == words.end();
}

}  // namespace kestra::cli
