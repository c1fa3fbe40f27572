// What can be done with a class: arguments, actions, adding and deleting, and queries that show it.
#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"

using namespace kestra;

namespace {

constexpr int32_t kOfTheClass = -1;  // in place of an action's number

std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') quoted += c;
    quoted += c;
  }
  return quoted += '\'';
}

std::string DefaultText(const DiagParam& argument) {
  const DiagParamDef& def = *argument.Def;
  const std::string text = argument.GetText();
  // A number that no option stands for is written as it is.
  const bool isNumber = def.Type == ParamType::Dword || (def.HoldsNumber() && text.empty());
  return isNumber ? std::to_string(argument.DWordValue) : Quoted(text);
}

struct ArgumentPlaces {
  const char** name;
  int32_t* type;
  const char** unit;
  const char** options;
  const char** defaultText;
  const char** description;
};

kestra_status TellArgument(kestra_class& handle, int32_t action, const DiagParams& arguments,
                           int32_t number, const ArgumentPlaces& places) {
  if (!IsInside(number, arguments.Count())) return KESTRA_E_INVALIDARG;
  const DiagParam& argument = *arguments.Get(static_cast<size_t>(number));
  const DiagParamDef& def = *argument.Def;
  const auto [entry, isNew] = handle.arguments.try_emplace({action, number});
  if (isNew) entry->second = {JoinedOptions(def), DefaultText(argument)};
  Tell(places.name, def.Name.c_str());
  Tell(places.type, static_cast<int32_t>(def.Type));
  Tell(places.unit, def.GetUnit().c_str());
  Tell(places.options, entry->second.options.c_str());
  Tell(places.defaultText, entry->second.defaultText.c_str());
  Tell(places.description, def.Description.c_str());
  return KESTRA_OK;
}

size_t ActionCount(const DiagClass& diagClass) {
  return diagClass.Actions ? diagClass.Actions->Count() : 0;
}

// Null for a number that is outside.
const DiagAction* ActionOf(const DiagClass& diagClass, int32_t number) {
  if (!IsInside(number, ActionCount(diagClass))) return nullptr;
  return diagClass.Actions->Get(static_cast<size_t>(number));
}

std::span<const char* const> ExamplesOf(const DiagClass& diagClass) {
  if (!diagClass.pDeclaration) return {};
  return diagClass.pDeclaration->examples;
}

}  // namespace

kestra_status kestra_class_argument_count(const kestra_class* diag_class, int32_t* count) {
  return Barrier(diag_class, count)([&] {
    *count = static_cast<int32_t>(diag_class->diagClass->Args->Count());
    return KESTRA_OK;
  });
}

kestra_status kestra_class_argument(kestra_class* diag_class, int32_t number, const char** name,
                                    int32_t* type, const char** unit, const char** options,
                                    const char** default_text, const char** description) {
  return Barrier(diag_class)([&] {
    return TellArgument(*diag_class, kOfTheClass, *diag_class->diagClass->Args, number,
                        {name, type, unit, options, default_text, description});
  });
}

kestra_status kestra_class_action_count(const kestra_class* diag_class, int32_t* count) {
  return Barrier(diag_class, count)([&] {
    *count = static_cast<int32_t>(ActionCount(*diag_class->diagClass));
    return KESTRA_OK;
  });
}

kestra_status kestra_class_action(const kestra_class* diag_class, int32_t number, const char** name,
                                  const char** description, int32_t* argument_count) {
  return Barrier(diag_class)([&] {
    const DiagAction* pAction = ActionOf(*diag_class->diagClass, number);
    if (!pAction) return KESTRA_E_INVALIDARG;
    Tell(name, pAction->Name.c_str());
    Tell(description, pAction->Description.c_str());
    Tell(argument_count, static_cast<int32_t>(pAction->Args->Count()));
    return KESTRA_OK;
  });
}

kestra_status kestra_class_action_argument(kestra_class* diag_class, int32_t action, int32_t number,
                                           const char** name, int32_t* type, const char** unit,
                                           const char** options, const char** default_text,
                                           const char** description) {
  return Barrier(diag_class)([&] {
    const DiagAction* pAction = ActionOf(*diag_class->diagClass, action);
    if (!pAction) return KESTRA_E_INVALIDARG;
    return TellArgument(*diag_class, action, *pAction->Args, number,
                        {name, type, unit, options, default_text, description});
  });
}

kestra_status kestra_class_can_be_added(const kestra_class* diag_class, int32_t* can) {
  return Barrier(diag_class, can)([&] {
    *can = diag_class->diagClass->CanBeAdded ? 1 : 0;
    return KESTRA_OK;
  });
}

kestra_status kestra_class_can_be_deleted(const kestra_class* diag_class, int32_t* can) {
  return Barrier(diag_class, can)([&] {
    *can = diag_class->diagClass->CanBeDeleted ? 1 : 0;
    return KESTRA_OK;
  });
}

kestra_status kestra_class_example_count(const kestra_class* diag_class, int32_t* count) {
  return Barrier(diag_class, count)([&] {
    *count = static_cast<int32_t>(ExamplesOf(*diag_class->diagClass).size());
    return KESTRA_OK;
  });
}

kestra_status kestra_class_example(const kestra_class* diag_class, int32_t number,
                                   const char** query) {
  return Barrier(diag_class, query)([&] {
    const auto examples = ExamplesOf(*diag_class->diagClass);
    if (!IsInside(number, examples.size())) return KESTRA_E_INVALIDARG;
    *query = examples[static_cast<size_t>(number)];
    return KESTRA_OK;
  });
}
