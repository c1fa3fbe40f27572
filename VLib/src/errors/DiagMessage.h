// DiagMessage: the outcome of an action, and the one place where it becomes a sentence.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/SystemError.h"

namespace kestra {

// A loaded module (DLL, shared object) that holds message texts. 0 is this library.
using MessageSource = uintptr_t;

// Where message texts come from. The default asks the system; tests bring their own.
class CMessageTexts {
 public:
  virtual ~CMessageTexts() = default;
  // The text with that id in the module's string table, at most 255 bytes.
  virtual std::optional<std::string> LoadMessageString(MessageSource source, uint32_t id) = 0;
  // Full path of the module's file.
  virtual std::optional<std::string> ModuleFileName(MessageSource source) = 0;
  // The system's own text for an error number, on one line.
  virtual std::optional<std::string> SystemText(SystemError code) = 0;
  // The text out of the network message file, and that of the remote access service.
  virtual std::optional<std::string> NetworkText(SystemError code) = 0;
  virtual std::optional<std::string> RasText(SystemError code) = 0;
};
CMessageTexts& SystemMessageTexts();

class DiagMessage {
 public:
  DiagMessage() = default;
  // A failure with a message of this library's.
  DiagMessage(uint32_t id, std::initializer_list<std::string> inserts);
  virtual ~DiagMessage() = default;

  bool Success = true;
  MessageSource Source = 0;
  uint32_t MessageId = 0;               // 0 is no message
  std::vector<std::string> Args;        // the insert strings
  kestra::SystemError SystemError = 0;  // 0 is none

  // The sentence. Does not change the record and does not throw for a missing text.
  std::string GetText(CMessageTexts& texts = SystemMessageTexts()) const;
  // Back to success, with nothing set.
  void ClearState();
};

// The inserts %1 to %9 (with "!u!", "!s!" and "!d!" formats), "%%" and "%n" of a message text, as
// the Win32 page of FormatMessage describes them; an insert that is missing stays as written.
std::string FormatMessageText(const std::string& text, const std::vector<std::string>& inserts);

}  // namespace kestra
