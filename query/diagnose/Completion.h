// What may stand at a place of a text that is being written.
#pragma once

#include <string>
#include <vector>

#include "model/items/QueryMessage.h"
#include "model/root/Root.h"

namespace kestra {

// The C interface has the same numbers.
enum class CompletionKind { Keyword, Module, Class, Column, Argument, Option };

struct Completion {
  std::string text;  // as it is written: a string with its quotes, a function with its "("
  CompletionKind kind;
  std::string description;  // one line or empty
};

struct Completions {
  // The bytes of the text that a completion replaces: the word or string that is begun there.
  size_t offset = 0;
  size_t length = 0;
  std::vector<Completion> entries;  // columns first, then by kind; alphabetical within
};

// For the place before the byte at cursor, which may be the text's length. What stands before it
// must be the beginning of a query; of what stands behind it only the sources are looked at, so
// that columns are known. Nothing is run or filled. A null message stands for one that is never
// terminated.
Completions Complete(const std::string& text, size_t cursor, const Ref<DiagRoot>& root,
                     Ref<QueryMessage> message = nullptr);

}  // namespace kestra
