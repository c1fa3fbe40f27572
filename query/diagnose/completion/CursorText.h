// A text cut at a cursor.
#pragma once

#include <string>
#include <string_view>

#include "query/parse/Tokeniser.h"

namespace kestra {

struct CursorText {
  TokenList tokens;   // of the statement: before the cursor, one that stands for the word that is
                      // begun there, behind the cursor
  size_t place = 0;   // of the one that stands for the word
  std::string begun;  // what is written of it; of a string without its quote
  bool isString = false;
  size_t offset = 0;  // the bytes of the text that it takes up
  size_t length = 0;
};

// False where nothing can be completed: in a comment, in a number, behind too many words. The
// tokens refer to text.
bool CutAtCursor(std::string_view text, size_t cursor, CursorText& cut);

}  // namespace kestra
