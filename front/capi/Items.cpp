#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"
#include "front/session/FillAgain.h"

using namespace kestra;

namespace {

constexpr const char* kNoText = "";

// The declaration of a parameter; null for a record that has none.
const DiagParamDef* DefOf(const kestra_param* param) {
  return param->param->Def.get();
}

}  // namespace

kestra_status kestra_item_release(kestra_item* item) {
  return ReleaseHandle(item);
}

kestra_status kestra_item_name(kestra_item* item, const char** name) {
  return Barrier(item, name)([&] {
    *name = item->item->GetName().c_str();
    return KESTRA_OK;
  });
}

kestra_status kestra_item_diag_items(kestra_item* item, kestra_items** items) {
  return Barrier(item, items)([&] { return GiveHandle(items, item->item); });
}

kestra_status kestra_item_params(kestra_item* item, kestra_params** params) {
  return Barrier(item, params)([&] { return GiveHandle(params, item->item); });
}

kestra_status kestra_item_init(kestra_item* item, int32_t init_child, int32_t* result) {
  return Barrier(item, result)([&] {
    *result = FillAgain(*item->item, init_child != 0) ? -1 : 0;
    return KESTRA_OK;
  });
}

kestra_status kestra_item_class(kestra_item* item, kestra_class** diag_class) {
  return Barrier(item, diag_class)([&] {
    Ref<DiagClass> diagClass = item->item->GetTypeInfo();
    return diagClass ? GiveHandle(diag_class, std::move(diagClass)) : KESTRA_E_NOTFOUND;
  });
}

kestra_status kestra_items_release(kestra_items* items) {
  return ReleaseHandle(items);
}

kestra_status kestra_items_count(const kestra_items* items, int32_t* count) {
  return Barrier(items, count)([&] {
    *count = static_cast<int32_t>(items->owner->Children.Count());
    return KESTRA_OK;
  });
}

kestra_status kestra_items_item(const kestra_items* items, int32_t index, kestra_item** item) {
  return Barrier(items, item)([&] {
    if (index < 1) return KESTRA_E_INVALIDARG;
    CVDiagItem* pItem = items->owner->Children.Get(static_cast<size_t>(index) - 1);
    return pItem ? GiveHandle(item, Ref<CVDiagItem>(pItem)) : KESTRA_E_INVALIDARG;
  });
}

kestra_status kestra_params_release(kestra_params* params) {
  return ReleaseHandle(params);
}

kestra_status kestra_params_count(const kestra_params* params, int32_t* count) {
  return Barrier(params, count)([&] {
    *count = static_cast<int32_t>(params->owner->Params.Count());
    return KESTRA_OK;
  });
}

kestra_status kestra_params_item(const kestra_params* params, int32_t index, kestra_param** param) {
  return Barrier(params, param)([&] {
    if (index < 1) return KESTRA_E_INVALIDARG;
    DiagParam* pParam = params->owner->Params.Get(static_cast<size_t>(index) - 1);
    return pParam ? GiveHandle(param, Ref<DiagParam>(pParam)) : KESTRA_E_INVALIDARG;
  });
}

kestra_status kestra_params_find(const kestra_params* params, const char* name,
                                 kestra_param** param) {
  return Barrier(params, name, param)([&] {
    DiagParam* pParam = params->owner->Params.Find(name, true);
    return pParam ? GiveHandle(param, Ref<DiagParam>(pParam)) : KESTRA_E_NOTFOUND;
  });
}

kestra_status kestra_param_release(kestra_param* param) {
  return ReleaseHandle(param);
}

kestra_status kestra_param_name(const kestra_param* param, const char** name) {
  return Barrier(param, name)([&] {
    *name = DefOf(param) ? DefOf(param)->Name.c_str() : kNoText;
    return KESTRA_OK;
  });
}

kestra_status kestra_param_string_value(kestra_param* param, const char** text, size_t* length) {
  return Barrier(param, text)([&] {
    if (param->text.empty()) param->text = param->param->GetText();
    *text = param->text.c_str();
    if (length) *length = param->text.size();
    return KESTRA_OK;
  });
}

kestra_status kestra_param_dword_value(const kestra_param* param, uint32_t* number) {
  return Barrier(param, number)([&] {
    *number = param->param->DWordValue;
    return KESTRA_OK;
  });
}

kestra_status kestra_param_type(const kestra_param* param, int32_t* type) {
  return Barrier(param, type)([&] {
    *type = DefOf(param) ? static_cast<int32_t>(DefOf(param)->Type) : 0;
    return KESTRA_OK;
  });
}

kestra_status kestra_param_unit(const kestra_param* param, const char** unit) {
  return Barrier(param, unit)([&] {
    *unit = DefOf(param) ? DefOf(param)->GetUnit().c_str() : kNoText;
    return KESTRA_OK;
  });
}
