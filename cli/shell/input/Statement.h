// CStatement: a query that is typed over several lines.
#pragma once

#include <string>

namespace kestra::cli {

class CStatement {
 public:
  void AddLine(const std::string& line);
  void Clear() { *this = {}; }

  // The lines, joined by LF.
  const std::string& Text() const { return m_text; }
  bool IsEmpty() const { return m_lineCount == 0; }
  int LineCount() const { return m_lineCount; }
  // Nothing but blanks, comments and ";".
  bool IsBlank() const { return !m_hasContent && m_inside == Inside::Nothing; }
  // What an end of line does not end.
  bool IsInText() const { return m_inside == Inside::Text; }
  bool IsInComment() const { return m_inside == Inside::Comment; }
  // Whether the last thing that is no blank and no comment is ";".
  bool EndsWithSemicolon() const { return m_inside == Inside::Nothing && m_endsWithSemicolon; }
  // A SELECT that names its columns and not yet where they come from, or ends with WHERE.
  bool WaitsForMore() const;

 private:
  enum class Inside { Nothing, Text, Comment };
  void Scan(size_t start);

  std::string m_text;
  int m_lineCount = 0;
  Inside m_inside = Inside::Nothing;
  bool m_hasContent = false;
  bool m_endsWithSemicolon = false;
};

}  // namespace kestra::cli
