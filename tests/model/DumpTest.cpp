// The five item dumps and the type dump, byte for byte.
#include <gtest/gtest.h>

#include <string>

#include "model/classes/Module.h"
#include "model/dump/Dump.h"

namespace kestra::test {
namespace {

constexpr ParamDecl kThingParams[] = {
    {.name = "Text", .type = ParamType::String},
    {.name = "Size", .type = ParamType::Dword, .text = "KB", .canBeChanged = true},
    {.name = "Count", .type = ParamType::Dword},
    {.name = "Kind", .type = ParamType::Enum, .text = "No|Yes"},
    {.name = "Bits", .type = ParamType::Bitmask, .text = "A||C"},
    {.name = "Born", .type = ParamType::Datime},
    {.name = "Release", .type = ParamType::Version},
};
constexpr ArgDecl kArgs[] = {
    {.name = "Levels", .type = ParamType::Dword, .defaultNumber = 4294967295},
    {.name = "Mode", .type = ParamType::Enum, .text = "Cfg|Ini", .defaultNumber = 1},
    {.name = "Path", .type = ParamType::String, .defaultText = "*"},
};
constexpr ActionDecl kThingActions[] = {{.name = "Go", .args = kArgs}, {.name = "Stop"}};
constinit const ClassDecl kLeaf{.name = "Leaf", .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kThingChildren[] = {&kLeaf};
constinit const ClassDecl kThing{.name = "Thing",
                                 .params = kThingParams,
                                 .children = kThingChildren,
                                 .actions = kThingActions,
                                 .args = kArgs};

Ref<CVDiagItem> MakeThing() {
  auto thing = MakeRef<CFilledItem>(kThing.Get());
  thing->Params.SetText("Text", "a<b> & \"c\" 'd'\t\x07\n\xC3\xBC\xFF");
  thing->Params.SetNumber("Size", 12);
  thing->Params.SetNumber("Count", 4294967295);
  thing->Params.SetNumber("Kind", 1);
  thing->Params.SetNumber("Bits", 5);
  thing->Params.SetNumber("Born", 1136073600);
  thing->Params.SetText("Release", "1.2b");
  thing->Children.Add(MakeRef<CFilledItem>(kLeaf.Get()), false);
  return thing;
}

std::string DumpOf(CVDiagItem& item, int format) {
  std::string out;
  QueryMessage message;
  Dump(item, out, message, static_cast<DumpFormat>(format));
  return out;
}

TEST(Dump, WritesEachForm) {
  const char* const kTexts[] = {
      "<I n=\"Thing\">\r\n"
      "<P n=\"Text\">a&lt;b&gt; &amp; &quot;c&quot; 'd'\t&#7;\n\xC3\xBC&#255;</P>\r\n"
      "<P n=\"Size\">12 KB</P>\r\n"
      "<P n=\"Count\">4294967295</P>\r\n"
      "<P n=\"Kind\">Yes</P>\r\n"
      "<P n=\"Bits\">A|C</P>\r\n"
      "<P n=\"Born\">2006-01-01 00:00:00</P>\r\n"
      "<P n=\"Release\">1.2b</P>\r\n"
      "<I n=\"Leaf\">\r\n</I>\r\n"
      "</I>\r\n",
      "<I n=\"Thing\">\r\n"
      "<P n=\"Text\">a&lt;b&gt; &amp; &quot;c&quot; 'd'\t&#7;\n\xC3\xBC&#255;</P>\r\n"
      "<P n=\"Size\">12</P>\r\n"
      "<P n=\"Count\">-1</P>\r\n"
      "<P n=\"Kind\">1</P>\r\n"
      "<P n=\"Bits\">5</P>\r\n"
      "<P n=\"Born\">1136073600</P>\r\n"
      "<P n=\"Release\">1.2b</P>\r\n"
      "<I n=\"Leaf\">\r\n</I>\r\n"
      "</I>\r\n",
      "0\tTHING\t, @D$TEXT='a<b> & \"c\" ''d'' \x07 \xC3\xBC\xFF', @D$SIZE=12, @D$COUNT=-1, "
      "@D$KIND=1, @D$BITS=5, @D$BORN='2006-01-01 00:00:00', @D$RELEASE='1.2b'\n"
      "1\tLEAF\t\n",
      "0\tTHING\t, D$TEXT=>'a<b> & \"c\" ''d'' \x07 \xC3\xBC\xFF', D$SIZE=>12, D$COUNT=>-1, "
      "D$KIND=>1, D$BITS=>5, D$BORN=>'2006-01-01 00:00:00', D$RELEASE=>'1.2b'\n"
      "1\tLEAF\t\n",
      "[Thing]\r\n"
      "Text=a<b> & \"c\" 'd'\t\x07\n\xC3\xBC\xFF\r\n"
      "Size=12\r\nCount=-1\r\nKind=1\r\nBits=5\r\nBorn=1136073600\r\nRelease=1.2b\r\n"
      "[Leaf]\r\n[]\r\n"
      "[]\r\n",
  };
  const Ref<CVDiagItem> thing = MakeThing();
  for (int format = 0; format < 5; ++format) EXPECT_EQ(DumpOf(*thing, format), kTexts[format]);
  EXPECT_EQ(DumpOf(*thing, -1), "");
  EXPECT_EQ(DumpOf(*thing, 5), "");
}

TEST(Dump, CutsLongTextsInLinesBeforeItDoublesQuotes) {
  const auto item = MakeRef<CFilledItem>(kThing.Get());
  item->Params.SetText("Text", std::string(300, '\''));
  EXPECT_EQ(DumpOf(*item, 2), "0\tTHING\t, @D$TEXT='" + std::string(510, '\'') + "'\n");
}

TEST(Dump, ThatIsCutOffLeavesNoHalfDocument) {
  const Ref<CVDiagItem> thing = MakeThing();
  auto event = MakeRef<os::CEvent>();
  event->Set();
  for (int format = 0; format < 5; ++format) {
    QueryMessage message(event, false);
    std::string out = "before";
    Dump(*thing, out, message, static_cast<DumpFormat>(format));
    const bool isLines = format == 2 || format == 3;
    EXPECT_EQ(out, isLines ? "before" : "") << format;
    EXPECT_EQ(message.SystemError, kErrorCancelled);
  }
}

TEST(Dump, IsAsDeepAsTheTree) {
  Ref<CVDiagItem> top = MakeRef<CFilledItem>(kLeaf.Get());
  CVDiagItem* pDeepest = top.get();
  for (int i = 0; i < 200000; ++i) {
    pDeepest = pDeepest->Children.Add(MakeRef<CFilledItem>(kLeaf.Get()), false);
  }
  EXPECT_EQ(DumpOf(*top, 4).size(), 200001u * (sizeof "[Leaf]\r\n[]\r\n" - 1));
}

TEST(DumpType, WritesEverythingThatAClassDeclares) {
  const std::string options = "<O i=\"0\">Cfg</O>\r\n<O i=\"1\">Ini</O>\r\n";
  const auto args = [&](const std::string& tag) {
    return "<" + tag + " n=\"Levels\" t=\"Dword\" d=\"4294967295\">\r\n</" + tag + ">\r\n<" + tag +
           " n=\"Mode\" t=\"Enum\" d=\"Ini\">\r\n" + options + "</" + tag + ">\r\n<" + tag +
           " n=\"Path\" t=\"String\" d=\"*\">\r\n</" + tag + ">\r\n";
  };
  std::string out;
  DumpType(*kThing.Get(), out);
  EXPECT_EQ(out,
            "<I n=\"Thing\" canbechanged=\"yes\">\r\n<C n=\"Go\">\r\n" + args("CA") +
                "</C><C n=\"Stop\">\r\n</C>" + args("A") +
                "<P n=\"Text\" t=\"String\">\r\n</P>\r\n"
                "<P n=\"Size\" t=\"Dword\" canbechanged=\"yes\">\r\n<O i=\"0\">KB</O>\r\n</P>\r\n"
                "<P n=\"Count\" t=\"Dword\">\r\n</P>\r\n"
                "<P n=\"Kind\" t=\"Enum\">\r\n<O i=\"0\">No</O>\r\n<O i=\"1\">Yes</O>\r\n</P>\r\n"
                "<P n=\"Bits\" t=\"Bitmask\">\r\n<O i=\"0\">A</O>\r\n<O i=\"1\"></O>\r\n"
                "<O i=\"2\">C</O>\r\n</P>\r\n"
                "<P n=\"Born\" t=\"Datime\">\r\n</P>\r\n"
                "<P n=\"Release\" t=\"Version\">\r\n</P>\r\n"
                "<I n=\"Leaf\" canbeadded=\"yes\" canbedeleted=\"yes\">\r\n</I>\r\n</I>\r\n");
}

}  // namespace
}  // namespace kestra::test
