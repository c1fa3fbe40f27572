// Row sources: what stands behind one entry of a FROM clause. A source runs to completion and
// leaves its rows; the WHERE of the clause is tried on each row as it is found.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "query/Value.h"
#include "query/parse/ParseTree.h"
#include "query/rows/index/RowFilter.h"

namespace kestra {

class CSourceRun;

inline constexpr int32_t kNoRowLimit = std::numeric_limits<int32_t>::max();

// What a source of the text says: [module, class, arguments or path, cache age, any-user flag] and
// an alias as a sixth element, if it has one.
struct SourceDescriptor {
  std::string moduleName;
  std::string className;
  Value arguments;  // a Vector of pairs, a path, or Any
  int32_t cacheAge = -1;
  bool anyUser = false;
  std::string alias;
};
// False for a value that is no descriptor.
bool ReadDescriptor(const Value& value, SourceDescriptor& descriptor);

// Lives for the run of one source; its rows survive it.
class RowSource {
 public:
  RowSource(ParseNode& node, const SourceDescriptor& descriptor, int32_t limit);
  virtual ~RowSource() = default;
  RowSource(const RowSource&) = delete;
  RowSource& operator=(const RowSource&) = delete;

  // False when the source fails; error then says why, as an Error with or without a message. The
  // query's report tells what happened.
  bool Run(Value& error);

  // The rows found, as a Vector of items; Any when they cannot be known yet.
  const Value& Rows() const { return m_rows; }
  // False once the filter could not decide about a row.
  bool Decided() const { return m_decided; }

 protected:
  // Finds the rows. It says to the run what the source is, as soon as that is known.
  virtual bool Find(CSourceRun& run, Value& error) = 0;

  QueryContext& Context() const { return *m_node.Context; }
  ParseNode& Node() const { return m_node; }
  // Adds the item if the filter lets it pass. False ends the walk.
  bool AddRow(CVDiagItem& item);
  // Looks below an item, itself included, for items of the class. False ends the walk.
  bool WalkItems(CVDiagItem& top, const std::string& className);
  // Whether every row that there is will be among Rows(): no WHERE, no limit.
  bool IsWholeListing() const {
    return m_filter.IsEmpty() && m_limit == kNoRowLimit && !m_isOnlyCounted;
  }
  // The rows are those of another whole listing, which shares them: none may be added any more.
  void UseRows(ValueVector& rows);
  bool IsFull() const { return m_count >= m_limit; }
  void SetUndecided();

 private:
  ParseNode& m_node;
  const std::string m_alias;
  CRowFilter m_filter;  // the WHERE that is open when the source is made
  const int32_t m_limit;
  const bool m_isOnlyCounted;
  int32_t m_count = 0;
  uint64_t m_seen = 0;
  bool m_decided = true;
  Value m_rows;
};

// The source for a descriptor; null when no source serves it. node is the descriptor's.
std::unique_ptr<RowSource> MakeRowSource(ParseNode& node, const SourceDescriptor& descriptor,
                                         int32_t limit);

}  // namespace kestra
