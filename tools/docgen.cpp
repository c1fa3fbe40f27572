// Writes the reference of the modules, docs/modules/, out of their declarations.
//
//   kestra_docgen DIRECTORY          writes the pages
//   kestra_docgen --check DIRECTORY  changes nothing; names each page that is not up to date
//
// Exit status: 0 done, or all pages are up to date; 1 some are not; 2 wrong usage or no writing.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

#include "Modules/ModuleTable.h"

namespace kestra {
namespace {

namespace fs = std::filesystem;
using Pages = std::map<std::string, std::string>;  // file name to content

// Text inside a cell of a table.
std::string Cell(std::string_view text) {
  std::string cell;
  for (char c : text) {
    if (c == '|') cell += '\\';
    cell += c;
  }
  return cell;
}

std::string Code(std::string_view text) {
  std::string code;
  for (char c : text) {
    if (c == '\n') {
      code += "\\n";
    } else {
      code += c;
    }
  }
  return code.empty() ? "empty" : "`" + Cell(code) + "`";
}

// "KB"; "`16 bits` (0), `32 bits` (1)"; for a bitmask the values of the bits.
std::string UnitOrOptions(const DiagParamDef& def) {
  if (def.Type == ParamType::Dword) return def.GetUnit();
  std::string text;
  for (size_t i = 0; i < def.Options.size(); ++i) {
    if (def.Options[i].empty()) continue;
    if (!text.empty()) text += ", ";
    const size_t number = def.Type == ParamType::Bitmask ? size_t{1} << i : i;
    text += Code(def.Options[i]) + " (" + std::to_string(number) + ")";
  }
  return text;
}

std::string DefaultText(const DiagParam& arg) {
  const bool isText = arg.Def->Type == ParamType::String || arg.Def->Type == ParamType::Version;
  return isText ? Code(arg.StringValue) : std::to_string(arg.DWordValue);
}

std::string ArgTable(const DiagParams& args) {
  std::string text =
      "| argument | type | default | unit or options | meaning |\n|---|---|---|---|---|\n";
  for (size_t i = 0; i < args.Count(); ++i) {
    const DiagParam& arg = *args.Get(i);
    text += "| `" + arg.Def->Name + "` | " + arg.Def->GetTypeName() + " | " + DefaultText(arg) +
            " | " + UnitOrOptions(*arg.Def) + " | " + Cell(arg.Def->Description) + " |\n";
  }
  return text;
}

std::string PropertyTable(const DiagParamDefs& defs) {
  std::string text =
      "| property | type | unit or options | can be changed | meaning |\n|---|---|---|---|---|\n";
  for (size_t i = 0; i < defs.Count(); ++i) {
    const DiagParamDef& def = *defs.Get(i);
    text += "| `" + def.Name + "` | " + def.GetTypeName() + " | " + UnitOrOptions(def) + " | " +
            (def.CanBeChanged ? "yes" : "") + " | " + Cell(def.Description) + " |\n";
  }
  return text;
}

std::string ActionText(const DiagClass& diagClass) {
  std::string text;
  for (size_t i = 0; diagClass.Actions && i < diagClass.Actions->Count(); ++i) {
    const DiagAction& action = *diagClass.Actions->Get(i);
    text += "\nAction `" + action.Name + "`" + (action.Description.empty() ? "" : ": ") +
            action.Description + "\n";
    if (action.Args->Count() > 0) text += "\n" + ArgTable(*action.Args);
  }
  return text;
}

std::string Examples(const DiagClass& diagClass) {
  std::string text;
  for (const char* query : diagClass.pDeclaration->examples) {
    text += text.empty() ? "\nExamples:\n\n```sql\n" : "";
    text += std::string(query) + "\n";
  }
  return text.empty() ? text : text + "```\n";
}

// The sections of the classes below a module; path is that of the class above.
void AddClasses(const DiagClass& parent, const std::string& path, std::string& text) {
  for (const auto& child : parent.ChildClasses()) {
    const std::string childPath = path + " > `" + child->Name + "`";
    text += "\n## " + childPath + "\n\n" + child->pDeclaration->description + "\n";
    if (child->CanBeAdded) text += "\nActive: its class may be named by INSERT and DELETE.\n";
    if (child->Params->Count() > 0) text += "\n" + PropertyTable(*child->Params);
    text += ActionText(*child) + Examples(*child);
    AddClasses(*child, childPath, text);
  }
}

bool HasExamples(const ClassDecl& decl) {
  if (!decl.examples.empty()) return true;
  for (const ClassDecl* pChild : decl.children) {
    if (HasExamples(*pChild)) return true;
  }
  return false;
}

constexpr const char* kGenerated =
    "<!-- Written by kestra_docgen out of the declarations; changes here are lost. -->\n";

std::string ModulePage(const ModuleRow& row) {
  const Ref<DiagClass> diagClass = row.pClass->Get();
  std::string text = kGenerated;
  text += "# " + diagClass->Name + "\n\n" + row.pClass->description + "\n";
  if (!row.create) {
    text += "\nThe module itself is declared, not yet built: it fills to nothing.\n";
  }
  if (diagClass->Args->Count() > 0) text += "\n" + ArgTable(*diagClass->Args);
  if (diagClass->Params->Count() > 0) text += "\n" + PropertyTable(*diagClass->Params);
  text += ActionText(*diagClass) + Examples(*diagClass);
  AddClasses(*diagClass, "`" + diagClass->Name + "`", text);
  return text;
}

Pages MakePages(ModuleTable table) {
  Pages pages;
  std::string index = kGenerated;
  index += "# Modules\n\n| module | state | what it shows |\n|---|---|---|\n";
  for (const ModuleRow& row : table) {
    const std::string name = row.pClass->name;
    const bool hasPage = row.create || HasExamples(*row.pClass);
    index += "| " + (hasPage ? "[" + name + "](" + name + ".md)" : name) + " | " +
             (row.create ? "built" : "declared, not yet built") + " | " +
             Cell(row.pClass->description) + " |\n";
    if (hasPage) pages[name + ".md"] = ModulePage(row);
  }
  pages["README.md"] = index;
  return pages;
}

bool Write(const Pages& pages, const fs::path& directory) {
  std::error_code error;
  fs::create_directories(directory, error);
  for (const auto& [name, content] : pages) {
    std::ofstream file(directory / name, std::ios::binary);
    file << content;
    if (!file.flush()) {
      std::cerr << "kestra_docgen: cannot write " << (directory / name).string() << '\n';
      return false;
    }
  }
  return true;
}

// Names on standard error what differs, is missing, or has no module any more.
bool Check(const Pages& pages, const fs::path& directory) {
  bool isCurrent = true;
  const auto complain = [&](const std::string& name) {
    std::cerr << "kestra_docgen: not up to date: " << (directory / name).string() << '\n';
    isCurrent = false;
  };
  for (const auto& [name, content] : pages) {
    std::ifstream file(directory / name, std::ios::binary);
    const std::string found{std::istreambuf_iterator<char>(file), {}};
    if (!file || found != content) complain(name);
  }
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(directory, error)) {
    const std::string name = entry.path().filename().string();
    if (!pages.contains(name)) complain(name);
  }
  return isCurrent;
}

}  // namespace
}  // namespace kestra

int main(int argc, char** argv) {
  const bool isCheck = argc == 3 && std::string_view(argv[1]) == "--check";
  if (argc != 2 && !isCheck) {
    std::cerr << "usage: kestra_docgen [--check] DIRECTORY\n";
    return 2;
  }
  const kestra::Pages pages = kestra::MakePages(kestra::BuiltInModules());
  if (isCheck) return kestra::Check(pages, argv[2]) ? 0 : 1;
  return kestra::Write(pages, argv[1]) ? 0 : 2;
}
