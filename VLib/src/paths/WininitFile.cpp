#include "VLib/src/paths/WininitFile.h"

#include <algorithm>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

constexpr std::string_view kSection = "rename";
constexpr size_t kSectionBuffer = 32767;

// Walks the lines of a text; each is trimmed of blanks.
class CLines {
 public:
  explicit CLines(std::string_view text) : m_text(text) {}
  bool Next() {
    if (m_end == m_text.size()) return false;
    m_begin = m_end;
    m_end = std::min(m_text.find('\n', m_begin), m_text.size() - 1) + 1;
    return true;
  }
  size_t Begin() const { return m_begin; }
  size_t End() const { return m_end; }  // behind the line end
  std::string_view Line() const {
    const std::string_view line = m_text.substr(m_begin, m_end - m_begin);
    const size_t first = line.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? "" : TrimRight(line.substr(first), kBlanks);
  }

 private:
  static constexpr std::string_view kBlanks = " \t\r\n";
  std::string_view m_text;
  size_t m_begin = 0;
  size_t m_end = 0;
};

bool IsRenameHeader(std::string_view line) {
  const size_t close = line.find(']');
  return line.starts_with('[') && close != std::string_view::npos &&
         EqualsNoCase(TrimBlanks(line.substr(1, close - 1)), kSection);
}

struct Section {
  size_t end = 0;     // behind its last line that is not empty; 0 when there is no such section
  size_t buffer = 1;  // what its lines take there, each with a NUL, and one more at the end
};

// Source: the Win32 page of GetPrivateProfileSection. The first section of the name counts, and
// comments are no part of what is read.
Section FindSection(std::string_view content) {
  Section section;
  CLines lines(content);
  while (lines.Next()) {
    const std::string_view line = lines.Line();
    if (line.starts_with('[')) {
      if (section.end != 0) break;
      if (IsRenameHeader(line)) section.end = lines.End();
    } else if (section.end != 0 && !line.empty()) {
      section.end = lines.End();
      if (!line.starts_with(';')) section.buffer += line.size() + 1;
    }
  }
  return section;
}

}  // namespace

SystemError AddRenameLine(std::string& content, std::string_view line) {
  Section section = FindSection(content);
  if (section.buffer + line.size() + 1 > kSectionBuffer) return kErrorInsufficientBuffer;
  const bool hasBareLineEnds =
      content.find('\n') != std::string::npos && content.find("\r\n") == std::string::npos;
  const std::string lineEnd = hasBareLineEnds ? "\n" : "\r\n";
  std::string addition = std::string(line) + lineEnd;
  if (section.end == 0) {
    section.end = content.size();
    addition.insert(0, "[" + std::string(kSection) + "]" + lineEnd);
  }
  if (section.end != 0 && content[section.end - 1] != '\n') addition.insert(0, lineEnd);
  content.insert(section.end, addition);
  return kErrorSuccess;
}

}  // namespace kestra
