// Why a text is no query, and what its author probably meant.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "model/items/QueryMessage.h"
#include "model/root/Root.h"

namespace kestra {

struct Diagnosis {
  bool isError = true;  // the text is no query, or fails whenever it is run
  // The piece of the text that is meant, in bytes; behind the end of the text its length is 0.
  size_t offset = 0;
  size_t length = 0;
  int32_t line = 1;  // both count from 1; columns are characters
  int32_t column = 1;
  std::string message;                   // one sentence without an end of line
  std::vector<std::string> expected;     // what may stand there; empty for a text that parses
  std::vector<std::string> suggestions;  // texts to put in place of that piece, likeliest first
};

// Nothing for a text of which there is nothing to say, and for one whose parsing was cancelled by
// the message's termination event. Nothing is run or filled: only the class tree of root is looked
// at. A null message stands for one that is never terminated. It takes about as long as parsing.
std::optional<Diagnosis> Diagnose(const std::string& text, const Ref<DiagRoot>& root,
                                  Ref<QueryMessage> message = nullptr);

}  // namespace kestra
