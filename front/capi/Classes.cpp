#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"

using namespace kestra;

namespace {

const char* OptionsOf(const kestra_class& handle, size_t index) {
  std::string& joined = handle.options[index];
  if (joined.empty()) joined = JoinedOptions(*handle.diagClass->Params->Get(index));
  return joined.c_str();
}

}  // namespace

std::string kestra::JoinedOptions(const DiagParamDef& def) {
  std::string joined;
  if (def.Type != ParamType::Enum && def.Type != ParamType::Bitmask) return joined;
  for (const std::string& option : def.Options) joined.append(option).append(1, '|');
  if (!joined.empty()) joined.pop_back();
  return joined;
}

kestra_status kestra_session_root_class(kestra_session* session, kestra_class** root_class) {
  return Barrier(session, root_class)([&] {
    Ref<DiagClass> root = session->session.RootClass();
    return root ? GiveHandle(root_class, std::move(root)) : KESTRA_E_FAIL;
  });
}

kestra_status kestra_class_release(kestra_class* diag_class) {
  return ReleaseHandle(diag_class);
}

kestra_status kestra_class_is_same(const kestra_class* diag_class, const kestra_class* other,
                                   int32_t* same) {
  return Barrier(diag_class, other, same)([&] {
    *same = diag_class->diagClass == other->diagClass ? 1 : 0;
    return KESTRA_OK;
  });
}

kestra_status kestra_class_name(const kestra_class* diag_class, const char** name) {
  return Barrier(diag_class, name)([&] {
    *name = diag_class->diagClass->Name.c_str();
    return KESTRA_OK;
  });
}

kestra_status kestra_class_description(const kestra_class* diag_class, const char** text) {
  return Barrier(diag_class, text)([&] {
    const ClassDecl* pDeclaration = diag_class->diagClass->pDeclaration;
    *text = pDeclaration ? pDeclaration->description : "";
    return KESTRA_OK;
  });
}

kestra_status kestra_class_child_count(const kestra_class* diag_class, int32_t* count) {
  return Barrier(diag_class, count)([&] {
    *count = static_cast<int32_t>(diag_class->diagClass->ChildClasses().size());
    return KESTRA_OK;
  });
}

kestra_status kestra_class_child(const kestra_class* diag_class, int32_t number,
                                 kestra_class** child) {
  return Barrier(diag_class, child)([&] {
    const auto children = diag_class->diagClass->ChildClasses();
    if (!IsInside(number, children.size())) return KESTRA_E_INVALIDARG;
    return GiveHandle(child, children[static_cast<size_t>(number)]);
  });
}

kestra_status kestra_class_property_count(const kestra_class* diag_class, int32_t* count) {
  return Barrier(diag_class, count)([&] {
    *count = static_cast<int32_t>(diag_class->diagClass->Params->Count());
    return KESTRA_OK;
  });
}

kestra_status kestra_class_property(const kestra_class* diag_class, int32_t number,
                                    const char** name, int32_t* type, const char** unit,
                                    const char** options, int32_t* can_be_changed,
                                    const char** description) {
  return Barrier(diag_class)([&] {
    const DiagParamDefs& defs = *diag_class->diagClass->Params;
    if (!IsInside(number, defs.Count())) return KESTRA_E_INVALIDARG;
    const auto index = static_cast<size_t>(number);
    const DiagParamDef& def = *defs.Get(index);
    Tell(name, def.Name.c_str());
    Tell(type, static_cast<int32_t>(def.Type));
    Tell(unit, def.GetUnit().c_str());
    Tell(options, OptionsOf(*diag_class, index));
    Tell(can_be_changed, def.CanBeChanged ? 1 : 0);
    Tell(description, def.Description.c_str());
    return KESTRA_OK;
  });
}
