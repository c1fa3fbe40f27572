// The grammar as data: rules, symbols, and what the parser works out from them before the first
// query. The language itself is the table in GrammarTable.cpp.
#pragma once

#include <bitset>
#include <cstdint>
#include <span>
#include <vector>

#include "query/Value.h"
#include "query/parse/Keywords.h"

namespace kestra {

struct ParseNode;
struct QueryContext;

// The nonterminals, in the table's order.
enum class NonTerminal : uint8_t {
  Program,
  QueryBatch,
  Query,
  SelectStar,
  OptAlias,
  FromClause,
  FromBody,
  AnySource,
  Source,
  OptArguments,
  ArgumentList,
  Argument,
  Expression,
  NumberExpr,
  NumberSum,
  NumberRandom,
  NumberProduct,
  NumberUnary,
  NumberPrimary,
  NumberQuery,
  ScalarFromClause,
  ScalarFromBody,
  JoinChain,
  AliasedSource,
  Condition,
  AndCondition,
  NotCondition,
  BooleanCompare,
  Comparison,
  NumberSet,
  NumberList,
  VersionPrimary,
  VersionQuery,
  VersionOperand,
  StringQuery,
  StringExpr,
  StringPrimary,
  OptCallArguments,
  CallArgumentList,
  CallArgument,
  SelectColumn,
  ScalarValue,
  DatimeQuery,
  DatimePrimary,
  DatimeOperand,
  StringSet,
  StringList,
  OptWhere,
  BitOrExpr,
  BitXorExpr,
  BitAndExpr,
  OptCacheAge,
  OptForce,
  SelectRows,
  ValueList,
  ActiveStatements,
  ActiveStatement,
  ColumnList,
  TargetSource,
  OptActionArguments,
  DropStatement,
  ProcedureList,
  ProcedureDefinition,
  Count
};
inline constexpr size_t kNonTerminalCount = static_cast<size_t>(NonTerminal::Count);
static_assert(kNonTerminalCount == 63);

// The terminals that are functions: they look at a token, at those around it, and at the classes
// that exist.
enum class Predicate : uint8_t {
  Identifier,
  IntegerLiteral,
  StringLiteral,
  VersionLiteral,
  DatimeLiteral,
  ModuleName,
  BuiltInSource,
  DatePartName,
  NumberAggregate,
  OrderAggregate,
  AddOperator,
  MulOperator,
  EqualityOperator,
  CompareOperator,
  NumberColumn,
  StringColumn,
  VersionColumn,
  DatimeColumn,
  Count
};
inline constexpr size_t kPredicateCount = static_cast<size_t>(Predicate::Count);

// Sets of predicates are words with a bit for each.
static_assert(kPredicateCount <= 32);
constexpr uint32_t PredicateBit(Predicate predicate) {
  return 1u << static_cast<uint32_t>(predicate);
}

enum class SymbolKind : uint8_t { NonTerminal = 0, Keyword = 1, Predicate = 2, End = 3 };

struct Symbol {
  SymbolKind Kind = SymbolKind::End;
  uint8_t Number = 0;  // of the nonterminal, keyword or predicate

  constexpr Symbol() = default;
  constexpr Symbol(NonTerminal n)
      : Kind(SymbolKind::NonTerminal), Number(static_cast<uint8_t>(n)) {}
  constexpr Symbol(Keyword k) : Kind(SymbolKind::Keyword), Number(k) {}
  constexpr Symbol(Predicate p) : Kind(SymbolKind::Predicate), Number(static_cast<uint8_t>(p)) {}
};

using SemanticAction = bool (*)(Value& out, ParseNode& node);

inline constexpr size_t kMaxSymbols = 17;  // the longest rule and its end

struct Rule {
  NonTerminal Table;
  Symbol Symbols[kMaxSymbols];
  SemanticAction Action;
  uint16_t Length = 0;  // worked out when the grammar is made
};

// Terminals are numbered keywords first, then predicates.
inline constexpr size_t kTerminalCount = kKeywordCount + kPredicateCount;
using TerminalSet = std::bitset<kTerminalCount>;

// What the parser knows of the rules. Made once; read by any thread.
struct Grammar {
  struct Range {
    uint16_t first = 0;
    uint16_t count = 0;
  };
  // What a rule can begin with. A rule that can be empty can begin with anything.
  struct Start {
    std::bitset<kKeywordCount> keywords;
    uint32_t predicates = 0;
    bool canBeEmpty = false;
  };

  std::vector<Rule> rules;  // grouped by nonterminal, alternatives in the order of the table
  Range alternatives[kNonTerminalCount];
  std::vector<Start> starts;  // by rule
};

const Grammar& TheGrammar();
// The rows as they are written.
std::span<const Rule> GrammarTable();

// The actions that hand a symbol's value on. With a nonterminal in that place they leave no node.
bool FirstSymbol(Value& out, ParseNode& node);
bool SecondSymbol(Value& out, ParseNode& node);

}  // namespace kestra
