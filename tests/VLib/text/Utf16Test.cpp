#include <gtest/gtest.h>

#include "platform/base/text/Utf16.h"
#include "tests/VLib/version/BlockWriter.h"

namespace kestra {
namespace {

TEST(Utf16, BecomesUtf8) {
  const std::pair<std::u16string, std::string> cases[] = {
      {u"", ""},
      {u"az\x7f", "az\x7f"},
      {u"\x80\u07ff", "\u0080\u07ff"},
      {u"\u0800\uffff", "\u0800\uffff"},
      {u"\U00010000\U0010FFFF", "\U00010000\U0010FFFF"},
      {u"\xD800", "\xED\xA0\x80"},
      {u"\xDC00\xD800", "\xED\xB0\x80\xED\xA0\x80"},
      {u"\xD800\xD800\xDC00", "\xED\xA0\x80\U00010000"},
      {u"\xD800"
       u"a",
       "\xED\xA0\x80"
       "a"},
      {std::u16string(u"a\0b", 3), std::string("a\0b", 3)},
  };
  for (const auto& [text, utf8] : cases) EXPECT_EQ(Utf8FromUtf16(test::Utf16(text)), utf8) << utf8;
  EXPECT_EQ(Utf8FromUtf16(std::string("a\0b", 3)), "a");  // half a unit
}

}  // namespace
}  // namespace kestra
