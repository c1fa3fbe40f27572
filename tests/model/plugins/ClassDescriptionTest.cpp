#include <gtest/gtest.h>

#include "model/dump/Dump.h"
#include "model/plugins/ClassDescription.h"

namespace kestra::test {
namespace {

// The class as its type dump without line ends; "none" for a description that does not fit.
std::string Describe(const std::string& text) {
  CfgNode node;
  if (!node.LoadText(text, kCfgQuotes, CfgLayout::Cfg)) return "unread";
  const Ref<DiagClass> diagClass = ClassFromDescription(ModuleSection(node, "M"));
  if (!diagClass) return "none";
  std::string dump;
  DumpType(*diagClass, dump);
  std::erase(dump, '\r');
  std::erase(dump, '\n');
  return dump;
}

TEST(ClassDescription, Table) {
  const struct {
    const char* pText;
    const char* pClass;
  } kCases[] = {
      {"[M]\n[]", "<I n=\"M\"></I>"},
      {"[m]\n_CanBeAdded=1\n[]", "<I n=\"m\" canbeadded=\"yes\"></I>"},
      {"_CanBeDeleted=1", "<I n=\"M\" canbedeleted=\"yes\"></I>"},
      {"_CanBeDeleted=2\n_CanBeAdded=yes", "<I n=\"M\"></I>"},
      {"[_Params]\n[P]\nType=dWORD\n_CanBeChanged=1\n[_Ops]\n0=KB\n[]\n[]\n[]",
       "<I n=\"M\" canbechanged=\"yes\"><P n=\"P\" t=\"Dword\" canbechanged=\"yes\">"
       "<O i=\"0\">KB</O></P></I>"},
      {"[_Params]\n[P]\nType=Enum\n[_Ops]\n1=b\n0=\n[]\n[]\n[]",
       "<I n=\"M\"><P n=\"P\" t=\"Enum\"><O i=\"0\"></O><O i=\"1\">b</O></P></I>"},
      {"[_Args]\n[A]\nType=String\nDefault=\n[]\n[B]\nType=Bitmask\nDefault=-1\n[]\n[]",
       "<I n=\"M\"><A n=\"A\" t=\"String\" d=\"\"></A><A n=\"B\" t=\"Bitmask\" d=\"\"></A></I>"},
      {"[_Actions]\n[_Hidden]\n[]\n[Go]\n[]\n[]", "<I n=\"M\"><C n=\"Go\"></C></I>"},
      {"[C]\n[D]\n[]\n[]\n[E]\n[]", "<I n=\"M\"><I n=\"C\"><I n=\"D\"></I></I><I n=\"E\"></I></I>"},
      // Sections that are not closed end with the text.
      {"[M]\n[C]", "<I n=\"M\"><I n=\"C\"></I></I>"},
      {"", "<I n=\"M\"></I>"},
      // What does not fit.
      {"[_Params]\n[P]\n[]\n[]", "none"},
      {"[_Params]\n[P]\nType=Unknown\n[]\n[]", "none"},
      {"[_Params]\n[P]\nType=Enum\n[_Ops]\n0=a\n2=c\n[]\n[]\n[]", "none"},
      {"[_Params]\n[P]\nType=Enum\n[_Ops]\n0=\" \"\n[]\n[]\n[]", "none"},
      {"[_Args]\n[A]\nType=Dword\n[]\n[]", "none"},
      {"[_Args]\n[A]\nType=Dword\nDefault=-2\n[]\n[]", "none"},
      {"[_Args]\n[A]\nType=String\n[]\n[]", "none"},
      {"[_Args]\n[A]\nType=String\nDefault=\" \"\n[]\n[]", "none"},
      {"[_Actions]\n[Go]\n[_Args]\n[A]\nType=Dword\n[]\n[]\n[]\n[]", "none"},
      {"[C]\n[_Params]\n[P]\nType=x\n[]\n[]\n[]", "none"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Describe(c.pText), c.pClass) << c.pText;
}

TEST(ClassDescription, DeepNestingIsRefused) {
  std::string text;
  for (int i = 0; i < 100; ++i) text += "[C]\n";
  EXPECT_NE(Describe(text), "none");
  for (int i = 0; i < 100'000; ++i) text += "[C]\n";
  EXPECT_EQ(Describe(text), "none");
}

}  // namespace
}  // namespace kestra::test
