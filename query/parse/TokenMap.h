// Where the words stand that part a text into clauses: made once per text, so that looking for the
// clause around a name takes no walk over the text.
#pragma once

#include <cstdint>
#include <vector>

#include "query/parse/Tokeniser.h"

namespace kestra {

class CTokenMap {
 public:
  static constexpr std::ptrdiff_t kNowhere = -1;

  explicit CTokenMap(const TokenList& tokens);

  // The nearest place from q on, backwards or forwards and q included, where one of the words
  // stands outside of parentheses that are opened on the way; kNowhere if there is none. A
  // parenthesis that was opened before the walk began is passed by. q may be one past either end.
  std::ptrdiff_t ClauseBefore(std::ptrdiff_t q) const;     // FROM JOIN SELECT UPDATE DELETE
  std::ptrdiff_t SourceBefore(std::ptrdiff_t q) const;     // FROM JOIN
  std::ptrdiff_t SourceOrEndFrom(std::ptrdiff_t q) const;  // WHERE ")" FROM JOIN
  // Whether a walk backwards from q comes by p, which is not behind q.
  bool IsOnWayBack(std::ptrdiff_t p, std::ptrdiff_t q) const;
  // The parenthesis that belongs to the one at q; kNowhere if there is none.
  std::ptrdiff_t Partner(std::ptrdiff_t q) const;

 private:
  using Places = std::vector<int32_t>;

  void FindGroups(const TokenList& tokens);
  static std::ptrdiff_t At(const Places& places, std::ptrdiff_t q) {
    return q < 0 || q >= static_cast<std::ptrdiff_t>(places.size())
               ? kNowhere
               : places[static_cast<size_t>(q)];
  }

  Places m_partner;
  Places m_groupEnd;    // where the innermost parenthesis around a token closes; past all for none
  Places m_strayClose;  // the last parenthesis at or before it that was never opened
  Places m_clauseBefore;
  Places m_sourceBefore;
  Places m_sourceOrEndFrom;
};

}  // namespace kestra
