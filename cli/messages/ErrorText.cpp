#include "cli/messages/ErrorText.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace kestra::cli {
namespace {

// An Error is told on one line, whatever is in its text.
std::string OneLine(std::string_view text) {
  std::string line(text);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
  return line;
}

}  // namespace

void TellError(kestra_session* session, std::string_view, kestra_value* error) {
  const std::string text = OneLine(TextOf(error));
  std::fprintf(stderr, "%s\n", text.c_str());
  const std::string message = OneLine(Ask<const char*>(kestra_session_last_message, session));
  if (!message.empty() && text.find(message) == std::string::npos) {
    std::fprintf(stderr, "kestra: %s\n", message.c_str());
  }
}

void TellNotices(kestra_session* session) {
  const char* text = nullptr;
  while (kestra_session_next_notice(session, &text) == KESTRA_OK)
    std::fprintf(stderr, "kestra: %s\n", OneLine(text).c_str());
}

}  // namespace kestra::cli
