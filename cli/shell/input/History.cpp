#include "cli/shell/input/History.h"

#include <algorithm>
#include <cstdio>

#include "cli/Terminal.h"
#include "cli/shell/input/OwnFile.h"

namespace kestra::cli {
namespace {

constexpr size_t kMostEntries = 1000;
constexpr size_t kLongestEntry = size_t{64} << 10;  // what is longer came from elsewhere

std::string PathOfHistory() {
  if (const auto path = EnvironmentText("KESTRA_HISTORY")) return *path;
  const std::string directory = StateDirectory();
  return directory.empty() ? directory : directory + "/kestra/history";
}

// An entry is a line of the file: an end of line within it is written as "\n", and a backslash
// doubled.
std::string LineOf(const std::string& entry) {
  std::string line;
  for (const char c : entry) {
    if (c == '\n' || c == '\\') line += '\\';
    line += c == '\n' ? 'n' : c;
  }
  return line += '\n';
}

std::string EntryOf(std::string_view line) {
  std::string entry;
  for (size_t i = 0; i < line.size(); ++i) {
    const bool isEscaped = line[i] == '\\' && i + 1 < line.size();
    if (isEscaped) ++i;
    entry += isEscaped && line[i] == 'n' ? '\n' : line[i];
  }
  return entry;
}

// The last lines of a file's content, where it has more.
std::string LastLines(const std::string& content) {
  size_t start = content.size();
  for (size_t lines = 0; start > 0 && lines < kMostEntries; ++lines) {
    const size_t before = start >= 2 ? content.rfind('\n', start - 2) : std::string::npos;
    start = before == std::string::npos ? 0 : before + 1;
  }
  return content.substr(start);
}

}  // namespace

CHistory::CHistory() : m_path(PathOfHistory()) {
  if (m_path.empty()) return;
  std::string content;
  const std::string failure = TrimOwnFile(m_path, LastLines, content);
  if (!failure.empty()) Tell(failure);
  for (size_t start = 0; start < content.size();) {
    const size_t end = std::min(content.find('\n', start), content.size());
    m_entries.push_back(EntryOf(std::string_view(content).substr(start, end - start)));
    start = end + 1;
  }
  if (!m_entries.empty()) m_last = m_entries.back();
}

bool CHistory::Add(const std::string& entry) {
  if (entry == m_last) return false;
  m_last = entry;
  if (m_path.empty() || entry.size() > kLongestEntry) return true;
  const std::string failure = AppendToOwnFile(m_path, LineOf(entry));
  if (!failure.empty()) Tell(failure);
  return true;
}

void CHistory::Tell(const std::string& failure) {
  std::fprintf(stderr, "kestra: the history is not kept: %s: %s\n", m_path.c_str(),
               failure.c_str());
  m_path.clear();
}

}  // namespace kestra::cli
