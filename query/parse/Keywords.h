// The words and marks that the grammar spells out.
#pragma once

#include <cstdint>
#include <string_view>

namespace kestra {

using KeywordId = uint8_t;
inline constexpr KeywordId kNoKeyword = 0;

enum Keyword : KeywordId {
  kKwSelect = 1,
  kKwFrom,
  kKwJoin,
  kKwOn,
  kKwWhere,
  kKwAttachedTo,
  kKwItemId,
  kKwOr,
  kKwAnd,
  kKwNot,
  kKwIs,
  kKwNull,
  kKwIn,
  kKwLike,
  kKwEscape,
  kKwRand,
  kKwIsNull,
  kKwConvert,
  kKwInt,
  kKwVersion,
  kKwVarchar,
  kKwLen,
  kKwCharLength,
  kKwDatePart,
  kKwDateAdd,
  kKwGetDate,
  kKwCount,
  kKwSubstring,
  kKwRight,
  kKwCallDll,
  kKwCallDllV,
  kKwInsert,
  kKwValues,
  kKwUpdate,
  kKwSet,
  kKwDelete,
  kKwExecute,
  kKwAction,
  kKwDrop,
  kKwModule,
  kKwCreate,
  kKwProcedure,
  kKwAs,
  kKwOpen,
  kKwClose,
  kKwComma,
  kKwDot,
  kKwStar,
  kKwEquals,
  kKwPlus,
  kKwTilde,
  kKwBar,
  kKwCaret,
  kKwAmpersand,
  kKwHash,
  kKwBackslashString,
  kKeywordCount
};

// The keyword as the grammar spells it.
std::string_view KeywordText(KeywordId keyword);
// The keyword that a token is, in any case; kNoKeyword if it is none.
KeywordId FindKeyword(std::string_view token);

}  // namespace kestra
