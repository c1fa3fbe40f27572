// For the tests of texts that are as long and as deep as they can be: runs one on a stack as small
// as the smallest that a thread of ours has, and makes such texts.
#pragma once

#include <cstddef>
#include <string>

namespace kestra::test {

// What the query gives over the test modules; the text of an element for a list of one, and "n
// elements" for a longer one. Time, outcome
// and memory become properties of the test. Ends the program if
// the query does not end in time: its thread cannot be left.
std::string RunOnSmallStack(const std::string& text);

std::string Repeat(const std::string& piece, size_t count);
// first, then the further piece so often.
std::string Chain(const std::string& first, const std::string& further, size_t count);
std::string Nest(const std::string& open, const std::string& core, const std::string& close,
                 size_t depth);

}  // namespace kestra::test
