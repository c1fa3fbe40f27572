#include "VLib/src/errors/DiagMessage.h"

#include <fmt/format.h>

#include "VLib/src/text/Text.h"
#include "platform/os/MessageText.h"

namespace kestra {
namespace {

constexpr size_t kMaxMessageBytes = 255;
constexpr size_t kMaxInserts = 4;
constexpr kestra::SystemError kFirstRasError = 600;
constexpr kestra::SystemError kFirstNetworkError = 2100;

class CSystemMessageTexts final : public CMessageTexts {
 public:
  std::optional<std::string> LoadMessageString(MessageSource source, uint32_t id) override {
    return os::LoadModuleString(source, id);
  }
  std::optional<std::string> ModuleFileName(MessageSource source) override {
    return os::ModuleFileName(source);
  }
  std::optional<std::string> SystemText(kestra::SystemError code) override {
    return os::SystemErrorLine(code);
  }
  std::optional<std::string> NetworkText(kestra::SystemError code) override {
    return os::NetworkErrorText(code);
  }
  std::optional<std::string> RasText(kestra::SystemError code) override {
    return os::RemoteAccessErrorText(code);
  }
};

// The greatest head of text that has at most limit bytes and does not end inside a character.
std::string_view CutToBytes(std::string_view text, size_t limit) {
  size_t end = 0;
  for (size_t next = 0; end < text.size(); end = next) {
    NextCharacter(text, next);
    if (next > limit) break;
  }
  return text.substr(0, end);
}

// For a message that has no text: all that is known of it.
std::string DescribeMessage(const DiagMessage& message, CMessageTexts& texts) {
  const std::string source = texts.ModuleFileName(message.Source).value_or("Unknown");
  std::string out = fmt::format("Message Id: {}, source: {}, ", message.MessageId,
                                CutToBytes(source, kMaxMessageBytes));
  if (!message.Args.empty()) {
    out += "includes the following strings: ";
    for (const std::string& insert : message.Args) out += insert + ", ";
  }
  return std::string(TrimRight(out, ", ")) + ".";
}

std::string MessageText(const DiagMessage& message, CMessageTexts& texts) {
  if (message.MessageId == 0) return std::string();
  const auto loaded = texts.LoadMessageString(message.Source, message.MessageId);
  if (!loaded || loaded->empty() || message.Args.size() > kMaxInserts)
    return DescribeMessage(message, texts);
  // A loaded text without inserts is not used; hosts know the messages that way.
  if (message.Args.empty()) return std::string();
  return FormatMessageText(std::string(CutToBytes(*loaded, kMaxMessageBytes)), message.Args);
}

std::string ErrorText(kestra::SystemError code, CMessageTexts& texts) {
  if (code == 0) return std::string();
  std::string sys = texts.SystemText(code).value_or(std::string());
  if (sys.empty() && code >= kFirstNetworkError)
    sys = texts.NetworkText(code).value_or(std::string());
  if (sys.empty() && code >= kFirstRasError && code < kFirstNetworkError)
    sys = texts.RasText(code).value_or(std::string());
  return sys.empty() ? fmt::format("System error code: {}.", code) : sys;
}

}  // namespace

CMessageTexts& SystemMessageTexts() {
  static auto* const pTexts = new CSystemMessageTexts;
  return *pTexts;
}

DiagMessage::DiagMessage(uint32_t id, std::initializer_list<std::string> inserts)
    : Success(false), MessageId(id), Args(inserts) {}

std::string DiagMessage::GetText(CMessageTexts& texts) const {
  std::string out = MessageText(*this, texts);
  const std::string sys = ErrorText(SystemError, texts);
  if (!out.empty() && !sys.empty()) out += ' ';
  out += sys;
  return out.empty() ? "No details about the error." : out;
}

void DiagMessage::ClearState() {
  Success = true;
  Source = 0;
  MessageId = 0;
  Args.clear();
  SystemError = 0;
}

}  // namespace kestra
