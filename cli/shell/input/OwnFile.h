// A file that is the user's alone, and that several processes add to. One implementation per
// system: terminal_linux/, terminal_win32/.
#pragma once

#include <functional>
#include <string>

namespace kestra::cli {

// What is longer is no file of ours.
inline constexpr size_t kLongestOwnFile = size_t{80} << 20;

// Each makes the file and its directory, which nobody else may read, where they are not there, and
// answers why it failed, as a sentence; empty if it did not. Other processes that do the same wait
// for their turn.

// Adds to the end.
std::string AppendToOwnFile(const std::string& path, const std::string& text);

// Reads the content, and writes trim(content) in its place where that is shorter; content gets what
// is there afterwards.
std::string TrimOwnFile(const std::string& path,
                        const std::function<std::string(const std::string&)>& trim,
                        std::string& content);

}  // namespace kestra::cli
