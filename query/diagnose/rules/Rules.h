// The rules, one table per family, in the order in which they are asked; the first that knows
// something is heard.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "query/diagnose/rules/FailedText.h"

namespace kestra {

std::span<const FailureRule> CharacterRules();    // characters outside of the language
std::span<const FailureRule> MarkRules();         // marks of other languages
std::span<const FailureRule> ForeignWordRules();  // words and functions of other languages
std::span<const FailureRule> ValueRules();        // literals
std::span<const FailureRule> SourceShapeRules();  // how a source is written
std::span<const FailureRule> SourceRules();       // modules and classes
std::span<const FailureRule> FunctionRules();     // functions and aggregates
std::span<const FailureRule> ConditionRules();    // what conditions are made of
std::span<const FailureRule> StructureRules();    // what a statement is made of
std::span<const FailureRule> KeywordRules();      // words of the language, misspelt
std::span<const FailureRule> ColumnRules();       // names of columns and aliases

// Why a text cannot be cut into tokens.
Finding LexicalFinding(std::string_view text, size_t faultOffset);
// Why a text without any token is no query.
Finding EmptyTextFinding(std::string_view text);
// What will go wrong when a text that parses is run, and what in it is probably not meant.
std::optional<Finding> FindInGoodText(const QueryContext& context);

// The kind of value that a column holds, and what would hold it, for a sentence.
const char* HoldsWhat(ParamType type);
// What to write for a column or value of one type where another is wanted, out of the expected
// set; empty if there is no such conversion.
std::string ConversionOf(std::string_view expression, ParamType type, const CExpected& expected);
// What is wanted where neither the one nor the other fits: "a number"; empty for more than one.
std::string WantedKind(const CExpected& expected);

}  // namespace kestra
