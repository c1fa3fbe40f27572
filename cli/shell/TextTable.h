// The shell's own answers: lines of texts that stand below each other.
#pragma once

#include <string>
#include <vector>

namespace kestra::cli {

// What a text of several sentences begins with.
std::string FirstSentence(const std::string& text);

class CTextTable {
 public:
  // The texts of one line, from left to right.
  void AddLine(std::vector<std::string> texts) { m_lines.push_back(std::move(texts)); }
  bool IsEmpty() const { return m_lines.empty(); }
  // The last text of a line is wrapped at blanks where the line would be wider than width.
  std::string Text(size_t width) const;

 private:
  std::vector<std::vector<std::string>> m_lines;
};

}  // namespace kestra::cli
