// The query text: where it comes from, and how it is cut into queries.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace kestra::cli {

// Longer than any text that parses could sensibly be; what is longer is refused rather than read.
inline constexpr size_t kMaxTextBytes = size_t{256} << 20;

// A query where it stands in a text, which the views point into.
struct QueryPiece {
  // A text that is one query.
  explicit QueryPiece(std::string_view query) : QueryPiece(query, query) {}
  QueryPiece(std::string_view query, std::string_view wholeText, int32_t numberOfFirstLine = 1)
      : text(query), whole(wholeText), firstLine(numberOfFirstLine) {}
  size_t Offset() const { return static_cast<size_t>(text.data() - whole.data()); }

  std::string_view text;   // the query
  std::string_view whole;  // the text that it is a part of
  int32_t firstLine;       // the number of the whole's first line
};

// Reads all of a file ("-" is standard input), byte by byte as it is. Throws std::runtime_error
// with a sentence for the user.
std::string ReadQueryFile(const std::string& path);

// Cuts a text at each ";" that is outside quotes and comments. Pieces with nothing but blanks and
// comments in them are left out. The views point into text.
std::vector<std::string_view> SplitQueries(std::string_view text);

}  // namespace kestra::cli
