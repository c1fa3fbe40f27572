// A text that parses, and what will go wrong when it is run, or was probably not meant.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "query/QueryContext.h"
#include "query/diagnose/SourceScan.h"
#include "query/diagnose/rules/Finding.h"

namespace kestra {

class CGoodText {
 public:
  // The context has the tokens of the text, and outlives this object.
  explicit CGoodText(const QueryContext& context);
  // The first thing that there is to say.
  std::optional<Finding> Find();

 private:
  KeywordId KeywordAt(size_t i) const;
  // Whether the statement that a source belongs to cannot be run without it: a sub-select may never
  // be asked, and a procedure is not run where it is made.
  bool IsAlwaysRun(const QuerySource& source) const;
  bool Say(size_t i, bool isError, std::string message, std::vector<std::string> suggestions);
  // An item class passes for a module's name until it is run.
  bool TestModule(const QuerySource& source);
  bool TestClass(const QuerySource& source);
  // Calls test with the name and the first token of the value of each "Name = value", up to the
  // token at end, until it answers true.
  bool ForEachPair(size_t begin, size_t end, const std::function<bool(size_t)>& test);
  bool TestPair(size_t name, const DiagParamDefs& defs, std::string_view hasNo, bool isError);
  bool TestArguments(const QuerySource& source);
  bool EndsAssignments(size_t i, uint32_t depth) const;
  // The columns that UPDATE sets and INSERT names. Without a row UPDATE does not fail.
  bool TestTarget(const QuerySource& source);
  // FROM Module.Class WHERE, and nothing behind it.
  bool TestAlias(const QuerySource& source);

  // In GoodValues.cpp.
  // Whether the one literal that stands for a value does not fit its declaration.
  bool TestLiteral(size_t name, const DiagParamDef& def, bool isError);
  // LIKE with the wildcards of other languages.
  bool TestPattern(size_t i);
  // A text that is compared with a column and is none of its options.
  bool TestOption(size_t i);
  size_t ColumnComparedWith(size_t literal) const;
  // The path of a built-in source, where it is a literal.
  bool TestPath(const QuerySource& source);
  bool TestFilePath(size_t i, const std::string& path, bool isError);

  // In GoodStatements.cpp.
  // SELECT * of a join, and SELECT x.* of no source.
  bool TestStar(size_t select);
  // UPDATE x SET ... FROM and DELETE x FROM, of no source.
  bool TestChangedAlias(size_t keyword);
  // ON child.ATTACHEDTO = parent.ITEMID with the two in each other's place.
  bool TestJoinByParent(size_t attachedTo);
  // The sources of the FROM clause that follows a token in its statement.
  std::vector<const QuerySource*> SourcesBehind(size_t i) const;
  bool TestIsAlias(size_t i, const std::vector<const QuerySource*>& sources);

  const QueryContext& m_context;
  const TokenList& m_tokens;
  const std::vector<QuerySource> m_sources;
  std::vector<uint32_t> m_depths;  // parentheses around each token
  Finding m_finding;
};

}  // namespace kestra
