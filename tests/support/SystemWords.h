// The system's own sentence for an error is worded otherwise on each system; tests that compare it
// write the words of Windows, and put what they got through here.
#pragma once

#include <string>
#include <utility>

#include "platform/base/SystemError.h"
#include "platform/os/MessageText.h"

namespace kestra::test {

inline std::string InWordsOfWindows(std::string text) {
  const std::pair<SystemError, std::string> sentences[] = {{5, "Access is denied."},
                                                           {21, "The device is not ready."}};
  for (const auto& [error, words] : sentences) {
    const std::string own = os::SystemErrorLine(error).value_or(words);
    for (size_t at = text.find(own); at != std::string::npos;
         at = text.find(own, at + words.size()))
      text.replace(at, own.size(), words);
  }
  return text;
}

}  // namespace kestra::test
