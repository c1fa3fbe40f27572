// What was probably meant by a name that there is not.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestra::cli {

// The names that are nearest to wanted, the nearest first, at most three: those that it begins,
// and those that a few slips of the keyboard away. None if nothing is near. Case is ignored.
std::vector<std::string> NearNames(std::string_view wanted, const std::vector<std::string>& names);

// The same as the end of a sentence: ": did you mean A or B?"; empty if nothing is near.
std::string NearNamesSentence(std::string_view wanted, const std::vector<std::string>& names);

}  // namespace kestra::cli
