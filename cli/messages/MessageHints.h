// What the command itself knows of a fault: sentences for messages that have nothing but a number,
// and how it serves what the language does not.
#pragma once

#include <string>
#include <string_view>

#include "cli/Place.h"

namespace kestra::cli {

// For an Error's text such as "Message Id: 11011, source: ..., includes the following strings:
// Name.": what that means. Empty for a text that is no such one, and for an unknown number.
std::string MessageHint(std::string_view errorText, Place place);

// What the command offers for a word of a query that the language does not have (ORDER, LIMIT):
// empty if that is nothing.
std::string WordHint(std::string_view word, Place place);

}  // namespace kestra::cli
