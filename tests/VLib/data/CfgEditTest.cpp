// Changes of data files that people write too.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "VLib/src/data/CfgLayers.h"
#include "VLib/src/data/edit/CfgEdit.h"
#include "VLib/src/data/edit/CfgSurvey.h"
#include "VLib/src/data/edit/CfgTreeEdit.h"
#include "tests/VLib/data/CfgTrees.h"
#include "tests/support/EventAtLook.h"

namespace kestra {
namespace {

using enum CfgEditKind;

constexpr CfgForm kIni{.layout = CfgLayout::Ini};
constexpr CfgForm kCfg{.layout = CfgLayout::Cfg};
constexpr CfgForm kApi{.quoteFlags = kCfgQuotes, .ignoreCase = true};

CfgOutcome Edit(std::string& bytes, const CfgEdit& edit, const CfgForm& form) {
  CTerminationLook never(nullptr);
  return EditCfgBytes(bytes, edit, form, never);
}

CfgEdit NewSection(std::vector<CfgStep> parent, std::string name) {
  return {AddSection, std::move(parent), {std::move(name)}, {}};
}
CfgEdit NoSection(std::vector<CfgStep> parent, std::string name, size_t ordinal = 0) {
  return {DeleteSection, std::move(parent), {std::move(name), ordinal}, {}};
}
CfgEdit NewKey(std::vector<CfgStep> parent, std::string name, std::string text) {
  return {AddKey, std::move(parent), {std::move(name)}, std::move(text)};
}
CfgEdit Set(std::vector<CfgStep> parent, std::string name, std::string text, size_t ordinal = 0) {
  return {SetKey, std::move(parent), {std::move(name), ordinal}, std::move(text)};
}
CfgEdit NoKey(std::vector<CfgStep> parent, std::string name, size_t ordinal = 0) {
  return {DeleteKey, std::move(parent), {std::move(name), ordinal}, {}};
}

struct Case {
  const char* what;
  CfgForm form;
  std::string before;
  CfgEdit edit;
  std::string after;
};

void ExpectAll(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    std::string bytes = c.before;
    EXPECT_EQ(Edit(bytes, c.edit, c.form), CfgOutcome::Done) << c.what;
    EXPECT_EQ(bytes, c.after) << c.what;
  }
}

TEST(CfgEdit, Keys) {
  ExpectAll({
      {"one value", kIni, "; c\r\n[a]\r\n x  =  1  \r\ny=2\r\n", Set({{"a"}}, "x", "99"),
       "; c\r\n[a]\r\n x  =  99  \r\ny=2\r\n"},
      {"an empty value", kIni, "[a]\nx = \n", Set({{"a"}}, "x", "v"), "[a]\nx = v\n"},
      {"an empty value, CR", kIni, "[a]\nx =\r\n", Set({{"a"}}, "x", "v"), "[a]\nx =v\r\n"},
      {"to an empty value", kIni, "[a]\nx = v\n", Set({{"a"}}, "x", ""), "[a]\nx = \n"},
      {"a value with =", kIni, "[a]\nx=b=c\n", Set({{"a"}}, "x", "d=e"), "[a]\nx=d=e\n"},
      {"the value is the key", kIni, "x=x", Set({}, "x", "y"), "x=y"},
      {"second duplicate", kIni, "[a]\nx=1\nx=2\n", Set({{"a"}}, "x", "3", 1), "[a]\nx=1\nx=3\n"},
      {"in the second section of a name", kIni, "[a]\nx=1\n[a]\nx=2\n", Set({{"a", 1}}, "x", "3"),
       "[a]\nx=1\n[a]\nx=3\n"},
      {"a key outside sections", kIni, "x=1\n[a]\nx=2\n", Set({}, "x", "3"), "x=3\n[a]\nx=2\n"},
      {"no last line end", kIni, "[a]\nx=1", Set({{"a"}}, "x", "2"), "[a]\nx=2"},
      {"new behind the last key", kIni, "[a]\nx=1\n; about x\n\n[b]\nx=2\n",
       NewKey({{"a"}}, "y", "v"), "[a]\nx=1\ny=v\n; about x\n\n[b]\nx=2\n"},
      {"new, spelled as its neighbour", kIni, "[a]\n\t x = 1\n", NewKey({{"a"}}, "y", "v"),
       "[a]\n\t x = 1\n\t y = v\n"},
      {"new beside an empty value", kIni, "[a]\nx =\n", NewKey({{"a"}}, "y", "v"),
       "[a]\nx =\ny = v\n"},
      {"new in a section without keys", kIni, "[a]\n; c\n[b]\n", NewKey({{"a"}}, "y", "v"),
       "[a]\ny = v\n; c\n[b]\n"},
      {"new behind an open last line", kIni, "[a]\r\nx=1", NewKey({{"a"}}, "y", "v"),
       "[a]\r\nx=1\r\ny=v"},
      {"new above all sections", kIni, "; file\n\n; of a\n[a]\nx=1\n", NewKey({}, "y", "v"),
       "; file\n\ny=v\n; of a\n[a]\nx=1\n"},
      {"new in a file of comments", kIni, "; file\n", NewKey({}, "y", "v"), "; file\ny = v\n"},
      {"new behind [] in the Ini layout", kIni, "[a]\nx=1\n[]\nz=1\n", NewKey({}, "y", "v"),
       "[a]\nx=1\n[]\nz=1\ny=v\n"},
      {"new before what the reader never sees", kIni, "[]\nx=1\n", NewKey({}, "y", "v"),
       "y = v\n[]\nx=1\n"},
      {"new in an empty file", kIni, "", NewKey({}, "y", "v"), "y = v\r\n"},
      {"the line end that most lines have", kIni, "[a]\nx=1\r\ny=1\r\n", NewKey({{"a"}}, "z", "v"),
       "[a]\nx=1\r\ny=1\r\nz=v\r\n"},
      {"a deleted key", kIni, "[a]\nx=1\n ; c\n\ny=2\n", NoKey({{"a"}}, "x"), "[a]\n ; c\n\ny=2\n"},
      {"a deleted last line", kIni, "[a]\nx=1\ny=2", NoKey({{"a"}}, "y"), "[a]\nx=1\n"},
      {"the only line", kIni, "x=1\n", NoKey({}, "x"), ""},
      {"behind a UTF-8 mark", kIni, "\xEF\xBB\xBF[a]\nx=1\n", Set({{"a"}}, "x", "2"),
       "\xEF\xBB\xBF[a]\nx=2\n"},
      {"into a file of a UTF-8 mark alone", kIni, "\xEF\xBB\xBF", NewKey({}, "x", "2"),
       "\xEF\xBB\xBFx = 2\r\n"},
      {"what is not understood stays", kIni, "junk\n[a\n[a] tail\nx=1\n#y=2\n",
       Set({{"a"}}, "x", "2"), "junk\n[a\n[a] tail\nx=2\n#y=2\n"},
      {"bytes that are no UTF-8", kIni, "[\xE4]\nx=\xFC\n", Set({{"\xE4"}}, "x", "\xF6"),
       "[\xE4]\nx=\xF6\n"},
  });
}

TEST(CfgEdit, Sections) {
  ExpectAll({
      {"new at the end", kIni, "[a]\nx=1\n\n", NewSection({}, "b"), "[a]\nx=1\n\n[b]\n"},
      {"new behind an open last line", kIni, "[a]", NewSection({}, "b"), "[a]\r\n[b]"},
      {"new where [] ends the text", kIni, "[a]\n[]\n[]\nx=1\n", NewSection({}, "b"),
       "[a]\n[]\n[b]\n[]\n[]\nx=1\n"},
      {"new, blanks in the name", kIni, "", NewSection({}, " b = "), "[ b = ]\r\n"},
      {"deleted down to the next one", kIni, "x=0\n\n; of a\n[a]\nx=1\n; in a\n\n; of b\n[b]\n",
       NoSection({}, "a"), "x=0\n\n; of a\n; of b\n[b]\n"},
      {"deleted at the end", kIni, "[a]\nx=1\n[b]\nx=2", NoSection({}, "b"), "[a]\nx=1\n"},
      {"deleted with its []", kIni, "[a]\nx=1\n[] z\ny=2\n", NoSection({}, "a"), "y=2\n"},
      {"deleted, but its [] ends the one before too", kIni, "[a]\n[b]\nx=1\n[]\ny=2\n",
       NoSection({}, "b"), "[a]\n[]\ny=2\n"},
      {"the second of a name", kIni, "[a]\nx=1\n[a]\nx=2\n[a]\nx=3\n", NoSection({}, "a", 1),
       "[a]\nx=1\n[a]\nx=3\n"},
  });
}

TEST(CfgEdit, NestedSections) {
  const std::string text = "[a]\n x=1\n [b]\n  y=1\n []\n z=1\n[]\n[b]\n y=2\n[]\n";
  ExpectAll({
      {"a key deep down", kCfg, text, Set({{"a"}, {"b"}}, "y", "3"),
       "[a]\n x=1\n [b]\n  y=3\n []\n z=1\n[]\n[b]\n y=2\n[]\n"},
      {"a key behind a section", kCfg, text, NewKey({{"a"}}, "w", "3"),
       "[a]\n x=1\n [b]\n  y=1\n []\n z=1\n w=3\n[]\n[b]\n y=2\n[]\n"},
      {"the same name, but not below", kCfg, text, Set({{"b"}}, "y", "3"),
       "[a]\n x=1\n [b]\n  y=1\n []\n z=1\n[]\n[b]\n y=3\n[]\n"},
      {"new in a section", kCfg, text, NewSection({{"a"}}, "c"),
       "[a]\n x=1\n [b]\n  y=1\n []\n z=1\n [c]\n []\n[]\n[b]\n y=2\n[]\n"},
      {"new at the top", kCfg, "[a]\n[]\n", NewSection({}, "b"), "[a]\n[]\n[b]\n[]\n"},
      {"new at the top, below sections that nobody closed", kCfg, "[a]\n[b]\nx=1\n",
       NewSection({}, "c"), "[a]\n[b]\nx=1\n[]\n[]\n[c]\n[]\n"},
      {"new in a section that nobody closed", kCfg, "[a]\n[b]\nx=1", NewSection({{"a"}}, "c"),
       "[a]\n[b]\nx=1\n[]\n [c]\n []"},
      {"a key of a section without keys", kCfg, " [a]\n []\n", NewKey({{"a"}}, "x", "1"),
       " [a]\n  x = 1\n []\n"},
      {"deleted with what is in it", kCfg, text, NoSection({}, "a"), "[b]\n y=2\n[]\n"},
      {"deleted in a section", kCfg, text, NoSection({{"a"}}, "b"),
       "[a]\n x=1\n z=1\n[]\n[b]\n y=2\n[]\n"},
      {"deleted, and never closed", kCfg, "[a]\nx=1\n[b]\ny=1\n", NoSection({{"a"}}, "b"),
       "[a]\nx=1\n"},
  });
}

TEST(CfgEdit, ByTheRulesOfTheProfileFunctions) {
  ExpectAll({
      {"any case", kApi, "[Net]\nPort=1\n", Set({{"NET"}}, "port", "2"), "[Net]\nPort=2\n"},
      {"quotes stay", kApi, "[a]\nx=\"1\"\n", Set({{"a"}}, "x", "2"), "[a]\nx=\"2\"\n"},
      {"quotes where they are needed", kApi, "[a]\nx=1\n", Set({{"a"}}, "x", " 2"),
       "[a]\nx=\" 2\"\n"},
      {"a value in quotes", kApi, "[a]\nx=1\n", NewKey({{"a"}}, "y", "\"2\""),
       "[a]\nx=1\ny=\"\"2\"\"\n"},
  });
}

TEST(CfgEdit, Refused) {
  const CfgForm scrambled{.layout = CfgLayout::Ini, .key = 77};
  std::string jumble = "[a]\r\nx = 1\r\n[b]\r\ny = 2\r\n";
  const struct {
    const char* what;
    CfgForm form;
    std::string bytes;
    CfgEdit edit;
    CfgOutcome expected;
  } cases[] = {
      {"key there", kIni, "[a]\nx=1\n", NewKey({{"a"}}, "x", "2"), CfgOutcome::Exists},
      {"another case is another key", kIni, "[a]\nx=1\n", NewKey({{"a"}}, "X", "2"),
       CfgOutcome::Done},
      {"but not for the profile functions", kApi, "[a]\nx=1\n", NewKey({{"A"}}, "X", "2"),
       CfgOutcome::Exists},
      {"section there", kIni, "[a]\n", NewSection({}, "a"), CfgOutcome::Exists},
      {"no such key", kIni, "[a]\nx=1\n", Set({{"a"}}, "y", "2"), CfgOutcome::Missing},
      {"no second one", kIni, "[a]\nx=1\n", NoKey({{"a"}}, "x", 1), CfgOutcome::Missing},
      {"no such section", kIni, "[a]\nx=1\n", NewKey({{"b"}}, "x", "2"), CfgOutcome::Missing},
      {"no such section, deleted", kIni, "", NoSection({}, "a"), CfgOutcome::Missing},
      {"behind the text's end", kIni, "[]\n[a]\nx=1\n", Set({{"a"}}, "x", "2"),
       CfgOutcome::Missing},
      {"a section in one of the Ini layout", kIni, "[a]\n", NewSection({{"a"}}, "b"),
       CfgOutcome::NotHeld},
      {"a line that becomes a section", kIni, "[x=1\n", Set({}, "[x", "]"), CfgOutcome::NotHeld},
      {"a name that becomes a mark", kIni, "", NewKey({}, "\xEF\xBB\xBFx", "1"),
       CfgOutcome::NotHeld},
      {"a name that becomes another mark", kIni, "", NewKey({}, "\xFF\xFEx", "1"),
       CfgOutcome::NotText},
      {"UTF-16", kIni, "\xFF\xFE[", NewSection({}, "a"), CfgOutcome::NotText},
      {"UTF-16 of the other order", kIni, std::string("\xFE\xFF\0[", 4), NewSection({}, "a"),
       CfgOutcome::NotText},
      {"zero bytes", kIni, std::string("[\0a\0]\0", 6), NewSection({}, "a"), CfgOutcome::NotText},
      {"a plain file with a key", scrambled, jumble, NewSection({}, "c"), CfgOutcome::NotText},
      {"too large", kIni, std::string(kCfgMostBytes + 1, ' '), NewSection({}, "a"),
       CfgOutcome::TooLarge},
      {"too large afterwards", kIni, "[a]" + std::string(kCfgMostBytes - 4, ' ') + "\n",
       NewSection({}, "b"), CfgOutcome::TooLarge},
      {"a plain file with a key, LF", scrambled, "[a]\nx = 1\n[b]\ny = 2\n", NewSection({}, "c"),
       CfgOutcome::NotText},
      {"control bytes", kIni, "[a]\nx=1\n\x1f\n", Set({{"a"}}, "x", "2"), CfgOutcome::NotText},
      {"blanks that are controls", kIni, "[a]\n\t\v x=1\n", Set({{"a"}}, "x", "2"),
       CfgOutcome::Done},
      {"DEL and what is no UTF-8", kIni, "[a]\n\x7f\xff\x80=1\n", NewKey({{"a"}}, "x", "2"),
       CfgOutcome::Done},
      {"nothing understood", kIni, "two\nlines", NewSection({}, "a"), CfgOutcome::NotText},
      {"only comments", kIni, "; c\n\n", NewSection({}, "a"), CfgOutcome::Done},
      {"only comments of others", kIni, "\n # c\n", NewSection({}, "a"), CfgOutcome::Done},
      {"only blank lines", kIni, "\n \r\n", NewSection({}, "a"), CfgOutcome::Done},
  };
  for (const auto& c : cases) {
    std::string bytes = c.bytes;
    EXPECT_EQ(Edit(bytes, c.edit, c.form), c.expected) << c.what;
    EXPECT_EQ(bytes == c.bytes, c.expected != CfgOutcome::Done) << c.what;
  }
}

// To others each CR may end a line; an outcome of Done means that they lose nothing either.
TEST(CfgEdit, CarriageReturnsThatEndNoLine) {
  const struct {
    std::string bytes;
    CfgEdit edit;
    CfgOutcome expected;
  } cases[] = {
      {"a=1\rb=2\rc=3\r", Set({}, "a", "5"), CfgOutcome::NotText},
      {"a=1\rb=2\nc=3\n", NoKey({}, "a"), CfgOutcome::NotText},
      {"a=1\rb=2\nc=3\n", Set({}, "a", "5"), CfgOutcome::NotText},
      {"a=1\rb=2\nc=3\n", Set({}, "c", "5"), CfgOutcome::Done},
      {"a=1\rb=2\nc=3\n", NoKey({}, "c"), CfgOutcome::Done},
      {"a=1\rb=2\nc=3\n", NewKey({}, "d", "5"), CfgOutcome::NotText},
      {"a=1\n", Set({}, "a", "5"), CfgOutcome::Done},
      {"a=1\r", Set({}, "a", "5"), CfgOutcome::NotText},
      {"a=1\r\r\n", Set({}, "a", "5"), CfgOutcome::NotText},
      {"[s]\ra=1\r[t]\rb=2\r", NoSection({}, "s"), CfgOutcome::NotText},
      {"[s]\ra=1\r[t]\rb=2\r", NewSection({}, "u"), CfgOutcome::NotText},
      {"; of s\r[t]\n[s]\n", NoSection({}, "s"), CfgOutcome::NotText},
      {"[s]\r\na=1\r\n", NewSection({}, "u"), CfgOutcome::Done},
      {"[s]\r\na=1\r\n", NoSection({}, "s"), CfgOutcome::Done},
      {"\r", Set({}, "a", "5"), CfgOutcome::Missing},
  };
  for (const auto& c : cases) {
    std::string bytes = c.bytes;
    EXPECT_EQ(Edit(bytes, c.edit, kIni), c.expected) << c.bytes;
    EXPECT_EQ(bytes == c.bytes, c.expected != CfgOutcome::Done) << c.bytes;
  }
}

TEST(CfgEdit, NoMoreEntriesThanTheLimit) {
  CTerminationLook never(nullptr);
  std::string bytes = "[a]\n";
  for (size_t i = 2; i < kCfgMostEntries; ++i) bytes += "=\n";
  ASSERT_EQ(Edit(bytes, NewSection({}, "b"), kIni), CfgOutcome::Done);
  EXPECT_EQ(Edit(bytes, NewSection({}, "c"), kIni), CfgOutcome::TooLarge);
  EXPECT_EQ(Edit(bytes, NoSection({}, "b"), kIni), CfgOutcome::Done);
  CfgNode atLimit, beyond;
  bytes += "=\n";
  EXPECT_EQ(ReadCfgBytes(atLimit, bytes, {}, CfgMode::All, kIni, never), CfgOutcome::Done);
  bytes += "=\n";
  EXPECT_EQ(ReadCfgBytes(beyond, bytes, {}, CfgMode::All, kIni, never), CfgOutcome::TooLarge);
  EXPECT_EQ(Edit(bytes, NoSection({}, "a"), kIni), CfgOutcome::TooLarge);
  // A few bytes may be many when they are compressed.
  const CfgForm layers{.key = 7, .compress = true};
  std::string text;
  for (size_t i = 0; text.size() <= kCfgMostBytes; ++i) text += "; " + std::to_string(i) + '\n';
  ASSERT_TRUE(EncodeCfgLayers(text, 7, true, never, bytes));
  ASSERT_LT(bytes.size(), kCfgMostBytes);
  EXPECT_EQ(ReadCfgBytes(beyond, bytes, {}, CfgMode::All, layers, never), CfgOutcome::TooLarge);
}

TEST(CfgEdit, ScrambledFilesAsTheyMayBe) {
  const struct {
    std::string text;
    CfgOutcome expected;
  } cases[] = {
      {"[a]\r\nx=1", CfgOutcome::Done},
      {"[a]\nx=1\n", CfgOutcome::Done},
      {"[a]\r\nx=1\r\nfoo\r\n", CfgOutcome::Done},
      {"foo\r\n[a]\r\nx=1", CfgOutcome::Done},
      {"", CfgOutcome::Missing},
      {"foo\r\nbar\r\n", CfgOutcome::NotText},
      {"[a]\rx=1\r", CfgOutcome::NotText},
  };
  for (const auto& c : cases) {
    for (uint32_t key = 1; key < 50; ++key) {
      CTerminationLook never(nullptr);
      std::string bytes;
      ASSERT_TRUE(EncodeCfgLayers(c.text, key, key % 2 == 0, never, bytes));
      EXPECT_EQ(Edit(bytes, Set({{"a"}}, "x", "2"), {.key = key}), c.expected) << c.text << key;
      // Nobody puts a line behind the shuffle. A single line end may stay one by chance.
      if (std::count(c.text.begin(), c.text.end(), '\r') < 2) continue;
      const std::string before = bytes;
      EXPECT_EQ(Edit(bytes, NewSection({}, "n"), kIni), CfgOutcome::NotText) << c.text << key;
      EXPECT_EQ(bytes, before);
    }
  }
}

// What was never scrambled is a jumble with a key, whatever its line ends are.
TEST(CfgEdit, PlainFilesAreNotTakenForScrambledOnes) {
  const std::string texts[] = {
      "[a]\nx=1\n",
      "[net]\nport = 80\nhost = localhost\n\n[log]\nlevel = 3\n",
      "; settings\n[net]\nport=80\n",
  };
  for (const std::string& text : texts) {
    size_t taken = 0;
    for (uint32_t key = 1; key <= 1000; ++key) {
      std::string bytes = text;
      if (Edit(bytes, NewSection({}, "n"), {.key = key}) == CfgOutcome::Done) ++taken;
    }
    EXPECT_LE(taken, 20u) << text;
  }
}

TEST(CfgEdit, ScrambledAndCompressed) {
  const std::string text = "; kept\r\n[a]\r\nx = 1\r\n; " + std::string(300, '-') + "\r\n";
  for (const bool compress : {false, true}) {
    const CfgForm form{.layout = CfgLayout::Ini, .key = 4711, .compress = compress};
    CTerminationLook never(nullptr);
    std::string bytes;
    ASSERT_TRUE(EncodeCfgLayers(text, form.key, !compress, never, bytes));
    ASSERT_EQ(Edit(bytes, Set({{"a"}}, "x", "2"), form), CfgOutcome::Done);
    EXPECT_EQ(bytes.size() < text.size(), compress);
    const std::string changed = bytes;
    EXPECT_EQ(Edit(bytes, NewSection({}, "b"), {.key = 4712}), CfgOutcome::NotText);
    EXPECT_EQ(bytes, changed);
    ASSERT_TRUE(DecodeCfgLayers(bytes, form.key, never));
    EXPECT_EQ(bytes, "; kept\r\n[a]\r\nx = 2\r\n; " + std::string(300, '-') + "\r\n");
  }
}

TEST(CfgEdit, CancelAtTheNthLook) {
  std::string text = "[a]\n";
  for (int i = 0; i < 20'000; ++i) text += "key" + std::to_string(i) + " = value\n";
  for (const uint32_t key : {0u, 5u}) {
    CTerminationLook never(nullptr);
    std::string before;
    ASSERT_TRUE(EncodeCfgLayers(text, key, true, never, before));
    uint32_t look = 1;
    for (; look < 1000; ++look) {
      const test::CEventAtLook event(look);
      CTerminationLook termination(&event);
      std::string bytes = before;
      const CfgForm form{.layout = CfgLayout::Ini, .key = key};
      const CfgOutcome outcome =
          EditCfgBytes(bytes, NewKey({{"a"}}, "new", "1"), form, termination);
      EXPECT_EQ(outcome, event.WasSeen() ? CfgOutcome::Terminated : CfgOutcome::Done) << look;
      EXPECT_EQ(bytes == before, event.WasSeen()) << look;
      if (!event.WasSeen()) break;
    }
    EXPECT_GT(look, 10u);
    EXPECT_LT(look, 1000u);
  }
}

// --- Random files and changes ---

class CEditGenerator {
 public:
  explicit CEditGenerator(uint32_t seed) : m_random(seed) {}
  size_t Number(size_t count) { return m_random() % count; }
  std::string OneOf(const std::vector<std::string>& texts) { return texts[Number(texts.size())]; }
  std::string Text() {
    std::string text;
    const bool hasLoneCrs = Number(4) == 0;
    for (size_t i = Number(25); i > 0; --i) {
      text += OneOf({"", "", " ", "\t", "\t\v"});
      text += OneOf({"[a]", "[b]", "[ a]", "[]", "[]", "[x", "x=1", "x = 2", "y=", "y =z ", "=e",
                     "; c", "", "", "junk", "[a] b", "[q=]", "z=\"q\""});
      if (hasLoneCrs && Number(8) == 0) text += OneOf({"\r", "\ry=2", "\r[b]", "\r\r"});
      text += OneOf({"", "", " "}) + OneOf({"\n", "\n", "\r\n"});
    }
    if (Number(3) == 0 && !text.empty()) text.pop_back();
    return text;
  }
  CfgEdit Edit() {
    CfgEdit edit{static_cast<CfgEditKind>(Number(5)), {}, {}, OneOf({"", "v", "a=b", "]"})};
    for (size_t i = Number(3); i > 0; --i) edit.parent.push_back(Step({"a", "b", " a"}));
    const bool isSection = edit.kind == AddSection || edit.kind == DeleteSection;
    edit.target = Step(isSection ? std::vector<std::string>{"a", "b", "n"}
                                 : std::vector<std::string>{"x", "y", "n", "z"});
    return edit;
  }

 private:
  CfgStep Step(const std::vector<std::string>& names) { return {OneOf(names), Number(4) / 2}; }
  std::mt19937 m_random;
};

// The lines that are in one text and not in the other, as far as they stand in one run.
std::string RunBetween(const std::string& text, const std::string& other) {
  const size_t most = std::min(text.size(), other.size());
  size_t front = 0, back = 0;
  while (front < most && text[front] == other[front]) ++front;
  while (back < most - front && text[text.size() - 1 - back] == other[other.size() - 1 - back])
    ++back;
  return text.substr(front, text.size() - front - back);
}

// What a program sees to which every CR ends a line.
CfgSurvey SurveyWithCr(std::string text) {
  CTerminationLook never(nullptr);
  CfgSurvey survey;
  std::replace(text.begin(), text.end(), '\r', '\n');
  SurveyCfgText(text, never, survey);
  return survey;
}

// One section or key more or less, for such a program too.
size_t EntriesAfter(CfgEditKind kind, size_t before) {
  const bool isNew = kind == AddSection || kind == AddKey;
  return isNew ? before + 1 : before - (kind == DeleteKey ? 1 : 0);
}

bool MayBeRefused(const std::string& text) {
  const CfgSurvey survey = SurveyWithCr(text);
  bool hasLoneCr = false;
  for (size_t i = 0; i < text.size(); ++i)
    hasLoneCr |= text[i] == '\r' && text.substr(i + 1, 1) != "\n";
  return hasLoneCr || (survey.understood == 0 && survey.rubbish > 0);
}

// Whether what went and what came are no more than such a change takes.
bool IsLocal(CfgEditKind kind, const std::string& gone, const std::string& come) {
  const auto lineEnds =
      std::count(gone.begin(), gone.end(), '\n') + std::count(come.begin(), come.end(), '\n');
  if (kind == SetKey) return lineEnds == 0;
  if (kind == AddKey) return gone.empty() && lineEnds == 1;
  if (kind == DeleteKey) return come.empty() && lineEnds <= 1;
  return kind == AddSection ? gone.empty() : come.empty();
}

TEST(CfgEdit, RandomChangesTouchNothingElse) {
  size_t done = 0;
  for (uint32_t seed = 0; seed < 25'000; ++seed) {
    CEditGenerator random(seed);
    const std::string before = random.Text();
    const CfgForm form = seed % 2 ? kIni : kCfg;
    const CfgEdit edit = random.Edit();
    std::string after = before;
    const CfgOutcome outcome = Edit(after, edit, form);
    CfgNode expected, read;
    expected.LoadText(before, 0, form.layout);
    const CfgOutcome onTree = EditCfgTree(expected, edit, false);
    // What the tree can have the text can have too, but for sections in sections.
    const bool isFlat = form.layout == CfgLayout::Ini && edit.kind == AddSection;
    const bool isRefused = isFlat && !edit.parent.empty() && outcome == CfgOutcome::NotHeld;
    const bool isNoText = outcome == CfgOutcome::NotText && MayBeRefused(before);
    EXPECT_TRUE(outcome == onTree || isRefused || isNoText) << seed << "\n" << before;
    if (outcome != CfgOutcome::Done) {
      EXPECT_EQ(after, before);
      continue;
    }
    ++done;
    if (edit.kind != DeleteSection) {
      EXPECT_EQ(SurveyWithCr(after).entries, EntriesAfter(edit.kind, SurveyWithCr(before).entries))
          << seed << "\n"
          << before << "\n=>\n"
          << after;
    }
    read.LoadText(after, 0, form.layout);
    EXPECT_TRUE(test::IsSame(read, expected)) << seed << "\n" << before << "\n=>\n" << after;
    EXPECT_TRUE(IsLocal(edit.kind, RunBetween(before, after), RunBetween(after, before)))
        << seed << "\n"
        << before << "\n=>\n"
        << after;
  }
  EXPECT_GT(done, 2500u);
}

}  // namespace
}  // namespace kestra
