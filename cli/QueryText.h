// The query text: where it comes from, and how it is cut into queries.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace kestra::cli {

// Longer than any text that parses could sensibly be; what is longer is refused rather than read.
inline constexpr size_t kMaxTextBytes = size_t{256} << 20;

// Reads all of a file ("-" is standard input), byte by byte as it is. Throws std::runtime_error
// with a sentence for the user.
std::string ReadQueryFile(const std::string& path);

// Cuts a text at each ";" that is outside quotes and comments. Pieces with nothing but blanks and
// comments in them are left out. The views point into text.
std::vector<std::string_view> SplitQueries(std::string_view text);

}  // namespace kestra::cli
