// The language: every rule, in order. The order of the alternatives of a nonterminal is part of the
// language: where a text can be read in several ways, the first one that was found wins, and that
// follows from this order alone. The order of the nonterminals means nothing.
#include "query/eval/Actions.h"
#include "query/parse/Grammar.h"

namespace kestra {
namespace {

using NT = NonTerminal;
using P = Predicate;

constexpr Rule kRules[] = {
    {NT::Program, {NT::QueryBatch}, FirstSymbol},
    {NT::Program, {NT::ProcedureList}, FirstSymbol},

    {NT::QueryBatch, {NT::Query}, FirstSymbol},
    {NT::QueryBatch, {NT::ActiveStatements}, FirstSymbol},

    {NT::Query, {NT::SelectStar}, FirstSymbol},
    {NT::Query, {NT::SelectColumn}, FirstSymbol},
    {NT::Query, {NT::StringSet}, FirstSymbol},
    {NT::Query, {NT::SelectRows}, FirstSymbol},
    {NT::Query, {NT::Condition}, FirstSymbol},
    {NT::Query, {NT::NumberQuery}, FirstSymbol},
    {NT::Query, {NT::VersionQuery}, FirstSymbol},
    {NT::Query, {NT::DatimeQuery}, FirstSymbol},
    {NT::Query, {NT::StringQuery}, FirstSymbol},

    {NT::SelectStar, {kKwSelect, NT::OptAlias, kKwStar, NT::FromClause}, RowsOfSource},

    {NT::OptAlias, {}, EmptyString},
    {NT::OptAlias, {P::Identifier, kKwDot}, FirstSymbol},

    {NT::FromClause, {kKwFrom, NT::FromBody, NT::OptWhere}, From},

    {NT::FromBody, {NT::AnySource}, RunSource},
    {NT::FromBody,
     {NT::JoinChain, kKwJoin, NT::AliasedSource, kKwOn, P::Identifier, kKwDot, kKwAttachedTo,
      kKwEquals, P::Identifier, kKwDot, kKwItemId},
     JoinByParent},
    {NT::FromBody,
     {NT::JoinChain, kKwJoin, NT::AliasedSource, kKwOn, NT::Condition},
     JoinOnCondition},

    {NT::AnySource, {NT::Source}, FirstSymbol},
    {NT::AnySource, {NT::AliasedSource}, FirstSymbol},

    {NT::Source,
     {P::ModuleName, NT::OptArguments, NT::OptCacheAge, NT::OptForce, kKwDot, P::Identifier},
     ModuleDescriptor},
    {NT::Source,
     {P::BuiltInSource, kKwDot, P::Identifier, kKwOpen, NT::StringQuery, kKwClose},
     BuiltInDescriptor},

    {NT::OptArguments, {}, EmptyVector},
    {NT::OptArguments, {kKwOpen, NT::ArgumentList, kKwClose}, SecondSymbol},

    {NT::ArgumentList, {NT::Argument}, NewVector},
    {NT::ArgumentList, {NT::ArgumentList, kKwComma, NT::Argument}, AppendToVector},

    {NT::Argument, {P::Identifier, kKwEquals, NT::Expression}, NameAndValuePair},

    {NT::Expression, {NT::NumberExpr}, FirstSymbol},
    {NT::Expression, {NT::StringExpr}, FirstSymbol},
    {NT::Expression, {NT::VersionPrimary}, FirstSymbol},
    {NT::Expression, {NT::DatimePrimary}, FirstSymbol},

    {NT::NumberExpr, {NT::NumberSum}, FirstSymbol},
    {NT::NumberExpr, {NT::BitOrExpr}, FirstSymbol},
    {NT::NumberExpr, {NT::BitXorExpr}, FirstSymbol},
    {NT::NumberExpr, {NT::BitAndExpr}, FirstSymbol},

    {NT::NumberSum, {NT::NumberRandom}, FirstSymbol},
    {NT::NumberSum, {NT::NumberSum, P::AddOperator, NT::NumberRandom}, AddOrSubtract},

    {NT::NumberRandom, {NT::NumberProduct}, FirstSymbol},
    {NT::NumberRandom, {kKwRand, kKwOpen, kKwClose, kKwStar, NT::NumberProduct}, RandomNumber},

    {NT::NumberProduct, {NT::NumberUnary}, FirstSymbol},
    {NT::NumberProduct, {NT::NumberProduct, P::MulOperator, NT::NumberUnary}, MultiplyOrDivide},

    {NT::NumberUnary, {NT::NumberPrimary}, FirstSymbol},
    {NT::NumberUnary, {kKwTilde, NT::NumberPrimary}, Complement},

    {NT::NumberPrimary, {kKwOpen, NT::NumberQuery, kKwClose}, SecondSymbol},
    {NT::NumberPrimary, {P::IntegerLiteral}, FirstSymbol},
    {NT::NumberPrimary, {NT::OptAlias, P::NumberColumn}, ColumnValue},
    {NT::NumberPrimary,
     {kKwIsNull, kKwOpen, NT::NumberQuery, kKwComma, NT::NumberQuery, kKwClose},
     IsNullFunction},
    {NT::NumberPrimary,
     {kKwConvert, kKwOpen, kKwInt, kKwComma, NT::StringQuery, kKwClose},
     TextToNumber},
    {NT::NumberPrimary, {kKwLen, kKwOpen, NT::StringQuery, kKwClose}, Length},
    {NT::NumberPrimary, {kKwCharLength, kKwOpen, NT::StringQuery, kKwClose}, Length},
    {NT::NumberPrimary,
     {kKwDatePart, kKwOpen, P::DatePartName, kKwComma, NT::DatimeOperand, kKwClose},
     DatePart},

    {NT::NumberQuery, {kKwSelect, NT::NumberExpr, NT::ScalarFromClause}, FirstRowValue},
    {NT::NumberQuery,
     {kKwSelect, kKwCount, kKwOpen, kKwStar, kKwClose, NT::FromClause},
     CountOfRows},
    {NT::NumberQuery,
     {kKwSelect, kKwCount, kKwOpen, NT::Expression, kKwClose, NT::FromClause},
     CountOfNonNull},
    {NT::NumberQuery,
     {kKwSelect, P::NumberAggregate, kKwOpen, NT::NumberExpr, kKwClose, NT::FromClause},
     NumberAggregateOf},
    {NT::NumberQuery, {NT::NumberExpr}, FirstSymbol},

    {NT::ScalarFromClause, {kKwFrom, NT::ScalarFromBody, NT::OptWhere}, ScalarFrom},

    {NT::ScalarFromBody, {NT::AnySource}, RunSourceLimit2},
    {NT::ScalarFromBody,
     {NT::JoinChain, kKwJoin, NT::AliasedSource, kKwOn, P::Identifier, kKwDot, kKwAttachedTo,
      kKwEquals, P::Identifier, kKwDot, kKwItemId},
     JoinByParentLimit2},
    {NT::ScalarFromBody,
     {NT::JoinChain, kKwJoin, NT::AliasedSource, kKwOn, NT::Condition},
     JoinOnConditionLimit2},

    {NT::JoinChain, {NT::AliasedSource}, RunSourceJoinMember},
    {NT::JoinChain,
     {NT::JoinChain, kKwJoin, NT::AliasedSource, kKwOn, P::Identifier, kKwDot, kKwAttachedTo,
      kKwEquals, P::Identifier, kKwDot, kKwItemId},
     JoinByParentChained},
    {NT::JoinChain,
     {NT::JoinChain, kKwJoin, NT::AliasedSource, kKwOn, NT::Condition},
     JoinOnConditionChained},

    {NT::AliasedSource, {NT::Source, P::Identifier}, DescriptorWithAlias},

    {NT::Condition, {NT::AndCondition}, FirstSymbol},
    {NT::Condition, {NT::Condition, kKwOr, NT::AndCondition}, Or},

    {NT::AndCondition, {NT::NotCondition}, FirstSymbol},
    {NT::AndCondition, {NT::AndCondition, kKwAnd, NT::NotCondition}, And},

    {NT::NotCondition, {NT::BooleanCompare}, FirstSymbol},
    {NT::NotCondition, {kKwNot, NT::BooleanCompare}, Not},
    {NT::NotCondition, {NT::Expression, kKwIs, kKwNull}, IsNullTest},
    {NT::NotCondition, {NT::Expression, kKwIs, kKwNot, kKwNull}, IsNotNullTest},

    {NT::BooleanCompare, {NT::Comparison}, FirstSymbol},
    {NT::BooleanCompare,
     {NT::BooleanCompare, P::EqualityOperator, NT::Comparison},
     BooleanCompareOf},

    {NT::Comparison, {kKwOpen, NT::Condition, kKwClose}, SecondSymbol},
    {NT::Comparison, {NT::NumberExpr, P::CompareOperator, NT::NumberExpr}, CompareAsNumbers},
    {NT::Comparison, {NT::NumberExpr, kKwIn, kKwOpen, NT::NumberSet, kKwClose}, In},
    {NT::Comparison, {NT::NumberExpr, kKwNot, kKwIn, kKwOpen, NT::NumberSet, kKwClose}, NotIn},
    {NT::Comparison,
     {NT::VersionPrimary, P::CompareOperator, P::VersionLiteral},
     CompareAsVersions},
    {NT::Comparison,
     {NT::VersionPrimary, P::CompareOperator, NT::VersionPrimary},
     CompareAsVersions},
    {NT::Comparison, {NT::DatimePrimary, P::CompareOperator, P::DatimeLiteral}, CompareAsDatimes},
    {NT::Comparison, {NT::DatimePrimary, P::CompareOperator, NT::DatimePrimary}, CompareAsDatimes},
    {NT::Comparison, {NT::StringExpr, P::CompareOperator, NT::StringExpr}, CompareAsStrings},
    {NT::Comparison, {NT::StringExpr, kKwLike, NT::StringExpr}, Like},
    {NT::Comparison,
     {NT::StringExpr, kKwLike, NT::StringExpr, kKwEscape, kKwBackslashString},
     LikeWithEscape},
    {NT::Comparison, {NT::StringExpr, kKwIn, kKwOpen, NT::StringSet, kKwClose}, In},
    {NT::Comparison, {NT::StringExpr, kKwNot, kKwIn, kKwOpen, NT::StringSet, kKwClose}, NotIn},

    {NT::NumberSet, {NT::NumberList}, FirstSymbol},

    {NT::NumberList, {NT::NumberQuery}, NewVector},
    {NT::NumberList, {NT::NumberList, kKwComma, NT::NumberQuery}, AppendToVector},

    {NT::VersionPrimary, {kKwOpen, NT::VersionQuery, kKwClose}, SecondSymbol},
    {NT::VersionPrimary, {NT::OptAlias, P::VersionColumn}, ColumnValue},
    {NT::VersionPrimary,
     {kKwIsNull, kKwOpen, NT::VersionQuery, kKwComma, NT::VersionOperand, kKwClose},
     IsNullFunction},
    {NT::VersionPrimary,
     {kKwConvert, kKwOpen, kKwVersion, kKwComma, NT::StringQuery, kKwClose},
     TextAsVersion},
    {NT::VersionPrimary,
     {kKwConvert, kKwOpen, kKwVersion, kKwComma, NT::VersionOperand, kKwClose},
     FifthSymbol},

    {NT::VersionQuery, {kKwSelect, NT::VersionPrimary, NT::ScalarFromClause}, FirstRowValue},
    {NT::VersionQuery,
     {kKwSelect, P::OrderAggregate, kKwOpen, NT::VersionPrimary, kKwClose, NT::FromClause},
     VersionAggregateOf},
    {NT::VersionQuery, {NT::VersionPrimary}, FirstSymbol},

    {NT::VersionOperand, {P::VersionLiteral}, FirstSymbol},
    {NT::VersionOperand, {NT::VersionQuery}, FirstSymbol},

    {NT::StringQuery, {kKwSelect, NT::StringExpr, NT::ScalarFromClause}, FirstRowValue},
    {NT::StringQuery,
     {kKwSelect, P::OrderAggregate, kKwOpen, NT::StringExpr, kKwClose, NT::FromClause},
     StringAggregateOf},
    {NT::StringQuery, {NT::StringExpr}, FirstSymbol},

    {NT::StringExpr, {NT::StringExpr, kKwPlus, NT::StringPrimary}, Concatenate},
    {NT::StringExpr, {NT::StringPrimary}, FirstSymbol},

    {NT::StringPrimary, {kKwOpen, NT::StringQuery, kKwClose}, SecondSymbol},
    {NT::StringPrimary, {P::StringLiteral}, FirstSymbol},
    {NT::StringPrimary, {NT::OptAlias, P::StringColumn}, ColumnValue},
    {NT::StringPrimary,
     {kKwIsNull, kKwOpen, NT::StringQuery, kKwComma, NT::StringQuery, kKwClose},
     IsNullFunction},
    {NT::StringPrimary,
     {kKwConvert, kKwOpen, kKwVarchar, kKwComma, NT::NumberQuery, kKwClose},
     NumberToText},
    {NT::StringPrimary,
     {kKwConvert, kKwOpen, kKwVarchar, kKwComma, NT::VersionOperand, kKwClose},
     FifthSymbol},
    {NT::StringPrimary,
     {kKwConvert, kKwOpen, kKwVarchar, kKwComma, NT::StringQuery, kKwClose},
     FifthSymbol},
    {NT::StringPrimary,
     {kKwSubstring, kKwOpen, NT::StringQuery, kKwComma, NT::NumberQuery, kKwComma, NT::NumberQuery,
      kKwClose},
     Substring},
    {NT::StringPrimary,
     {kKwRight, kKwOpen, NT::StringQuery, kKwComma, NT::NumberQuery, kKwClose},
     Right},
    {NT::StringPrimary,
     {kKwCallDll, kKwOpen, NT::StringQuery, kKwComma, NT::StringQuery, NT::OptCallArguments,
      kKwClose},
     CallDll},

    {NT::OptCallArguments, {}, EmptyVector},
    {NT::OptCallArguments, {kKwComma, NT::CallArgumentList}, SecondSymbol},

    {NT::CallArgumentList, {NT::CallArgument}, NewVector},
    {NT::CallArgumentList, {NT::CallArgumentList, kKwComma, NT::CallArgument}, AppendToVector},

    {NT::CallArgument, {NT::SelectColumn}, FirstSymbol},
    {NT::CallArgument, {NT::ScalarValue}, FirstSymbol},

    {NT::SelectColumn, {kKwSelect, NT::Expression, NT::FromClause}, ValuePerRow},

    {NT::ScalarValue, {NT::NumberQuery}, FirstSymbol},
    {NT::ScalarValue, {NT::StringQuery}, FirstSymbol},
    {NT::ScalarValue, {NT::VersionQuery}, FirstSymbol},
    {NT::ScalarValue, {NT::DatimeQuery}, FirstSymbol},

    {NT::DatimeQuery, {kKwSelect, NT::DatimePrimary, NT::ScalarFromClause}, FirstRowValue},
    {NT::DatimeQuery,
     {kKwSelect, P::OrderAggregate, kKwOpen, NT::DatimePrimary, kKwClose, NT::FromClause},
     DatimeAggregateOf},
    {NT::DatimeQuery, {NT::DatimePrimary}, FirstSymbol},

    {NT::DatimePrimary, {kKwOpen, NT::DatimeQuery, kKwClose}, SecondSymbol},
    {NT::DatimePrimary, {NT::OptAlias, P::DatimeColumn}, ColumnValue},
    {NT::DatimePrimary,
     {kKwIsNull, kKwOpen, NT::DatimeQuery, kKwComma, NT::DatimeOperand, kKwClose},
     IsNullFunction},
    {NT::DatimePrimary, {kKwGetDate, kKwOpen, kKwClose}, CurrentTime},
    {NT::DatimePrimary,
     {kKwDateAdd, kKwOpen, P::DatePartName, kKwComma, NT::NumberQuery, kKwComma, NT::DatimeOperand,
      kKwClose},
     DateAdd},

    {NT::DatimeOperand, {P::DatimeLiteral}, FirstSymbol},
    {NT::DatimeOperand, {NT::DatimeQuery}, FirstSymbol},

    {NT::StringSet,
     {kKwCallDllV, kKwOpen, NT::StringQuery, kKwComma, NT::StringQuery, NT::OptCallArguments,
      kKwClose},
     CallDllV},
    {NT::StringSet, {NT::StringList}, FirstSymbol},

    {NT::StringList, {NT::StringQuery}, NewVector},
    {NT::StringList, {NT::StringList, kKwComma, NT::StringQuery}, AppendToVector},

    {NT::OptWhere, {}, TrueValue},
    {NT::OptWhere, {kKwWhere, NT::Condition}, SecondSymbol},

    {NT::BitOrExpr, {NT::NumberUnary}, FirstSymbol},
    {NT::BitOrExpr, {NT::BitOrExpr, kKwBar, NT::NumberUnary}, BitOperation},

    {NT::BitXorExpr, {NT::NumberUnary}, FirstSymbol},
    {NT::BitXorExpr, {NT::BitXorExpr, kKwCaret, NT::NumberUnary}, BitOperation},

    {NT::BitAndExpr, {NT::NumberUnary}, FirstSymbol},
    {NT::BitAndExpr, {NT::BitAndExpr, kKwAmpersand, NT::NumberUnary}, BitOperation},

    {NT::OptCacheAge, {}, NumberMinusOne},
    {NT::OptCacheAge, {kKwHash, P::IntegerLiteral}, SecondSymbol},

    {NT::OptForce, {}, FalseValue},
    {NT::OptForce, {kKwStar}, TrueValue},

    {NT::SelectRows, {kKwSelect, NT::ValueList, NT::FromClause}, ValuePerRow},

    {NT::ValueList, {NT::ScalarValue}, NewVector},
    {NT::ValueList, {NT::ValueList, kKwComma, NT::ScalarValue}, AppendToVector},

    {NT::ActiveStatements, {NT::ActiveStatement}, NewVector},
    {NT::ActiveStatements, {NT::ActiveStatements, NT::ActiveStatement}, AppendToVector},

    {NT::ActiveStatement,
     {kKwInsert, NT::Source, kKwOpen, kKwAttachedTo, kKwComma, NT::ColumnList, kKwClose, kKwValues,
      kKwOpen, kKwSelect, NT::OptAlias, kKwItemId, NT::ScalarFromClause, kKwComma, NT::ValueList,
      kKwClose},
     InsertValuesUnderItem},
    {NT::ActiveStatement,
     {kKwInsert, NT::Source, kKwOpen, NT::ColumnList, kKwClose, kKwValues, kKwOpen, NT::ValueList,
      kKwClose},
     InsertValues},
    {NT::ActiveStatement,
     {kKwInsert, NT::Source, kKwOpen, kKwAttachedTo, kKwComma, NT::ColumnList, kKwClose, kKwSelect,
      NT::OptAlias, kKwItemId, kKwComma, NT::ValueList, NT::FromClause},
     InsertFromQueryUnderItems},
    {NT::ActiveStatement,
     {kKwInsert, NT::Source, kKwOpen, NT::ColumnList, kKwClose, NT::SelectRows},
     InsertFromQuery},
    {NT::ActiveStatement,
     {kKwUpdate, NT::TargetSource, kKwSet, NT::ArgumentList, NT::OptWhere},
     UpdateRows},
    {NT::ActiveStatement,
     {kKwUpdate, P::Identifier, kKwSet, NT::ArgumentList, NT::FromClause},
     UpdateRowsOfAlias},
    {NT::ActiveStatement, {kKwDelete, NT::TargetSource, NT::OptWhere}, DeleteRows},
    {NT::ActiveStatement, {kKwDelete, P::Identifier, NT::FromClause}, DeleteRowsOfAlias},
    {NT::ActiveStatement,
     {kKwExecute, kKwAction, kKwOpen, NT::SelectStar, kKwComma, NT::StringQuery,
      NT::OptActionArguments, kKwClose},
     ExecuteAction},
    {NT::ActiveStatement, {NT::DropStatement}, FirstSymbol},

    {NT::ColumnList, {P::Identifier}, NewVector},
    {NT::ColumnList, {NT::ColumnList, kKwComma, P::Identifier}, AppendToVector},

    {NT::TargetSource, {NT::Source}, RunSource},

    {NT::OptActionArguments, {}, EmptyString},
    {NT::OptActionArguments, {kKwComma, NT::ArgumentList}, SecondSymbol},

    {NT::DropStatement, {kKwDrop, kKwModule, kKwStar}, DropAllModules},
    {NT::DropStatement, {kKwDrop, kKwModule, P::ModuleName, NT::OptArguments}, DropModule},

    {NT::ProcedureList, {NT::ProcedureDefinition}, NewVector},
    {NT::ProcedureList, {NT::ProcedureList, NT::ProcedureDefinition}, AppendToVector},

    {NT::ProcedureDefinition,
     {kKwCreate, kKwProcedure, P::Identifier, kKwAs, NT::QueryBatch},
     DefineProcedure},
};

}  // namespace

std::span<const Rule> GrammarTable() {
  return kRules;
}

}  // namespace kestra
