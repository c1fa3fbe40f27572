#include "query/parse/Keywords.h"

#include <array>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

constexpr std::array<std::string_view, kKeywordCount> kTexts = {
    "",          "SELECT", "FROM",        "JOIN",     "ON",      "WHERE",   "ATTACHEDTO",
    "ITEMID",    "OR",     "AND",         "NOT",      "IS",      "NULL",    "IN",
    "LIKE",      "ESCAPE", "RAND",        "ISNULL",   "CONVERT", "INT",     "VERSION",
    "VARCHAR",   "LEN",    "CHAR_LENGTH", "DATEPART", "DATEADD", "GETDATE", "COUNT",
    "SUBSTRING", "RIGHT",  "CALLDLL",     "CALLDLLV", "INSERT",  "VALUES",  "UPDATE",
    "SET",       "DELETE", "EXECUTE",     "Action",   "DROP",    "MODULE",  "CREATE",
    "PROCEDURE", "AS",     "(",           ")",        ",",       ".",       "*",
    "=",         "+",      "~",           "|",        "^",       "&",       "#",
    "'\\'"};

constexpr char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool EqualsAsciiNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (Lower(a[i]) != Lower(b[i])) return false;
  }
  return true;
}

// Keywords by a hash of length and the first two letters: most tokens meet an empty bucket.
constexpr size_t kBuckets = 256;
constexpr size_t Bucket(std::string_view token) {
  const size_t first = static_cast<unsigned char>(Lower(token[0]));
  const size_t last = static_cast<unsigned char>(Lower(token[token.size() - 1]));
  return (first * 7 + last * 31 + token.size() * 61) % kBuckets;
}

struct KeywordIndex {
  std::array<KeywordId, kBuckets> head{};
  std::array<KeywordId, kKeywordCount> next{};

  constexpr KeywordIndex() {
    for (size_t i = kKeywordCount - 1; i > 0; --i) {
      const size_t bucket = Bucket(kTexts[i]);
      next[i] = head[bucket];
      head[bucket] = static_cast<KeywordId>(i);
    }
  }
};
constexpr KeywordIndex kIndex;

// The marks, of which every second token is one.
struct MarkIndex {
  std::array<KeywordId, 256> ids{};

  constexpr MarkIndex() {
    for (size_t i = 1; i < kKeywordCount; ++i) {
      if (kTexts[i].size() == 1) {
        ids[static_cast<unsigned char>(kTexts[i][0])] = static_cast<KeywordId>(i);
      }
    }
  }
};
constexpr MarkIndex kMarks;
constexpr size_t kLongestKeyword = 11;

}  // namespace

std::string_view KeywordText(KeywordId keyword) {
  return keyword < kKeywordCount ? kTexts[keyword] : std::string_view();
}

KeywordId FindKeyword(std::string_view token) {
  if (token.size() == 1) return kMarks.ids[static_cast<unsigned char>(token[0])];
  if (token.empty() || token.size() > kLongestKeyword) return kNoKeyword;
  for (KeywordId id = kIndex.head[Bucket(token)]; id != kNoKeyword; id = kIndex.next[id]) {
    if (EqualsAsciiNoCase(kTexts[id], token)) return id;
  }
  return kNoKeyword;
}

}  // namespace kestra
