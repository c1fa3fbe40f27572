#include "cli/shell/commands/ClassText.h"

#include <algorithm>

#include "cli/shell/TextTable.h"

namespace kestra::cli {
namespace {

const char* TypeName(int32_t type) {
  switch (type) {
    case KESTRA_TYPE_STRING:
      return "text";
    case KESTRA_TYPE_DWORD:
      return "number";
    case KESTRA_TYPE_ENUM:
      return "one of";
    case KESTRA_TYPE_BITMASK:
      return "flags";
    case KESTRA_TYPE_DATIME:
      return "date";
    case KESTRA_TYPE_VERSION:
      return "version";
    default:
      return "";
  }
}

std::string TypeText(int32_t type, const std::string& unit) {
  return unit.empty() ? TypeName(type) : std::string(TypeName(type)) + ", " + unit;
}

// "Meaning: 'one', 'two'". Options are numbered by their place, which may be empty.
std::string Meaning(const std::string& description, const std::string& options) {
  std::string text = description;
  bool isFirst = true;
  for (size_t start = 0; start < options.size();) {
    const size_t end = std::min(options.find('|', start), options.size());
    if (end > start) {
      text += isFirst ? (text.empty() ? "" : ": ") : ", ";
      text += "'" + options.substr(start, end - start) + "'";
      isFirst = false;
    }
    start = end + 1;
  }
  return text;
}

void AppendSection(std::string& text, const std::string& heading, const CTextTable& table,
                   size_t width) {
  if (!table.IsEmpty()) text += "\n" + heading + "\n" + table.Text(width);
}

CTextTable Properties(const CClassHandle& diagClass, bool& canAnyBeChanged) {
  CTextTable table;
  const int32_t count = Ask<int32_t>(kestra_class_property_count, diagClass.get());
  for (int32_t i = 0; i < count; ++i) {
    const char *name = "", *unit = "", *options = "", *description = "";
    int32_t type = 0, canBeChanged = 0;
    Check(kestra_class_property(diagClass.get(), i, &name, &type, &unit, &options, &canBeChanged,
                                &description));
    canAnyBeChanged = canAnyBeChanged || canBeChanged != 0;
    table.AddLine({std::string(canBeChanged != 0 ? "* " : "  ") + name, TypeText(type, unit),
                   Meaning(description, options)});
  }
  return table;
}

struct Argument {
  const char *name = "", *unit = "", *options = "", *defaultText = "", *description = "";
  int32_t type = 0;
};

void AddArgument(CTextTable& table, const Argument& argument, const char* indent) {
  table.AddLine({indent + std::string(argument.name) + " = " + argument.defaultText,
                 TypeText(argument.type, argument.unit),
                 Meaning(argument.description, argument.options)});
}

CTextTable Arguments(const CClassHandle& diagClass) {
  CTextTable table;
  const int32_t count = Ask<int32_t>(kestra_class_argument_count, diagClass.get());
  for (int32_t i = 0; i < count; ++i) {
    Argument argument;
    Check(kestra_class_argument(diagClass.get(), i, &argument.name, &argument.type, &argument.unit,
                                &argument.options, &argument.defaultText, &argument.description));
    AddArgument(table, argument, "  ");
  }
  return table;
}

CTextTable Actions(const CClassHandle& diagClass) {
  CTextTable table;
  const int32_t count = Ask<int32_t>(kestra_class_action_count, diagClass.get());
  for (int32_t i = 0; i < count; ++i) {
    const char *name = "", *description = "";
    int32_t arguments = 0;
    Check(kestra_class_action(diagClass.get(), i, &name, &description, &arguments));
    table.AddLine({std::string("  ") + name, "", description});
    for (int32_t j = 0; j < arguments; ++j) {
      Argument argument;
      Check(kestra_class_action_argument(diagClass.get(), i, j, &argument.name, &argument.type,
                                         &argument.unit, &argument.options, &argument.defaultText,
                                         &argument.description));
      AddArgument(table, argument, "    ");
    }
  }
  return table;
}

void AddChildren(const CClassHandle& diagClass, const std::string& module,
                 const std::string& indent, CTextTable& table) {
  for (const CClassHandle& child : ChildrenOf(diagClass)) {
    table.AddLine({indent + module + "." + NameOf(child), FirstSentence(DescriptionOf(child))});
    AddChildren(child, module, indent + "  ", table);
  }
}

std::string WhatQueriesMayDo(const CClassHandle& diagClass) {
  const bool canAdd = Is(kestra_class_can_be_added, diagClass.get());
  const bool canDelete = Is(kestra_class_can_be_deleted, diagClass.get());
  if (canAdd && canDelete) return "INSERT makes such items, and DELETE removes them.\n";
  if (canAdd) return "INSERT makes such items.\n";
  return canDelete ? "DELETE removes such items.\n" : "";
}

}  // namespace

std::string DescribeClass(const CClassHandle& diagClass, const std::string& path, size_t width) {
  CTextTable children;
  AddChildren(diagClass, path.substr(0, path.find('.')), "  ", children);
  bool canAnyBeChanged = false;
  const CTextTable properties = Properties(diagClass, canAnyBeChanged);
  std::string text = path;
  const std::string description = DescriptionOf(diagClass);
  text += (description.empty() ? "" : ": " + description) + "\n" + WhatQueriesMayDo(diagClass);
  const std::string changed = canAnyBeChanged ? " (*: UPDATE may change it)" : "";
  AppendSection(text, "Arguments", Arguments(diagClass), width);
  AppendSection(text, "Properties" + changed, properties, width);
  AppendSection(text, "Actions", Actions(diagClass), width);
  AppendSection(text, "Classes below", children, width);
  return text;
}

}  // namespace kestra::cli
