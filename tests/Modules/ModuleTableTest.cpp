// The class tree of the built-in modules against ModuleTree.txt, which was written down apart from
// the declarations. One line per module, in order: "name; arguments; item classes", with children
// in parentheses and "+" for a class that INSERT and DELETE may touch; then "! class.action;
// arguments", in the order of the tree. A line feed in a text is written as backslash and n.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "Modules/ModuleTable.h"

namespace kestra {
namespace {

std::string ArgText(const DiagParams& args) {
  std::string text;
  for (size_t i = 0; i < args.Count(); ++i) {
    const DiagParam& arg = *args.Get(i);
    text += (text.empty() ? "" : ", ") + arg.Def->Name + ":" + arg.Def->GetTypeName();
    if (arg.Def->Type == ParamType::Enum || arg.Def->Type == ParamType::Bitmask) {
      text += "[";
      for (size_t k = 0; k < arg.Def->Options.size(); ++k) {
        text += (k > 0 ? "|" : "") + arg.Def->Options[k];
      }
      text += "]";
    }
    if (arg.Def->Type == ParamType::String) {
      std::string value;
      for (char c : arg.StringValue) value += c == '\n' ? "\\n" : std::string(1, c);
      text += "=\"" + value + "\"";
    } else {
      text += "=" + std::to_string(arg.DWordValue);
    }
  }
  return text;
}

std::string TreeText(const DiagClass& diagClass) {
  std::string text;
  for (const auto& child : diagClass.ChildClasses()) {
    text += (text.empty() ? "" : " ") + child->Name + (child->CanBeAdded ? "+" : "");
    if (child->CanBeAdded != child->CanBeDeleted) text += "?";
    if (!child->ChildClasses().empty()) text += "(" + TreeText(*child) + ")";
  }
  return text;
}

void AddActions(const DiagClass& diagClass, std::vector<std::string>& lines) {
  for (size_t i = 0; diagClass.Actions && i < diagClass.Actions->Count(); ++i) {
    const DiagAction& action = *diagClass.Actions->Get(i);
    const std::string args = ArgText(*action.Args);
    lines.push_back("! " + diagClass.Name + "." + action.Name + ";" + (args.empty() ? "" : " ") +
                    args);
  }
  for (const auto& child : diagClass.ChildClasses()) AddActions(*child, lines);
}

std::vector<std::string> BuiltLines() {
  std::vector<std::string> lines;
  for (const ModuleRow& row : BuiltInModules()) {
    const Ref<DiagClass> diagClass = row.pClass->Get();
    std::string line = diagClass->Name + "; " + ArgText(*diagClass->Args);
    const std::string tree = TreeText(*diagClass);
    lines.push_back(line + (tree.empty() ? ";" : "; " + tree));
  }
  for (const ModuleRow& row : BuiltInModules()) AddActions(*row.pClass->Get(), lines);
  return lines;
}

TEST(ModuleTable, IsTheTreeThatWasWrittenDown) {
  std::ifstream file(KESTRA_MODULE_TREE);
  std::vector<std::string> expected;
  for (std::string line; std::getline(file, line);) expected.push_back(line);
  ASSERT_FALSE(expected.empty());
  const std::vector<std::string> built = BuiltLines();
  for (size_t i = 0; i < std::max(expected.size(), built.size()); ++i) {
    EXPECT_EQ(i < built.size() ? built[i] : "(none)", i < expected.size() ? expected[i] : "(none)");
  }
}

// What would make a name stand for two things in a query, or a property unreachable.
void CheckClass(const DiagClass& diagClass) {
  SCOPED_TRACE(diagClass.Name);
  ASSERT_TRUE(diagClass.pDeclaration);
  EXPECT_EQ(diagClass.pDeclaration->Get().get(), &diagClass);
  for (size_t i = 0; i < diagClass.Params->Count(); ++i) {
    const DiagParamDef& def = *diagClass.Params->Get(i);
    EXPECT_EQ(diagClass.Params->Find(def.Name, true), &def) << def.Name << " is declared twice";
    const bool isChoice = def.Type == ParamType::Enum || def.Type == ParamType::Bitmask;
    EXPECT_TRUE(isChoice ? !def.Options.empty()
                         : def.Options.size() <= (def.Type == ParamType::Dword ? 1u : 0u))
        << def.Name;
    EXPECT_TRUE(def.Type != ParamType::Bitmask || def.Options.size() <= 32) << def.Name;
    EXPECT_NE(def.Name.front(), '_') << def.Name;
  }
  for (size_t i = 0; i < diagClass.Args->Count(); ++i) {
    EXPECT_TRUE(diagClass.Args->Get(i)->IsValid()) << diagClass.Args->Get(i)->Def->Name;
  }
  for (const auto& child : diagClass.ChildClasses()) CheckClass(*child);
}

TEST(ModuleTable, EveryDeclarationHoldsTogether) {
  for (const ModuleRow& row : BuiltInModules()) {
    CheckClass(*row.pClass->Get());
    EXPECT_STRNE(row.pClass->description, "") << row.pClass->name;
  }
}

// What a user reads in the reference of a built class must be there.
TEST(ModuleTable, BuiltClassesSayWhatTheyShow) {
  for (const char* name :
       {"Process", "File", "Directory", "FileLine", "RegistryKey", "RegistryValue"}) {
    for (const ModuleRow& row : BuiltInModules()) {
      const Ref<DiagClass> module = row.pClass->Get();
      const DiagClass* pClass = FindClass(module.get(), name);
      if (!pClass) continue;
      EXPECT_FALSE(pClass->pDeclaration->examples.empty()) << name;
      for (size_t i = 0; i < pClass->Params->Count(); ++i) {
        EXPECT_FALSE(pClass->Params->Get(i)->Description.empty()) << pClass->Params->Get(i)->Name;
      }
    }
  }
}

struct EnumCase {
  const char* module;
  const char* className;
  const char* property;
  uint32_t number;
  const char* text;
};

// The place of an option is a number that somebody else gave it: one slip of a "|" moves all that
// follow. One option near the end of each long list, against the public document that numbers it.
TEST(ModuleTable, OptionsStandAtTheirNumbers) {
  const EnumCase cases[] = {
      {"Registry", "RegistryValue", "Type", 7, "MultiSZ"},  // winreg: REG_MULTI_SZ
      {"Registry", "RegistryValue", "Type", 10, "ResourceRequirementsList"},
      {"Services", "Service", "State", 7, "Paused"},                     // SERVICE_PAUSED
      {"Services", "Service", "ServiceType", 8, "INTERACTIVE_PROCESS"},  // bit of 0x100
      {"DMI", "MemoryDevice", "Type", 0x12, "DDR"},                      // DSP0134 7.18.2
      {"DMI", "SystemEnclosure", "Type", 0x18, "SealedCase"},            // DSP0134 7.4.1
      {"DMI", "PortConnector", "InternalType", 0x21, "1394"},            // DSP0134 7.9.2
      {"DMI", "BIOS", "Characteristics1", 13, "VLVESA"},                 // bit, DSP0134 7.1.1
      {"DNSResolve", "A", "Type", 28, "AAAA"},                           // IANA: AAAA
      {"DNSResolve", "A", "Type", 41, "OPT"},
      {"DNSResolve", "A", "Type", 42, "UNK2A"},
      {"DNSResolve", "A", "Type", 103, "UNSPEC"},
      {"DNSResolve", "A", "Type", 104, "UNK68"},
      {"DNSResolve", "A", "Type", 252, "AXFR"},
      {"DNSResolve", "A", "Type", 255, "ANY"},
  };
  for (const EnumCase& c : cases) {
    for (const ModuleRow& row : BuiltInModules()) {
      if (std::string(row.pClass->name) != c.module) continue;
      const Ref<DiagClass> module = row.pClass->Get();
      const DiagClass* pClass = FindClass(module.get(), c.className);
      ASSERT_TRUE(pClass) << c.className;
      const DiagParamDef* pDef = pClass->Params->Find(c.property, false);
      ASSERT_TRUE(pDef) << c.property;
      EXPECT_EQ(pDef->GetOptionText(c.number), c.text) << c.className << '.' << c.property;
    }
  }
}

}  // namespace
}  // namespace kestra
