// What a query keeps of the parts that it asks again and again.
#pragma once

#include <memory>
#include <unordered_map>

#include "query/rows/repeated/Listing.h"
#include "query/rows/repeated/RepeatedSource.h"

namespace kestra {

// One query's, on its thread.
class CRepeats {
 public:
  // For a node that runs a source; null where that is not asked for a row of something else.
  CRepeatedSource* SourceAt(ParseNode& node);
  // The same, only if it lists its items by now.
  CRepeatedSource* ListedSourceAt(const ParseNode& node) const;

  // Whether so many more rows may be kept. A text may have thousands of sub-selects over large
  // modules, and each would keep a list of its own; the first one may be of any length.
  bool TakeRoomFor(size_t rows);

  // What a join of the FROM clause that is open has listed last.
  CListing JoinedListing;

  // Runs a SELECT that gives one value, or gives what it gave before if it is steady.
  bool RunSelect(Value& out, ParseNode& node, SemanticAction run);

 private:
  struct Select {
    bool isSteady = false;
    bool isKept = false;
    Value value;
  };
  std::unordered_map<const ParseNode*, std::unique_ptr<CRepeatedSource>> m_sources;
  std::unordered_map<const ParseNode*, Select> m_selects;
  size_t m_keptRows = 0;
};

}  // namespace kestra
