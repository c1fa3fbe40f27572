#include "cli/messages/MessageHints.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <vector>

namespace kestra::cli {
namespace {

struct HintRow {
  uint32_t id;
  const char* text;               // "{0}" and "{1}" stand for the message's strings
  const char* inShell = nullptr;  // where it is another one there
};

constexpr HintRow kHints[] = {
    {10000, "{0} is given twice"},
    {10001, "there is no argument or property {0}"},
    {10002, "the value for {0} is of the wrong type"},
    {10003, "there is no class {0} to add an item to"},
    {10004, "the module {0} could not be read, so nothing can be added to it"},
    {10005, "there are not as many values for {0} as properties are named"},
    {10006, "a new {0} needs an item to stand under; name it by ATTACHEDTO and ITEMID"},
    {10007, "the SELECT of the item that the new {0} is to stand under must give exactly one row"},
    {10008, "the action {1} of {0} takes no arguments"},
    {11000, "{0} is missing, or is not of the form that is needed"},
    {11002, "the value for {0} cannot be: {1}"},
    {11007, "{0} must not be given here"},
    {11008, "these cannot be used together: {0}"},
    {11010, "only one of {0} and {1} may be given"},
    {11011, "{0} cannot be changed"},
    {11012, "items of the class {0} cannot be deleted"},
    {11013, "items of the class {0} cannot be added"},
    {11014, "{0} has no action {1}"},
    {11015, "changes are off; --active allows them", "changes are off; .active on allows them"},
    {15004, "{0} is not in the format that was asked for, or is damaged, and stays as it is"},
    {16002, "{0} is there already"},
    {16003, "one of the texts of the list is empty, which would end the list"},
};

struct WordRow {
  std::string_view word;  // in capitals
  const char* onCommandLine;
  const char* inShell;
};

constexpr char kSort[] = "--sort COLUMN sorts what is shown";
constexpr char kSortInShell[] = ".sort COLUMN sorts what is shown";
constexpr char kLimit[] = "--limit N shows the first N rows";
constexpr char kLimitInShell[] = ".limit N shows the first N rows";
constexpr char kQuitInShell[] = ".quit ends this shell";

constexpr WordRow kWords[] = {
    {"ORDER", kSort, kSortInShell},
    {"DESC", kSort, kSortInShell},
    {"LIMIT", kLimit, kLimitInShell},
    {"TOP", kLimit, kLimitInShell},
    {"OFFSET", kLimit, kLimitInShell},
    {"FETCH", kLimit, kLimitInShell},
    {"EXPLAIN", "--explain shows how a query would be run",
     ".explain QUERY shows how a query would be run"},
    {"SHOW", "kestra without a query begins a shell, where .modules lists modules",
     ".modules lists the modules"},
    {"DESCRIBE", "kestra without a query begins a shell, where .describe Module tells of one",
     ".describe Module tells of one"},
    {"HELP", "--help tells how the command is used", ".help tells what there is"},
    {"QUIT", nullptr, kQuitInShell},
    {"EXIT", nullptr, kQuitInShell},
};

constexpr std::string_view kIdMark = "Message Id: ";
constexpr std::string_view kStringsMark = "includes the following strings: ";

// The strings stand one behind the other, with nothing that tells a comma in them from one between
// them. The last gets what is left, so that one string is always right.
std::vector<std::string> StringsOf(std::string_view text, size_t count) {
  std::vector<std::string> strings;
  const size_t mark = text.find(kStringsMark);
  if (mark == text.npos) return strings;
  text.remove_prefix(mark + kStringsMark.size());
  while (!text.empty() && (text.back() == '>' || text.back() == '.')) text.remove_suffix(1);
  while (strings.size() + 1 < count) {
    const size_t comma = text.find(", ");
    if (comma == text.npos) break;
    strings.emplace_back(text.substr(0, comma));
    text.remove_prefix(comma + 2);
  }
  strings.emplace_back(text);
  return strings;
}

// What stands behind a name and a full stop is why it failed, in words of the system's; it is taken
// off.
std::string TakeReason(std::string& text) {
  const size_t stop = text.find(". ");
  if (stop == std::string::npos) return {};
  const bool isName = std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(stop),
                                  [](unsigned char c) { return std::isalnum(c) || c == '_'; });
  if (!isName) return {};
  std::string reason = ": " + text.substr(stop + 2);
  text.resize(stop);
  return reason;
}

std::string FillIn(std::string_view pattern, std::string_view errorText) {
  const size_t count = pattern.find("{1}") != pattern.npos ? 2 : 1;
  std::vector<std::string> strings = StringsOf(errorText, count);
  const std::string reason = strings.empty() ? std::string() : TakeReason(strings.back());
  strings.resize(2);
  std::string text;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '{') {
      text += pattern[i];
      continue;
    }
    text += strings[pattern[i + 1] == '0' ? 0 : 1];
    i += 2;
  }
  // A second string that was not given.
  if (text.ends_with(": ")) text.erase(text.size() - 2);
  return text + reason;
}

}  // namespace

std::string MessageHint(std::string_view errorText, Place place) {
  const size_t mark = errorText.find(kIdMark);
  if (mark == errorText.npos) return {};
  const std::string_view number = errorText.substr(mark + kIdMark.size());
  uint32_t id = 0;
  std::from_chars(number.data(), number.data() + number.size(), id);
  for (const HintRow& row : kHints) {
    if (row.id != id) continue;
    return FillIn(place == Place::Shell && row.inShell ? row.inShell : row.text, errorText);
  }
  return {};
}

std::string WordHint(std::string_view word, Place place) {
  const bool isInShell = place == Place::Shell;
  if (word.starts_with('.')) {
    return isInShell
               ? "a command with a dot stands on a line of its own"
               : "commands with a dot belong to the shell, which kestra without a query begins";
  }
  const auto isSame = [&](std::string_view name) {
    return std::equal(word.begin(), word.end(), name.begin(), name.end(), [](char a, char b) {
      return (a >= 'a' && a <= 'z' ? a - 'a' + 'A' : a) == b;
    });
  };
  for (const WordRow& row : kWords) {
    const char* const pText = isInShell ? row.inShell : row.onCommandLine;
    if (pText && isSame(row.word)) return pText;
  }
  return {};
}

}  // namespace kestra::cli
