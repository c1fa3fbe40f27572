// The semantic actions: what each row of the grammar table does when a parent asks for its value.
// Each writes its result into out and answers false when the statement cannot go on; out is then
// an Error. Symbols are counted from 0, keywords and punctuation included.
#pragma once

#include "query/Value.h"
#include "query/parse/ParseTree.h"

namespace kestra {

bool RowsOfSource(Value& out, ParseNode& node);
bool EmptyString(Value& out, ParseNode& node);
bool From(Value& out, ParseNode& node);
bool RunSource(Value& out, ParseNode& node);
bool JoinByParent(Value& out, ParseNode& node);
bool JoinOnCondition(Value& out, ParseNode& node);
bool ModuleDescriptor(Value& out, ParseNode& node);
bool BuiltInDescriptor(Value& out, ParseNode& node);
bool EmptyVector(Value& out, ParseNode& node);
bool NewVector(Value& out, ParseNode& node);
bool AppendToVector(Value& out, ParseNode& node);
bool NameAndValuePair(Value& out, ParseNode& node);
bool AddOrSubtract(Value& out, ParseNode& node);
bool RandomNumber(Value& out, ParseNode& node);
bool MultiplyOrDivide(Value& out, ParseNode& node);
bool Complement(Value& out, ParseNode& node);
bool ColumnValue(Value& out, ParseNode& node);
bool IsNullFunction(Value& out, ParseNode& node);
bool TextToNumber(Value& out, ParseNode& node);
bool Length(Value& out, ParseNode& node);
bool DatePart(Value& out, ParseNode& node);
bool FirstRowValue(Value& out, ParseNode& node);
bool CountOfRows(Value& out, ParseNode& node);
bool CountOfNonNull(Value& out, ParseNode& node);
bool NumberAggregateOf(Value& out, ParseNode& node);
bool ScalarFrom(Value& out, ParseNode& node);
bool RunSourceLimit2(Value& out, ParseNode& node);
bool JoinByParentLimit2(Value& out, ParseNode& node);
bool JoinOnConditionLimit2(Value& out, ParseNode& node);
bool RunSourceJoinMember(Value& out, ParseNode& node);
bool JoinByParentChained(Value& out, ParseNode& node);
bool JoinOnConditionChained(Value& out, ParseNode& node);
bool DescriptorWithAlias(Value& out, ParseNode& node);
bool Or(Value& out, ParseNode& node);
bool And(Value& out, ParseNode& node);
bool Not(Value& out, ParseNode& node);
bool IsNullTest(Value& out, ParseNode& node);
bool IsNotNullTest(Value& out, ParseNode& node);
bool BooleanCompareOf(Value& out, ParseNode& node);
bool CompareAsNumbers(Value& out, ParseNode& node);
bool In(Value& out, ParseNode& node);
bool NotIn(Value& out, ParseNode& node);
bool CompareAsVersions(Value& out, ParseNode& node);
bool CompareAsDatimes(Value& out, ParseNode& node);
bool CompareAsStrings(Value& out, ParseNode& node);
bool Like(Value& out, ParseNode& node);
bool LikeWithEscape(Value& out, ParseNode& node);
bool TextAsVersion(Value& out, ParseNode& node);
bool FifthSymbol(Value& out, ParseNode& node);
bool VersionAggregateOf(Value& out, ParseNode& node);
bool StringAggregateOf(Value& out, ParseNode& node);
bool Concatenate(Value& out, ParseNode& node);
bool NumberToText(Value& out, ParseNode& node);
bool Substring(Value& out, ParseNode& node);
bool Right(Value& out, ParseNode& node);
bool CallDll(Value& out, ParseNode& node);
bool ValuePerRow(Value& out, ParseNode& node);
bool DatimeAggregateOf(Value& out, ParseNode& node);
bool CurrentTime(Value& out, ParseNode& node);
bool DateAdd(Value& out, ParseNode& node);
bool CallDllV(Value& out, ParseNode& node);
bool TrueValue(Value& out, ParseNode& node);
bool BitOperation(Value& out, ParseNode& node);
bool NumberMinusOne(Value& out, ParseNode& node);
bool FalseValue(Value& out, ParseNode& node);
bool InsertValuesUnderItem(Value& out, ParseNode& node);
bool InsertValues(Value& out, ParseNode& node);
bool InsertFromQueryUnderItems(Value& out, ParseNode& node);
bool InsertFromQuery(Value& out, ParseNode& node);
bool UpdateRows(Value& out, ParseNode& node);
bool UpdateRowsOfAlias(Value& out, ParseNode& node);
bool DeleteRows(Value& out, ParseNode& node);
bool DeleteRowsOfAlias(Value& out, ParseNode& node);
bool ExecuteAction(Value& out, ParseNode& node);
bool DropAllModules(Value& out, ParseNode& node);
bool DropModule(Value& out, ParseNode& node);
bool DefineProcedure(Value& out, ParseNode& node);

}  // namespace kestra
