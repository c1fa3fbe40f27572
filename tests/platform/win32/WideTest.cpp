#include <gtest/gtest.h>

#include "platform/win32/base/Wide.h"

namespace kestra {
namespace {

TEST(Wide, AndNarrowLeadBack) {
  const std::pair<std::wstring, std::string> cases[] = {
      {L"", ""},
      {L"a\u00E9\u20AC\U0001F600", "a\u00E9\u20AC\U0001F600"},
      {std::wstring(L"a\0b", 3), std::string("a\0b", 3)},
      // Names of files and keys may have surrogates that stand alone.
      {L"a\xD800z", "a\xED\xA0\x80z"},
      {L"\xDFFF\xD800", "\xED\xBF\xBF\xED\xA0\x80"},
      {L"\uD7FF\uE000", "\xED\x9F\xBF\xEE\x80\x80"},
  };
  for (const auto& [wide, utf8] : cases) {
    EXPECT_EQ(Narrow(wide), utf8) << utf8;
    EXPECT_EQ(Wide(utf8), wide) << utf8;
  }
  // Bytes that are no text of any kind, also at the end.
  for (const char* pBytes : {"\xFFz", "\xED\xA0", "\xED", "\xED\xA0\x41"})
    EXPECT_NE(Wide(pBytes).find(L'\xFFFD'), std::wstring::npos) << pBytes;
}

}  // namespace
}  // namespace kestra
