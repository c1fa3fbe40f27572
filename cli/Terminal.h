// What the command needs of the terminal and of the process around it. One implementation per
// system: terminal_linux/, terminal_win32/.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace kestra::cli {

enum class Stream { In = 0, Out = 1, Error = 2 };

// Gives each of the three streams that the process was started without a place where reading and
// writing fail, so that no file opened later is taken for one of them; and sees to it that what is
// written arrives as it is, in UTF-8. First thing in the process.
void ReserveStandardStreams();

// The command has lists that come and go, and ends soon: the heap grows in large steps and is not
// given back in between. Before anything big is allocated.
void PrepareHeap();

// The command line's words, the program's name first, in UTF-8. Called with what main got.
std::vector<std::string> CommandLine(int argc, char** argv);

// A file by its path in UTF-8, as it is; null, with errno, if it cannot be opened.
std::FILE* OpenForReading(const std::string& path);

// The same for a file that is made, or made empty.
std::FILE* OpenForWriting(const std::string& path);

bool IsDirectory(const std::string& path);

struct FoundPath {
  std::string text;  // begins as what was asked for; a directory ends in a separator
  bool isDirectory = false;
};
// The files and directories whose path begins with a text, by name, each path as that text goes on.
// Those with a leading dot only where the dot is written. Names that are no UTF-8 or hold control
// characters are left out, and what is beyond the first ten thousand of a directory. Empty where
// the directory cannot be read.
std::vector<FoundPath> PathsBeginningWith(const std::string& begun);
// Whether a text is a path from the root on, or begins one.
bool IsFullPath(const std::string& text);

// From the root on; as it is if the system does not tell.
std::string FullPath(const std::string& path);

bool IsTerminal(Stream stream);
// Columns of the terminal that an output stream goes to; 0 if it goes elsewhere or none is told.
size_t TerminalWidth(Stream stream = Stream::Out);

// For comparing without regard to case: letters in their small form. Bytes that are not UTF-8 stay.
std::string FoldCase(const std::string& utf8);

// A variable of the environment; nothing if it is not set.
std::optional<std::string> EnvironmentText(const char* name);
// Where programs keep what they remember for the user, such as ".../.local/state"; empty if the
// system does not tell.
std::string StateDirectory();

}  // namespace kestra::cli
