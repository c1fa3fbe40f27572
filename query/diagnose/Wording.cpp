#include "query/diagnose/Wording.h"

#include <algorithm>
#include <array>
#include <optional>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

constexpr size_t kLongestWord = 48;  // of those that are compared letter by letter
constexpr size_t kMostNames = 3;
constexpr size_t kMostQuoted = 40;
constexpr size_t kShortestPart = 3;

// How many letters have to be changed, left out, added, or swapped with their neighbour, to make
// one word out of the other. Both are short.
size_t EditDistance(std::string_view a, std::string_view b) {
  std::array<std::array<uint8_t, kLongestWord + 1>, kLongestWord + 1> d{};
  for (size_t i = 0; i <= a.size(); ++i) d[i][0] = static_cast<uint8_t>(i);
  for (size_t j = 0; j <= b.size(); ++j) d[0][j] = static_cast<uint8_t>(j);
  for (size_t i = 1; i <= a.size(); ++i) {
    for (size_t j = 1; j <= b.size(); ++j) {
      const int cost = a[i - 1] == b[j - 1] ? 0 : 1;
      int best = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + cost});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        best = std::min(best, d[i - 2][j - 2] + 1);
      }
      d[i][j] = static_cast<uint8_t>(best);
    }
  }
  return d[a.size()][b.size()];
}

// How far a name is from a word; nothing for one that is not near.
std::optional<size_t> Farness(std::string_view word, std::string_view name) {
  if (EqualsNoCase(word, name)) return 0;
  if (word.empty() || word.size() > kLongestWord || name.size() > kLongestWord) return std::nullopt;
  const std::string upperWord = UpperCase(word), upperName = UpperCase(name);
  const size_t distance = EditDistance(upperWord, upperName);
  // In a short word every letter counts; only one may be missing.
  const bool isShort = word.size() < 3 && (word.size() < 2 || name.size() <= word.size());
  const size_t bearable = isShort ? 0 : std::max<size_t>(1, word.size() / 3);
  if (distance <= bearable) return distance;
  size_t same = 0;
  while (same < word.size() && same < name.size() && upperWord[same] == upperName[same]) ++same;
  // Behind all that are nearly equal; among themselves by how much is left over.
  if (same > kShortestPart && same * 2 >= word.size()) {
    return kLongestWord + word.size() + name.size() - 2 * same;
  }
  if (word.size() >= kShortestPart && upperName.find(upperWord) != std::string::npos) {
    return kLongestWord + name.size();
  }
  if (name.size() >= kShortestPart && upperWord.find(upperName) != std::string::npos) {
    return 2 * kLongestWord + word.size() - name.size();
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> NearestNames(std::string_view word,
                                      std::span<const std::string_view> names) {
  struct Near {
    size_t farness;
    std::string_view name;
  };
  std::vector<Near> near;
  for (const std::string_view name : names) {
    const auto farness = Farness(word, name);
    if (!farness) continue;
    const bool isKnown =
        std::any_of(near.begin(), near.end(), [&](const Near& n) { return n.name == name; });
    if (!isKnown) near.push_back({*farness, name});
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const Near& a, const Near& b) { return a.farness < b.farness; });
  std::vector<std::string> nearest;
  for (const Near& n : near) {
    if (nearest.size() == kMostNames) break;
    // Where the word is there in another case, nothing else was meant.
    if (!nearest.empty() && near.front().farness == 0 && n.farness > 0) break;
    nearest.emplace_back(n.name);
  }
  return nearest;
}

bool IsNearlyThe(std::string_view word, std::string_view name) {
  const auto farness = Farness(word, name);
  return farness && *farness < kLongestWord;
}

std::string InQuotes(std::string_view piece) {
  // A string of the language has quotes of its own.
  const bool hasQuotes = piece.starts_with('\'');
  std::string text = hasQuotes ? "" : "\"";
  size_t position = 0, count = 0;
  while (position < piece.size() && count < kMostQuoted) {
    const size_t start = position;
    const uint32_t character = NextCharacter(piece, position);
    const bool isPlain = character >= ' ' && character != 0x7F && character < 0x110000;
    text += isPlain ? std::string(piece.substr(start, position - start)) : " ";
    ++count;
  }
  if (position < piece.size()) text += "...";
  if (!hasQuotes) text += '"';
  return text;
}

std::string AsString(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) quoted.append(c == '\'' ? 2 : 1, c);
  return quoted + '\'';
}

std::string ListOf(std::span<const std::string> texts, std::string_view lastJoin) {
  std::string list;
  for (size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) list += i + 1 == texts.size() ? lastJoin : ", ";
    list += texts[i];
  }
  return list;
}

std::string DidYouMean(std::span<const std::string> suggestions) {
  return suggestions.empty() ? std::string() : "; did you mean " + ListOf(suggestions) + "?";
}

}  // namespace kestra
