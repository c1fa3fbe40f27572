#include "cli/QueryText.h"

#include <cerrno>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "cli/Terminal.h"

namespace kestra::cli {
namespace {

struct CloseFile {
  void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};

[[noreturn]] void FailToRead(const std::string& name, int error) {
  throw std::runtime_error(name + ": " + std::generic_category().message(error));
}

std::string ReadAll(std::FILE* pFile, const std::string& name) {
  std::string text;
  std::string buffer(size_t{64} << 10, '\0');
  // What has failed once, such as by the interrupt key, is not tried again.
  while (!std::ferror(pFile)) {
    const size_t read = std::fread(buffer.data(), 1, buffer.size(), pFile);
    if (read == 0) break;
    text.append(buffer, 0, read);
    if (text.size() > kMaxTextBytes) {
      throw std::runtime_error(name + ": longer than " + std::to_string(kMaxTextBytes >> 20) +
                               " MB");
    }
  }
  if (std::ferror(pFile)) FailToRead(name, errno);
  return text;
}

// Where the string or comment that begins at start ends; the end of the text if it does not.
size_t BehindClosing(std::string_view text, size_t start, std::string_view closing) {
  const size_t found = text.find(closing, start);
  return found == std::string_view::npos ? text.size() : found + closing.size();
}

// Control bytes part words in the language and are nothing themselves.
bool IsBlank(char c) {
  return static_cast<unsigned char>(c) <= ' ' || c == '\x7F';
}

}  // namespace

std::string ReadQueryFile(const std::string& path) {
  if (path == "-") return ReadAll(stdin, "standard input");
  const std::unique_ptr<std::FILE, CloseFile> file(OpenForReading(path));
  if (!file) FailToRead(path, errno);
  return ReadAll(file.get(), path);
}

std::vector<std::string_view> SplitQueries(std::string_view text) {
  std::vector<std::string_view> queries;
  size_t start = 0;
  bool isEmpty = true;
  for (size_t i = 0; i < text.size();) {
    if (text[i] == ';') {
      if (!isEmpty) queries.push_back(text.substr(start, i - start));
      start = ++i;
      isEmpty = true;
    } else if (text.substr(i, 2) == "/*") {
      // A comment that does not end is a fault of the query's, and the query is to say so.
      if (text.find("*/", i + 2) == std::string_view::npos) isEmpty = false;
      i = BehindClosing(text, i + 2, "*/");
    } else if (text[i] == '\'') {
      // A doubled quote ends one string and begins the next: the same for this purpose.
      i = BehindClosing(text, i + 1, "'");
      isEmpty = false;
    } else {
      if (!IsBlank(text[i])) isEmpty = false;
      ++i;
    }
  }
  if (!isEmpty) queries.push_back(text.substr(start));
  return queries;
}

}  // namespace kestra::cli
