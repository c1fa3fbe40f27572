// The module list of a root: "Files(DirPath='c:\x')#3600*|*".
#include <algorithm>
#include <optional>

#include "VLib/src/text/Text.h"
#include "model/root/Root.h"

namespace kestra {
namespace {

// Seconds behind a "#"; nothing for a text that is no decimal number of 31 bits.
std::optional<int32_t> ParseTimeToLive(std::string_view text) {
  size_t consumed = 0;
  if (text.empty() || !IsAsciiDigit(text.front())) return std::nullopt;
  const int32_t seconds = ParseInt32(text, consumed);
  if (consumed != text.size() || seconds == INT32_MAX) return std::nullopt;
  return seconds;
}

// Name, and arguments if there are parentheses behind it.
bool ParseNameAndArgs(std::string_view piece, std::string& name, std::string& args) {
  const size_t open = piece.find('(');
  name = TrimBlanks(piece.substr(0, open));
  if (open == std::string_view::npos) return true;
  if (piece.back() != ')') return false;
  args = piece.substr(open + 1, piece.size() - open - 2);
  return true;
}

}  // namespace

// "*", with a time to live behind "#".
bool DiagRoot::ParseStar(std::string_view text, ListEntry& star) {
  const size_t hash = text.find('#');
  if (hash == std::string_view::npos) return true;
  std::string_view number = text.substr(hash);
  number.remove_prefix(std::min(number.find_first_not_of("*#"), number.size()));
  const auto seconds = ParseTimeToLive(number);
  star.timeToLive = seconds.value_or(-1);
  return seconds.has_value();
}

// "Name(arguments)#seconds*".
bool DiagRoot::ParseEntry(std::string_view text, ListEntry& entry) {
  const std::vector<std::string> pieces = SplitQuoted(text, '#', '\'');
  if (pieces.empty() || pieces.size() > 2) return false;
  if (!ParseNameAndArgs(TrimBlanks(pieces[0]), entry.name, entry.args)) return false;
  if (pieces.size() == 1) return true;
  std::string_view number = TrimBlanks(pieces[1]);
  entry.anyUser = !number.empty() && number.back() == '*';
  if (entry.anyUser) number.remove_suffix(1);
  const auto seconds = ParseTimeToLive(number);
  entry.timeToLive = seconds.value_or(-1);
  return seconds.has_value();
}

bool DiagRoot::ParseModuleList(std::vector<ListEntry>& entries) {
  std::optional<size_t> starPosition;
  ListEntry star;
  for (const std::string& whole : m_names) {
    const std::string_view text = TrimBlanks(whole);
    if (!text.empty() && text.front() == '*') {
      if (starPosition || !ParseStar(text, star)) return false;
      starPosition = entries.size();
    } else if (!ParseEntry(text, entries.emplace_back())) {
      return false;
    }
  }
  if (!starPosition) return true;

  std::vector<ListEntry> others;
  const auto addUnnamed = [&](const std::string& name, const ModuleRow* pRow) {
    const bool isNamed = std::any_of(entries.begin(), entries.end(), [&](const ListEntry& entry) {
      return EqualsNoCase(entry.name, name);
    });
    if (isNamed) return;
    star.name = name;
    star.isFromStar = true;
    star.pRow = pRow;
    others.push_back(star);
  };
  for (const ModuleRow& row : m_table) addUnnamed(row.pClass->name, &row);
  for (const std::string& name : PluginNames()) {
    if (!FindRow(name)) addUnnamed(name, nullptr);
  }
  entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(*starPosition), others.begin(),
                 others.end());
  return true;
}

}  // namespace kestra
