#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <map>

#include "VLib/src/errors/DiagMessage.h"
#include "VLib/src/errors/Exception.h"
#include "platform/os/HostEnvironment.h"

namespace kestra {
namespace {

class CScriptedTexts final : public CMessageTexts {
 public:
  std::optional<std::string> LoadMessageString(MessageSource, uint32_t id) override {
    return Find(messages, id);
  }
  std::optional<std::string> ModuleFileName(MessageSource source) override {
    if (source != 0) return std::nullopt;
    return moduleName;
  }
  std::optional<std::string> SystemText(kestra::SystemError code) override {
    return Find(system, code);
  }
  std::optional<std::string> NetworkText(kestra::SystemError code) override {
    return Find(network, code);
  }
  std::optional<std::string> RasText(kestra::SystemError code) override { return Find(ras, code); }

  using Texts = std::map<uint32_t, std::string>;
  Texts messages{{1, "%1 of %2 failed"}, {2, "no inserts"}, {3, ""}};
  Texts system{{5, "Access is denied."}, {700, "from the system"}};
  Texts network{{2250, "from NetMsg"}, {650, "wrong source"}, {2099, "wrong source"}};
  Texts ras{{650, "from RAS"},      {2250, "wrong source"}, {599, "wrong source"}, {700, "unused"},
            {2100, "wrong source"}, {600, "first"},         {2099, "last"}};
  std::string moduleName = "C:\\k.dll";

 private:
  static std::optional<std::string> Find(const Texts& texts, uint32_t id) {
    const auto found = texts.find(id);
    if (found == texts.end()) return std::nullopt;
    return found->second;
  }
};

struct TextCase {
  uint32_t id;
  std::vector<std::string> args;
  kestra::SystemError error;
  MessageSource source;
  const char* expected;
};

TEST(DiagMessage, GetText) {
  const TextCase cases[] = {
      {0, {}, 0, 0, "No details about the error."},
      {11000,
       {"Name"},
       0,
       0,
       "Message Id: 11000, source: C:\\k.dll, includes the following strings: Name."},
      {11000, {}, 0, 0, "Message Id: 11000, source: C:\\k.dll."},
      {11000,
       {"a, ", "b"},
       0,
       9,
       "Message Id: 11000, source: Unknown, includes the following strings: a, , b."},
      {11000,
       {"a", ", ,"},
       0,
       0,
       "Message Id: 11000, source: C:\\k.dll, includes the following strings: a."},
      {1, {"Part", "it"}, 0, 0, "Part of it failed"},
      {1, {"1", "2", "3", "4"}, 0, 0, "1 of 2 failed"},
      {1,
       {"1", "2", "3", "4", "5"},
       0,
       0,
       "Message Id: 1, source: C:\\k.dll, includes the following strings: 1, 2, 3, 4, 5."},
      {1, {"Part", "it"}, 5, 0, "Part of it failed Access is denied."},
      {2, {}, 0, 0, "No details about the error."},  // a text without inserts is not used
      {2, {}, 5, 0, "Access is denied."},
      {3, {"x"}, 0, 0, "Message Id: 3, source: C:\\k.dll, includes the following strings: x."},
      {0, {"unused"}, 0, 0, "No details about the error."},
      {0, {}, 5, 0, "Access is denied."},
      {0, {}, 599, 0, "System error code: 599."},
      {0, {}, 600, 0, "first"},
      {0, {}, 650, 0, "from RAS"},
      {0, {}, 700, 0, "from the system"},
      {0, {}, 2099, 0, "last"},
      {0, {}, 2100, 0, "System error code: 2100."},
      {0, {}, 2250, 0, "from NetMsg"},
      {0, {}, 4294967295u, 0, "System error code: 4294967295."},
  };
  for (const TextCase& test : cases) {
    CScriptedTexts texts;
    DiagMessage message;
    message.MessageId = test.id;
    message.Args = test.args;
    message.SystemError = test.error;
    message.Source = test.source;
    EXPECT_EQ(message.GetText(texts), test.expected);
  }
}

TEST(DiagMessage, CutsTheModuleNameAtACharacter) {
  CScriptedTexts texts;
  texts.moduleName = std::string(254, 'x') + "ä.so";
  const DiagMessage message(11015, {});
  EXPECT_EQ(message.GetText(texts), "Message Id: 11015, source: " + std::string(254, 'x') + ".");
}

// Wine words some of the system's texts in its own way.
bool IsOneOf(const std::string& text, std::initializer_list<const char*> known) {
  return std::find(known.begin(), known.end(), text) != known.end();
}

TEST(DiagMessage, SystemTextsOfThisSystem) {
  DiagMessage message;
  message.SystemError = 5;
  EXPECT_TRUE(IsOneOf(message.GetText(), {"Access is denied.", "Access denied."}));
  message.SystemError = 1223;
  EXPECT_TRUE(IsOneOf(message.GetText(),
                      {"The operation was canceled by the user.", "Operation canceled by user."}));
  message.SystemError = 0x0FFFFFFF;
  EXPECT_EQ(message.GetText(), "System error code: 268435455.");
  message.ClearState();
  EXPECT_EQ(message.GetText(), "No details about the error.");
  const DiagMessage failure(11000, {"Name"});
  EXPECT_FALSE(failure.Success);
  EXPECT_EQ(failure.GetText().find("Message Id: 11000, source: " + os::LibraryPath()), 0u);
}

TEST(CVSystemException, KeepsTheLineEndOfTheSystemsText) {
  EXPECT_TRUE(
      IsOneOf(CVSystemException(5).what(), {"Access is denied.\r\n", "Access denied.\r\n"}));
  EXPECT_EQ(CVSystemException(0x0FFFFFFF).Text, "");
  EXPECT_EQ(CVSystemException(5).Context, "");
}

struct FormatCase {
  const char* text;
  const char* expected;
};

TEST(FormatMessageText, ReplacesInsertsAndEscapes) {
  const std::vector<std::string> inserts{"one", "two %1", "3", "4", "5", "6", "7", "8", "9", "ten"};
  const FormatCase cases[] = {
      {"%1-%2", "one-two %1"},
      {"%1!u!, %3!-5s!.", "one, 3."},
      {"%10%1", "tenone"},
      {"100%% %n|%t|%.%!%b|", "100% \r\n|\t|.! |"},
      {"%11 and %99!u!", "%11 and %99!u!"},  // no such inserts
      {"end%0 not seen", "end"},
      {"50%", "50%"},
      {"%z", "%z"},
      {"%1!u", "one!u"},
      {"", ""},
  };
  for (const FormatCase& test : cases)
    EXPECT_EQ(FormatMessageText(test.text, inserts), test.expected) << test.text;
}

}  // namespace
}  // namespace kestra
