// A source of a sub-select, which runs for each row of the statement around it. Its module is the
// same each time, so from the second run on its items are listed, and those that the WHERE wants
// are found among them, by an index if it allows that.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "query/eval/compiled/Row.h"
#include "query/rows/RowSource.h"
#include "query/rows/index/RowFinder.h"

namespace kestra {

class CRepeatedSource {
 public:
  enum class Outcome { Plain, Done, Failed };

  // node runs the source; its descriptor is symbol 0.
  explicit CRepeatedSource(ParseNode& node) : m_node(node) {}

  // Counts a run, and lists the items when there is a second one. Plain: it has to be run as ever.
  // Failed: error says why. pFilter is the WHERE that is open, always the same.
  Outcome Run(Value& error, ParseNode* pFilter, int32_t limit);
  bool IsListed() const { return m_pRows != nullptr; }

  // What the run found.
  const std::vector<CVDiagItem*>& Found() const { return m_found; }
  bool Decided() const { return m_decided; }
  const std::string& Alias() const { return m_descriptor.alias; }
  // The value of a symbol of select on the only row that was found; always of the same one.
  bool ValueOfFound(Value& out, ParseNode& select, size_t symbol);

 private:
  bool CanBeListed();
  Outcome List(Value& error);
  Outcome Search(Value& error, ParseNode* pFilter, size_t limit);
  bool TestRow(ParseNode* pFilter, CVDiagItem& item, bool& passes);
  void Prepare(ParseNode* pFilter);
  void FailCutShort(Value& error);

  ParseNode& m_node;
  uint32_t m_runs = 0;
  SourceDescriptor m_descriptor;
  Ref<DiagModule> m_poModule;  // held with its items
  size_t m_reportIndex = 0;
  Ref<ValueVector> m_pRows;  // null until they are listed
  CScopeShape m_shape;       // that the finder is made for; with the source itself as the last one
  std::unique_ptr<CRowFinder> m_pFinder;
  std::optional<CCompiledRow> m_value;
  std::vector<CVDiagItem*> m_found;  // items of m_pRows
  bool m_decided = true;
};

}  // namespace kestra
